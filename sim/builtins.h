// The scenarios that need no file: a target of their name meets them.
#pragma once

#include <string>
#include <vector>

namespace sim {

struct Builtin {
  std::string name;
  std::string text;  // TOML, as in docs/scenarios.md
};

const std::vector<Builtin>& Builtins();

}  // namespace sim
