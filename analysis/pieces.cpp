#include "pieces.h"

#include "partfinder.h"

namespace analysis {
namespace {

void Sort(std::vector<Piece>& pieces) {
  std::stable_sort(pieces.begin(), pieces.end(),
                   [](const Piece& a, const Piece& b) { return a.stretch.from < b.stretch.from; });
}

void KeepLongest(std::vector<Piece>& pieces, std::size_t most) {
  if (pieces.size() <= most) return;
  std::nth_element(pieces.begin(), pieces.begin() + static_cast<std::ptrdiff_t>(most), pieces.end(),
                   [](const Piece& a, const Piece& b) { return a.stretch.Length() > b.stretch.Length(); });
  pieces.resize(most);
}

}  // namespace

std::vector<Piece> PiecesIn(const Schedule& schedule, TaskIndex task, const Stretch& stretch,
                            std::size_t most) {
  std::vector<Piece> pieces;
  const std::vector<Stretch> waits = schedule.WaitsIn(task, stretch);
  for (const Stretch& wait : waits)
    if (wait.Length() > 0) pieces.push_back({PartKind::waiting, task, wait});
  auto wait = waits.begin();
  schedule.ForEachRun(stretch, [&](TaskIndex by, const Stretch& run) {
    if (by == task) return pieces.push_back({PartKind::execution, task, run});
    const bool isIdle = schedule.IsIdle(by);
    const PartKind kind = isIdle ? PartKind::dispatch : KindOf(schedule, task, by);
    const auto add = [&](Ticks from, Ticks to) {
      if (from < to) pieces.push_back({kind, isIdle ? noTask : by, {from, to}});
    };
    Ticks readySince = run.from;
    while (wait != waits.end() && wait->to <= run.from) ++wait;
    for (auto one = wait; one != waits.end() && one->from < run.to; ++one) {
      add(readySince, one->from);
      readySince = one->to;
    }
    add(readySince, run.to);
  });
  KeepLongest(pieces, most);
  Sort(pieces);
  return pieces;
}

}  // namespace analysis
