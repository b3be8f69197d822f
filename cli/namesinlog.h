// The names in a TaskLog file, read without its entries: quick enough to be offered while one is typed.
#pragma once

#include <string>
#include <vector>

namespace cli {

enum class NameKind { task, testpoint, issue };

// Each name once, in the order of the file. Of a folder, those of the TaskLog files in it. Whatever cannot be
// read, or is beyond what is read at most, has no names.
std::vector<std::string> NamesInLog(const std::string& path, NameKind kind);

}  // namespace cli
