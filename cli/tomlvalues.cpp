#include "tomlvalues.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <sstream>

#include "failure.h"
#include "suggest.h"
#include "text.h"

namespace cli {

toml::table TomlValues::Parse() const {
  std::ostringstream text;
  std::ifstream file(path_, std::ios::binary);
  errno = 0;
  if (!file || !(text << file.rdbuf())) {
    throw UsageError(
        fmt::format("reading {}: {}", Quoted(path_), errno ? std::strerror(errno) : "it is empty"));
  }
  try {
    return toml::parse(text.str(), path_);
  } catch (const toml::parse_error& error) {
    Fail(error.source(), "expected valid TOML: " + std::string(error.description()));
  }
}

void TomlValues::Fail(const toml::source_region& where, const std::string& text) const {
  throw UsageError(fmt::format("{}:{}: {}", SafeText(path_), where.begin.line, SafeText(text)));
}

void TomlValues::RefuseOthers(const toml::table& table, const std::vector<std::string>& keys) const {
  for (const auto& [key, node] : table) {
    const std::string name(key.str());
    if (std::find(keys.begin(), keys.end(), name) != keys.end()) continue;
    std::string hint = Suggestion(name, keys);
    if (hint.empty()) hint = fmt::format(", expected one of: {}", fmt::join(keys, ", "));
    Fail(key.source(), fmt::format("unknown key '{}'{}", name, hint));
  }
}

std::string TomlValues::Text(const toml::table& table, const char* key, const char* expected) const {
  const toml::node* node = table.get(key);
  const auto text = node ? node->value_exact<std::string>() : std::nullopt;
  if (text && !text->empty()) return *text;
  Fail(node ? node->source() : table.source(), fmt::format("{}: expected {}", key, expected));
}

TimePoint TomlValues::Time(const toml::node& node, const std::string& key) const {
  const auto text = node.value_exact<std::string>();
  if (const auto duration = text ? ParseDuration(*text) : std::nullopt) return {std::nullopt, *duration};
  const auto ticks = node.value_exact<std::int64_t>();
  if (ticks && *ticks >= 0) return {static_cast<std::uint64_t>(*ticks), {}};
  const char* quotes = node.is_table() && key == "p99" ? "; \"p99.9\" needs its quotes" : "";
  Fail(
      node.source(),
      fmt::format("{}: expected a time such as \"250us\" or \"1.5ms\", or a number of ticks{}", key, quotes));
}

double TomlValues::Share(const toml::node& node, const char* key) const {
  const auto text = node.value_exact<std::string>();
  const auto share = text ? ParsePercent(*text) : std::nullopt;
  if (share && *share <= 1) return *share;
  Fail(node.source(), fmt::format("{}: expected a share from \"0 %\" to \"100 %\"", key));
}

std::optional<double> TomlValues::Count(const toml::table& table, const char* key) const {
  const toml::node* node = table.get(key);
  if (!node) return std::nullopt;
  const auto count = node->value_exact<std::int64_t>();
  if (count && *count >= 0) return static_cast<double>(*count);
  Fail(node->source(), fmt::format("{}: expected a number from 0 on", key));
}

}  // namespace cli
