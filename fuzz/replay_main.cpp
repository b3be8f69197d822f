// Stands in for the fuzzer in ordinary builds: runs a target over files, or over all files of folders, in
// order of their names.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> FilesOf(const fs::path& place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files;
  for (const auto& file : fs::directory_iterator(place)) files.push_back(file.path());
  std::sort(files.begin(), files.end());
  return files;
}

void Replay(const fs::path& path) {
  // Seen when it is the last line before a crash.
  std::fprintf(stderr, "%s\n", path.filename().c_str());
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes(std::istreambuf_iterator<char>(file), {});
  LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argumentCount, &arguments);
  std::size_t count = 0;
  for (int i = 1; i < argumentCount; ++i) {
    for (const fs::path& path : FilesOf(arguments[i])) {
      Replay(path);
      ++count;
    }
  }
  std::fprintf(stderr, "%zu inputs\n", count);
  return count > 0 ? 0 : 1;
}
