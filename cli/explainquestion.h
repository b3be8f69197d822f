// What is asked to be explained, as typed and then for each lane.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "analysedlane.h"
#include "analysis/findings.h"

namespace cli {

// As typed.
struct ExplainOptions {
  std::optional<std::string> task;
  std::optional<std::string> at;
  std::optional<std::string> issue;
  std::optional<std::string> over;
};

class ExplainQuestion {
 public:
  // Throws UsageError.
  explicit ExplainQuestion(const ExplainOptions& options);

  // Nothing where the lane does not have what is asked about. Throws Failure.
  std::optional<analysis::Question> For(const AnalysedLane& lane);
  // After the last lane. Throws Failure.
  void Finish() const;

 private:
  ExplainOptions options_;
  std::optional<TimePoint> at_;
  std::optional<Duration> over_;
  bool taskFound_ = false;
  bool issueFound_ = false;
  std::vector<std::string> tasksSeen_;
  std::vector<std::string> issuesSeen_;
};

}  // namespace cli
