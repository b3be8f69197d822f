// What may be shown to a user: checks that share nothing with the command's own.
#pragma once

#include <nlohmann/json.hpp>
#include <string_view>

#include "check.h"

namespace fuzz {

inline bool IsUtf8(std::string_view bytes) {
  try {
    nlohmann::json(bytes).dump();
    return true;
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

// Nothing that steers a terminal: no control characters of either set, no broken UTF-8.
inline void RequireSafe(std::string_view text, std::string_view allowed = {}) {
  Require(IsUtf8(text), "what is shown is UTF-8");
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    Require((c >= 0x20 && c != 0x7F) || allowed.find(text[i]) != std::string_view::npos,
            "what is shown holds no control character");
    const bool upperSet = c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    Require(!upperSet, "what is shown holds no control character of the upper set");
  }
}

}  // namespace fuzz
