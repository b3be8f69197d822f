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

class FileWriting : public testing::Test {
 protected:
  FileWriting() {
    FaultFile input(LargeFile());
    EXPECT_EQ(TLTaskLogAppendFromFile(log_.get(), input.Path()), 0u);
    EXPECT_EQ(TLTaskLogSaveAsFile(log_.get(), output_.Path()), 0u);
    whole_ = output_.content;
    calls_ = output_.callNames;
    EXPECT_GT(whole_.size(), std::size_t{300} << 10);
  }

  // What a save that stops at `size` leaves: sections that are not complete say that they hold nothing.
  Bytes Beginning(std::size_t size) const {
    Bytes beginning(whole_.begin(), whole_.begin() + static_cast<std::ptrdiff_t>(size));
    for (const Section& section : SectionsOf(whole_)) {
      if (section.end <= size) continue;
      for (std::size_t at = section.countAt; at < std::min(section.countAt + 4, size); ++at)
        beginning[at] = 0;
    }
    return beginning;
  }
  std::uint32_t SaveWith(std::size_t sizeLimit, std::size_t failingCall) {
    output_.sizeLimit = sizeLimit;
    output_.failingCall = failingCall;
    const std::uint32_t status = TLTaskLogSaveAsFile(log_.get(), output_.Path());
    EXPECT_EQ(output_.openStreams, 0);
    return status;
  }

  LogPtr log_ = NewLog();
  FaultFile output_;
  Bytes whole_;
  std::string calls_;  // of a save without faults
};

TEST_F(FileWriting, StopsWhereTheDiskIsFull) {
  ASSERT_EQ(SectionsOf(whole_).size(), 4u);
  std::vector<std::size_t> sizes;
  for (const Section& section : SectionsOf(whole_))
    for (std::size_t near = 0; near < 24; ++near) {
      sizes.push_back(section.countAt - 10 + near);
      sizes.push_back(section.end - near - 1);
    }
  for (std::size_t size = 0; size < whole_.size(); size += 4999) sizes.push_back(size);
  for (const std::size_t size : sizes) {
    ASSERT_EQ(SaveWith(size, 0), TLErrFileWrite) << size;
    ASSERT_TRUE(output_.content == Beginning(size)) << size;
  }
  EXPECT_EQ(SaveWith(SIZE_MAX, 0), 0u);
  EXPECT_TRUE(output_.content == whole_);
  RecordProperty("fullDisks", std::to_string(sizes.size()));
}

// A call that fails once: what was kept back may still be written when the file is closed, but a section
// whose count could not be written stays empty.
TEST_F(FileWriting, StopsAtEveryCall) {
  ASSERT_EQ(calls_.back(), 'c');
  for (std::size_t call = 1; call < calls_.size(); ++call) {
    SCOPED_TRACE(testing::Message() << "call " << call << " of " << calls_);
    ASSERT_EQ(SaveWith(SIZE_MAX, call), TLErrFileWrite);
    ASSERT_LE(output_.content.size(), whole_.size());
    ASSERT_TRUE(output_.content.size() < whole_.size() || call + 12 > calls_.size());
  }
  // All is written before; what closing says is not reported.
  EXPECT_EQ(SaveWith(SIZE_MAX, calls_.size()), 0u);
  EXPECT_TRUE(output_.content == whole_);
  RecordProperty("callsFailed", std::to_string(calls_.size()));
}

}  // namespace
