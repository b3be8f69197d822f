#include "perfetto.h"

#include <algorithm>
#include <protozero/pbf_writer.hpp>

#include "analysis/walker.h"
#include "clock.h"
#include "marks.h"
#include "perfettopackets.h"
#include "text.h"

namespace exporters {
namespace {

using analysis::TaskIndex;
using protozero::pbf_writer;

constexpr std::uint64_t mostNanoseconds = INT64_MAX;
constexpr std::uint32_t clearsState = 1;
constexpr std::uint32_t needsState = 2;

// Ids of interned texts. Names of testpoints and timing issues follow.
enum Name : std::uint64_t { lostName = 1, logName, eventName, firstMarkName };
enum Category : std::uint64_t { testpointCategory = 1, issueCategory, eventCategory, gapCategory };
enum Annotation : std::uint64_t { ticksAnnotation = 1, rateAnnotation, baseAnnotation };

// Numbers of processes and threads: no two are alike in a trace, and none is 0, which readers rename.
class Numbers {
 public:
  std::uint32_t Next() { return ++last_; }

 private:
  std::uint32_t last_ = 0;
};

// One lane: a processor, a process, and a thread for each task.
class LanePackets : public analysis::Visitor {
 public:
  LanePackets(const Source& source, std::uint32_t number, Numbers& numbers, const Clock& clock,
              Packets& packets)
      : Visitor(wantsRuns | wantsMarks | wantsMarkSubjects),
        source_(source),
        tasks_(source.lane.Tasks()),
        number_(number),
        process_(numbers.Next()),
        clock_(clock),
        packets_(packets) {
    for (std::size_t task = 0; task < tasks_.size(); ++task) threads_.push_back(numbers.Next());
    for (TaskIndex task = 0; task < tasks_.size(); ++task) {
      running_.push_back(State(task, perfetto::state::running));
      runnable_.push_back(State(task, perfetto::state::runnable));
    }
    AddTree();
    AddTracks();
    AddNames();
  }

  // The next run closes the one before; behind the last one before a gap or the stop there is none.
  void OnRun(const analysis::Run& run) override {
    if (run.task == analysis::noTask || !source_.Wants(run.task)) return;
    packets_.Add(clock_.Of(run.begin), running_[run.task]);
    if (run.cutEnd || !source_.tasks.empty()) packets_.Add(clock_.Of(run.end), runnable_[run.task]);
  }

  void OnGap(const analysis::Gap& gap) override {
    AddEvent(gap.from, perfetto::event::begin, LostTrack(), lostName, gapCategory);
    AddEvent(gap.to, perfetto::event::end, LostTrack(), lostName, gapCategory);
  }

  void OnMark(const analysis::Mark& mark) override {
    const auto task = TaskOf(mark, source_);
    if (!task) return;
    const bool isEvent = mark.type == TLLogTaskEvent;
    const std::uint64_t name = isEvent ? eventName : firstMarkName + (mark.subject - tasks_.size());
    const Category category = isEvent                       ? eventCategory
                              : mark.type == TLLogTestpoint ? testpointCategory
                                                            : issueCategory;
    AddEvent(mark.time, perfetto::event::instant, TrackOf(*task), name, category);
  }

 private:
  // Tracks have numbers of 64 bits: the lane, then what is in it. Marks of an unknown task are on the lane's.
  std::uint64_t LaneTrack() const { return std::uint64_t{number_ + 1} << 32; }
  std::uint64_t LostTrack() const { return LaneTrack() + 1; }
  std::uint64_t TrackOf(TaskIndex task) const {
    return task == analysis::noTask ? LaneTrack() : LaneTrack() + 2 + task;
  }

  std::string State(TaskIndex task, std::uint32_t value) const {
    namespace state = perfetto::state;
    std::string bytes;
    pbf_writer packet(bytes);
    packet.add_uint32(perfetto::packet::sequence, number_ + 1);
    pbf_writer writer(packet, perfetto::packet::taskState);
    writer.add_uint32(state::processor, number_);
    writer.add_int64(state::thread, threads_[task]);
    writer.add_uint32(state::state, value);
    writer.add_int32(state::priority, static_cast<std::int32_t>(tasks_[task].priority));
    writer.commit();
    return bytes;
  }

  void AddTree() {
    packets_.Add([&](pbf_writer& packet) {
      packet.add_uint32(perfetto::packet::sequence, number_ + 1);
      pbf_writer tree(packet, perfetto::packet::processTree);
      {
        pbf_writer process(tree, perfetto::tree::processes);
        process.add_int64(perfetto::process::number, process_);
        process.add_string(perfetto::process::name, SafeText(source_.name));
      }
      for (TaskIndex task = 0; task < tasks_.size(); ++task) {
        pbf_writer thread(tree, perfetto::tree::threads);
        thread.add_int64(perfetto::thread::number, threads_[task]);
        thread.add_int64(perfetto::thread::process, process_);
        thread.add_string(perfetto::thread::name, SafeText(tasks_[task].name));
        if (task == source_.conventions.idle) thread.add_bool(perfetto::thread::isIdle, true);
      }
    });
  }

  template <class Fill>
  void AddTrack(std::uint64_t id, Fill fill) {
    packets_.Add([&](pbf_writer& packet) {
      packet.add_uint32(perfetto::packet::sequence, number_ + 1);
      pbf_writer track(packet, perfetto::packet::trackDescriptor);
      track.add_uint64(perfetto::track::id, id);
      fill(track);
    });
  }

