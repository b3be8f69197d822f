#include "targetsfile.h"

#include <dlfcn.h>
#include <fmt/format.h>
#include <link.h>
#include <toml++/toml.h>

#include <cstdlib>
#include <filesystem>
#include <optional>
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

bool Names(const toml::table& entry, const std::string& target) {
  const toml::array* const names = entry["names"].as_array();
  if (names == nullptr) throw Mistake{entry.source(), "names: expected a list of names or shell patterns"};
  bool found = false;
  for (const toml::node& name : *names) {
    const auto pattern = name.value<std::string>();
    if (!pattern) throw Mistake{name.source(), "names: expected a text"};
    found = found || analysis::MatchesPattern(*pattern, target);
  }
  return found;
}

TargetNotes NotesIn(const toml::table& entry) {
  const TargetNotes notes{Text(entry, "switches"), Text(entry, "idle")};
  std::string mistake;
  if (!notes.switches.empty() && !analysis::Meanings::Parse(notes.switches, mistake)) {
    throw Mistake{entry.get("switches")->source(), "switches: " + mistake};
  }
  return notes;
}

// All of the file is checked, whatever the target: a mistake shows when it is made.
std::optional<TargetNotes> Search(const toml::table& file, const std::string& target) {
  std::optional<TargetNotes> notes;
  const toml::node* const entries = file.get("target");
  if (entries == nullptr || !entries->is_array_of_tables()) {
    throw Mistake{file.source(), "expected [[target]]"};
  }
  for (const toml::node& node : *entries->as_array()) {
    const toml::table& entry = *node.as_table();
    const TargetNotes found = NotesIn(entry);
    if (Names(entry, target) && !notes) notes = found;
  }
  return notes;
}

std::optional<TargetNotes> SearchFile(const std::string& path, const std::string& target) {
  const auto warn = [&](const toml::source_region& where, std::string_view expected) {
    PrintWarning(fmt::format("{}:{}: {} (the file is passed over)", SafeText(path), where.begin.line,
                             SafeText(expected)));
  };
  std::error_code error;
  if (!fs::exists(path, error)) return std::nullopt;
  try {
    return Search(toml::parse_file(path), target);
  } catch (const Mistake& mistake) {
    warn(mistake.where, mistake.expected);
  } catch (const toml::parse_error& parseError) {
    warn(parseError.source(), parseError.description());
  }
  return std::nullopt;
}

}  // namespace

TargetNotes NotesOn(const std::string& target) {
  for (const std::string& place : Places()) {
    if (const auto notes = SearchFile(place, target)) return *notes;
  }
  return {};
}

}  // namespace cli
