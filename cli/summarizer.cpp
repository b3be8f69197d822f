#include "summarizer.h"

#include <algorithm>
#include <cctype>

#include "analysis/findings.h"
#include "analysis/statistics.h"
#include "explainwords.h"
#include "failure.h"
#include "fleet/identity.h"
#include "fleet/rows.h"
#include "longwork.h"

namespace cli {
namespace {

void AddPart(fleet::Identity& identity, std::string_view bytes) {
  identity.Add(std::to_string(bytes.size()));
  identity.Add(" ");
  identity.Add(bytes);
}

// "press/@1" and "press" are one machine.
std::string WithoutKernel(const std::string& target) {
  const std::size_t at = target.rfind('@');
  if (at == std::string::npos || at == 0 || at + 1 == target.size()) return target;
  const bool isNumber = std::all_of(target.begin() + static_cast<std::ptrdiff_t>(at) + 1, target.end(),
                                    [](unsigned char c) { return std::isdigit(c); });
  const char before = target[at - 1];
  return isNumber && (before == '/' || before == '\\') ? target.substr(0, at - 1) : target;
}

// What the recording says itself.
Partition PartitionOf(const Metadata* metadata) {
  constexpr std::size_t dayLength = 10;
  if (!metadata) return {};
  Partition partition{metadata->startedAt.substr(0, dayLength), WithoutKernel(metadata->target)};
  if (!IsDay(partition.day)) partition.day.clear();
  return partition;
}

// What is in the files, and what tells equal files of two machines apart. Under another machine or day than
// its own a recording is another one; when all files of a day are joined, one of the two would be lost
// otherwise.
std::string IdentityOf(const std::vector<Lane>& lanes, const Metadata* metadata, const Partition& partition) {
  fleet::Identity identity;
  AddPart(identity, metadata ? metadata->target : "");
  AddPart(identity, metadata ? metadata->startedAt : "");
  for (const Lane& lane : lanes) {
    AddPart(identity, lane.name);
    for (const LaneFile& file : lane.files) AddPart(identity, ReadWhole(file.path, [](double) {}));
  }
  const Partition own = PartitionOf(metadata);
  if (partition.machine != own.machine) AddPart(identity, "machine=" + partition.machine);
  if (partition.day != own.day) AddPart(identity, "day=" + partition.day);
  return identity.Text();
}

// Returns the number of entries.
std::uint64_t AddLane(const AnalysedLane& lane, fleet::Rows& rows) {
  const std::uint64_t entries = lane.loaded->log.EntriesCount();
  rows.AddLane(lane.source.name, lane.lane, analysis::Statistics::Of(lane.lane, lane.conventions), entries);
  const analysis::Schedule schedule(lane.lane, lane.conventions);
  for (const analysis::Finding& finding : analysis::Explain(schedule, {}).findings)
    rows.AddFinding(finding, Verdict(lane, finding));
  return entries;
}

}  // namespace

Summarized Summarizer::Summarize(const std::string& path) {
  const std::vector<Lane> lanes = FindLanes({path});
  for (const Lane& lane : lanes)
    if (lane.files.empty()) LoadLane(lane);  // says why
  const Metadata* metadata = nullptr;
  for (const Lane& lane : lanes)
    if (!metadata) metadata = lane.files.front().metadata.get();
  Partition partition = PartitionOf(metadata);
  if (!machine_.empty()) partition.machine = machine_;
  if (!day_.empty()) partition.day = day_;
  const std::string identity = IdentityOf(lanes, metadata, partition);
  if (dataset_.Has(partition, identity)) return {Summarized::Outcome::known};
  fleet::Recording recording{.identity = identity, .source = path, .machine = partition.machine};
  if (metadata) {
    recording.target = metadata->target;
    recording.startedAt = metadata->startedAt;
    recording.tool = metadata->tool;
  }
  std::string bytes;
  fleet::Rows rows(recording, bytes);
  Summarized result{Summarized::Outcome::added};
  LaneLoader loader("summary", options_);
  for (const Lane& lane : lanes) {
    try {
      result.entries += AddLane(loader.Load(lane), rows);
    } catch (const Failure& failure) {
      result.outcome = Summarized::Outcome::broken;
      rows.AddBroken(lane.name, failure.what());
    }
  }
  rows.Finish();
  if (!dataset_.Put(partition, identity, bytes)) result.outcome = Summarized::Outcome::known;
  return result;
}

}  // namespace cli
