#include "failure.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstring>

#include "text.h"

namespace cli {
namespace {

std::string Line(std::string_view doing, std::string_view text, std::string_view hint) {
  return hint.empty() ? fmt::format("{}: {}", doing, text) : fmt::format("{}: {} ({})", doing, text, hint);
}

// In one write, so that lines of commands that run side by side do not mix.
void PrintLine(const std::string& line) {
  // Nothing can be done when stderr is gone.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

thread_local WarningCollector* collector = nullptr;

}  // namespace

Failure::Failure(std::string_view doing, tasklog::Status status, std::string_view hint)
    : runtime_error(Line(doing, StatusText(status), hint)), status_(status) {}

Failure Failure::System(std::string_view doing, int errorNumber) {
  return Failure(Line(doing, std::strerror(errorNumber), {}));
}

std::string StatusText(tasklog::Status status) {
  constexpr std::uint32_t ownCodes = 0x40CA;
  const std::string text = SafeText(status.Text());
  if (text.empty()) return fmt::format("status 0x{:08X}", status.Code());
  if (status.Code() >> 16 == ownCodes) return text;
  return fmt::format("{} (status 0x{:08X})", text, status.Code());
}

void PrintError(std::string_view line) { PrintLine(fmt::format("tasklog: {}\n", line)); }

void PrintWarning(std::string_view line) {
  if (collector) {
    collector->lines_.emplace_back(line);
  } else {
    PrintLine(fmt::format("tasklog: warning: {}\n", line));
  }
}

WarningCollector::WarningCollector() { collector = this; }

WarningCollector::~WarningCollector() { collector = nullptr; }

}  // namespace cli
