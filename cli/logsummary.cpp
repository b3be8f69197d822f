#include "logsummary.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <unordered_map>

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

// Why a file cannot be opened or read, as the system tells when asked once more; empty if it does not.
std::string SystemReason(const std::string& path) {
  struct stat found {};
  if (::stat(path.c_str(), &found) != 0) return std::strerror(errno);
  return ::access(path.c_str(), R_OK) != 0 ? std::strerror(errno) : "";
}

std::string Hint(tasklog::Status status, const std::string& path) {
  switch (status.Code()) {
    case TLErrFileOpen:
    case TLErrFileRead: return SystemReason(path);
    case TLErrFileInvalid: return "it is damaged, cut short or something else";
    case TLErrFileVersion: return "a newer version of this program reads it";
    default: return {};
  }
}

}  // namespace

LogSummary Summarize(const tasklog::Log& log) {
  LogSummary summary;
  std::unordered_map<TLCategory, std::size_t> places;
  for (const auto& category : log.Categories()) {
    places.emplace(category.Handle(), summary.categories.size());
    summary.categories.push_back({category});
    ++summary.categoriesByKind.at(category.Type());
  }
  for (const auto& entry : log.Entries()) {
    ++summary.entries;
    ++summary.entriesByType.at(entry.Type());
    const TLCategory subject = TLEntryGetCategory(entry.Handle(), 0);
    if (subject) ++summary.categories[places.at(subject)].entries;
  }
  return summary;
}

void LoadInto(tasklog::Log& log, const std::string& path, const std::string& shownPath) {
  const tasklog::Status status = log.AppendFromFile(path);
  if (!status) throw Failure("reading " + Quoted(shownPath), status, Hint(status, path));
}

}  // namespace cli
