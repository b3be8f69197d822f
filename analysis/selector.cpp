#include "selector.h"

#include <iterator>

namespace analysis {
namespace {

constexpr std::string_view kinds[] = {"testpoint", "issue", "event", "activation", "start", "completion"};

}  // namespace

std::optional<Selector> Selector::Parse(std::string_view text, std::string& mistake) {
  const std::size_t colon = text.find(':');
  for (std::size_t i = 0; i < std::size(kinds) && colon != std::string_view::npos; ++i)
    if (text.substr(0, colon) == kinds[i])
      return Selector{static_cast<Kind>(i), std::string(text.substr(colon + 1))};
  mistake =
      "'" + std::string(text) +
      "' is no selector: expected testpoint:NAME, issue:NAME, event:TASK, activation:TASK, start:TASK or "
      "completion:TASK";
  return std::nullopt;
}

std::string Selector::Text() const { return std::string(kinds[static_cast<std::size_t>(kind)]) + ':' + name; }

std::vector<SubjectIndex> Selector::In(const Subjects& subjects) const {
  if (kind == Kind::testpoint) return subjects.MarkSubjectsNamed(TLCatTestpoint, name);
  if (kind == Kind::issue) return subjects.MarkSubjectsNamed(TLCatTimingIssue, name);
  return subjects.TasksNamed(name);
}

}  // namespace analysis
