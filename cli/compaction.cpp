#include "compaction.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <stdio.h>
#include <sys/file.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <map>
#include <set>

#include "dataset.h"
#include "failure.h"
#include "fleet/joinedfile.h"
#include "longwork.h"
#include "outputplace.h"
#include "signals.h"
#include "tempfile.h"
#include "text.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr const char* workFolder = "/.joining";
constexpr const char* asideSuffix = ".aside";

std::string Content(const std::string& path) {
  return ReadWhole(path, [](double) {});
}

std::set<std::string> RecordingsIn(const std::string& path) {
  try {
    return fleet::RecordingsIn(Content(path));
  } catch (const Failure&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw Failure("reading " + Quoted(path) + ": " + error.what());
  }
}

void Rename(const std::string& from, const std::string& to) {
  if (::rename(from.c_str(), to.c_str()) != 0) throw Failure::System("renaming " + Quoted(from), errno);
}

void Remove(const std::string& path) {
  std::error_code error;
  fs::remove_all(path, error);
  if (error) throw Failure::System("removing " + Quoted(path), error.value());
}

void MakeFolders(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw Failure::System("creating " + Quoted(folder), error.value());
}

std::vector<std::string> DaysIn(const std::string& folder) {
  std::vector<std::string> days = NamesIn(folder);
  std::erase_if(days, [](const std::string& name) { return !name.starts_with("day="); });
  return days;
}

// "machine=press-7/IDENTITY.parquet": those of one machine follow each other, what was joined comes first.
std::vector<std::string> TablesOfDay(const std::string& folder) {
  std::vector<std::string> tables;
  const auto add = [&](const std::string& machine) {
    for (const std::string& name : TablesIn(folder + "/" + machine)) tables.push_back(machine + "/" + name);
  };
  add(joinedFolder);
  for (const std::string& machine : NamesIn(folder))
    if (machine.starts_with("machine=") && machine != joinedFolder) add(machine);
  return tables;
}

bool HoldsJoinedOnly(const std::string& folder) {
  const std::vector<std::string> machines = NamesIn(folder);
  return std::all_of(machines.begin(), machines.end(), [](const auto& name) { return name == joinedFolder; });
}

// False where the file system cannot.
bool Exchange(const std::string& a, const std::string& b) {
  if (::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0) return true;
  if (errno == EINVAL || errno == ENOSYS) return false;
  throw Failure::System("exchanging " + Quoted(a) + " and " + Quoted(b), errno);
}

}  // namespace

