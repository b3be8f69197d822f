#include "tomltable.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <toml++/toml.h>

#include <algorithm>

#include "nearest.h"
#include "status.h"

namespace sim {
namespace {

[[noreturn]] void FailInLine(const std::string& source, uint32_t line, const std::string& text) {
  throw Failure{badScenario, fmt::format("{}:{}: {}", source, line, text)};
}

// Text of the TOML library, on one line.
std::string OneLine(std::string_view text) {
  std::string line(text);
  for (char& c : line) {
    if (static_cast<unsigned char>(c) < 0x20) c = ' ';
  }
  return line;
}

constexpr uint64_t longestNs = uint64_t{86'400} * 1'000'000'000;

std::optional<uint64_t> UnitNs(std::string_view unit) {
  if (unit == "ns") return 1;
  if (unit == "us") return 1'000;
  if (unit == "ms") return 1'000'000;
  if (unit == "s") return 1'000'000'000;
  return std::nullopt;
}

// The value of up to 14 digits, which is more than a day of nanoseconds.
std::optional<uint64_t> ParseDigits(std::string_view digits) {
  if (digits.empty() || digits.size() > 14) return std::nullopt;
  uint64_t value = 0;
  for (const char c : digits) {
    if (c < '0' || c > '9') return std::nullopt;
    value = value * 10 + static_cast<uint64_t>(c - '0');
  }
  return value;
}

// Nanoseconds of a text such as "250us" or "1.5 ms"; nothing for what is not a duration, is finer than a
// nanosecond or longer than a day. In integers, so that no duration depends on a rounding of floating-point
// numbers.
std::optional<uint64_t> ParseDuration(std::string_view text) {
  const size_t numberEnd = text.find_first_not_of("0123456789.");
  if (numberEnd == std::string_view::npos) return std::nullopt;
  const size_t unitAt = text[numberEnd] == ' ' ? numberEnd + 1 : numberEnd;
  const auto unitNs = UnitNs(text.substr(unitAt));
  const std::string_view number = text.substr(0, numberEnd);
  const size_t point = number.find('.');
  const auto whole = ParseDigits(number.substr(0, point));
  if (!unitNs || !whole || *whole > longestNs / *unitNs) return std::nullopt;

  uint64_t valueNs = *whole * *unitNs;
  if (point == std::string_view::npos) return valueNs;
  const std::string_view fraction = number.substr(point + 1);
  if (!ParseDigits(fraction)) return std::nullopt;
  uint64_t placeNs = *unitNs;
  for (const char c : fraction) {
    placeNs /= 10;
    if (placeNs == 0 && c != '0') return std::nullopt;
    valueNs += static_cast<uint64_t>(c - '0') * placeNs;
  }
  return valueNs <= longestNs ? std::optional(valueNs) : std::nullopt;
}

// Where the string that begins at `at` ends, as TOML has it.
size_t EndOfString(std::string_view text, size_t at) {
  const char quote = text[at];
  const bool multiline = text.substr(at, 3) == std::string(3, quote);
  const std::string_view end = multiline ? std::string_view(&text[at], 3) : std::string_view(&text[at], 1);
  for (at += end.size(); at < text.size(); ++at) {
    if (!multiline && text[at] == '\n') return at;
    if (quote == '"' && text[at] == '\\') {
      ++at;
    } else if (text.substr(at, end.size()) == end) {
      at += end.size();
      // Up to two quotes before the end belong to the string.
      for (int more = 0; multiline && more < 2 && at < text.size() && text[at] == quote; ++more) ++at;
      return at;
    }
  }
  return text.size();
}

// Refuses keys such as a.a.a.a with very many parts: the TOML library would exhaust the stack over them.
void RequireShortKeys(std::string_view text, const std::string& source) {
  constexpr int mostDots = 7;
  int dots = 0;
  uint32_t line = 1;
  for (size_t at = 0; at < text.size();) {
    const char c = text[at];
    size_t next = at + 1;
    if (c == '"' || c == '\'') next = EndOfString(text, at);
    if (c == '#') next = std::min(text.find('\n', at), text.size());
    if (c == '.' && ++dots > mostDots) FailInLine(source, line, "expected keys of at most 8 parts");
    if (std::string_view("=,[]{}\n").find(c) != std::string_view::npos) dots = 0;
    line += static_cast<uint32_t>(std::count(text.begin() + at, text.begin() + next, '\n'));
    at = next;
  }
}

}  // namespace

TomlTable TomlTable::Parse(std::string_view text, const std::string& source) {
  RequireShortKeys(text, source);
  try {
    const auto root = std::make_shared<const toml::table>(toml::parse(text, source));
    return TomlTable(root, *root, source);
  } catch (const toml::parse_error& error) {
    FailInLine(source, error.source().begin.line, "expected valid TOML: " + OneLine(error.description()));
  }
}

std::optional<std::string> TomlTable::Text(const char* key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  if (!node->is_string()) FailAt(*node, key, "a text in quotes");
  return node->as_string()->get();
}

std::optional<int64_t> TomlTable::Integer(const char* key, int64_t least, int64_t most) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->is_integer() ? node->value<int64_t>() : std::nullopt;
  if (!value || *value < least || *value > most) {
    FailAt(*node, key, fmt::format("an integer from {} to {}", least, most));
  }
  return value;
}

std::optional<bool> TomlTable::Boolean(const char* key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  if (!node->is_boolean()) FailAt(*node, key, "true or false");
  return node->as_boolean()->get();
}

std::optional<double> TomlTable::Number(const char* key, double least, double most) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->is_number() ? node->value<double>() : std::nullopt;
  if (!value || !(*value >= least && *value <= most)) {
    FailAt(*node, key, fmt::format("a number from {} to {}", least, most));
  }
  return value;
}

