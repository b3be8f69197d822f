// Runs a fuzz target over variations of its corpus, the same ones each time: many more logs, controllers and
// sequences than anybody would write down, each compared with the plain model.
// usage: <name>_varied FOLDER RUNS
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace {

using Bytes = std::vector<std::uint8_t>;

std::vector<Bytes> Corpus(const char* folder) {
  std::vector<std::filesystem::path> paths;
  for (const auto& file : std::filesystem::directory_iterator(folder)) paths.push_back(file.path());
  std::sort(paths.begin(), paths.end());
  std::vector<Bytes> corpus;
  for (const auto& path : paths) {
    std::ifstream stream(path, std::ios::binary);
    corpus.emplace_back(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>());
  }
  return corpus;
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

int main(int argc, char** argv) {
  const std::vector<Bytes> corpus = argc == 3 ? Corpus(argv[1]) : std::vector<Bytes>();
  if (corpus.empty()) {
    std::fputs("usage: <name>_varied FOLDER RUNS, with inputs in the folder\n", stderr);
    return 2;
  }
  std::mt19937 random(1);  // NOLINT: the same each time
  for (long run = std::atol(argv[2]); run > 0; --run) {
    const Bytes& one = corpus[static_cast<std::size_t>(run) % corpus.size()];
    const Bytes& other = corpus[random() % corpus.size()];
    Run(Vary(one, other, random));
  }
  return 0;
}
