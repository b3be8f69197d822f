// In place of topscreen.cpp where there is no ncurses.
#include "topscreen.h"

namespace cli {

std::unique_ptr<TopOutput> MakeTopScreen(const std::string&, const TopOrder&) { return nullptr; }

}  // namespace cli
