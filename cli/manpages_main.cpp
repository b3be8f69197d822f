// Writes the manual pages while the project is built: manpages FOLDER.
#include <fstream>
#include <iostream>

#include "manpage.h"

namespace {

void Write(const std::string& path, const std::string& page) {
  std::ofstream file(path, std::ios::binary);
  file << page << std::flush;
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc != 2) throw std::runtime_error("usage: manpages FOLDER");
  const std::string folder = argv[1];
  Write(folder + "/tasklog.1", cli::ManPage());
  for (const cli::Command* command : cli::Commands())
    Write(folder + "/tasklog-" + command->name + ".1", cli::ManPage(*command));
  return 0;
} catch (const std::exception& error) {
  std::cerr << error.what() << '\n';
  return 1;
}
