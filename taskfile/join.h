// Parts of sound files as one file.
#pragma once

#include <vector>

#include "taskfile/check.h"
#include "taskfile/writer.h"

namespace taskfile {

// A file, or the records of it that lie between two ticks, both included.
struct Piece {
  std::string_view bytes;  // a reader takes them: AsReaderTakesIt()
  u64 from = 0;
  u64 to = UINT64_MAX;
  bool isBegin = true;  // else it is known from elsewhere what ran before
};

// Writes the records of all pieces, which follow each other in time and are of one version, as a log of this
// period. What is at the ends of a section tells a reader what ran there; it is made anew where something is
// cut.
void WriteJoined(const std::vector<Piece>& pieces, u64 startTime, u64 stopTime, const Progress& progress,
                 Sink sink);

}  // namespace taskfile
