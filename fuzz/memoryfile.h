// A file that exists in memory alone, under a path that everybody can open: thousands a second are no burden.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <string>

#include "check.h"
#include "support/taskfile.h"

namespace fuzz {

class MemoryFile {
 public:
  explicit MemoryFile(const Bytes& content = {})
      : descriptor_(memfd_create("tasklog", MFD_CLOEXEC)),
        path_("/proc/self/fd/" + std::to_string(descriptor_)) {
    const ssize_t written = write(descriptor_, content.data(), content.size());
    Require(written == static_cast<ssize_t>(content.size()), "a file in memory can be written");
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const char* Path() const { return path_.c_str(); }
  int Descriptor() const { return descriptor_; }
  Bytes Content() const {
    Bytes content(static_cast<std::size_t>(lseek(descriptor_, 0, SEEK_END)));
    const ssize_t got = pread(descriptor_, content.data(), content.size(), 0);
    Require(got == static_cast<ssize_t>(content.size()), "a file in memory can be read");
    return content;
  }

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace fuzz
