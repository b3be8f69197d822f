// Streams over memory.
#include "support/faultstream.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <utility>

#include "support/allocations.h"
#include "support/largefiles.h"

namespace {

std::map<std::string, FaultFile*, std::less<>>& Files() {
  static std::map<std::string, FaultFile*, std::less<>> files;
  return files;
}

ssize_t Read(void* cookie, char* buffer, std::size_t size) {
  auto& file = *static_cast<FaultFile*>(cookie);
  const std::size_t end = std::min(file.content.size(), file.readErrorAt);
  if (file.Fails('r') || file.offset >= file.readErrorAt) {
    errno = EIO;
    return -1;
  }
  const std::size_t count = std::min({size, file.mostBytes, end - std::min(end, file.offset)});
  std::copy_n(file.content.begin() + static_cast<std::ptrdiff_t>(file.offset), count, buffer);
  file.offset += count;
  return static_cast<ssize_t>(count);
}

// A full disk takes what there is room for.
ssize_t Write(void* cookie, const char* buffer, std::size_t size) {
  const AllocationPause pause;
  auto& file = *static_cast<FaultFile*>(cookie);
  const std::size_t room = file.sizeLimit - std::min(file.sizeLimit, file.offset);
  const std::size_t count = file.Fails('w') ? 0 : std::min(size, room);
  if (count < size) errno = ENOSPC;
  file.content.resize(std::max(file.content.size(), file.offset + count));
  std::copy_n(buffer, count, file.content.begin() + static_cast<std::ptrdiff_t>(file.offset));
  file.offset += count;
  return static_cast<ssize_t>(count);
}

int Seek(void* cookie, off64_t* position, int whence) {
  auto& file = *static_cast<FaultFile*>(cookie);
  if (file.Fails('s')) {
    errno = ESPIPE;
    return -1;
  }
  const std::size_t base = whence == SEEK_SET ? 0 : whence == SEEK_CUR ? file.offset : file.content.size();
  file.offset = base + static_cast<std::size_t>(*position);
  *position = static_cast<off64_t>(file.offset);
  return 0;
}

int Close(void* cookie) {
  auto& file = *static_cast<FaultFile*>(cookie);
  --file.openStreams;
  return file.Fails('c') ? EOF : 0;
}

}  // namespace

FaultFile::FaultFile(Bytes bytes) : content(std::move(bytes)) {
  static int count = 0;
  path_ = "/no real file/" + std::to_string(++count);
  Files()[path_] = this;
}

FaultFile::~FaultFile() { Files().erase(path_); }

std::FILE* FaultFile::Open(const char* mode) {
  calls = offset = 0;
  callNames.clear();
  if (*mode == 'w') content.clear();
  ++openStreams;
  return fopencookie(this, mode, {Read, Write, Seek, Close});
}

bool FaultFile::Fails(char call) {
  const AllocationPause pause;
  callNames += call;
  return ++calls == failingCall;
}

extern "C" {

std::FILE* TASKLOG_LARGE(__real_fopen)(const char* path, const char* mode);
std::FILE* TASKLOG_LARGE(__wrap_fopen)(const char* path, const char* mode) {
  const AllocationPause pause;
  const auto found = Files().find(path);
  return found == Files().end() ? TASKLOG_LARGE(__real_fopen)(path, mode) : found->second->Open(mode);
}

}  // extern "C"
