// The handlers use only what is allowed in one: lock-free atomics, write, unlink, rmdir, tcsetattr, raise,
// _exit.
#include "signals.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <system_error>

#include "failure.h"

namespace cli {
namespace {

constexpr int requestsUntilAbort = 3;
// A folder, the scheduler's logger and all kernels that a recording takes.
constexpr std::size_t mostUnfinished = 300;

std::atomic<int> stopRequests{0};
std::atomic<bool> keepRequested{false};
std::array<std::atomic<const char*>, mostUnfinished> unfinished{};
// Each request makes it readable, so that no request slips between a check and a wait.
std::array<int, 2> wakeUp{-1, -1};
std::atomic<const TerminalState*> terminalState{nullptr};

static_assert(std::atomic<const char*>::is_always_lock_free && std::atomic<int>::is_always_lock_free &&
              std::atomic<bool>::is_always_lock_free);

void RemoveUnfinished() {
  // Folders were marked before the files in them.
  for (auto slot = unfinished.rbegin(); slot != unfinished.rend(); ++slot) {
    const char* path = slot->load();
    if (path != nullptr && ::unlink(path) != 0) ::rmdir(path);
  }
}

void RestoreTerminal() {
  const TerminalState* state = terminalState.load();
  if (state == nullptr) return;
  [[maybe_unused]] const ssize_t written = ::write(state->fd, state->sequence.data(), state->sequence.size());
  ::tcsetattr(state->fd, TCSANOW, &state->modes);
}

extern "C" void HandleStopSignal(int signal) {
  const int savedErrno = errno;
  if (++stopRequests >= requestsUntilAbort) {
    RemoveUnfinished();
    RestoreTerminal();
    ::_exit(128 + signal);
  }
  [[maybe_unused]] const ssize_t written = ::write(wakeUp[1], "", 1);
  errno = savedErrno;
}

// Once: what follows is what the signal does by itself.
extern "C" void HandleFatalSignal(int signal) {
  RestoreTerminal();
  ::raise(signal);
}

extern "C" void HandleKeepSignal(int) {
  const int savedErrno = errno;
  keepRequested = true;
  [[maybe_unused]] const ssize_t written = ::write(wakeUp[1], "", 1);
  errno = savedErrno;
}

}  // namespace

void CatchStopSignals() {
  if (::pipe2(wakeUp.data(), O_CLOEXEC | O_NONBLOCK) != 0) {
    throw Failure::System("preparing for Ctrl-C", errno);
  }
  struct sigaction action {};
  action.sa_handler = HandleStopSignal;
  sigemptyset(&action.sa_mask);
  // Interrupted calls go on: the target-access library need not expect interruptions.
  action.sa_flags = SA_RESTART;
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction previous {};
    ::sigaction(signal, nullptr, &previous);
    // Whoever started us with a signal ignored (nohup) wants it so.
    if (previous.sa_handler != SIG_IGN) ::sigaction(signal, &action, nullptr);
  }
  action.sa_handler = HandleKeepSignal;
  ::sigaction(SIGUSR1, &action, nullptr);
}

int StopRequests() { return stopRequests.load(); }

bool TakeKeepRequest() { return keepRequested.exchange(false); }

void WaitUntil(std::chrono::steady_clock::time_point time) {
  while (StopRequests() == 0 && !keepRequested && std::chrono::steady_clock::now() < time) {
    WaitForInput(-1, time);  // of which there is none
  }
}

bool WaitForInput(int fd, std::chrono::steady_clock::time_point time) {
  using std::chrono::milliseconds;
  constexpr milliseconds longestPoll{1000 * 1000};
  const auto left = std::chrono::ceil<milliseconds>(time - std::chrono::steady_clock::now());
  pollfd waits[] = {{wakeUp[0], POLLIN, 0}, {fd, POLLIN, 0}};
  ::poll(waits, 2, static_cast<int>(std::clamp(left, milliseconds::zero(), longestPoll).count()));
  char taken[16];
  while (::read(wakeUp[0], taken, sizeof taken) > 0) {  // or the next wait would end at once
  }
  return (waits[1].revents & (POLLHUP | POLLERR | POLLNVAL)) == 0;
}

void SetTerminalState(const TerminalState* state) {
  terminalState = state;
  if (state == nullptr) return;
  struct sigaction action {};
  action.sa_handler = HandleFatalSignal;
  sigemptyset(&action.sa_mask);
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (const int signal : {SIGQUIT, SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL})
    ::sigaction(signal, &action, nullptr);
}

void MarkUnfinished(const char* path) {
  for (auto& slot : unfinished) {
    const char* empty = nullptr;
    if (slot.compare_exchange_strong(empty, path)) return;
  }
}

void UnmarkUnfinished(const char* path) {
  for (auto& slot : unfinished) {
    const char* expected = path;
    if (slot.compare_exchange_strong(expected, nullptr)) return;
  }
}

}  // namespace cli
