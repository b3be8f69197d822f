#include "recording.h"

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

void Recording::Open(const std::vector<std::string>& arguments) {
  rows.clear();
  groups_.clear();
  lanes_.clear();
  problems_.clear();
  cli::LaneLoader loader("view", {});
  for (const cli::Lane& lane : cli::FindLanes(arguments)) {
    try {
      lanes_.push_back(std::make_unique<ViewedLane>(loader.Load(lane)));
    } catch (const cli::Failure& failure) {
      problems_.emplace_back(failure.what());
    }
  }
  std::vector<cli::PlotLane*> drawn;
  for (const auto& lane : lanes_) drawn.push_back(&lane->drawn);
  groups_ = cli::Grouped(drawn);
}

ViewedLane& Recording::LaneAt(std::size_t index) const {
  if (index >= lanes_.size()) throw cli::Failure(fmt::format("there is no lane {}", index));
  return *lanes_[index];
}

const cli::PlotGroup& Recording::GroupAt(std::size_t index) const {
  if (index >= groups_.size()) throw cli::Failure(fmt::format("there is no group {} of lanes", index));
  return groups_[index];
}

// Groups hold the lanes in their order.
std::size_t Recording::GroupOf(std::size_t lane) const {
  std::size_t group = 0;
  for (std::size_t end = 0; group + 1 < groups_.size(); ++group) {
    end += groups_[group].lanes.size();
    if (lane < end) break;
  }
  return group;
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
