// A log's life in which each allocation fails in turn, once or from there on: the status, what survives, that
// nothing leaks, and that the same operation then succeeds.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <functional>
#include <iterator>

#include "file/validfile.h"
#include "support/allocations.h"
#include "support/faultstream.h"
#include "support/logs.h"

namespace {

std::size_t OpenFiles() {
  return static_cast<std::size_t>(std::distance(std::filesystem::directory_iterator("/proc/self/fd"), {}));
}

// The categories of a log as a sorted list: a repeated append may meet what is missing in another order.
std::vector<std::string> Categories(TLTaskLog log, bool withIds) {
  std::vector<std::string> pieces;
  const TLCategoryIterator iterator = TLTaskLogGetCategories(log, 0, nullptr);
  while (const TLCategory category = TLCategoryIteratorNext(iterator)) {
    pieces.push_back(std::to_string(TLCategoryGetType(category)) + ' ' + TLCategoryGetName(category) + ' ' +
                     std::to_string(TLTaskGetPriority(category)));
    if (withIds) pieces.back() += ' ' + std::to_string(TLCategoryGetId(category));
  }
  TLCategoryIteratorDestroy(iterator);
  std::sort(pieces.begin(), pieces.end());
  return pieces;
}

// Expects that the counts which a log keeps are those of what it yields.
void ExpectSound(TLTaskLog log) {
  const auto expectCounted = [log](TLCategory category) {
    EXPECT_EQ(TLTaskLogGetEntriesCount(log, category, anyType, 0, UINT64_MAX),
              CountIn(DumpEntries(log, category)));
  };
  expectCounted(nullptr);
  const TLCategoryIterator iterator = TLTaskLogGetCategories(log, 0, nullptr);
  while (const TLCategory category = TLCategoryIteratorNext(iterator)) expectCounted(category);
  TLCategoryIteratorDestroy(iterator);
}

// A log, and all that its operations work on.
class Life {
 public:
  struct Step {
    const char* name;
    bool fromFile;  // what a file says of times counts at once
    std::function<void(Life&)> prepare;
    std::function<std::uint32_t(Life&)> run;
  };
  static const std::vector<Step> steps;

  Life() {
    PutCategories(target);
    // More than one transfer of the list, and names too long to be kept without an allocation.
    for (std::uint32_t id = 100; id < 225; ++id)
      target.tasks.push_back({id, "A task with a long name, number " + std::to_string(id), 0, id << 16});
  }

  ScriptedTarget target;
  FaultFile file;
  LogPtr log = NewLog();
};

struct State {
  explicit State(const Life& life) : State(life.log.get(), life.file.content) {}
  State(TLTaskLog log, const Bytes& content)
      : entries(DumpEntries(log)),
        period(std::to_string(TLTaskLogGetStartTime(log)) + ' ' + std::to_string(TLTaskLogGetStopTime(log))),
        ticksPerSecond(TLTaskLogGetTicksPerSecond(log)),
        names(Categories(log, false)),
        categories(Categories(log, true)),
        file(content) {}

