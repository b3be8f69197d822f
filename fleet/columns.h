// The columns of a dataset, in the order of its files; docs/fleet.md says what each holds.
#pragma once

#include "parquet/writer.h"

namespace fleet {

struct Columns {
  explicit Columns(std::string& out)
      : writer([&out](std::string_view bytes) { out += bytes; }, {.zstdLevel = 3}) {}

  template <class Column>
  Column& Maybe(const char* name) {
    return writer.Add<Column>(name, parquet::Nulls::allowed);
  }
  using Text = parquet::TextColumn;
  using Number = parquet::Uint64Column;
  using Real = parquet::DoubleColumn;

  parquet::Writer writer;
  // Of each row.
  parquet::Int32Column& schema = writer.Add<parquet::Int32Column>("schema");
  Text& kind = writer.Add<Text>("kind");
  Text& recording = writer.Add<Text>("recording");
  Text& machine = Maybe<Text>("machine_name");  // the folder of a joined file is of no machine
  Text& startedAt = Maybe<Text>("started_at");
  Text& lane = Maybe<Text>("lane");
  Number& rate = Maybe<Number>("ticks_per_second");
  Text& task = Maybe<Text>("task");
  Number& count = Maybe<Number>("count");
  // Of a lane.
  Text& status = Maybe<Text>("status");
  Text& message = Maybe<Text>("message");
  Text& source = Maybe<Text>("source");
  Text& target = Maybe<Text>("target");
  Text& tool = Maybe<Text>("tool");
  Number& start = Maybe<Number>("start_ticks");
  Number& stop = Maybe<Number>("stop_ticks");
  Number& covered = Maybe<Number>("covered_ticks");
  Number& unknown = Maybe<Number>("unknown_ticks");
  Number& switches = Maybe<Number>("switches");
  Real& busy = Maybe<Real>("busy");
  // Of a statistic.
  Text& statistic = Maybe<Text>("statistic");
  parquet::Uint32Column& priority = Maybe<parquet::Uint32Column>("priority");
  Real& share = Maybe<Real>("share");
  Number& min = Maybe<Number>("min_ticks");
  Number& p50 = Maybe<Number>("p50_ticks");
  Number& p95 = Maybe<Number>("p95_ticks");
  Number& p99 = Maybe<Number>("p99_ticks");
  Number& p999 = Maybe<Number>("p999_ticks");
  Number& max = Maybe<Number>("max_ticks");
  Real& mean = Maybe<Real>("mean_ticks");
  Real& stddev = Maybe<Real>("stddev_ticks");
  Number& maxAt = Maybe<Number>("max_at_ticks");
  // Of a finding.
  parquet::Int32Column& finding = Maybe<parquet::Int32Column>("finding");
  Text& cause = Maybe<Text>("cause");
  Text& causeTask = Maybe<Text>("cause_task");
  Text& sign = Maybe<Text>("sign");
  Text& issue = Maybe<Text>("issue");
  Text& verdict = Maybe<Text>("verdict");
  Number& at = Maybe<Number>("at_ticks");
  Number& since = Maybe<Number>("since_ticks");
  Number& normal = Maybe<Number>("normal_ticks");
  Number& actual = Maybe<Number>("actual_ticks");
  Number& excess = Maybe<Number>("excess_ticks");
  Real& confidence = Maybe<Real>("confidence");
};

}  // namespace fleet
