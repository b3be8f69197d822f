// Saves that fail at any byte or call: the status, and what stands in the file then.
#include <gtest/gtest.h>

#include <algorithm>

#include "support/faultstream.h"
#include "support/logs.h"

namespace {

// Larger than what is kept back before it is written: two task sections, one of them long, and many names.
Bytes LargeFile() {
  FileSection a{"A", 1, 2}, b{"B", 3, 4};
  std::vector<FileRecord> stamps;
  for (std::uint32_t i = 0; i < 20000; ++i) {
    a.records.push_back({i % 2 ? 2u : 5u, 1 + i % 2, 2000 + i});
    if (i < 10) b.records.push_back({i % 2 ? 5u : 2u, 1 + i % 2, 2000 + i});
    if (i < 3000) stamps.push_back({7, i, 2000 + i, "A testpoint"});
  }
  return TaskFile({.startTime = 1000, .stopTime = 90000}, {a, b}, stamps, {{{8, 0, 3000, "OVRN"}}});
}

// Where the record count of each section lies, and where the section ends.
struct Section {
  std::size_t countAt, end;
};

std::uint32_t WordAt(const Bytes& bytes, std::size_t at) {
  std::uint32_t word = 0;
  for (std::size_t i = 4; i-- > 0;) word = word << 8 | bytes[at + i];
  return word;
}

std::vector<Section> SectionsOf(const Bytes& file) {
  std::vector<Section> sections;
  for (std::size_t at = 42; at < file.size();) {
    Section section{at + 4 + WordAt(file, at) + 8, 0};
    section.end = section.countAt + 4;
    for (std::uint32_t i = WordAt(file, section.countAt); i > 0; --i) {
      const bool named = file[section.end] >= 7;
      section.end += named ? 20 + WordAt(file, section.end + 16) : 16;
    }
    sections.push_back(section);
    at = section.end;
  }
  return sections;
}

// Saves of what a file holds, and what they leave when they stop.
class Saving {
 public:
  explicit Saving(const Bytes& file) {
    const FaultFile input(file);
    EXPECT_EQ(TLTaskLogAppendFromFile(log_.get(), input.Path()), 0u);
    EXPECT_EQ(With(SIZE_MAX, 0), 0u);
    whole = output.content;
    calls = output.callNames;
  }
  std::uint32_t With(std::size_t sizeLimit, std::size_t failingCall) {
    output.sizeLimit = sizeLimit;
    output.failingCall = failingCall;
    const std::uint32_t status = TLTaskLogSaveAsFile(log_.get(), output.Path());
    EXPECT_EQ(output.openStreams, 0);
    return status;
  }
  // The disk is full behind `size` bytes. Sections that are not complete say that they hold nothing.
  void StopAt(std::size_t size) {
    ASSERT_EQ(With(size, 0), TLErrFileWrite) << size;
    Bytes expected(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    for (const Section& section : SectionsOf(whole)) {
      if (section.end <= size) continue;
      for (std::size_t at = section.countAt; at < std::min(section.countAt + 4, size); ++at) expected[at] = 0;
    }
    ASSERT_TRUE(output.content == expected) << size;
  }

  FaultFile output;
  Bytes whole;
  std::string calls;  // of a save without faults

 private:
  LogPtr log_ = NewLog();
};

TEST(FileWriting, StopsWhereTheDiskIsFull) {
  Saving small(ReadHex("golden/all_types.hex"));
  ASSERT_EQ(SectionsOf(small.whole).size(), 5u);
  for (std::size_t size = 0; size < small.whole.size(); ++size) small.StopAt(size);
  Saving large(LargeFile());
  ASSERT_GT(large.whole.size(), std::size_t{300} << 10);
  std::size_t count = small.whole.size();
  for (const Section& section : SectionsOf(large.whole))
    for (std::size_t near = 0; near < 24; ++near, count += 2) {
      large.StopAt(section.countAt - 10 + near);
      large.StopAt(section.end - near - 1);
    }
  for (std::size_t size = 0; size < large.whole.size(); size += 4999, ++count) large.StopAt(size);
  EXPECT_EQ(large.With(SIZE_MAX, 0), 0u);
  EXPECT_TRUE(large.output.content == large.whole);
  RecordProperty("fullDisks", std::to_string(count));
}

// A call that fails once: what was kept back may still be written when the file is closed, but a section
// whose count could not be written stays empty.
TEST(FileWriting, StopsAtEveryCall) {
  Saving save(LargeFile());
  ASSERT_EQ(save.calls.back(), 'c');
  for (std::size_t call = 1; call < save.calls.size(); ++call) {
    SCOPED_TRACE(testing::Message() << "call " << call << " of " << save.calls);
    ASSERT_EQ(save.With(SIZE_MAX, call), TLErrFileWrite);
    ASSERT_LE(save.output.content.size(), save.whole.size());
    ASSERT_TRUE(save.output.content.size() < save.whole.size() || call + 12 > save.calls.size());
  }
  // All is written before; what closing says is not reported.
  EXPECT_EQ(save.With(SIZE_MAX, save.calls.size()), 0u);
  EXPECT_TRUE(save.output.content == save.whole);
  RecordProperty("callsFailed", std::to_string(save.calls.size()));
}

}  // namespace
