// Files of a dataset, read back: what is damaged is refused, and never harms.
#include <gtest/gtest.h>

#include <stdexcept>

#include "fleet/joinedfile.h"
#include "fleet/rows.h"

namespace fleet {
namespace {

std::string FileOf(const std::string& identity) {
  std::string bytes;
  Rows rows({.identity = identity, .source = "logs/a", .machine = "press"}, bytes);
  for (const char* lane : {"kernel1", "kernel2", "kernel3"}) rows.AddBroken(lane, std::string(200, 'x'));
  rows.Finish();
  return bytes;
}

// Whether the file could be joined to another one.
bool Joins(std::string_view file) {
  JoinedFile joined;
  try {
    joined.Add(file, {});
  } catch (const std::runtime_error&) {
    return false;
  }
  return true;
}

TEST(JoinedFile, HasEachRecordingOnce) {
  JoinedFile joined;
  joined.Add(FileOf("a"), {});
  joined.Add(FileOf("b"), {});
  joined.Add(FileOf("a"), {});
  joined.Add(FileOf("c"), {"c"});
  EXPECT_EQ(joined.Rows(), 6u);
  EXPECT_EQ(RecordingsIn(joined.Finish()), (std::set<std::string>{"a", "b"}));
}

TEST(JoinedFile, RefusesFilesCutShort) {
  const std::string file = FileOf("a");
  ASSERT_TRUE(Joins(file));
  for (std::size_t size = 0; size < file.size(); ++size) EXPECT_FALSE(Joins({file.data(), size})) << size;
}

// Not all damage can be seen; sanitizers watch that none of it harms.
TEST(JoinedFile, SurvivesEachByteChanged) {
  const std::string file = FileOf("a");
  std::size_t refused = 0;
  for (std::size_t at = 0; at < file.size(); ++at) {
    std::string damaged = file;
    damaged[at] = static_cast<char>(damaged[at] ^ "\x01\x80\xFF"[at % 3]);
    refused += !Joins(damaged);
  }
  EXPECT_GT(refused, file.size() / 2);
}

}  // namespace
}  // namespace fleet
