// Stands in for the fuzzer in ordinary builds: runs a target over a file, or over all files of a folder, and
// then over as many variations of them as asked for, the same ones each time: many more logs, controllers and
// sequences than anybody would write down. usage: <name>_fuzz PLACE [RUNS]
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" [[gnu::weak]] int LLVMFuzzerInitialize(int* argumentCount, char*** arguments);

namespace {

namespace fs = std::filesystem;
using Bytes = std::vector<std::uint8_t>;

std::vector<fs::path> FilesOf(const fs::path& place) {
  if (!fs::is_directory(place)) return {place};
  std::vector<fs::path> files;
  for (const auto& file : fs::directory_iterator(place)) files.push_back(file.path());
  std::sort(files.begin(), files.end());
  return files;
}

// Some bytes changed, doubled or taken out, and perhaps the end of another input behind.
Bytes Vary(Bytes bytes, const Bytes& other, std::mt19937& random) {
  for (auto change = random() % 8; change-- > 0 && !bytes.empty();) {
    const auto at = bytes.begin() + static_cast<std::ptrdiff_t>(random() % bytes.size());
    const auto kind = random() % 4;
    if (kind == 0) bytes.erase(at);
    if (kind == 1) bytes.insert(at, *at);
    if (kind == 2) *at = static_cast<std::uint8_t>(random());
    if (kind == 3) *at = static_cast<std::uint8_t>(*at ^ 1u << random() % 8);
  }
  const auto keep = static_cast<std::ptrdiff_t>(random() % (other.size() + 1));
  if (random() % 4 == 0) bytes.insert(bytes.end(), other.begin() + keep, other.end());
  return bytes;
}

// What the target complains about is kept, to be replayed and put into the corpus.
void Run(const Bytes& input) try { LLVMFuzzerTestOneInput(input.data(), input.size()); } catch (...) {
  std::fputs("the input is kept as failing_input\n", stderr);
  std::ofstream("failing_input", std::ios::binary)
      .write(reinterpret_cast<const char*>(input.data()), static_cast<std::streamsize>(input.size()));
  throw;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (LLVMFuzzerInitialize) LLVMFuzzerInitialize(&argumentCount, &arguments);
  std::vector<Bytes> corpus;
  for (const fs::path& path : argumentCount > 1 ? FilesOf(arguments[1]) : std::vector<fs::path>()) {
    std::fprintf(stderr, "%s\n", path.filename().c_str());  // seen when it is the last line before a crash
    std::ifstream file(path, std::ios::binary);
    Run(corpus.emplace_back(std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()));
  }
  std::mt19937 random(1);  // NOLINT: the same each time
  for (long run = argumentCount > 2 ? std::atol(arguments[2]) : 0; run > 0; --run) {
    const Bytes& one = corpus.at(static_cast<std::size_t>(run) % corpus.size());
    const Bytes& other = corpus.at(random() % corpus.size());
    Run(Vary(one, other, random));
  }
  return corpus.empty() ? 1 : 0;
}
