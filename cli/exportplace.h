// Where `tasklog export` writes: standard output, a file, or a new folder. Files come into their place when
// the export is complete, or not at all.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "exporters/exporter.h"
#include "tempfile.h"

namespace cli {

class ExportPlace : public exporters::Files {
 public:
  // Throws Failure where something is in the way, UsageError where the format does not fit standard output.
  ExportPlace(const std::string& path, const exporters::Format& format);

  std::string Create(const std::string& name) override;
  // Puts all that was created into place. Throws Failure.
  void Commit();

 private:
  void CommitFolder();

  std::string path_;
  std::string place_;
  std::unique_ptr<TempFolder> folder_;
  std::vector<TempFile> files_;
};

}  // namespace cli
