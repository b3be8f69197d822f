// The command `tasklog`: turns what a command throws into one line on stderr and an exit code.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <exception>
#include <new>
#include <string>
#include <vector>

#include "commandline.h"
#include "failure.h"
#include "text.h"

namespace {

// A file opened later must not become standard output. What is put in place refuses writing.
void OccupyStandardStreams() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (::fcntl(fd, F_GETFD) == -1 && ::open("/dev/null", O_RDONLY) == -1) return;
  }
}

}  // namespace

int main(int argc, char** argv) {
  OccupyStandardStreams();
  // So that a closed pipe and a file size limit show as failed writes.
  ::signal(SIGPIPE, SIG_IGN);
  ::signal(SIGXFSZ, SIG_IGN);
  try {
    return cli::RunCommandLine(std::vector<std::string>(argv + (argc > 0), argv + argc));
  } catch (const cli::ClosedPipe&) {
    return cli::exitSuccess;
  } catch (const cli::UsageError& error) {
    cli::PrintError(error.what());
    return cli::exitUsage;
  } catch (const cli::Failure& failure) {
    cli::PrintError(failure.what());
  } catch (const std::bad_alloc&) {
    cli::PrintError("Out of memory");
  } catch (const std::exception& error) {
    cli::PrintError(cli::SafeText(error.what()));
  }
  return cli::exitFailure;
}
