// The input is a TaskLog file. It is appended to a log that already holds entries of every type, then the log
// is queried, saved and read back.
#include "mirror.h"

namespace {

const Bytes& HeldFile() {
  static const Bytes file =
      TaskFile({.startTime = 400, .stopTime = 1015, .tickRate = 50},
               {{"Idle", 0, 10, {{2, 1, 400}, {5, 2, 1000}, {2, 1, 1010}, {3, 0, 1015}}},
                {"Ctrl", 5, -1, {{2, 2, 1000}, {0, 2, 1005}, {5, 1, 1010}, {2, 0, 1015}}}},
               std::vector<FileRecord>{{7, 9, 1000, "TP1"}}, std::vector<FileRecord>{{8, 0, 1010, "STKO"}});
  return file;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Mirror log;
  log.AppendFromFile(HeldFile());
  log.AppendFromFile(Bytes(data, data + size));
  log.RequireSame();
  log.AskAround();

  fuzz::Mirror readBack;
  readBack.AppendFromFile(log.Save());
  readBack.RequireSame();
  readBack.Save();
  return 0;
}
