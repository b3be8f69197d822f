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

const char* const fileNames[] = {"Idle", "Ctrl", "Twin", "", "TP1", "STKO", "0x00000003"};

void DecodeTimer(Input& input, Controller& controller) {
  switch (input.Below(8)) {
    case 5: controller.numbers["Target.Mpu.Resolution"] = input.Pick(oddNumbers); return;
    case 6: controller.texts["Target.Cpu"] = "PPC603"; break;
    case 7: controller.texts["Target.Cpu"] = input.Rarely(2) ? "PPC603e and more" : "other"; break;
    default: controller.numbers["Target.Mpu.Resolution"] = 1000.0; return;
  }
  if (input.Rarely(2)) controller.numbers["Target.BusClock"] = input.Pick(oddNumbers);
  if (input.Rarely(2)) controller.numbers["Target.CpuClock"] = input.Pick(oddNumbers);
}

void DecodeTasks(Input& input, Controller& controller) {
  constexpr std::uint32_t ids[] = {1, 2, 3, 4, 5, 1, 0, 0xFFFFFFFF, 0xFC847810, 0x00010001};
  const std::uint32_t count = input.Below(9);
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::uint32_t slice = input.Below(4);
    controller.tasks.push_back({input.Pick(ids), input.Pick(names), static_cast<std::int32_t>(slice) - 1,
                                input.Below(3) << 16 | 0x5A00FFFF});
  }
  if (!input.Rarely(32)) return;
  const std::uint32_t more = 100 + input.Below(160);  // so many that the list comes in portions
  for (std::uint32_t id = 100; id < 100 + more; ++id) controller.tasks.push_back({id, "T", 0, id << 16});
}

void DecodeTestpoints(Input& input, Controller& controller) {
  constexpr double addresses[] = {0x9000, 0x9004, 0x9000, 0, 1, 2.9, -1, 4294967296.0 + 0x9000, 1e300};
  const std::uint32_t count = input.Below(6);
  if (count == 5) return;  // no such variables
  double claimed = count;
  if (input.Rarely(8)) claimed = input.Below(4) ? claimed + 1 : claimed + 4294967296.0;
  controller.numbers["Watchpoint.Entity!Objects"] = claimed;
  for (std::uint32_t i = 0; i < count; ++i) {
    const std::string name = input.Pick(names);
    controller.texts["Watchpoint.Entity!Object" + std::to_string(i)] = name;
    const std::string asked = name.substr(0, 254);  // as a target hands it out
    controller.numbers[("Watchpoint.Entity." + asked + ".Prop.Address").substr(0, 284)] =
        input.Pick(addresses);
  }
}

