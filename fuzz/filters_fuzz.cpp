// The input is what a user of the command types, and names as a file may hold them: durations, times,
// loggers, and text that has to be made safe to show.
#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "args.h"
#include "check.h"
#include "failure.h"
#include "input.h"
#include "logger.h"
#include "safetext.h"
#include "suggest.h"
#include "text.h"
#include "timeformat.h"

namespace {

using fuzz::IsUtf8;
using fuzz::Require;
using fuzz::RequireSafe;

// ---- Times ----

// In floating point, so that it shares nothing with what it checks.
void CheckDuration(const std::string& text, std::uint64_t rate) {
  const auto duration = cli::ParseDuration(text);
  if (!duration) return;
  std::size_t unitAt = 0;
  const long double number = std::stold(text, &unitAt);
  const std::string unit = text.substr(unitAt);
  const long double seconds = number * (unit == "h"     ? 3600
                                        : unit == "min" ? 60
                                        : unit == "s"   ? 1
                                        : unit == "ms"  ? 1e-3L
                                        : unit == "us"  ? 1e-6L
                                                        : 1e-9L);
  Require(seconds == 0 || std::islower(static_cast<unsigned char>(text.back())),
          "a duration ends in its unit");
  const long double expected = std::min(seconds * static_cast<long double>(rate), 0x1p64L - 1);
  const auto ticks = static_cast<long double>(duration->Ticks(rate));
  Require(std::abs(ticks - expected) <= 1 + expected * 1e-15L, "a duration is as many ticks as it says");
}

// A time typed as it was printed is the same tick again.
void CheckPrintedTime(std::uint64_t rate, std::uint64_t count) {
  constexpr std::uint64_t attosecondRate = 1'000'000'000'000'000'000;
  if (rate == 0) return;
  const std::string printed = cli::TimeFormat(0, rate).Length(count) + "s";
  if (rate > attosecondRate || count / rate >= std::uint64_t{1} << 62) return;
  const auto typed = cli::ParseTimePoint(printed);
  Require(typed && !typed->ticks, "a printed time can be typed");
  fuzz::RequireEqual(printed.c_str(), typed->sinceStart.Ticks(rate), count);
}

void CheckTimes(fuzz::Input& input) {
  const std::uint64_t rate = input.Long() >> input.Below(64);
  const std::uint64_t count = input.Long() >> input.Below(64);
  CheckPrintedTime(rate, count);
  cli::TimeFormat(count, std::max<std::uint64_t>(rate, 1)).Since(input.Long());
  const std::vector<std::uint8_t> rest = input.Rest();
  const std::string text(rest.begin(), rest.end());
  CheckDuration(text, rate);
  const bool digits = !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
  Require(!cli::ParseNumber(text) || digits, "a number is nothing but digits");
  try {
    cli::WaitingTime("--for", text, std::chrono::milliseconds(1));
  } catch (const cli::UsageError&) {
  }
}

// ---- Text ----

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

std::string Unquoted(std::string_view field) {
  if (!field.starts_with('"')) return std::string(field);
  std::string text;
  for (std::size_t i = 1; i + 1 < field.size(); ++i) {
    text += field[i];
    if (field[i] == '"') ++i;
  }
  return text;
}

void CheckText(fuzz::Input& input) {
  const std::vector<std::uint8_t> rest = input.Rest();
  const std::string bytes(rest.begin(), rest.end());
  const std::string safe = cli::SafeText(bytes);
  RequireSafe(safe);
  Require(Unescaped(safe) == bytes, "safe text loses nothing");
  const std::string field = cli::CsvField(bytes);
  RequireSafe(field);
  Require(Unquoted(field) == safe, "a CSV field holds the safe text");
  const std::string json = cli::JsonString(bytes);
  RequireSafe(json);
  const auto parsed = nlohmann::json::parse(json).get<std::string>();
  Require(!IsUtf8(bytes) || parsed == bytes, "a JSON string holds the text");
  Require(cli::DisplayWidth(safe) <= safe.size(), "no text is wider than its bytes");
}

void CheckWords(fuzz::Input& input) {
  const std::string a = input.Text(40);
  const std::string b = input.Text(40);
  const std::size_t distance = cli::EditDistance(a, b);
  Require(distance == cli::EditDistance(b, a), "words are as far from each other both ways");
  Require(distance <= std::max(a.size(), b.size()), "no word is farther than its letters");
  Require(a != b || distance == 0, "a word is near itself");
  RequireSafe(cli::Suggestion(a, {b, "list", "record"}));
}

void CheckLoggers(fuzz::Input& input) {
  const std::string text = input.Text(40);
  const std::string base = cli::WithoutKernelSuffix(text);
  Require(text.starts_with(base), "a suffix is taken off the end");
  const std::string_view suffix = std::string_view(text).substr(base.size());
  Require(suffix.empty() || (suffix.size() >= 2 && suffix[1] == '@'), "only a suffix is taken off");
  try {
    for (const cli::Logger& logger : cli::ParseLoggers({text, "all"}).loggers) {
      RequireSafe(logger.DescribedOn(text));
      cli::StartTarget(text, logger);
    }
  } catch (const cli::UsageError& error) {
    RequireSafe(error.what());
  } catch (const cli::Failure& failure) {
    RequireSafe(failure.what());
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, std::min<std::size_t>(size, 4096));
  switch (input.Below(4)) {
    case 0: CheckTimes(input); break;
    case 1: CheckText(input); break;
    case 2: CheckWords(input); break;
    case 3: CheckLoggers(input); break;
  }
  return 0;
}
