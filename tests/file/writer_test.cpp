// Logs into files, byte for byte, and what is left when writing fails.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdio>
#include <memory>

#include "model/model.h"
#include "support/allocations.h"
#include "support/logs.h"
#include "validfile.h"

namespace {

// The log of golden/example.hex; the file given here spares what a reader would drop or turn into an entry.
LogPtr ExampleLog() {
  LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile({},
                                            {{"Idle", 0, 10, {{5, 2, 2000}, {2, 1, 4000}}},
                                             {"Ctrl", 5, -1, {{2, 2, 2000}, {5, 1, 4000}}}},
                                            {{{7, 9, 3000, "TP1"}}})),
            0u);
  return log;
}

TEST(Writer, WritesTheExample) { EXPECT_EQ(Save(ExampleLog().get()), ReadHex("golden/example.hex")); }

TEST(Writer, WritesAnEmptyLog) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), {0}), 0u);  // takes the tick rate and nothing else
  EXPECT_EQ(Save(log.get()), ReadHex("golden/empty.hex"));
}

TEST(Writer, WritesEveryEntryTypeTheFormatHas) {
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendRing(log.get(), RingWords(1000, {{4, 1000, 1},
                                                   {0, 1010, 2},
                                                   {1, 1020, 1},
                                                   {3, 1030, 2},
                                                   {5, 1040, 1},
                                                   {2, 1050, 2},
                                                   {2, 1060, 1},
                                                   {6, 1070, 0x9000},
                                                   {7, 1080, 0x53544B4F},
                                                   {8, 1090, 2},
                                                   {14, 1100, 1},
                                                   {4, 1110, 1}})),
            0u);
  // The second testpoint of the target was never passed.
  EXPECT_EQ(Save(log.get()), ReadHex("golden/all_types.hex"));
}

TEST(Writer, FramesASectionByItsFirstAndLastRecord) {
  const struct {
    std::uint32_t koType, prolog, epilog;
  } cases[] = {{0, 3, 2}, {1, 3, 3}, {2, 4, 3}, {3, 3, 1}, {4, 2, 2}, {5, 2, 2}, {6, 2, 2}};
  for (const auto& c : cases) {
    const LogPtr log = NewLog();
    EXPECT_EQ(AppendBytes(log.get(), TaskFile({}, {{"A", 1, 2, {{c.koType, 0, 2000}}}})), 0u);
    const FileSection expected{"A", 1, 2, {{c.prolog, 0, 1000}, {c.koType, 0, 2000}, {c.epilog, 0, 5000}}};
    EXPECT_EQ(Save(log.get()), TaskFile({}, {expected})) << c.koType;
  }
}

TEST(Writer, OmitsThePrologsAtTheStartTime) {
  const FileHeader header{.startTime = 1000, .stopTime = 5000};
  const std::vector<FileRecord> stamps = {{7, 9, 1000, "TP1"}, {7, 9, 2000, "TP1"}};
  const std::vector<FileRecord> events = {{8, 0x4F56524E, 1000, "OVRN"}, {8, 0x4F560000, 1000, "OV"}};
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), TaskFile(header, {{"A", 1, 2, {{0, 0, 1000}}}}, stamps, events)), 0u);
  const FileSection expected{"A", 1, 2, {{0, 0, 1000}, {2, 0, 5000}}};
  EXPECT_EQ(Save(log.get()), TaskFile(header, {expected}, stamps, events));
}

TEST(Writer, CutsTheTickRateTo32Bits) {
  ScriptedTarget target;
  PutLogger(target, "Scheduler.Logger", {0});
  target.numbers["Target.Mpu.Resolution"] = 0.125;  // 8000000000 ticks per second
  const LogPtr log = NewLog();
  EXPECT_EQ(TLTaskLogAppendFromTarget(log.get(), "ctl", -1, nullptr, nullptr), 0u);
  EXPECT_EQ(Save(log.get()), TaskFile({.startTime = 0, .stopTime = 0, .tickRate = 3705032704}, {}));
}

TEST(Writer, WritesNamesThatNoReaderTakes) {
  for (const std::size_t length : {255u, 256u}) {
    const LogPtr log = NewLog();
    log->FindOrCreateTask(std::string(length, 'n'), 0, 0);
    const LogPtr reread = NewLog();
    EXPECT_EQ(AppendBytes(reread.get(), Save(log.get())), length == 255 ? TL_OK : TLErrFileInvalid);
    EXPECT_EQ(TLTaskLogGetCategoriesCount(reread.get(), 0, nullptr), length == 255 ? 1u : 0u);
  }
}

