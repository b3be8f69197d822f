// Targets that fail, lie, or change their mind: each call of an append fails in turn with several codes, each
// number is one that makes no sense, each list and text is damaged. The plain model says what must come of
// it.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

#include "support/ring.h"
#include "target/access.h"
#include "twin.h"

namespace {

using Script = std::function<void(ScriptedTarget&)>;

const char kernel[] = "Kernel.1.Logger";

// A machine with all that an append asks for, and records that make it ask.
void PutMachine(ScriptedTarget& target) {
  PutCategories(target);
  PutLogger(target, kernel,
            RingWords(1000, Laps({{4, 1000, 1}, {6, 1010, 0x9000}, {7, 1020, 0x53544B4F}, {4, 1030, 99}},
                                 {{2, 900, 2}, {6, 910, 0x77}})));
}

// The same with a clock in place of a tick length.
void PutOldMachine(ScriptedTarget& target) {
  PutMachine(target);
  target.numbers.erase("Target.Mpu.Resolution");
  target.texts["Target.Cpu"] = "PPC603";
  target.numbers["Target.BusClock"] = 66e6;
}

std::size_t CallsOf(const Script& machine) {
  ScriptedTarget target;
  machine(target);
  const LogPtr log = NewLog();
  EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), "ctl", 1, nullptr, nullptr), 0u);
  return target.calls.size();
}

// An append with `damage` done to the machine, then one without.
void AppendAndRecover(const Script& machine, const Script& damage) {
  Twin twin;
  twin.AppendFromTarget([&](ScriptedTarget& target) {
    machine(target);
    damage(target);
  });
  EXPECT_EQ(twin.AppendFromTarget(machine), 0u);
}

TEST(TargetFaults, EndTheAppendOrCompleteItWithEveryCodeAtEveryCall) {
  constexpr std::uint32_t codes[] = {
      1, noSuchVariable, noSuchProcedure, TLErrOutOfMemory, TLErrCanceled, 0x80000000, 0xFFFFFFFF};
  std::size_t count = 0;
  for (const Script& machine : {Script(PutMachine), Script(PutOldMachine)}) {
    const std::size_t calls = CallsOf(machine);
    ASSERT_GE(calls, 20u);
    for (std::size_t call = 1; call <= calls; ++call) {
      for (const std::uint32_t code : codes) {
        SCOPED_TRACE(testing::Message() << "call " << call << " with " << std::hex << code);
        AppendAndRecover(machine, [&](ScriptedTarget& target) { target.failingCalls[call] = code; });
        ASSERT_FALSE(HasFailure());
        ++count;
      }
    }
  }
  RecordProperty("callsFailed", std::to_string(count));
}

// The same with another processor.
void PutOtherMachine(ScriptedTarget& target) {
  PutOldMachine(target);
  target.texts["Target.Cpu"] = "386EX";
  target.numbers["Target.CpuClock"] = 25e6;
}

TEST(TargetFaults, OfNumbersAreTruncated) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  constexpr double values[] = {NAN,       -NAN,   infinity, -infinity, 0x1p63,        -0x1p63,
                               -0x1.1p63, 1e300,  -1e300,   0.99,      5e-324,        -0.0,
                               -1,        0x1p32, 0x1p62,   -0x1p31,   0x1p32 + 24.5, -0x1p32 + 24};
  const std::pair<const char*, Script> variables[] = {
      {"Target.Mpu.Resolution", PutMachine},
      {"Kernel.1.Logger.BufferSize", PutMachine},
      {"Kernel.1.Logger.BufferAddress", PutMachine},
      {"Watchpoint.Entity!Objects", PutMachine},
      {"Watchpoint.Entity.TP1.Prop.Address", PutMachine},
      {"Target.BusClock", PutOldMachine},
      {"Target.CpuClock", PutOtherMachine},
  };
  for (const auto& [variable, machine] : variables) {
    for (const double value : values) {
      // The plain model would fill what it reserves for a buffer of gigabytes.
      if (std::string_view(variable).ends_with("Size") && (value == -1 || value == -0x1p31)) continue;
      SCOPED_TRACE(testing::Message() << variable << " is " << value);
      AppendAndRecover(machine,
                       [&, &name = variable](ScriptedTarget& target) { target.numbers[name] = value; });
      ASSERT_FALSE(HasFailure());
    }
  }
}

