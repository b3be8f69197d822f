// Why a task leaves the processor, by the type of the switch: each controller has its own convention.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <tasklog/tasklog.hpp>

#include "subjects.h"

namespace analysis {

class Lane;

enum class Meaning : std::uint8_t {
  plain,      // says nothing: priorities decide
  preempted,  // another task takes the processor; the job goes on, ready
  done,       // the job is complete
  waits,      // the job goes on, waiting
  slice,      // the time slice is used up; the job goes on, ready
  fromIdle,   // the idle task had the processor
};

// The meaning of each entry type that switches. By default all are plain.
class Meanings {
 public:
  // Reads "0=preempted,1=done,3=fromIdle,4=waits,5=slice", or "sim" for just that. A type that is not named
  // is plain. When the text is wrong, there is no value and `mistake` says what was expected.
  static std::optional<Meanings> Parse(std::string_view text, std::string& mistake);
  static Meanings OfSimulator();

  Meaning Of(ETLLogType type) const { return byType_[static_cast<std::size_t>(type) & 7]; }
  bool AreKnown() const { return *this != Meanings(); }  // some type is not plain
  std::string Text() const;                              // as Parse() reads it; empty when none is known
  bool operator==(const Meanings&) const = default;

 private:
  std::array<Meaning, 8> byType_ = {};
};

// How the entries of a lane are to be read.
struct Conventions {
  Meanings meanings = {};
  TaskIndex idle = noTask;
};

// The idle task of a lane: the one of this name, of several that which ran longest. Without a name, of the
// tasks whose name begins with "idle" in any case the one of lowest priority, of several the one that ran
// longest. `noTask` when there is none.
TaskIndex FindIdleTask(const Lane& lane, const std::string& name = {});

}  // namespace analysis
