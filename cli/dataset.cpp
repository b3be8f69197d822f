#include "dataset.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <mutex>

#include "failure.h"
#include "fleet/identity.h"
#include "fleet/joinedfile.h"
#include "longwork.h"
#include "tempfile.h"
#include "text.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view extension = ".parquet";
constexpr std::string_view joinedPrefix = "joined-";
constexpr const char* unknownPart = "__HIVE_DEFAULT_PARTITION__";  // engines read it as null

// Of all datasets of the process: temporary files are for one thread.
std::mutex writing;

std::string FolderName(const char* key, const std::string& value) {
  constexpr std::size_t longest = 255;  // of a file system
  std::string name = fmt::format("{}=", key);
  for (const char c : value) {
    const auto byte = static_cast<unsigned char>(c);
    const bool harmless = (byte < 0x80 && std::isalnum(byte)) || c == '-' || c == '_' || c == '.';
    harmless ? void(name += c) : void(name += fmt::format("%{:02X}", byte));
  }
  if (name.size() > longest) throw Failure(Quoted(value) + " is too long for the name of a folder");
  return value.empty() ? name + unknownPart : name;
}

void MakeFolders(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw Failure::System("creating " + Quoted(folder), error.value());
}

}  // namespace

std::string Partition::Folder() const { return DayFolder() + "/" + FolderName("machine", machine); }

std::string Partition::DayFolder() const { return FolderName("day", day); }

bool IsDay(std::string_view text) {
  constexpr std::string_view shape = "0000-00-00";
  if (text.size() != shape.size()) return false;
  for (std::size_t i = 0; i < shape.size(); ++i)
    if (shape[i] == '-' ? text[i] != '-' : !std::isdigit(static_cast<unsigned char>(text[i]))) return false;
  return true;
}

std::string JoinedName(const std::set<std::string>& recordings) {
  fleet::Identity identity;
  for (const std::string& recording : recordings) identity.Add(recording);
  return fmt::format("{}{}{}", joinedPrefix, identity.Text(), extension);
}

std::vector<std::string> NamesIn(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  fs::directory_iterator at(folder, error);
  if (error && error != std::errc::no_such_file_or_directory)
    throw Failure::System("reading " + Quoted(folder), error.value());
  for (; !error && at != fs::directory_iterator(); at.increment(error))
    if (std::string name = at->path().filename().string(); !name.starts_with('.'))
      names.push_back(std::move(name));
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> TablesIn(const std::string& folder) {
  std::vector<std::string> names = NamesIn(folder);
  std::erase_if(names, [](const std::string& name) { return !name.ends_with(extension); });
  return names;
}

Dataset::Dataset(const std::string& path) : path_(path) {
  if (path.empty()) throw UsageError("--output: the name is empty");
  MakeFolders(path);
}

bool Dataset::Has(const Partition& partition, const std::string& identity) {
  constexpr int mostTries = 100;
  const std::lock_guard lock(writing);
  for (int tries = 1;; ++tries) {
    try {
      return IsIn(partition, identity);
    } catch (const Failure&) {  // a joined file that another one replaces just now
      if (tries == mostTries) throw;
    }
  }
}

// A joined file takes the place of others by an exchange of whole folders. If that happens behind the check,
// the temporary file is in the folder that went, renaming it fails, and the check is made again in the new
// one.
bool Dataset::Put(const Partition& partition, const std::string& identity, std::string_view rows) {
  constexpr int mostTries = 100;
  const std::lock_guard lock(writing);
  const std::string folder = path_ + "/" + partition.Folder();
  const std::string place = fmt::format("{}/{}{}", folder, identity, extension);
  for (int tries = 1;; ++tries) {
    std::string beside;
    try {
      MakeFolders(folder);
      TempFile file = TempFile::InFolder(folder);
      beside = file.Path();
      file.Write(rows);
      file.Finish(place);
      if (IsIn(partition, identity)) return false;
      file.RenameTo(place);
      SyncFolder(folder);
      return true;
    } catch (const Failure&) {
      const bool folderWent = beside.empty() ? !fs::exists(folder) : !fs::exists(beside);
      if (!folderWent || tries == mostTries) throw;
    }
  }
}

bool Dataset::IsIn(const Partition& partition, const std::string& identity) {
  struct stat found {};
  const std::string file = fmt::format("{}/{}/{}{}", path_, partition.Folder(), identity, extension);
  if (::stat(file.c_str(), &found) == 0) return true;
  const std::string folder = fmt::format("{}/{}/{}", path_, partition.DayFolder(), joinedFolder);
  for (const std::string& name : TablesIn(folder))
    if (name.starts_with(joinedPrefix) && RecordingsOf(folder, name).contains(identity)) return true;
  return false;
}

// A name stands for one set of recordings, wherever the file lies.
const std::set<std::string>& Dataset::RecordingsOf(const std::string& folder, const std::string& joined) {
  const auto known = joined_.find(joined);
  if (known != joined_.end()) return known->second;
  const std::string path = folder + "/" + joined;
  try {
    return joined_.emplace(joined, fleet::RecordingsIn(ReadWhole(path, [](double) {}))).first->second;
  } catch (const std::runtime_error& error) {
    if (dynamic_cast<const Failure*>(&error)) throw;
    throw Failure("reading " + Quoted(path) + ": " + error.what());
  }
}

}  // namespace cli
