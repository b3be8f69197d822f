// UTF-8 is checked here as RFC 3629 has it: no overlong forms, no surrogates, nothing above U+10FFFF.
#include "text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <iterator>

namespace exporters {
namespace {

struct Character {
  std::uint32_t code;
  std::size_t length;  // 0: the bytes are no UTF-8
};

// The length that a first byte announces; 0 when no character begins with it.
std::size_t AnnouncedLength(unsigned char first) {
  if (first < 0x80) return 1;
  if (first >= 0xC2 && first < 0xE0) return 2;
  if (first >= 0xE0 && first < 0xF0) return 3;
  if (first >= 0xF0 && first < 0xF5) return 4;
  return 0;
}

Character FirstCharacter(std::string_view bytes) {
  const auto first = static_cast<unsigned char>(bytes[0]);
  const std::size_t length = AnnouncedLength(first);
  if (length == 0 || length > bytes.size()) return {first, 0};
  if (length == 1) return {first, 1};
  std::uint32_t code = first & (0x7Fu >> length);
  for (const char c : bytes.substr(1, length - 1)) {
    if ((c & 0xC0) != 0x80) return {first, 0};
    code = code << 6 | (c & 0x3Fu);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  const bool noCharacter = (code >= 0xD800 && code < 0xE000) || code > 0x10FFFF;
  return overlong || noCharacter ? Character{first, 0} : Character{code, length};
}

// Control characters, and the characters that turn or hide the text around them.
bool SteersTerminal(std::uint32_t code) {
  struct Span {
    std::uint32_t first, last;
  };
  constexpr Span spans[] = {{0x00, 0x1F},     {0x7F, 0x9F},     {0x061C, 0x061C}, {0x200B, 0x200F},
                            {0x2028, 0x202E}, {0x2060, 0x206F}, {0xFEFF, 0xFEFF}};
  return std::any_of(std::begin(spans), std::end(spans),
                     [code](const Span& span) { return code >= span.first && code <= span.last; });
}

void AppendHexBytes(std::string& out, std::string_view bytes) {
  for (const char c : bytes) out += fmt::format("\\x{:02X}", static_cast<unsigned char>(c));
}

// Calls `plain` for each run of harmless bytes of one character and `bad` for all others.
template <class Plain, class Bad>
void ForEachCharacter(std::string_view bytes, Plain plain, Bad bad) {
  while (!bytes.empty()) {
    const Character character = FirstCharacter(bytes);
    const std::string_view text = bytes.substr(0, std::max<std::size_t>(character.length, 1));
    if (character.length == 0 || SteersTerminal(character.code)) {
      bad(text, character.code);
    } else {
      plain(text);
    }
    bytes.remove_prefix(text.size());
  }
}

}  // namespace

std::string SafeText(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  ForEachCharacter(
      bytes, [&](std::string_view text) { out += text == "\\" ? "\\\\" : text; },
      [&](std::string_view text, std::uint32_t) { AppendHexBytes(out, text); });
  return out;
}

bool IsHarmless(std::string_view bytes) {
  bool harmless = true;
  ForEachCharacter(
      bytes, [](std::string_view) {}, [&](std::string_view, std::uint32_t) { harmless = false; });
  return harmless;
}

std::string Quoted(std::string_view bytes) { return "'" + SafeText(bytes) + "'"; }

std::string CsvField(std::string_view bytes) {
  const std::string safe = SafeText(bytes);
  if (safe.find_first_of("\",") == std::string::npos) return safe;
  std::string out = "\"";
  for (const char c : safe) out.append(c == '"' ? 2 : 1, c);
  return out + '"';
}

std::string JsonString(std::string_view bytes) {
  std::string out = "\"";
  const auto plain = [&](std::string_view text) {
    if (text == "\"" || text == "\\") out += '\\';
    out += text;
  };
  const auto bad = [&](std::string_view, std::uint32_t code) { out += fmt::format("\\u{:04x}", code); };
  ForEachCharacter(bytes, plain, bad);
  return out + '"';
}

std::string SnakeCase(std::string_view camelCase) {
  std::string out;
  for (const char c : camelCase) {
    const bool isUpper = c >= 'A' && c <= 'Z';
    if (isUpper) out += '_';
    out += isUpper ? static_cast<char>(c - 'A' + 'a') : c;
  }
  return out;
}

std::size_t DisplayWidth(std::string_view utf8) {
  return static_cast<std::size_t>(
      std::count_if(utf8.begin(), utf8.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

}  // namespace exporters
