// Bytes as gzip has them, in base64, as a page carries them.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string_view>

namespace cli {

using TextSink = std::function<void(std::string_view)>;

// Takes bytes in portions and hands on text in portions; keeps little of either.
class GzipText {
 public:
  // Throws Failure where this program was built without a compressor.
  explicit GzipText(TextSink sink);
  ~GzipText();

  void Add(std::string_view bytes);
  void Finish();  // at the end of all

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace cli
