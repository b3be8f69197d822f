// What targets.toml says of the built-in scenarios.
#include <gtest/gtest.h>
#include <toml++/toml.h>

#include "builtins.h"
#include "parser.h"

namespace sim {
namespace {

// The entry that has this very name; null for none.
const toml::table* EntryOf(const toml::table& file, const std::string& name) {
  for (const toml::node& entry : *file["target"].as_array())
    for (const toml::node& known : *(*entry.as_table())["names"].as_array())
      if (known.value<std::string>() == name) return entry.as_table();
  return nullptr;
}

TEST(TargetsFile, KnowsEveryScenarioAndItsKernels) {
  const toml::table file = toml::parse_file(SIM_TARGETS);
  for (const Builtin& builtin : Builtins()) {
    SCOPED_TRACE(builtin.name);
    const toml::table* const entry = EntryOf(file, builtin.name);
    ASSERT_NE(entry, nullptr);
    std::int64_t kernels = 0;
    for (const ProcessorSpec& processor : ParseScenario(builtin.text, builtin.name).processors)
      if (processor.number > 0) ++kernels;
    EXPECT_EQ((*entry)["kernels"].value_or(std::int64_t{0}), kernels);
  }
}

}  // namespace
}  // namespace sim
