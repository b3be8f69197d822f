#include "hittest.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace timeline {
namespace {

using analysis::noTask;

constexpr double reach = 2;  // pixels

// The ticks that the pixels around a place show.
struct Around {
  Ticks at;
  Ticks from;
  Ticks to;
};

Around AroundOf(const Window& window, double x) {
  return {window.TickAt(x), window.TickAt(x - reach), window.TickAt(x + reach)};
}

Hit HitOf(HitKind kind, TaskIndex task, const Spans& spans, std::size_t index) {
  return {kind, task, index, 1, spans.BeginOf(index), spans.EndOf(index)};
}

// The span at a place, else the nearest one in reach.
Hit FindSpan(HitKind kind, TaskIndex task, const Spans& spans, const Around& around) {
  const std::size_t next = spans.FirstEndingAfter(around.at);
  if (next < spans.Size() && spans.BeginOf(next) <= around.at) return HitOf(kind, task, spans, next);
  const Ticks ahead = next < spans.Size() ? spans.BeginOf(next) - around.at : UINT64_MAX;
  const Ticks behind = next > 0 ? around.at - spans.EndOf(next - 1) : UINT64_MAX;
  if (ahead <= behind && next < spans.Size() && spans.BeginOf(next) <= around.to)
    return HitOf(kind, task, spans, next);
  if (next > 0 && spans.EndOf(next - 1) >= around.from) return HitOf(kind, task, spans, next - 1);
  return {};
}

// Of the marks that are drawn, the nearest one in reach.
Hit FindMark(HitKind kind, const Marks& marks, const Window& window, std::uint32_t width, double x) {
  Hit hit;
  double nearest = width / 2.0 + 1;
  const auto pixel = static_cast<std::uint32_t>(std::clamp(x, 0.0, window.Width() - 1.0));
  const std::uint32_t begin = pixel < width ? 0 : pixel - width;
  const std::uint32_t end = std::min(pixel + width, window.Width() - 1);
  for (const MarkCell& cell : CellsOf(marks, window, width, begin, end)) {
    const double distance = std::abs(cell.x - x);
    if (distance > nearest) continue;
    nearest = distance;
    const MarkPoint& mark = marks[cell.first];
    hit = {kind,     kind == HitKind::event ? mark.subject : mark.running, cell.first, cell.count, mark.time,
           mark.time};
  }
  return hit;
}

Hit FindGap(const analysis::Lane& lane, Ticks time) {
  const std::vector<analysis::Gap>& gaps = lane.Gaps();
  const auto next = std::partition_point(gaps.begin(), gaps.end(),
                                         [&](const analysis::Gap& gap) { return gap.to <= time; });
  if (next == gaps.end() || next->from > time) return {};
  return {HitKind::gap, noTask, static_cast<std::size_t>(next - gaps.begin()), 1, next->from, next->to};
}

Hit FirstFound(std::initializer_list<Hit> hits) {
  for (const Hit& hit : hits)
    if (hit.kind != HitKind::nothing) return hit;
  return {};
}

Hit HitTask(const Tracks& tracks, TaskIndex task, const Window& window, double x, double y) {
  const TaskTrack& track = tracks.Tasks()[task];
  const Around around = AroundOf(window, x);
  const Hit job = FindSpan(HitKind::job, task, track.jobs, around);
  if (y < marksHeight)
    return FirstFound({FindMark(HitKind::issue, track.issues, window, markWidth, x),
                       FindMark(HitKind::event, track.events, window, markWidth, x),
                       FindMark(HitKind::testpoint, track.testpoints, window, testpointWidth, x)});
  if (y >= runsTop + taskRunsHeight) return job;
  return FirstFound({FindGap(tracks.Lane(), around.at), FindSpan(HitKind::run, task, track.runs, around),
                     FindSpan(HitKind::wait, task, track.waits, {around.at, around.at, around.at}), job});
}

// Whose run covers the place, else comes nearest.
Hit HitLane(const Tracks& tracks, const Window& window, double x, double y) {
  if (y < marksHeight)
    return FirstFound({FindMark(HitKind::issue, tracks.Issues(), window, markWidth, x),
                       FindMark(HitKind::testpoint, tracks.LoneTestpoints(), window, testpointWidth, x)});
  const Around around = AroundOf(window, x);
  Hit best = FindGap(tracks.Lane(), around.at);
  if (best.kind != HitKind::nothing) return best;
  const auto distance = [&](const Hit& hit) {
    if (around.at < hit.begin) return hit.begin - around.at;
    return around.at < hit.end ? 0 : around.at - hit.end + 1;
  };
  const auto consider = [&](const Hit& hit) {
    if (hit.kind == HitKind::nothing) return;
    if (best.kind == HitKind::nothing || distance(hit) < distance(best)) best = hit;
  };
  for (TaskIndex task = 0; task < tracks.Tasks().size(); ++task)
    consider(FindSpan(HitKind::run, task, tracks.Tasks()[task].runs, around));
  consider(FindSpan(HitKind::unknown, noTask, tracks.Unknown(), around));
  return best;
}

}  // namespace

Hit HitAt(const Tracks& tracks, const PlacedRow& row, const Window& window, double x, double y) {
  if (x < 0 || x > window.Width() || y < 0 || y >= row.Height()) return {};
  return row.IsLane() ? HitLane(tracks, window, x, y) : HitTask(tracks, row.task, window, x, y);
}

}  // namespace timeline
