// Text into a block, as exports have it.
#pragma once

#include "exporters/print.h"

namespace cli {

using exporters::Print;

}  // namespace cli
