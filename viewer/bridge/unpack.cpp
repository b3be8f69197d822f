// Files as the page carries them: lines of packed bytes in base64.
#include <cstdint>
#include <string>

#include "taskfile/base64.h"
#include "taskfile/pack.h"

namespace {

taskfile::Unpacker unpacker;
std::string packed;
std::string unpacked;

}  // namespace

extern "C" {

// Before the first line of a file.
void TaskLogBeginFile() { unpacker = {}; }

// 0: the bytes of the line are there, until the next one; 1: the line is damaged.
int TaskLogUnpackLine(const char* text, std::size_t size) {
  packed.clear();
  unpacked.clear();
  const bool isSound = taskfile::FromBase64({text, size}, packed) && unpacker.Unpack(packed, unpacked);
  return isSound ? 0 : 1;
}

const char* TaskLogUnpacked() { return unpacked.data(); }
std::size_t TaskLogUnpackedSize() { return unpacked.size(); }
}
