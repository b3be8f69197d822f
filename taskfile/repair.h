// Writes what was saved of a damaged file.
#pragma once

#include "taskfile/salvage.h"
#include "taskfile/writer.h"

namespace taskfile {

// The file that comes out passes Check(). `bytes` is the damaged one.
void WriteSaved(std::string_view bytes, const Salvage& salvage, const Progress& progress, Sink sink);

}  // namespace taskfile
