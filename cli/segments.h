// A recording that goes on for long is a row of files, its segments: kernel1.0001.tasklog,
// kernel1.0002.tasklog, ... Each is a whole log; the later one begins with what the buffer still held.
#pragma once

#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

#include "metadata.h"

namespace cli {

std::string SegmentName(const std::string& stem, std::uint64_t number);

// The number in a segment's name; empty for a file of another name.
std::optional<std::uint64_t> SegmentNumber(const std::string& path);

// The path of a log without extension and number, and the name in it: "d/kernel1", "kernel1".
std::string PathStemOf(const std::string& path);
std::string StemOf(const std::string& path);

// What of a file counts: records of these ticks, both included.
struct FilePart {
  std::size_t file;  // its number
  std::uint64_t from = 0;
  std::uint64_t to = std::numeric_limits<std::uint64_t>::max();
};

// What counts of files that follow each other, so that each record counts once; files that hold nothing are
// left out. What lies between two that share nothing is a gap. Throws Failure.
std::vector<FilePart> WithoutOverlaps(const std::vector<std::string>& paths,
                                      const std::vector<Period>& periods, std::vector<Gap>& gaps);

struct JoinedFiles {
  tasklog::Log log;
  std::vector<Gap> gaps;        // between files that share nothing
  std::vector<Period> periods;  // of each file
};

// Reads files, in order, into one log; at least one. Throws Failure.
JoinedFiles JoinFiles(const std::vector<std::string>& paths);

}  // namespace cli
