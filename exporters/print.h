// Formats text into a block. What fmt makes of values is compiled in print.cpp alone, not in each file that
// prints.
#pragma once

#include <fmt/format.h>

namespace exporters {

void PrintValues(fmt::memory_buffer& out, fmt::string_view format, fmt::format_args values);

template <class... Values>
void Print(fmt::memory_buffer& out, fmt::format_string<Values...> format, Values&&... values) {
  PrintValues(out, format, fmt::make_format_args(values...));
}

}  // namespace exporters
