// The model reads a controller.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <new>

#include "support/plainlog.h"
#include "target/access.h"
#include "tasklog/tasklog.h"

namespace plain {
namespace {

// A status of the target-access library on its way out of an append.
struct Stop {
  Status status;
};

void Check(Status status) {
  if (status != 0) throw Stop{status};
}

std::string Placeholder(std::uint32_t id) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%08X", id);
  return text;
}

// Four printable characters, first in the top byte, or a placeholder.
std::string TimingIssueName(std::uint32_t code) {
  std::string name;
  for (const int shift : {24, 16, 8, 0}) name += static_cast<char>(code >> shift);
  const bool printable = std::all_of(name.begin(), name.end(), [](char c) { return c >= 0x20 && c < 0x7F; });
  return printable ? name : Placeholder(code);
}

// Truncated toward zero; what no 64-bit integer holds counts as 0.
std::int64_t Truncated(double value) {
  return value >= -0x1p63 && value < 0x1p63 ? static_cast<std::int64_t>(value) : 0;
}

std::uint32_t Low(double value) { return static_cast<std::uint32_t>(Truncated(value)); }

std::string WithoutSuffix(const std::string& target) {
  std::size_t at = target.size();
  while (at > 1 && target[at - 1] >= '1' && target[at - 1] <= '8') --at;
  const bool suffix = at > 1 && target[at - 1] == '@' && (target[at - 2] == '/' || target[at - 2] == '\\');
  return suffix ? target.substr(0, at - 2) : target;
}

// What a controller answers when asked by name; a status other than 0 is thrown.
class Target {
 public:
  explicit Target(std::string name) : name_(std::move(name)) {}

  Status TryNumber(const std::string& variable, double& value) const {
    return GetVariable(name_.c_str(), variable.c_str(), &value, 0);
  }
  double Number(const std::string& variable) const {
    double value = 0.0;
    Check(TryNumber(variable, value));
    return value;
  }
  // Room for one byte more than the target is told, so that every text ends.
  Status TryText(const std::string& variable, std::uint32_t size, std::string& text) const {
    std::vector<char> buffer(size + 1);
    const Status status = GetVariable(name_.c_str(), variable.c_str(), buffer.data(), size);
    text = buffer.data();
    return status;
  }
  std::string TaskName(std::uint32_t id) const {
    char buffer[256] = {};
    Check(DbgTaskGetName(name_.c_str(), id, buffer, 255));
    return buffer;
  }
  std::uint32_t TaskData(std::uint32_t id, std::uint32_t item) const {
    std::uint32_t data = 0;
    Check(DbgTaskGetData(name_.c_str(), id, item, &data, 4));
    return data;
  }
  std::vector<std::uint32_t> TaskIds() const;
  std::uint64_t TicksPerSecond() const;
  std::vector<std::uint32_t> Words(std::int64_t address, std::uint32_t count) const {
    std::vector<std::uint32_t> words(count);
    Check(GetBlock32(name_.c_str(), address, words.data(), count));
    return words;
  }

 private:
  std::string name_;
};

// The list comes in portions of 120 identifiers, the first with the header word in front; behind the last one
// all may have been delivered at once. What a transfer leaves out still holds the mark of its place.
std::vector<std::uint32_t> Target::TaskIds() const {
  const auto mark = [](std::size_t place) { return static_cast<std::uint32_t>(0x51000000 + 77 * place); };
  std::uint32_t left = 0;
  Check(DbgTasksList(name_.c_str(), &left, 0));
  const std::size_t count = left / 4;
  std::vector<std::uint32_t> words(count + 1);
  for (std::size_t i = 0; i < count; ++i) words[i] = mark(i);
  std::size_t next = 0;
  do {
    const std::size_t portion = next == 0 ? 121 : 120;
    Check(DbgTasksList(name_.c_str(), &words[next], left));
    next += portion;
    left -= static_cast<std::uint32_t>(4 * portion);
  } while (static_cast<std::int32_t>(left) > 0 && words[next] == taskListContinues);

  std::vector<std::uint32_t> ids;
  for (std::size_t i = 1; i < count; ++i)
    if (words[i] != mark(i)) ids.push_back(words[i]);
  return ids;
}

std::uint64_t Target::TicksPerSecond() const {
  double value = 0.0;
  Status status = TryNumber("Target.Mpu.Resolution", value);
  if (status == 0) {
    const double rate = 1e9 / value;
    return std::isfinite(value) && rate > 0 && rate < 0x1p64 ? static_cast<std::uint64_t>(rate) : 0;
  }
  if (status != noSuchVariable) throw Stop{status};
  std::string cpu;
  const bool onBus = TryText("Target.Cpu", 10, cpu) == 0 && cpu == "PPC603";
  status = TryNumber(onBus ? "Target.BusClock" : "Target.CpuClock", value);
  if (status != 0 && status != noSuchVariable) throw Stop{status};
  return (status == 0 ? Low(value) : 33'000'000) / (onBus ? 4 : 1);
}

}  // namespace

