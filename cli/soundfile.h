// A TaskLog file that a reader takes, in memory.
#pragma once

#include <string>

#include "longwork.h"
#include "metadata.h"

namespace cli {

struct SoundFile {
  std::string bytes;
  taskfile::Header header;
  std::vector<taskfile::Section> sections;

  Period Covered() const { return {header.startTime, header.stopTime}; }
  std::uint64_t TicksPerSecond() const { return header.tickRate / header.divisor; }
};

// Throws Failure for a file that a reader refuses: it says what is wrong and what to do.
SoundFile ReadSound(const std::string& path, const taskfile::Progress& progress);

}  // namespace cli
