// The log as plainly as its contract can be put into code: what the library does is checked against this
// model, and its speed measured against it. Written for clarity; shares no code with the library.
// docs/file-format.md and docs/ring-buffer.md have the formats, tasklog.h the meaning of each operation.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace plain {

using Status = std::uint32_t;

enum Kind : std::uint32_t { task, testpoint, timingIssue };

struct Category {
  Kind kind = task;
  std::string name;
  std::uint32_t id = 0;
  std::uint32_t priority = 0;  // of a task, as is the time slice
  std::int32_t timeSlice = 0;
  std::size_t place = 0;  // in the log
};

// Categories belong to the log.
struct Entry {
  std::uint32_t type = 0;
  std::uint64_t timestamp = 0;
  Category* slots[2] = {};
};

// What a query asks for; the bounds are included.
struct Filter {
  const Category* category = nullptr;
  std::uint64_t types = 0;
  std::uint64_t from = 0;
  std::uint64_t to = UINT64_MAX;
};

// Called with the fraction done; false cancels.
using Progress = std::function<bool(double)>;

// The entries of one query, in time order; for as long as the log stays as it is.
class Cursor {
 public:
  using Position = std::vector<Entry>::const_iterator;

  Cursor(Position begin, Position end, const Filter& filter);
  std::uint64_t InRange() const { return static_cast<std::uint64_t>(end_ - next_); }
  const Entry* Next();  // null behind the last

 private:
  Position next_;
  Position end_;
  Filter filter_;
};

class Log {
 public:
  Status AppendFromTarget(const char* target, std::int32_t kernel, const Progress& progress = {});
  Status AppendFromFile(const char* path);
  Status SaveAsFile(const char* path) const;

  std::vector<const Category*> Categories(std::uint64_t kinds = 0, const char* name = nullptr) const;
  Cursor Entries(const Filter& filter = {}) const;
  std::uint64_t EntriesCount(const Filter& filter = {}) const;

  std::uint64_t startTime = 0;
  std::uint64_t stopTime = 0;
  std::uint64_t ticksPerSecond = 0;
  std::vector<std::unique_ptr<Category>> categories;  // in the order of creation
  std::vector<Entry> entries;                         // by time

 private:
  class RingAppend;
  class FileAppend;

  Category* FindOrCreate(const Category& wanted);
  Category* FindById(Kind kind, std::uint32_t id) const;
  void FillInOldTasks();

  std::multimap<std::string, Category*> categoriesByName_;
};

// The id that goes with the name of a timing issue.
std::uint32_t TimingIssueId(const std::string& name);

}  // namespace plain
