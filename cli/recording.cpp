#include "recording.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>

#include "analysis/pattern.h"
#include "failure.h"
#include "segments.h"
#include "text.h"

namespace cli {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view extension = ".tasklog";

std::string ReadMetadata(const std::string& path) {
  constexpr std::uintmax_t largest = 256 << 20;
  if (!fs::is_regular_file(path)) throw std::runtime_error("it is not a regular file");
  if (fs::file_size(path) > largest) throw std::runtime_error("it is too large");
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

// What lies at each path where metadata was looked for, so that what is damaged is told once.
class MetadataCache {
 public:
  std::shared_ptr<const Metadata> At(const std::string& path) {
    const auto [place, isNew] = known_.try_emplace(path);
    if (isNew) place->second = Read(path);
    return place->second;
  }

 private:
  static std::shared_ptr<const Metadata> Read(const std::string& path) {
    try {
      std::error_code error;
      if (!fs::exists(path, error)) return nullptr;
      return std::make_shared<Metadata>(ParseMetadata(ReadMetadata(path)));
    } catch (const std::runtime_error& error) {  // also those of the file system
      PrintWarning(fmt::format("{}: not usable as metadata, the logs are read without: {}", Quoted(path),
                               SafeText(error.what())));
      return nullptr;
    }
  }

  std::map<std::string, std::shared_ptr<const Metadata>> known_;
};

const RecordedLogger* LoggerOf(const Metadata& metadata, const std::string& fileName) {
  for (const RecordedLogger& logger : metadata.loggers) {
    const auto& files = logger.files;
    const auto isIt = [&](const RecordedFile& file) { return file.name == fileName; };
    if (std::any_of(files.begin(), files.end(), isIt)) return &logger;
  }
  return nullptr;
}

class Finder {
 public:
  void Add(const std::string& argument) {
    std::error_code error;
    if (fs::is_directory(argument, error)) return AddFolder(argument);
    AddFile(argument);
  }
  std::vector<Lane> Take() { return std::move(lanes_); }

 private:
  void AddFolder(const std::string& folder) {
    if (const auto metadata = metadata_.At(MetadataOfFolder(folder))) return AddRecording(folder, metadata);
    std::vector<std::string> names;
    std::error_code error;
    for (const auto& item : fs::directory_iterator(folder, error)) {
      const std::string name = item.path().filename().string();
      if (name.ends_with(extension) && !name.starts_with('.')) names.push_back(name);
    }
    std::sort(names.begin(), names.end());
    for (const std::string& name : names) AddFile((fs::path(folder) / name).string());
    if (names.empty()) lanes_.push_back({.name = folder, .shownAs = folder});
  }

  // The files that the metadata names are the recording, whatever else lies in the folder. A file that is
  // missing was let go, or not finished when the recording was killed.
  void AddRecording(const std::string& folder, const std::shared_ptr<const Metadata>& metadata) {
    for (const RecordedLogger& logger : metadata->loggers) {
      Lane lane{logger.name, (fs::path(folder) / logger.name).string()};
      for (const RecordedFile& file : logger.files) {
        const fs::path path = fs::path(folder) / fs::path(file.name).filename();
        std::error_code error;
        if (fs::exists(path, error)) lane.files.push_back({path.string(), metadata, &logger});
      }
      if (lane.files.size() == 1) lane.shownAs = lane.files.front().path;
      lanes_.push_back(std::move(lane));
    }
  }

  void AddFile(const std::string& path) {
    const LaneFile file = WithMetadata(path);
    if (SegmentNumber(path) && JoinLane(file)) return;
    lanes_.push_back({StemOf(path), path, {file}});
  }

  LaneFile WithMetadata(const std::string& path) {
    if (const auto own = metadata_.At(MetadataOfFile(path))) return {path, own, &own->loggers.front()};
    const fs::path place(path);
    const auto shared = metadata_.At(MetadataOfFolder(place.parent_path().string()));
    const RecordedLogger* const logger = shared ? LoggerOf(*shared, place.filename().string()) : nullptr;
    return logger ? LaneFile{path, shared, logger} : LaneFile{path};
  }

  // Puts a segment into the lane that has others of its name; false when there is none yet.
  bool JoinLane(const LaneFile& file) {
    const auto [place, isFirst] = segmentLanes_.try_emplace(PathStemOf(file.path), lanes_.size());
    if (isFirst) return false;
    Lane& lane = lanes_[place->second];
    const auto at = std::lower_bound(
        lane.files.begin(), lane.files.end(), file,
        [](const LaneFile& a, const LaneFile& b) { return SegmentNumber(a.path) < SegmentNumber(b.path); });
    if (at == lane.files.end() || at->path != file.path) lane.files.insert(at, file);
    if (lane.files.size() > 1) lane.shownAs = PathStemOf(file.path);
    return true;
  }

  MetadataCache metadata_;
  std::vector<Lane> lanes_;
  std::map<std::string, std::size_t> segmentLanes_;
};

void SortGaps(std::vector<Gap>& gaps, const Period& period) {
  std::erase_if(gaps, [&](const Gap& gap) { return gap.to <= period.start || gap.from >= period.stop; });
  std::sort(gaps.begin(), gaps.end(), [](const Gap& a, const Gap& b) { return a.from < b.from; });
  gaps.erase(std::unique(gaps.begin(), gaps.end()), gaps.end());
}

void UseMetadata(const Lane& lane, const std::vector<Period>& periods, LaneLog& loaded) {
  const RecordedLogger* used = nullptr;
  for (std::size_t i = 0; i < lane.files.size(); ++i) {
    const LaneFile& file = lane.files[i];
    if (!file.metadata) continue;
    if (!IsNotedAbout(*file.logger, file.path, periods[i])) continue;
    if (!loaded.metadata) loaded.metadata = file.metadata;
    if (used == file.logger) continue;  // segments share their metadata
    used = file.logger;
    loaded.gaps.insert(loaded.gaps.end(), used->gaps.begin(), used->gaps.end());
  }
  SortGaps(loaded.gaps, {loaded.log.StartTime(), loaded.log.StopTime()});
  if (!loaded.metadata) return;
  loaded.switches = loaded.metadata->switches;
  loaded.idleTask = IdleTaskOf(loaded.log, loaded.metadata->idleTask);
  loaded.merged = loaded.metadata->merged && loaded.metadata->loggers.size() > 1;
}

}  // namespace

std::vector<Lane> FindLanes(const std::vector<std::string>& arguments) {
  Finder finder;
  for (const std::string& argument : arguments) finder.Add(argument);
  return finder.Take();
}

LaneLog LoadLane(const Lane& lane) {
  if (lane.files.empty()) {
    throw Failure(
        fmt::format("reading {}: no TaskLog files (*{}) are there", Quoted(lane.shownAs), extension));
  }
  std::vector<std::string> paths;
  for (const LaneFile& file : lane.files) paths.push_back(file.path);
  JoinedFiles joined = JoinFiles(paths);
  LaneLog loaded{.log = std::move(joined.log), .gaps = std::move(joined.gaps)};
  UseMetadata(lane, joined.periods, loaded);
  return loaded;
}

bool IsNotedAbout(const RecordedLogger& logger, const std::string& path, const Period& period) {
  const std::string name = fs::path(path).filename().string();
  for (const RecordedFile& file : logger.files) {
    if ((file.name == name || logger.files.size() == 1) && file.period == period) return true;
  }
  PrintWarning("the metadata beside " + Quoted(path) +
               " was written for another file of this name and is not used");
  return false;
}

std::string IdleTaskOf(const tasklog::Log& log, const std::string& pattern) {
  std::optional<tasklog::Category> idle;
  for (const auto& task : log.Categories({.types = TL_CATS_TASKS})) {
    if (!analysis::MatchesPattern(pattern, task.Name())) continue;
    if (!idle || task.Priority() < idle->Priority()) idle = task;
  }
  return idle ? idle->Name() : "";
}

bool IsMetadata(const std::string& path) {
  try {
    return LooksLikeMetadata(ReadMetadata(path));
  } catch (const std::runtime_error&) {
    return false;
  }
}

std::string MetadataOfFile(const std::string& path) { return path + ".json"; }

std::string MetadataOfFolder(const std::string& path) { return (fs::path(path) / "recording.json").string(); }

}  // namespace cli