  std::string entries;
  std::string period;
  std::uint64_t ticksPerSecond;
  std::vector<std::string> names;  // without ids, which a file tells after the names
  std::vector<std::string> categories;
  Bytes file;  // the one read, or saved to
};

Life::Step Ring(const char* name, const std::vector<std::uint32_t>& words, std::int32_t kernel = -1) {
  return {
      name, false,
      [=](Life& life) { PutLogger(life.target, kernel > 0 ? "Kernel.1.Logger" : "Scheduler.Logger", words); },
      [=](Life& life) {
        return TLTaskLogAppendFromTarget(life.log.get(), "a controller with a long name", kernel, nullptr,
                                         nullptr);
      }};
}

Life::Step File(const char* name, const Bytes& content) {
  return {name, true, [=](Life& life) { life.file.content = content; },
          [](Life& life) { return TLTaskLogAppendFromFile(life.log.get(), life.file.Path()); }};
}

const std::vector<std::uint32_t> firstRing = RingWords(
    5000, Laps({{4, 5000, 1}, {6, 5010, 0x9000}, {7, 5020, 0x53544B4F}, {4, 5030, 99}, {0, 5040, 224}},
               {{4, 4000, 2}, {6, 4010, 0x77}, {7, 4020, 3}}));

// Two tasks that take turns, in more records than one piece of memory holds.
Bytes LongFile() {
  FileSection a{"A", 1, 2}, b{"B", 3, 4};
  for (std::uint32_t i = 0; i < 1100; ++i) {
    a.records.push_back({i % 2 ? 2u : 5u, 70 + i, 2000 + 10 * i});
    b.records.push_back({i % 2 ? 5u : 2u, 70 + i, 2000 + 10 * i});
  }
  return TaskFile({.startTime = 1000, .stopTime = 40000}, {a, b});
}

const std::vector<Life::Step> Life::steps = {
    Ring("first reading", firstRing),
    Ring("the same again", firstRing),
    Ring("second kernel, times between those held", RingWords(4500, {{3, 4500, 1}, {5, 4700, 150}}), 1),
    File("0x0100", ValidFile(0x0100, 0x0100)),
    File("0x0101", ValidFile(0x0101, 0x0101)),
    File("0x0102", ValidFile(0x0102, 0x0102)),
    File("0x0103", ValidFile(0x0103, 0x0103)),
    File("0x0104", ValidFile(0x0103, 0x0104)),
    {"save", false, [](Life& life) { life.file.content.clear(); },
     [](Life& life) { return TLTaskLogSaveAsFile(life.log.get(), life.file.Path()); }},
    File("a long file", LongFile()),
    Ring("the end of 64-bit time", RingWords(UINT64_MAX - 15, {{4, 0xFFFFFF5, 1}, {4, 5, 2}, {4, 1, 3}})),
    // Room is made for all slots and given back: all but one hold the same record.
    Ring("a long ring", RingWords(60000, std::vector<RingRecord>(140000, {4, 60000, 1}))),
};

// Leads a new log up to a step and fails one of the step's allocations. False when there are no more.
bool FailOne(std::size_t index, std::size_t allocation, bool exhausted, const State& after) {
  const Life::Step& step = Life::steps[index];
  Life life;
  for (std::size_t i = 0; i < index; ++i) {
    Life::steps[i].prepare(life);
    EXPECT_EQ(Life::steps[i].run(life), 0u);
  }
  const State before(life);
  step.prepare(life);
  std::uint32_t status = 0;
  bool failed = false;
  {
    const AllocationWatch watch(allocation, exhausted);
    status = step.run(life);
    failed = watch.Failed();
  }
  EXPECT_EQ(life.file.openStreams, 0);
  const State left(life);
  if (status == 0) {  // also where the allocation that failed would only have helped
    EXPECT_EQ(left.entries, after.entries);
  } else {
    EXPECT_TRUE(failed);
    EXPECT_EQ(status, TLErrOutOfMemory);
    EXPECT_EQ(left.entries, before.entries);
    EXPECT_EQ(left.period, step.fromFile ? after.period : before.period);
    EXPECT_TRUE(left.ticksPerSecond == after.ticksPerSecond ||
                (!step.fromFile && left.ticksPerSecond == before.ticksPerSecond));
    EXPECT_TRUE(
        std::includes(left.names.begin(), left.names.end(), before.names.begin(), before.names.end()));
    EXPECT_TRUE(std::includes(after.names.begin(), after.names.end(), left.names.begin(), left.names.end()));
    ExpectSound(life.log.get());
    EXPECT_EQ(step.run(life), 0u);
  }
  const State end(life);
  EXPECT_EQ(end.entries, after.entries);
  EXPECT_EQ(end.period, after.period);
  EXPECT_EQ(end.ticksPerSecond, after.ticksPerSecond);
  EXPECT_EQ(end.categories, after.categories);
  EXPECT_TRUE(end.file == after.file);
  ExpectSound(life.log.get());
  return failed;
}

std::size_t FailAll(std::size_t index, bool exhausted, const State& after) {
  const std::size_t openFiles = OpenFiles();
  for (std::size_t allocation = 1;; ++allocation) {
    SCOPED_TRACE(testing::Message() << Life::steps[index].name << ", allocation " << allocation);
    const std::size_t live = LiveAllocations();
    const bool failed = FailOne(index, allocation, exhausted, after);
    EXPECT_EQ(LiveAllocations(), live);
    EXPECT_EQ(OpenFiles(), openFiles);
    if (!failed || testing::Test::HasFailure()) return allocation - 1;
  }
}

TEST(MemoryFaults, AreSurvivedAtEveryAllocationOfALife) {
  Life undisturbed;
  std::size_t count = 0;
  for (std::size_t index = 0; index < Life::steps.size(); ++index) {
    Life::steps[index].prepare(undisturbed);
    ASSERT_EQ(Life::steps[index].run(undisturbed), 0u);
    const State after(undisturbed);
    for (const bool exhausted : {false, true}) count += FailAll(index, exhausted, after);
    ASSERT_FALSE(HasFailure());
  }
  EXPECT_GT(count, 0u);
  RecordProperty("allocationsFailed", std::to_string(count));
}

TEST(MemoryFaults, LeaveNoNewLogAndNoIterator) {
  const LogPtr log = NewLogWithEntry();
  TLTaskLog untouched = log.get();
  const std::size_t live = LiveAllocations();
  {
    const AllocationWatch watch(1, true);
    EXPECT_EQ(TLTaskLogCreate(&untouched), TLErrOutOfMemory);
    EXPECT_EQ(TLTaskLogGetCategories(log.get(), 0, nullptr), nullptr);
    EXPECT_EQ(TLTaskLogGetCategories(log.get(), 0, "File"), nullptr);
    EXPECT_EQ(TLTaskLogGetEntries(log.get(), nullptr, 0, 0, UINT64_MAX), nullptr);
    // What needs no memory goes on.
    EXPECT_EQ(TLTaskLogGetEntriesCount(log.get(), nullptr, 0, 0, UINT64_MAX), 1u);
    EXPECT_EQ(TLTaskLogGetCategoriesCount(log.get(), 0, "File"), 1u);
  }
  EXPECT_EQ(untouched, log.get());
  EXPECT_EQ(LiveAllocations(), live);
}

// Each record gives the task another id, and the last one read counts.
TEST(MemoryFaults, KeepTheIdsThatAFileGaveBefore) {
  FileSection section{"A", 1, 2};
  for (std::uint32_t i = 1; i <= 3000; ++i) section.records.push_back({0, i, 2000 + i});
  FaultFile file(TaskFile({.startTime = 1000, .stopTime = 9000}, {section}));
  std::vector<std::uint32_t> ids;
  for (bool failed = true; failed;) {
    const LogPtr log = NewLog();
    {
      const AllocationWatch watch(ids.size() + 1);
      TLTaskLogAppendFromFile(log.get(), file.Path());
      failed = watch.Failed();
    }
    const TLCategory task = CategoryNamed(log.get(), "A");
    ids.push_back(task ? TLCategoryGetId(task) : 0);
  }
  EXPECT_TRUE(std::is_sorted(ids.begin() + 1, ids.end()));  // the first is but the stream's buffer
  EXPECT_NE(std::find(ids.begin(), ids.end(), 1024u), ids.end());
  EXPECT_EQ(ids.back(), 3000u);
}

}  // namespace
