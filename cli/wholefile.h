// One file that is written as a whole or not at all, with its metadata beside it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "metadata.h"
#include "recordingoutput.h"
#include "taskfile/writer.h"

namespace cli {

class WholeFile {
 public:
  // Throws Failure when something is in the way, or when the file is one of the inputs.
  WholeFile(const std::string& path, const std::vector<std::string>& inputs);
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;
  ~WholeFile();

  // Takes its bytes; lives as long as this. Throws Failure.
  taskfile::Sink Sink();
  // Puts it in its place. Without metadata, that of a former file goes.
  void Commit(const std::optional<Metadata>& metadata);

 private:
  RecordingOutput output_;
  int fd_;
};

}  // namespace cli
