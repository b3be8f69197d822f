// The text of every status, in buffers of every size.
#include <gtest/gtest.h>
#include <tasklog/tasklog.h>

#include <cstring>

#include "support/scriptedtarget.h"

namespace {

// What stands in a buffer of 60 '#' after a call, as far as it is no '#' any more.
std::string Written(std::uint32_t status, std::uint32_t size) {
  std::string buffer(60, '#');
  TLGetErrorMessage(status, buffer.data(), size);
  return buffer.substr(0, buffer.find_last_not_of('#') + 1);
}

// Four bytes of a size query.
std::string SizeBytes(std::uint32_t size) {
  std::string bytes(4, '\0');
  std::memcpy(bytes.data(), &size, 4);
  return bytes;
}

TEST(Message, OfTheLibraryFitsAnyBuffer) {
  const struct {
    std::uint32_t status;
    std::string text;
    std::uint32_t size;
  } cases[] = {
      {0x40CA0001, "Out of memory", 14},
      {0x40CA0002, "Operation canceled", 19},
      {0x40CA0010, "Error opening TaskLog file", 27},
      {0x40CA0011, "Error reading TaskLog file", 27},
      {0x40CA0012, "Not a valid TaskLog file", 25},
      {0x40CA0013, "TaskLog file has newer version than supported", 46},
      {0x40CA0014, "Error writing TaskLog file", 27},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Written(c.status, 0), SizeBytes(c.size));
    for (std::uint32_t size = 1; size <= 50; ++size)
      EXPECT_EQ(Written(c.status, size), c.text.substr(0, size - 1) + '\0') << size;
  }
}

TEST(Message, OfAnyOtherCodeComesFromTheTargetLibraryAndEnds) {
  for (const std::uint32_t status : {0x50201u, 0x40CA0020u, 0x40CA0003u, 0u, 0xFFFFFFFFu}) {
    ScriptedTarget target;
    target.errorTexts[status] = "what it says";
    EXPECT_EQ(Written(status, 0), SizeBytes(13));
    EXPECT_EQ(Written(status, 1), std::string("\0", 1));
    EXPECT_EQ(Written(status, 13), std::string("what it say\0\0", 13));
    EXPECT_EQ(Written(status, 20), std::string("what it says\0######\0", 20));
    target.terminatesTexts = target.storesSizes = false;
    EXPECT_EQ(Written(status, 0), SizeBytes(0));
    EXPECT_EQ(Written(status, 20), std::string("what it saysxxxxxxx\0", 20));
    target.failures["GetErrorDescription"] = 0x77;
    EXPECT_EQ(Written(status, 5), std::string("####\0", 5));
  }
  TLGetErrorMessage(0x50201, nullptr, 10);
}

}  // namespace
