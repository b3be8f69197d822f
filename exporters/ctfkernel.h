// The Common Trace Format with the events by which viewers know an operating system's scheduler.
// docs/export.md, CTF.
#pragma once

#include "exporter.h"

namespace exporters {

std::unique_ptr<Exporter> MakeCtfKernel(Files& files);

}  // namespace exporters
