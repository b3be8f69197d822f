#include "latencyside.h"

#include "failure.h"
#include "suggest.h"
#include "text.h"

namespace cli {

using analysis::Selector;

LatencySide::LatencySide(const char* option, const std::string& text) {
  std::string mistake;
  const auto selector = Selector::Parse(text, mistake);
  if (!selector) throw UsageError(std::string(option) + ": " + SafeText(mistake));
  selector_ = *selector;
}

bool LatencySide::IsIn(const analysis::Lane& lane) {
  const bool found = !selector_.In(lane.Names()).empty();
  isKnown_ |= found;
  if (!found) Remember(lane.Names());
  return found;
}

void LatencySide::Finish() const {
  if (isKnown_) return;
  throw Failure(Quoted(selector_.Text()) + " is in no log" + Suggestion(selector_.Text(), seen_));
}

void LatencySide::Remember(const analysis::Subjects& names) {
  Selector other = selector_;
  const auto add = [&](const std::string& name) {
    other.name = name;
    seen_.push_back(other.Text());
  };
  const bool isMark = selector_.kind == Selector::Kind::testpoint || selector_.kind == Selector::Kind::issue;
  const ETLCatType kind = selector_.kind == Selector::Kind::issue ? TLCatTimingIssue : TLCatTestpoint;
  for (const analysis::MarkSubject& mark : names.MarkSubjects())
    if (isMark && mark.kind == kind) add(mark.name);
  for (const analysis::Task& task : names.Tasks())
    if (!isMark) add(task.name);
}

}  // namespace cli
