#include "terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <string_view>

namespace cli {
namespace {

std::string_view Environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

}  // namespace

bool IsTerminal(int fd) { return ::isatty(fd) == 1 && Environment("TERM") != "dumb"; }

bool WantsColors(int fd) { return IsTerminal(fd) && Environment("NO_COLOR").empty(); }

std::size_t TerminalColumns(int fd) {
  winsize size{};
  return ::ioctl(fd, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

}  // namespace cli
