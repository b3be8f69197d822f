// What of a damaged file can be saved: docs/repair.md.
#pragma once

#include <string>
#include <vector>

#include "taskfile/check.h"

namespace taskfile {

// Bytes of the file.
struct Span {
  std::size_t begin = 0;
  std::size_t end = 0;

  std::size_t Size() const { return end - begin; }
};

// Something happened between these ticks that is not known any more.
struct LostTime {
  u64 from = 0;
  u64 to = 0;
};

// A section as far as it was found.
struct FoundSection {
  Section section = {};
  std::vector<Span> areas = {};  // where its records lie, one behind the other
  bool isPlain = true;           // none of them has a name
  bool isToEnd = true;           // its last record is there
};

// What of it is kept.
struct KeptSection {
  Section section = {};
  std::vector<Span> spans = {};  // records, unchanged
  u32 count = 0;                 // of these
  u64 lost = 0;                  // records that the count states, or that were seen, and that are not kept
  bool needsProlog = false;      // else a reader took its first record for one
  bool needsEpilog = false;      // its own is lost
  u8 lastKoType = 0;
};

struct Salvage {
  Header header = {};
  std::vector<std::string> mended = {};    // what of the header is not as it was
  std::vector<KeptSection> sections = {};  // those of tasks, then one of each kind that the version has
  std::size_t foundTasks = 0;
  u64 keptBytes = 0;
  std::vector<LostTime> lostTimes = {};  // in order, apart from each other
};

// Finds the sections of a file, whatever happened to it. Adds what lies between them to `lost`.
std::vector<FoundSection> FindSections(std::string_view bytes, const Header& header, std::vector<Span>& lost,
                                       const Progress& progress);

// Throws NothingLeft when the file has no section.
struct NothingLeft {};
Salvage Save(std::string_view bytes, const Progress& progress);

}  // namespace taskfile
