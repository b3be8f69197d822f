// Perfetto's trace packets. docs/export.md, Perfetto.
#pragma once

#include "exporter.h"

namespace exporters {

std::unique_ptr<Exporter> MakePerfetto(Files& files);

}  // namespace exporters
