#include "recording.h"

#include <algorithm>
#include <cmath>

#include "cli/failure.h"

namespace viewer {

ViewedLane::ViewedLane(cli::AnalysedLane analysed) : drawn(std::move(analysed)) {
  for (const analysis::Gap& gap : Of().lane.Gaps()) gaps.Add(gap.from, gap.to);
  byPriority = timeline::RowsOf(Tracks(), {.hidesEmpty = false}, 0, UINT64_MAX);
}

const analysis::Schedule& ViewedLane::Schedule() {
  if (!schedule_) schedule_ = std::make_unique<analysis::Schedule>(Of().lane, Of().conventions);
  return *schedule_;
}

const std::vector<SubjectMark>& ViewedLane::MarksOf(analysis::SubjectIndex subject) {
  if (subject == subject_) return marks_;
  subject_ = subject;
  marks_.clear();
  const auto take = [&](const timeline::Marks& marks) {
    for (std::size_t i = 0; i < marks.size(); ++i)
      if (marks[i].subject == subject) marks_.push_back({marks[i].time, i});
  };
  take(Tracks().Issues());
  take(Tracks().LoneTestpoints());
  for (const timeline::TaskTrack& track : Tracks().Tasks()) take(track.testpoints);
  std::stable_sort(marks_.begin(), marks_.end(),
                   [](const SubjectMark& a, const SubjectMark& b) { return a.time < b.time; });
  return marks_;
}

double ViewedLane::LoadOf(analysis::TaskIndex task, Ticks from, Ticks to) const {
  from = std::max(from, Of().lane.StartTime());
  to = std::min(to, Of().lane.StopTime());
  if (to <= from) return std::nan("");
  const Ticks unknown = gaps.TicksWithin(from, to) + Tracks().Unknown().TicksWithin(from, to);
  if (to - from <= unknown) return std::nan("");
  return static_cast<double>(Tracks().Tasks()[task].runs.TicksWithin(from, to)) /
         static_cast<double>(to - from - unknown);
}

double ViewedLane::BusyShare(Ticks from, Ticks to) const {
  const analysis::TaskIndex idle = Of().conventions.idle;
  return idle == analysis::noTask ? std::nan("") : 1 - LoadOf(idle, from, to);
}

namespace {

// Whether a file is what an argument stands for, or lies in its folder.
bool StandsFor(std::string argument, const std::string& path) {
  while (argument.size() > 1 && argument.back() == '/') argument.pop_back();
  return path == argument || path.rfind(argument + "/", 0) == 0;
}

}  // namespace

void Recording::Open(const std::vector<std::string>& arguments, bool adds) {
  rows_ = {};
  groups_.clear();
  problems_.clear();
  if (!adds) {
    lanes_.clear();
    arguments_.clear();
    argumentOf_.clear();
  }
  const std::size_t firstArgument = arguments_.size();
  arguments_.insert(arguments_.end(), arguments.begin(), arguments.end());
  cli::LaneLoader loader("view", {});
  for (const cli::Lane& lane : cli::FindLanes(arguments)) {
    try {
      AddLane(std::make_unique<ViewedLane>(loader.Load(lane)), firstArgument);
    } catch (const cli::Failure& failure) {
      problems_.emplace_back(failure.what());
    }
  }
  Group(adds);
}

void Recording::AddLane(std::unique_ptr<ViewedLane> lane, std::size_t firstArgument) {
  const std::vector<cli::LaneFile>& files = lane->Of().source.files;
  std::size_t argument = firstArgument;
  for (std::size_t i = firstArgument; i < arguments_.size() && !files.empty(); ++i)
    if (StandsFor(arguments_[i], files.front().path)) argument = i;
  lanes_.push_back(std::move(lane));
  argumentOf_.push_back(argument);
}

void Recording::Group(bool separately) {
  rows_ = {};
  groups_.clear();
  groupOf_.assign(lanes_.size(), 0);
  std::vector<cli::PlotLane*> drawn;
  for (std::size_t lane = 0; lane < lanes_.size(); ++lane) {
    drawn.push_back(&lanes_[lane]->drawn);
    const bool isLast = lane + 1 == lanes_.size();
    if (!isLast && (!separately || argumentOf_[lane] == argumentOf_[lane + 1])) continue;
    const std::vector<cli::PlotGroup> more = cli::Grouped(drawn);
    groups_.insert(groups_.end(), more.begin(), more.end());
    drawn.clear();
  }
  std::size_t lane = 0;  // groups hold the lanes in their order
  for (std::size_t group = 0; group < groups_.size(); ++group)
    for (std::size_t i = 0; i < groups_[group].lanes.size(); ++i) groupOf_[lane++] = group;
}

std::vector<timeline::PlacedRow>& Recording::RowsOf(const Request& request) {
  const std::size_t pane = request.Has("pane") ? request.Index("pane") : 0;
  if (pane >= rows_.size()) throw cli::Failure(fmt::format("there is no pane {}", pane));
  return rows_[pane];
}

ViewedLane& Recording::LaneAt(std::size_t index) const {
  if (index >= lanes_.size()) throw cli::Failure(fmt::format("there is no lane {}", index));
  return *lanes_[index];
}

const cli::PlotGroup& Recording::GroupAt(std::size_t index) const {
  if (index >= groups_.size()) throw cli::Failure(fmt::format("there is no group {} of lanes", index));
  return groups_[index];
}

timeline::Window WindowOf(const Request& request) {
  constexpr std::size_t widest = 16384;
  return {request.Time("from"), request.Time("length"),
          static_cast<std::uint32_t>(std::min(request.Index("width"), widest))};
}

analysis::TaskIndex TaskOf(const Request& request, const ViewedLane& lane) {
  const std::size_t task = request.Index("task");
  if (task >= lane.Tracks().Tasks().size()) throw cli::Failure(fmt::format("there is no task {}", task));
  return static_cast<analysis::TaskIndex>(task);
}

}  // namespace viewer