TEST(Writer, WritesWhatAReaderMakesTheSameOf) {
  const Bytes files[] = {ReadHex("golden/empty.hex"), ReadHex("golden/all_types.hex"),
                         ReadHex("golden/example.hex"), ValidFile(0x0100, 0x0100), ValidFile(0x0103, 0x0104)};
  for (const Bytes& file : files) {
    const LogPtr first = NewLog();
    EXPECT_EQ(AppendBytes(first.get(), file), 0u);
    // The first reading may have turned prologs into entries at the start time; from there on all is stable.
    const LogPtr second = NewLog();
    EXPECT_EQ(AppendBytes(second.get(), Save(first.get())), 0u);
    const LogPtr third = NewLog();
    EXPECT_EQ(AppendBytes(third.get(), Save(second.get())), 0u);
    EXPECT_EQ(Save(third.get()), Save(second.get()));
    EXPECT_EQ(DumpEntries(third.get()), DumpEntries(second.get()));
    EXPECT_EQ(DumpCategories(third.get()), DumpCategories(second.get()));
  }
  const LogPtr log = NewLog();
  EXPECT_EQ(AppendBytes(log.get(), ReadHex("golden/all_types.hex")), 0u);
  EXPECT_EQ(Save(log.get()), ReadHex("golden/all_types.hex"));
}

TEST(Writer, ReplacesALongerFile) {
  const TempFile file(Bytes(5000, 0xAA));
  EXPECT_EQ(TLTaskLogSaveAsFile(ExampleLog().get(), file.CPath()), 0u);
  EXPECT_EQ(ReadBytes(file.Path()), ReadHex("golden/example.hex"));
}

// Lets files grow to so many bytes and no further.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(std::size_t sizeBytes) : oldHandler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &old_);
    const rlimit limit{sizeBytes, old_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileSizeLimit() {
    setrlimit(RLIMIT_FSIZE, &old_);
    std::signal(SIGXFSZ, oldHandler_);
  }
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  void (*oldHandler_)(int);
  rlimit old_ = {};
};

TEST(Writer, StopsAtAnyByteAndLeavesTheSectionsCountAt0) {
  constexpr struct { std::size_t countAt, end; } sections[] = {{59, 127}, {144, 212}, {231, 275}, {294, 298}};
  const Bytes whole = ReadHex("golden/example.hex");
  ASSERT_EQ(whole.size(), 298u);
  const LogPtr log = ExampleLog();
  for (std::size_t size = 0; size < whole.size(); ++size) {
    SCOPED_TRACE(size);
    const TempFile file;
    std::uint32_t status = 0;
    {
      const FileSizeLimit limit(size);
      status = TLTaskLogSaveAsFile(log.get(), file.CPath());
    }
    ASSERT_EQ(status, TLErrFileWrite);
    Bytes expected(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    for (const auto& section : sections) {
      if (section.end > size && section.countAt < size) expected[section.countAt] = 0;
    }
    ASSERT_EQ(ReadBytes(file.Path()), expected);
  }
  EXPECT_EQ(Save(log.get()), whole);
}

TEST(Writer, ReportsWhereItCannotWrite) {
  const TempFile pipe;
  ASSERT_EQ(mkfifo(pipe.CPath(), 0600), 0);
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> reader(std::fopen(pipe.CPath(), "r+"), &std::fclose);
  ASSERT_TRUE(reader);
  const std::pair<const char*, std::uint32_t> cases[] = {
      {nullptr, TLErrFileOpen},      {"", TLErrFileOpen},
      {"/tmp", TLErrFileOpen},       {"/no such folder/log", TLErrFileOpen},
      {"/dev/full", TLErrFileWrite}, {pipe.CPath(), TLErrFileWrite},  // has no positions
  };
  const LogPtr log = ExampleLog();
  for (const auto& [path, status] : cases) {
    EXPECT_EQ(TLTaskLogSaveAsFile(log.get(), path), status) << (path ? path : "null");
  }
}

TEST(Writer, ReportsThatMemoryRanOut) {
  const LogPtr log = ExampleLog();
  bool failed = true;
  for (std::size_t allocation = 1; failed; ++allocation) {
    const TempFile file;
    std::uint32_t status = 0;
    {
      const AllocationWatch watch(allocation);
      status = TLTaskLogSaveAsFile(log.get(), file.CPath());
      failed = watch.Failed();
    }
    ASSERT_EQ(status, failed ? TLErrOutOfMemory : TL_OK) << allocation;
  }
  EXPECT_EQ(Save(log.get()), ReadHex("golden/example.hex"));
}

}  // namespace
