// What strace wrote of a command's calls.
#pragma once

#include <map>
#include <sstream>
#include <string>

// How many calls of each kind come before the one that creates the output: they only start the program.
inline std::map<std::string, int> CallsBeforeOutput(const std::string& calls) {
  std::map<std::string, int> counts;
  std::istringstream lines(calls);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("mkdir") || line.find("O_EXCL") != line.npos) break;
    ++counts[line.substr(0, line.find('('))];
  }
  return counts;
}
