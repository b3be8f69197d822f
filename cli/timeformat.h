// Times as exports have them.
#pragma once

#include "exporters/timeformat.h"

namespace cli {

using exporters::AppendNumber;
using exporters::TimeFormat;

}  // namespace cli
