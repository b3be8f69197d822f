#include "taskfile/base64.h"

#include <array>

#include "taskfile/format.h"

namespace taskfile {
namespace {

constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr u8 noDigit = 0xFF;

constexpr std::array<u8, 256> valuesOf = [] {
  std::array<u8, 256> values = {};
  values.fill(noDigit);
  for (u8 value = 0; value < 64; ++value) values[static_cast<u8>(digits[value])] = value;
  return values;
}();

u8 ValueOf(char digit) { return valuesOf[static_cast<u8>(digit)]; }

// Of up to three bytes.
void PutGroup(char* text, const char* bytes, std::size_t count) {
  u32 word = 0;
  for (std::size_t i = 0; i < 3; ++i) word = word << 8 | (i < count ? static_cast<u8>(bytes[i]) : 0);
  for (std::size_t i = 0; i < 4; ++i) text[i] = i <= count ? digits[word >> (18 - 6 * i) & 63] : '=';
}

}  // namespace

std::string Base64Of(std::string_view bytes) {
  std::string text((bytes.size() + 2) / 3 * 4, '\0');
  char* at = text.data();
  std::size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3, at += 4) PutGroup(at, bytes.data() + i, 3);
  if (i < bytes.size()) PutGroup(at, bytes.data() + i, bytes.size() - i);
  return text;
}

bool FromBase64(std::string_view text, std::string& bytes) {
  if (text.size() % 4 != 0) return false;
  std::size_t padding = 0;
  while (padding < 2 && padding < text.size() && text[text.size() - 1 - padding] == '=') ++padding;
  const std::size_t begin = bytes.size();
  bytes.resize(begin + text.size() / 4 * 3);
  char* to = bytes.data() + begin;
  u8 all = 0;
  for (std::size_t i = 0; i < text.size(); i += 4, to += 3) {
    const bool isLast = i + 4 == text.size();
    const u8 third = isLast && padding == 2 ? 0 : ValueOf(text[i + 2]);
    const u8 fourth = isLast && padding > 0 ? 0 : ValueOf(text[i + 3]);
    const u8 first = ValueOf(text[i]);
    const u8 second = ValueOf(text[i + 1]);
    all |= first | second | third | fourth;
    const u32 word = u32{first} << 18 | u32{second} << 12 | u32{third} << 6 | fourth;
    to[0] = static_cast<char>(word >> 16);
    to[1] = static_cast<char>(word >> 8);
    to[2] = static_cast<char>(word);
  }
  bytes.resize(bytes.size() - padding);
  return (all & 0xC0) == 0;
}

}  // namespace taskfile
