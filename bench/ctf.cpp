// Writes a trace in the Common Trace Format: a text that describes it, and packets of events.
#include "ctf.h"

#include <fmt/format.h>

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <unordered_map>
#include <vector>

namespace bench {
namespace {

constexpr std::uint16_t noCategory = 0xFFFF;
constexpr std::uint32_t packetMagic = 0xC1FC1FC1;
constexpr std::size_t packetHeaderBytes = 4 + 4 + 8 + 8 + 8 + 8;
constexpr std::size_t eventBytes = 1 + 8 + 2 + 2;
constexpr std::size_t eventsPerPacket = 4096;

constexpr char head[] = R"(/* CTF 1.8 */
typealias integer {{ size = 8; align = 8; signed = false; }} := uint8_t;
typealias integer {{ size = 16; align = 8; signed = false; }} := uint16_t;
typealias integer {{ size = 32; align = 8; signed = false; }} := uint32_t;
typealias integer {{ size = 64; align = 8; signed = false; }} := uint64_t;
trace {{
  major = 1; minor = 8; byte_order = le;
  packet.header := struct {{ uint32_t magic; uint32_t stream_id; }};
}};
clock {{ name = ticks; freq = {}; }};
typealias integer {{ size = 64; align = 8; signed = false; map = clock.ticks.value; }} := tick_t;
stream {{
  id = 0;
  packet.context := struct {{
    tick_t timestamp_begin; tick_t timestamp_end; uint64_t content_size; uint64_t packet_size;
  }};
  event.header := struct {{ uint8_t id; tick_t timestamp; }};
}};
)";

constexpr char event[] =
    "event {{ name = \"{}\"; id = {}; stream_id = 0; fields := struct {{ enum category subject; enum "
    "category "
    "running; }}; }};\n";

constexpr const char* eventNames[] = {"switch0", "switch1", "event",     "switch3",
                                      "switch4", "switch5", "testpoint", "issue"};

// Little-endian integers.
class Bytes {
 public:
  template <class Integer>
  void Put(Integer value) {
    for (std::size_t i = 0; i < sizeof value; ++i)
      bytes_.push_back(static_cast<char>(std::uint64_t{value} >> 8 * i));
  }
  const std::vector<char>& All() const { return bytes_; }
  void Clear() { bytes_.clear(); }

 private:
  std::vector<char> bytes_;
};

using Numbers = std::unordered_map<TLCategory, std::uint16_t>;

Numbers NumberCategories(const tasklog::Log& log) {
  Numbers numbers;
  for (const auto& category : log.Categories())
    numbers.emplace(category.Handle(), static_cast<std::uint16_t>(numbers.size()));
  if (numbers.size() >= noCategory) throw std::runtime_error("too many categories");
  return numbers;
}

void WriteMetadata(const tasklog::Log& log, std::ofstream& out) {
  out << fmt::format(head, log.TicksPerSecond());
  out << "enum category : uint16_t {\n";
  int number = 0;
  for (const auto& category : log.Categories())
    out << fmt::format("  \"{}\" = {},\n", category.Name(), number++);
  out << fmt::format("  \"-\" = {}\n}};\n", noCategory);
  for (std::size_t type = 0; type < std::size(eventNames); ++type)
    out << fmt::format(event, eventNames[type], type);
}

// Events of one packet, until it is full.
class Packets {
 public:
  explicit Packets(std::ofstream& out) : out_(out) {}

  void Add(const tasklog::Entry& entry, const Numbers& numbers) {
    if (count_ == 0) first_ = entry.Timestamp();
    last_ = entry.Timestamp();
    events_.Put(static_cast<std::uint8_t>(entry.Type()));
    events_.Put(last_);
    for (const std::uint32_t slot : {0u, 1u}) {
      const TLCategory category = TLEntryGetCategory(entry.Handle(), slot);
      events_.Put(category ? numbers.at(category) : noCategory);
    }
    if (++count_ == eventsPerPacket) Flush();
  }
  void Flush() {
    if (count_ == 0) return;
    const std::uint64_t bits = 8 * (packetHeaderBytes + count_ * eventBytes);
    Bytes header;
    header.Put(packetMagic);
    header.Put(std::uint32_t{0});
    header.Put(first_);
    header.Put(last_);
    header.Put(bits);
    header.Put(bits);
    for (const Bytes& bytes : {header, events_})
      out_.write(bytes.All().data(), static_cast<std::streamsize>(bytes.All().size()));
    events_.Clear();
    count_ = 0;
  }

 private:
  std::ofstream& out_;
  Bytes events_;
  std::size_t count_ = 0;
  std::uint64_t first_ = 0;
  std::uint64_t last_ = 0;
};

}  // namespace

void WriteCtf(const tasklog::Log& log, const std::string& folder) {
  std::filesystem::create_directories(folder);
  std::ofstream metadata(folder + "/metadata");
  WriteMetadata(log, metadata);
  std::ofstream stream(folder + "/stream", std::ios::binary);
  const Numbers numbers = NumberCategories(log);
  Packets packets(stream);
  for (const auto& entry : log.Entries()) packets.Add(entry, numbers);
  packets.Flush();
  metadata.close();
  stream.close();
  if (!metadata || !stream) throw std::runtime_error("writing to " + folder + " failed");
}

}  // namespace bench
