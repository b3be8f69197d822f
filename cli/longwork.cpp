#include "longwork.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "failure.h"
#include "signals.h"
#include "text.h"

namespace cli {

LongWork::LongWork(const std::string& label) : bar_(label) { CatchStopSignals(); }

taskfile::Progress LongWork::Part(double from, double to) {
  return [this, from, to](double done) {
    if (StopRequests() > 0) throw Failure("interrupted");
    bar_.Show(from + (to - from) * done);
  };
}

std::string ReadWhole(const std::string& path, const taskfile::Progress& progress) {
  constexpr std::size_t chunk = 8 << 20;
  const auto failed = [&] { return Failure::System("reading " + Quoted(path), errno); };
  struct Descriptor {
    int number;
    ~Descriptor() {
      if (number >= 0) ::close(number);
    }
  } const file{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
  struct stat status {};
  if (file.number < 0 || ::fstat(file.number, &status) != 0) throw failed();
  std::string bytes;
  const auto expected = static_cast<std::uint64_t>(S_ISREG(status.st_mode) ? status.st_size : 0);
  if (expected > bytes.max_size() - chunk) throw Failure::System("reading " + Quoted(path), EFBIG);
  bytes.reserve(static_cast<std::size_t>(expected) + 1);  // one more: the end shows without more room
  for (;;) {
    const std::size_t held = bytes.size();
    const std::size_t room = bytes.capacity() > held ? bytes.capacity() - held : chunk;
    bytes.resize(held + std::min(room, chunk));
    const ssize_t got = ::read(file.number, bytes.data() + held, bytes.size() - held);
    if (got < 0 && errno != EINTR) throw failed();
    bytes.resize(held + static_cast<std::size_t>(std::max<ssize_t>(got, 0)));
    if (got == 0) return bytes;
    progress(expected > 0 ? static_cast<double>(bytes.size()) / static_cast<double>(expected) : 0);
  }
}

}  // namespace cli
