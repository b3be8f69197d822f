#include "meanings.h"

#include <iterator>

namespace analysis {
namespace {

constexpr std::string_view names[] = {"plain", "preempted", "done", "waits", "slice", "fromIdle"};
constexpr std::string_view simulator = "0=preempted,1=done,3=fromIdle,4=waits,5=slice";

std::optional<Meaning> MeaningNamed(std::string_view name) {
  for (std::size_t i = 0; i < std::size(names); ++i)
    if (names[i] == name) return static_cast<Meaning>(i);
  return std::nullopt;
}

bool IsSwitchType(char digit) { return digit >= '0' && digit <= '5' && digit != '2'; }

}  // namespace

std::optional<Meanings> Meanings::Parse(std::string_view text, std::string& mistake) {
  if (text == "sim") return OfSimulator();
  Meanings meanings;
  bool named[8] = {};
  for (bool more = true; more;) {
    const std::size_t comma = text.find(',');
    const std::string_view item = text.substr(0, comma);
    more = comma != std::string_view::npos;
    if (more) text.remove_prefix(comma + 1);
    if (item.size() < 3 || !IsSwitchType(item[0]) || item[1] != '=') {
      mistake = "'" + std::string(item) + "' is no TYPE=MEANING with one of the types 0, 1, 3, 4, 5";
      return std::nullopt;
    }
    const std::optional<Meaning> meaning = MeaningNamed(item.substr(2));
    if (!meaning) {
      mistake = "'" + std::string(item.substr(2)) +
                "' is no meaning: expected preempted, done, waits, slice, fromIdle or plain";
      return std::nullopt;
    }
    const auto type = static_cast<std::size_t>(item[0] - '0');
    if (named[type]) {
      mistake = "type " + std::string(1, item[0]) + " has two meanings";
      return std::nullopt;
    }
    named[type] = true;
    meanings.byType_[type] = *meaning;
  }
  return meanings;
}

Meanings Meanings::OfSimulator() {
  std::string mistake;
  return *Parse(simulator, mistake);
}

std::string Meanings::Text() const {
  std::string text;
  for (std::size_t type = 0; type < byType_.size(); ++type) {
    if (byType_[type] == Meaning::plain) continue;
    if (!text.empty()) text += ',';
    text += static_cast<char>('0' + type);
    text += '=';
    text += names[static_cast<std::size_t>(byType_[type])];
  }
  return text;
}

}  // namespace analysis
