// From the arguments to the subcommand that does the work.
#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <string>
#include <vector>

namespace cli {

// One subcommand: a file cmd_<name>.cpp and a line in the table in commandline.cpp.
struct Command {
  const char* name;
  const char* summary;   // one line for the list of commands
  const char* examples;  // closes its --help
  // Declares arguments and options; the function returned runs the command once they are parsed, and gives
  // the exit code.
  std::function<int()> (*declare)(CLI::App& app);
};

// docs/cli.md describes each.
extern const Command startCommand;
extern const Command recordCommand;
extern const Command infoCommand;
extern const Command listCommand;
extern const Command statsCommand;
extern const Command latencyCommand;
extern const Command checkCommand;
extern const Command diffCommand;
extern const Command explainCommand;
extern const Command exportCommand;
extern const Command plotCommand;
extern const Command viewCommand;
extern const Command topCommand;
extern const Command verifyCommand;
extern const Command repairCommand;
extern const Command cutCommand;
extern const Command joinCommand;
extern const Command summarizeCommand;
extern const Command compactCommand;

// Runs what the arguments (without the program's name) ask for; returns the exit code. Throws UsageError,
// Failure and ClosedPipe.
int RunCommandLine(std::vector<std::string> arguments);

// Throws UsageError with a suggestion unless `value` is one of the names.
void RequireOneOf(const char* option, const std::string& value, const std::vector<std::string>& names);

}  // namespace cli
