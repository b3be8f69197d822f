// What all formats have in common: lanes come in one after the other, a format writes them to its files.
//
//   const Format* format = FindFormat("csv");
//   const auto exporter = format->make(files);
//   for (const Source& source : ...) exporter->Add(source);
//   exporter->End();
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

#include "analysis/lane.h"
#include "analysis/meanings.h"

namespace exporters {

// Makes the files of an export. They are where nobody looks yet: whoever made this puts them into place.
class Files {
 public:
  virtual ~Files() = default;
  // The path of a new, empty file; "-" is standard output. A format of one file calls it once, and the name
  // does not matter.
  virtual std::string Create(const std::string& name) = 0;
};

// A lane to export; borrowed, as all that it holds.
struct Source {
  const std::string& name;  // "kernel1"
  std::uint64_t start;      // of the log, in ticks: seconds count from here, whatever part is exported
  const analysis::Lane& lane;
  const analysis::Conventions& conventions;
  const std::vector<bool>& tasks;  // by TaskIndex, whether it is wanted; empty: all are
  bool isOneOfSeveral;             // lanes of this export

  bool Wants(analysis::TaskIndex task) const { return tasks.empty() || (task < tasks.size() && tasks[task]); }
};

// Writes one export. Memory: a constant for each task, testpoint and timing issue, and blocks of fixed size,
// however long the lanes are. Throws std::runtime_error, when writing fails std::system_error.
class Exporter {
 public:
  virtual ~Exporter() = default;
  virtual void Add(const Source& source) = 0;
  // Behind the last lane. The files are complete when this has returned.
  virtual void End() = 0;
};

struct Format {
  const char* name;  // as --to takes it
  std::unique_ptr<Exporter> (*make)(Files& files);
  enum class Kind : std::uint8_t { stream, file, folder } kind;
};

// In the order of docs/export.md. A format whose library was not there at the build is not among them.
const std::vector<Format>& Formats();

// Null when there is none of this name.
const Format* FindFormat(const std::string& name);

}  // namespace exporters
