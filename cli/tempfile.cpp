#include "tempfile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <utility>

#include "failure.h"
#include "signals.h"
#include "text.h"

namespace cli {
namespace {

// Short, whatever the name of the result: that may be as long as the file system allows.
constexpr const char* temporaryName = "/.tasklog-XXXXXX";

// There is no other way to read it. The command runs one thread.
mode_t Umask() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return mask;
}

Failure WritingFailed(const std::string& path, int errorNumber) {
  return Failure::System("writing " + Quoted(path), errorNumber);
}

}  // namespace

std::string ResolvedPlace(const std::string& path) {
  constexpr int mostLinks = 40;
  std::filesystem::path place(path);
  std::error_code error;
  for (int links = 0; std::filesystem::is_symlink(place, error); ++links) {
    if (links == mostLinks) throw WritingFailed(path, ELOOP);
    const auto next = std::filesystem::read_symlink(place, error);
    if (error) throw WritingFailed(path, error.value());
    place = next.is_absolute() ? next : place.parent_path() / next;
  }
  std::string text = place.string();
  while (text.size() > 1 && text.ends_with('/')) text.pop_back();
  return text;
}

std::string FolderOf(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

TempFile::TempFile(const std::string& path, int fd) : path_(std::make_unique<std::string>(path)), fd_(fd) {
  MarkUnfinished(path_->c_str());
}

TempFile::TempFile(TempFile&& other) noexcept
    : path_(std::move(other.path_)), fd_(std::exchange(other.fd_, -1)) {}

TempFile TempFile::InFolder(const std::string& folder) {
  std::string path = folder + temporaryName;
  const int fd = ::mkostemp(path.data(), O_CLOEXEC);
  if (fd < 0) throw Failure::System("creating a file in " + Quoted(folder), errno);
  return TempFile(path, fd);
}

TempFile TempFile::Named(const std::string& path) {
  constexpr mode_t ownerOnly = 0600;
  const int fd = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnly);
  if (fd < 0) throw WritingFailed(path, errno);
  return TempFile(path, fd);
}

TempFile::~TempFile() {
  if (path_) {
    ::unlink(path_->c_str());
    UnmarkUnfinished(path_->c_str());
  }
  if (fd_ >= 0) ::close(fd_);
}

void TempFile::TakePermissionsFor(const std::string& place) const {
  constexpr mode_t anyNewFile = 0666;
  constexpr mode_t permissionBits = 0777;
  struct stat existing {};
  const bool replaces = ::stat(place.c_str(), &existing) == 0;
  const mode_t mode = replaces ? existing.st_mode & permissionBits : anyNewFile & ~Umask();
  if (::fchmod(fd_, mode) != 0) throw WritingFailed(place, errno);
}

void TempFile::Write(std::string_view bytes) const {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd_, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw WritingFailed(*path_, errno);
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

void TempFile::Finish(const std::string& place) const {
  TakePermissionsFor(place);
  // Some file systems cannot (EINVAL); that says nothing about the content.
  if (::fsync(fd_) != 0 && errno != EINVAL) throw WritingFailed(*path_, errno);
}

void TempFile::RenameTo(const std::string& place) {
  if (::rename(path_->c_str(), place.c_str()) != 0) throw WritingFailed(place, errno);
  Keep();
}

void TempFile::Keep() {
  UnmarkUnfinished(path_->c_str());
  path_.reset();
}

TempFolder::TempFolder(const std::string& parent) : path_(parent + temporaryName) {
  if (::mkdtemp(path_.data()) == nullptr) {
    throw Failure::System("creating a folder in " + Quoted(parent), errno);
  }
  MarkUnfinished(path_.c_str());
  constexpr mode_t anyNewFolder = 0777;
  ::chmod(path_.c_str(), anyNewFolder & ~Umask());
}

TempFolder::~TempFolder() {
  if (!inPlace_) ::rmdir(path_.c_str());
  UnmarkUnfinished(path_.c_str());
}

bool TempFolder::RenameTo(const std::string& place) {
  if (::rename(path_.c_str(), place.c_str()) == 0) {
    inPlace_ = true;
    return true;
  }
  if (errno == ENOTEMPTY || errno == EEXIST) return false;
  throw WritingFailed(place, errno);
}

void SyncFolder(const std::string& folder) {
  const int fd = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (fd < 0) return;
  ::fsync(fd);
  ::close(fd);
}

}  // namespace cli
