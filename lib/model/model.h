// The log in memory: categories, entries, their iterators, and the log that owns them. Members of
// _STLTaskLog are defined in the folder of their concern: model/, target/ and file/.
#pragma once

#include <tasklog/tasklog.h>

#include <cstddef>
#include <cstdio>
#include <deque>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "model/types.h"

// The bit of a value in a mask of kinds or types.
inline bool MaskHas(u64 mask, u32 value) { return (mask >> (value % 64)) & 1; }

// What entries refer to. Created by a log, which owns it.
struct _STLCategory {
  explicit _STLCategory(const std::string& categoryName) : name(categoryName) {}
  virtual ~_STLCategory();
  virtual ETLCatType GetType() const = 0;
  virtual u32 GetPriority() const;
  virtual i32 GetTimeSlice() const;
  virtual u32 GetId() const = 0;

  _STLCategory(const _STLCategory&) = delete;
  _STLCategory& operator=(const _STLCategory&) = delete;

  const std::string name;
};

struct STLTask final : _STLCategory {
  STLTask(const std::string& taskName, u32 taskPriority, i32 taskTimeSlice)
      : _STLCategory(taskName), priority(taskPriority), timeSlice(taskTimeSlice) {}
  ETLCatType GetType() const override;
  u32 GetPriority() const override;
  i32 GetTimeSlice() const override;
  u32 GetId() const override;

  const u32 priority;
  const i32 timeSlice;
  u32 id = 0;  // written by who creates the task, and again when it is met under another identifier
};

struct STLTestpoint final : _STLCategory {
  STLTestpoint(const std::string& testpointName, u32 testpointId)
      : _STLCategory(testpointName), id(testpointId) {}
  ETLCatType GetType() const override;
  u32 GetId() const override;

  const u32 id;
};

struct STLTimingIssue final : _STLCategory {
  using _STLCategory::_STLCategory;
  ETLCatType GetType() const override;
  u32 GetId() const override;
};

// Categories by name; those of one name in the order of their creation. Searched without making a string.
using CategoryIndex = std::multimap<std::string, _STLCategory*, std::less<>>;

struct _STLCategoryIterator {
  virtual ~_STLCategoryIterator();
  virtual const _STLCategory* Next() = 0;
};

// Walks categories in the order of their creation.
class STLCategoryIteratorVec final : public _STLCategoryIterator {
 public:
  using Position = std::vector<_STLCategory*>::const_iterator;
  struct Matches {
    u64 types;
    bool operator()(const _STLCategory& category) const { return MaskHas(types, category.GetType()); }
  };

  STLCategoryIteratorVec(Position begin, Position end, Matches matches)
      : current_(begin), end_(end), matches_(matches) {}
  const _STLCategory* Next() override;

 private:
  Position current_;
  Position end_;
  Matches matches_;
};

// Walks the categories of one name.
class STLCategoryIteratorMap final : public _STLCategoryIterator {
 public:
  using Position = CategoryIndex::const_iterator;
  struct Matches {
    u64 types;
    bool operator()(const _STLCategory& category) const { return MaskHas(types, category.GetType()); }
  };

  STLCategoryIteratorMap(Position begin, Position end, Matches matches)
      : current_(begin), end_(end), matches_(matches) {}
  const _STLCategory* Next() override;

 private:
  Position current_;
  Position end_;
  Matches matches_;
};

// One moment on the controller. A plain value; its categories belong to the log.
struct _STLEntry {
  _STLEntry() = default;
  _STLEntry(ETLLogType entryType, u64 entryTimestamp) : type(entryType), timestamp(entryTimestamp) {}

  ETLLogType type = TLLogSwitch0;
  u64 timestamp = 0;                            // ticks
  _STLCategory* slots[2] = {nullptr, nullptr};  // 0: what it is about; 1: the task that was running
};

// The order of a log's entries, for searches by timestamp.
struct CompareEntriesByTime {
  bool operator()(const _STLEntry& entry, u64 timestamp) const { return entry.timestamp < timestamp; }
  bool operator()(u64 timestamp, const _STLEntry& entry) const { return timestamp < entry.timestamp; }
};

