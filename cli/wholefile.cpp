#include "wholefile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

const std::string& CheckedPath(const std::string& path, const std::vector<std::string>& inputs) {
  if (path.empty()) throw UsageError("--output: the name is empty");
  for (const std::string& input : inputs) {
    std::error_code error;
    if (std::filesystem::equivalent(path, input, error))
      throw Failure("writing " + Quoted(path) + ": it is an input, and inputs stay as they are");
  }
  return path;
}

}  // namespace

WholeFile::WholeFile(const std::string& path, const std::vector<std::string>& inputs)
    : output_(RecordingOutput::File(CheckedPath(path, inputs))),
      fd_(::open(output_.SavePath(0).c_str(), O_WRONLY | O_CLOEXEC)) {
  if (fd_ < 0) throw Failure::System("writing " + Quoted(path), errno);
}

WholeFile::~WholeFile() { ::close(fd_); }

taskfile::Sink WholeFile::Sink() {
  return [this](std::string_view bytes) {
    while (!bytes.empty()) {
      const ssize_t written = ::write(fd_, bytes.data(), std::min<std::size_t>(bytes.size(), 64 << 20));
      if (written < 0 && errno != EINTR)
        throw Failure::System("writing " + Quoted(output_.ShownPath(0)), errno);
      bytes.remove_prefix(static_cast<std::size_t>(std::max<ssize_t>(written, 0)));
    }
  };
}

void WholeFile::Commit(const std::optional<Metadata>& metadata) {
  output_.Commit(metadata ? ToJson(*metadata) : "", RecordingOutput::MetadataComes::last);
}

}  // namespace cli
