// The numbers of the fields of Perfetto's trace packets that are written here. tests/exporters/perfetto.proto
// says the same to those who check.
#pragma once

#include <cstdint>

namespace exporters::perfetto {

using Field = std::uint32_t;

inline constexpr Field tracePacket = 1;

namespace packet {
inline constexpr Field timestamp = 8, sequence = 10, trackEvent = 11, internedData = 12, sequenceFlags = 13,
                       trackDescriptor = 60, taskState = 117, processTree = 122;
}
namespace tree {
inline constexpr Field processes = 1, threads = 2;
}
namespace process {
inline constexpr Field number = 1, name = 3;
}
namespace thread {
inline constexpr Field number = 1, process = 2, name = 3, isIdle = 5;
}
namespace state {
inline constexpr Field processor = 1, thread = 3, state = 4, priority = 5;
inline constexpr std::uint32_t runnable = 2, running = 3;
}  // namespace state
namespace track {
inline constexpr Field id = 1, name = 2, process = 3, thread = 4, parent = 5, ordering = 11, rank = 12;
inline constexpr Field processNumber = 1, processName = 6, threadProcess = 1, threadNumber = 2,
                       threadName = 5;
inline constexpr std::int32_t explicitOrder = 3;
}  // namespace track
namespace event {
inline constexpr Field category = 3, annotation = 4, type = 9, name = 10, track = 11;
inline constexpr std::uint32_t begin = 1, end = 2, instant = 3;
inline constexpr Field annotationName = 1, annotationNumber = 3;
}  // namespace event
namespace interned {
inline constexpr Field categories = 1, eventNames = 2, annotationNames = 3;
inline constexpr Field id = 1, text = 2;
}  // namespace interned

}  // namespace exporters::perfetto
