#include "taskfile/pack.h"
#include "taskfile/packed.h"

namespace taskfile {

// Reads what is left, and never behind it.
class Unpacker::Block {
 public:
  explicit Block(std::string_view rest) : rest_(rest) {}

  bool IsAtEnd() const { return rest_.empty(); }
  bool HasFailed() const { return hasFailed_; }
  std::string_view Bytes(std::size_t count) {
    if (count > rest_.size()) {
      hasFailed_ = true;
      return {};
    }
    const std::string_view bytes = rest_.substr(0, count);
    rest_.remove_prefix(count);
    return bytes;
  }
  template <class Integer>
  Integer Number() {
    const std::string_view bytes = Bytes(sizeof(Integer));
    return hasFailed_ ? Integer{0} : Load<Integer>(bytes, 0);
  }

 private:
  std::string_view rest_;
  bool hasFailed_ = false;
};

namespace {

// Behind the bytes of a column, `slack` more may be read.
class Column {
 public:
  Column(std::string_view bytes, int bits)
      : bytes_(bytes.data()), bits_(static_cast<std::size_t>(bits)), mask_((u64{1} << bits) - 1) {}
  u32 operator[](std::size_t i) const {
    const std::size_t bit = i * bits_;
    return static_cast<u32>(Load64(bytes_ + bit / 8) >> bit % 8 & mask_);
  }

 private:
  const char* bytes_;
  std::size_t bits_;
  u64 mask_;
};

}  // namespace

bool Unpacker::Unpack(std::string_view packed, std::string& bytes) {
  padded_.assign(packed);
  padded_.append(slack, '\0');
  Block block(std::string_view(padded_).substr(0, packed.size()));
  while (!block.IsAtEnd()) {
    const u8 kind = block.Number<u8>();
    if (kind == literalBlock)
      bytes += block.Bytes(block.Number<u32>());
    else if (kind != recordsBlock || !TakeRecords(block, bytes))
      return false;
    if (block.HasFailed()) return false;
  }
  return true;
}

bool Unpacker::TakeRecords(Block& block, std::string& bytes) {
  const std::size_t count = std::size_t{block.Number<u8>()} + 1;
  const int indexBits = block.Number<u8>();
  const int distanceBits = block.Number<u8>();
  if (indexBits > 32 || distanceBits > 32) return false;
  const u16 newIds = block.Number<u16>();
  u64 time = block.Number<u64>();
  for (u16 i = 0; i < newIds && !block.HasFailed(); ++i) ids_.push_back(block.Number<u32>());
  names_.resize(ids_.size());
  const Column koTypes(block.Bytes(ColumnSize(count, koBits)), koBits);
  const Column indexes(block.Bytes(ColumnSize(count, indexBits)), indexBits);
  const Column distances(block.Bytes(ColumnSize(count, distanceBits)), distanceBits);
  for (std::size_t i = 0; i < count && !block.HasFailed(); ++i) {
    const u32 koType = koTypes[i];
    const u32 index = indexes[i];
    if (index >= ids_.size()) return false;
    time += distances[i];
    char record[recordSize + 4];
    Store32(record, koType);
    Store32(record + 4, ids_[index]);
    Store32(record + 8, static_cast<u32>(time));
    Store32(record + 12, static_cast<u32>(time >> 32));
    if (!HasName(koType)) {
      bytes.append(record, recordSize);
      continue;
    }
    const u16 size = block.Number<u16>();
    if (size != sameName) names_[index] = block.Bytes(size);
    Store32(record + recordSize, static_cast<u32>(names_[index].size()));
    bytes.append(record, recordSize + 4).append(names_[index]);
  }
  return !block.HasFailed();
}

}  // namespace taskfile
