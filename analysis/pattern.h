// Shell patterns over names.
#pragma once

#include <string>
#include <string_view>

namespace analysis {

// `*` stands for any bytes, `?` for one, `[a-z]` for one of these, `[!a-z]` for one that is none of these; a
// backslash takes the next byte as it is. The whole name has to match. Time: at most pattern by name.
bool MatchesPattern(std::string_view pattern, std::string_view name);

// The pattern that matches just this name.
std::string PatternOf(std::string_view name);

}  // namespace analysis
