// The records of a file while it is read, and the entries that they make up.
#pragma once

#include <vector>

#include "file/format.h"
#include "model/model.h"

// Collects records in the order of the file, then pairs the two records of each entry by their time and lays
// the entries down in the order of time. Sections lie in the order of time, so their records are only merged:
// what a record costs does not depend on the number of sections. A section that is out of order counts as
// several that are not.
//
// Memory is obtained as records arrive and none when they are paired: what a file says of task ids takes
// effect even when the file breaks off or memory runs out.
class _STLTaskLog::EntryMap {
 public:
  explicit EntryMap(_STLTaskLog& log) : log_(log) {}
  ~EntryMap() { log_.entries.TrimSpare(); }
  EntryMap(const EntryMap&) = delete;
  EntryMap& operator=(const EntryMap&) = delete;

  // Begins a section, of a task or (null) of testpoints or timing issues. Throws bad_alloc.
  void BeginSection(STLTask* task);
  // Adds a record of Ko type 0 to 6 to the section of a task. An id that is not 0 becomes that of the task in
  // slot 0 of its entry. Throws bad_alloc.
  void AddTaskRecord(u8 koType, u64 timestamp, u32 id) { Add({timestamp, id, koType}); }
  // Adds a record of Ko type 7 or 8 about a category of the log. Throws bad_alloc.
  void AddEvent(u8 koType, u64 timestamp, const _STLCategory& category) {
    Add({timestamp, category.index, koType});
  }

  // Sets the task ids and builds the entries at the start of the spare room of the log's array; returns their
  // number. Cannot fail.
  std::size_t Pair();

 private:
  struct Record {
    u64 timestamp;
    u32 value;  // an id; the index of a category for Ko types 7 and 8
    u8 koType;
  };
  // Records of one section in the order of time.
  struct Run {
    STLTask* task;
    std::size_t begin;  // what lies before is paired
    std::size_t gathered;
    std::size_t end;
  };
  // A record on its way into the order of time.
  struct Item {
    u64 timestamp;
    const Record* record;
    STLTask* task;
  };
  // The id that a file gives to a task last.
  struct IdMark {
    const Record* record;
    u32 id;
  };

  void Add(const Record& record);
  void BeginRun();
  bool DropFinishedRuns(u64& earliest);
  bool Gather(u64 begin, u64 width);
  void SortGathered(u64 begin, u64 width);
  void PairGathered();
  void PairOneTime(u64 timestamp);
  void PairRecord(const Record& record, STLTask* task);
  _STLEntry* PairTaskRecord(const Record& record, STLTask* task);
  _STLEntry* FindOrCreateEntryWithEmptyTask(u64 timestamp, u32 slot);
  _STLEntry* Insert(ETLLogType type, u64 timestamp, _STLCategory* subject);
  void BeginTime(u64 timestamp);
  void SetTaskIds();

  _STLTaskLog& log_;
  GrowingArray<Record> records_;
  STLTask* task_ = nullptr;  // of the section; null for testpoints and timing issues
  bool inRun_ = false;       // whether the section's last run takes more records
  std::vector<Run> runs_;
  std::vector<IdMark> idMarks_;  // by category index

  std::vector<Item> items_;  // two halves: gathered records and, while they are sorted, their next order
  std::size_t itemCount_ = 0;
  _STLEntry* first_ = nullptr;                     // of the entries built
  _STLEntry* last_ = nullptr;                      // behind them
  _STLEntry* firstEmpty_[2] = {nullptr, nullptr};  // by slot: no entry of this time before it has it empty
};
