#include "layer.h"

#include <cmath>

namespace timeline {
namespace {

// Goes over the edges of pixels, from left to right.
class EdgeWalk {
 public:
  EdgeWalk(const Spans& spans, const Window& window)
      : spans_(spans), window_(window), next_(spans.FirstEndingAfter(window.From())) {}

  Layer Walk() {
    layer_.shares.resize(window_.Width());
    Sum before = SumAt(0);
    for (std::uint32_t x = 0; x < window_.Width();) {
      const Sum behind = SumAt(x + 1);
      if (behind.ticks != before.ticks || behind.part != before.part) SetShare(x, before, behind);
      before = behind;
      x = std::max(x + 1, FirstOfInterest());
      // Until there, no narrow span changes the sum.
    }
    return std::move(layer_);
  }

 private:
  // Of the narrow spans, what lies before an edge: ticks, and parts of one as Window::Edge has them. All in
  // integers: what is left over when wide ones are taken away is nothing but the narrow ones.
  struct Sum {
    Ticks ticks;
    std::uint32_t part;
  };

  Sum SumAt(std::uint32_t x) {
    const Window::Edge edge = window_.EdgeOf(x);
    next_ = spans_.FirstEndingAfter(edge.tick, next_);
    Sum sum{spans_.TotalOfFirst(next_), 0};
    isWithin_ = next_ < spans_.Size() && spans_.BeginOf(next_) <= edge.tick;
    isWide_ = isWithin_ && IsWide(next_);
    if (isWide_) AddSlice();
    if (isWithin_ && !isWide_) sum = {sum.ticks + (edge.tick - spans_.BeginOf(next_)), edge.part};
    sum.ticks -= isWide_ ? ticksOfSlices_ - LengthOf(next_) : ticksOfSlices_;
    return sum;
  }

  Ticks LengthOf(std::size_t index) const { return spans_.EndOf(index) - spans_.BeginOf(index); }
  bool IsWide(std::size_t index) const { return window_.PixelsOf(LengthOf(index)) >= 1; }

  // A wide span covers at least one edge, so none is missed.
  void AddSlice() {
    if (!layer_.slices.empty() && layer_.slices.back().index == next_) return;
    layer_.isEmpty = false;
    layer_.slices.push_back({next_, window_.XOf(spans_.BeginOf(next_)), window_.XOf(spans_.EndOf(next_)),
                             spans_.IsCutAtBegin(next_), spans_.IsCutAtEnd(next_)});
    ticksOfSlices_ += LengthOf(next_);
  }

  void SetShare(std::uint32_t x, const Sum& before, const Sum& behind) {
    const double parts = static_cast<double>(behind.ticks - before.ticks) * window_.Width() + behind.part -
                         static_cast<double>(before.part);
    layer_.shares[x] = static_cast<float>(parts / static_cast<double>(window_.Length()));
    layer_.isEmpty = false;
  }

  // A pixel not behind the one in which the sum next changes; one too early does no harm.
  std::uint32_t FirstOfInterest() const {
    if (next_ == spans_.Size()) return window_.Width();
    if (isWithin_ && !isWide_) return 0;
    const Ticks time = isWide_ ? spans_.EndOf(next_) : spans_.BeginOf(next_);
    if (time >= window_.To()) return window_.Width();
    const auto x = static_cast<std::uint32_t>(window_.XOf(time));
    return x == 0 ? 0 : x - 1;
  }

  const Spans& spans_;
  const Window& window_;
  std::size_t next_;
  bool isWithin_ = false;
  bool isWide_ = false;
  Ticks ticksOfSlices_ = 0;  // of all slices so far
  Layer layer_;
};

}  // namespace

Layer LayerOf(const Spans& spans, const Window& window) { return EdgeWalk(spans, window).Walk(); }

}  // namespace timeline
