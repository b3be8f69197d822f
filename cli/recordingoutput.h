// Where a recording goes: one file, or a folder with one file for each logger. Complete or not at all.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tempfile.h"

namespace cli {

// Made before the recording begins, so that a place that cannot be written shows while nothing is lost.
class RecordingOutput {
 public:
  // Each throws Failure when something is in the way.
  static RecordingOutput File(const std::string& path);
  static RecordingOutput Folder(const std::string& path, const std::vector<std::string>& names);

  std::size_t Count() const { return files_.size(); }

  // The unfinished file to save to.
  const std::string& SavePath(std::size_t index) const { return files_[index].Path(); }

  // What the file will be called, in the user's words.
  const std::string& ShownPath(std::size_t index) const { return shownPaths_[index]; }

  // Puts all files in their places. Throws Failure.
  void Commit();

 private:
  RecordingOutput() = default;
  void MoveFilesInto(const std::string& folder);

  std::string place_;                      // the file or the folder
  std::unique_ptr<TempFolder> newFolder_;  // before files_: goes when they are gone
  std::vector<TempFile> files_;
  std::vector<std::string> names_;  // of the files in a folder; empty for a single file
  std::vector<std::string> shownPaths_;
};

}  // namespace cli
