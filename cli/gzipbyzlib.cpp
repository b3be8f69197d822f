#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "gzip.h"

namespace cli {
namespace {

constexpr std::size_t portion = std::size_t{3} << 16;  // a multiple of 3: base64 of it has no padding
constexpr char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Of a multiple of three bytes, unless it is the end.
void AppendBase64(std::string& text, const std::uint8_t* bytes, std::size_t count) {
  for (std::size_t i = 0; i < count; i += 3) {
    const std::size_t left = std::min<std::size_t>(count - i, 3);
    const std::uint32_t word = std::uint32_t{bytes[i]} << 16 |
                               (left > 1 ? std::uint32_t{bytes[i + 1]} << 8 : 0) |
                               (left > 2 ? std::uint32_t{bytes[i + 2]} : 0);
    text += digits[word >> 18];
    text += digits[word >> 12 & 63];
    text += left > 1 ? digits[word >> 6 & 63] : '=';
    text += left > 2 ? digits[word & 63] : '=';
  }
}

}  // namespace

struct GzipText::State {
  TextSink sink;
  z_stream stream = {};
  std::vector<std::uint8_t> packed = std::vector<std::uint8_t>(portion);
  std::string text = {};

  // Takes what the compressor gives; until it needs more, or to the end.
  void Run(int flush) {
    do {
      if (stream.avail_out == 0) Pass(portion);
    } while (::deflate(&stream, flush) == Z_OK &&
             (stream.avail_in > 0 || stream.avail_out == 0 || flush == Z_FINISH));
  }
  void Pass(std::size_t count) {
    text.clear();
    AppendBase64(text, packed.data(), count);
    sink(text);
    stream.next_out = packed.data();
    stream.avail_out = portion;
  }
};

GzipText::GzipText(TextSink sink) : state_(std::make_unique<State>(State{std::move(sink)})) {
  constexpr int fastest = 1;
  constexpr int gzipOfLargestWindow = 15 + 16;
  constexpr int mostMemory = 9;
  if (::deflateInit2(&state_->stream, fastest, Z_DEFLATED, gzipOfLargestWindow, mostMemory,
                     Z_DEFAULT_STRATEGY) != Z_OK)
    throw std::bad_alloc();
  state_->stream.next_out = state_->packed.data();
  state_->stream.avail_out = portion;
}

GzipText::~GzipText() { ::deflateEnd(&state_->stream); }

void GzipText::Add(std::string_view bytes) {
  state_->stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
  state_->stream.avail_in = static_cast<uInt>(bytes.size());
  state_->Run(Z_NO_FLUSH);
}

void GzipText::Finish() {
  state_->Run(Z_FINISH);
  state_->Pass(portion - state_->stream.avail_out);
}

}  // namespace cli
