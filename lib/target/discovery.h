// Names that the log gives to what a controller knows only by a number.
#pragma once

#include <string>

#include "model/types.h"

// The name of a timing issue: the four characters of its code, or "0x%08X" when one is not printable.
std::string TimingIssueName(u32 code);
