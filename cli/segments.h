// A recording that goes on for long is a row of files, its segments: kernel1.0001.tasklog,
// kernel1.0002.tasklog, ... Each is a whole log; the later one begins with what the buffer still held.
#pragma once

#include <cstdint>
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

struct JoinedFiles {
  tasklog::Log log;
  std::vector<Gap> gaps;        // between files that share nothing
  std::vector<Period> periods;  // of each file
};

// Reads files, in order, into one log; at least one. Throws Failure.
JoinedFiles JoinFiles(const std::vector<std::string>& paths);

}  // namespace cli
