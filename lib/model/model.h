// The log in memory: categories, entries, their iterators, and the log that owns them. Members of _STLTaskLog
// are defined in the folder of their concern: model/, target/ and file/.
#pragma once

#include <tasklog/tasklog.h>

#include <array>
#include <cstddef>
#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "model/entry.h"
#include "model/timeindex.h"
#include "model/types.h"

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
  u32 index = 0;            // place in the log's categories
  EntryCounts entryCounts;  // of the entries that hold this category, in one
                            // slot or both
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
  u32 id = 0;  // changes when the task is found under another id
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

// Walks a stretch of a container of categories.
template <class ContainerPosition>
class CategoryWalk : public _STLCategoryIterator {
 public:
  using Position = ContainerPosition;
  struct Matches {
    u64 types;
    bool operator()(const _STLCategory& category) const { return MaskHas(types, category.GetType()); }
  };

  CategoryWalk(Position begin, Position end, Matches matches) noexcept
      : current_(begin), end_(end), matches_(matches) {}
  const _STLCategory* Next() override;

 private:
  Position current_;
  Position end_;
  Matches matches_;
};

// Walks categories in the order of their creation.
class STLCategoryIteratorVec final : public CategoryWalk<std::vector<_STLCategory*>::const_iterator> {
  using CategoryWalk::CategoryWalk;
};

// Walks the categories of one name.
class STLCategoryIteratorMap final : public CategoryWalk<CategoryIndex::const_iterator> {
  using CategoryWalk::CategoryWalk;
};

// What a category is known by within its log: of a task name, priority and time slice, of a testpoint name
// and id, of a timing issue the name.
struct CategoryKey {
  explicit CategoryKey(const _STLCategory& category);
  CategoryKey(std::string_view categoryName, ETLCatType kind, u32 first = 0, u32 second = 0)
      : name(categoryName), properties{kind, first, second} {}
  bool operator<(const CategoryKey& other) const {
    return std::tie(name, properties) < std::tie(other.name, other.properties);
  }

  std::string_view name;  // the category's
  std::array<u32, 3> properties;
};

using CategorySet = std::map<CategoryKey, _STLCategory*>;

struct _STLEntryIterator {
 public:
  using Position = const _STLEntry*;
  struct Matches {
    const _STLCategory* category;  // null matches all
    u64 types;
    bool operator()(const _STLEntry& entry) const {
      if (!MaskHas(types, entry.type)) return false;
      if (!category) [[likely]]
        return true;
      return entry.slots[0] == category || entry.slots[1] == category;
    }
  };

  _STLEntryIterator(Position begin, Position end, Matches matches)
      : current_(begin), end_(end), matches_(matches) {}
  // The next match, null once there is none. Hosts call it once an entry: mostly it goes straight through.
  const _STLEntry* Next() {
    if (current_ == end_) return nullptr;
    do {
      const _STLEntry* entry = current_++;
      if (matches_(*entry)) [[likely]]
        return entry;
    } while (current_ != end_);
    return nullptr;
  }

 private:
  Position current_;
  Position end_;
  Matches matches_;
};

// New entries in the order of time.
using NewSeries = std::span<const _STLEntry>;

class Source;

struct _STLTaskLog {
  class EntryMap;
  struct Acquisition;

  _STLTaskLog() = default;
  ~_STLTaskLog();
  _STLTaskLog(const _STLTaskLog&) = delete;
  _STLTaskLog& operator=(const _STLTaskLog&) = delete;

  // Registry. Each returns the category of these properties, made when there is none. Tasks are told apart by
  // name, priority and time slice, testpoints by name and id, timing issues by name.
  STLTask* FindOrCreateTask(const std::string& name, u32 priority, i32 timeSlice);
  STLTestpoint* FindOrCreateTestpoint(const std::string& name, u32 id);
  STLTimingIssue* FindOrCreateTimingIssue(const std::string& name);
  STLTimingIssue* FindTimingIssue(const std::string& name) const;          // null when there is none
  _STLCategoryIterator* GetCategories(u64 types, const char* name) const;  // owned by the caller
  u32 GetCategoriesCount(u64 types, const char* name) const;

  // Queries; both bounds are included.
  _STLEntryIterator* GetEntries(const _STLCategory* category, u64 types, u64 from,
                                u64 to) const;  // owned by the caller
  u64 GetEntriesCount(const _STLCategory* category, u64 types, u64 from, u64 to) const;

  // Merges two series of new entries. Among equal times those of `before` go before the held entries, those
  // of `behind` behind them. The series lie one behind the other; at the start of the spare room of `entries`
  // they are not copied when that is their place. Ends every append. Throws bad_alloc, with the entries as
  // they were.
  void TakeNewEntries(NewSeries before, NewSeries behind);
  // Puts the task that was running into slot 1 of the entries, where those from `from` up to `to` are new.
  void FillInOldTasks(std::size_t from, std::size_t to);

  // From a controller.
  u32 AppendFromTarget(const char* target, i32 kernel, TLProgress progress, void* user);
  u32 FetchTicksPerSecond(const std::string& target);
  u32 FetchTasks(const std::string& target);
  u32 FetchTestpoints(const std::string& target);
  // Adds a record of two words to the new entries, unless an equal entry is there; true for a marker.
  bool AddEntry(const u32* record, bool forward, Acquisition& acquisition);
  // The category that a record of this type and id is about, fetched or made when the log has none.
  _STLCategory* FindOrFetchCategory(u32 id, ETLLogType type, Acquisition& acquisition);

  // From and to a TaskLog file.
  u32 AppendFromFile(const char* path);
  void ReadTask(Source& source, EntryMap& map, ETLCatType kind,
                u32 version);  // throws a u32 status
  u32 SaveAsFile(const char* path) const;

  u64 startTime = 0;                      // ticks; 0 while unset
  u64 stopTime = 0;                       // ticks; 0 while unset
  u64 ticksPerSecond = 0;                 // 0 while unset
  std::vector<_STLCategory*> categories;  // owned, in creation order
  CategoryIndex categoriesByName;         // the same, by name
  EntryArray entries;                     // by time

 private:
  struct EntryRange {
    _STLEntryIterator::Position begin;
    _STLEntryIterator::Position end;
  };
  EntryRange SelectTimeRange(u64 from, u64 to) const;
  void CountEntry(const _STLEntry& entry);
  _STLCategory* RunningBefore(std::size_t index) const;
  void SetRunning(_STLEntry& entry, _STLCategory* running);
  template <class Category>
  Category* Find(const CategoryKey& key) const;
  template <class Category, class... Properties>
  Category* FindOrCreate(const CategoryKey& key, const std::string& name, Properties... properties);

  CategorySet categoriesByKey_;
  EntryCounts entryCounts_;               // of all entries
  TimeIndex timeIndex_;                   // of all entries
  std::size_t filledIn_ = 0;              // entries whose running task is filled in
  _STLCategory* runningAtEnd_ = nullptr;  // behind the last of them
};
