// The input is a scenario file. Either the parser refuses it with one line, or a simulated controller runs it
// for a few steps and its loggers are read.
#include <tasklog/tasklog.h>

#include <algorithm>

#include "check.h"
#include "parser.h"
#include "status.h"
#include "support/dump.h"
#include "targets.h"

namespace {

sim::Controller* current = nullptr;

// Time passes by this much with every contact when the scenario is on the wall clock.
constexpr std::uint64_t contactNs = 1'000'000;

std::optional<sim::Scenario> Parsed(const std::string& text) {
  try {
    return sim::ParseScenario(text, "fuzz.toml");
  } catch (const sim::Failure& failure) {
    fuzz::Require(failure.status == sim::badScenario, "a refused scenario has the code for that");
    fuzz::Require(failure.text.starts_with("fuzz.toml:"), "the message says where the mistake is");
    const auto isControl = [](unsigned char c) { return c < 0x20; };
    fuzz::Require(std::none_of(failure.text.begin(), failure.text.end(), isControl), "a message is one line");
    return std::nullopt;
  }
}

// Whether its buffers are soon read. What its tasks do is bounded by the number of steps.
bool IsSmall(const sim::Scenario& scenario) {
  std::size_t cells = 0;
  for (const sim::ProcessorSpec& processor : scenario.processors) cells += processor.cellCount;
  return cells <= 2000;
}

// Starts all loggers and reads each of them twice; the entries must be in order and still be there.
void ReadTwice(const sim::Scenario& scenario) {
  std::uint64_t nowNs = 0;
  sim::Controller controller(scenario, sim::StateStore(), [&nowNs] { return nowNs += contactNs; });
  current = &controller;
  for (const sim::ProcessorSpec& processor : scenario.processors) {
    const bool named = processor.number > 0 && processor.number < 9;
    TLStartLog(named ? ("sim/@" + std::to_string(processor.number)).c_str() : "sim", "");
  }
  const LogPtr log = NewLog();
  std::uint64_t before = 0;
  for (int round = 0; round < 2; ++round) {
    for (const sim::ProcessorSpec& processor : scenario.processors) {
      TLTaskLogAppendFromTarget(log.get(), "sim", processor.number, nullptr, nullptr);
      const std::uint64_t count = TLTaskLogGetEntriesCount(log.get(), nullptr, anyType, 0, UINT64_MAX);
      fuzz::Require(count >= before, "an append loses nothing");
      before = count;
    }
  }
  std::uint64_t last = 0;
  const TLEntryIterator entries = TLTaskLogGetEntries(log.get(), nullptr, anyType, 0, UINT64_MAX);
  for (; const TLEntry entry = TLEntryIteratorNext(entries); last = TLEntryGetTimestamp(entry))
    fuzz::Require(TLEntryGetTimestamp(entry) >= last, "entries lie in time order");
  TLEntryIteratorDestroy(entries);
}

}  // namespace

// In place of the simulator's own, which keeps every controller that it ever connected to.
sim::Connection sim::Connect(std::string_view target) {
  fuzz::Require(current != nullptr, "a controller is in force");
  const std::size_t suffix = target.find("/@");
  Controller::Kernel kernel;
  if (suffix != std::string_view::npos) {
    kernel = static_cast<std::uint32_t>(std::stoul(std::string(target.substr(suffix + 2))));
  }
  return {std::shared_ptr<Controller>(std::shared_ptr<Controller>(), current), kernel};
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  auto scenario = Parsed(std::string(reinterpret_cast<const char*>(data), size));
  if (!scenario || !IsSmall(*scenario)) return 0;
  scenario->mostSteps = 5000;
  for (sim::Fault& fault : scenario->faults) fault.delayNs = 0;
  ReadTwice(*scenario);
  return 0;
}
