#include "statestore.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace sim {
namespace {

constexpr const char* firstLine = "simulated controller, state 1";
constexpr size_t mostLoggers = 64;

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

std::string DefaultFolder() {
  if (const std::string runtime = Environment("XDG_RUNTIME_DIR"); !runtime.empty())
    return runtime + "/quor_32";
  const std::string temporary = Environment("TMPDIR");
  return fmt::format("{}/quor_32-{}", temporary.empty() ? "/tmp" : temporary, getuid());
}

// Makes the folder if need be. In a place that others write to as well, it must be ours alone.
bool IsUsable(const std::string& folder) {
  if (folder.empty()) return false;
  mkdir(folder.c_str(), 0700);
  struct stat info {};
  if (lstat(folder.c_str(), &info) != 0) return false;
  return S_ISDIR(info.st_mode) && info.st_uid == getuid() && (info.st_mode & 022) == 0;
}

bool ReadLogger(std::istringstream& line, StartedLogger& logger) {
  if (!(line >> logger.number >> logger.startNs)) return false;
  line.get();
  std::getline(line, logger.trigger);
  return true;
}

bool ReadLine(const std::string& text, RunState& state) {
  std::istringstream line(text);
  std::string key;
  line >> key;
  if (key == "power-on") return static_cast<bool>(line >> state.powerOnNs);
  if (key == "contact") return static_cast<bool>(line >> state.contactNs);
  if (key != "logger" || state.loggers.size() == mostLoggers) return false;
  return ReadLogger(line, state.loggers.emplace_back());
}

std::string Format(const RunState& state) {
  std::string text =
      fmt::format("{}\npower-on {}\ncontact {}\n", firstLine, state.powerOnNs, state.contactNs);
  for (const StartedLogger& logger : state.loggers) {
    text += fmt::format("logger {} {} {}\n", logger.number, logger.startNs, logger.trigger);
  }
  return text;
}

}  // namespace

StateStore StateStore::For(const Scenario& scenario) {
  const char* chosen = std::getenv("QUOR_STATE_DIR");
  const std::string folder = chosen ? chosen : DefaultFolder();
  if (scenario.stepped || !IsUsable(folder)) return {};
  const std::string name = std::filesystem::path(scenario.source).stem().string();
  const uint64_t place = Hash(scenario.source);
  return StateStore(
      fmt::format("{}/{}-{:016x}{:016x}", folder, name.substr(0, 100), place, scenario.contentHash));
}

// The folder is locked, not the file, which every Save() replaces by another.
StateLock::StateLock(const std::string& folder) {
  if (folder.empty()) return;
  fd_ = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  while (fd_ >= 0 && flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
  }
}

StateLock::~StateLock() {
  if (fd_ >= 0) close(fd_);
}

StateLock StateStore::Lock() const { return StateLock(std::filesystem::path(path_).parent_path().string()); }

std::optional<RunState> StateStore::Load() const {
  if (path_.empty()) return std::nullopt;
  std::ifstream file(path_);
  std::string line;
  if (!std::getline(file, line) || line != firstLine) return std::nullopt;
  RunState state;
  while (std::getline(file, line)) {
    if (!ReadLine(line, state)) return std::nullopt;
  }
  return state;
}

void StateStore::Save(const RunState& state) const {
  if (path_.empty()) return;
  const std::string text = Format(state);
  std::string beside = path_ + ".XXXXXX";
  const int descriptor = mkstemp(beside.data());
  if (descriptor < 0) return;
  const bool written = write(descriptor, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const bool closed = close(descriptor) == 0;
  if (written && closed && std::rename(beside.c_str(), path_.c_str()) == 0) return;
  std::remove(beside.c_str());
}

}  // namespace sim
