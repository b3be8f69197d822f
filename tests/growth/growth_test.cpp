// Work that grows faster than docs/performance.md claims turns a fast operation into a slow one only on logs
// that no test has. So the instructions of each operation are counted at several sizes, and their growth is
// compared with the claim; that does not depend on the clock or on what else the machine does.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <string_view>

#include "growth/sizes.h"

namespace growth {
namespace {

// Names are looked up before anything is counted. Copies are counted as some instructions for a block of
// bytes, not as one for each byte; blocks of 128 KiB are the system's to grow whatever was freed before, and
// all others come out of one stretch that never ends, so that where a block lies makes no difference.
constexpr char environment[] =
    "LD_BIND_NOW=1 "
    "GLIBC_TUNABLES=glibc.cpu.x86_rep_movsb_threshold=1000000000:glibc.malloc.mmap_threshold=131072:"
    "glibc.malloc.top_pad=268435456:glibc.malloc.mxfast=0 ";

// What stands behind a word at the start of a line; empty when there is no such line.
std::string Behind(std::string_view word, const std::filesystem::path& path) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);)
    if (line.starts_with(word)) return line.substr(word.size());
  return {};
}

// Runs the driver under callgrind; gives the instructions by the name under which it dumped them.
std::map<std::string, double> CountInstructions() {
  const std::string folder = testing::TempDir() + "growth_" + std::to_string(getpid());
  std::filesystem::create_directory(folder);
  const std::string command =
      std::string(environment) + "'" + GROWTH_VALGRIND +
      "' --tool=callgrind --collect-atstart=no --dump-line=no --callgrind-out-file='" + folder +
      "/counts' '" + GROWTH_DRIVER + "'";
  if (std::system(command.c_str()) != 0) throw std::runtime_error("failed: " + command);
  std::map<std::string, double> counts;
  for (const auto& file : std::filesystem::directory_iterator(folder)) {
    const std::string label = Behind("desc: Trigger: Client Request: ", file.path());
    if (!label.empty()) counts[label] = std::stod(Behind("totals: ", file.path()));
  }
  std::filesystem::remove_all(folder);
  return counts;
}

class Growth : public testing::Test {
 protected:
  static void SetUpTestSuite() { counts_ = CountInstructions(); }
  static double CountOf(const std::string& operation, std::size_t entries, std::uint32_t taskCount) {
    const auto count = counts_.find(LabelOf(operation, {entries, taskCount}));
    if (count == counts_.end()) throw std::runtime_error("not counted: " + operation);
    return count->second;
  }
  // Instructions an entry between two sizes, so that what an operation costs at any size is left out.
  static double PerEntry(const std::string& operation, std::size_t from, std::size_t to,
                         std::uint32_t taskCount) {
    return (CountOf(operation, to, taskCount) - CountOf(operation, from, taskCount)) /
           static_cast<double>(to - from);
  }

  static void ExpectLinear(const std::string& operation, std::size_t size, std::uint32_t tasks,
                           double tolerance) {
    SCOPED_TRACE(LabelOf(operation, {size, tasks}));
    const double lower = PerEntry(operation, size, 2 * size, tasks);
    const double upper = PerEntry(operation, 2 * size, 4 * size, tasks);
    EXPECT_NEAR(upper / lower, 1.0, tolerance) << lower << " instructions an entry become " << upper;
  }

  static inline std::map<std::string, double> counts_;
};

constexpr const char* linear[] = {"acquire", "read again", "merge", "save", "load"};

TEST_F(Growth, IsLinearWithTheEntries) {
  for (const char* operation : linear)
    for (const std::uint32_t tasks : {8u, 512u}) ExpectLinear(operation, smallest, tasks, 0.1);
  const double ratio = CountOf("iterate", many, 64) / CountOf("iterate", few, 64);
  EXPECT_NEAR(ratio / (many / few), 1.0, 0.1);
}

// What compresses or fills pages does some things once for many entries, and an index is sorted.
TEST_F(Growth, OfExportsAndRepairsIsLinear) {
  int operations = 0;
  for (const auto& [label, count] : counts_) {
    const std::string operation = label.substr(0, label.find('/'));
    if (label != LabelOf(operation, {smallestExport, 8})) continue;
    for (const std::uint32_t tasks : {8u, 512u}) ExpectLinear(operation, smallestExport, tasks, 0.25);
    ++operations;
  }
  EXPECT_GE(operations, 10);
}

// Tables that find records or categories double at some sizes, and trees grow deeper, so that this is not as
// even as the rest; what looks at each record for each other one doubles.
TEST_F(Growth, IsNearlyLinearWhateverTheShape) {
  int shapes = 0;
  for (const auto& [label, count] : counts_) {
    const std::string operation = label.substr(0, label.find('/'));
    const std::size_t smallestShape = SmallestShape(operation.starts_with("file of "));
    if (operation.find(" of ") == operation.npos || label != LabelOf(operation, {smallestShape, 0})) continue;
    const double lower = PerEntry(operation, smallestShape, 2 * smallestShape, 0);
    const double upper = PerEntry(operation, 2 * smallestShape, 4 * smallestShape, 0);
    EXPECT_LT(upper, std::max(1.6 * lower, 100.0))
        << operation << ": from " << lower << " instructions an entry";
    ++shapes;
  }
  EXPECT_GT(shapes, 50);
}

TEST_F(Growth, OfAnEntryDoesNotDependOnTheTasks) {
  for (const char* operation : linear) {
    SCOPED_TRACE(operation);
    const double withFew = PerEntry(operation, smallest, 4 * smallest, 8);
    const double withMany = PerEntry(operation, smallest, 4 * smallest, 512);
    EXPECT_NEAR(withMany / withFew, 1.0, 0.1) << withFew << " instructions an entry become " << withMany;
  }
}

TEST_F(Growth, OfPollsAndCountsDoesNotDependOnWhatIsHeld) {
  for (const char* operation : {"poll", "count a type", "count a category"}) {
    SCOPED_TRACE(operation);
    EXPECT_NEAR(CountOf(operation, many, 64) / CountOf(operation, few, 64), 1.0, 0.1);
  }
}

// Sixteen times the entries are one more level to look at, of four.
TEST_F(Growth, OfALookUpIsLogarithmic) {
  const double ratio = CountOf("look up a range", many, 64) / CountOf("look up a range", few, 64);
  EXPECT_GT(ratio, 0.9);
  EXPECT_LT(ratio, 1.5);
}

}  // namespace
}  // namespace growth
