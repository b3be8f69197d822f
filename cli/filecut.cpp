#include "filecut.h"

#include <algorithm>
#include <vector>

#include "failure.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::string_view marker = "TaskLogger";
constexpr std::size_t startOffset = 14;
constexpr std::size_t stopOffset = 22;
constexpr std::size_t taskCountOffset = 38;
constexpr std::size_t recordBytes = 16;
constexpr std::uint16_t versionBeforeStamps = 0x0100;
constexpr std::uint16_t versionBeforeStampNames = 0x0101;
constexpr std::uint16_t versionBeforeEvents = 0x0102;

struct EndsEarly {};

template <class Number>
Number Little(std::string_view bytes, std::size_t offset) {
  if (bytes.size() < offset + sizeof(Number)) throw EndsEarly();
  Number value = 0;
  for (std::size_t i = sizeof(Number); i-- > 0;) {
    value = static_cast<Number>(value << 8 | static_cast<unsigned char>(bytes[offset + i]));
  }
  return value;
}

template <class Number>
void PutLittle(std::string& bytes, std::size_t offset, Number value) {
  for (std::size_t i = 0; i < sizeof(Number); ++i) bytes[offset + i] = static_cast<char>(value >> 8 * i);
}

class Cutter {
 public:
  Cutter(std::string_view bytes, const FileCut& cut)
      : rest_(bytes),
        cut_(cut),
        period_{Little<std::uint64_t>(bytes, startOffset), Little<std::uint64_t>(bytes, stopOffset)},
        version_(std::max(Little<std::uint16_t>(bytes, marker.size()),
                          Little<std::uint16_t>(bytes, marker.size() + 2))) {}

  std::string Cut() {
    std::uint64_t sections = Little<std::uint32_t>(rest_, taskCountOffset);
    sections += (version_ > versionBeforeStamps ? 1 : 0) + (version_ > versionBeforeEvents ? 1 : 0);
    out_.reserve(rest_.size());
    out_ += Take(headerBytes);
    if (!cut_.isFirst) PutLittle(out_, startOffset, cut_.start);
    for (; sections > 0; --sections) CutSection();
    return std::move(out_);
  }

 private:
  struct Record {
    std::uint8_t koType;
    std::uint32_t id;
    std::uint64_t ticks;
  };

  std::string_view Take(std::size_t count) {
    if (rest_.size() < count) throw EndsEarly();
    const std::string_view taken = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return taken;
  }

  std::string_view TakeRecord() {
    const auto koType = Little<std::uint8_t>(rest_, 0);
    const bool named = (koType == 7 && version_ > versionBeforeStampNames) ||
                       (koType == 8 && version_ > versionBeforeEvents);
    return Take(named ? recordBytes + 4 + std::size_t{Little<std::uint32_t>(rest_, recordBytes)}
                      : recordBytes);
  }

  void CutSection() {
    constexpr std::size_t behindName = 12;  // priority, time slice, count
    out_ += Take(4 + std::size_t{Little<std::uint32_t>(rest_, 0)} + behindName);
    const std::size_t countAt = out_.size() - 4;
    const auto count = Little<std::uint32_t>(out_, countAt);
    std::uint32_t kept = 0;
    for (std::uint32_t i = 0; i < count; ++i) {
      const std::string_view bytes = TakeRecord();
      const Record record{Little<std::uint8_t>(bytes, 0), Little<std::uint32_t>(bytes, 4),
                          Little<std::uint64_t>(bytes, 8)};
      if (!Stays(record, i == 0, i + 1 == count, kept)) continue;
      out_ += bytes;
      ++kept;
    }
    PutLittle(out_, countAt, kept);
  }

  bool Stays(const Record& record, bool first, bool last, std::uint32_t keptBefore) const {
    if (record.ticks < cut_.from || record.ticks > cut_.to) return false;
    if (!cut_.isFirst && first && IsProlog(record)) return false;
    // An epilog is told by what stands before it in its section.
    return first || !last || record.ticks != period_.stop || keptBefore > 0;
  }

  // One of Ko type 2 is told from a switch by its id, which a task seldom lacks.
  bool IsProlog(const Record& record) const {
    if (record.ticks != period_.start) return false;
    return (record.koType >= 3 && record.koType <= 6) || (record.koType == 2 && record.id == 0);
  }

  std::string_view rest_;
  const FileCut& cut_;
  Period period_;
  std::uint16_t version_;
  std::string out_;
};

}  // namespace

Period PeriodOf(std::string_view bytes) {
  if (bytes.size() < headerBytes || !bytes.starts_with(marker)) return {};
  return {Little<std::uint64_t>(bytes, startOffset), Little<std::uint64_t>(bytes, stopOffset)};
}

std::string CutFile(std::string_view bytes, const FileCut& cut, const std::string& shownPath) {
  try {
    return Cutter(bytes, cut).Cut();
  } catch (const EndsEarly&) {
    throw Failure("reading " + Quoted(shownPath), TLErrFileInvalid, "it is cut short");
  }
}

}  // namespace cli
