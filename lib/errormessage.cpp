// Status code to text.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "model/types.h"
#include "target/access.h"
#include "tasklog/tasklog.h"

namespace {

// Null for codes that the target-access library describes.
const char* OwnMessage(u32 status) {
  switch (status) {
    case TLErrOutOfMemory: return "Out of memory";
    case TLErrCanceled: return "Operation canceled";
    case TLErrFileOpen: return "Error opening TaskLog file";
    case TLErrFileRead: return "Error reading TaskLog file";
    case TLErrFileInvalid: return "Not a valid TaskLog file";
    case TLErrFileVersion: return "TaskLog file has newer version than supported";
    case TLErrFileWrite: return "Error writing TaskLog file";
    default: return nullptr;
  }
}

void StoreSize(u32 size, char* buffer) { std::memcpy(buffer, &size, sizeof size); }

u32 ForeignMessageSize(u32 status) {
  alignas(u64) char scratch[8] = {};
  GetErrorDescription("", status, scratch, 0);
  u32 size;
  std::memcpy(&size, scratch, sizeof size);
  return size;
}

}  // namespace

void TLGetErrorMessage(uint32_t status, char* buffer, uint32_t size) {
  if (!buffer) return;
  if (const char* message = OwnMessage(status)) {
    if (size == 0) return StoreSize(static_cast<u32>(std::strlen(message)) + 1, buffer);
    std::snprintf(buffer, size, "%s", message);
    return;
  }
  if (size == 0) return StoreSize(ForeignMessageSize(status), buffer);
  // The other library does not get the last byte, so that the text ends whatever it does.
  GetErrorDescription("", status, buffer, std::max(size - 1, 1u));
  buffer[size - 1] = '\0';
}
