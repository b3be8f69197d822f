// A line on stderr that shows how far the work is; on a terminal only.
#pragma once

#include <string>

namespace cli {

class ProgressBar {
 public:
  explicit ProgressBar(std::string label);
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;
  ~ProgressBar() { Clear(); }

  // `fraction` is 0.0 to 1.0. Draws only what changes.
  void Show(double fraction);

  // Takes the line away, for other output; the next Show() brings it back.
  void Clear();

 private:
  std::string label_;
  bool enabled_;
  bool colors_;
  int shownPercent_ = -1;  // -1: nothing is shown
};

// The line itself: "label [####----]  50 %", at most `columns` wide.
std::string ProgressLine(const std::string& label, int percent, std::size_t columns, bool colors);

}  // namespace cli
