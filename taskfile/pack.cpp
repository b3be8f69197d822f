#include "taskfile/pack.h"

#include <bit>

#include "taskfile/packed.h"

namespace taskfile {
namespace {

template <class Integer>
void Append(std::string& bytes, Integer value) {
  for (std::size_t i = 0; i < sizeof(Integer); ++i) bytes += static_cast<char>(value >> 8 * i);
}

// Numbers of some bits each, the lowest bits first.
template <class NumberOf>
void AppendColumn(std::string& bytes, std::size_t count, int bits, NumberOf numberOf) {
  const std::size_t begin = bytes.size();
  const std::size_t size = ColumnSize(count, bits);
  bytes.resize(begin + size + slack);
  char* at = bytes.data() + begin;
  u64 held = 0;
  int used = 0;
  for (std::size_t i = 0; i < count; ++i) {
    held |= u64{numberOf(i)} << used;
    used += bits;
    if (used < 32) continue;
    Store32(at, static_cast<u32>(held));
    at += 4;
    held >>= 32;
    used -= 32;
  }
  Store32(at, static_cast<u32>(held));
  bytes.resize(begin + size);
}

u32 KoTypeAt(const char* record) { return Load32(record); }
u64 TimeAt(const char* record) { return Load64(record + 8); }

// Of the record that begins there, with its name; 0: there is none.
std::size_t SizeOfRecord(std::string_view bytes) {
  if (bytes.size() < recordSize) return 0;
  const u32 koType = KoTypeAt(bytes.data());
  if (koType > koTimingIssue) return 0;
  if (!HasName(koType)) return recordSize;
  if (bytes.size() < recordSize + 4) return 0;
  const std::size_t size = Load32(bytes.data() + recordSize);
  return size > longestName || bytes.size() < recordSize + 4 + size ? 0 : recordSize + 4 + size;
}

}  // namespace

std::string Packer::Pack(std::string_view portion) {
  std::string packed;
  packed.reserve(portion.size() / 3);
  std::size_t literal = 0;
  for (std::size_t at = 0; at < portion.size();) {
    Find(portion.substr(at));
    if (found_.count < leastRecords) {
      ++at;
      continue;
    }
    PutLiteral(packed, portion.substr(literal, at - literal));
    PutRecords(packed);
    literal = at += found_.bytes;
  }
  PutLiteral(packed, portion.substr(literal));
  return packed;
}

// Records in order of time, less than 32 bits of ticks apart. Where there are too few, little is looked at.
void Packer::Find(std::string_view bytes) {
  found_.count = 0;
  found_.bytes = 0;
  u64 last = 0;
  while (found_.count < mostRecords) {
    const std::size_t size = SizeOfRecord(bytes.substr(found_.bytes));
    if (size == 0) return;
    const char* record = bytes.data() + found_.bytes;
    const u64 time = TimeAt(record);
    if (found_.count > 0 && (time < last || time - last > UINT32_MAX)) return;
    last = time;
    found_.at[found_.count++] = record;
    found_.bytes += size;
  }
}

void Packer::PutLiteral(std::string& packed, std::string_view bytes) const {
  if (bytes.empty()) return;
  packed += static_cast<char>(literalBlock);
  Append(packed, static_cast<u32>(bytes.size()));
  packed += bytes;
}

void Packer::PutRecords(std::string& packed) {
  const std::size_t count = found_.count;
  u32 indexes = 0;  // all of them together, for the bits they need
  u32 distances = 0;
  u64 last = TimeAt(found_.at[0]);
  newIds_.clear();
  for (std::size_t i = 0; i < count; ++i) {
    indexes |= indexes_[i] = IndexOf(Load32(found_.at[i] + 4));
    const u64 time = TimeAt(found_.at[i]);
    distances |= distances_[i] = static_cast<u32>(time - last);
    last = time;
  }
  const int indexBits = std::bit_width(indexes);
  const int distanceBits = std::bit_width(distances);
  packed += static_cast<char>(recordsBlock);
  packed += static_cast<char>(count - 1);
  packed += static_cast<char>(indexBits);
  packed += static_cast<char>(distanceBits);
  Append(packed, static_cast<u16>(newIds_.size()));
  Append(packed, TimeAt(found_.at[0]));
  for (const u32 id : newIds_) Append(packed, id);
  AppendColumn(packed, count, koBits, [&](std::size_t i) { return KoTypeAt(found_.at[i]); });
  AppendColumn(packed, count, indexBits, [&](std::size_t i) { return indexes_[i]; });
  AppendColumn(packed, count, distanceBits, [&](std::size_t i) { return distances_[i]; });
  PutNames(packed);
}

void Packer::PutNames(std::string& packed) {
  for (std::size_t i = 0; i < found_.count; ++i) {
    const char* record = found_.at[i];
    if (!HasName(KoTypeAt(record))) continue;
    const std::string_view name(record + recordSize + 4, Load32(record + recordSize));
    std::string& last = names_[indexes_[i]];
    if (name == last) {
      Append(packed, sameName);
      continue;
    }
    Append(packed, static_cast<u16>(name.size()));
    packed += name;
    last = name;
  }
}

u32 Packer::IndexOf(u32 id) {
  Known& recent = recent_[id * 0x9E3779B1U >> 22];
  if (recent.index != UINT32_MAX && recent.id == id) return recent.index;
  const auto [place, isNew] = indexById_.try_emplace(id, static_cast<u32>(names_.size()));
  if (isNew) {
    newIds_.push_back(id);
    names_.emplace_back();
  }
  recent = {id, place->second};
  return place->second;
}

}  // namespace taskfile
