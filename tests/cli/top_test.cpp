// `tasklog top` on a terminal: pictures, keys, and the terminal as it was on every way out.
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>
#include <utmp.h>

#include <chrono>
#include <thread>

#include "cli/program.h"
#include "cli/scenarios.h"

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

// A program on a terminal of its own.
class ProgramOnTerminal {
 public:
  ProgramOnTerminal(const TempFolder& folder, const std::vector<std::string>& words) {
    winsize size{24, 100, 0, 0};
    EXPECT_EQ(::openpty(&master_, &terminal_, nullptr, nullptr, &size), 0);
    before_ = Modes();
    pid_ = ::fork();
    if (pid_ != 0) return;
    ::login_tty(::dup(terminal_));
    ExecuteProgram(folder, words);
  }
  ~ProgramOnTerminal() {
    if (pid_ > 0) ::kill(pid_, SIGKILL);
    if (pid_ > 0) ::waitpid(pid_, nullptr, 0);
    ::close(master_);
    ::close(terminal_);
  }

  // Waits for `text` behind what was waited for before.
  bool Shows(const std::string& text, Clock::duration within = 30s) {
    const auto end = Clock::now() + within;
    for (;;) {
      const std::size_t at = output_.find(text, seen_);
      if (at != std::string::npos) {
        seen_ = at + text.size();
        return true;
      }
      if (Clock::now() >= end || !ReadMore(100)) return false;
    }
  }
  void Type(const std::string& keys) const {
    EXPECT_EQ(::write(master_, keys.data(), keys.size()), keys.size());
  }
  void Send(int signal) const { ::kill(pid_, signal); }
  void Resize(unsigned short lines) const {
    const winsize size{lines, 100, 0, 0};
    ::ioctl(master_, TIOCSWINSZ, &size);
  }

  // The exit code, minus the signal when one ended it.
  int Wait() {
    int status = 0;
    while (::waitpid(pid_, &status, WNOHANG) == 0) ReadMore(10);
    pid_ = -1;
    while (ReadMore(0)) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
  }
  // The modes are the old ones, and the last words are those that leave the screen and show the cursor.
  bool GaveTerminalBack() const {
    const std::size_t left = output_.rfind("\x1b[?1049l");
    const std::size_t cursor = output_.rfind("\x1b[?25h");
    return Modes() == before_ && left != std::string::npos && left > output_.rfind("\x1b[?1049h") &&
           cursor != std::string::npos && cursor > output_.rfind("\x1b[?25l");
  }
  const std::string& Output() const { return output_; }

 private:
  bool ReadMore(int milliseconds) {
    pollfd wait{master_, POLLIN, 0};
    if (::poll(&wait, 1, milliseconds) == 0) return milliseconds > 0;
    char bytes[4096];
    const ssize_t count = ::read(master_, bytes, sizeof bytes);
    if (count > 0) output_.append(bytes, static_cast<std::size_t>(count));
    return count > 0;
  }
  std::vector<tcflag_t> Modes() const {
    termios modes{};
    ::tcgetattr(terminal_, &modes);
    return {modes.c_iflag, modes.c_oflag, modes.c_lflag};
  }

  int master_ = -1;
  int terminal_ = -1;
  pid_t pid_ = -1;
  std::vector<tcflag_t> before_;
  std::string output_;
  std::size_t seen_ = 0;
};

const std::vector<std::string> top = {"tasklog", "top", "m.toml", "--start", "--every", "100ms"};

TEST(Top, ShowsTheFirstPictureAtOnceAndTakesKeys) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("20ms", 64));
  ProgramOnTerminal program(folder, {"tasklog", "top", "m.toml", "--start", "--every", "10s"});
  EXPECT_TRUE(program.Shows("scheduler  busy 30.77 %", 15s)) << program.Output();
  for (const auto& [key, shown] :
       {std::pair{"s", "load"}, {"r", "reversed"}, {"p", "PAUSED"}, {"S", "priority"}}) {
    program.Type(key);
    EXPECT_TRUE(program.Shows(shown, 5s)) << key << '\n' << program.Output();
  }
  program.Resize(10);
  EXPECT_TRUE(program.Shows("q quit", 5s)) << program.Output();
  program.Type("q");
  EXPECT_EQ(program.Wait(), 0);
}

TEST(Top, ShowsLossesInRedUnlessColoursAreUnwanted) {
  const TempFolder folder;
  folder.Write("m.toml", SteppedScenario("70ms", 8));
  for (const char* environment : {"NO_COLOR=", "NO_COLOR=1"}) {
    SCOPED_TRACE(environment);
    std::vector<std::string> words = top;
    words.insert(words.begin(), {"env", environment});
    ProgramOnTerminal program(folder, words);
    EXPECT_TRUE(program.Shows("records were lost once")) << program.Output();
    const bool isRed = program.Output().find("\x1b[31m") != std::string::npos;
    EXPECT_EQ(isRed, std::string(environment) == "NO_COLOR=") << program.Output();
    program.Type("q");
    EXPECT_EQ(program.Wait(), 0);
  }
}

TEST(Top, GivesTheTerminalBackOnEveryWayOut) {
  // From the third read on the target does not answer any more.
  const std::string never = Fault("call = \"GetBlock32\"\nfrom = 3\ndelay = \"600s\"");
  struct Case {
    const char* name;
    const char* keys;
    std::vector<int> signals;
    int exitCode;
    bool isStuck;
  };
  const Case cases[] = {{"q", "q", {}, 0, false},
                        {"Ctrl-C", "\x03", {}, 0, false},
                        {"TERM", "", {SIGTERM}, 0, false},
                        {"HUP", "", {SIGHUP}, 0, false},
                        {"three while stuck", "", {SIGHUP, SIGINT, SIGTERM}, 128 + SIGTERM, true},
                        {"quit while stuck", "\x1c", {}, -SIGQUIT, true}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    const TempFolder folder;
    folder.Write("m.toml", SteppedScenario("20ms", 64) + (c.isStuck ? never : ""));
    ProgramOnTerminal program(folder, top);
    ASSERT_TRUE(program.Shows("Ctrl"));
    if (c.isStuck) std::this_thread::sleep_for(500ms);
    program.Type(c.keys);
    for (const int signal : c.signals) {
      program.Send(signal);
      std::this_thread::sleep_for(50ms);
    }
    EXPECT_EQ(program.Wait(), c.exitCode);
    EXPECT_TRUE(program.GaveTerminalBack()) << program.Output();
  }
}

}  // namespace
