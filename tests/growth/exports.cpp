#include <cstdio>
#include <fstream>
#include <stdexcept>

#include "analysis/meanings.h"
#include "exporters/exporter.h"
#include "growth/counting.h"

namespace growth {
namespace {

// Files beside `path`, gone at the end.
class TempFiles : public exporters::Files {
 public:
  explicit TempFiles(const std::string& path) : path_(path) {}
  ~TempFiles() override {
    for (const std::string& made : made_) std::remove(made.c_str());
  }
  std::string Create(const std::string& name) override {
    made_.push_back(path_ + "." + name);
    std::ofstream(made_.back()).flush();
    return made_.back();
  }

 private:
  std::string path_;
  std::vector<std::string> made_;
};

// Some formats have no place for some times, and refuse the log at once.
void Export(const exporters::Format& format, exporters::Files& files, const exporters::Source& source) try {
  const auto exporter = format.make(files);
  exporter->Add(source);
  exporter->End();
} catch (const std::runtime_error&) {
}

}  // namespace

void CountExports(const std::string& prefix, Setting setting, const std::string& path) {
  tasklog::Log log;
  if (!log.AppendFromFile(path.c_str())) throw std::runtime_error("the file to export is not read");
  const analysis::Lane lane({&log});
  const analysis::Conventions conventions{analysis::Meanings::OfSimulator(), analysis::FindIdleTask(lane)};
  const std::string name = "lane";
  for (const exporters::Format& format : exporters::Formats()) {
    TempFiles files(path);
    Count(prefix + format.name, setting, [&] {
      Export(format, files, {name, log.StartTime(), lane, conventions, {}, false});
    });
  }
}

}  // namespace growth
