// Ctrl-C and its kin while something is under way that must end in order.
#pragma once

#include <termios.h>

#include <chrono>
#include <string>

namespace cli {

// From here on SIGINT, SIGTERM and SIGHUP only count as requests to stop, and SIGUSR1 as one to keep. A third
// one to stop, for a target that never answers, removes the unfinished files and ends the process.
void CatchStopSignals();

// How often a stop was requested.
int StopRequests();

// SIGUSR1, "keep what you have": whether it came since the last call.
bool TakeKeepRequest();

// Waits until `time`, or until one of these requests is there (also one from before the call).
void WaitUntil(std::chrono::steady_clock::time_point time);

// Waits for the same, for something to read at `fd`, and for any other signal, such as that of a new window
// size. False when nothing will come from `fd` any more.
bool WaitForInput(int fd, std::chrono::steady_clock::time_point time);

// What gives a terminal back as it was found, for the third request to stop and for signals that end the
// process, such as that of a crash; it must stay as it is until it is taken away by null.
struct TerminalState {
  int fd;
  termios modes;
  std::string sequence;  // to be written
};
void SetTerminalState(const TerminalState* state);

// Marks a file or empty folder as unfinished; the text must stay as it is until it is unmarked.
void MarkUnfinished(const char* path);
void UnmarkUnfinished(const char* path);

}  // namespace cli
