#include "chrome.h"

#include "analysis/walker.h"
#include "clock.h"
#include "labels.h"
#include "marks.h"
#include "outputfile.h"
#include "print.h"
#include "text.h"
#include "timeformat.h"

namespace exporters {
namespace {

using analysis::TaskIndex;

// JSON numbers are doubles for most readers.
constexpr std::uint64_t mostExact = std::uint64_t{1} << 53;
constexpr std::uint32_t processors = 1;    // the process with a track for each lane
constexpr std::uint32_t firstProcess = 2;  // of those with the tasks of a lane
// Readers fold a track 0 into the main thread of process 1.
constexpr std::uint32_t firstProcessor = 10;
constexpr std::uint32_t firstTask = 1;

struct Track {
  std::uint32_t process;
  std::uint32_t thread;
};

// Tells what happens on one lane.
class LaneEvents : public analysis::Visitor {
 public:
  LaneEvents(const Source& source, std::uint32_t number, const Clock& clock, OutputFile& file)
      : Visitor(wantsRuns | wantsJobs | wantsMarks | wantsMarkSubjects),
        source_(source),
        processor_{processors, firstProcessor + number},
        process_(firstProcess + number),
        clock_(clock),
        file_(file) {
    for (const analysis::Task& task : source.lane.Tasks()) names_.push_back(JsonString(task.name));
    for (const analysis::MarkSubject& mark : source.lane.Names().MarkSubjects())
      names_.push_back(JsonString(mark.name));
    Describe();
  }

  void OnRun(const analysis::Run& run) override {
    if (run.task != analysis::noTask && source_.Wants(run.task))
      Slice(names_[run.task], "run", processor_, run.begin, run.end);
  }
  void OnJob(const analysis::Job& job) override {
    if (source_.Wants(job.task))
      Slice(names_[job.task], job.IsWhole() ? "job" : "cut", TrackOf(job.task), job.activation, job.end);
  }
  void OnGap(const analysis::Gap& gap) override {
    Slice(R"("Lost records")", "gap", processor_, gap.from, gap.to);
  }
  void OnMark(const analysis::Mark& mark) override {
    const auto task = TaskOf(mark, source_);
    if (!task) return;
    Begin(mark.type == TLLogTaskEvent ? R"("event")" : names_[mark.subject], TypeName(mark.type),
          *task == analysis::noTask ? processor_ : TrackOf(*task), mark.time);
    Append(R"(,"ph":"i","s":"t","args":{"ticks":")");
    AppendNumber(file_.Block(), mark.time);
    Append("\"}}");
    file_.FlushIfFull();
  }

 private:
  Track TrackOf(TaskIndex task) const { return {process_, firstTask + task}; }
  void Append(std::string_view text) { file_.Block().append(text); }

  void Describe() {
    const std::string name = JsonString(source_.name);
    Name("process_name", {processors, 0}, R"("Processors")");
    Name("thread_name", processor_, name);
    Name("process_name", {process_, 0}, name);
    for (TaskIndex task = 0; task < source_.lane.Tasks().size(); ++task) {
      if (!source_.Wants(task)) continue;
      Name("thread_name", TrackOf(task), names_[task]);
      // The highest priority on top.
      Metadata("thread_sort_index", TrackOf(task));
      Print(file_.Block(), R"("sort_index":{}}}}})",
            std::int64_t{INT32_MAX} - source_.lane.Tasks()[task].priority);
    }
  }

  void Metadata(const char* what, Track track) {
    Print(file_.Block(), ",\n{{\"name\":\"{}\",\"ph\":\"M\",\"pid\":{},\"tid\":{},\"args\":{{", what,
          track.process, track.thread);
  }
  void Name(const char* what, Track track, const std::string& json) {
    Metadata(what, track);
    Print(file_.Block(), R"("name":{}}}}})", json);
  }

  void AppendMicroseconds(std::uint64_t nanoseconds) {
    AppendNumber(file_.Block(), nanoseconds / 1000);
    const auto digit = [&](std::uint64_t unit) { return static_cast<char>('0' + nanoseconds / unit % 10); };
    const char decimals[] = {'.', digit(100), digit(10), digit(1)};
    file_.Block().append(decimals, decimals + sizeof decimals);
  }

  void Begin(std::string_view name, std::string_view category, Track track, analysis::Ticks time) {
    Append(",\n{\"name\":");
    Append(name);
    Append(R"(,"cat":")");
    Append(category);
    Append(R"(","pid":)");
    AppendNumber(file_.Block(), track.process);
    Append(R"(,"tid":)");
    AppendNumber(file_.Block(), track.thread);
    Append(R"(,"ts":)");
    AppendMicroseconds(clock_.Of(time));
  }

  void Slice(std::string_view name, std::string_view category, Track track, analysis::Ticks begin,
             analysis::Ticks end) {
    Begin(name, category, track, begin);
    Append(R"(,"ph":"X","dur":)");
    AppendMicroseconds(clock_.Of(end) - clock_.Of(begin));
    Append(R"(,"args":{"ticks":")");
    AppendNumber(file_.Block(), begin);
    Append(R"(","lengthTicks":")");
    AppendNumber(file_.Block(), end - begin);
    Append("\"}}");
    file_.FlushIfFull();
  }

  const Source& source_;
  Track processor_;
  std::uint32_t process_;
  const Clock& clock_;
  OutputFile& file_;
  std::vector<std::string> names_;  // by SubjectIndex, as JSON
};

class Chrome : public Exporter {
 public:
  explicit Chrome(Files& files) : file_(files.Create("trace.json")) {
    file_.Block().append(std::string_view(
        R"({"displayTimeUnit":"ns","traceEvents":[{"name":"process_sort_index","ph":"M","pid":1,)"
        R"("tid":0,"args":{"sort_index":0}})"));
  }

  void Add(const Source& source) override {
    clock_.Enter(source.lane, source.name);
    LaneEvents events(source, lanes_++, clock_, file_);
    analysis::Walk(source.lane, source.conventions, {&events});
  }

  void End() override {
    file_.Block().append(std::string_view("\n]}\n"));
    file_.Flush();
  }

 private:
  OutputFile file_;
  Clock clock_{mostExact};
  std::uint32_t lanes_ = 0;
};

}  // namespace

std::unique_ptr<Exporter> MakeChrome(Files& files) { return std::make_unique<Chrome>(files); }

}  // namespace exporters
