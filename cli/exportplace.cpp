#include "exportplace.h"

#include <filesystem>

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

namespace fs = std::filesystem;
using Kind = exporters::Format::Kind;

constexpr const char* standardOutput = "-";

Failure InTheWay(const std::string& path, const char* why) {
  return Failure("writing " + Quoted(path) + ": " + why);
}

void CheckFree(const std::string& path, const std::string& place, bool isFolder) {
  std::error_code error;
  const fs::file_status found = fs::status(place, error);
  if (isFolder && fs::exists(found) && !(fs::is_directory(found) && fs::is_empty(place, error)))
    throw InTheWay(path, "something is there, and a new folder is to be written");
  if (isFolder || !fs::exists(found)) return;
  if (fs::is_directory(found)) throw InTheWay(path, "it is a folder, and a file is to be written");
  if (!fs::is_regular_file(found)) throw InTheWay(path, "it is not a regular file");
}

}  // namespace

ExportPlace::ExportPlace(const std::string& path, const exporters::Format& format) : path_(path) {
  if (path == standardOutput) {
    if (format.kind == Kind::stream) return;
    throw UsageError("export: '" + std::string(format.name) + "' is not one stream: -o needs a " +
                     (format.kind == Kind::folder ? "folder" : "file"));
  }
  place_ = ResolvedPlace(path);
  const bool isFolder = format.kind == Kind::folder;
  CheckFree(path, place_, isFolder);
  if (isFolder) folder_ = std::make_unique<TempFolder>(FolderOf(place_));
}

std::string ExportPlace::Create(const std::string& name) {
  if (path_ == standardOutput) return path_;
  files_.push_back(folder_ ? TempFile::Named(folder_->Path() + "/" + name)
                           : TempFile::InFolder(FolderOf(place_)));
  return files_.back().Path();
}

void ExportPlace::Commit() {
  if (path_ == standardOutput) return;
  if (folder_) return CommitFolder();
  TempFile& file = files_.front();
  file.Finish(place_);
  file.RenameTo(place_);
  SyncFolder(FolderOf(place_));
}

void ExportPlace::CommitFolder() {
  for (const TempFile& file : files_) file.Finish(place_ + file.Path().substr(file.Path().rfind('/')));
  SyncFolder(folder_->Path());
  if (!folder_->RenameTo(place_)) throw InTheWay(path_, "something came there meanwhile");
  for (TempFile& file : files_) file.Keep();
  SyncFolder(FolderOf(place_));
}

}  // namespace cli
