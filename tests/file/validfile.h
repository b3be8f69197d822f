// A valid file of every version, with what a reader makes of it.
#pragma once

#include "support/dump.h"
#include "support/taskfile.h"

// Holds all that the version has, also records that are dropped or ignored.
Bytes ValidFile(std::uint16_t baseVersion, std::uint16_t fileVersion);

std::string EntriesOfValidFile(std::uint32_t effectiveVersion);
