// From the arguments to the subcommand that does the work.
#pragma once

#include <functional>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "options.h"

namespace cli {

// What a command says of its command line, beside its options.
struct Declared {
  std::function<int()> run;  // once the arguments are parsed; gives the exit code
  // By option: the only values that it takes. They are checked before the command runs.
  std::map<std::string, std::vector<std::string>> choices = {};
  // By option: some of what it takes, to be offered where it is typed; behind a ':' follows a name.
  std::map<std::string, std::vector<std::string>> hints = {};
};

// One subcommand: a file cmd_<name>.cpp and a line in the table in commandline.cpp.
struct Command {
  const char* name;
  const char* summary;                    // one line for the list of commands
  const char* examples;                   // closes its --help
  Declared (*declare)(OptionList& list);  // adds its arguments and options
};

// The command line of one command, for whoever parses it, completes it or describes it.
struct Syntax {
  explicit Syntax(const Command& command);

  const Command& command;
  OptionList options;
  Declared declared;
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

const std::vector<const Command*>& Commands();  // in the order of the overview
// Null when there is none.
const Command* CommandNamed(std::string_view name);

inline constexpr const char* programSummary =
    "Records, stores and shows the task logs of real-time controllers";
inline constexpr const char* programExamples =
    "Example:\n"
    "  tasklog record demo --start --for 3s -o demo.tasklog\n"
    "  tasklog info demo.tasklog\n";

// What there is beside the commands, and what it does.
struct Extra {
  const char* usage;
  const char* summary;
};
inline constexpr Extra helpExtra{"help", "Print this help, or that of the command named behind it"};
inline constexpr Extra optionExtras[] = {
    {"-h,--help", "Print this help, or behind a command that of the command"},
    {"--version", "Print the version"}};

// Runs what the arguments (without the program's name) ask for; returns the exit code. Throws UsageError,
// Failure and ClosedPipe.
int RunCommandLine(std::vector<std::string> arguments);

// Throws UsageError with a suggestion unless `value` is one of the names.
void RequireOneOf(const char* option, const std::string& value, const std::vector<std::string>& names);

}  // namespace cli
