#include "print.h"

namespace exporters {

void PrintValues(fmt::memory_buffer& out, fmt::string_view format, fmt::format_args values) {
  fmt::vformat_to(fmt::appender(out), format, values);
}

}  // namespace exporters
