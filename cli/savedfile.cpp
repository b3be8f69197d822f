#include "savedfile.h"

#include <cerrno>
#include <cstring>

#include "failure.h"
#include "notcarried.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::uint64_t storedRateBits = 0xFFFFFFFF;
const tasklog::CategoryFilter tasksOnly{.types = TL_CATS_TASKS};

// Counts of entries may differ a little even so: a file keeps each entry as records of the tasks it
// concerns, and reading it back adds the task that ran at the start.
bool SameFrame(const tasklog::Log& a, const tasklog::Log& b) {
  return a.StartTime() == b.StartTime() && a.StopTime() == b.StopTime() &&
         (a.TicksPerSecond() & storedRateBits) == b.TicksPerSecond() &&
         a.CategoriesCount(tasksOnly) == b.CategoriesCount(tasksOnly);
}

}  // namespace

SavedFile SaveChecked(const tasklog::Log& log, const std::string& path, const std::string& shownPath) {
  const std::string saving = "saving " + Quoted(shownPath);
  errno = 0;
  if (const tasklog::Status status = log.SaveAsFile(path); !status) {
    // Left by the call that failed, as far as one can know from here.
    throw Failure(saving, status, errno != 0 ? std::strerror(errno) : "");
  }
  tasklog::Log readBack;
  if (const tasklog::Status status = readBack.AppendFromFile(path); !status) {
    throw Failure(saving + ", reading it back", status);
  }
  if (!SameFrame(log, readBack)) throw Failure(saving + ": the file does not hold what was recorded");
  return {readBack.EntriesCount(),
          {readBack.StartTime(), readBack.StopTime()},
          readBack.TicksPerSecond(),
          NotCarried(log, readBack)};
}

}  // namespace cli
