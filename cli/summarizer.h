// One recording as rows of a dataset.
#pragma once

#include "analysedlane.h"
#include "dataset.h"

namespace cli {

struct Summarized {
  enum class Outcome { added, known, broken } outcome;
  std::uint64_t entries = 0;
};

// Several threads may use one.
class Summarizer {
 public:
  // Where `machine` and `day` are empty, the recording says them. Of the options --idle and --switches count.
  Summarizer(const AnalysisOptions& options, std::string machine, std::string day, Dataset& dataset)
      : options_(options), machine_(std::move(machine)), day_(std::move(day)), dataset_(dataset) {}

  // A TaskLog file or a folder. Throws Failure when it cannot be read at all, so that nothing is known of it,
  // and when its rows cannot be written.
  Summarized Summarize(const std::string& path);

 private:
  const AnalysisOptions& options_;
  std::string machine_;
  std::string day_;
  Dataset& dataset_;
};

}  // namespace cli
