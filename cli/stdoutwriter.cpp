#include "stdoutwriter.h"

#include <unistd.h>

#include <cerrno>

#include "failure.h"

namespace cli {

void StdoutWriter::Flush() {
  const char* next = block_.data();
  std::size_t left = block_.size();
  while (left > 0) {
    const ssize_t written = ::write(STDOUT_FILENO, next, left);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0 && errno == EPIPE) throw ClosedPipe();
    if (written < 0) throw Failure::System("writing to standard output", errno);
    next += written;
    left -= static_cast<std::size_t>(written);
  }
  block_.clear();
}

}  // namespace cli