struct _STLEntryIterator {
 public:
  using Position = std::vector<_STLEntry>::const_iterator;
  struct Matches {
    const _STLCategory* category;  // null matches all
    u64 types;
    bool operator()(const _STLEntry& entry) const {
      return (!category || entry.slots[0] == category || entry.slots[1] == category) &&
             MaskHas(types, entry.type);
    }
  };

  _STLEntryIterator(Position begin, Position end, Matches matches)
      : current_(begin), end_(end), matches_(matches) {}
  const _STLEntry* Next();

 private:
  Position current_;
  Position end_;
  Matches matches_;
};

struct _STLTaskLog {
  class EntryMap;
  using EntryQueue = std::deque<_STLEntry>;

  _STLTaskLog() = default;
  ~_STLTaskLog();
  _STLTaskLog(const _STLTaskLog&) = delete;
  _STLTaskLog& operator=(const _STLTaskLog&) = delete;

  // Registry. Each returns the category of these properties, made when there is none. Tasks are told apart
  // by name, priority and time slice, testpoints by name and id, timing issues by name.
  STLTask* FindOrCreateTask(const std::string& name, u32 priority, i32 timeSlice);
  STLTestpoint* FindOrCreateTestpoint(const std::string& name, u32 id);
  STLTimingIssue* FindOrCreateTimingIssue(const std::string& name);
  _STLCategoryIterator* GetCategories(u64 types, const char* name) const;  // owned by the caller
  u32 GetCategoriesCount(u64 types, const char* name) const;

  // Queries; both bounds are included.
  _STLEntryIterator* GetEntries(const _STLCategory* category, u64 types, u64 from,
                                u64 to) const;  // owned by the caller
  u64 GetEntriesCount(const _STLCategory* category, u64 types, u64 from, u64 to) const;
  // Puts the task that was running into slot 1 of the entries; ends every append.
  void FillInOldTasks();

  // From a controller.
  u32 AppendFromTarget(const char* target, i32 kernel, TLProgress progress, void* user);
  u32 FetchTicksPerSecond(const std::string& target);
  u32 FetchTasks(const std::string& target);
  u32 FetchTestpoints(const std::string& target);
  // Adds a record of two words to the queue, unless an equal entry is there; true for a marker record. `time`
  // is the timestamp of the record before, and becomes that of this one.
  bool AddEntry(const u32* record, u64& time, EntryQueue& queue, bool& tasksFetched, bool& testpointsFetched,
                u32& fetchError, int timeBits, const std::string& target, bool forward);
  // The category that a record of this type and id is about, fetched or made when the log has none.
  _STLCategory* FindOrFetchCategory(u32 id, ETLLogType type, bool& tasksFetched, bool& testpointsFetched,
                                    u32& fetchError, const std::string& target);

  // From and to a TaskLog file.
  u32 AppendFromFile(const char* path);
  void ReadTask(std::FILE* file, EntryMap& map, ETLCatType kind, u32 version);  // throws a u32 status
  u32 SaveAsFile(const char* path) const;

  u64 startTime = 0;                      // ticks; 0 while unset
  u64 stopTime = 0;                       // ticks; 0 while unset
  u64 ticksPerSecond = 0;                 // 0 while unset
  std::vector<_STLCategory*> categories;  // owned, in creation order
  CategoryIndex categoriesByName;         // the same, by name
  std::vector<_STLEntry> entries;         // by time

 private:
  struct EntryRange {
    _STLEntryIterator::Position begin;
    _STLEntryIterator::Position end;
  };
  EntryRange SelectTimeRange(u64 from, u64 to) const;
  _STLCategory* FindCategory(ETLCatType kind, u32 id) const;
  void WidenPeriod();
  void ReadFile(std::FILE* file);  // throws a u32 status
  void Merge(const EntryMap& map);
  template <class Category, class Same, class... Properties>
  Category* FindOrCreate(const std::string& name, Same same, Properties... properties);
};
