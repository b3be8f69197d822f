// Runs the built command as a user would, each test in a folder of its own.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/taskfile.h"

// A new folder, removed with all it holds.
class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  std::filesystem::path Path() const { return path_; }
  std::string Read(const std::string& name) const;
  void Write(const std::string& name, const std::string& content) const;
  void Write(const std::string& name, const Bytes& content) const;
  // The names of all files and folders in it, hidden ones too, in order, with '/' behind folders.
  std::vector<std::string> Names() const;

 private:
  std::filesystem::path path_;
};

struct Result {
  int exitCode;  // minus the signal when one ended it
  std::string out;
  std::string err;
};

// The command, running.
class Program {
 public:
  struct Setup {
    std::vector<std::string> environment = {};  // "NAME=value", besides what the tests run in
    bool onTerminal = false;                    // stdout and stderr are one terminal, read as `out`
    int stdoutFd = -1;                          // in place of a file that Wait() reads
  };

  Program(const TempFolder& folder, const std::vector<std::string>& arguments);
  Program(const TempFolder& folder, const std::vector<std::string>& arguments, const Setup& setup);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void Send(int signal) const;
  Result Wait();

 private:
  TempFile out_;
  TempFile err_;
  int terminal_ = -1;
  pid_t pid_ = -1;
};

Result RunTasklog(const TempFolder& folder, const std::vector<std::string>& arguments);

// Waits until the folder holds a file whose name begins so; false when that takes longer than ten seconds.
bool AppearsIn(const TempFolder& folder, const std::string& beginning);

// A log of two tasks, a testpoint and an issue: five entries from 1000 to 4500 ticks, at 1 MHz. Reading adds
// Idle's switch at the start to the four that the records say.
Bytes ExampleFile();
