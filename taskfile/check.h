// Whether a TaskLog file is as its format says: docs/file-format.md, docs/repair.md.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "taskfile/format.h"

namespace taskfile {

// Called now and then with the share of the work that is done, 0.0 to 1.0. What it throws ends the work.
using Progress = std::function<void(double)>;

// Names in these texts are bytes of the file.
struct Fault {
  u64 offset = 0;
  std::string field;
  std::string found;
  std::string expected;
};

struct Findings {
  std::optional<Fault> fault = {};  // the first; empty: the file is sound
  Header header = {};
  std::vector<Section> sections = {};  // as far as the fault
  u64 records = 0;
};

Findings Check(std::string_view bytes, const Progress& progress);

// The sections of a file as a reader takes them, and where the last one ends.
struct ReaderSections {
  std::vector<Section> sections = {};
  std::size_t end = 0;
};

// Empty where a reader refuses the file.
std::optional<ReaderSections> AsReaderTakesIt(std::string_view bytes);
// The same for a header whose magic and base version do not count.
std::optional<ReaderSections> SectionsOf(std::string_view bytes, const Layout& layout, u32 taskCount);

}  // namespace taskfile
