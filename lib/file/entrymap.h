// The entries that the records of a file make up.
#pragma once

#include <vector>

#include "file/format.h"
#include "file/recordsorter.h"
#include "model/model.h"

// Collects the records of a file, then pairs the two records of each entry by their time and lays the entries
// down in the order of time.
//
// All memory is obtained while records arrive: the task ids that a file states take effect even when the file
// breaks off or memory runs out.
class _STLTaskLog::EntryMap {
 public:
  explicit EntryMap(_STLTaskLog& log) : log_(log) {}
  ~EntryMap() { log_.entries.TrimSpare(); }
  EntryMap(const EntryMap&) = delete;
  EntryMap& operator=(const EntryMap&) = delete;

  // Makes room for so many records if there is any.
  void Expect(u64 count);
  // Begins a section, of a task or (null) of testpoints or timing issues. Throws bad_alloc.
  void BeginSection(STLTask* task);
  // Adds a record of Ko type 0 to 6 to the section of a task. An id that is not 0 becomes that of the task in
  // slot 0 of its entry. Throws bad_alloc.
  void AddTaskRecord(u8 koType, u64 timestamp, u32 id) { Add({timestamp, id, koType}); }
  // Adds a record of Ko type 7 or 8 about a category of the log. Throws bad_alloc.
  void AddEvent(u8 koType, u64 timestamp, const _STLCategory& category) {
    Add({timestamp, category.index, koType});
  }

  // Sets the task ids and returns the entries, which lie at the start of the spare room of the log's array.
  // Cannot fail.
  NewSeries Pair();

 private:
  using Record = RecordSorter::Record;
  // The id that a file gives to a task last.
  struct IdMark {
    std::size_t after = 0;  // how many records of the file come up to the one that states it; 0: none does
    u32 id = 0;
  };

  void Add(const Record& record);
  void PairRecord(const Record& record, STLTask* task, std::size_t number);
  _STLEntry* PairTaskRecord(const Record& record, STLTask* task);
  _STLEntry* FindOrCreateEntryWithEmptyTask(u64 timestamp, u32 slot);
  _STLEntry* Insert(ETLLogType type, u64 timestamp, _STLCategory* subject);
  void BeginTime(u64 timestamp);
  void SetTaskIds();

  _STLTaskLog& log_;
  RecordSorter sorter_;
  std::vector<IdMark> idMarks_;                    // by category index
  _STLEntry* first_ = nullptr;                     // of the entries built
  _STLEntry* last_ = nullptr;                      // behind them
  _STLEntry* firstEmpty_[2] = {nullptr, nullptr};  // by slot: no entry of this time before it has it empty
};
