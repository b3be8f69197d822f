#include "layer.h"

namespace timeline {
namespace {

// Goes over the edges of pixels, from left to right, and keeps the span that is next at hand.
class EdgeWalk {
 public:
  EdgeWalk(const Spans& spans, const Window& window) : spans_(spans), window_(window) {
    TakeFar(spans.FirstEndingAfter(window.From()));
  }

  Layer Walk() {
    Window::Edge edge = window_.EdgeOf(0);
    Sum before = SumAt(edge);
    for (std::uint32_t x = 0; x < window_.Width(); ++x) {
      if (!isWithin_ || isWide_) {
        // Until then, no narrow span changes the sum.
        const Ticks time = IsAtEnd() ? window_.To() : isWithin_ ? end_ : begin_;
        if (time >= window_.To()) break;
        MoveTo(time, x, edge);
      }
      edge = window_.EdgeBehind(edge);
      const Sum behind = SumAt(edge);
      if (behind.ticks != before.ticks || behind.part != before.part) AddShare(x, before, behind);
      before = behind;
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

  // To the left edge of the pixel that shows `time`; one too early does no harm.
  void MoveTo(Ticks time, std::uint32_t& x, Window::Edge& edge) const {
    std::uint32_t next = std::min(static_cast<std::uint32_t>(window_.XOf(time)), window_.Width() - 1);
    if (next <= x) return;
    Window::Edge there = window_.EdgeOf(next);
    if (!Window::IsAtOrBehind(time, there)) there = window_.EdgeOf(--next);
    x = next;
    edge = there;
  }

  void TakeFar(std::size_t index) {
    before_ = spans_.TotalOfFirst(index);
    Take(index);
  }
  void Take(std::size_t index) {
    next_ = index;
    if (index == spans_.Size()) return;
    end_ = spans_.EndOf(index);
    begin_ = end_ - (spans_.TotalOfFirst(index + 1) - before_);
    isWide_ = end_ - begin_ >= window_.LeastWide();
  }
  // Mostly the next one is it.
  void TakeFirstEndingAfter(Ticks time) {
    before_ += end_ - begin_;
    Take(next_ + 1);
    if (!IsAtEnd() && end_ <= time) TakeFar(spans_.FirstEndingAfter(time, next_ + 1));
  }
  bool IsAtEnd() const { return next_ == spans_.Size(); }

  Sum SumAt(const Window::Edge& edge) {
    if (!IsAtEnd() && end_ <= edge.tick) TakeFirstEndingAfter(edge.tick);
    isWithin_ = !IsAtEnd() && begin_ <= edge.tick;
    if (isWithin_ && isWide_) AddSlice();
    const Ticks ticks = before_ - ticksOfSlices_;
    if (!isWithin_) return {ticks, 0};
    // The slice at hand is among the slices, but not yet in what lies before.
    if (isWide_) return {ticks + (end_ - begin_), 0};
    return {ticks + (edge.tick - begin_), edge.part};
  }

  // A wide span covers at least one edge, so none is missed.
  void AddSlice() {
    if (!layer_.slices.empty() && layer_.slices.back().index == next_) return;
    layer_.slices.push_back({next_, window_.XOf(begin_), window_.XOf(end_), spans_.IsCutAtBegin(next_),
                             spans_.IsCutAtEnd(next_)});
    ticksOfSlices_ += end_ - begin_;
  }

  void AddShare(std::uint32_t x, const Sum& before, const Sum& behind) {
    const double parts = static_cast<double>(behind.ticks - before.ticks) * window_.Width() + behind.part -
                         static_cast<double>(before.part);
    layer_.shares.push_back({x, static_cast<float>(parts / static_cast<double>(window_.Length()))});
  }

  const Spans& spans_;
  const Window& window_;
  std::size_t next_ = 0;  // the first that ends behind the edge
  Ticks before_ = 0;      // of all spans before it together
  Ticks begin_ = 0;
  Ticks end_ = 0;
  bool isWide_ = false;
  bool isWithin_ = false;    // begins before the edge
  Ticks ticksOfSlices_ = 0;  // of all slices so far
  Layer layer_;
};

}  // namespace

Layer LayerOf(const Spans& spans, const Window& window) { return EdgeWalk(spans, window).Walk(); }

}  // namespace timeline
