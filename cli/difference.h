// Two recordings compared, for `tasklog diff` and the page.
#pragma once

#include <vector>

#include "diffformat.h"

namespace cli {

// Neither side is empty. With `named` lanes belong together by their names, otherwise each is the only lane
// of its recording. Throws Failure when tick rates differ.
Difference CompareSides(std::vector<AnalysedLane> before, std::vector<AnalysedLane> after, bool named);

}  // namespace cli
