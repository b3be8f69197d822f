// Reads one table of a scenario file key by key. Every mistake becomes one line: file, line, what was
// expected. Finish() refuses keys that nobody asked for.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// Only tomltable.cpp takes the whole of the TOML library in; it is large.
namespace toml {
inline namespace v3 {
class node;
class table;
}  // namespace v3
}  // namespace toml

namespace sim {

class TomlTable {
 public:
  // Parses a whole file. `source` names it in messages.
  static TomlTable Parse(std::string_view text, const std::string& source);

  // Values; nothing when the key is absent.
  std::optional<std::string> Text(const char* key);
  std::optional<int64_t> Integer(const char* key, int64_t least, int64_t most);
  std::optional<bool> Boolean(const char* key);
  std::optional<double> Number(const char* key, double least, double most);
  std::optional<uint64_t> Duration(const char* key, uint64_t leastNs = 0);
  // The table of that key; the tables of an array, none when the key is absent.
  std::optional<TomlTable> Table(const char* key);
  std::vector<TomlTable> Tables(const char* key);

  // Values that must be there.
  std::string RequiredText(const char* key);
  uint64_t RequiredDuration(const char* key, uint64_t leastNs);

  uint32_t Line() const;
  bool IsText(const char* key) const;
  void Finish() const;
  // `expected` completes the sentence "expected ...".
  [[noreturn]] void Fail(const char* key, const std::string& expected) const;
  [[noreturn]] void Fail(const std::string& expected) const;

 private:
  TomlTable(std::shared_ptr<const toml::table> root, const toml::table& table, std::string source)
      : root_(std::move(root)), table_(&table), source_(std::move(source)) {}

  const toml::node* Find(const char* key);
  [[noreturn]] void FailAt(const toml::node& node, const char* key, const std::string& expected) const;
  TomlTable Child(const toml::node& node, const char* key) const;

  std::shared_ptr<const toml::table> root_;  // keeps the file's tables alive
  const toml::table* table_;
  std::string source_;
  std::vector<std::string> askedKeys_;
};

}  // namespace sim
