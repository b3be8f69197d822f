#include "partmetadata.h"

#include <algorithm>
#include <filesystem>

#include "segments.h"

namespace cli {
namespace {

void AddGaps(const std::vector<Gap>& from, const Period& period, std::vector<Gap>& gaps) {
  for (const Gap& gap : from) {
    const Gap inside{std::max(gap.from, period.start), std::min(gap.to, period.stop)};
    if (inside.from < inside.to) gaps.push_back(inside);
  }
  std::sort(gaps.begin(), gaps.end(), [](const Gap& a, const Gap& b) { return a.from < b.from; });
  gaps.erase(std::unique(gaps.begin(), gaps.end()), gaps.end());
}

// The loggers of a file: one, unless they were merged.
std::vector<RecordedLogger> LoggersOf(const SourceFile& source) {
  const Metadata& metadata = *source.noted.metadata;
  return metadata.merged ? metadata.loggers : std::vector{*source.noted.logger};
}

RecordedLogger& LoggerNamed(const std::string& name, std::vector<RecordedLogger>& loggers) {
  for (RecordedLogger& logger : loggers)
    if (logger.name == name) return logger;
  return loggers.emplace_back(RecordedLogger{.name = name});
}

}  // namespace

SourceFile FindSource(const std::string& path, const Period& period) {
  SourceFile source{path, period};
  const Lane lane = FindLanes({path}).front();
  if (lane.files.size() == 1 && lane.files.front().metadata &&
      IsNotedAbout(*lane.files.front().logger, path, period))
    source.noted = lane.files.front();
  return source;
}

std::optional<Metadata> MetadataOfParts(const std::vector<SourceFile>& sources, const std::string& output,
                                        const Period& period, std::uint64_t ticksPerSecond,
                                        const std::vector<Gap>& gaps) {
  std::optional<Metadata> result;
  std::vector<RecordedLogger> loggers;
  for (const SourceFile& source : sources) {
    if (!source.noted.metadata) continue;
    if (!result) result = *source.noted.metadata;
    result->endedAt = source.noted.metadata->endedAt;
    result->endedBy = source.noted.metadata->endedBy;
    for (const RecordedLogger& logger : LoggersOf(source)) {
      RecordedLogger& joined = LoggerNamed(logger.name, loggers);
      joined.reads = std::max(joined.reads, logger.reads);
      AddGaps(logger.gaps, period, joined.gaps);
    }
  }
  if (!result && gaps.empty()) return std::nullopt;
  if (!result) {
    result.emplace().tool = "tasklog " TASKLOG_VERSION;
    LoggerNamed(StemOf(output), loggers);
  }
  const auto& endedBy = result->endedBy;
  if (endedBy && (endedBy->ticks < period.start || endedBy->ticks > period.stop)) result->endedBy.reset();
  for (RecordedLogger& logger : loggers) {
    logger.files = {{std::filesystem::path(output).filename().string(), period}};
    logger.ticksPerSecond = ticksPerSecond;
    AddGaps(gaps, period, logger.gaps);
  }
  result->loggers = std::move(loggers);
  return result;
}

}  // namespace cli
