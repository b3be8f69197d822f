// Chrome trace events, as JSON. docs/export.md, Chrome.
#pragma once

#include "exporter.h"

namespace exporters {

std::unique_ptr<Exporter> MakeChrome(Files& files);

}  // namespace exporters