TEST(TargetFaults, OfABufferOfGigabytesAreThoseOfItsTransfer) {
  ScriptedTarget target;
  PutMachine(target);
  target.numbers["Kernel.1.Logger.BufferSize"] = -1;  // counts as 2^32 - 1
  const LogPtr log = NewLog();
  const std::uint32_t status = TLTaskLogAppendFromTarget(log.get(), "ctl", 1, nullptr, nullptr);
  EXPECT_TRUE(status == ScriptedTarget::badAddress || status == TLErrOutOfMemory) << status;
  EXPECT_EQ(DumpTimes(log.get()), "0 0 1000000");
}

TEST(TargetFaults, OfTaskListsCostNamesOnly) {
  const Script contents[] = {
      [](ScriptedTarget&) {},
      [](ScriptedTarget& target) {
        target.tasks.assign(300, {taskListContinues, "Twin", 0, 0});
      },
      [](ScriptedTarget& target) {
        target.tasks.assign(300, {0, "", 0, 0});
      },
      [](ScriptedTarget& target) { target.tasks.clear(); },
      [](ScriptedTarget& target) { target.terminatesTexts = false; },
  };
  for (const Script& content : contents) {
    for (const std::uint32_t size : {0u,   1u,   2u,   3u,   4u,   5u,   7u,   8u,    480u,  483u,
                                     484u, 485u, 487u, 488u, 489u, 964u, 968u, 1204u, 4000u, 0x1000000u}) {
      for (const std::size_t portions : {std::size_t{1}, std::size_t{2}, SIZE_MAX}) {
        SCOPED_TRACE(testing::Message() << "size " << size << ", portions " << portions);
        AppendAndRecover(PutMachine, [&](ScriptedTarget& target) {
          content(target);
          target.listSizeBytes = size;
          target.listPortions = portions;
        });
        ASSERT_FALSE(HasFailure());
      }
    }
  }
}

// What the target says changes in the middle of an append, before each of its calls in turn.
TEST(TargetFaults, OfATargetThatChangesItsMind) {
  const std::pair<const char*, Script> changes[] = {
      {"tasks go", [](ScriptedTarget& target) { target.tasks.clear(); }},
      {"tasks come",
       [](ScriptedTarget& target) {
         target.tasks.resize(200, {7, "New", 1, 1u << 16});
       }},
      {"tasks take other names",
       [](ScriptedTarget& target) {
         for (ScriptedTask& task : target.tasks) task = {task.id + 1, task.name + "2", 1, 0};
       }},
      {"variables go", [](ScriptedTarget& target) { target.numbers.clear(); }},
      {"texts fill their buffers", [](ScriptedTarget& target) { target.terminatesTexts = false; }},
      {"numbers grow",
       [](ScriptedTarget& target) {
         for (auto& [name, number] : target.numbers) number *= 2;
       }},
      {"the machine starts anew",
       [](ScriptedTarget& target) {
         PutLogger(target, kernel, RingWords(7, {{4, 7, 2}, {4, 8, 1}}));
       }},
      {"the memory goes", [](ScriptedTarget& target) { target.memory.clear(); }},
  };
  const std::size_t calls = CallsOf(PutMachine);
  for (const auto& [name, change] : changes) {
    for (std::size_t call = 1; call <= calls; ++call) {
      SCOPED_TRACE(testing::Message() << name << " before call " << call);
      AppendAndRecover(PutMachine, [&, &done = change](ScriptedTarget& target) {
        target.changes[call] = [&done, &target] { done(target); };
      });
      ASSERT_FALSE(HasFailure());
    }
  }
}

}  // namespace
