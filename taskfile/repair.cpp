#include "taskfile/repair.h"

#include <utility>

namespace taskfile {
namespace {

void WriteSection(std::string_view bytes, const KeptSection& kept, const Header& header, Writer& writer) {
  const Section& section = kept.section;
  const bool isTask = section.kind == Kind::task;
  const u32 count = kept.count + (kept.needsProlog ? 1 : 0) + (kept.needsEpilog ? 1 : 0);
  writer.BeginSection(isTask ? TextOf(section.name) : NameOf(section.kind), isTask ? section.priority : 0,
                      isTask ? section.timeSlice : 0, count);
  // Of this Ko type no reader makes an entry of it.
  if (kept.needsProlog) writer.PutRecord(koSwitchedOut1, 0, header.startTime);
  for (const Span& span : kept.spans) writer.Put(bytes.substr(span.begin, span.Size()));
  if (kept.needsEpilog) writer.PutRecord(EpilogOf(kept.lastKoType), 0, header.stopTime);
}

}  // namespace

void WriteSaved(std::string_view bytes, const Salvage& salvage, const Progress& progress, Sink sink) {
  Writer writer(std::move(sink));
  writer.Put(salvage.header);
  std::size_t written = 0;
  for (const KeptSection& kept : salvage.sections) {
    WriteSection(bytes, kept, salvage.header, writer);
    progress(static_cast<double>(++written) / static_cast<double>(salvage.sections.size()));
  }
  writer.Flush();
}

}  // namespace taskfile
