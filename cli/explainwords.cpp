#include "explainwords.h"

#include <fmt/format.h>

#include "summaryformat.h"
#include "text.h"
#include "texttable.h"

namespace cli {
namespace {

using analysis::CauseKind;
using analysis::Finding;
using analysis::LateSign;
using analysis::Link;
using analysis::noSubject;
using analysis::noTask;

std::string Name(const AnalysedLane& lane, analysis::SubjectIndex subject) {
  return SafeText(lane.lane.Names().NameOf(subject));
}

// "between PoseRead and PoseSolved", with a space in front; empty where it is not known.
std::string Stretch(const AnalysedLane& lane, const Link& link) {
  if (link.beginMark == noSubject && link.endMark == noSubject) return "";
  if (link.beginMark == noSubject) return fmt::format(" before {}", Name(lane, link.endMark));
  if (link.endMark == noSubject) return fmt::format(" behind {}", Name(lane, link.beginMark));
  return fmt::format(" between {} and {}", Name(lane, link.beginMark), Name(lane, link.endMark));
}

std::string MoreOften(const AnalysedLane& lane, const Link& link, const std::string& who) {
  std::string by;
  if (link.activator != noTask) by = fmt::format(", activated by {}", TaskName(lane, link.activator));
  if (link.raisedAt != noSubject) by += " at " + Name(lane, link.raisedAt);
  if (link.count <= link.normalCount)
    return fmt::format("{} ran more often than it normally does{}", who, by);
  return fmt::format("{} ran {} jobs where its period leaves room for {}{}", who, link.count,
                     link.normalCount, by);
}

std::string Execution(const AnalysedLane& lane, const Link& link) {
  return fmt::format("{} itself ran for {} in place of {}{}", TaskName(lane, link.task),
                     ShortLength(lane, link.actual), ShortLength(lane, link.normal), Stretch(lane, link));
}

std::string Waiting(const AnalysedLane& lane, const Link& link) {
  const std::string text = fmt::format("{} waited for {} in place of {}", TaskName(lane, link.task),
                                       ShortLength(lane, link.actual), ShortLength(lane, link.normal));
  if (link.holder == noTask) return text + ", and no task was at work for it (a device, or another lane)";
  return fmt::format("{} until {} had run, which seems to hold what it needs (a lock)", text,
                     TaskName(lane, link.holder));
}

// The first half of the verdict: what was seen.
std::string Symptom(const AnalysedLane& lane, const Finding& finding) {
  const std::string task = TaskName(lane, finding.task);
  const std::string at = fmt::format("at {} {}", lane.TimeText(finding.job.activation), lane.Unit());
  const std::string actual = ShortLength(lane, finding.cause.actual);
  const std::string normal = ShortLength(lane, finding.cause.normal);
  if (finding.sign == LateSign::interval)
    return fmt::format("{} was activated {} after the time before in place of {} {}", task, actual, normal,
                       at);
  if (finding.since) {
    const std::string since = fmt::format("{} {}", lane.TimeText(*finding.since), lane.Unit());
    return fmt::format("{} answers after {} in place of {} since {}", task, actual, normal, since);
  }
  return fmt::format("{} answered after {} in place of {} {}", task, actual, normal, at);
}

}  // namespace

std::string ShortLength(const AnalysedLane& lane, std::uint64_t ticks) {
  if (!lane.time.HasSeconds()) return fmt::format("{} ticks", ticks);
  // What three digits round up to the next unit is written in that one.
  const double seconds = static_cast<double>(ticks) / static_cast<double>(lane.lane.TicksPerSecond());
  if (seconds >= 999.5) return fmt::format("{:.0f} s", seconds);
  if (seconds >= 0.9995) return fmt::format("{:.3g} s", seconds);
  if (seconds >= 0.9995e-3) return fmt::format("{:.3g} ms", seconds * 1e3);
  return fmt::format("{:.3g} us", seconds * 1e6);
}

std::string TaskName(const AnalysedLane& lane, analysis::TaskIndex task) {
  return task == noTask ? "the lane" : SafeText(lane.lane.Tasks()[task].name);
}

std::string LinkText(const AnalysedLane& lane, const Link& link, analysis::TaskIndex late) {
  const std::string task = TaskName(lane, link.task);
  const std::string actual = ShortLength(lane, link.actual);
  const std::string normal = ShortLength(lane, link.normal);
  switch (link.kind) {
    case CauseKind::execution: return Execution(lane, link);
    case CauseKind::preemptionLonger:
      return fmt::format("{}, of higher priority, had the processor for {} in place of {}, in longer jobs",
                         task, actual, normal);
    case CauseKind::preemptionMoreOften:
      return MoreOften(lane, link, link.task == late ? task + " itself" : task + ", of higher priority,");
    case CauseKind::preemptionCoincidence:
      return fmt::format("{} came at the same time and had the processor for {} in place of {}", task, actual,
                         normal);
    case CauseKind::blocking:
      return fmt::format("{}, of lower priority, kept the processor for {} and was not preempted", task,
                         actual);
    case CauseKind::sharing:
      return fmt::format("{}, of equal priority, had the processor for {} in place of {}", task, actual,
                         normal);
    case CauseKind::dispatch:
      return fmt::format("{} was ready and did not get the idle processor for {}", task, actual);
    case CauseKind::waiting: return Waiting(lane, link);
    case CauseKind::lateActivation:
      return fmt::format("{} came {} too late", task, ShortLength(lane, link.excess));
    case CauseKind::overload: return "the tasks of this lane have more to do than there is time";
    case CauseKind::lostRecords:
      return fmt::format("records were lost, {} in all", ShortLength(lane, link.excess));
    case CauseKind::unknown: break;
  }
  return "no part of it explains half of that";
}

std::string Verdict(const AnalysedLane& lane, const Finding& finding) {
  const Link& root = finding.cause.Root();
  if (root.kind == CauseKind::lostRecords) {
    return fmt::format("Records were lost: {} {} of {} in all, nothing is known of {}.",
                       finding.occurrences.size(), finding.occurrences.size() == 1 ? "gap" : "gaps",
                       ShortLength(lane, finding.excess), Percent(1 - lane.lane.Coverage()));
  }
  std::string text =
      Symptom(lane, finding) + ": " + LinkText(lane, finding.cause.chain.front(), finding.task);
  if (finding.cause.chain.size() > 1) text += ", because " + LinkText(lane, root, finding.task);
  return text + ".";
}

std::string PartText(const AnalysedLane& lane, const analysis::PartExcess& part) {
  switch (part.kind) {
    case analysis::PartKind::preemption: return "preemption by " + TaskName(lane, part.task);
    case analysis::PartKind::blocking: return "blocking by " + TaskName(lane, part.task);
    case analysis::PartKind::sharing: return "sharing with " + TaskName(lane, part.task);
    default: return std::string(NameOf(part.kind));
  }
}

std::string Certainty(const AnalysedLane& lane, const Finding& finding) {
  const Link& root = finding.cause.Root();
  const bool isUnknown = root.kind == CauseKind::unknown;
  std::string text = isUnknown ? "not at all" : fmt::format("{:.0f} %", finding.confidence * 100);
  if (!isUnknown && root.kind != CauseKind::lostRecords)
    text += fmt::format("; the cause is {:.0f} % of the excess", root.share * 100);
  if (finding.occurrences.size() == 1 && root.kind != CauseKind::lostRecords) text += "; seen once only";
  if (!lane.conventions.meanings.AreKnown())
    text += "; without meanings of switches a wait looks like the end of a job (--switches)";
  if (!lane.lane.Gaps().empty()) text += "; nothing is known of the gaps";
  return text;
}

}  // namespace cli
