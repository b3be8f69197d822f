// What a recording is known by: a hash of its content (BLAKE2b, 128 bits), so that whoever summarizes it,
// wherever it lies by then, gives it the same name.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace fleet {

class Identity {
 public:
  Identity();

  void Add(std::string_view bytes);
  // Behind the last byte: 32 hexadecimal digits.
  std::string Text();

 private:
  void Compress(const unsigned char* block, bool isLast);

  std::array<std::uint64_t, 8> state_;
  std::array<unsigned char, 128> block_ = {};
  std::size_t held_ = 0;  // bytes in `block_`
  std::uint64_t hashed_ = 0;
};

}  // namespace fleet
