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

// Turns this process, a child of the test, into a program that runs in the folder.
[[noreturn]] void ExecuteProgram(const TempFolder& folder, std::vector<std::string> words);

// A program, running in a folder. `words` begins with its name; the command is called "tasklog".
class Program {
 public:
  Program(const TempFolder& folder, const std::vector<std::string>& words);
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void Send(int signal) const;
  Result Wait();

 private:
  TempFile out_;
  TempFile err_;
  pid_t pid_ = -1;
};

Result RunTasklog(const TempFolder& folder, const std::vector<std::string>& arguments);

// Waits until the folder holds a file whose name begins so; false when that takes longer than ten seconds.
bool AppearsIn(const TempFolder& folder, const std::string& beginning);
