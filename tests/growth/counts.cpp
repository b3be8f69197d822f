// Runs the driver under callgrind and reads what it dumped.
#include "growth/counts.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>

namespace growth {
namespace {

// Names are looked up before anything is counted. Copies are counted as some instructions for a block of
// bytes, not as one for each byte, so that whether the system grows a block in place makes no difference.
constexpr char environment[] = "LD_BIND_NOW=1 GLIBC_TUNABLES=glibc.cpu.x86_rep_movsb_threshold=1000000000 ";

// A folder of this test alone, removed at the end.
class Folder {
 public:
  Folder() {
    if (!mkdtemp(path_)) throw std::runtime_error("no temporary folder");
  }
  ~Folder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  std::string Path() const { return path_; }

 private:
  char path_[sizeof "/tmp/growth-XXXXXX"] = "/tmp/growth-XXXXXX";
};

// What stands behind a word at the start of a line; empty when there is no such line.
std::string Behind(std::string_view word, const std::filesystem::path& path) {
  std::ifstream file(path);
  for (std::string line; std::getline(file, line);)
    if (line.starts_with(word)) return line.substr(word.size());
  return {};
}

}  // namespace

std::map<std::string, double> CountInstructions() {
  const Folder folder;
  const std::string command = std::string(environment) + "'" + GROWTH_VALGRIND +
                              "' --tool=callgrind --instr-atstart=no --callgrind-out-file='" + folder.Path() +
                              "/counts' '" + GROWTH_DRIVER + "' >'" + folder.Path() + "/log' 2>&1";
  if (std::system(command.c_str()) != 0) {
    std::ifstream log(folder.Path() + "/log");
    throw std::runtime_error("failed: " + command + "\n" +
                             std::string(std::istreambuf_iterator<char>(log), {}));
  }
  std::map<std::string, double> counts;
  for (const auto& file : std::filesystem::directory_iterator(folder.Path())) {
    const std::string label = Behind("desc: Trigger: Client Request: ", file.path());
    if (!label.empty()) counts[label] = std::stod(Behind("totals: ", file.path()));
  }
  return counts;
}

}  // namespace growth
