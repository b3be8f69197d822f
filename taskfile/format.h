// What a TaskLog file is made of, byte by byte: docs/file-format.md.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace taskfile {

using u8 = std::uint8_t;
using u16 = std::uint16_t;
using u32 = std::uint32_t;
using u64 = std::uint64_t;

inline constexpr std::string_view magic = "TaskLogger";
inline constexpr u16 newestBaseVersion = 0x0103;  // a reader refuses what is newer
inline constexpr u16 newestVersion = 0x0104;      // what is newer is laid out like it

// Offsets in the header.
inline constexpr std::size_t baseVersionAt = 10;
inline constexpr std::size_t fileVersionAt = 12;
inline constexpr std::size_t startTimeAt = 14;
inline constexpr std::size_t stopTimeAt = 22;
inline constexpr std::size_t tickRateAt = 30;
inline constexpr std::size_t divisorAt = 34;
inline constexpr std::size_t taskCountAt = 38;
inline constexpr std::size_t headerSize = 42;

inline constexpr std::size_t recordSize = 16;    // without a name
inline constexpr std::size_t longestName = 256;  // its NUL included
// Of a section's header, what stands around the name: its length; priority, time slice, record count.
inline constexpr std::size_t sectionHeaderSize = 16;

inline constexpr u8 koSwitchedIn = 2;
inline constexpr u8 koSwitchedOut1 = 3;
inline constexpr u8 koLastOfTask = 6;  // Ko types 0 to 6 stand in sections of tasks
inline constexpr u8 koTestpoint = 7;
inline constexpr u8 koTimingIssue = 8;
// By the Ko type of the section's first and last entry record.
inline constexpr u8 prologKoTypes[] = {3, 3, 4, 3, 2, 2, 2, 3, 3};
inline constexpr u8 epilogKoTypes[] = {2, 3, 3, 1, 2, 2, 2, 1, 1};

// Records of other Ko types say nothing of a task.
inline u8 PrologOf(u8 koType) { return koType <= koTimingIssue ? prologKoTypes[koType] : koSwitchedOut1; }
inline u8 EpilogOf(u8 koType) { return koType <= koTimingIssue ? epilogKoTypes[koType] : koSwitchedIn; }

template <class Integer>
Integer Load(std::string_view bytes, std::size_t at) {
  Integer value = 0;
  for (std::size_t i = 0; i < sizeof(Integer); ++i)
    value = static_cast<Integer>(value | static_cast<Integer>(static_cast<u8>(bytes[at + i])) << 8 * i);
  return value;
}

struct Header {
  u16 baseVersion = newestBaseVersion;
  u16 fileVersion = newestVersion;
  u64 startTime = 0;  // ticks
  u64 stopTime = 0;   // ticks
  u32 tickRate = 0;
  u32 divisor = 1;
  u32 taskCount = 0;

  u32 Version() const { return std::max(baseVersion, fileVersion); }
  // Needs `headerSize` bytes; judges none of them.
  static Header In(std::string_view bytes);
};

// What a version brings.
struct Layout {
  bool hasStamps;
  bool namesStamps;
  bool hasEvents;  // whose records have names

  explicit Layout(u32 version)
      : hasStamps(version > 0x0100), namesStamps(version > 0x0101), hasEvents(version > 0x0102) {}
  bool HasName(u8 koType) const {
    return (koType == koTestpoint && namesStamps) || (koType == koTimingIssue && hasEvents);
  }
  int EventSections() const { return (hasStamps ? 1 : 0) + (hasEvents ? 1 : 0); }
};

enum class Kind { task, stamps, events };
inline std::string_view NameOf(Kind kind) { return kind == Kind::stamps ? "Stamps" : "Events"; }

struct Record {
  u32 koWord = 0;  // a reader takes the lowest byte alone
  u32 id = 0;
  u64 time = 0;                // ticks
  std::size_t size = 0;        // of the whole record; 0: it does not lie whole in the file
  std::string_view name = {};  // all its bytes, the NUL included

  u8 KoType() const { return static_cast<u8>(koWord); }
};

// Reads the record at an offset, as a reader does.
Record RecordAt(std::string_view bytes, std::size_t at, const Layout& layout);

// The text that a reader makes of a name's bytes.
std::string_view TextOf(std::string_view name);

struct Section {
  Kind kind = Kind::task;
  std::size_t at = 0;          // where its header begins
  std::string_view name = {};  // all its bytes, the NUL included
  u32 priority = 0;
  u32 timeSlice = 0;
  u32 count = 0;  // of records, as the header states it
  std::size_t recordsAt = 0;

  std::size_t CountAt() const { return recordsAt - sizeof count; }
  // Where the records end, when all take as much as one without a name.
  u64 PlainEnd() const { return recordsAt + u64{recordSize} * count; }
};

// A header with a name of `nameSize` bytes at an offset; they must lie in the file.
Section SectionAt(std::string_view bytes, std::size_t at, std::size_t nameSize, Kind kind);

inline bool LiesIn(std::string_view bytes, u64 at, u64 size) {
  return at <= bytes.size() && size <= bytes.size() - at;
}

// Whether a reader takes a section's record for a prolog or an epilog.
inline bool IsProlog(const Record& record, const Header& header) {
  return record.time == header.startTime && record.KoType() >= koSwitchedOut1 &&
         record.KoType() <= koLastOfTask;
}

}  // namespace taskfile