// One append from a target, from its first call to its last.
class Log::RingAppend {
 public:
  RingAppend(Log& log, const std::string& target, std::int32_t kernel, const Progress& progress)
      : log_(log),
        target_(kernel > 0 ? WithoutSuffix(target) + "/@" + std::to_string(kernel) : WithoutSuffix(target)),
        logger_(kernel == -1 ? "Scheduler.Logger" : "Kernel." + std::to_string(kernel) + ".Logger"),
        progress_(progress) {}

  Status Run() {
    Report(0.0);
    log_.ticksPerSecond = target_.TicksPerSecond();
    Report(0.01);
    const std::uint32_t wordCount = Low(target_.Number(logger_ + ".BufferSize")) / 4;
    Report(0.02);
    if (wordCount >= 2) ReadRing(wordCount);
    if (progress_) progress_(1.0);
    return fetchError_;
  }

 private:
  enum class Direction { forward, backward };

  void Report(double fraction) {
    if (progress_ && !progress_(fraction)) throw Stop{TLErrCanceled};
  }

  void ReadRing(std::uint32_t wordCount) {
    const double address = target_.Number(logger_ + ".BufferAddress");
    Report(0.03);
    words_ = target_.Words(Truncated(address), wordCount);
    Report(0.75);
    queue_.assign(log_.entries.begin(), log_.entries.end());
    ReadLaps();
    if (queue_.size() > log_.entries.size()) log_.entries.assign(queue_.begin(), queue_.end());
    log_.FillInOldTasks();
    WidenPeriod();
  }

  void ReadLaps() {
    const std::size_t cells = (words_.size() - 2) / 2;
    bool wide = false;
    for (std::size_t cell = 0; cell < std::min<std::size_t>(4, cells); ++cell) {
      wide = wide || words_[2 + 2 * cell] >> 20 != 0;
    }
    span_ = std::uint64_t{1} << (wide ? 28 : 16);
    const std::uint64_t reference = std::uint64_t{words_[0]} << 32 | words_[1];
    std::size_t marker = 0;
    time_ = reference;
    while (marker < cells && ReadCell(marker, Direction::forward)) ++marker;
    time_ = reference;
    for (std::size_t cell = cells; cell > marker + 1 && ReadCell(cell - 1, Direction::backward);) --cell;
  }

  // False for a marker.
  bool ReadCell(std::size_t cell, Direction direction) {
    const std::uint32_t word = words_[2 + 2 * cell];
    const std::uint32_t type = word >> 16 & 0xF;
    if (type == 15) return false;
    const std::uint32_t tick = (word & 0xFFFF) | (word >> 4 & 0x0FFF0000);
    AddEntry(type, ExtendedTime(tick, direction), words_[3 + 2 * cell], direction);
    ++decoded_;
    double done = 0.75 + (tasksFetched_ ? 1 : 0) * 0.02;
    done += (testpointsFetched_ ? 1 : 0) * 0.01;
    double part = decoded_ * 0.2;
    part += part;
    part /= static_cast<double>(words_.size());
    Report(done + part);
    return true;
  }

  std::uint64_t ExtendedTime(std::uint32_t tick, Direction direction) {
    std::uint64_t time = (time_ & ~(span_ - 1)) | tick;
    if (direction == Direction::forward && time < time_) time += span_;
    if (direction == Direction::backward && time > time_) time -= span_;
    return time_ = time;
  }

