#include "ctfkernel.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "ctfpackets.h"
#include "entries.h"
#include "labels.h"
#include "text.h"

namespace exporters {
namespace {

using analysis::Meaning;
using analysis::TaskIndex;

constexpr std::size_t commBytes = 16;
constexpr std::size_t personBytes = commBytes + 4 + 4;
// Name, number and priority of a task, as they stand in an event.
using Person = std::array<char, personBytes>;

enum EventId : std::uint8_t { schedSwitch, schedWakeup, testpoint, issue };

constexpr char environment[] = R"(  domain = "kernel";
  tracer_name = "lttng-modules";
  tracer_major = 2;
  tracer_minor = 13;
)";

constexpr char events[] =
    R"(typealias integer { size = 8; align = 8; signed = false; encoding = UTF8; } := text_t;
event { name = "sched_switch"; id = 0; stream_id = 0; fields := struct {
  text_t _prev_comm[16]; int32_t _prev_tid; int32_t _prev_prio; int64_t _prev_state;
  text_t _next_comm[16]; int32_t _next_tid; int32_t _next_prio;
}; };
event { name = "sched_wakeup"; id = 1; stream_id = 0; fields := struct {
  text_t _comm[16]; int32_t _tid; int32_t _prio;
}; };
event { name = "testpoint"; id = 2; stream_id = 0; fields := struct { enum subject _name; int32_t _tid; }; };
event { name = "issue"; id = 3; stream_id = 0; fields := struct { enum subject _name; int32_t _tid; }; };
)";

Person PersonOf(std::string_view name, std::int32_t number, std::uint32_t priority) {
  Person person = {};
  const std::string text = SafeText(name);
  std::size_t length = std::min(text.size(), commBytes - 1);
  while (length < text.size() && length > 0 && (text[length] & 0xC0) == 0x80) --length;  // whole characters
  std::copy_n(text.begin(), length, person.begin());
  PutLittleEndian(PutLittleEndian(person.data() + commBytes, number), priority);
  return person;
}

// The events of one lane.
class Lane {
 public:
  Lane(const Source& source, std::int32_t firstNumber, CtfNames& names, CtfPackets& packets)
      : source_(source), tasks_(source.lane.Tasks()), packets_(packets), nobody_(PersonOf("", -1, 0)) {
    for (TaskIndex task = 0; task < tasks_.size(); ++task) {
      const bool isIdle = task == source.conventions.idle;
      numbers_.push_back(isIdle ? 0 : firstNumber + static_cast<std::int32_t>(task));
      people_.push_back(PersonOf(tasks_[task].name, numbers_.back(), tasks_[task].priority));
    }
    for (const analysis::MarkSubject& mark : source.lane.Names().MarkSubjects())
      marks_.push_back(names.NumberOf(mark.name));
  }

  void Add(const analysis::Cursor& cursor) {
    switch (cursor.Type()) {
      case TLLogTaskEvent:
        Put(cursor.Slot(0), packets_.Event(schedWakeup, cursor.Time(), personBytes));
        break;
      case TLLogTestpoint: AddMark(testpoint, cursor); break;
      case TLLogTimingIssue: AddMark(issue, cursor); break;
      default: AddSwitch(cursor);
    }
  }

 private:
  char* Put(TaskIndex task, char* at) const {
    const Person& person = task < people_.size() ? people_[task] : nobody_;
    std::memcpy(at, person.data(), person.size());
    return at + person.size();
  }

  void AddSwitch(const analysis::Cursor& cursor) {
    const TaskIndex previous = cursor.Slot(1);
    const TaskIndex next = cursor.Slot(0);
    char* at = packets_.Event(schedSwitch, cursor.Time(), 2 * personBytes + 8);
    at = PutLittleEndian(Put(previous, at), StateOf(cursor.Type(), previous, next));
    Put(next, at);
  }

  void AddMark(EventId id, const analysis::Cursor& cursor) {
    const std::size_t mark = std::size_t{cursor.Slot(0)} - tasks_.size();
    const TaskIndex running = cursor.Slot(1);
    char* at = packets_.Event(id, cursor.Time(), 8);
    at = PutLittleEndian(at, mark < marks_.size() ? marks_[mark] : CtfNames::none);
    PutLittleEndian(at, running < numbers_.size() ? numbers_[running] : -1);
  }

  // 0: the task that leaves is ready to go on; 1: it sleeps. Plain switches are told by priority.
  std::int64_t StateOf(ETLLogType type, TaskIndex previous, TaskIndex next) const {
    const bool known = previous < tasks_.size() && next < tasks_.size();
    switch (source_.conventions.meanings.Of(type)) {
      case Meaning::preempted:
      case Meaning::slice:
      case Meaning::fromIdle: return 0;
      case Meaning::done:
      case Meaning::waits: return 1;
      case Meaning::plain: return known && tasks_[next].priority > tasks_[previous].priority ? 0 : 1;
    }
    return 0;
  }

  const Source& source_;
  const std::vector<analysis::Task>& tasks_;
  CtfPackets& packets_;
  Person nobody_;
  std::vector<Person> people_;         // by TaskIndex
  std::vector<std::int32_t> numbers_;  // likewise; the idle task is number 0
  std::vector<std::uint32_t> marks_;   // testpoints and timing issues
};

class CtfKernel : public Exporter {
 public:
  explicit CtfKernel(Files& files) : files_(files) {}

  void Add(const Source& source) override {
    rate_.Enter(source);
    CtfPackets packets(files_.Create(fmt::format("stream{}", lanes_)), lanes_);
    Lane lane(source, nextNumber_, names_, packets);
    ForEachEntry(
        source, [&](const analysis::Cursor& cursor) { lane.Add(cursor); },
        [&](const analysis::Gap& gap) { packets.Gap(gap.from, gap.to); });
    packets.Finish();
    ++lanes_;
    nextNumber_ += static_cast<std::int32_t>(source.lane.Tasks().size());
  }

  void End() override {
    WriteCtfDescription(
        files_, CtfHead(rate_.TicksPerSecond(), environment) + names_.Description("subject") + events);
  }

 private:
  Files& files_;
  CtfRate rate_;
  CtfNames names_;
  std::uint32_t lanes_ = 0;
  std::int32_t nextNumber_ = 1;
};

}  // namespace

std::unique_ptr<Exporter> MakeCtfKernel(Files& files) { return std::make_unique<CtfKernel>(files); }

}  // namespace exporters
