// What bytes from outside look like on a terminal and in each format: as exports have them.
#pragma once

#include "exporters/text.h"

namespace cli {

using exporters::CsvField;
using exporters::DisplayWidth;
using exporters::IsHarmless;
using exporters::JsonString;
using exporters::Quoted;
using exporters::SafeText;
using exporters::SnakeCase;

}  // namespace cli
