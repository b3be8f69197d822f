// Unsigned integers of 128 bits.
#pragma once

#include "exporters/wide.h"

namespace cli {

using exporters::Wide;

}  // namespace cli