  void AddEntry(std::uint32_t type, std::uint64_t time, std::uint32_t id, Direction direction) {
    const auto begin = std::lower_bound(queue_.begin(), queue_.end(), time,
                                        [](const Entry& e, std::uint64_t t) { return e.timestamp < t; });
    const auto end = std::upper_bound(queue_.begin(), queue_.end(), time,
                                      [](std::uint64_t t, const Entry& e) { return t < e.timestamp; });
    for (auto known = begin; known != end; ++known) {
      if (IsRecordOf(*known, type, id)) return;
    }
    const auto added = queue_.insert(direction == Direction::forward ? end : begin, Entry{type, time});
    added->slots[0] = FindOrFetch(type, id);
  }

  // A code that does not show in the name of its timing issue is known by that name.
  static bool IsRecordOf(const Entry& entry, std::uint32_t type, std::uint32_t id) {
    if (entry.type != type) return false;
    if (!entry.slots[0]) return id == 0;
    return entry.slots[0]->id == id ||
           (type == TLLogTimingIssue && entry.slots[0]->name == TimingIssueName(id));
  }

  Category* FindOrFetch(std::uint32_t type, std::uint32_t id) {
    const Kind kind = type == TLLogTimingIssue ? timingIssue : type == TLLogTestpoint ? testpoint : task;
    if (Category* known = log_.FindById(kind, id)) return known;
    if (kind == timingIssue) {
      const std::string name = TimingIssueName(id);
      return log_.FindOrCreate({kind, name, TimingIssueId(name)});
    }
    bool& fetched = kind == task ? tasksFetched_ : testpointsFetched_;
    if (!fetched) {
      Fetch(kind);
      fetched = true;
      if (Category* known = log_.FindById(kind, id)) return known;
    }
    if (kind == testpoint) return log_.FindOrCreate({kind, Placeholder(id), id});
    Category* unknown = log_.FindOrCreate({kind, Placeholder(id), 0, 7, -1});
    unknown->id = id;
    return unknown;
  }

  void Fetch(Kind kind) {
    try {
      kind == task ? FetchTasks() : FetchTestpoints();
    } catch (const Stop& stop) {
      fetchError_ = stop.status;
    }
  }

  void FetchTasks() {
    for (const std::uint32_t id : target_.TaskIds()) {
      const std::string name = target_.TaskName(id);
      const auto timeSlice = static_cast<std::int32_t>(target_.TaskData(id, taskDataTimeSlice));
      const std::uint32_t priority = target_.TaskData(id, taskDataPriority) >> 16 & 0xFF;
      log_.FindOrCreate({task, name, 0, priority, timeSlice})->id = id;
    }
  }

  void FetchTestpoints() {
    const std::uint32_t count = Low(target_.Number("Watchpoint.Entity!Objects"));
    for (std::uint32_t i = 0; i < count; ++i) {
      std::string name;
      Check(target_.TryText("Watchpoint.Entity!Object" + std::to_string(i), 255, name));
      const std::string variable = "Watchpoint.Entity." + name + ".Prop.Address";
      log_.FindOrCreate({testpoint, name, Low(target_.Number(variable.substr(0, 284)))});
    }
  }

  void WidenPeriod() {
    if (log_.entries.empty()) return;
    const std::uint64_t first = log_.entries.front().timestamp;
    const std::uint64_t last = log_.entries.back().timestamp;
    if (log_.startTime == 0 || log_.startTime > first) log_.startTime = first;
    if (log_.stopTime == 0 || log_.stopTime < last) log_.stopTime = last;
  }

  Log& log_;
  Target target_;
  std::string logger_;
  const Progress& progress_;
  std::vector<std::uint32_t> words_;
  std::deque<Entry> queue_;
  std::uint64_t span_ = 0;
  std::uint64_t time_ = 0;
  bool tasksFetched_ = false;
  bool testpointsFetched_ = false;
  std::uint32_t decoded_ = 0;
  Status fetchError_ = 0;
};

Status Log::AppendFromTarget(const char* target, std::int32_t kernel, const Progress& progress) try {
  if (!target) return TLErrCanceled;
  return RingAppend(*this, target, kernel, progress).Run();
} catch (const Stop& stop) {
  return stop.status;
} catch (const std::bad_alloc&) {
  return TLErrOutOfMemory;
}

}  // namespace plain