void DecodeFaults(Input& input, Controller& controller) {
  constexpr std::uint32_t codes[] = {0x77, 0x50201, 0x50401, 0x40CA0002, 0xFFFFFFFF};
  const std::uint32_t failures = input.Below(4);
  for (std::uint32_t i = 1; i < failures; ++i)
    controller.failingCalls[1 + input.Below(40)] = input.Pick(codes);
  if (!input.Rarely(4)) return;
  if (input.Rarely(4)) controller.changesAt = 1 + input.Below(24);
  if (input.Rarely(4)) controller.listSizeBytes = input.Below(input.Rarely(4) ? 4000 : 64);
  if (input.Rarely(4)) controller.listPortions = input.Below(3);
  if (input.Rarely(8)) controller.terminatesTexts = false;
  if (input.Rarely(8)) controller.storesSizes = false;
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

struct Slots {
  std::uint64_t reference;
  std::vector<std::uint32_t> words;  // two a slot

  std::size_t Count() const { return words.size() / 2; }
  // The type and the id come from the input.
  void Put(Input& input, std::size_t slot, std::uint64_t time, int bits) {
    constexpr std::uint32_t types[] = {4, 0, 1, 2, 3, 5, 6, 7, 4, 9, 14};
    const std::uint32_t type = input.Pick(types);
    const std::uint64_t tick = time & ((std::uint64_t{1} << bits) - 1);
    words[2 * slot] = static_cast<std::uint32_t>((tick & 0x0FFF0000) << 4 | type << 16 | (tick & 0xFFFF));
    words[2 * slot + 1] = DecodeId(input);
  }
};

// As a logger writes it: times that go on from slot to slot, a marker between the laps, perhaps a second one.
void FillAsALogger(Input& input, Slots& slots, int bits) {
  const std::uint64_t span = std::uint64_t{1} << bits;
  const std::size_t marker = input.Below(slots.Count() + 1);
  std::uint64_t time = slots.reference;
  for (std::size_t slot = 0; slot < marker; ++slot) {
    time += DecodeStep(input, span);
    slots.Put(input, slot, time, bits);
  }
  time = slots.reference;
  for (std::size_t slot = slots.Count(); slot > marker + 1; --slot) {
    slots.Put(input, slot - 1, time, bits);
    time -= DecodeStep(input, span);
  }
  const std::uint32_t filling = bits == 28 ? 0xFFFFFFFF : 0x000FFFFF;
  if (marker < slots.Count()) slots.words[2 * marker] = filling;
  if (slots.Count() > 0 && input.Rarely(4)) slots.words[2 * input.Below(slots.Count())] = filling;
}

void FillWithGarbage(Input& input, Slots& slots, std::uint32_t mask) {
  for (std::size_t slot = 0; slot < slots.Count(); ++slot) {
    slots.words[2 * slot] = input.Word() & mask;
    slots.words[2 * slot + 1] = DecodeId(input);
  }
}

std::vector<std::uint32_t> DecodeWords(Input& input) {
  const std::uint32_t style = input.Below(6);
  Slots slots{DecodeReference(input), std::vector<std::uint32_t>(std::size_t{2} * input.Below(41))};
  switch (style) {
    case 2: FillWithGarbage(input, slots, 0xFFFFFFFF); break;
    case 3: FillWithGarbage(input, slots, 0x000FFFFF); break;
    case 4: FillWithGarbage(input, slots, 0x001FFFFF); break;
    default: FillAsALogger(input, slots, style == 1 ? 16 : 28);
  }
  std::vector<std::uint32_t> words = {static_cast<std::uint32_t>(slots.reference >> 32),
                                      static_cast<std::uint32_t>(slots.reference)};
  words.insert(words.end(), slots.words.begin(), slots.words.end());
  if (input.Rarely(8)) words.push_back(0x00040001);    // a part of a slot
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

// The Ko types of a task section, or most often the one given.
std::vector<FileRecord> DecodeRecords(Input& input, std::optional<std::uint32_t> koType = {}) {
  constexpr std::uint64_t times[] = {1000, 1010, 1020, 1030, 5000, 1000, 0, UINT64_MAX};
  std::vector<FileRecord> records(input.Below(9));
  for (FileRecord& record : records) {
    record.koType = !koType ? input.Below(8) : input.Rarely(8) ? input.Below(10) : *koType;
    record.id = input.Below(10);
    record.timestamp = input.Pick(times);
    record.timestamp += input.Below(2);
    if (record.koType == 7 || record.koType == 8) record.name = input.Pick(fileNames);
  }
  return records;
}

class ScriptedConnection : public Connection {
 public:
  explicit ScriptedConnection(const Controller& controller) {
    target_.numbers = controller.numbers;
    target_.texts = controller.texts;
    target_.tasks = controller.tasks;
    target_.memory = controller.memory;
    target_.failingCalls = controller.failingCalls;
    target_.listSizeBytes = controller.listSizeBytes;
    target_.listPortions = controller.listPortions;
    target_.terminatesTexts = controller.terminatesTexts;
    target_.storesSizes = controller.storesSizes;
    if (controller.changesAt) target_.changes[*controller.changesAt] = [this] { Change(); };
  }
  const std::vector<std::string>& Calls() const override { return target_.calls; }

 private:
  void Change() {
    for (ScriptedTask& task : target_.tasks) task = {task.id + 1, task.name + "'", task.timeSlice, 0};
    target_.texts.clear();
  }

  ScriptedTarget target_;
};

}  // namespace

Connect Controller::Line() const {
  return [this] { return std::make_unique<ScriptedConnection>(*this); };
}

Controller DecodeController(Input& input) {
  Controller controller;
  DecodeTimer(input, controller);
  DecodeTasks(input, controller);
  DecodeTestpoints(input, controller);
  DecodeFaults(input, controller);
  return controller;
}

void DecodeRing(Input& input, Controller& controller, std::int32_t kernel) {
  const std::string logger =
      kernel == -1 ? "Scheduler.Logger" : "Kernel." + std::to_string(kernel) + ".Logger";
  const std::int64_t address = 0x1000 + std::int64_t{0x10} * static_cast<std::uint32_t>(kernel);
  std::vector<std::uint32_t>& words = controller.memory[address];
  words = DecodeWords(input);
  controller.numbers[logger + ".BufferSize"] = DecodeSize(input, words.size());
  const double fraction = input.Rarely(8) ? 0.9 : 0.0;
  controller.numbers[logger + ".BufferAddress"] = static_cast<double>(address) + fraction;
}

Bytes DecodeFile(Input& input) {
  constexpr std::uint16_t versions[] = {0x0103, 0x0102, 0x0101, 0x0100, 0, 0x0103, 0x0103, 0x0104};
  constexpr std::uint64_t starts[] = {1000, 1010, 1020, 1030, 5000, 1000, 0, UINT64_MAX};
  FileHeader header;
  header.baseVersion = input.Pick(versions);
  header.fileVersion = input.Rarely(4) ? input.Pick(versions) : std::uint16_t{0x0104};
  header.startTime = input.Pick(starts);
  header.stopTime = header.startTime + 10 * input.Below(8);
  header.divisor = 1 + input.Below(3);
  std::vector<FileSection> tasks(input.Below(5));
  for (FileSection& section : tasks) {
    section.name = input.Pick(fileNames);
    section.priority = input.Below(3);
    section.timeSlice = static_cast<std::int32_t>(input.Below(3)) - 1;
    section.records = DecodeRecords(input);
  }
  const std::vector<FileRecord> stamps = DecodeRecords(input, 7);
  return TaskFile(header, tasks, stamps, DecodeRecords(input, 8));
}

}  // namespace fuzz
