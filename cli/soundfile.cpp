#include "soundfile.h"

#include <fmt/format.h>

#include "failure.h"
#include "text.h"

namespace cli {

SoundFile ReadSound(const std::string& path, const taskfile::Progress& progress) {
  SoundFile file;
  file.bytes = ReadWhole(path, progress);
  auto read = taskfile::AsReaderTakesIt(file.bytes);
  if (!read) {
    const auto fault = taskfile::Check(file.bytes, [](double) {}).fault;
    const std::string what =
        fault ? fmt::format(": at byte {}, {}: found {}, expected {}", fault->offset, SafeText(fault->field),
                            SafeText(fault->found), SafeText(fault->expected))
              : "";
    throw Failure("reading " + Quoted(path) + what + " ('tasklog repair' saves what is left)");
  }
  file.header = taskfile::Header::In(file.bytes);
  file.sections = std::move(read->sections);
  return file;
}

}  // namespace cli
