// A sound file, what is damaged of it, and what must be true of the file that repair makes of it.
#pragma once

#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "support/taskfile.h"

// A record: where it stands, whether a reader makes something of it, section, Ko type, id, time, name.
struct PlacedRecord {
  using Content = std::tuple<std::string, unsigned, std::uint32_t, std::uint64_t, std::string>;
  std::size_t begin, end;
  std::size_t section;  // its number
  bool isRead;
  Content content;
};

struct PlacedSection {
  std::size_t begin, end;  // of the header
};

// A plain reader, written from docs/file-format.md.
struct PlacedFile {
  std::vector<PlacedSection> sections;
  std::vector<PlacedRecord> records;

  explicit PlacedFile(const Bytes& file);
};

struct Counts {
  std::size_t files = 0;
  std::size_t nothingLeft = 0;
  std::size_t wholeRecords = 0;  // of whole sections: all of them are kept
  std::size_t otherRecords = 0;  // undamaged ones of damaged sections
  std::size_t otherKept = 0;
  std::size_t prologsRead = 0;  // because the header's period is damaged
  std::size_t damagedKept = 0;  // records that say something else: they are damaged themselves
};

class Sound {
 public:
  explicit Sound(const Bytes& file) : file_(file), placed_(file) {}
  const Bytes& File() const { return file_; }

  // Damages a copy, repairs it and checks the result; `counts` grows. Bytes that differ are damaged, and
  // those that are missing.
  void CheckRepaired(const Bytes& damaged, Counts& counts) const;

 private:
  Bytes file_;
  PlacedFile placed_;
};
