// Every choice has a plain case at 0, and the odd ones are those that a controller may come up with.
#include "controller.h"

#include <cmath>
#include <limits>

namespace fuzz {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double oddNumbers[] = {0.0,       -0.0,       0.5,     -1.5,     1e-310,  1e300,     0x1p31,
                                 0x1p32,    0x1p63,     -0x1p63, 0x1p64,   -1e300,  1e19,      infinity,
                                 -infinity, notANumber, -0x1p53, 0x1.8p62, 1234.75, 66000000.0};
const std::string longest(254, 'n');
const std::string names[] = {"Idle",       "Ctrl",     "Comm",     "Twin",  "Twin",        "",
                             "0x00000003", "A\x1b[2J", "\xff\xfe", longest, longest + "z", longest + "zyx",
                             "Stamps"};

void DecodeTimer(Input& input, ScriptedTarget& target) {
  switch (input.Below(8)) {
    case 5: target.numbers["Target.Mpu.Resolution"] = input.Pick(oddNumbers); return;
    case 6: target.texts["Target.Cpu"] = "PPC603"; break;
    case 7: target.texts["Target.Cpu"] = input.Rarely(2) ? "PPC603e and more" : "other"; break;
    default: target.numbers["Target.Mpu.Resolution"] = 1000.0; return;
  }
  if (input.Rarely(2)) target.numbers["Target.BusClock"] = input.Pick(oddNumbers);
  if (input.Rarely(2)) target.numbers["Target.CpuClock"] = input.Pick(oddNumbers);
}

void DecodeTasks(Input& input, ScriptedTarget& target) {
  constexpr std::uint32_t ids[] = {1, 2, 3, 4, 5, 1, 0, 0xFFFFFFFF, 0xFC847810, 0x00010001};
  const std::uint32_t count = input.Below(9);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t slice = input.Below(4);
    target.tasks.push_back({input.Pick(ids), input.Pick(names), static_cast<std::int32_t>(slice) - 1,
                            input.Below(3) << 16 | 0x5A00FFFF});
  }
  // A list so long that it comes in portions. To read it takes as long as all else does, so one value alone
  // asks for it, and none that a fuzzer tries often.
  if (input.Byte() != 'L') return;
  const std::uint32_t more = 100 + input.Below(160);
  target.tasks.reserve(count + more);
  for (std::uint32_t id = 100; id < 100 + more; ++id)
    target.tasks.push_back({id, "T" + std::to_string(id % 32), 0, id << 16});
}

void DecodeTestpoints(Input& input, ScriptedTarget& target) {
  constexpr double addresses[] = {0x9000, 0x9004, 0x9000, 0, 1, 2.9, -1, 4294967296.0 + 0x9000, 1e300};
  const std::uint32_t count = input.Below(6);
  if (count == 5) return;  // no such variables
  double claimed = count;
  if (input.Rarely(8)) claimed = input.Below(4) ? claimed + 1 : claimed + 4294967296.0;
  target.numbers["Watchpoint.Entity!Objects"] = claimed;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string name = input.Pick(names);
    target.texts["Watchpoint.Entity!Object" + std::to_string(i)] = name;
    const std::string asked = name.substr(0, 254);  // as a target hands it out
    target.numbers[("Watchpoint.Entity." + asked + ".Prop.Address").substr(0, 284)] = input.Pick(addresses);
  }
}

void DecodeFaults(Input& input, ScriptedTarget& target) {
  constexpr std::uint32_t codes[] = {0x77, 0x50201, 0x50401, 0x40CA0002, 0xFFFFFFFF};
  const std::uint32_t failures = input.Below(4);
  for (std::uint32_t i = 1; i < failures; ++i) target.failingCalls[1 + input.Below(40)] = input.Pick(codes);
  if (!input.Rarely(4)) return;
  // Tasks and testpoints become others before a call.
  if (input.Rarely(4)) {
    target.changes[1 + input.Below(24)] = [&target] {
      for (ScriptedTask& task : target.tasks) task = {task.id + 1, task.name + "'", task.timeSlice, 0};
      target.texts.clear();
    };
  }
  if (input.Rarely(4)) target.listSizeBytes = input.Below(input.Rarely(4) ? 4000 : 64);
  if (input.Rarely(4)) target.listPortions = input.Below(3);
  if (input.Rarely(8)) target.terminatesTexts = false;
  if (input.Rarely(8)) target.storesSizes = false;
}

std::uint32_t DecodeId(Input& input) {
  constexpr std::uint32_t ids[] = {1,          2,          3,          4,         5,          0x9000,
                                   0x9004,     0,          0x53544B4F, 3,         0x41424300, 0x30783030,
                                   0xFFFFFFFF, 0x80000000, 0x54776900, 0x20202020};
  return input.Rarely(16) ? input.Word() : input.Pick(ids);
}

