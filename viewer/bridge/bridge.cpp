// The whole face of the bridge towards the page: one call by name, and where its answer lies.
#include <exception>
#include <new>
#include <nlohmann/json.hpp>
#include <optional>

#include "call.h"
#include "cli/failure.h"
#include "recording.h"

namespace viewer {
namespace {

struct Entry {
  std::string_view name;
  Call call;
};

constexpr Entry calls[] = {
    {"open", Open},       {"group", Group},           {"rows", Rows},        {"visible", Visible},
    {"axis", Axis},       {"pixels", Pixels},         {"hit", HitTest},      {"details", Details},
    {"step", Step},       {"search", Search},         {"stats", Statistics}, {"explain", Findings},
    {"diff", Diff},       {"histogram", Histogram},   {"places", Places},    {"pieces", Pieces},
    {"entries", Entries}, {"entriesCsv", EntriesCsv}, {"load", Load},
};

Call Find(std::string_view name) {
  for (const Entry& entry : calls)
    if (entry.name == name) return entry.call;
  throw cli::Failure(fmt::format("the page has no call '{}'", name));
}

Recording recording;
std::optional<Answer> answer;

// The answer is the text of an error then.
int Fail(std::string_view text) {
  answer.emplace().text.append(text);
  return 1;
}

}  // namespace
}  // namespace viewer

// What lies where is valid until the next call.
extern "C" {

// `keys` is JSON. 0: the answer is there; 1: its text says what went wrong.
int TaskLogCall(const char* name, const char* keys) {
  using viewer::answer;
  try {
    answer.emplace();
    const nlohmann::json parsed = nlohmann::json::parse(keys);
    viewer::Find(name)(viewer::recording, viewer::Request(parsed), *answer);
    return 0;
  } catch (const std::bad_alloc&) {
    return viewer::Fail("out of memory: the browser gives a page 4 GB; select a part with --from and --to");
  } catch (const std::exception& error) {
    return viewer::Fail(error.what());
  }
}

const char* TaskLogText() { return viewer::answer->text.data(); }
std::size_t TaskLogTextSize() { return viewer::answer->text.size(); }
const std::int32_t* TaskLogInts() { return viewer::answer->ints.data(); }
std::size_t TaskLogIntCount() { return viewer::answer->ints.size(); }
const float* TaskLogFloats() { return viewer::answer->floats.data(); }
std::size_t TaskLogFloatCount() { return viewer::answer->floats.size(); }
const std::uint32_t* TaskLogPixels() { return viewer::answer->pixels.data(); }
std::size_t TaskLogPixelCount() { return viewer::answer->pixels.size(); }
}
