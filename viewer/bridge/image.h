// The image that the worker makes of the rows: all that would be too much to draw one by one.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "call.h"
#include "timeline/colours.h"
#include "timeline/rows.h"

namespace viewer {

constexpr std::uint32_t BytesOf(timeline::Rgb colour, std::uint32_t opacity) {
  return (colour >> 16 & 0xFF) | (colour & 0xFF00) | (colour & 0xFF) << 16 | opacity << 24;
}

// The rows that are seen.
class Image {
 public:
  Image(Answer& answer, std::uint32_t width, double top, double height)
      : pixels_(answer.pixels),
        width_(width),
        top_(std::lround(top)),
        height_(std::lround(std::ceil(height))) {
    pixels_.assign(std::size_t{width_} * static_cast<std::size_t>(height_), 0);
  }

  // A part of a column; `y` counts from the top of all rows.
  void Fill(std::size_t x, long y, long height, std::uint32_t bytes) {
    const long end = std::min(y + height - top_, height_);
    for (y = std::max(y - top_, 0L); y < end; ++y) pixels_[static_cast<std::size_t>(y) * width_ + x] = bytes;
  }
  void Fill(long x, long end, long y, long height, std::uint32_t bytes) {
    for (x = std::max(x, 0L); x < std::min(end, static_cast<long>(width_)); ++x)
      Fill(static_cast<std::size_t>(x), y, height, bytes);
  }

 private:
  std::vector<std::uint32_t>& pixels_;
  std::uint32_t width_;
  long top_;
  long height_;
};

// The bars of a row.
class Bars {
 public:
  Bars(Image& image, const timeline::PlacedRow& row)
      : image_(image), top_(row.top + timeline::runsTop), height_(timeline::RunsHeightOf(row)) {}

  // From `level`, counted from below.
  void Add(std::size_t x, long level, long height, std::uint32_t bytes) {
    const long high = std::min<long>(height, height_ - level);
    if (high > 0) image_.Fill(x, top_ + height_ - level - high, high, bytes);
  }
  // All of it between two places, to whole pixels and at least one.
  void AddWhole(double begin, double end, std::uint32_t bytes) {
    const long left = std::lround(begin);
    image_.Fill(left, std::max(std::lround(end), left + 1), top_, height_, bytes);
  }
  int Height() const { return height_; }

 private:
  Image& image_;
  long top_;
  int height_;
};

}  // namespace viewer
