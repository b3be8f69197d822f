#include "targets.h"

#include <fmt/format.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <map>
#include <memory>

#include "builtins.h"
#include "nearest.h"
#include "parser.h"
#include "status.h"

namespace sim {
namespace {

namespace fs = std::filesystem;

// The clock runs through the computer's uptime, so it is the same for all processes.
uint64_t MonotonicNs() {
  return static_cast<uint64_t>(
      std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count());
}

// Takes "/@N" or "\@N" off the end of `target`.
Controller::Kernel TakeSuffix(std::string_view& target) {
  const size_t at = target.find_last_not_of("0123456789");
  if (at == std::string_view::npos || at == 0 || target[at] != '@') return std::nullopt;
  if (target[at - 1] != '/' && target[at - 1] != '\\') return std::nullopt;
  const std::string_view digits = target.substr(at + 1);
  target = target.substr(0, at - 1);
  if (digits.empty()) return std::nullopt;
  uint32_t kernel = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), kernel);
  return error == std::errc() ? kernel : UINT32_MAX;  // a number too large is that of no kernel
}

bool IsFile(const std::string& name) {
  std::error_code error;
  return fs::exists(name, error);
}

// Takes "#SEED" off the end of `name`, unless that is how a file is called.
std::optional<uint64_t> TakeSeed(std::string& name) {
  const size_t at = name.rfind('#');
  if (at == std::string::npos || at + 1 == name.size() || IsFile(name)) return std::nullopt;
  uint64_t seed = 0;
  const char* const last = name.data() + name.size();
  const auto [end, error] = std::from_chars(name.data() + at + 1, last, seed);
  if (error != std::errc() || end != last) return std::nullopt;
  name.resize(at);
  return seed;
}

const Builtin* FindBuiltin(std::string_view name) {
  for (const Builtin& builtin : Builtins()) {
    if (builtin.name == name) return &builtin;
  }
  return nullptr;
}

[[noreturn]] void RefuseName(const std::string& name) {
  std::vector<std::string> names;
  std::string list;
  for (const Builtin& builtin : Builtins()) {
    names.push_back(builtin.name);
    list += builtin.name + ", ";
  }
  throw Failure{unknownTarget,
                fmt::format("There is no target '{}'; expected {}or the path of a scenario file{}", name,
                            list, Suggestion(name, names))};
}

[[noreturn]] void RefuseFile(const std::string& path, const char* expected) {
  throw Failure{badScenario, fmt::format("{}: expected {}", path, expected)};
}

// Read to its end whatever size it claims, so that an error on the way is not taken for the end.
std::string ReadScenario(const std::string& path) {
  constexpr size_t largestFile = 4 << 20;
  std::error_code error;
  const auto type = fs::status(path, error).type();
  if (type == fs::file_type::not_found) RefuseName(path);
  if (type != fs::file_type::regular) RefuseFile(path, "a scenario file");
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), std::fclose);
  if (!file) RefuseFile(path, "a file that can be read");
  std::string text(largestFile + 1, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file.get()));
  if (std::ferror(file.get()) != 0) RefuseFile(path, "a file that can be read");
  if (text.size() > largestFile) RefuseFile(path, "a scenario file of at most 4 MB");
  return text;
}

std::shared_ptr<Controller> SwitchOn(Scenario scenario, const std::string& place) {
  scenario.source = place;
  StateStore store = StateStore::For(scenario);
  return std::make_shared<Controller>(std::move(scenario), std::move(store), MonotonicNs);
}

struct Registry {
  std::mutex mutex;
  std::map<std::string, std::shared_ptr<Controller>> controllers;
};

Registry& TheRegistry() {
  static Registry registry;
  return registry;
}

}  // namespace

Connection Connect(std::string_view target) {
  const Controller::Kernel kernel = TakeSuffix(target);
  std::string name(target);
  const auto seed = TakeSeed(name);
  if (name.empty()) RefuseName(name);
  const Builtin* builtin = FindBuiltin(name);
  std::string place = builtin ? name : fs::weakly_canonical(name).string();
  if (seed) place += fmt::format("#{}", *seed);

  const std::lock_guard lock(TheRegistry().mutex);
  auto& controllers = TheRegistry().controllers;
  if (const auto found = controllers.find(place); found != controllers.end()) return {found->second, kernel};
  // Messages name a file as the caller did.
  Scenario scenario = ParseScenario(builtin ? builtin->text : ReadScenario(name), name);
  if (seed) scenario.seed = *seed;
  const auto controller = SwitchOn(std::move(scenario), place);
  controllers.emplace(place, controller);
  return {controller, kernel};
}

}  // namespace sim
