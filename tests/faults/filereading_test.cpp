// Files that break off, fail to be read, are changed, or are no files: the status, and what of them stays.
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include "file/validfile.h"
#include "support/faultstream.h"
#include "support/logs.h"
#include "twin.h"

namespace {

const struct {
  std::uint16_t base, file;
} versions[] = {{0x0100, 0x0100}, {0x0101, 0x0101}, {0x0102, 0x0102}, {0x0103, 0x0103}, {0x0103, 0x0104}};

// A log that a version 0x0104 file has been read into.
Twin TwinWithEntries() {
  Twin twin;
  const FaultFile file(ValidFile(0x0103, 0x0104));
  EXPECT_EQ(twin.AppendFromFile(file.Path()), 0u);
  return twin;
}

// Appends the file and then, when it has been refused, the whole one that it should have been.
std::uint32_t ReadAndRecover(FaultFile& file, const Bytes& whole) {
  Twin twin = TwinWithEntries();
  const std::string entries = DumpEntries(twin.Log());
  const std::uint32_t status = twin.AppendFromFile(file.Path());
  EXPECT_EQ(file.openStreams, 0);
  if (status == 0) return 0;
  EXPECT_EQ(DumpEntries(twin.Log()), entries);
  const FaultFile good(whole);
  EXPECT_EQ(twin.AppendFromFile(good.Path()), 0u);
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

TEST(FileReading, TakesEveryByteForWhatItIs) {
  std::size_t changed = 0;
  std::size_t refused = 0;
  for (const auto& version : versions) {
    const Bytes whole = ValidFile(version.base, version.file);
    FaultFile file(whole);
    for (std::size_t at = 0; at < whole.size(); ++at) {
      for (int change = 1; change < 0x100; change = change == 0x80 ? 0xFF : 2 * change, ++changed) {
        SCOPED_TRACE(testing::Message()
                     << std::hex << version.file << std::dec << " at " << at << " by " << change);
        file.content[at] ^= static_cast<std::uint8_t>(change);
        refused += Twin().AppendFromFile(file.Path()) != 0;
        file.content[at] = whole[at];
        ASSERT_FALSE(HasFailure());
      }
    }
  }
  EXPECT_GT(refused, 0u);
  EXPECT_LT(refused, changed);
  RecordProperty("bytesChanged", std::to_string(changed));
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
  Twin twin = TwinWithEntries();
  for (const auto& [path, status] : cases) EXPECT_EQ(twin.AppendFromFile(path), status) << path;
}

// Root may read everything, so the test is somebody else meanwhile.
TEST(FileReading, ReportsAFileThatMayNotBeRead) {
  const TempFile file(ValidFile(0x0103, 0x0104));
  ASSERT_EQ(::chmod(file.CPath(), 0), 0);
  constexpr uid_t nobody = 65534;
  const uid_t user = ::geteuid();
  ASSERT_EQ(::seteuid(user == 0 ? nobody : user), 0);
  Twin twin = TwinWithEntries();
  EXPECT_EQ(twin.AppendFromFile(file.CPath()), TLErrFileOpen);
  ASSERT_EQ(::seteuid(user), 0);
  ASSERT_EQ(::chmod(file.CPath(), 0600), 0);
  EXPECT_EQ(twin.AppendFromFile(file.CPath()), 0u);
}

TEST(FileReading, ReportsThatNoMoreFilesCanBeOpened) {
  const TempFile file(ValidFile(0x0103, 0x0104));
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &before), 0);
  Twin twin = TwinWithEntries();
  const rlimit none{0, before.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &none), 0);
  EXPECT_EQ(twin.AppendFromFile(file.CPath()), TLErrFileOpen);
  EXPECT_EQ(TLTaskLogSaveAsFile(twin.Log(), file.CPath()), TLErrFileOpen);
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &before), 0);
  EXPECT_EQ(twin.AppendFromFile(file.CPath()), 0u);
}

}  // namespace
