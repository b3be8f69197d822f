// What a page carries becomes the very bytes of the file again.
#include "taskfile/pack.h"

#include <gtest/gtest.h>

#include "taskfile/base64.h"

namespace {

using namespace std::string_literals;
using taskfile::Packer;
using taskfile::Unpacker;

template <class Integer>
void Put(std::string& bytes, Integer value) {
  for (std::size_t i = 0; i < sizeof(Integer); ++i) bytes += static_cast<char>(value >> 8 * i);
}

void PutRecord(std::string& file, std::uint32_t koType, std::uint32_t id, std::uint64_t time,
               const std::string& name = {}) {
  Put(file, koType);
  Put(file, id);
  Put(file, time);
  if (koType < 7) return;
  Put(file, static_cast<std::uint32_t>(name.size()));
  file += name;
}

// Times that go backward, stand still, and leap further than 32 bits; names that change for one id.
std::string OddFile() {
  std::string file = "TaskLogger, and what is no record"s;
  const std::uint64_t steps[] = {0, 1, 400, 1ULL << 31, 1ULL << 40, 0 - (1ULL << 39)};
  std::uint64_t time = 1000;
  for (std::uint32_t i = 0; i < 2000; ++i)
    PutRecord(file, i % 7, 0xFFFFFF00 + i % 90, time += steps[i % 100 == 0 ? i / 100 % 6 : 2]);
  file += "\x09\0\0\0Stamps"s;
  for (std::uint32_t i = 0; i < 300; ++i)
    PutRecord(file, 7 + i % 2, i % 5, time += i, std::string(i % 50 == 0 ? 256 : i % 3, 'n') + '\0');
  return file + std::string(40, '\0') + "cut"s;
}

std::string Unpacked(const std::string& file, std::size_t portion) {
  Packer packer;
  Unpacker unpacker;
  std::string bytes;
  for (std::size_t at = 0; at < file.size(); at += portion)
    EXPECT_TRUE(unpacker.Unpack(packer.Pack(std::string_view(file).substr(at, portion)), bytes));
  return bytes;
}

TEST(Pack, GivesBackEveryByteWhateverThePortions) {
  const std::string file = OddFile();
  for (const std::size_t portion : {std::size_t{7}, std::size_t{150}, std::size_t{4099}, file.size()})
    EXPECT_EQ(Unpacked(file, portion), file) << portion;
}

TEST(Pack, TakesAFewBytesARecord) {
  std::string file;
  for (std::uint32_t i = 0; i < 10000; ++i) PutRecord(file, i % 7, 0x100000 + 64 * (i * 7 % 40), 1000ULL * i);
  EXPECT_LT(Packer().Pack(file).size(), 10000 * 3);
}

TEST(Unpack, RefusesEveryBeginningThatEndsWithinABlock) {
  std::string file;
  for (std::uint32_t i = 0; i < 20; ++i) PutRecord(file, 7, i % 3, i, "name");
  const std::string packed = Packer().Pack(file);
  for (std::size_t size = 1; size < packed.size(); ++size) {
    std::string bytes;
    EXPECT_FALSE(Unpacker().Unpack(packed.substr(0, size), bytes)) << size;
  }
}

// The sanitizers look on.
TEST(Unpack, SurvivesAnyChangedByte) {
  const std::string packed = Packer().Pack(OddFile().substr(0, 3000));
  for (std::size_t at = 0; at < packed.size(); ++at)
    for (const int change : {1, 0x80, 0xFF}) {
      std::string damaged = packed;
      damaged[at] = static_cast<char>(damaged[at] ^ change);
      std::string bytes;
      Unpacker().Unpack(damaged, bytes);
    }
}

TEST(Base64, IsThatOfEverybody) {
  const std::pair<const char*, const char*> cases[] = {
      {"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foo", "Zm9v"}, {"\xFB\xFF\xBF!", "+/+/IQ=="}};
  for (const auto& [bytes, text] : cases) {
    EXPECT_EQ(taskfile::Base64Of(bytes), text);
    std::string back;
    EXPECT_TRUE(taskfile::FromBase64(text, back));
    EXPECT_EQ(back, bytes);
  }
  std::string back;
  for (const char* text : {"Zg=", "Z===", "Z!==", "Zg==Zg==", "====", "Zm9"}) {
    EXPECT_FALSE(taskfile::FromBase64(text, back)) << text;
  }
}

}  // namespace
