// What verify found, for people and as JSON: docs/json.md.
#pragma once

#include <fmt/format.h>

#include <memory>
#include <optional>
#include <string>

#include "taskfile/remarks.h"

namespace cli {

struct VerifiedFile {
  const std::string& path;
  const taskfile::Findings& findings;
  bool isReadable;  // a reader takes it, sound or not
  // Of a sound file.
  const std::optional<taskfile::Remarks>& remarks;
};

class VerifyFormat {
 public:
  virtual ~VerifyFormat() = default;
  virtual void Add(const VerifiedFile& file) = 0;
  virtual void End() {}
};

std::unique_ptr<VerifyFormat> MakeVerifyText(fmt::memory_buffer& out);
std::unique_ptr<VerifyFormat> MakeVerifyJson(fmt::memory_buffer& out);

}  // namespace cli
