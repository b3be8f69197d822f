// TaskLog files made small for a page, and back to the same bytes. docs/viewer.md, Packed files, has the
// format.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "taskfile/format.h"

namespace taskfile {

// A file may come in portions. What a portion becomes can be unpacked behind what the ones before became.
// Anything can be packed; what is no record takes a little more than before. Time: the bytes.
class Packer {
 public:
  std::string Pack(std::string_view portion);

 private:
  static constexpr std::size_t mostRecords = 256;  // in a block
  static constexpr std::size_t leastRecords = 8;   // fewer are not worth a block

  // The records found from a place on.
  struct Found {
    std::size_t count = 0;
    std::size_t bytes = 0;
    std::array<const char*, mostRecords> at;
  };
  struct Known {
    u32 id = 0;
    u32 index = UINT32_MAX;
  };

  void Find(std::string_view bytes);
  void PutLiteral(std::string& packed, std::string_view bytes) const;
  void PutRecords(std::string& packed);
  void PutNames(std::string& packed);
  u32 IndexOf(u32 id);

  Found found_;
  std::array<u32, mostRecords> indexes_ = {};
  std::array<u32, mostRecords> distances_ = {};
  std::vector<u32> newIds_;
  std::vector<std::string> names_;  // by index: that of the last record of the id
  std::unordered_map<u32, u32> indexById_;
  std::array<Known, 1024> recent_ = {};
};

class Unpacker {
 public:
  // Appends to `bytes` what was packed. False: `packed` is damaged.
  bool Unpack(std::string_view packed, std::string& bytes);

 private:
  class Block;
  bool TakeRecords(Block& block, std::string& bytes);

  std::string padded_;
  std::vector<u32> ids_;
  std::vector<std::string> names_;
};

}  // namespace taskfile
