// The tables of an export to Parquet; docs/export.md says what each column holds.
#pragma once

#include "exporter.h"
#include "outputfile.h"
#include "parquet/writer.h"

namespace exporters {

// Encoded columns of a log are small already: higher levels take longer and gain a few percent.
inline constexpr int fastLevel = -1;

// One file of the folder.
class ParquetFile {
 public:
  ParquetFile(Files& files, const char* name)
      : file_(files.Create(name)),
        writer_(
            [this](std::string_view bytes) {
              file_.Block().append(bytes);
              file_.FlushIfFull();
            },
            {.zstdLevel = fastLevel}) {}

  template <class Column>
  Column& Add(const char* name) {
    return writer_.Add<Column>(name);
  }
  template <class Column>
  Column& AddOptional(const char* name) {
    return writer_.Add<Column>(name, parquet::Nulls::allowed);
  }
  void EndRow() { writer_.EndRow(); }
  void Finish() {
    writer_.Finish();
    file_.Flush();
  }

 private:
  OutputFile file_;
  parquet::Writer writer_;
};

// Members are the columns, in the order of the file.
struct LaneTable : ParquetFile {
  explicit LaneTable(Files& files) : ParquetFile(files, "lanes.parquet") {}

  parquet::Uint32Column& lane = Add<parquet::Uint32Column>("lane");
  parquet::TextColumn& name = Add<parquet::TextColumn>("name");
  parquet::Uint64Column& rate = AddOptional<parquet::Uint64Column>("ticks_per_second");
  parquet::Uint64Column& start = Add<parquet::Uint64Column>("start_ticks");
  parquet::Uint64Column& stop = Add<parquet::Uint64Column>("stop_ticks");
  parquet::Uint64Column& covered = Add<parquet::Uint64Column>("covered_ticks");
  parquet::Uint64Column& unknown = Add<parquet::Uint64Column>("unknown_ticks");
  parquet::Uint32Column& idle = AddOptional<parquet::Uint32Column>("idle_task");
};

struct TaskTable : ParquetFile {
  explicit TaskTable(Files& files) : ParquetFile(files, "tasks.parquet") {}

  parquet::Uint32Column& task = Add<parquet::Uint32Column>("task");
  parquet::Uint32Column& lane = Add<parquet::Uint32Column>("lane");
  parquet::TextColumn& name = Add<parquet::TextColumn>("name");
  parquet::Uint32Column& priority = Add<parquet::Uint32Column>("priority");
  parquet::Int32Column& timeSlice = Add<parquet::Int32Column>("time_slice");
};

struct EntryTable : ParquetFile {
  explicit EntryTable(Files& files) : ParquetFile(files, "entries.parquet") {}

  parquet::Uint32Column& lane = Add<parquet::Uint32Column>("lane");
  parquet::Uint64Column& ticks = Add<parquet::Uint64Column>("ticks");
  parquet::TextColumn& type = Add<parquet::TextColumn>("type");
  parquet::Uint32Column& code = Add<parquet::Uint32Column>("code");
  parquet::TextColumn& subject = AddOptional<parquet::TextColumn>("subject");
  parquet::Uint32Column& task = AddOptional<parquet::Uint32Column>("task");
  parquet::TextColumn& running = AddOptional<parquet::TextColumn>("running");
  parquet::Uint32Column& runningTask = AddOptional<parquet::Uint32Column>("running_task");
};

struct RunTable : ParquetFile {
  explicit RunTable(Files& files) : ParquetFile(files, "runs.parquet") {}

  parquet::Uint32Column& lane = Add<parquet::Uint32Column>("lane");
  parquet::Uint32Column& task = AddOptional<parquet::Uint32Column>("task");
  parquet::TextColumn& name = AddOptional<parquet::TextColumn>("name");
  parquet::Uint64Column& begin = Add<parquet::Uint64Column>("begin_ticks");
  parquet::Uint64Column& end = Add<parquet::Uint64Column>("end_ticks");
  parquet::BoolColumn& cut = Add<parquet::BoolColumn>("cut");
};

struct JobTable : ParquetFile {
  explicit JobTable(Files& files) : ParquetFile(files, "jobs.parquet") {}

  parquet::Uint32Column& lane = Add<parquet::Uint32Column>("lane");
  parquet::Uint32Column& task = Add<parquet::Uint32Column>("task");
  parquet::TextColumn& name = Add<parquet::TextColumn>("name");
  parquet::Uint64Column& activation = Add<parquet::Uint64Column>("activation_ticks");
  parquet::Uint64Column& start = AddOptional<parquet::Uint64Column>("start_ticks");
  parquet::Uint64Column& end = Add<parquet::Uint64Column>("end_ticks");
  parquet::Uint64Column& execution = Add<parquet::Uint64Column>("execution_ticks");
  parquet::Uint64Column& waiting = Add<parquet::Uint64Column>("waiting_ticks");
  parquet::Uint64Column& interval = AddOptional<parquet::Uint64Column>("interval_ticks");
  parquet::Uint32Column& preemptions = Add<parquet::Uint32Column>("preemptions");
  parquet::Uint32Column& slices = Add<parquet::Uint32Column>("slices");
  parquet::Uint32Column& waits = Add<parquet::Uint32Column>("waits");
  parquet::Uint32Column& events = Add<parquet::Uint32Column>("events");
  parquet::BoolColumn& askedEarlier = Add<parquet::BoolColumn>("asked_earlier");
  parquet::BoolColumn& cut = Add<parquet::BoolColumn>("cut");
};

struct GapTable : ParquetFile {
  explicit GapTable(Files& files) : ParquetFile(files, "gaps.parquet") {}

  parquet::Uint32Column& lane = Add<parquet::Uint32Column>("lane");
  parquet::Uint64Column& from = Add<parquet::Uint64Column>("from_ticks");
  parquet::Uint64Column& to = Add<parquet::Uint64Column>("to_ticks");
};

}  // namespace exporters
