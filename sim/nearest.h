// The name that was probably meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace sim {

// ", did you mean 'NAME'?" for the candidate nearest to `name`; empty when none is near.
std::string Suggestion(std::string_view name, const std::vector<std::string>& candidates);

}  // namespace sim
