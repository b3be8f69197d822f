// Where a recording goes: one file, or a folder with one file for each logger; its metadata beside them.
// Complete or not at all.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
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
  const std::string& SavePath(std::size_t index) const { return files_[index].temporary.Path(); }

  // What the file will be called, in the user's words.
  const std::string& ShownPath(std::size_t index) const { return files_[index].shownPath; }

  // Puts all files in their places. Without metadata, that of former files goes. Metadata that comes first
  // names files that are not there yet, metadata that comes last lacks files that are. Throws Failure.
  enum class MetadataComes { first, last };
  void Commit(std::string_view metadata, MetadataComes order);

 private:
  struct Item {
    TempFile temporary;
    std::string place;
    std::string shownPath;
  };

  RecordingOutput() = default;
  Item NewItem(const std::string& place, const std::string& shownPath) const;
  void MoveIntoPlace(MetadataComes order);

  std::string folder_;                     // holds the files
  std::unique_ptr<TempFolder> newFolder_;  // before files_: goes when they are gone
  std::vector<Item> files_;
  std::optional<Item> metadata_;  // empty: there is no place for it
  bool hasMetadata_ = false;
};

}  // namespace cli
