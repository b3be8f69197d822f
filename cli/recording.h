// What the arguments of a command stand for. Each is a TaskLog file or the folder of a recording; either way
// a command gets lanes: each is the log of one logger, whose files may be several where `record --split`
// wrote segments. What `record` noted beside the files (metadata.h) is found here, and never needed.
//
//   for (const Lane& lane : FindLanes(options.files)) {
//     const LaneLog loaded = LoadLane(lane);
//     ... loaded.log, loaded.gaps, loaded.switches, loaded.idleTask
//   }
//
// A name such as kernel1.0002.tasklog is that of a segment: segments of one name in one folder are one lane.
#pragma once

#include <memory>
#include <string>
#include <tasklog/tasklog.hpp>
#include <vector>

#include "metadata.h"

namespace cli {

struct LaneFile {
  std::string path;
  std::shared_ptr<const Metadata> metadata = {};  // null: there is none, or it is damaged
  const RecordedLogger* logger = nullptr;         // in `metadata`; of a file of several loggers the first
};

struct Lane {
  std::string name;                  // "kernel1"; without metadata that of the file
  std::string shownAs;               // in output and messages: the file as typed, or FOLDER/kernel1
  std::vector<LaneFile> files = {};  // in order; a folder that holds no logs has none
};

struct LaneLog {
  tasklog::Log log;
  std::vector<Gap> gaps = {};  // in order, those between the files included
  std::string switches = {};   // what types of switches mean, as --switches takes it; empty: unknown
  std::string idleTask = {};   // a task of the log; empty: unknown
  bool merged = false;         // several loggers are in it, which no entry says: no lane for an analysis
  std::shared_ptr<const Metadata> metadata = {};  // null: there is none that belongs to the files
};

// The lanes of all arguments, in order. Damaged metadata is one warning, and the lanes are found without it.
// A file or folder that cannot be read is a lane, too: loading it fails.
std::vector<Lane> FindLanes(const std::vector<std::string>& arguments);

// Reads the files of a lane. What two of them share counts once; what lies between two is a gap. Metadata
// that was written for other files of these names is one warning. Throws Failure.
LaneLog LoadLane(const Lane& lane);

// Whether metadata that has the name of a file was written for it: metadata is matched to files by names
// alone, so a file that was replaced since shows by its period. If not, this is one warning.
bool IsNotedAbout(const RecordedLogger& logger, const std::string& path, const Period& period);

// Of the tasks of a log that a name or shell pattern stands for, the one of lowest priority; empty for none.
std::string IdleTaskOf(const tasklog::Log& log, const std::string& pattern);

// The file beside `path`, or in the folder `path`, that holds the metadata.
std::string MetadataOfFile(const std::string& path);
std::string MetadataOfFolder(const std::string& path);

// Whether what lies there is metadata, of whatever version.
bool IsMetadata(const std::string& path);

}  // namespace cli
