// Segments are joined by cutting: of two that overlap the earlier one is read up to its last tick, without
// it, and the later one from there on. All ticks before the cut are then complete in the one, all behind it
// in the other: a segment's last tick may have got more entries later, its first may have lost some.
#include "segments.h"

#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <fstream>

#include "args.h"
#include "failure.h"
#include "logsummary.h"
#include "memoryfile.h"
#include "taskfile/join.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::string_view extension = ".tasklog";
constexpr std::size_t fewestDigits = 4;
constexpr std::uint64_t unbounded = std::numeric_limits<std::uint64_t>::max();

// Splits "kernel1.0002.tasklog" into "kernel1" and "0002"; the number is empty for other names.
std::pair<std::string_view, std::string_view> Split(std::string_view path) {
  if (!path.ends_with(extension)) return {path, {}};
  path.remove_suffix(extension.size());
  const std::size_t dot = path.find_last_not_of("0123456789");
  const bool numbered = dot != path.npos && path[dot] == '.' && path.size() - dot > fewestDigits;
  if (!numbered) return {path, {}};
  return {path.substr(0, dot), path.substr(dot + 1)};
}

// At most `most` bytes of a file.
std::string ReadBytes(const std::string& path, std::uintmax_t most) {
  std::error_code error;
  const std::uintmax_t size = std::min(std::filesystem::file_size(path, error), most);
  if (error) throw Failure::System("reading " + Quoted(path), error.value());
  std::string bytes;
  if (size > bytes.max_size()) throw Failure::System("reading " + Quoted(path), EFBIG);
  bytes.resize(static_cast<std::size_t>(size));
  std::ifstream file(path, std::ios::binary);
  file.read(bytes.data(), static_cast<std::streamsize>(size));
  if (!file) throw Failure::System("reading " + Quoted(path), errno != 0 ? errno : EIO);
  return bytes;
}

bool IsEmpty(const Period& period) { return period.start == 0 && period.stop == 0; }

// The period that the beginning of a file says; empty when it is no TaskLog file.
Period PeriodOf(std::string_view bytes) {
  if (bytes.size() < taskfile::headerSize || !bytes.starts_with(taskfile::magic)) return {};
  const auto header = taskfile::Header::In(bytes);
  return {header.startTime, header.stopTime};
}

// A file behind others: its period begins where theirs does, and what it says of the time before its first
// record is known from them.
void Append(tasklog::Log& log, const std::string& path, const FilePart& part, std::uint64_t start,
            bool isFirst) {
  const std::string bytes = ReadBytes(path, unbounded);
  if (!taskfile::AsReaderTakesIt(bytes)) return LoadInto(log, path, path);  // which says what is wrong
  std::string cut;
  const taskfile::Piece piece{bytes, part.from, part.to, isFirst};
  taskfile::WriteJoined(
      {piece}, start, PeriodOf(bytes).stop, [](double) {}, [&](std::string_view written) { cut += written; });
  LoadInto(log, MemoryFile(cut).Path(), path);
}

}  // namespace

std::string SegmentName(const std::string& stem, std::uint64_t number) {
  return fmt::format("{}.{:0{}}{}", stem, number, fewestDigits, extension);
}

std::optional<std::uint64_t> SegmentNumber(const std::string& path) {
  return ParseNumber(Split(path).second);
}

std::string PathStemOf(const std::string& path) { return std::string(Split(path).first); }

std::string StemOf(const std::string& path) {
  return PathStemOf(std::filesystem::path(path).filename().string());
}

JoinedFiles JoinFiles(const std::vector<std::string>& paths) {
  JoinedFiles joined;
  if (paths.size() == 1) {
    LoadInto(joined.log, paths.front(), paths.front());
    joined.periods.push_back({joined.log.StartTime(), joined.log.StopTime()});
    return joined;
  }
  for (const std::string& path : paths)
    joined.periods.push_back(PeriodOf(ReadBytes(path, taskfile::headerSize)));
  const auto parts = WithoutOverlaps(paths, joined.periods, joined.gaps);
  for (const FilePart& part : parts)
    Append(joined.log, paths[part.file], part, joined.periods[parts.front().file].start,
           &part == parts.data());
  if (parts.empty()) LoadInto(joined.log, paths.back(), paths.back());
  return joined;
}

std::vector<FilePart> WithoutOverlaps(const std::vector<std::string>& paths,
                                      const std::vector<Period>& periods, std::vector<Gap>& gaps) {
  std::vector<FilePart> parts;
  for (std::size_t i = 0; i < paths.size(); ++i) {
    if (IsEmpty(periods[i])) continue;  // nothing was recorded
    FilePart part{.file = i};
    if (!parts.empty()) {
      FilePart& before = parts.back();
      const std::uint64_t end = periods[before.file].stop;
      if (periods[i].stop < end) {
        throw Failure(
            fmt::format("reading {}: it ends before {}, so they are not of one recording; the controller's "
                        "timer may have begun anew (give the files one by one)",
                        Quoted(paths[i]), Quoted(paths[before.file])));
      }
      if (periods[i].start > end) {
        gaps.push_back({end, periods[i].start});
      } else if (periods[i].start < end) {
        before.to = end - 1;
        part.from = end;
      } else {
        part.from = end + 1;
      }
    }
    parts.push_back(part);
  }
  return parts;
}

}  // namespace cli
