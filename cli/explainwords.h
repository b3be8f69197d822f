// What a finding says, as sentences that a person can pass on.
#pragma once

#include <string>

#include "analysedlane.h"
#include "analysis/findings.h"

namespace cli {

// "14.2 ms": three digits and the unit that suits; ticks where the rate is unknown.
std::string ShortLength(const AnalysedLane& lane, std::uint64_t ticks);

// The task's name, safe to print; "the lane" for none.
std::string TaskName(const AnalysedLane& lane, analysis::TaskIndex task);

// "PathPlanner answered after 6.94 ms in place of 3.64 ms at 4.801400 s: VisionTrigger, of higher priority,
// ..."
std::string Verdict(const AnalysedLane& lane, const analysis::Finding& finding);

// What one step of the chain says of the task that was late, without its time: "VisionTrigger, of higher
// priority, ran 6 jobs where ..."
std::string LinkText(const AnalysedLane& lane, const analysis::Link& link, analysis::TaskIndex late);

// "preemption by VisionTrigger"
std::string PartText(const AnalysedLane& lane, const analysis::PartExcess& part);

// How sure the finding is, and why.
std::string Certainty(const AnalysedLane& lane, const analysis::Finding& finding);

}  // namespace cli
