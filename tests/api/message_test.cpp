// The text of every status, in buffers of every size.
#include <gtest/gtest.h>
#include <tasklog/tasklog.h>

#include <cstring>

#include "support/scriptedtarget.h"

namespace {

// What stands in a buffer of 60 '#' after a call.
std::string Buffer(std::uint32_t status, std::uint32_t size) {
  std::string buffer(60, '#');
  TLGetErrorMessage(status, buffer.data(), size);
  return buffer;
}

std::string Padded(const std::string& start) { return start + std::string(60 - start.size(), '#'); }

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
  ScriptedTarget target;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(Buffer(c.status, 0), Padded(SizeBytes(c.size)));
    for (std::uint32_t size = 1; size <= 50; ++size) {
      EXPECT_EQ(Buffer(c.status, size), Padded(c.text.substr(0, size - 1) + '\0')) << size;
    }
  }
  EXPECT_EQ(target.CallsOf(), "");
}

TEST(Message, OfAnyOtherCodeComesFromTheTargetLibrary) {
  for (const std::uint32_t status : {0x50201u, 0x40CA0020u, 0x40CA0003u, 0x40CA0000u, 0u, 0xFFFFFFFFu}) {
    ScriptedTarget target;
    target.errorTexts[status] = "what it says";
    const struct {
      std::uint32_t size, sizePassed;
      std::string expected;
    } cases[] = {
        {0, 0, SizeBytes(13)},
        {1, 1, std::string(1, '\0')},
        {2, 1, std::string("\0\0", 2)},
        {13, 12, std::string("what it say\0\0", 13)},
        {14, 13, std::string("what it says\0\0", 14)},
        {20, 19, std::string("what it says\0######\0", 20)},
    };
    for (const auto& c : cases) {
      EXPECT_EQ(Buffer(status, c.size), Padded(c.expected)) << status << ' ' << c.size;
      char call[60];
      std::snprintf(call, sizeof call, "GetErrorDescription(, 0x%X, %u)", status, c.sizePassed);
      EXPECT_EQ(target.CallsOf(), call);
      target.calls.clear();
    }
  }
}

TEST(Message, EndsWhateverTheTargetLibraryDoes) {
  ScriptedTarget target;
  target.errorTexts[0x50201] = "ab";
  target.terminatesTexts = false;
  target.storesSizes = false;
  EXPECT_EQ(Buffer(0x50201, 0), Padded(SizeBytes(0)));
  EXPECT_EQ(Buffer(0x50201, 1), Padded(std::string(1, '\0')));
  EXPECT_EQ(Buffer(0x50201, 5), Padded(std::string("abxx\0", 5)));
  target.failures["GetErrorDescription"] = 0x77;
  EXPECT_EQ(Buffer(0x50201, 5), Padded(std::string("####\0", 5)));
  TLGetErrorMessage(0x50201, nullptr, 10);
}

}  // namespace
