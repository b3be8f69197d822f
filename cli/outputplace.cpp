#include "outputplace.h"

#include <unistd.h>

#include <cerrno>

#include "tempfile.h"
#include "text.h"

namespace cli {

Failure InTheWay(const std::string& path, const char* why) {
  return Failure("writing " + Quoted(path) + ": " + why);
}

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

std::string PlaceOfFile(const std::string& path) {
  if (path.ends_with('/')) throw InTheWay(path, "this names a folder, and a file is to be written");
  const std::string place = ResolvedPlace(path);
  CheckReplaceable(path, place);
  return place;
}

void WriteFile(const std::string& place, std::string_view bytes) {
  TempFile file = TempFile::InFolder(FolderOf(place));
  file.Write(bytes);
  file.Finish(place);
  file.RenameTo(place);
  SyncFolder(FolderOf(place));
}

}  // namespace cli
