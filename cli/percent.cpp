// Apart from the rest of args.h: the page's standard library reads no fractions.
#include <charconv>
#include <cmath>

#include "args.h"

namespace cli {

std::optional<double> ParsePercent(std::string_view text) {
  if (!text.ends_with('%')) return std::nullopt;
  text.remove_suffix(text.ends_with(" %") ? 2 : 1);
  double percent = 0;
  const auto [end, error] =
      std::from_chars(text.data(), text.data() + text.size(), percent, std::chars_format::fixed);
  const bool isNumber = error == std::errc() && end == text.data() + text.size() && text[0] != '-';
  return isNumber && std::isfinite(percent) ? std::optional(percent / 100) : std::nullopt;
}

}  // namespace cli
