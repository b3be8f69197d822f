// How busy the lanes of a group are, for a strip with the whole of it.
#include <algorithm>

#include "recording.h"

namespace viewer {
namespace {

enum Notable : std::int32_t { hasGap = 1, hasIssue = 2 };

// Adds up what lanes tell of each pixel.
class Overview {
 public:
  explicit Overview(const timeline::Window& window)
      : window_(window), busy_(window.Width()), known_(window.Width()), notable_(window.Width()) {}

  // Time: the pixels times the logarithm of the runs of the idle task, and the timing issues.
  void Add(const ViewedLane& lane) {
    const analysis::TaskIndex idle = lane.Of().conventions.idle;
    const timeline::Tracks& tracks = lane.Tracks();
    for (std::uint32_t x = 0; x < window_.Width(); ++x) {
      const Ticks from = std::max(window_.EdgeOf(x).tick, lane.Of().lane.StartTime());
      const Ticks to = std::min(window_.EdgeOf(x + 1).tick, lane.Of().lane.StopTime());
      if (from >= to) continue;
      const Ticks inGaps = lane.gaps.TicksWithin(from, to);
      const Ticks known = to - from - inGaps - tracks.Unknown().TicksWithin(from, to);
      const Ticks idling = idle == analysis::noTask ? 0 : tracks.Tasks()[idle].runs.TicksWithin(from, to);
      known_[x] += static_cast<double>(known);
      busy_[x] += static_cast<double>(known - std::min(idling, known));
      if (inGaps > 0) notable_[x] |= hasGap;
    }
    for (const timeline::MarkPoint& issue : tracks.Issues())
      if (issue.time >= window_.From() && issue.time <= window_.To())
        notable_[window_.PixelOf(issue.time)] |= hasIssue;
  }

  void Write(Answer& answer) const {
    for (std::size_t x = 0; x < busy_.size(); ++x)
      answer.floats.push_back(known_[x] > 0 ? static_cast<float>(busy_[x] / known_[x]) : 0);
    answer.ints = notable_;
  }

 private:
  const timeline::Window& window_;
  std::vector<double> busy_;   // ticks
  std::vector<double> known_;  // ticks
  std::vector<std::int32_t> notable_;
};

}  // namespace

// Keys: `group`, those of a window. Floats: of each pixel how busy the lanes were, 0 to 1. Integers: 1 where
// records were lost, 2 where there are timing issues.
void Load(Recording& recording, const Request& request, Answer& answer) {
  const std::size_t group = request.Index("group");
  recording.GroupAt(group);
  const timeline::Window window = WindowOf(request);
  Overview overview(window);
  for (std::size_t lane = 0; lane < recording.Lanes().size(); ++lane)
    if (recording.GroupOf(lane) == group) overview.Add(*recording.Lanes()[lane]);
  overview.Write(answer);
  answer.json.Null();
}

}  // namespace viewer
