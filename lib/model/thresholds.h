// Sizes at which an operation changes the way it works. Small inputs never reach them, so a test build
// defines TASKLOG_SMALL_THRESHOLDS, which takes each down to the least that makes sense.
#pragma once

#include <cstddef>

namespace thresholds {

#ifdef TASKLOG_SMALL_THRESHOLDS
constexpr std::size_t Choose(std::size_t, std::size_t small) { return small; }
#else
constexpr std::size_t Choose(std::size_t usual, std::size_t) { return usual; }
#endif

// lib/model/pages.h and block.cpp: bytes of a large page, and of the least block that lies in large pages.
inline constexpr std::size_t largePage = Choose(std::size_t{2} << 20, 4096);
inline constexpr std::size_t smallestLarge = 2 * largePage;
// lib/model/timeindex.h: neighbours in a block of the search tree.
inline constexpr std::size_t fanout = Choose(16, 2);
// lib/target/knownentries.cpp: entries of one time that are looked at one by one.
inline constexpr std::size_t crowd = Choose(64, 1);
// lib/target/idindex.h: places of the hash table that are looked at for one id.
inline constexpr std::size_t probes = Choose(32, 1);
// lib/target/timecursor.h: entries beside the cursor that are looked at before its steps grow.
inline constexpr std::size_t neighbours = Choose(4, 1);
// lib/file/recordsorter.cpp: records that are sorted by time at once, how many of them are compared rather
// than sorted by digits, by how many the room for records grows at least, and the bits of a digit.
inline constexpr std::size_t sorted = Choose(4096, 8);
inline constexpr std::size_t compared = Choose(128, 2);
inline constexpr std::size_t recordRoom = Choose(1024, 1);
inline constexpr std::size_t digitBits = Choose(11, 4);
// lib/file/stream.h: bytes that a stream keeps back, and of a block within it, which holds the longest
// string.
#ifdef TASKLOG_FUZZ
// The address sanitizer maps each block of more than 128 KiB anew, for files that never fill it.
inline constexpr std::size_t streamBuffer = Choose(8192, 64);
#else
inline constexpr std::size_t streamBuffer = Choose(std::size_t{256} << 10, 64);
#endif
inline constexpr std::size_t fileBlock = Choose(4096, 256);
// lib/file/eventcategories.h: categories that are remembered.
inline constexpr std::size_t remembered = Choose(256, 2);

}  // namespace thresholds
