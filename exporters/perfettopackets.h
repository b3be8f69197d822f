// Writes Perfetto's trace packets: any kind with protozero, small ones without a heap.
#pragma once

#include <algorithm>
#include <cstddef>
#include <protozero/pbf_writer.hpp>
#include <string>
#include <string_view>

#include "outputfile.h"
#include "perfettofields.h"

namespace exporters {

// A message of a few numbers, without a heap: what there are millions of.
class SmallMessage {
 public:
  void Number(perfetto::Field field, std::uint64_t number) {
    Varint(field << 3);
    Varint(number);
  }
  // What comes next are so many bytes of a message.
  void Begin(perfetto::Field field, std::size_t size) {
    constexpr std::uint32_t lengthDelimited = 2;
    Varint(field << 3 | lengthDelimited);
    Varint(size);
  }
  void Message(perfetto::Field field, const SmallMessage& message) {
    Begin(field, message.size_);
    std::copy_n(message.bytes_, message.size_, bytes_ + size_);
    size_ += message.size_;
  }
  std::string_view Bytes() const { return {bytes_, size_}; }

 private:
  void Varint(std::uint64_t number) {
    size_ += static_cast<std::size_t>(protozero::write_varint(bytes_ + size_, number));
  }

  char bytes_[128];  // an event takes at most 70
  std::size_t size_ = 0;
};

// The trace, packet by packet.
class Packets {
 public:
  explicit Packets(const std::string& path) : file_(path) {}

  // `fill` adds fields to a packet.
  template <class Fill>
  void Add(Fill fill) {
    packet_.clear();
    protozero::pbf_writer packet(packet_);
    fill(packet);
    bytes_.clear();
    protozero::pbf_writer(bytes_).add_message(perfetto::tracePacket, packet_);
    file_.Block().append(bytes_);
    file_.FlushIfFull();
  }
  // The same for most packets; `rest` are the fields beside the timestamp.
  void Add(std::uint64_t timestamp, std::string_view rest) {
    SmallMessage time;
    time.Number(perfetto::packet::timestamp, timestamp);
    SmallMessage head;
    head.Begin(perfetto::tracePacket, time.Bytes().size() + rest.size());
    for (const std::string_view bytes : {head.Bytes(), time.Bytes(), rest}) file_.Block().append(bytes);
    file_.FlushIfFull();
  }
  void Flush() { file_.Flush(); }

 private:
  OutputFile file_;
  std::string packet_;
  std::string bytes_;
};

}  // namespace exporters
