// tasklog plot: a picture of what ran when.
#include "analysedlane.h"
#include "bounds.h"
#include "commandline.h"
#include "failure.h"
#include "outputplace.h"
#include "plotview.h"
#include "png.h"
#include "taskfilter.h"
#include "text.h"

namespace cli {
namespace {

struct Options {
  AnalysisOptions common;
  std::vector<std::string> tasks;  // shell patterns
  std::string sort = "priority";
  std::string width = "1600";
  std::string output;
};

constexpr int leastWidth = 400;
constexpr int mostWidth = 16000;

bool IsPng(const std::string& path) {
  if (path.ends_with(".png")) return true;
  if (path.ends_with(".svg")) return false;
  throw UsageError("--output: " + Quoted(path) + " ends neither in .svg nor in .png");
}

int CheckedWidth(const std::string& text) {
  const auto width = ParseNumber(text);
  if (width && *width >= leastWidth && *width <= mostWidth) return static_cast<int>(*width);
  throw UsageError(
      fmt::format("--width: {} is not a number from {} to {}", Quoted(text), leastWidth, mostWidth));
}

// --from and --to count from the earliest start, so that they mean one time for all lanes of a group.
void SelectTime(PlotGroup& group, const AnalysisOptions& options) {
  const std::string doing = "plot of " + Quoted(group.lanes.front()->of.source.shownAs);
  const Bounds bounds = BoundsIn(*group.first, CheckedBound("--from", options.from),
                                 CheckedBound("--to", options.to), "plot", doing);
  group.Select(bounds.from, bounds.to);
}

// The bytes of the file.
std::string Drawn(const std::vector<PlotGroup>& groups, const timeline::RowChoice& choice, int width,
                  bool asPng) {
  PlotPicture picture = DrawPlot(groups, choice, width, !asPng);
  if (!asPng) return std::move(picture.svg);
  if (picture.height > mostPngPixels)
    throw Failure(
        fmt::format("plot: a PNG of {} pixels in height cannot be drawn, only one of up to {}; select "
                    "tasks with --task, or write .svg",
                    picture.height, mostPngPixels));
  return PngOf(picture.svg, picture.width, picture.height);
}

// The lanes that can be read; of the others a line on stderr, and the exit code.
int LoadLanes(const Options& options, std::vector<std::unique_ptr<PlotLane>>& lanes) {
  AnalysisOptions whole = options.common;
  whole.from.reset();
  whole.to.reset();
  LaneLoader loader("plot", whole);
  TaskFilter filter(options.tasks);
  int exitCode = exitSuccess;
  for (const Lane& lane : FindLanes(options.common.logs)) {
    try {
      lanes.push_back(std::make_unique<PlotLane>(loader.Load(lane)));
      filter.Of(lanes.back()->of.lane);
    } catch (const Failure& failure) {
      PrintError(failure.what());
      exitCode = exitFailure;
    }
  }
  if (exitCode != exitSuccess) return exitCode;
  loader.Finish();
  filter.Finish();
  return exitCode;
}

int Plot(const Options& options) {
  const bool asPng = IsPng(options.output);
  const int width = CheckedWidth(options.width);
  const std::string place = PlaceOfFile(options.output);
  std::vector<std::unique_ptr<PlotLane>> lanes;
  const int exitCode = LoadLanes(options, lanes);
  if (lanes.empty()) return exitCode;
  std::vector<PlotLane*> drawn;
  for (const auto& lane : lanes) drawn.push_back(lane.get());
  std::vector<PlotGroup> groups = Grouped(drawn);
  for (PlotGroup& group : groups) SelectTime(group, options.common);
  const timeline::RowChoice choice{timeline::RowOrderNamed(options.sort).value(), options.tasks};
  WriteFile(place, Drawn(groups, choice, width, asPng));
  return exitCode;
}

Declared Declare(OptionList& list) {
  const auto options = std::make_shared<Options>();
  DeclareAnalysisOptions(list, options->common);
  list.AddRequired("-o,--output", &options->output, "The picture: a name that ends in .svg or .png", "FILE");
  DeclareTaskPatterns(list, options->tasks);
  list.Add("--sort", &options->sort, "priority (default), load, name or first (run)", "KEY");
  list.Add("--width", &options->width, "Pixels (default: 1600)", "N");
  return {[options] { return Plot(*options); }, {{"--sort", {"priority", "load", "name", "first"}}}};
}

}  // namespace

const Command plotCommand{"plot", "Draw what ran when, as a picture",
                          "Examples:\n"
                          "  tasklog plot demo-logs --from 1.5s --to 1.52s -o timeline.svg\n"
                          "  tasklog plot demo.tasklog --task '*Loop' -o loops.png",
                          Declare};

}  // namespace cli
