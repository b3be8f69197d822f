// The simulator's status codes, and how a failure inside becomes a status with a text.
//
// Inside, a failure is thrown; the exported functions catch it, keep its text for GetErrorDescription and
// return its status. docs/scenarios.md lists the codes.
#pragma once

#include <cstdint>
#include <string>

namespace sim {

inline constexpr uint32_t unknownTarget = 0x51001;
inline constexpr uint32_t badScenario = 0x51002;
inline constexpr uint32_t badAddress = 0x51003;
inline constexpr uint32_t noAnswer = 0x51004;
inline constexpr uint32_t injectedFault = 0x51005;
inline constexpr uint32_t badArgument = 0x51006;
inline constexpr uint32_t wrongType = 0x51007;
inline constexpr uint32_t readOnly = 0x51008;
inline constexpr uint32_t unknownKernel = 0x51009;
inline constexpr uint32_t unknownTask = 0x5100A;
inline constexpr uint32_t unknownTaskItem = 0x5100B;
inline constexpr uint32_t unknownTrigger = 0x5100C;
inline constexpr uint32_t outOfMemory = 0x5100E;
inline constexpr uint32_t internalError = 0x5100F;

// The library's own code for a start procedure that answered 0; it leaves the text to us.
inline constexpr uint32_t loggerNotStarted = 0x40CA0020;

struct Failure {
  uint32_t status;
  std::string text;  // one line; empty means the general text of the status
};

// Keeps what is known about the latest failure with this status.
void RememberText(uint32_t status, const std::string& text);

// What the status means in general.
std::string GeneralTextOf(uint32_t status);

// What is known about the latest failure with this status on this thread, else on any thread, else
// the general text.
std::string TextOf(uint32_t status);

}  // namespace sim