std::optional<uint64_t> TomlTable::Duration(const char* key, uint64_t leastNs) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->is_string() ? ParseDuration(node->as_string()->get()) : std::nullopt;
  if (!value) FailAt(*node, key, "a duration such as \"250us\", \"1.5ms\" or \"2s\"");
  if (*value < leastNs) FailAt(*node, key, fmt::format("a duration of at least {} ns", leastNs));
  return value;
}

std::optional<TomlTable> TomlTable::Table(const char* key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  return Child(*node, key);
}

std::vector<TomlTable> TomlTable::Tables(const char* key) {
  const toml::node* node = Find(key);
  if (!node) return {};
  if (!node->is_array()) FailAt(*node, key, "a list of tables");
  std::vector<TomlTable> tables;
  for (const toml::node& item : *node->as_array()) tables.push_back(Child(item, key));
  return tables;
}

std::string TomlTable::RequiredText(const char* key) {
  auto value = Text(key);
  if (!value || value->empty()) Fail(key, "a text that is not empty");
  return *value;
}

uint64_t TomlTable::RequiredDuration(const char* key, uint64_t leastNs) {
  const auto value = Duration(key, leastNs);
  if (!value) Fail(key, "a duration such as \"250us\"");
  return *value;
}

uint32_t TomlTable::Line() const { return table_->source().begin.line; }

bool TomlTable::IsText(const char* key) const {
  const toml::node* node = table_->get(key);
  return node && node->is_string();
}

void TomlTable::Finish() const {
  for (const auto& [key, node] : *table_) {
    if (std::find(askedKeys_.begin(), askedKeys_.end(), key.str()) != askedKeys_.end()) continue;
    std::string hint = Suggestion(key.str(), askedKeys_);
    if (hint.empty()) hint = fmt::format(", expected one of: {}", fmt::join(askedKeys_, ", "));
    FailInLine(source_, key.source().begin.line, fmt::format("unknown key '{}'{}", OneLine(key.str()), hint));
  }
}

void TomlTable::Fail(const char* key, const std::string& expected) const {
  const toml::node* node = table_->get(key);
  FailAt(node ? *node : *table_, key, expected);
}

void TomlTable::Fail(const std::string& expected) const {
  FailInLine(source_, Line(), "expected " + expected);
}

const toml::node* TomlTable::Find(const char* key) {
  askedKeys_.emplace_back(key);
  return table_->get(key);
}

void TomlTable::FailAt(const toml::node& node, const char* key, const std::string& expected) const {
  FailInLine(source_, node.source().begin.line, fmt::format("{}: expected {}", key, expected));
}

TomlTable TomlTable::Child(const toml::node& node, const char* key) const {
  if (!node.is_table()) FailAt(node, key, "a table");
  return TomlTable(root_, *node.as_table(), source_);
}

}  // namespace sim
