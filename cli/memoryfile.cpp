#include "memoryfile.h"

#include <fmt/format.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "failure.h"

namespace cli {

MemoryFile::MemoryFile(std::string_view bytes)
    : fd_(::memfd_create("tasklog", MFD_CLOEXEC)), path_(fmt::format("/proc/self/fd/{}", fd_)) {
  while (fd_ >= 0 && !bytes.empty()) {
    const ssize_t written = ::write(fd_, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) {
      const int error = errno;
      ::close(fd_);
      throw Failure::System("joining segments in memory", error);
    }
    bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
  }
  if (fd_ < 0) throw Failure::System("joining segments in memory", errno);
}

MemoryFile::~MemoryFile() { ::close(fd_); }

}  // namespace cli
