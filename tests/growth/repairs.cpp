#include <fstream>
#include <sstream>

#include "growth/counting.h"
#include "taskfile/join.h"
#include "taskfile/remarks.h"
#include "taskfile/repair.h"

namespace growth {
namespace {

std::string Read(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path, std::ios::binary).rdbuf();
  return text.str();
}

}  // namespace

void CountRepairs(const std::string& prefix, Setting setting, const std::string& path) {
  const std::string bytes = Read(path);
  const taskfile::Header header = taskfile::Header::In(bytes);
  const auto ignore = [](double) {};
  const auto drop = [](std::string_view) {};
  Count(prefix + "verify", setting, [&] {
    const taskfile::Findings findings = taskfile::Check(bytes, ignore);
    if (!findings.fault) taskfile::FindRemarks(bytes, header, findings.sections, ignore);
  });
  const std::string_view damaged(bytes.data(), bytes.size() - 7);
  Count(prefix + "repair", setting,
        [&] { taskfile::WriteSaved(damaged, taskfile::Save(damaged, ignore), ignore, drop); });
  const std::uint64_t middle = header.startTime + (header.stopTime - header.startTime) / 2;
  Count(prefix + "cut", setting, [&] {
    taskfile::WriteJoined({{bytes, middle, UINT64_MAX}}, middle, header.stopTime, ignore, drop);
  });
  Count(prefix + "join", setting, [&] {
    taskfile::WriteJoined({{bytes, 0, middle}, {bytes, middle + 1, UINT64_MAX}}, header.startTime,
                          header.stopTime, ignore, drop);
  });
}

}  // namespace growth
