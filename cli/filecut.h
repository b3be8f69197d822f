// A TaskLog file without the records outside a period, byte by byte: docs/file-format.md.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include "metadata.h"

namespace cli {

struct FileCut {
  std::uint64_t from = 0;  // records of these ticks stay, both included
  std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
  // A file behind others: its period begins where theirs does, and what it says of the time before its first
  // record is known from them.
  bool isFirst = true;
  std::uint64_t start = 0;  // unless it is the first
};

// The period that the beginning of a file says; at least `headerBytes` of it. Empty when it is no TaskLog
// file.
inline constexpr std::size_t headerBytes = 42;
Period PeriodOf(std::string_view bytes);

// Throws Failure for bytes that are no TaskLog file; `shownPath` is what messages call it.
std::string CutFile(std::string_view bytes, const FileCut& cut, const std::string& shownPath);

}  // namespace cli
