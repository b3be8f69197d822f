// What the writer and the reader of TaskLog files share: docs/file-format.md.
#pragma once

#include <cstddef>

#include "model/types.h"

inline constexpr char fileMarker[] = "TaskLogger";  // written without its NUL
inline constexpr std::size_t fileMarkerSize = sizeof fileMarker - 1;

inline constexpr u16 baseVersion = 0x0103;  // what a reader must know at least
inline constexpr u16 fileVersion = 0x0104;  // what is in the file

// A feature is present when the effective version is greater than these.
inline constexpr u32 versionBeforeStamps = 0x0100;
inline constexpr u32 versionBeforeStampNames = 0x0101;
inline constexpr u32 versionBeforeEvents = 0x0102;
inline constexpr u32 versionBeforeTaskIds = 0x0103;

// A record without its name: Ko type, id, timestamp.
inline constexpr std::size_t recordSize = 16;

// Ko types, the codes that open every record. Those of switches tell which slot of the entry the section's
// task holds and, for slot 1, the entry's type.
enum KoType : u8 {
  koTaskEvent = 0,
  koSwitchedIn3 = 1,  // slot 0 of a type 3
  koSwitchedIn = 2,   // slot 0 of another switch
  koSwitchedOut1 = 3,
  koSwitchedOut = 4,  // slot 1 of a type 3 or 4
  koSwitchedOut0 = 5,
  koSwitchedOut5 = 6,
  koTestpoint = 7,
  koTimingIssue = 8
};
