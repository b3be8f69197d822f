// Finds the name that was probably meant by a mistyped one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

// Insertions, deletions, replacements and swaps of neighbours that turn one word into the other; letters of
// either case are the same.
std::size_t EditDistance(std::string_view a, std::string_view b);

// "; did you mean 'x'?" with the nearest of the names, or nothing when none is near.
std::string Suggestion(std::string_view word, const std::vector<std::string>& names);

// "a, b or c".
std::string Listed(const std::vector<std::string>& parts, const char* lastWord);

// "'a', 'b' or 'c'".
std::string Alternatives(const std::vector<std::string>& names);

}  // namespace cli
