#include "tracedprogram.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <filesystem>
#include <map>

#if defined(__x86_64__)

namespace {

// Calls that change what is on the disk, or tell the command about it.
const std::map<unsigned long long, const char*> fileCalls = {
    {SYS_openat, "open"},   {SYS_write, "write"},   {SYS_writev, "write"},   {SYS_read, "read"},
    {SYS_lseek, "seek"},    {SYS_fchmod, "chmod"},  {SYS_chmod, "chmod"},    {SYS_fsync, "sync"},
    {SYS_rename, "rename"}, {SYS_unlink, "unlink"}, {SYS_rmdir, "rmdir"},    {SYS_mkdir, "mkdir"},
    {SYS_flock, "lock"},    {SYS_close, "close"},   {SYS_newfstatat, "stat"}};

[[noreturn]] void Execute(const TempFolder& folder, const std::vector<std::string>& arguments) {
  std::vector<std::string> words{TASKLOG_PROGRAM};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> pointers;
  for (std::string& word : words) pointers.push_back(word.data());
  pointers.push_back(nullptr);
  const int nowhere = ::open("/dev/null", O_RDWR);
  for (const int fd : {0, 1, 2}) ::dup2(nowhere, fd);
  ::setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1);  // a leak checker has to trace by itself
  ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  if (::chdir(folder.Path().c_str()) == 0) ::execv(pointers[0], pointers.data());
  ::_exit(127);
}

// The command while it is followed. It stops before and behind each call.
class Tracee {
 public:
  Tracee(const TempFolder& folder, const std::vector<std::string>& arguments) : pid_(::fork()) {
    EXPECT_GE(pid_, 0);
    if (pid_ == 0) Execute(folder, arguments);
    ::waitpid(pid_, &status_, 0);
    ::ptrace(PTRACE_SETOPTIONS, pid_, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  }
  // Goes on to the next stop at a call; false when the command has ended.
  bool Next() {
    for (long signal = 0;;) {
      ::ptrace(PTRACE_SYSCALL, pid_, nullptr, signal);
      ::waitpid(pid_, &status_, 0);
      if (!WIFSTOPPED(status_)) return false;
      if (WSTOPSIG(status_) == (SIGTRAP | 0x80)) break;
      signal = WSTOPSIG(status_);
    }
    ::ptrace(PTRACE_GETREGS, pid_, nullptr, &registers_);
    return true;
  }
  pid_t Pid() const { return pid_; }
  const user_regs_struct& Registers() const { return registers_; }
  void Set(std::size_t offset, unsigned long long value) const {
    ::ptrace(PTRACE_POKEUSER, pid_, offset, value);
  }
  void Kill() {
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, &status_, 0);
  }
  int ExitCode() const { return WIFEXITED(status_) ? WEXITSTATUS(status_) : -WTERMSIG(status_); }

 private:
  pid_t pid_;
  int status_ = 0;
  user_regs_struct registers_{};
};

// Not what the simulator asks of its scenario by path, nor the pipes in which a sanitizer tries addresses.
bool ConcernsFiles(const user_regs_struct& registers, pid_t pid) {
  const auto call = registers.orig_rax;
  if (call == SYS_newfstatat && (registers.r10 & AT_EMPTY_PATH) == 0) return false;
  if (call != SYS_write && call != SYS_read && call != SYS_close) return fileCalls.contains(call);
  const std::string link = "/proc/" + std::to_string(pid) + "/fd/" + std::to_string(registers.rdi);
  std::error_code error;
  return std::filesystem::read_symlink(link, error).string().find("pipe:") == std::string::npos;
}

bool CreatesOutput(const user_regs_struct& registers) {
  if (registers.orig_rax == SYS_mkdir) return true;
  return registers.orig_rax == SYS_openat && (registers.rdx & (O_CREAT | O_EXCL)) == (O_CREAT | O_EXCL);
}

}  // namespace

bool CanTrace() {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) == 0 ? 0 : 1);
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

TracedResult RunTraced(const TempFolder& folder, const std::vector<std::string>& arguments,
                       Disturbance disturbance, std::size_t at, const std::function<void()>& meanwhile) {
  TracedResult result{0, {}, 0};
  Tracee command(folder, arguments);
  bool counting = false;
  while (command.Next()) {
    counting = counting || CreatesOutput(command.Registers());
    const bool counts = counting && ConcernsFiles(command.Registers(), command.Pid());
    if (counts) result.calls.push_back(fileCalls.at(command.Registers().orig_rax));
    const bool disturbed = counts && result.calls.size() == at;
    if (disturbed && disturbance == Disturbance::killed) {
      command.Kill();
      break;
    }
    if (disturbed && disturbance == Disturbance::waits) meanwhile();
    const bool fails = disturbed && disturbance == Disturbance::callFails;
    if (fails) command.Set(offsetof(user_regs_struct, orig_rax), ~0ull);  // no such call: nothing happens
    if (!command.Next()) break;
    if (fails) command.Set(offsetof(user_regs_struct, rax), static_cast<unsigned long long>(-ENOSPC));
    if (counts && !fails && result.calls.back() == "rename" && command.Registers().rax == 0) ++result.renames;
  }
  result.exitCode = command.ExitCode();
  return result;
}

#else

bool CanTrace() { return false; }

TracedResult RunTraced(const TempFolder&, const std::vector<std::string>&, Disturbance, std::size_t,
                       const std::function<void()>&) {
  return {127, {}, 0};
}

#endif
