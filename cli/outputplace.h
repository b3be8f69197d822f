// Whether a file can be written where it is wanted; asked before the work begins.
#pragma once

#include <sys/stat.h>

#include <string>
#include <string_view>

#include "failure.h"

namespace cli {

Failure InTheWay(const std::string& path, const char* why);

// The kind of what is at `place`: 0 for nothing. Throws Failure. `path` is what messages call it.
mode_t KindAt(const std::string& path, const std::string& place);

// Throws Failure when `place`, where `path` leads, is no file that may be replaced.
void CheckReplaceable(const std::string& path, const std::string& place);

// The place of a file to be written, checked as above.
std::string PlaceOfFile(const std::string& path);

// Writes beside the place, then renames. Throws Failure.
void WriteFile(const std::string& place, std::string_view bytes);

}  // namespace cli
