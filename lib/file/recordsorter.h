// Brings the records of a file into the order of time.
#pragma once

#include <vector>

#include "model/growingarray.h"
#include "model/model.h"

// Collects records in the order of the file and yields them by time, those of one time in the order of the
// file. A section is mostly in the order of time already, which makes it one series; one that goes backward
// makes several. The cost of a record does not depend on the number of series.
//
// All memory is obtained while records arrive.
class RecordSorter {
 public:
  struct Record {
    u64 timestamp;
    u32 value;  // an id; the index of a category for Ko types 7 and 8
    u8 koType;
  };

  // Begins a section, of a task or (null) of testpoints or timing issues.
  void BeginSection(STLTask* task) {
    task_ = task;
    inSeries_ = false;
  }
  std::size_t RoomLeft() const { return records_.SpareSize(); }
  // Makes room for more records and returns how many there may be then in all; throws bad_alloc.
  std::size_t MakeRoom();
  // Makes room for so many records; throws bad_alloc.
  void Expect(std::size_t count) { records_.Spare(count); }
  // Adds a record to the section; throws bad_alloc.
  void Add(const Record& record);

  // Calls `visit` with each record, the task of its section, and its number in the file, from 0.
  template <class Visit>
  void ForEachByTime(Visit visit) {
    while (GatherNext())
      for (std::size_t i = 0; i < itemCount_; ++i)
        visit(*items_[i].record, items_[i].task,
              static_cast<std::size_t>(items_[i].record - records_.begin()));
  }

 private:
  // Records of one section in the order of time.
  struct Series {
    STLTask* task;
    std::size_t begin;  // what lies before has been yielded
    std::size_t gathered;
    std::size_t end;
  };
  // A record on its way into the order of time.
  struct Item {
    u64 timestamp;
    const Record* record;
    STLTask* task;
  };

  void MakeRoomToSort();
  void BeginSeries();
  std::size_t Capacity() const { return items_.SpareSize() / 2; }
  bool GatherNext();
  bool DropFinished(u64& earliest);
  bool Gather(u64 begin, u64 width);
  bool GatherSeries(Series& series, u64 begin, u64 width);
  void NoteDensity(const Series& series, u64 begin);
  void SortGathered(u64 begin, u64 width);

  GrowingArray<Record> records_;
  STLTask* task_ = nullptr;     // of the section; null for testpoints and timing issues
  bool inSeries_ = false;       // whether the section's last series takes more records
  std::vector<Series> series_;  // in the order of the file

  // Two halves, all of it spare room: gathered records and, while they are sorted, their next order.
  GrowingArray<Item> items_;
  std::size_t itemCount_ = 0;
  u64 dense_ = 0;             // ticks to where one series alone has more records than can be gathered
  u64 width_ = u64{1} << 20;  // ticks gathered at once
};
