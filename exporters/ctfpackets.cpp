#include "ctfpackets.h"

#include <stdexcept>

#include "text.h"

namespace exporters {
namespace {

constexpr std::uint32_t magic = 0xC1FC1FC1;
constexpr std::size_t packetHeadBytes = 4 + 4 + 6 * 8 + 4;
constexpr std::size_t packetBytes = 64 * 1024;
constexpr std::size_t eventHeadBytes = 1 + 8;

constexpr char head[] = R"(/* CTF 1.8 */
typealias integer {{ size = 8; align = 8; signed = false; }} := uint8_t;
typealias integer {{ size = 32; align = 8; signed = false; }} := uint32_t;
typealias integer {{ size = 32; align = 8; signed = true; }} := int32_t;
typealias integer {{ size = 64; align = 8; signed = false; }} := uint64_t;
typealias integer {{ size = 64; align = 8; signed = true; }} := int64_t;
trace {{
  major = 1; minor = 8; byte_order = le;
  packet.header := struct {{ uint32_t magic; uint32_t stream_id; }};
}};
env {{
{}}};
clock {{ name = ticks; freq = {}; }};
typealias integer {{ size = 64; align = 8; signed = false; map = clock.ticks.value; }} := tick_t;
stream {{
  id = 0;
  packet.context := struct {{
    tick_t timestamp_begin; tick_t timestamp_end; uint64_t content_size; uint64_t packet_size;
    uint64_t packet_seq_num; uint64_t events_discarded; uint32_t cpu_id;
  }};
  event.header := struct {{ uint8_t id; tick_t timestamp; }};
}};
)";

}  // namespace

char* CtfPackets::Event(std::uint8_t id, std::uint64_t ticks, std::size_t fieldBytes) {
  fmt::memory_buffer& block = file_.Block();
  if (isOpen_ && block.size() >= packetBytes) EndPacket();
  if (!isOpen_) BeginPacket(ticks);
  last_ = ticks;
  const std::size_t at = block.size();
  block.resize(at + eventHeadBytes + fieldBytes);
  return PutLittleEndian(PutLittleEndian(block.data() + at, id), ticks);
}

void CtfPackets::BeginPacket(std::uint64_t ticks) {
  isOpen_ = true;
  first_ = ticks;
  last_ = ticks;
  file_.Block().resize(packetHeadBytes);
}

void CtfPackets::EndPacket() {
  const std::uint64_t bits = 8 * std::uint64_t{file_.Block().size()};
  char* at = file_.Block().data();
  at = PutLittleEndian(PutLittleEndian(at, magic), std::uint32_t{0});
  for (const std::uint64_t number : {first_, last_, bits, bits, sequence_, std::uint64_t{0}})
    at = PutLittleEndian(at, number);
  PutLittleEndian(at, processor_);
  ++sequence_;
  isOpen_ = false;
  file_.Flush();
}

// A reader sees a packet that is missing only between two that are there, so the gap has one at each end.
void CtfPackets::Gap(std::uint64_t from, std::uint64_t to) {
  if (!isOpen_) BeginPacket(from);
  last_ = from;
  EndPacket();
  ++sequence_;
  BeginPacket(to);
}

void CtfPackets::Finish() {
  if (isOpen_) EndPacket();
}

std::string CtfString(std::string_view bytes) {
  std::string text = "\"";
  for (const char c : SafeText(bytes)) {
    if (c == '"' || c == '\\') text += '\\';
    text += c;
  }
  return text + '"';
}

std::string CtfNames::Description(const char* name) const {
  std::string text = fmt::format("enum {} : uint32_t {{\n", name);
  for (const auto& [label, number] : numbers_) text += fmt::format("  {} = {},\n", CtfString(label), number);
  return text + fmt::format("  \"-\" = {}\n}};\n", none);
}

void CtfRate::Enter(const Source& source) {
  const std::uint64_t rate = source.lane.TicksPerSecond();
  if (rate_ != 0 && rate != 0 && rate != rate_)
    throw std::runtime_error("'" + source.name + "'" +
                             " has another tick rate than the lanes before it: export it alone");
  if (rate_ == 0) rate_ = rate;
}

std::string CtfHead(std::uint64_t ticksPerSecond, std::string_view environment) {
  return fmt::format(head, environment, ticksPerSecond);
}

void WriteCtfDescription(Files& files, std::string_view text) {
  OutputFile file(files.Create("metadata"));
  file.Block().append(text);
  file.Flush();
}

}  // namespace exporters
