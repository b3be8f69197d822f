#include "memoryfile.h"

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include "check.h"

namespace fuzz {

MemoryFile::MemoryFile()
    : descriptor_(memfd_create("tasklog", MFD_CLOEXEC)),
      path_("/proc/self/fd/" + std::to_string(descriptor_)) {
  Require(descriptor_ >= 0, "a file in memory can be made");
}

MemoryFile::MemoryFile(const Bytes& content) : MemoryFile() {
  const ssize_t written = write(descriptor_, content.data(), content.size());
  Require(written == static_cast<ssize_t>(content.size()), "a file in memory can be written");
}

MemoryFile::~MemoryFile() { close(descriptor_); }

Bytes MemoryFile::Content() const {
  struct stat info {};
  Require(fstat(descriptor_, &info) == 0, "a file in memory has a size");
  Bytes content(static_cast<std::size_t>(info.st_size));
  const ssize_t got = pread(descriptor_, content.data(), content.size(), 0);
  Require(got == static_cast<ssize_t>(content.size()), "a file in memory can be read");
  return content;
}

}  // namespace fuzz
