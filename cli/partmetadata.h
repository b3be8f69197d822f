// The metadata of a file that is made of others: a part of one, or several together.
#pragma once

#include <optional>

#include "recording.h"

namespace cli {

// A file, with what `record` noted about it.
struct SourceFile {
  std::string path;
  Period period;
  LaneFile noted = {};  // its metadata is null when there is none for it
};

// Damaged metadata, and metadata of another file of this name, is one warning.
SourceFile FindSource(const std::string& path, const Period& period);

// The metadata for a file of this period; empty when nothing was noted and nothing is missing. `gaps` are
// added.
std::optional<Metadata> MetadataOfParts(const std::vector<SourceFile>& sources, const std::string& output,
                                        const Period& period, std::uint64_t ticksPerSecond,
                                        const std::vector<Gap>& gaps);

}  // namespace cli
