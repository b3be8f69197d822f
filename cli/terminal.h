// What the terminal at a file descriptor is capable of.
#pragma once

#include <cstddef>

namespace cli {

// A terminal that understands escape sequences.
bool IsTerminal(int fd);

// A terminal, and the user does not object to colours: NO_COLOR is unset or empty.
bool WantsColors(int fd);

// Its width in columns; 80 when unknown.
std::size_t TerminalColumns(int fd);

}  // namespace cli
