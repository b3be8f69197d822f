// The stretch of time that a picture shows, and which pixel shows which part of it.
#pragma once

#include <algorithm>
#include <cstdint>

#include "spans.h"

namespace timeline {

// Pixel x shows the time from Edge(x) to Edge(x + 1), which need not be whole ticks.
class Window {
 public:
  // At least a tick long and a pixel wide; it does not reach beyond the last time there is.
  Window(Ticks from, Ticks length, std::uint32_t width)
      : width_(std::max<std::uint32_t>(width, 1)),
        length_(std::max<Ticks>(length, 1)),
        from_(std::min<Ticks>(from, UINT64_MAX - length_)),
        ofPixel_{length_ / width_, static_cast<std::uint32_t>(length_ % width_)} {}

  std::uint32_t Width() const { return width_; }
  Ticks From() const { return from_; }
  Ticks To() const { return from_ + length_; }
  Ticks Length() const { return length_; }

  // The shortest time that is a pixel wide.
  Ticks LeastWide() const { return ofPixel_.tick + (ofPixel_.part > 0 ? 1 : 0); }

  // The left edge of a pixel, exactly.
  struct Edge {
    Ticks tick;
    std::uint32_t part;  // of a tick more, in parts of Width()
  };
  Edge EdgeOf(std::uint32_t x) const {
    const std::uint64_t rest = std::uint64_t{x} * ofPixel_.part;
    return {from_ + x * ofPixel_.tick + rest / width_, static_cast<std::uint32_t>(rest % width_)};
  }
  // That of the pixel behind, without a division.
  Edge EdgeBehind(const Edge& edge) const {
    const std::uint64_t part = std::uint64_t{edge.part} + ofPixel_.part;
    if (part < width_) return {edge.tick + ofPixel_.tick, static_cast<std::uint32_t>(part)};
    return {edge.tick + ofPixel_.tick + 1, static_cast<std::uint32_t>(part - width_)};
  }

  bool IsAtOrBehind(Ticks time, std::uint32_t x) const { return IsAtOrBehind(time, EdgeOf(x)); }
  static bool IsAtOrBehind(Ticks time, const Edge& edge) {
    return time > edge.tick || (time == edge.tick && edge.part == 0);
  }
  // The pixel that shows a time within the window; its end counts to the last.
  std::uint32_t PixelOf(Ticks time) const {
    std::uint32_t x = std::min(static_cast<std::uint32_t>(XOf(time)), width_ - 1);
    while (x > 0 && !IsAtOrBehind(time, x)) --x;
    while (x + 1 < width_ && IsAtOrBehind(time, x + 1)) ++x;
    return x;
  }

  double XOf(Ticks time) const { return PixelsOf(time - from_, from_ - time, time >= from_); }
  double PixelsOf(Ticks ticks) const {
    return static_cast<double>(ticks) * width_ / static_cast<double>(length_);
  }
  // The tick at a place of the picture, which may lie beside it.
  Ticks TickAt(double x) const {
    const double ticks = std::clamp(x / width_, 0.0, 1.0) * static_cast<double>(length_);
    return ticks >= static_cast<double>(length_) ? To() : from_ + static_cast<Ticks>(ticks);
  }

 private:
  double PixelsOf(Ticks ahead, Ticks behind, bool isAhead) const {
    return isAhead ? PixelsOf(ahead) : -PixelsOf(behind);
  }

  std::uint32_t width_;
  Ticks length_;
  Ticks from_;
  Edge ofPixel_;  // how far it is from one edge to the next
};

}  // namespace timeline
