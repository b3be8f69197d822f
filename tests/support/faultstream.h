// Files in memory whose streams fail where a test says. They stand in for the program's std::fopen, which is
// linked with --wrap, under paths that no real file has.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "support/taskfile.h"

// A file while it lives. One stream of it may be open at a time.
class FaultFile {
 public:
  explicit FaultFile(Bytes bytes = {});
  ~FaultFile();
  FaultFile(const FaultFile&) = delete;
  FaultFile& operator=(const FaultFile&) = delete;

  const char* Path() const { return path_.c_str(); }

  Bytes content;

  // What goes wrong.
  std::size_t readErrorAt = SIZE_MAX;  // reading fails from this byte on
  std::size_t sizeLimit = SIZE_MAX;    // the disk is full behind so many bytes
  std::size_t failingCall = 0;         // read, write, positioning or closing of this number, counted from 1
  std::size_t mostBytes = SIZE_MAX;    // that one call reads

  // What was done since the file was opened last.
  std::size_t calls = 0;
  std::string callNames;  // a letter for each: r, w, s, c
  int openStreams = 0;

  // For the streams.
  std::FILE* Open(const char* mode);
  bool Fails(char call);
  std::size_t offset = 0;

 private:
  std::string path_;
};
