// What a scenario says, as data. docs/scenarios.md explains every field; parser.cpp reads it from TOML.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim {

inline constexpr uint64_t nsPerSecond = 1'000'000'000;

// Controller time, in nanoseconds since power-on, to timer ticks.
struct TickClock {
  uint64_t ticksPerSecond;
  uint64_t startTicks;  // at power-on

  // Whole seconds apart, so that nothing overflows: a rate is at most 1e10.
  uint64_t At(uint64_t ns) const {
    return startTicks + ns / nsPerSecond * ticksPerSecond + ns % nsPerSecond * ticksPerSecond / nsPerSecond;
  }
};

inline constexpr int schedulerNumber = -1;

// In which cycles of a task something happens.
struct When {
  uint64_t every = 1;     // in every n-th, or
  bool isRandom = false;  // in one of every n: the seed says in which
  uint64_t afterNs = 0;   // not before this time after the start of the logger
};

// Something now and then takes longer.
struct Longer {
  uint64_t byNs = 0;  // 0: never
  When when{};
};

// Something that a task does at a point of its cycle.
struct Action {
  enum class Kind { testpoint, event, issue, wait, stretch, lock, unlock, blockPreemption, allowPreemption };

  Kind kind;
  uint64_t atNs = 0;  // of the cycle's run time
  When when{};
  uint32_t id = 0;        // testpoint: address; issue: code; what begins and ends: alike in both
  uint32_t index = 0;     // event: of the task that it is for; lock, unlock: of the lock
  uint64_t lastsNs = 0;   // wait; stretch: by so much the cycle's run time grows here
  uint64_t jitterNs = 0;  // a wait varies by up to this in both directions
  Longer longer{};        // a wait
};

// Releases that follow a release.
struct Burst {
  uint64_t count = 0;  // 0: none
  uint64_t spacingNs = 0;
  When when{};
};

struct Task {
  std::string name;
  uint32_t line = 0;  // of the scenario file
  uint32_t id = 0;
  uint8_t priority = 0;   // a larger one wins; 0 is the idle task's
  uint64_t sliceNs = 0;   // 0: runs until it gives way
  uint64_t periodNs = 0;  // 0: released by events
  uint64_t offsetNs = 0;
  uint64_t runNs = 0;
  uint64_t jitterNs = 0;         // run time varies by up to this in both directions
  uint64_t deadlineNs = 0;       // after the release; 0: the next release
  uint64_t releaseJitterNs = 0;  // a release comes up to this later
  uint64_t driftNs = 0;  // the time between releases varies by up to this in both directions, and it adds up
  uint64_t appearsNs = 0;  // after the start of the logger there is no such task for so long
  Burst burst;
  Longer overrun;
  uint32_t lateIssue = 0;       // code of the timing issue when the task is late
  std::vector<Action> actions;  // by time
};

struct Testpoint {
  std::string name;
  uint32_t address = 0;
};

// One processor with its task set and its logger: the scheduler's, or that of a numbered kernel.
struct ProcessorSpec {
  int number = schedulerNumber;
  uint32_t cellCount = 0;
  uint32_t bufferAddress = 0;
  std::vector<Task> tasks;  // the idle task last
  std::vector<Testpoint> testpoints;
  std::vector<std::string> locks;
  bool inheritance = false;  // who holds a lock has the priority of those who wait for it
};

struct Fault {
  std::string call;  // one of the eight functions, or "any"
  std::string name;  // only for this variable or procedure; empty: all
  uint32_t status = 0;
  std::string text;
  std::optional<double> result;  // a procedure answers this
  uint64_t delayNs = 0;
  uint64_t from = 1;  // the first call affected
  uint64_t every = 1;
  uint64_t count = UINT64_MAX;
};

struct Scenario {
  std::string source;  // path of the file, or name of the built-in
  uint64_t contentHash = 0;
  bool stepped = false;  // time advances by stepNs with each read of a buffer, else with the wall clock
  uint64_t stepNs = 0;
  uint64_t seed = 1;
  uint64_t mostSteps = 50'000'000;  // of the simulation at one call; no key, but fuzzing lowers it
  int tickBits = 28;
  uint64_t startTicks = 0;
  std::optional<double> resolutionNs;
  std::optional<std::string> cpu;
  std::optional<double> cpuClockHz;
  std::optional<double> busClockHz;
  std::vector<ProcessorSpec> processors;
  std::vector<Fault> faults;

  TickClock Clock() const;
};

// Tells texts apart, alike on every computer.
uint64_t Hash(std::string_view text);

}  // namespace sim