  void AddTracks() {
    namespace track = perfetto::track;
    AddTrack(LaneTrack(), [&](pbf_writer& lane) {
      {
        pbf_writer process(lane, track::process);
        process.add_int32(track::processNumber, static_cast<std::int32_t>(process_));
        process.add_string(track::processName, SafeText(source_.name));
      }
      lane.add_int32(track::ordering, track::explicitOrder);
    });
    AddTrack(LostTrack(), [&](pbf_writer& lost) {
      lost.add_string(track::name, "Lost records");
      lost.add_uint64(track::parent, LaneTrack());
      lost.add_int32(track::rank, INT32_MIN);
    });
    for (TaskIndex task = 0; task < tasks_.size(); ++task)
      if (source_.Wants(task)) AddTaskTrack(task);
  }

  // The highest priority on top: ranks grow downward.
  void AddTaskTrack(TaskIndex task) {
    namespace track = perfetto::track;
    AddTrack(TrackOf(task), [&](pbf_writer& of) {
      {
        pbf_writer thread(of, track::thread);
        thread.add_int32(track::threadProcess, static_cast<std::int32_t>(process_));
        thread.add_int32(track::threadNumber, static_cast<std::int32_t>(threads_[task]));
        thread.add_string(track::threadName, SafeText(tasks_[task].name));
      }
      of.add_uint64(track::parent, LaneTrack());
      of.add_int32(track::rank,
                   -static_cast<std::int32_t>(std::min(tasks_[task].priority, std::uint32_t{INT32_MAX})));
    });
  }

  // All texts, once; and with them an event that says how ticks become times here.
  void AddNames() {
    packets_.Add([&](pbf_writer& packet) {
      packet.add_uint64(perfetto::packet::timestamp, clock_.Of(source_.lane.StartTime()));
      packet.add_uint32(perfetto::packet::sequence, number_ + 1);
      packet.add_uint32(perfetto::packet::sequenceFlags, clearsState | needsState);
      AddInterned(packet);
      pbf_writer event(packet, perfetto::packet::trackEvent);
      event.add_uint32(perfetto::event::type, perfetto::event::instant);
      event.add_uint64(perfetto::event::track, LaneTrack());
      event.add_uint64(perfetto::event::name, logName);
      Annotate(event, ticksAnnotation, source_.lane.StartTime());
      Annotate(event, rateAnnotation, source_.lane.TicksPerSecond());
      Annotate(event, baseAnnotation, clock_.BaseTicks());
    });
  }

  void AddInterned(pbf_writer& packet) const {
    namespace interned = perfetto::interned;
    pbf_writer data(packet, perfetto::packet::internedData);
    const auto add = [&](perfetto::Field kind, std::uint64_t id, const std::string& text) {
      pbf_writer name(data, kind);
      name.add_uint64(interned::id, id);
      name.add_string(interned::text, text);
    };
    add(interned::categories, testpointCategory, "testpoint");
    add(interned::categories, issueCategory, "issue");
    add(interned::categories, eventCategory, "event");
    add(interned::categories, gapCategory, "gap");
    add(interned::eventNames, lostName, "Lost records");
    add(interned::eventNames, logName, "Log");
    add(interned::eventNames, eventName, "event");
    std::uint64_t id = firstMarkName;
    for (const analysis::MarkSubject& mark : source_.lane.Names().MarkSubjects())
      add(interned::eventNames, id++, SafeText(mark.name));
    add(interned::annotationNames, ticksAnnotation, "ticks");
    add(interned::annotationNames, rateAnnotation, "ticks per second");
    add(interned::annotationNames, baseAnnotation, "ticks at time 0");
  }

  static void Annotate(pbf_writer& event, Annotation name, std::uint64_t number) {
    pbf_writer annotation(event, perfetto::event::annotation);
    annotation.add_uint64(perfetto::event::annotationName, name);
    annotation.add_uint64(perfetto::event::annotationNumber, number);
  }

  void AddEvent(analysis::Ticks ticks, std::uint32_t type, std::uint64_t track, std::uint64_t name,
                Category category) {
    SmallMessage annotation;
    annotation.Number(perfetto::event::annotationName, ticksAnnotation);
    annotation.Number(perfetto::event::annotationNumber, ticks);
    SmallMessage event;
    event.Number(perfetto::event::category, category);
    event.Message(perfetto::event::annotation, annotation);
    event.Number(perfetto::event::type, type);
    event.Number(perfetto::event::name, name);
    event.Number(perfetto::event::track, track);
    SmallMessage packet;
    packet.Number(perfetto::packet::sequence, number_ + 1);
    packet.Message(perfetto::packet::trackEvent, event);
    packet.Number(perfetto::packet::sequenceFlags, needsState);
    packets_.Add(clock_.Of(ticks), packet.Bytes());
  }

  const Source& source_;
  const std::vector<analysis::Task>& tasks_;
  std::uint32_t number_;
  std::uint32_t process_;
  const Clock& clock_;
  Packets& packets_;
  std::vector<std::uint32_t> threads_;  // by TaskIndex, as what follows
  std::vector<std::string> running_;    // packets without their timestamps
  std::vector<std::string> runnable_;
};

class Perfetto : public Exporter {
 public:
  explicit Perfetto(Files& files) : packets_(files.Create("trace.pftrace")) {}

  void Add(const Source& source) override {
    clock_.Enter(source.lane, source.name);
    LanePackets lane(source, lanes_++, numbers_, clock_, packets_);
    analysis::Walk(source.lane, source.conventions, {&lane});
  }

  void End() override { packets_.Flush(); }

 private:
  Packets packets_;
  Numbers numbers_;
  Clock clock_{mostNanoseconds};
  std::uint32_t lanes_ = 0;
};

}  // namespace

std::unique_ptr<Exporter> MakePerfetto(Files& files) { return std::make_unique<Perfetto>(files); }

}  // namespace exporters
