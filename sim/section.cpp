#include "section.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <toml++/toml.h>

#include <algorithm>

#include "duration.h"
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

}  // namespace

Section Section::Parse(std::string_view text, const std::string& source) {
  try {
    const auto root = std::make_shared<const toml::table>(toml::parse(text, source));
    return Section(root, *root, source);
  } catch (const toml::parse_error& error) {
    FailInLine(source, error.source().begin.line, "expected valid TOML: " + OneLine(error.description()));
  }
}

std::optional<std::string> Section::Text(const char* key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  if (!node->is_string()) FailAt(*node, key, "a text in quotes");
  return node->as_string()->get();
}

std::optional<int64_t> Section::Integer(const char* key, int64_t least, int64_t most) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->is_integer() ? node->value<int64_t>() : std::nullopt;
  if (!value || *value < least || *value > most) {
    FailAt(*node, key, fmt::format("an integer from {} to {}", least, most));
  }
  return value;
}

std::optional<double> Section::Number(const char* key, double least, double most) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->is_number() ? node->value<double>() : std::nullopt;
  if (!value || !(*value >= least && *value <= most)) {
    FailAt(*node, key, fmt::format("a number from {} to {}", least, most));
  }
  return value;
}

std::optional<uint64_t> Section::Duration(const char* key, uint64_t leastNs) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  const auto value = node->is_string() ? ParseDuration(node->as_string()->get()) : std::nullopt;
  if (!value) FailAt(*node, key, "a duration such as \"250us\", \"1.5ms\" or \"2s\"");
  if (*value < leastNs) FailAt(*node, key, fmt::format("a duration of at least {} ns", leastNs));
  return value;
}

std::optional<Section> Section::Table(const char* key) {
  const toml::node* node = Find(key);
  if (!node) return std::nullopt;
  return Child(*node, key);
}

std::vector<Section> Section::Tables(const char* key) {
  const toml::node* node = Find(key);
  if (!node) return {};
  if (!node->is_array()) FailAt(*node, key, "a list of tables");
  std::vector<Section> sections;
  for (const toml::node& item : *node->as_array()) sections.push_back(Child(item, key));
  return sections;
}

std::string Section::RequiredText(const char* key) {
  auto value = Text(key);
  if (!value || value->empty()) Fail(key, "a text that is not empty");
  return *value;
}

uint64_t Section::RequiredDuration(const char* key, uint64_t leastNs) {
  const auto value = Duration(key, leastNs);
  if (!value) Fail(key, "a duration such as \"250us\"");
  return *value;
}

bool Section::IsText(const char* key) const {
  const toml::node* node = table_->get(key);
  return node && node->is_string();
}

void Section::Finish() const {
  for (const auto& [key, node] : *table_) {
    if (std::find(askedKeys_.begin(), askedKeys_.end(), key.str()) != askedKeys_.end()) continue;
    std::string hint = Suggestion(key.str(), askedKeys_);
    if (hint.empty()) hint = fmt::format(", expected one of: {}", fmt::join(askedKeys_, ", "));
    FailInLine(source_, key.source().begin.line, fmt::format("unknown key '{}'{}", OneLine(key.str()), hint));
  }
}

void Section::Fail(const char* key, const std::string& expected) const {
  const toml::node* node = table_->get(key);
  FailAt(node ? *node : *table_, key, expected);
}

void Section::Fail(const std::string& expected) const {
  FailInLine(source_, table_->source().begin.line, "expected " + expected);
}

const toml::node* Section::Find(const char* key) {
  askedKeys_.emplace_back(key);
  return table_->get(key);
}

void Section::FailAt(const toml::node& node, const char* key, const std::string& expected) const {
  FailInLine(source_, node.source().begin.line, fmt::format("{}: expected {}", key, expected));
}

Section Section::Child(const toml::node& node, const char* key) const {
  if (!node.is_table()) FailAt(node, key, "a table");
  return Section(root_, *node.as_table(), source_);
}

}  // namespace sim
