#include "program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pty.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <thread>

namespace {

std::string ReadText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

[[noreturn]] void Execute(const TempFolder& folder, const std::vector<std::string>& arguments,
                          const Program::Setup& setup) {
  std::vector<std::string> words{TASKLOG_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  // Tests must not see what other controllers of the same name did before.
  ::setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  ::unsetenv("NO_COLOR");
  ::setenv("TERM", "xterm", 1);
  for (std::string variable : setup.environment) {
    const std::size_t equals = variable.find('=');
    ::setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
  }
  if (::chdir(folder.Path().c_str()) == 0) ::execv(pointers[0], pointers.data());
  ::_exit(127);
}

void Redirect(int fd, const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  ::dup2(file, fd);
  ::close(file);
}

std::string ReadTerminal(int terminal) {
  std::string text;
  char block[4096];
  // The read fails when the program has ended and closed its side.
  for (ssize_t count; (count = ::read(terminal, block, sizeof block)) > 0;) {
    text.append(block, static_cast<std::size_t>(count));
  }
  return text;
}

}  // namespace

TempFolder::TempFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "tasklog-test-XXXXXX").string();
  EXPECT_NE(::mkdtemp(pattern.data()), nullptr);
  path_ = pattern;
}

TempFolder::~TempFolder() { std::filesystem::remove_all(path_); }

std::string TempFolder::Read(const std::string& name) const { return ReadText(path_ / name); }

void TempFolder::Write(const std::string& name, const std::string& content) const {
  std::ofstream(path_ / name, std::ios::binary) << content;
}

void TempFolder::Write(const std::string& name, const Bytes& content) const {
  Write(name, std::string(content.begin(), content.end()));
}

std::vector<std::string> TempFolder::Names() const {
  std::vector<std::string> names;
  for (const auto& item : std::filesystem::recursive_directory_iterator(path_)) {
    names.push_back(item.path().lexically_relative(path_).string() + (item.is_directory() ? "/" : ""));
  }
  std::sort(names.begin(), names.end());
  return names;
}

Program::Program(const TempFolder& folder, const std::vector<std::string>& arguments)
    : Program(folder, arguments, Setup()) {}

Program::Program(const TempFolder& folder, const std::vector<std::string>& arguments, const Setup& setup) {
  const winsize size{24, 80, 0, 0};
  pid_ = setup.onTerminal ? ::forkpty(&terminal_, nullptr, nullptr, &size) : ::fork();
  EXPECT_GE(pid_, 0);
  if (pid_ != 0) return;
  if (!setup.onTerminal) {
    Redirect(STDERR_FILENO, err_.Path());
    if (setup.stdoutFd >= 0) {
      ::dup2(setup.stdoutFd, STDOUT_FILENO);
    } else {
      Redirect(STDOUT_FILENO, out_.Path());
    }
  }
  Execute(folder, arguments, setup);
}

Program::~Program() {
  if (pid_ > 0) ::kill(pid_, SIGKILL);
  if (pid_ > 0) ::waitpid(pid_, nullptr, 0);
  if (terminal_ >= 0) ::close(terminal_);
}

void Program::Send(int signal) const { ::kill(pid_, signal); }

Result Program::Wait() {
  std::string terminalText;
  if (terminal_ >= 0) terminalText = ReadTerminal(terminal_);
  int status = 0;
  EXPECT_EQ(::waitpid(pid_, &status, 0), pid_);
  pid_ = -1;
  const int exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  if (terminal_ >= 0) return {exitCode, terminalText, {}};
  return {exitCode, ReadText(out_.Path()), ReadText(err_.Path())};
}

Result RunTasklog(const TempFolder& folder, const std::vector<std::string>& arguments) {
  return Program(folder, arguments).Wait();
}

bool AppearsIn(const TempFolder& folder, const std::string& beginning) {
  using namespace std::chrono_literals;
  for (int attempt = 0; attempt < 1000; ++attempt) {
    for (const std::string& name : folder.Names()) {
      if (name.starts_with(beginning)) return true;
    }
    std::this_thread::sleep_for(10ms);
  }
  return false;
}

Bytes ExampleFile() {
  return TaskFile({.startTime = 1000, .stopTime = 5000},
                  {{"Idle", 0, 10, {{2, 0, 1000}, {5, 2, 2000}, {2, 1, 4000}, {3, 0, 5000}}},
                   {"Ctrl", 5, -1, {{4, 0, 1000}, {2, 2, 2000}, {5, 1, 4000}, {2, 0, 5000}}}},
                  std::vector<FileRecord>{{3, 0, 1000}, {7, 9, 3000, "TP1"}},
                  std::vector<FileRecord>{{3, 0, 1000}, {8, 0, 4500, "OVRN"}});
}
