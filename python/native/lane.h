// A lane in memory, as the package holds it. It never changes, so any number of threads may use one.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/analysedlane.h"
#include "cli/explainquestion.h"
#include "cli/recording.h"

namespace python {

// How its entries are read, and which part of them; as the command takes it.
using cli::AnalysisOptions;

class Lane {
 public:
  // Throws cli::UsageError and cli::Failure.
  Lane(const cli::Lane& source, const AnalysisOptions& options);
  // Of a recording that was made here.
  Lane(cli::Lane source, std::shared_ptr<const cli::LaneLog> loaded, AnalysisOptions options);

  // The same log in memory, cut to a part.
  Lane Between(const std::optional<std::string>& from, const std::optional<std::string>& to) const;

  const cli::Lane& Source() const { return source_; }
  const cli::LaneLog& Loaded() const { return *loaded_; }
  // Whole or a part; there also where several loggers were merged.
  const analysis::Lane& Lanes() const { return analysed_ ? analysed_->lane : *whole_; }
  bool IsMerged() const { return !analysed_.has_value(); }
  // Throws cli::Failure where several loggers were merged.
  const cli::AnalysedLane& Analysed() const;

  // What the command prints with --format json.
  std::string StatsJson() const;
  std::string ExplainJson(const cli::ExplainOptions& options, std::size_t limit, const Lane* good) const;

  // A TaskLog file, and beside it what is known beyond it. Returns what the file cannot carry.
  std::string Save(const std::string& path) const;

 private:
  void Analyse();

  cli::Lane source_;
  std::shared_ptr<const cli::LaneLog> loaded_;
  AnalysisOptions options_;
  std::optional<cli::AnalysedLane> analysed_;
  std::optional<analysis::Lane> whole_;  // where several loggers were merged
};

}  // namespace python
