// Starts the logger of a controller.
#pragma once

#include "model/types.h"

// What TLStartLog does, for a target that is not null. Allocates nothing.
u32 StartLog(const char* target, const char* triggerTask);
