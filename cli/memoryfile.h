// A file without a place, for the library to read.
#pragma once

#include <string>
#include <string_view>

namespace cli {

class MemoryFile {
 public:
  explicit MemoryFile(std::string_view bytes);  // throws Failure
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;
  ~MemoryFile();

  const std::string& Path() const { return path_; }

 private:
  int fd_;
  std::string path_;
};

}  // namespace cli
