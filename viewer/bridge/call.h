// A call of the page: what it asks, and what it gets. Each source of this folder adds calls of one concern to
// the table in bridge.cpp. docs/viewer.md lists them with their keys.
#pragma once

#include <fmt/format.h>

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "cli/jsonwriter.h"
#include "cli/recording.h"

namespace viewer {

using Ticks = std::uint64_t;

// The keys of a call. Each throws cli::Failure where the key is missing or of another kind.
class Request {
 public:
  explicit Request(const nlohmann::json& keys) : keys_(keys) {}

  bool Has(const char* key) const;    // neither missing nor null
  Ticks Time(const char* key) const;  // a string of digits
  double Number(const char* key) const;
  std::size_t Index(const char* key) const;
  bool Flag(const char* key) const;
  std::string Text(const char* key) const;
  std::vector<std::string> Texts(const char* key) const;

 private:
  const nlohmann::json& At(const char* key) const;

  const nlohmann::json& keys_;
};

// JSON in `json`; numbers for drawing beside it, which are not worth a text.
struct Answer {
  fmt::memory_buffer text;
  cli::JsonWriter json{text};
  std::vector<std::int32_t> ints;
  std::vector<float> floats;
  std::vector<std::uint32_t> pixels;  // bytes red, green, blue, opacity
};

class Recording;
using Call = void (*)(Recording& recording, const Request& request, Answer& answer);

// open.cpp
void Open(Recording& recording, const Request& request, Answer& answer);
void Group(Recording& recording, const Request& request, Answer& answer);
// rows.cpp
void Rows(Recording& recording, const Request& request, Answer& answer);
void Visible(Recording& recording, const Request& request, Answer& answer);
void Axis(Recording& recording, const Request& request, Answer& answer);
// pixels.cpp
void Pixels(Recording& recording, const Request& request, Answer& answer);
// places.cpp
void HitTest(Recording& recording, const Request& request, Answer& answer);
void Details(Recording& recording, const Request& request, Answer& answer);
// steps.cpp
void Step(Recording& recording, const Request& request, Answer& answer);
void Search(Recording& recording, const Request& request, Answer& answer);
// numbers.cpp
void Statistics(Recording& recording, const Request& request, Answer& answer);
void Findings(Recording& recording, const Request& request, Answer& answer);
void Diff(Recording& recording, const Request& request, Answer& answer);
// overview.cpp
void Load(Recording& recording, const Request& request, Answer& answer);
// spread.cpp
void Histogram(Recording& recording, const Request& request, Answer& answer);
void Places(Recording& recording, const Request& request, Answer& answer);
void Pieces(Recording& recording, const Request& request, Answer& answer);
// entries.cpp
void Entries(Recording& recording, const Request& request, Answer& answer);
void EntriesCsv(Recording& recording, const Request& request, Answer& answer);

}  // namespace viewer