std::uint64_t DecodeReference(Input& input) {
  constexpr std::uint64_t references[] = {1'000'000,
                                          0x1'2350'0000,
                                          0,
                                          1,
                                          0xFFFF,
                                          0x10000,
                                          0x0FFF'FFFF,
                                          0x1000'0000,
                                          UINT64_MAX,
                                          UINT64_MAX - 0xFFFF,
                                          UINT64_MAX - 0x0FFF'FFFF};
  return input.Rarely(8) ? input.Long() : input.Pick(references);
}

std::uint64_t DecodeStep(Input& input, std::uint64_t span) {
  switch (input.Below(8)) {
    case 0: return 10;
    case 1: return 0;
    case 2: return 1;
    case 3: return input.Byte();
    case 4: return std::uint64_t{input.Byte()} << 8;
    case 5: return span / 2;
    case 6: return span - 1;
    default: return std::uint64_t{input.Word()} % span;
  }
}

struct Cells {
  std::uint64_t reference;
  std::vector<std::uint32_t> words;  // two a cell

  std::size_t Count() const { return words.size() / 2; }
  // The type and the id come from the input.
  void Put(Input& input, std::size_t cell, std::uint64_t time, int bits) {
    constexpr std::uint32_t types[] = {4, 0, 1, 2, 3, 5, 6, 7, 4, 9, 14};
    const std::uint32_t type = input.Pick(types);
    const std::uint64_t tick = time & ((std::uint64_t{1} << bits) - 1);
    words[2 * cell] = static_cast<std::uint32_t>((tick & 0x0FFF0000) << 4 | type << 16 | (tick & 0xFFFF));
    words[2 * cell + 1] = DecodeId(input);
  }
};

// As a logger writes it: times that go on from cell to cell, a marker between the laps, perhaps a second one.
void FillAsALogger(Input& input, Cells& cells, int bits) {
  const std::uint64_t span = std::uint64_t{1} << bits;
  const std::size_t marker = input.Below(cells.Count() + 1);
  std::uint64_t time = cells.reference;
  for (std::size_t cell = 0; cell < marker; ++cell) {
    time += DecodeStep(input, span);
    cells.Put(input, cell, time, bits);
  }
  time = cells.reference;
  for (std::size_t cell = cells.Count(); cell > marker + 1; --cell) {
    cells.Put(input, cell - 1, time, bits);
    time -= DecodeStep(input, span);
  }
  const std::uint32_t filling = bits == 28 ? 0xFFFFFFFF : 0x000FFFFF;
  if (marker < cells.Count()) cells.words[2 * marker] = filling;
  if (cells.Count() > 0 && input.Rarely(4)) cells.words[2 * input.Below(cells.Count())] = filling;
}

void FillWithGarbage(Input& input, Cells& cells, std::uint32_t mask) {
  for (std::size_t cell = 0; cell < cells.Count(); ++cell) {
    cells.words[2 * cell] = input.Word() & mask;
    cells.words[2 * cell + 1] = DecodeId(input);
  }
}

std::vector<std::uint32_t> DecodeWords(Input& input) {
  const std::uint32_t style = input.Below(6);
  Cells cells{DecodeReference(input), std::vector<std::uint32_t>(std::size_t{2} * input.Below(41))};
  switch (style) {
    case 2: FillWithGarbage(input, cells, 0xFFFFFFFF); break;
    case 3: FillWithGarbage(input, cells, 0x000FFFFF); break;
    case 4: FillWithGarbage(input, cells, 0x001FFFFF); break;
    default: FillAsALogger(input, cells, style == 1 ? 16 : 28);
  }
  std::vector<std::uint32_t> words = {static_cast<std::uint32_t>(cells.reference >> 32),
                                      static_cast<std::uint32_t>(cells.reference)};
  words.insert(words.end(), cells.words.begin(), cells.words.end());
  if (input.Rarely(8)) words.push_back(0x00040001);    // a part of a cell
  if (input.Rarely(16)) words.resize(input.Below(3));  // less than a header
  return words;
}

// Sizes may lie, but none so that setting memory aside for it would count as a finding.
double DecodeSize(Input& input, std::size_t wordCount) {
  constexpr double lies[] = {0,    notANumber, infinity,         -4294967296.0, 4294967296.0,
                             -3.5, 400.0,      -4294967296.0 * 3};
  constexpr std::int64_t mostBytes = 0x10000;
  double size = 4.0 * static_cast<double>(wordCount) + input.Below(4) * 0.9;
  if (input.Rarely(16)) size = input.Below(2) ? input.Pick(lies) : size + input.Pick(lies);
  if (!std::isfinite(size)) return size;
  return (static_cast<std::int64_t>(size) & 0xFFFFFFFF) <= mostBytes ? size : 0;
}

void DecodeMachine(Input& input, ScriptedTarget& target) {
  DecodeTimer(input, target);
  DecodeTasks(input, target);
  DecodeTestpoints(input, target);
  DecodeFaults(input, target);
}

void DecodeLogger(Input& input, ScriptedTarget& target, std::int32_t kernel) {
  const std::string logger =
      kernel == -1 ? "Scheduler.Logger" : "Kernel." + std::to_string(kernel) + ".Logger";
  const std::int64_t address = 0x1000 + std::int64_t{0x10} * static_cast<std::uint32_t>(kernel);
  std::vector<std::uint32_t>& words = target.memory[address];
  words = DecodeWords(input);
  target.numbers[logger + ".BufferSize"] = DecodeSize(input, words.size());
  const double fraction = input.Rarely(8) ? 0.9 : 0.0;
  target.numbers[logger + ".BufferAddress"] = static_cast<double>(address) + fraction;
}

}  // namespace

void Controller::TakeMachine(Input& input) {
  machine_ = input;
  ScriptedTarget scratch;
  DecodeMachine(input, scratch);
}

void Controller::TakeLogger(Input& input, std::int32_t kernel) {
  loggers_.insert_or_assign(kernel, input);
  ScriptedTarget scratch;
  DecodeLogger(input, scratch, kernel);
}

void Controller::Describe(ScriptedTarget& target, std::int32_t kernel) const {
  Input machine = machine_;
  DecodeMachine(machine, target);
  const auto logger = loggers_.find(kernel);
  if (logger == loggers_.end()) return;
  Input input = logger->second;
  DecodeLogger(input, target, kernel);
}

}  // namespace fuzz
