#include "recordingoutput.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <climits>

#include "failure.h"
#include "outputplace.h"
#include "recording.h"
#include "text.h"

namespace cli {
namespace {

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

// Users have JSON files, too, and a file's name decides which one its metadata would replace.
void CheckIsMetadata(const std::string& path, const std::string& place) {
  CheckReplaceable(path, place);
  if (KindAt(path, place) == 0 || IsMetadata(place)) return;
  throw InTheWay(path,
                 "something else than the metadata of a recording is there; remove it or write elsewhere");
}

}  // namespace

RecordingOutput::Item RecordingOutput::NewItem(const std::string& place, const std::string& shownPath) const {
  const std::string name = place.substr(place.rfind('/') + 1);
  return {newFolder_ ? TempFile::Named(newFolder_->Path() + "/" + name) : TempFile::InFolder(FolderOf(place)),
          place, shownPath};
}

RecordingOutput RecordingOutput::File(const std::string& path) {
  RecordingOutput output;
  const std::string place = PlaceOfFile(path);
  output.folder_ = FolderOf(place);
  output.files_.push_back(output.NewItem(place, path));
  const std::string beside = MetadataOfFile(path);
  if (beside.size() - (beside.rfind('/') + 1) > NAME_MAX) return output;
  const std::string besidePlace = ResolvedPlace(beside);
  CheckIsMetadata(beside, besidePlace);
  output.metadata_.emplace(output.NewItem(besidePlace, beside));
  return output;
}

RecordingOutput RecordingOutput::Folder(const std::string& path, const std::vector<std::string>& names) {
  RecordingOutput output;
  output.folder_ = ResolvedPlace(path);
  const mode_t kind = KindAt(path, output.folder_);
  if (kind != 0 && kind != S_IFDIR) {
    throw InTheWay(path, "it is a file, and several loggers need a folder (--merge puts them into one file)");
  }
  if (kind == 0) output.newFolder_ = std::make_unique<TempFolder>(FolderOf(output.folder_));
  const std::string shownFolder = path + (path.ends_with('/') ? "" : "/");
  for (const std::string& name : names) {
    const std::string place = output.folder_ + "/" + name;
    if (kind != 0) CheckReplaceable(shownFolder + name, place);
    output.files_.push_back(output.NewItem(place, shownFolder + name));
  }
  const std::string place = MetadataOfFolder(output.folder_);
  if (kind != 0) CheckIsMetadata(MetadataOfFolder(path), place);
  output.metadata_.emplace(output.NewItem(place, MetadataOfFolder(path)));
  return output;
}

void RecordingOutput::Commit(std::string_view metadata, MetadataComes order) {
  hasMetadata_ = metadata_ && !metadata.empty();
  if (hasMetadata_) metadata_->temporary.Write(metadata);
  if (hasMetadata_) metadata_->temporary.Finish(metadata_->place);
  for (const Item& item : files_) item.temporary.Finish(item.place);
  if (!newFolder_) return MoveIntoPlace(order);
  SyncFolder(newFolder_->Path());
  if (!newFolder_->RenameTo(folder_)) return MoveIntoPlace(order);
  for (Item& item : files_) item.temporary.Keep();
  metadata_->temporary.Keep();
  SyncFolder(FolderOf(folder_));
}

void RecordingOutput::MoveIntoPlace(MetadataComes order) {
  const FolderLock lock(folder_);
  if (metadata_ && !hasMetadata_) ::unlink(metadata_->place.c_str());
  const auto moveMetadata = [&](MetadataComes now) {
    if (hasMetadata_ && order == now) metadata_->temporary.RenameTo(metadata_->place);
  };
  moveMetadata(MetadataComes::first);
  for (Item& item : files_) item.temporary.RenameTo(item.place);
  moveMetadata(MetadataComes::last);
  SyncFolder(folder_);
}

}  // namespace cli
