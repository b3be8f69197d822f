#include "progressbar.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "terminal.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::string_view clearLine = "\r\x1b[K";

void WriteToStderr(std::string_view text) {
  // A bar that cannot be drawn is no reason to stop.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

std::string ProgressLine(const std::string& label, int percent, std::size_t columns, bool colors) {
  constexpr std::size_t widest = 40;
  constexpr std::size_t around = 9;                           // " [", "]", " 100 %"
  const std::size_t used = DisplayWidth(label) + around + 1;  // a full line would wrap
  if (used + 4 > columns) return fmt::format("{:3} %", percent);
  const std::size_t width = std::min(widest, columns - used);
  const std::size_t filled = width * static_cast<std::size_t>(percent) / 100;
  return fmt::format("{} [{}{:#<{}}{}{:-<{}}] {:3} %", label, colors ? "\x1b[32m" : "", "", filled,
                     colors ? "\x1b[0m" : "", "", width - filled, percent);
}

ProgressBar::ProgressBar(std::string label)
    : label_(std::move(label)), enabled_(IsTerminal(STDERR_FILENO)), colors_(WantsColors(STDERR_FILENO)) {}

void ProgressBar::Show(double fraction) {
  const int percent = static_cast<int>(std::clamp(fraction, 0.0, 1.0) * 100);
  if (!enabled_ || percent == shownPercent_) return;
  shownPercent_ = percent;
  WriteToStderr(std::string(clearLine) +
                ProgressLine(label_, percent, TerminalColumns(STDERR_FILENO), colors_));
}

void ProgressBar::Clear() {
  if (shownPercent_ < 0) return;
  WriteToStderr(clearLine);
  shownPercent_ = -1;
}

}  // namespace cli
