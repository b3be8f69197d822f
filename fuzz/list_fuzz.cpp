// The input is the arguments of `tasklog list`, or a name as a file may hold it. What is listed is
// counted against the entries that the filters keep in the model; what is said is safe to show.
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "check.h"
#include "commandline.h"
#include "failure.h"
#include "input.h"
#include "memoryfile.h"
#include "support/plainlog.h"
#include "text.h"

namespace {

using fuzz::Require;

bool IsUtf8(std::string_view bytes) {
  try {
    nlohmann::json(bytes).dump();
    return true;
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

// Nothing that steers a terminal: no control characters of either set, no broken UTF-8.
void RequireSafe(std::string_view text, std::string_view allowed = {}) {
  Require(IsUtf8(text), "what is shown is UTF-8");
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    Require((c >= 0x20 && c != 0x7F) || allowed.find(text[i]) != std::string_view::npos,
            "what is shown holds no control character");
    const bool upperSet = c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    Require(!upperSet, "what is shown holds no control character of the upper set");
  }
}

// Standard output, caught in memory.
fuzz::MemoryFile& Output() {
  static fuzz::MemoryFile file;
  return file;
}

const Bytes& ListedFile() {
  static const Bytes file =
      TaskFile({.startTime = 1000, .stopTime = 3'000'000, .tickRate = 1'000'000},
               {{"Idle", 0, 10, {{2, 1, 1000}, {5, 2, 1500}, {2, 1, 501'000}, {3, 0, 3'000'000}}},
                {"a,\"b\"", 5, -1, {{2, 2, 1500}, {0, 2, 1'001'000}, {5, 1, 501'000}, {2, 0, 3'000'000}}},
                {"\x1b[2J\xff", 5, -1, {{0, 3, 2'001'000}, {2, 0, 3'000'000}}},
                {"Idle", 1, 10, {{0, 4, 2'500'000}, {2, 0, 3'000'000}}}},
               std::vector<FileRecord>{
                   {7, 9, 1600, "TP\n1"}, {7, 10, 1'000'000, "\xe2\x80\xae"}, {7, 9, 1'000'001, "x"}},
               std::vector<FileRecord>{{8, 0, 2'000'000, "=1+1"}, {8, 0, 2'999'999, "STKO"}});
  return file;
}

struct Listing {
  int exit;  // -1: refused
  std::string text;
};

Listing RunList(std::vector<std::string> arguments) {
  Require(ftruncate(Output().Descriptor(), 0) == 0, "the caught output can be cleared");
  lseek(STDOUT_FILENO, 0, SEEK_SET);
  arguments.insert(arguments.begin(), "list");
  try {
    const int status = cli::RunCommandLine(arguments);
    const Bytes bytes = Output().Content();
    return {status, std::string(bytes.begin(), bytes.end())};
  } catch (const cli::UsageError& error) {
    RequireSafe(error.what());
  } catch (const cli::Failure& failure) {
    RequireSafe(failure.what());
  }
  return {-1, ""};
}

// What the typed filters keep, worked out from the model.
struct Filters {
  std::uint64_t from = 0;
  std::uint64_t to = UINT64_MAX;
  std::uint64_t types = 0;
  std::string task;
  std::uint64_t limit = UINT64_MAX;

  bool Keeps(const plain::Entry& entry) const {
    const auto isTask = [this](const plain::Category* category) {
      return category && category->kind == plain::task && category->name == task;
    };
    if (entry.timestamp < from || entry.timestamp > to) return false;
    if (types != 0 && (types >> entry.type & 1) == 0) return false;
    return task.empty() || isTask(entry.slots[0]) || isTask(entry.slots[1]);
  }
};

// A time with a unit, as it may be typed, and the ticks that it means in the file above; or ticks alone.
std::uint64_t DecodeBound(fuzz::Input& input, std::string& typed) {
  const struct {
    const char* typed;
    std::uint64_t ticks;
  } times[] = {{"0us", 1000},           {"0.5ms", 1500},    {"1.000001s", 1'001'001}, {"0.0000005s", 1001},
               {"2.0min", 120'001'000}, {"500ms", 501'000}, {"1s", 1'001'000},        {"1h", 3'600'001'000}};
  if (input.Rarely(2)) {
    const auto& time = input.Pick(times);
    typed = time.typed;
    return time.ticks;
  }
  const std::uint64_t tick = input.Word();
  typed = std::to_string(tick);
  return tick;
}

Filters DecodeFilters(fuzz::Input& input, std::vector<std::string>& arguments) {
  Filters filters;
  const auto add = [&](const char* option, const std::string& value) {
    arguments.insert(arguments.end(), {option, value});
  };
  std::string typed;
  if (input.Rarely(2)) {
    filters.from = DecodeBound(input, typed);
    add("--from", typed);
  }
  if (input.Rarely(2)) {
    filters.to = DecodeBound(input, typed);
    add("--to", typed);
  }
  if (input.Rarely(2)) {
    const char* const names[] = {"Idle", "a,\"b\"", "\x1b[2J\xff"};
    add("--task", filters.task = input.Pick(names));
  }
  const struct {
    const char* name;
    std::uint64_t mask;
  } types[] = {{"switch", 0x3B}, {"event", 0x04}, {"testpoint", 0x40}, {"issue", 0x80}};
  for (std::uint32_t count = input.Below(3); count > 0; --count) {
    const auto& type = input.Pick(types);
    filters.types |= type.mask;
    add("--type", type.name);
  }
  if (input.Rarely(4)) add("--limit", std::to_string(filters.limit = input.Below(12)));
  return filters;
}

std::size_t RowCount(const std::string& format, const std::string& text) {
  if (format == "json") {
    RequireSafe(text, "\n");
    return nlohmann::json::parse(text).size();
  }
  RequireSafe(text, format == "csv" ? "\r\n" : "\n");
  return static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) - 1;
}

void CheckList(fuzz::Input& input) {
  const fuzz::MemoryFile file(ListedFile());
  plain::Log model;
  model.AppendFromFile(file.Path());
  const char* const formats[] = {"text", "csv", "json"};
  const std::string format = input.Pick(formats);
  std::vector<std::string> arguments = {file.Path(), "--format", format};
  if (input.Rarely(2)) arguments.emplace_back("--ticks");
  const Filters filters = DecodeFilters(input, arguments);

  const Listing listing = RunList(arguments);
  Require((listing.exit == -1) == (filters.from > filters.to), "only bounds the wrong way round are refused");
  if (listing.exit == -1) return;
  std::uint64_t expected = 0;
  for (const plain::Entry& entry : model.entries) expected += filters.Keeps(entry) ? 1 : 0;
  fuzz::RequireEqual("rows listed", std::uint64_t{RowCount(format, listing.text)},
                     std::min(expected, filters.limit));
}

// Whatever else may be typed behind `list`.
void CheckArguments(fuzz::Input& input) {
  const fuzz::MemoryFile file(ListedFile());
  std::vector<std::string> arguments = {file.Path()};
  for (std::uint32_t count = input.Below(6); count > 0; --count) {
    const char* const options[] = {"--from", "--to", "--limit", "--task", "--type", "--format", "--ticks"};
    if (input.Rarely(2)) arguments.emplace_back(input.Pick(options));
    arguments.push_back(input.Text(24));
    // Arguments end at a NUL.
    arguments.back().resize(std::min(arguments.back().size(), arguments.back().find('\0')));
  }
  RunList(arguments);
}

std::string Unescaped(std::string_view safe) {
  std::string bytes;
  for (std::size_t i = 0; i < safe.size(); ++i) {
    if (safe[i] != '\\') {
      bytes += safe[i];
    } else if (safe[++i] == '\\') {
      bytes += '\\';
    } else {
      bytes += static_cast<char>(std::stoi(std::string(safe.substr(i + 1, 2)), nullptr, 16));
      i += 2;
    }
  }
  return bytes;
}

void CheckText(fuzz::Input& input) {
  const std::string bytes = input.Rest();
  const std::string safe = cli::SafeText(bytes);
  RequireSafe(safe);
  Require(Unescaped(safe) == bytes, "safe text loses nothing");
  RequireSafe(cli::CsvField(bytes));
  const std::string json = cli::JsonString(bytes);
  RequireSafe(json);
  const auto parsed = nlohmann::json::parse(json).get<std::string>();
  Require(!IsUtf8(bytes) || parsed == bytes, "a JSON string holds the text");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Require(dup2(Output().Descriptor(), STDOUT_FILENO) == STDOUT_FILENO, "standard output can be caught");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, std::min<std::size_t>(size, 4096));
  switch (input.Below(4)) {
    case 0: CheckList(input); break;
    case 1: CheckArguments(input); break;
    default: CheckText(input);
  }
  return 0;
}
