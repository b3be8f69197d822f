// What an attacker or an odd machine controls: shapes of rings and files that make a careless operation look
// at everything for each record.
#pragma once

#include <span>
#include <string>

#include "schedule.h"
#include "support/taskfile.h"

namespace growth {

struct RingShape {
  const char* name;
  bench::Record (*recordAt)(std::uint32_t i, std::size_t count);
  bool tasks = false;       // as many as records
  bool testpoints = false;  // as many as records
  std::string (*nameOf)(std::uint32_t index) = [](std::uint32_t) { return std::string("same"); };
  bool slicesDiffer = true;
  std::size_t scale =
      1;  // records in place of each one, where only more of them show the growth: of analyses
};
extern const std::span<const RingShape> ringShapes;

struct FileShape {
  const char* name;
  Bytes (*make)(std::uint32_t count);
};
extern const std::span<const FileShape> fileShapes;

}  // namespace growth
