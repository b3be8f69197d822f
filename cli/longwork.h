// Work on whole files that takes a while: a line on a terminal says how far it is, and Ctrl-C ends it.
#pragma once

#include <string>

#include "progressbar.h"
#include "taskfile/check.h"

namespace cli {

class LongWork {
 public:
  // From here on a request to stop ends the work: Failure is thrown.
  explicit LongWork(const std::string& label);

  // For a part of the work, from one share of the whole to another.
  taskfile::Progress Part(double from, double to);
  // Takes the line away, for other output.
  void Clear() { bar_.Clear(); }

 private:
  ProgressBar bar_;
};

// All bytes of a file, or of a pipe. Throws Failure.
std::string ReadWhole(const std::string& path, const taskfile::Progress& progress);

}  // namespace cli
