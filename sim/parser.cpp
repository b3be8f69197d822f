// The scenario file but for its tasks: clock, timer, processors, faults.
#include "parser.h"

#include <algorithm>
#include <array>

#include "status.h"
#include "target/access.h"
#include "tomltable.h"

namespace sim {
namespace {

constexpr uint32_t firstBufferAddress = 0x20000000;
constexpr uint32_t bufferDistance = 0x02000000;  // room for the largest buffer
constexpr int64_t mostCells = 4'000'000;
constexpr int64_t mostCellsInAll = 8'000'000;
constexpr size_t mostFaults = 1000;
constexpr size_t mostProcessors = 64;
constexpr int64_t mostKernelNumber = 99'999'999;
constexpr uint32_t defaultCells = 4096;
// Not 0, which hosts take for "no time".
constexpr int64_t defaultStartTicks = 1'000'000;

void ParseClock(TomlTable& root, Scenario& scenario) {
  const std::string clock = root.Text("clock").value_or("wall");
  if (clock != "wall" && clock != "stepped") root.Fail("clock", "\"wall\" or \"stepped\"");
  scenario.stepped = clock == "stepped";
  const auto step = root.Duration("step", 1);
  if (step.has_value() != scenario.stepped)
    root.Fail("step", "a duration with clock = \"stepped\", and only then");
  scenario.stepNs = step.value_or(0);
  scenario.seed = static_cast<uint64_t>(root.Integer("seed", 0, INT64_MAX).value_or(1));
}

void ParseTimer(TomlTable& root, Scenario& scenario) {
  scenario.startTicks = defaultStartTicks;
  auto timer = root.Table("timer");
  if (!timer) return;
  scenario.tickBits = static_cast<int>(timer->Integer("bits", 16, 28).value_or(28));
  if (scenario.tickBits != 16 && scenario.tickBits != 28) timer->Fail("bits", "16 or 28");
  scenario.startTicks =
      static_cast<uint64_t>(timer->Integer("start_ticks", 1, INT64_MAX / 2).value_or(defaultStartTicks));
  scenario.resolutionNs = timer->Number("resolution_ns", 0.1, 1e9);
  scenario.cpu = timer->Text("cpu");
  scenario.cpuClockHz = timer->Number("cpu_clock_hz", 1, UINT32_MAX);
  scenario.busClockHz = timer->Number("bus_clock_hz", 4, UINT32_MAX);
  timer->Finish();
}

void ParseProcessor(TomlTable& table, int number, Scenario& scenario, NamesInUse& names) {
  const auto index = static_cast<uint32_t>(scenario.processors.size());
  if (index == mostProcessors) table.Fail("at most 64 kernels, the scheduler included");
  ProcessorSpec processor;
  processor.number = number;
  processor.cellCount = static_cast<uint32_t>(table.Integer("slots", 2, mostCells).value_or(defaultCells));
  int64_t cellsInAll = processor.cellCount;
  for (const ProcessorSpec& other : scenario.processors) cellsInAll += other.cellCount;
  if (cellsInAll > mostCellsInAll) table.Fail("slots", "at most 8000000 slots in all loggers");
  processor.bufferAddress = firstBufferAddress + index * bufferDistance;
  ParseTasks(table, processor, (index + 1) << 16 | 1, names);
  table.Finish();
  scenario.processors.push_back(std::move(processor));
}

void ParseProcessors(TomlTable& root, Scenario& scenario) {
  NamesInUse names;
  if (auto scheduler = root.Table("scheduler")) ParseProcessor(*scheduler, schedulerNumber, scenario, names);
  for (TomlTable& kernel : root.Tables("kernel")) {
    const auto number = kernel.Integer("number", 0, mostKernelNumber);
    if (!number) kernel.Fail("number", "the kernel's number");
    for (const ProcessorSpec& other : scenario.processors) {
      if (other.number == *number) kernel.Fail("number", "a number that no other kernel has");
    }
    ParseProcessor(kernel, static_cast<int>(*number), scenario, names);
  }
  if (scenario.processors.empty()) root.Fail("a table [scheduler] or [[kernel]]");
}

std::optional<uint32_t> NamedStatus(const std::string& name) {
  if (name == "no answer") return noAnswer;
  if (name == "no variable") return noSuchVariable;
  if (name == "no procedure") return noSuchProcedure;
  if (name == "bad address") return badAddress;
  if (name == "injected") return injectedFault;
  return std::nullopt;
}

uint32_t ParseStatus(TomlTable& table) {
  if (!table.IsText("status")) {
    return static_cast<uint32_t>(table.Integer("status", 1, UINT32_MAX).value_or(0));
  }
  const auto status = NamedStatus(*table.Text("status"));
  if (!status) {
    table.Fail("status",
               "\"no answer\", \"no variable\", \"no procedure\", \"bad address\", \"injected\" or a number");
  }
  return *status;
}

bool IsFaultCall(const std::string& call) {
  constexpr std::array calls = {"any",        "GetVariable",  "PutVariable",    "CallProcedure",
                                "GetBlock32", "DbgTasksList", "DbgTaskGetName", "DbgTaskGetData"};
  return std::find(calls.begin(), calls.end(), call) != calls.end();
}

Fault ParseFault(TomlTable& table) {
  Fault fault;
  fault.call = table.RequiredText("call");
  if (!IsFaultCall(fault.call)) table.Fail("call", "the name of a target-access function, or \"any\"");
  fault.name = table.Text("name").value_or("");
  fault.status = ParseStatus(table);
  fault.text = table.Text("text").value_or("");
  fault.result = table.Number("result", -1e300, 1e300);
  fault.delayNs = table.Duration("delay").value_or(0);
  fault.from = static_cast<uint64_t>(table.Integer("from", 1, INT64_MAX).value_or(1));
  fault.every = static_cast<uint64_t>(table.Integer("every", 1, INT64_MAX).value_or(1));
  fault.count = static_cast<uint64_t>(table.Integer("count", 1, INT64_MAX).value_or(INT64_MAX));
  if (fault.result && (fault.call != "CallProcedure" || fault.status != 0)) {
    table.Fail("result", "call = \"CallProcedure\" and no status");
  }
  if (fault.status == 0 && !fault.result && fault.delayNs == 0) {
    table.Fail("status", "a status, a result or a delay");
  }
  table.Finish();
  return fault;
}

}  // namespace

Scenario ParseScenario(std::string_view text, const std::string& source) {
  TomlTable root = TomlTable::Parse(text, source);
  Scenario scenario;
  scenario.source = source;
  scenario.contentHash = Hash(text);
  ParseClock(root, scenario);
  ParseTimer(root, scenario);
  ParseProcessors(root, scenario);
  for (TomlTable& fault : root.Tables("fault")) {
    if (scenario.faults.size() == mostFaults) fault.Fail("at most 1000 faults");
    scenario.faults.push_back(ParseFault(fault));
  }
  root.Finish();
  return scenario;
}

}  // namespace sim
