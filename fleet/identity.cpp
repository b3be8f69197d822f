#include "identity.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace fleet {
namespace {

constexpr std::size_t digestBytes = 16;

// The constants of RFC 7693.
constexpr std::array<std::uint64_t, 8> initial = {0x6A09E667F3BCC908, 0xBB67AE8584CAA73B, 0x3C6EF372FE94F82B,
                                                  0xA54FF53A5F1D36F1, 0x510E527FADE682D1, 0x9B05688C2B3E6C1F,
                                                  0x1F83D9ABFB41BD6B, 0x5BE0CD19137E2179};
constexpr unsigned char sigma[10][16] = {{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
                                         {14, 10, 4, 8, 9, 15, 13, 6, 1, 12, 0, 2, 11, 7, 5, 3},
                                         {11, 8, 12, 0, 5, 2, 15, 13, 10, 14, 3, 6, 7, 1, 9, 4},
                                         {7, 9, 3, 1, 13, 12, 11, 14, 2, 6, 5, 10, 4, 0, 15, 8},
                                         {9, 0, 5, 7, 2, 4, 10, 15, 14, 1, 11, 12, 6, 8, 3, 13},
                                         {2, 12, 6, 10, 0, 11, 8, 3, 4, 13, 7, 5, 15, 14, 1, 9},
                                         {12, 5, 1, 15, 14, 13, 4, 10, 0, 7, 6, 3, 9, 2, 8, 11},
                                         {13, 11, 7, 14, 12, 1, 3, 9, 5, 0, 15, 4, 8, 6, 2, 10},
                                         {6, 15, 14, 9, 11, 3, 0, 8, 12, 2, 13, 7, 1, 4, 10, 5},
                                         {10, 2, 8, 4, 7, 6, 1, 5, 15, 11, 9, 14, 3, 12, 13, 0}};

std::uint64_t LittleEndian(const unsigned char* bytes) {
  std::uint64_t value = 0;
  for (int i = 7; i >= 0; --i) value = value << 8 | bytes[i];
  return value;
}

void Mix(std::uint64_t& a, std::uint64_t& b, std::uint64_t& c, std::uint64_t& d, std::uint64_t x,
         std::uint64_t y) {
  a += b + x;
  d = std::rotr(d ^ a, 32);
  c += d;
  b = std::rotr(b ^ c, 24);
  a += b + y;
  d = std::rotr(d ^ a, 16);
  c += d;
  b = std::rotr(b ^ c, 63);
}

}  // namespace

Identity::Identity() : state_(initial) { state_[0] ^= 0x01010000 ^ digestBytes; }

void Identity::Add(std::string_view bytes) {
  const auto* next = reinterpret_cast<const unsigned char*>(bytes.data());
  std::size_t left = bytes.size();
  while (left > 0) {
    if (held_ == block_.size()) {  // only once more follows: the last block is told apart
      hashed_ += held_;
      Compress(block_.data(), false);
      held_ = 0;
    }
    const std::size_t taken = std::min(left, block_.size() - held_);
    std::memcpy(block_.data() + held_, next, taken);
    held_ += taken;
    next += taken;
    left -= taken;
  }
}

std::string Identity::Text() {
  hashed_ += held_;
  std::fill(block_.begin() + static_cast<std::ptrdiff_t>(held_), block_.end(), static_cast<unsigned char>(0));
  Compress(block_.data(), true);
  constexpr char digits[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < digestBytes; ++i) {
    const auto byte = static_cast<unsigned>(state_[i / 8] >> 8 * (i % 8)) & 0xFF;
    text += digits[byte >> 4];
    text += digits[byte & 15];
  }
  return text;
}

void Identity::Compress(const unsigned char* block, bool isLast) {
  std::uint64_t m[16];
  std::uint64_t v[16];
  for (int i = 0; i < 16; ++i) m[i] = LittleEndian(block + 8 * i);
  std::copy(state_.begin(), state_.end(), v);
  std::copy(initial.begin(), initial.end(), v + 8);
  v[12] ^= hashed_;
  if (isLast) v[14] = ~v[14];
  for (int round = 0; round < 12; ++round) {
    const unsigned char* s = sigma[round % 10];
    for (int i = 0; i < 4; ++i) Mix(v[i], v[4 + i], v[8 + i], v[12 + i], m[s[2 * i]], m[s[2 * i + 1]]);
    for (int i = 0; i < 4; ++i)
      Mix(v[i], v[4 + (i + 1) % 4], v[8 + (i + 2) % 4], v[12 + (i + 3) % 4], m[s[8 + 2 * i]],
          m[s[9 + 2 * i]]);
  }
  for (std::size_t i = 0; i < state_.size(); ++i) state_[i] ^= v[i] ^ v[i + 8];
}

}  // namespace fleet
