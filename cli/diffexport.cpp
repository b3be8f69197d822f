// A comparison for programs.
#include "csvwriter.h"
#include "diffformat.h"
#include "jsonwriter.h"
#include "summaryformat.h"

namespace cli {
namespace {

using analysis::Change;

void AddSide(JsonWriter& json, const char* key, const std::vector<AnalysedLane>& side) {
  json.Key(key).BeginArray();
  for (const AnalysedLane& lane : side) {
    json.BeginRow();
    AddLaneKeys(json, lane);
    json.EndObject();
  }
  json.EndArray();
}

void AddMissing(JsonWriter& json, const char* key, const std::vector<analysis::Missing>& missing) {
  json.Key(key).BeginArray();
  for (const analysis::Missing& one : missing) {
    json.BeginRow();
    json.Key("lane").Text(one.lane);
    json.Key("task").TextOrNull(one.task);
    json.EndObject();
  }
  json.EndArray();
}

void AddChange(JsonWriter& json, const Change& change) {
  json.BeginRow();
  json.Key("lane").Text(change.lane);
  json.Key("task").Text(change.task);
  json.Key("quantity").Text(NameOf(change.quantity));
  json.Key("noise").Bool(change.test.IsNoise());
  json.Key("superiority").Number(change.test.superiority);
  json.Key("z").Number(change.test.z);
  json.Key("tailZ").Number(change.test.tailZ);
  json.Key("outliers").Count(change.test.outliers);
  json.Key("before");
  AddSummary(json, change.before);
  json.Key("after");
  AddSummary(json, change.after);
  json.EndObject();
}

void AddLoad(JsonWriter& json, const analysis::LoadChange& load) {
  json.BeginRow();
  json.Key("lane").Text(load.lane);
  json.Key("task").Text(load.task);
  json.Key("before").Number(load.before);
  json.Key("after").Number(load.after);
  json.EndObject();
}

}  // namespace

void AppendDiffCsv(fmt::memory_buffer& out, const Difference& difference) {
  CsvWriter csv(out);
  for (const char* column : {"lane", "task", "quantity", "statistic", "before", "after", "change", "noise"})
    csv.Text(column);
  csv.EndRow();
  for (const Change& change : difference.comparison.changes) {
    for (const ChangedNumber& number : NumbersOf(change)) {
      csv.Text(change.lane);
      csv.Text(change.task);
      csv.Text(SnakeCase(NameOf(change.quantity)));
      csv.Text(number.column);
      csv.Count(number.before);
      csv.Count(number.after);
      csv.Number(number.Rise());
      csv.Text(change.test.IsNoise() ? "noise" : "");
      csv.EndRow();
    }
  }
  for (const analysis::LoadChange& load : difference.comparison.loads) {
    for (const std::string_view text : {std::string_view(load.lane), std::string_view(load.task)})
      csv.Text(text);
    csv.Text("load");
    csv.Nothing();
    csv.Number(load.before);
    csv.Number(load.after);
    const bool both = load.before && load.after && *load.before > 0;
    csv.Number(both ? std::optional(*load.after / *load.before - 1) : std::nullopt);
    csv.Nothing();
    csv.EndRow();
  }
}

void AppendDiffJson(fmt::memory_buffer& out, const Difference& difference) {
  JsonWriter json(out);
  json.BeginObject();
  json.Key("schema").Count(1);
  AddSide(json, "before", difference.before);
  AddSide(json, "after", difference.after);
  json.Key("changes").BeginArray();
  for (const Change& change : difference.comparison.changes) AddChange(json, change);
  json.EndArray();
  json.Key("loads").BeginArray();
  for (const analysis::LoadChange& load : difference.comparison.loads) AddLoad(json, load);
  json.EndArray();
  AddMissing(json, "appeared", difference.comparison.appeared);
  AddMissing(json, "vanished", difference.comparison.vanished);
  AddMissing(json, "stalled", difference.comparison.stalled);
  json.EndObject();
  json.EndText();
}

}  // namespace cli
