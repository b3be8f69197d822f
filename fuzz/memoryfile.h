// A file that exists in memory alone, under a path that everybody can open: thousands a second are no burden.
#pragma once

#include <string>

#include "support/taskfile.h"

namespace fuzz {

class MemoryFile {
 public:
  MemoryFile();  // empty
  explicit MemoryFile(const Bytes& content);
  ~MemoryFile();
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const char* Path() const { return path_.c_str(); }
  int Descriptor() const { return descriptor_; }
  Bytes Content() const;

 private:
  int descriptor_;
  std::string path_;
};

}  // namespace fuzz
