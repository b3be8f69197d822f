// The Common Trace Format, with every entry as it was recorded. docs/export.md, CTF.
#pragma once

#include "exporter.h"

namespace exporters {

std::unique_ptr<Exporter> MakeCtf(Files& files);

}  // namespace exporters
