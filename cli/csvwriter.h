// CSV as RFC 4180 has it, field by field.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <optional>
#include <string_view>

#include "text.h"

namespace cli {

class CsvWriter {
 public:
  explicit CsvWriter(fmt::memory_buffer& out) : out_(out) {}

  void Text(std::string_view bytes) { Field(CsvField(bytes)); }
  void Count(std::uint64_t count) { Field(fmt::format_int(count).str()); }
  void Number(double value) { Field(fmt::format("{}", value)); }
  void Number(const std::optional<double>& value) { value ? Number(*value) : Nothing(); }
  void Nothing() { Field({}); }
  void EndRow() {
    out_.append(std::string_view("\r\n"));
    separator_ = "";
  }

 private:
  void Field(std::string_view text) {
    out_.append(separator_);
    out_.append(text);
    separator_ = ",";
  }

  fmt::memory_buffer& out_;
  std::string_view separator_ = "";
};

}  // namespace cli
