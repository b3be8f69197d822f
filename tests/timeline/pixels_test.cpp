// What each pixel shows, against a plain computation pixel by pixel.
#include <gtest/gtest.h>

#include <random>

#include "timeline/axis.h"
#include "timeline/layer.h"
#include "timeline/marks.h"

using namespace timeline;

namespace {

struct Span {
  Ticks begin, end;
};

class Random {
 public:
  explicit Random(unsigned seed) : random_(seed) {}
  Ticks Below(Ticks bound) { return random_() % bound; }

  std::vector<Span> SpansAndHoles(Ticks begin, unsigned most) {
    std::vector<Span> spans;
    const Ticks sizes[] = {3, 10, 300};
    for (Ticks count = Below(most), time = begin; count > 0; --count) {
      const Ticks from = time + Below(3) * Below(sizes[Below(3)]);
      time = from + Below(sizes[Below(3)]);
      spans.push_back({from, time});
    }
    return spans;
  }

  Window AnyWindow(Ticks begin) {
    return {begin + Below(400), 1 + Below(2) * Below(2000) + Below(20),
            static_cast<std::uint32_t>(1 + Below(70))};
  }

 private:
  std::mt19937_64 random_;
};

// In parts of a tick, as many as the window has pixels, from the begin of the window: there a pixel begins
// and ends at whole numbers.
std::int64_t PartsOf(Ticks time, const Window& window) {
  return static_cast<std::int64_t>(time - window.From()) * window.Width();
}

std::int64_t Overlap(const Span& span, const Window& window, std::uint32_t x) {
  const auto length = static_cast<std::int64_t>(window.Length());
  const std::int64_t from = std::max(PartsOf(span.begin, window), x * length);
  const std::int64_t to = std::min(PartsOf(span.end, window), (x + 1) * length);
  return std::max<std::int64_t>(to - from, 0);
}

bool IsWide(const Span& span, const Window& window) {
  return (span.end - span.begin) * window.Width() >= window.Length();
}

std::vector<float> SharesOf(const Layer& layer, const Window& window) {
  std::vector<float> shares(window.Width());
  for (const Share& share : layer.shares) shares.at(share.x) += share.part;
  return shares;
}

void ExpectPixels(const std::vector<Span>& all, const Window& window) {
  Spans spans;
  for (const Span& span : all) spans.Add(span.begin, span.end);
  const Layer layer = LayerOf(spans, window);
  const std::vector<float> shares = SharesOf(layer, window);
  for (std::uint32_t x = 0; x < window.Width(); ++x) {
    std::int64_t narrow = 0;
    for (const Span& span : all) narrow += IsWide(span, window) ? 0 : Overlap(span, window, x);
    EXPECT_EQ(shares[x],
              static_cast<float>(static_cast<double>(narrow) / static_cast<double>(window.Length())))
        << "pixel " << x;
  }
  std::vector<std::size_t> wide, found;
  for (std::size_t i = 0; i < all.size(); ++i)
    if (IsWide(all[i], window) && all[i].end > window.From() && all[i].begin < window.To()) wide.push_back(i);
  for (const Slice& slice : layer.slices)
    if (slice.begin < window.Width()) found.push_back(slice.index);
  EXPECT_EQ(found, wide);
}

TEST(Pixels, ShowTheExactShareOfTheirTime) {
  for (unsigned seed = 1; seed <= 3000 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    const Ticks begin = seed % 2 == 0 ? 0 : Ticks{1} << 60;
    ExpectPixels(random.SpansAndHoles(begin, 60), random.AnyWindow(begin));
  }
}

TEST(Pixels, CoverAllTimeThereIs) {
  Spans spans;
  spans.Add(0, 1);
  spans.Add(UINT64_MAX - 1, UINT64_MAX);
  const Layer layer = LayerOf(spans, Window(0, UINT64_MAX, 1000));
  ASSERT_EQ(layer.shares.size(), 2);
  EXPECT_EQ(layer.shares[0].x, 0);
  EXPECT_EQ(layer.shares[1].x, 999);
  EXPECT_GT(layer.shares[0].part, 0);
  EXPECT_GT(layer.shares[1].part, 0);
}

TEST(Cells, TakeTogetherTheMarksOfTheSamePixels) {
  for (unsigned seed = 1; seed <= 1000 && !HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Marks marks;
    for (Ticks count = random.Below(80), time = 500; count > 0; --count)
      marks.push_back({time += random.Below(2) * random.Below(30), 0, 0});
    const Window window = random.AnyWindow(500);
    const auto width = static_cast<std::uint32_t>(1 + random.Below(9));
    std::vector<std::size_t> expected(window.Width() / width + 1);
    for (const MarkPoint& mark : marks) {
      if (mark.time < window.From() || mark.time > window.To()) continue;
      const Ticks pixel = (mark.time - window.From()) * window.Width() / window.Length();
      ++expected[std::min<Ticks>(pixel, window.Width() - 1) / width];
    }
    std::vector<std::size_t> counts(expected.size());
    for (const MarkCell& cell : CellsOf(marks, window, width))
      counts[window.PixelOf(marks[cell.first].time) / width] += cell.count;
    EXPECT_EQ(counts, expected);
  }
}

std::string AxisText(const Window& window, Ticks origin, std::uint64_t rate) {
  std::string text;
  for (const AxisTick& tick : AxisOf(window, origin, rate, 100))
    text += tick.label + "@" + std::to_string(std::lround(tick.x)) + " ";
  return text;
}

TEST(Axis, HasRoundTimes) {
  const Ticks late = Ticks{1} << 63;
  const struct {
    const char* name;
    Window window;
    Ticks origin;
    std::uint64_t rate;
    const char* expected;
  } cases[] = {
      {"seconds", {0, 20'000'000, 500}, 0, 1'000'000, "0@0 5@125 10@250 15@375 20@500 "},
      {"between two",
       {1'300'000, 1'000'000, 500},
       100'000,
       1'000'000,
       "1.2@0 1.4@100 1.6@200 1.8@300 2.0@400 2.2@500 "},
      {"a part of one",
       {1'000'150, 400, 400},
       1'000'000,
       1'000'000,
       "0.0002@50 0.0003@150 0.0004@250 0.0005@350 "},
      {"before the start", {1000, 4000, 400}, 3500, 1000, "-2@50 -1@150 0@250 1@350 "},
      {"parts before it", {2800, 400, 400}, 3000, 1000, "-0.2@0 -0.1@100 0.0@200 0.1@300 0.2@400 "},
      {"few ticks", {7, 4, 400}, 0, 0, "7@0 8@100 9@200 10@300 11@400 "},
      {"ticks that are late", {late, 100, 500}, 0, 0, "9223372036854775850@210 9223372036854775900@460 "},
      {"odd rate", {0, 100'000'000, 400}, 0, 33'333'333, "0@0 1@133 2@267 3@400 "},
  };
  for (const auto& one : cases) {
    SCOPED_TRACE(one.name);
    EXPECT_EQ(AxisText(one.window, one.origin, one.rate), one.expected);
  }
}

}  // namespace
