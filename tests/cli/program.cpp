#include "program.h"

#include <fcntl.h>
#include <gtest/gtest.h>
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

void Redirect(int fd, const std::string& path) {
  const int file = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  ::dup2(file, fd);
  ::close(file);
}

}  // namespace

void ExecuteProgram(const TempFolder& folder, std::vector<std::string> words) {
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const std::string programs = std::filesystem::path(TASKLOG_PROGRAM).parent_path().string();
  ::setenv("PATH", (programs + ":" + std::getenv("PATH")).c_str(), 1);
  // Tests must not see what other controllers of the same name did before.
  ::setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  ::setenv("XDG_CONFIG_HOME", folder.Path().c_str(), 1);
  ::unsetenv("NO_COLOR");
  ::setenv("TERM", "xterm", 1);
  // A job in the background of a script ignores Ctrl-C, and what it starts would, too.
  for (const int signal : {SIGHUP, SIGINT, SIGTERM}) ::signal(signal, SIG_DFL);
  if (::chdir(folder.Path().c_str()) == 0) ::execvp(pointers[0], pointers.data());
  ::_exit(127);
}

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

Program::Program(const TempFolder& folder, const std::vector<std::string>& words) : pid_(::fork()) {
  EXPECT_GE(pid_, 0);
  if (pid_ != 0) return;
  Redirect(STDOUT_FILENO, out_.Path());
  Redirect(STDERR_FILENO, err_.Path());
  ExecuteProgram(folder, words);
}

Program::~Program() {
  if (pid_ > 0) ::kill(pid_, SIGKILL);
  if (pid_ > 0) ::waitpid(pid_, nullptr, 0);
}

void Program::Send(int signal) const { ::kill(pid_, signal); }

Result Program::Wait() {
  int status = 0;
  EXPECT_EQ(::waitpid(pid_, &status, 0), pid_);
  pid_ = -1;
  const int exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  return {exitCode, ReadText(out_.Path()), ReadText(err_.Path())};
}

Result RunTasklog(const TempFolder& folder, const std::vector<std::string>& arguments) {
  std::vector<std::string> words{"tasklog"};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return Program(folder, words).Wait();
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
