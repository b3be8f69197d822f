// Where every file is in memory, as in a browser, any place will do.
#include <unistd.h>

#include <cerrno>
#include <cstdlib>

#include "failure.h"
#include "memoryfile.h"

namespace cli {

MemoryFile::MemoryFile(std::string_view bytes) : fd_(-1), path_("/tmp/tasklog-XXXXXX") {
  fd_ = ::mkstemp(path_.data());
  const bool written =
      fd_ >= 0 && ::write(fd_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  const int error = errno;
  if (fd_ >= 0) ::close(fd_);
  if (written) return;
  if (fd_ >= 0) ::unlink(path_.c_str());
  throw Failure::System("joining segments in memory", error);
}

MemoryFile::~MemoryFile() { ::unlink(path_.c_str()); }

}  // namespace cli
