#include "outputfile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace exporters {

OutputFile::OutputFile(const std::string& path)
    : path_(path), fd_(path == "-" ? STDOUT_FILENO : ::open(path.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC)) {
  if (fd_ < 0) throw std::system_error(errno, std::generic_category(), path);
}

OutputFile::~OutputFile() {
  if (fd_ != STDOUT_FILENO) ::close(fd_);
}

void OutputFile::Flush() {
  const char* next = block_.data();
  std::size_t left = block_.size();
  while (left > 0) {
    const ssize_t written = ::write(fd_, next, left);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw std::system_error(errno, std::generic_category(), path_);
    next += written;
    left -= static_cast<std::size_t>(written);
  }
  block_.clear();
}

}  // namespace exporters
