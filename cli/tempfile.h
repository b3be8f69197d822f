// Files and folders that are written beside their place and then renamed, so that whoever looks there sees
// the old or the complete new one. What is not renamed is removed.
#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace cli {

// The place that a path stands for: symbolic links followed (also one that leads nowhere), no trailing
// slashes. Throws Failure when links run in a circle.
std::string ResolvedPlace(const std::string& path);

// The folder that holds `path`.
std::string FolderOf(const std::string& path);

// A new, empty file that nobody else uses.
class TempFile {
 public:
  // Creates it in `folder`, under a name of its own.
  static TempFile InFolder(const std::string& folder);
  // Creates `path`, which must not exist.
  static TempFile Named(const std::string& path);

  TempFile(TempFile&& other) noexcept;
  TempFile& operator=(TempFile&&) = delete;
  ~TempFile();

  const std::string& Path() const { return *path_; }

  void Write(std::string_view bytes) const;

  // Gives it the permissions of the file at `place` if there is one, else those of any new file. Returns once
  // the content is on the disk; the last point at which a full disk can show.
  void Finish(const std::string& place) const;

  // Puts it in its place, also over a file there.
  void RenameTo(const std::string& place);

  // Leaves it where it is: its folder went into its place with it.
  void Keep();

 private:
  TempFile(const std::string& path, int fd);
  void TakePermissionsFor(const std::string& place) const;

  // On the heap, so that its text stays in place; null once the file is in its place or moved from.
  std::unique_ptr<std::string> path_;
  int fd_;
};

// A new folder that nobody else uses. Removed when empty.
class TempFolder {
 public:
  explicit TempFolder(const std::string& parent);
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;
  ~TempFolder();

  const std::string& Path() const { return path_; }

  // Puts it in its place; false when a folder that is not empty has come there meanwhile.
  bool RenameTo(const std::string& place);

 private:
  std::string path_;
  bool inPlace_ = false;
};

// Makes renames in a folder last, as far as the file system cares.
void SyncFolder(const std::string& folder);

}  // namespace cli
