// What can come next on a command line. The shells' scripts in cli/completions/ ask `tasklog complete`.
#pragma once

#include <string>
#include <vector>

namespace cli {

// `arguments`: the place of the word that is being typed, then the words behind "tasklog". Prints what that
// word may become, one a line, with a tab and its meaning behind it where it has one. A line that begins with
// a tab says "files": any path may stand there, behind the text that follows another tab. Whatever is wrong
// offers nothing, without a word. Returns exitSuccess.
int Complete(const std::vector<std::string>& arguments);

}  // namespace cli
