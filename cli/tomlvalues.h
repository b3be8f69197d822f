// Values of a TOML file. A mistake becomes one line: file, line, what was expected.
#pragma once

#include <toml++/toml.h>

#include <optional>
#include <string>
#include <vector>

#include "args.h"

namespace cli {

// All throw UsageError. `key` is what the message calls the value.
class TomlValues {
 public:
  explicit TomlValues(std::string path) : path_(std::move(path)) {}

  toml::table Parse() const;
  [[noreturn]] void Fail(const toml::source_region& where, const std::string& text) const;
  void RefuseOthers(const toml::table& table, const std::vector<std::string>& keys) const;

  // A text that is there and not empty. `expected` completes "expected ...".
  std::string Text(const toml::table& table, const char* key, const char* expected) const;
  // A length of time, or ticks.
  TimePoint Time(const toml::node& node, const std::string& key) const;
  // "45 %", as 0.45; up to 1.
  double Share(const toml::node& node, const char* key) const;
  // Nothing when the key is absent.
  std::optional<double> Count(const toml::table& table, const char* key) const;

  // The tables [[key]]; none when the key is absent.
  template <class Use>
  void ForEachTable(const toml::table& file, const char* key, Use use) const {
    const toml::node* node = file.get(key);
    if (!node) return;
    if (!node->is_array_of_tables()) Fail(node->source(), std::string("expected tables [[") + key + "]]");
    for (const toml::node& item : *node->as_array()) use(*item.as_table());
  }

 private:
  std::string path_;
};

}  // namespace cli
