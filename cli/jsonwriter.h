// JSON as commands print it: one object of an array a line. docs/json.md has the keys.
#pragma once

#include <fmt/format.h>

#include <cmath>
#include <cstdint>
#include <optional>
#include <string_view>

#include "print.h"
#include "text.h"

namespace cli {

// Writes what it is told, in that order, and puts the commas between. Ticks are strings, for they need 64
// bits.
class JsonWriter {
 public:
  explicit JsonWriter(fmt::memory_buffer& out) : out_(out) {}

  JsonWriter& Key(std::string_view key) {
    Separate();
    Print(out_, "\"{}\":", key);
    separator_ = "";
    return *this;
  }
  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }
  // At the end of all.
  void EndText() { out_.push_back('\n'); }
  // Where the array of rows is the last of the object around all.
  void EndRows() {
    EndArray();
    EndObject();
    EndText();
  }
  // In an array: an object on a line of its own.
  void BeginRow() {
    Separate();
    out_.push_back('\n');
    separator_ = "";
    Open('{');
  }

  void Text(std::string_view bytes) { Raw(JsonString(bytes)); }
  void TextOrNull(std::string_view bytes) { bytes.empty() ? Null() : Text(bytes); }
  void Ticks(std::uint64_t ticks) { Raw(fmt::format("\"{}\"", ticks)); }
  void Count(std::uint64_t count) { Raw(fmt::format_int(count).str()); }
  void Bool(bool value) { Raw(value ? "true" : "false"); }
  void Null() { Raw("null"); }
  // As many digits as tell it from every other number.
  void Number(double value) { std::isfinite(value) ? Raw(fmt::format("{}", value)) : Null(); }
  void Number(const std::optional<double>& value) { value ? Number(*value) : Null(); }
  // What is JSON already.
  void Raw(std::string_view json) {
    Separate();
    out_.append(json);
  }

 private:
  void Separate() {
    out_.append(separator_);
    separator_ = ",";
  }
  void Open(char bracket) {
    Separate();
    out_.push_back(bracket);
    separator_ = "";
  }
  void Close(char bracket) {
    out_.push_back(bracket);
    separator_ = ",";
  }

  fmt::memory_buffer& out_;
  std::string_view separator_ = "";
};

}  // namespace cli
