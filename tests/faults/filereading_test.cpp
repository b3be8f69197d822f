// Files that break off, fail to be read, are changed, or are no files: the status, and what of them stays.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "file/validfile.h"
#include "mirror.h"
#include "support/faultstream.h"

namespace {

const struct {
  std::uint16_t base, file;
} versions[] = {{0x0100, 0x0100}, {0x0101, 0x0101}, {0x0102, 0x0102}, {0x0103, 0x0103}, {0x0103, 0x0104}};

// A log that a version 0x0104 file has been read into, and the plain model of it, which says what must come
// of faults.
fuzz::Mirror LogWithEntries() {
  fuzz::Mirror log;
  EXPECT_EQ(log.AppendFromFile(ValidFile(0x0103, 0x0104)), 0u);
  log.RequireSame();
  return log;
}

// Appends the file and then, when it has been refused, the whole one that it should have been.
std::uint32_t ReadAndRecover(FaultFile& file, const Bytes& whole) {
  fuzz::Mirror log = LogWithEntries();
  const std::size_t entries = log.Model().entries.size();
  const std::uint32_t status = log.AppendFromFile(file.Path());
  log.RequireSame();
  EXPECT_EQ(file.openStreams, 0);
  if (status == 0) return 0;
  EXPECT_EQ(log.Model().entries.size(), entries);
  EXPECT_EQ(log.AppendFromFile(whole), 0u);
  log.RequireSame();
  return status;
}

TEST(FileReading, TellsAFileThatEndsFromOneThatCannotBeRead) {
  std::size_t cuts = 0;
  for (const auto& version : versions) {
    const Bytes whole = ValidFile(version.base, version.file);
    for (std::size_t size = 0; size < whole.size(); ++size, ++cuts) {
      SCOPED_TRACE(testing::Message() << std::hex << version.file << std::dec << " up to " << size);
      FaultFile cut(Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size)));
      ASSERT_EQ(ReadAndRecover(cut, whole), TLErrFileInvalid);
      FaultFile broken(whole);
      broken.readErrorAt = size;
      ASSERT_EQ(ReadAndRecover(broken, whole), TLErrFileRead);
      ASSERT_FALSE(HasFailure());
    }
  }
  RecordProperty("bytesCut", std::to_string(cuts));
}

// Whoever writes into a pipe may wait there: nothing is asked for behind the last byte that a file must have.
TEST(FileReading, DoesNotDependOnHowMuchComesAtOnce) {
  for (const std::size_t most : {1u, 2u, 7u, 15u}) {
    FaultFile file(ValidFile(0x0103, 0x0104));
    file.mostBytes = most;
    ASSERT_EQ(ReadAndRecover(file, {}), 0u);
    ASSERT_EQ(TLTaskLogAppendFromFile(NewLog().get(), file.Path()), 0u);
    EXPECT_EQ(file.callNames, std::string((file.content.size() + most - 1) / most, 'r') + 'c');
  }
}

TEST(FileReading, ReportsWhatIsNoFile) {
  const std::string tooLong(300, 'n');
  const TempFile loop;
  ASSERT_EQ(::symlink(loop.CPath(), loop.CPath()), 0);
  const std::pair<const char*, std::uint32_t> cases[] = {
      {"/", TLErrFileRead},
      {"/dev/null", TLErrFileInvalid},
      {"/dev/zero", TLErrFileInvalid},
      {"/proc/self/mem", TLErrFileRead},
      {"", TLErrFileOpen},
      {"/no such file", TLErrFileOpen},
      {"/dev/null/x", TLErrFileOpen},
      {tooLong.c_str(), TLErrFileOpen},
      {loop.CPath(), TLErrFileOpen},
  };
  fuzz::Mirror log = LogWithEntries();
  for (const auto& [path, status] : cases) EXPECT_EQ(log.AppendFromFile(path), status) << path;
}

// Root may read everything, so the test is somebody else meanwhile.
TEST(FileReading, ReportsAFileThatMayNotBeRead) {
  const TempFile file(ValidFile(0x0103, 0x0104));
  ASSERT_EQ(::chmod(file.CPath(), 0), 0);
  constexpr uid_t nobody = 65534;
  const uid_t user = ::geteuid();
  ASSERT_EQ(::seteuid(user == 0 ? nobody : user), 0);
  fuzz::Mirror log = LogWithEntries();
  EXPECT_EQ(log.AppendFromFile(file.CPath()), TLErrFileOpen);
  ASSERT_EQ(::seteuid(user), 0);
  ASSERT_EQ(::chmod(file.CPath(), 0600), 0);
  EXPECT_EQ(log.AppendFromFile(file.CPath()), 0u);
}

TEST(FileReading, ReportsThatNoMoreFilesCanBeOpened) {
  const TempFile file(ValidFile(0x0103, 0x0104));
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  fuzz::Mirror log = LogWithEntries();
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_EQ(log.AppendFromFile(file.CPath()), TLErrFileOpen);
  EXPECT_EQ(TLTaskLogSaveAsFile(NewLog().get(), file.CPath()), TLErrFileOpen);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(log.AppendFromFile(file.CPath()), 0u);
}

}  // namespace
