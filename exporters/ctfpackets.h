// What both profiles of the Common Trace Format 1.8 share: packets of events of one lane, and the texts that
// describe them. docs/export.md, CTF.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "exporter.h"
#include "outputfile.h"

namespace exporters {

// Writes a number with its lowest byte first; returns the place behind it.
template <class Integer>
char* PutLittleEndian(char* at, Integer value) {
  for (std::size_t i = 0; i < sizeof value; ++i)
    at[i] = static_cast<char>(static_cast<std::uint64_t>(value) >> 8 * i);
  return at + sizeof value;
}

// The stream of one lane.
class CtfPackets {
 public:
  CtfPackets(const std::string& path, std::uint32_t processor) : file_(path), processor_(processor) {}

  // An event with a header and so many bytes of fields, which the caller writes to where this points.
  char* Event(std::uint8_t id, std::uint64_t ticks, std::size_t fieldBytes);
  // How many records were lost is unknown: a packet is left out of the count.
  void Gap(std::uint64_t from, std::uint64_t to);
  void Finish();

 private:
  void BeginPacket(std::uint64_t ticks);
  void EndPacket();

  OutputFile file_;
  std::uint32_t processor_;
  bool isOpen_ = false;
  std::uint64_t first_ = 0;
  std::uint64_t last_ = 0;
  std::uint64_t sequence_ = 0;
};

// The text of a name within a CTF description, in double quotes.
std::string CtfString(std::string_view bytes);

// Names as the numbers of an enumeration. Equal names have one number, for readers refuse a label that comes
// twice.
class CtfNames {
 public:
  static constexpr std::uint32_t none = UINT32_MAX;

  std::uint32_t NumberOf(const std::string& name) {
    return numbers_.try_emplace(name, static_cast<std::uint32_t>(numbers_.size())).first->second;
  }
  // "enum NAME : uint32_t { ... };"
  std::string Description(const char* name) const;

 private:
  std::map<std::string, std::uint32_t> numbers_;
};

// The tick rate that all lanes share. Where it is unknown, a tick counts as a nanosecond.
class CtfRate {
 public:
  // Throws std::runtime_error when the lane has another one than those before.
  void Enter(const Source& source);
  std::uint64_t TicksPerSecond() const { return rate_ == 0 ? 1'000'000'000 : rate_; }

 private:
  std::uint64_t rate_ = 0;
};

// The first part of a description: types, clock, packets. `environment` are lines of "key = value;".
std::string CtfHead(std::uint64_t ticksPerSecond, std::string_view environment);

// Writes the description, which comes last: a folder without one is no trace.
void WriteCtfDescription(Files& files, std::string_view text);

}  // namespace exporters
