// What the benchmarks run on.
#include "setting.h"

#include <fmt/format.h>
#include <unistd.h>

#include "ring.h"

namespace bench {

// The buffers of the last size asked for are kept, for they take longer to make than to read.
void SetController(std::uint32_t taskCount, std::uint32_t kernel, std::int64_t count) {
  static std::map<std::uint32_t, std::vector<std::uint32_t>> rings;  // by kernel
  static std::uint32_t ringTaskCount = 0;
  static std::int64_t ringSize = 0;
  if (ringTaskCount != taskCount || ringSize != count) rings.clear();
  ringTaskCount = taskCount;
  ringSize = count;
  std::vector<std::uint32_t>& ring = rings[kernel];
  if (ring.empty()) ring = FullRing(MakeRecords(taskCount, kernel, static_cast<std::size_t>(count)));
  TheController() = {taskCount, ring};
}

TempFile::TempFile() {
  static int number = 0;
  path_ = std::filesystem::temp_directory_path() / fmt::format("tasklog-bench-{}-{}", getpid(), ++number);
}

}  // namespace bench
