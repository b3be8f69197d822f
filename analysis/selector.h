// Names what a latency begins or ends with: "testpoint:NAME", "issue:NAME", "event:TASK", "activation:TASK",
// "start:TASK", "completion:TASK".
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "subjects.h"

namespace analysis {

struct Selector {
  enum class Kind : std::uint8_t { testpoint, issue, event, activation, start, completion };

  Kind kind = Kind::testpoint;
  std::string name;

  // When the text is wrong, there is no value and `mistake` says what was expected.
  static std::optional<Selector> Parse(std::string_view text, std::string& mistake);
  std::string Text() const;  // as Parse() reads it
  // What it selects; empty when there is nothing of that name.
  std::vector<SubjectIndex> In(const Subjects& subjects) const;
  bool operator==(const Selector& other) const { return kind == other.kind && name == other.name; }
};

}  // namespace analysis
