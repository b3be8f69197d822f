#include "namesinlog.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <set>

#include "taskfile/format.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

// Somebody waits for the answer: what is behind these is not looked at.
constexpr std::size_t mostFiles = 64;
constexpr taskfile::u32 mostTasks = 10'000;
constexpr std::size_t mostMarkBytes = 16 << 20;

class File {
 public:
  explicit File(const std::string& path) : fd_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
    struct stat status = {};
    if (fd_ >= 0 && ::fstat(fd_, &status) == 0 && S_ISREG(status.st_mode))
      size_ = static_cast<taskfile::u64>(status.st_size);
  }
  ~File() {
    if (fd_ >= 0) ::close(fd_);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;

  // As many as there are, at most `size`.
  std::string BytesAt(taskfile::u64 at, std::size_t size) const {
    const taskfile::u64 left = size_ - std::min(at, size_);
    std::string bytes(static_cast<std::size_t>(std::min<taskfile::u64>(size, left)), '\0');
    std::size_t got = 0;
    while (got < bytes.size()) {
      const ssize_t more = ::pread(fd_, bytes.data() + got, bytes.size() - got, static_cast<off_t>(at + got));
      if (more <= 0) break;
      got += static_cast<std::size_t>(more);
    }
    bytes.resize(got);
    return bytes;
  }

 private:
  int fd_;
  taskfile::u64 size_ = 0;  // none but of a regular file
};

class Names {
 public:
  void Add(std::string_view bytes) {
    const std::string name(taskfile::TextOf(bytes));
    if (seen_.insert(name).second) names_.push_back(name);
  }
  std::vector<std::string> Take() { return std::move(names_); }

 private:
  std::set<std::string> seen_;
  std::vector<std::string> names_;
};

// The header of the section that begins `bytes`; a size of 0 for none.
struct SectionHead {
  std::size_t size = 0;
  taskfile::u32 nameSize = 0;
};

SectionHead HeadOf(std::string_view bytes) {
  if (!taskfile::LiesIn(bytes, 0, taskfile::sectionHeaderSize)) return {};
  const auto nameSize = taskfile::Load<taskfile::u32>(bytes, 0);
  const std::size_t size = taskfile::sectionHeaderSize + nameSize;
  if (nameSize > taskfile::longestName || bytes.size() < size) return {};
  return {size, nameSize};
}

// Adds the names of one section of testpoints or timing issues; returns where it ends, 0 when that is not in
// `bytes`.
std::size_t AddMarks(std::string_view bytes, std::size_t at, taskfile::u8 koType,
                     const taskfile::Layout& layout, Names& names) {
  const SectionHead head = HeadOf(bytes.substr(at));
  if (head.size == 0) return 0;
  const auto section = taskfile::SectionAt(bytes, at, head.nameSize, taskfile::Kind::stamps);
  at = section.recordsAt;
  for (taskfile::u32 i = 0; i < section.count; ++i) {
    const taskfile::Record record = taskfile::RecordAt(bytes, at, layout);
    if (record.size == 0) return 0;
    if (record.KoType() == koType) names.Add(record.name);
    at += record.size;
  }
  return at;
}

void AddNames(const std::string& path, NameKind kind, Names& names) {
  const File file(path);
  const std::string start = file.BytesAt(0, taskfile::headerSize);
  if (start.size() < taskfile::headerSize || !start.starts_with(taskfile::magic)) return;
  const auto header = taskfile::Header::In(start);
  if (header.taskCount > mostTasks) return;
  taskfile::u64 at = taskfile::headerSize;
  for (taskfile::u32 i = 0; i < header.taskCount; ++i) {
    const std::string bytes = file.BytesAt(at, taskfile::sectionHeaderSize + taskfile::longestName);
    const SectionHead head = HeadOf(bytes);
    if (head.size == 0) return;
    // Records of tasks have no names, so all of them are passed over at once.
    const auto section = taskfile::SectionAt(bytes, 0, head.nameSize, taskfile::Kind::task);
    if (kind == NameKind::task) names.Add(section.name);
    at += section.PlainEnd();
  }
  if (kind == NameKind::task) return;
  const std::string marks = file.BytesAt(at, mostMarkBytes);
  const taskfile::Layout layout(header.Version());
  Names none;
  const bool isIssue = kind == NameKind::issue;
  const std::size_t stamps = AddMarks(marks, 0, taskfile::koTestpoint, layout, isIssue ? none : names);
  if (isIssue && stamps > 0) AddMarks(marks, stamps, taskfile::koTimingIssue, layout, names);
}

std::vector<std::string> FilesAt(const std::string& path) {
  std::error_code error;
  if (!fs::is_directory(path, error)) return {path};
  std::vector<std::string> files;
  for (fs::directory_iterator item(path, error), end; !error && item != end && files.size() < mostFiles;
       item.increment(error))
    if (item->path().extension() == ".tasklog") files.push_back(item->path().string());
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

std::vector<std::string> NamesInLog(const std::string& path, NameKind kind) {
  Names names;
  for (const std::string& file : FilesAt(path)) AddNames(file, kind, names);
  return names.Take();
}

}  // namespace cli
