#include "recordingoutput.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

Failure InTheWay(const std::string& path, const char* why) {
  return Failure("writing " + Quoted(path) + ": " + why);
}

// The kind of what is at `place`: 0 for nothing.
mode_t KindAt(const std::string& path, const std::string& place) {
  struct stat found {};
  if (::stat(place.c_str(), &found) == 0) return found.st_mode & S_IFMT;
  if (errno == ENOENT) return 0;
  throw Failure::System("writing " + Quoted(path), errno);
}

// A rename would replace a file that must not be written just as well.
void CheckReplaceable(const std::string& path, const std::string& place) {
  const mode_t kind = KindAt(path, place);
  if (kind == S_IFDIR) throw InTheWay(path, "it is a folder, and a file is to be written");
  if (kind != 0 && kind != S_IFREG) throw InTheWay(path, "it is not a regular file");
  if (kind == S_IFREG && ::access(place.c_str(), W_OK) != 0) {
    throw Failure::System("writing " + Quoted(path), errno);
  }
}

// Holds other recordings into the same folder back while files move in, so that none is mixed of two.
class FolderLock {
 public:
  explicit FolderLock(const std::string& folder)
      : fd_(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
    while (fd_ >= 0 && ::flock(fd_, LOCK_EX) != 0 && errno == EINTR) {
    }
  }
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;
  ~FolderLock() {
    if (fd_ >= 0) ::close(fd_);
  }

 private:
  int fd_;
};

}  // namespace

RecordingOutput RecordingOutput::File(const std::string& path) {
  if (path.ends_with('/')) throw InTheWay(path, "this names a folder, and a file is to be written");
  RecordingOutput output;
  output.place_ = ResolvedPlace(path);
  CheckReplaceable(path, output.place_);
  output.files_.push_back(TempFile::InFolder(FolderOf(output.place_)));
  output.shownPaths_.push_back(path);
  return output;
}

RecordingOutput RecordingOutput::Folder(const std::string& path, const std::vector<std::string>& names) {
  RecordingOutput output;
  output.place_ = ResolvedPlace(path);
  output.names_ = names;
  const mode_t kind = KindAt(path, output.place_);
  if (kind != 0 && kind != S_IFDIR) {
    throw InTheWay(path, "it is a file, and several loggers need a folder (--merge puts them into one file)");
  }
  if (kind == 0) output.newFolder_ = std::make_unique<TempFolder>(FolderOf(output.place_));
  for (const std::string& name : names) {
    const std::string shownPath = path + (path.ends_with('/') ? "" : "/") + name;
    if (kind != 0) CheckReplaceable(shownPath, output.place_ + "/" + name);
    output.files_.push_back(kind != 0 ? TempFile::InFolder(output.place_)
                                      : TempFile::Named(output.newFolder_->Path() + "/" + name));
    output.shownPaths_.push_back(shownPath);
  }
  return output;
}

void RecordingOutput::Commit() {
  for (std::size_t i = 0; i < files_.size(); ++i) {
    files_[i].TakePermissionsFor(names_.empty() ? place_ : place_ + "/" + names_[i]);
    files_[i].Sync();
  }
  if (names_.empty()) {
    files_[0].RenameTo(place_);
  } else if (!newFolder_) {
    MoveFilesInto(place_);
  } else {
    SyncFolder(newFolder_->Path());
    if (newFolder_->RenameTo(place_)) {
      for (TempFile& file : files_) file.Keep();
    } else {
      MoveFilesInto(place_);
    }
  }
  SyncFolder(FolderOf(place_));
}

void RecordingOutput::MoveFilesInto(const std::string& folder) {
  const FolderLock lock(folder);
  for (std::size_t i = 0; i < files_.size(); ++i) files_[i].RenameTo(folder + "/" + names_[i]);
  SyncFolder(folder);
}

}  // namespace cli