Compaction::Compaction(const std::string& dataset) : dataset_(dataset), work_(dataset + workFolder) {
  if (DaysIn(dataset).empty() && !fs::exists(work_))
    throw Failure(Quoted(dataset) + " is no dataset: it holds no folder day=...");
  MakeFolders(work_);
  lock_ = ::open(work_.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (lock_ < 0) throw Failure::System("opening " + Quoted(work_), errno);
  if (::flock(lock_, LOCK_EX | LOCK_NB) == 0) return;
  const int reason = errno;
  ::close(lock_);
  if (reason == EWOULDBLOCK) throw Failure("another compact is at work on " + Quoted(dataset));
  throw Failure::System("locking " + Quoted(work_), reason);
}

Compaction::~Compaction() { ::close(lock_); }

void Compaction::Run(const std::function<void(double)>& progress,
                     const std::function<void(const std::string&)>& complain) {
  const std::set<std::string> unfinished = FinishLastOne(complain);
  std::vector<std::string> days = DaysIn(dataset_);
  std::erase_if(days, [&](const std::string& day) { return unfinished.contains(day); });
  for (std::size_t i = 0; i < days.size() && StopRequests() == 0; ++i) {
    const std::vector<std::string> files = TablesOfDay(dataset_ + "/" + days[i]);
    before_ += files.size();
    after_ += files.size();
    ++days_;
    try {
      if (files.size() > 1 && !files.back().starts_with(joinedFolder)) Join(days[i], files);
    } catch (const Failure& failure) {
      complain(failure.what());
    }
    progress(static_cast<double>(i + 1) / static_cast<double>(days.size()));
  }
}

// One that was killed left folders: of files that were joined already, or of joined ones that were not in
// place. Where the files that they were made of are, the latter go, and nothing is read: one of those files
// may be what keeps a day from being joined. Returns the days that stay as they are.
std::set<std::string> Compaction::FinishLastOne(
    const std::function<void(const std::string&)>& complain) const {
  std::set<std::string> unfinished;
  for (const std::string& name : DaysIn(work_)) {
    const std::string folder = work_ + "/" + name;
    const std::string day = name.substr(0, name.find(asideSuffix));
    try {
      if (name == day && HoldsJoinedOnly(folder) && !fs::exists(folder + asideSuffix))
        Remove(folder);
      else
        Fold(folder, dataset_ + "/" + day);
    } catch (const Failure& failure) {
      complain(failure.what());
      unfinished.insert(day);
    }
  }
  return unfinished;
}

void Compaction::Join(const std::string& day, const std::vector<std::string>& files) {
  constexpr std::size_t mostRows = std::size_t{1} << 21;  // of a file; one of them at a time is in memory
  const std::string place = fmt::format("{}/{}/{}", work_, day, joinedFolder);
  MakeFolders(place);
  auto joined = std::make_unique<fleet::JoinedFile>();
  std::set<std::string> written;
  std::uint64_t count = 0;
  const auto write = [&] {
    const std::set<std::string> recordings = joined->Recordings();
    WriteFile(place + "/" + JoinedName(recordings), joined->Finish());
    written.insert(recordings.begin(), recordings.end());
    joined = std::make_unique<fleet::JoinedFile>();
    ++count;
  };
  for (const std::string& file : files) {
    const std::string path = fmt::format("{}/{}/{}", dataset_, day, file);
    const std::string content = Content(path);
    try {
      joined->Add(content, written);
    } catch (const std::runtime_error& error) {
      Remove(work_ + "/" + day);
      throw Failure("joining " + Quoted(path) + ": " + error.what() + "; its day stays as it is");
    }
    if (joined->Rows() > mostRows) write();
  }
  if (joined->Rows() > 0) write();
  after_ = after_ - files.size() + count;
  PutInPlace(day);
}

// By an exchange of two folders nobody ever sees a recording twice, or not at all. Where the file system has
// no such exchange, the day is missing for a moment.
void Compaction::PutInPlace(const std::string& day) const {
  const std::string folder = dataset_ + "/" + day;
  const std::string work = work_ + "/" + day;
  if (Exchange(work, folder)) {
    SyncFolder(dataset_);
    return Fold(work, folder);  // it holds now what was joined
  }
  Rename(folder, work + asideSuffix);
  Rename(work, folder);
  Fold(work + asideSuffix, folder);
}

// Removes files of a day whose recordings are in `to`. What came while the others were joined is moved there.
void Compaction::Fold(const std::string& from, const std::string& to) const {
  MakeFolders(to);
  std::map<std::string, std::set<std::string>> there;
  std::set<std::string> known;
  for (const std::string& name : TablesOfDay(to)) {
    const auto& recordings = there[name] = RecordingsIn(to + "/" + name);
    known.insert(recordings.begin(), recordings.end());
  }
  const auto holds = [](const std::set<std::string>& all, const std::set<std::string>& some) {
    return std::includes(all.begin(), all.end(), some.begin(), some.end());
  };
  for (const std::string& name : TablesOfDay(from)) {
    const std::set<std::string> recordings = RecordingsIn(from + "/" + name);
    if (holds(known, recordings)) continue;
    // A file of one recording that the joined one has as well was written when that one was not in place.
    for (const auto& [other, held] : there)
      if (holds(recordings, held)) Remove(to + "/" + other);
    MakeFolders(FolderOf(to + "/" + name));
    Rename(from + "/" + name, to + "/" + name);
    there[name] = recordings;
    known.insert(recordings.begin(), recordings.end());
  }
  SyncFolder(to);
  Remove(from);
}

}  // namespace cli
