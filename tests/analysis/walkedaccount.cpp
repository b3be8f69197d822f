// What the walk of the library tells, as lines.
#include "analysis/walker.h"
#include "tests/analysis/plainwalk.h"

using namespace analysis;

std::string RunLine(const Run& run) {
  return "run " + std::to_string(static_cast<int>(run.task)) + ' ' + std::to_string(run.begin) + '-' +
         std::to_string(run.end) + (run.cutBegin ? " cut" : "") + (run.cutEnd ? " cut off" : "");
}

std::string MarkLine(const Mark& mark) {
  return "mark " + std::to_string(mark.type) + ' ' + std::to_string(mark.subject) + " by " +
         std::to_string(static_cast<int>(mark.running)) + " at " + std::to_string(mark.time);
}

std::string JobLine(const Job& job) {
  std::string line = "job " + std::to_string(job.task) + ' ' + std::to_string(job.activation) + '-' +
                     std::to_string(job.end);
  if (job.hasRun) line += " start " + std::to_string(job.start);
  if (job.hasInterval) line += " interval " + std::to_string(job.interval);
  if (job.byEvent) line += " by event while " + std::to_string(static_cast<int>(job.activator));
  if (job.activator != noTask) line += " ran for " + std::to_string(job.activatorExecution);
  for (const std::uint64_t count : {job.execution, job.waiting}) line += ' ' + std::to_string(count);
  for (const std::uint32_t count : {job.preemptions, job.slices, job.waits, job.events})
    line += ' ' + std::to_string(count);
  return line + (job.askedEarlier ? " asked earlier" : "") + (job.cutBegin ? " cut" : "") +
         (job.cutEnd ? " cut off" : "");
}

namespace {

class Recorder : public Parts {
 public:
  Recorder(const Lane& lane, TaskIndex idle)
      : Parts(lane, idle, wantsBeginnings | wantsMarks | wantsMarkSubjects) {}

  void OnRun(const Run& run) override {
    account.insert(RunLine(run));
    Parts::OnRun(run);
  }
  void OnMark(const Mark& mark) override { account.insert(MarkLine(mark)); }
  void OnDropped(const Job& job) override {
    account.insert("dropped " + std::to_string(job.task) + ' ' + std::to_string(job.activation));
  }
  void OnJob(const Job& job) override {
    if (!job.IsWhole()) account.insert(JobLine(job));
    Parts::OnJob(job);
  }
  void OnParts(const Job& job, const std::vector<Part>& parts) override {
    std::string line = JobLine(job);
    for (std::size_t i = 1; i < parts.size(); ++i)
      line += ", " + std::string(NameOf(parts[i].kind)) + ' ' +
              std::to_string(static_cast<int>(parts[i].task)) + ' ' + std::to_string(parts[i].ticks);
    account.insert(line);
  }

  Account account;
};

}  // namespace

Account WalkedAccount(const Lane& lane, const Conventions& conventions) {
  Recorder recorder(lane, conventions.idle);
  Walk(lane, conventions, {&recorder});
  return recorder.account;
}
