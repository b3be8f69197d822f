#include "taskfile/format.h"

namespace taskfile {

Header Header::In(std::string_view bytes) {
  return {.baseVersion = Load<u16>(bytes, baseVersionAt),
          .fileVersion = Load<u16>(bytes, fileVersionAt),
          .startTime = Load<u64>(bytes, startTimeAt),
          .stopTime = Load<u64>(bytes, stopTimeAt),
          .tickRate = Load<u32>(bytes, tickRateAt),
          .divisor = Load<u32>(bytes, divisorAt),
          .taskCount = Load<u32>(bytes, taskCountAt)};
}

Record RecordAt(std::string_view bytes, std::size_t at, const Layout& layout) {
  Record record;
  if (!LiesIn(bytes, at, recordSize)) return record;
  record.koWord = Load<u32>(bytes, at);
  record.id = Load<u32>(bytes, at + 4);
  record.time = Load<u64>(bytes, at + 8);
  if (!layout.HasName(record.KoType())) {
    record.size = recordSize;
    return record;
  }
  if (!LiesIn(bytes, at, recordSize + 4)) return record;
  const u32 length = Load<u32>(bytes, at + recordSize);
  if (length > longestName || !LiesIn(bytes, at, recordSize + 4 + length)) return record;
  record.size = recordSize + 4 + length;
  record.name = bytes.substr(at + recordSize + 4, length);
  return record;
}

std::string_view TextOf(std::string_view name) {
  return name.substr(0, std::min(name.find('\0'), longestName - 1));
}

Section SectionAt(std::string_view bytes, std::size_t at, std::size_t nameSize, Kind kind) {
  const std::size_t behindName = at + 4 + nameSize;
  return {.kind = kind,
          .at = at,
          .name = bytes.substr(at + 4, nameSize),
          .priority = Load<u32>(bytes, behindName),
          .timeSlice = Load<u32>(bytes, behindName + 4),
          .count = Load<u32>(bytes, behindName + 8),
          .recordsAt = at + sectionHeaderSize + nameSize};
}

}  // namespace taskfile
