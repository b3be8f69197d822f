#include "targetsfile.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <link.h>
#include <toml++/toml.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

#include "analysis/meanings.h"
#include "analysis/pattern.h"
#include "failure.h"
#include "text.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* fileName = "targets.toml";

// The folder from which the target-access library was loaded; empty when that cannot be told.
fs::path LibraryFolder() {
  void* const library = ::dlopen("libquor_32.so.0", RTLD_LAZY | RTLD_NOLOAD);
  if (library == nullptr) return {};
  link_map* map = nullptr;
  const bool found = ::dlinfo(library, RTLD_DI_LINKMAP, &map) == 0;
  const fs::path folder = found ? fs::path(map->l_name).parent_path() : fs::path();
  ::dlclose(library);
  return folder;
}

fs::path UserFolder() {
  const char* const config = std::getenv("XDG_CONFIG_HOME");
  if (config != nullptr && *config != '\0') return config;
  const char* const home = std::getenv("HOME");
  return home != nullptr && *home != '\0' ? fs::path(home) / ".config" : fs::path();
}

std::vector<std::string> Places() {
  std::vector<std::string> places;
  if (const fs::path user = UserFolder(); !user.empty()) places.push_back(user / "tasklog" / fileName);
  places.push_back(fs::path("/etc/tasklog") / fileName);
  if (const fs::path library = LibraryFolder(); !library.empty()) places.push_back(library / fileName);
  return places;
}

struct Mistake {
  toml::source_region where;
  std::string expected;
};

std::string Text(const toml::table& table, const char* key) {
  const toml::node* const node = table.get(key);
  if (node == nullptr) return {};
  if (const auto text = node->value<std::string>()) return *text;
  throw Mistake{node->source(), fmt::format("{}: expected a text", key)};
}

std::vector<std::string> NamesOf(const toml::table& entry) {
  const toml::array* const names = entry["names"].as_array();
  if (names == nullptr) throw Mistake{entry.source(), "names: expected a list of names or shell patterns"};
  std::vector<std::string> found;
  for (const toml::node& name : *names) {
    const auto pattern = name.value<std::string>();
    if (!pattern) throw Mistake{name.source(), "names: expected a text"};
    found.push_back(*pattern);
  }
  return found;
}

std::int64_t Number(const toml::table& table, const char* key) {
  const toml::node* const node = table.get(key);
  if (node == nullptr) return 0;
  if (const auto number = node->value_exact<std::int64_t>(); number && *number >= 0) return *number;
  throw Mistake{node->source(), fmt::format("{}: expected a number", key)};
}

TargetNotes NotesIn(const toml::table& entry) {
  const TargetNotes notes{Text(entry, "switches"), Text(entry, "idle"), Number(entry, "kernels")};
  std::string mistake;
  if (!notes.switches.empty() && !analysis::Meanings::Parse(notes.switches, mistake)) {
    throw Mistake{entry.get("switches")->source(), "switches: " + mistake};
  }
  return notes;
}

struct Target {
  std::vector<std::string> names;  // or patterns
  TargetNotes notes;
};

// All of the file is checked, whatever is looked for: a mistake shows when it is made.
std::vector<Target> TargetsIn(const toml::table& file) {
  const toml::node* const entries = file.get("target");
  if (entries == nullptr || !entries->is_array_of_tables()) {
    throw Mistake{file.source(), "expected [[target]]"};
  }
  std::vector<Target> targets;
  for (const toml::node& node : *entries->as_array()) {
    const toml::table& entry = *node.as_table();
    const TargetNotes notes = NotesIn(entry);
    targets.push_back({NamesOf(entry), notes});
  }
  return targets;
}

// Of a file that is not there, or passed over, none.
std::vector<Target> ReadTargets(const std::string& path) {
  const auto warn = [&](const toml::source_region& where, std::string_view expected) {
    PrintWarning(fmt::format("{}:{}: {} (the file is passed over)", SafeText(path), where.begin.line,
                             SafeText(expected)));
  };
  std::error_code error;
  if (!fs::exists(path, error)) return {};
  try {
    return TargetsIn(toml::parse_file(path));
  } catch (const Mistake& mistake) {
    warn(mistake.where, mistake.expected);
  } catch (const toml::parse_error& parseError) {
    warn(parseError.source(), parseError.description());
  }
  return {};
}

}  // namespace

TargetNotes NotesOn(const std::string& target) {
  const auto isIt = [&](const std::string& name) { return analysis::MatchesPattern(name, target); };
  for (const std::string& place : Places())
    for (const Target& known : ReadTargets(place))
      if (std::any_of(known.names.begin(), known.names.end(), isIt)) return known.notes;
  return {};
}

std::vector<std::string> TargetNames() {
  std::vector<std::string> names;
  for (const std::string& place : Places())
    for (const Target& target : ReadTargets(place))
      for (const std::string& name : target.names)
        if (name.find_first_of("*?[\\") == std::string::npos) names.push_back(name);
  return names;
}

}  // namespace cli
