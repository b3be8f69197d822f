// The input is a name as a file or a controller may hold it. What the command shows of it is plain text, and
// tells two names apart.
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <string>

#include "check.h"
#include "commandline.h"
#include "memoryfile.h"
#include "text.h"

namespace {

using fuzz::Require;

bool IsUtf8(std::string_view bytes) {
  try {
    nlohmann::json(bytes).dump();
    return true;
  } catch (const nlohmann::json::type_error&) {
    return false;
  }
}

// Nothing that steers a terminal: no control characters of either set, no broken UTF-8.
void RequireSafe(std::string_view text, std::string_view allowed = {}) {
  Require(IsUtf8(text), "what is shown is UTF-8");
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    Require((c >= 0x20 && c != 0x7F) || allowed.find(text[i]) != std::string_view::npos,
            "what is shown holds no control character");
    const bool upperSet = c == 0xC2 && static_cast<unsigned char>(text[i + 1]) < 0xA0;
    Require(!upperSet, "what is shown holds no control character of the upper set");
  }
}

std::string Unescaped(std::string_view safe) {
  std::string bytes;
  for (std::size_t i = 0; i < safe.size(); ++i) {
    if (safe[i] != '\\') {
      bytes += safe[i];
    } else if (safe[++i] == '\\') {
      bytes += '\\';
    } else {
      bytes += static_cast<char>(std::stoi(std::string(safe.substr(i + 1, 2)), nullptr, 16));
      i += 2;
    }
  }
  return bytes;
}

void CheckText(const std::string& bytes) {
  const std::string safe = cli::SafeText(bytes);
  RequireSafe(safe);
  Require(Unescaped(safe) == bytes, "safe text loses nothing");
  RequireSafe(cli::CsvField(bytes));
  const std::string json = cli::JsonString(bytes);
  RequireSafe(json);
  const auto parsed = nlohmann::json::parse(json).get<std::string>();
  Require(!IsUtf8(bytes) || parsed == bytes, "a JSON string holds the text");
}

// Standard output, caught in memory.
fuzz::MemoryFile& Output() {
  static fuzz::MemoryFile file;
  return file;
}

void CheckList(const std::string& name) {
  const fuzz::MemoryFile file(
      TaskFile({.startTime = 1000, .stopTime = 2000}, {{name, 1, 0, {{2, 5, 1002}}}}));
  for (const char* format : {"text", "csv", "json"}) {
    Require(ftruncate(Output().Descriptor(), 0) == 0, "the caught output can be cleared");
    lseek(STDOUT_FILENO, 0, SEEK_SET);
    Require(cli::RunCommandLine({"list", file.Path(), "--format", format}) == 0, "any name can be listed");
    const Bytes bytes = Output().Content();
    RequireSafe(std::string(bytes.begin(), bytes.end()), "\r\n");
    Require(std::count(bytes.begin(), bytes.end(), '\n') == (*format == 'j' ? 3 : 2), "an entry is one line");
  }
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  Require(dup2(Output().Descriptor(), STDOUT_FILENO) == STDOUT_FILENO, "standard output can be caught");
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string name(reinterpret_cast<const char*>(data), std::min<std::size_t>(size, 4096));
  CheckText(name);
  CheckList(name.substr(0, std::min<std::size_t>(name.find('\0'), 255)));
  return 0;
}
