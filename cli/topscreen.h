// Where `tasklog top` shows its pictures: on the whole terminal, or as lines where there is none.
#pragma once

#include <chrono>
#include <memory>
#include <string>

#include "toptable.h"

namespace cli {

class TopOutput {
 public:
  virtual ~TopOutput() = default;
  virtual void Show(const std::deque<TopLogger>& loggers) = 0;
  // False when the user wants to end, also by a signal.
  virtual bool WaitUntil(std::chrono::steady_clock::time_point time) = 0;
};

// `title` stands above a screen.
std::unique_ptr<TopOutput> MakeTopLines(const TopOrder& order);

// Null when the terminal has not what a screen takes. The terminal is given back when the output goes, and by
// the third request to stop.
std::unique_ptr<TopOutput> MakeTopScreen(const std::string& title, const TopOrder& order);

}  // namespace cli
