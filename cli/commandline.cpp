// The parser reads the options of one subcommand; the subcommand itself is looked up here, so that a target
// or file that is named like one is never taken for it.
#include "commandline.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>

#include "completion.h"
#include "failure.h"
#include "optionparser.h"
#include "stdoutwriter.h"
#include "suggest.h"
#include "text.h"

namespace cli {
namespace {

std::string Overview() {
  std::string text = fmt::format("{}.\n\nUsage: tasklog COMMAND [OPTIONS]\n\nCommands:\n", programSummary);
  const auto row = [&](int width, const char* name, const char* summary) {
    text += fmt::format("  {:<{}}{}\n", name, width, summary);
  };
  for (const Command* command : Commands()) row(10, command->name, command->summary);
  row(10, helpExtra.usage, helpExtra.summary);
  text += "\nOptions:\n";
  for (const Extra& option : optionExtras) row(13, option.usage, option.summary);
  return text + "\n" + programExamples;
}

int PrintText(std::string_view text) {
  StdoutWriter out;
  out.Block().append(text);
  out.Finish();
  return exitSuccess;
}

const Command& FindCommand(const std::string& name) {
  if (const Command* const command = CommandNamed(name)) return *command;
  const bool isOption = name.starts_with('-');
  std::vector<std::string> names;
  if (isOption) names = {"--help", "--version"};
  for (const Command* command : Commands()) {
    if (!isOption) names.emplace_back(command->name);
  }
  if (!isOption) names.emplace_back(helpExtra.usage);
  const std::string suggestion = Suggestion(name, names);
  throw UsageError(fmt::format("unknown {} {}{}", isOption ? "option" : "command", Quoted(name),
                               suggestion.empty() ? " ('tasklog --help' lists the commands)" : suggestion));
}

int RunCommand(const Command& command, std::vector<std::string> arguments) {
  const Syntax syntax(command);
  if (!Parse(syntax, std::move(arguments))) return PrintText(HelpOf(syntax));
  return syntax.declared.run();
}

int Help(const std::vector<std::string>& arguments) {
  if (arguments.size() > 1) throw UsageError("help: unexpected argument " + Quoted(arguments[1]));
  const std::string name = arguments.empty() ? helpExtra.usage : arguments[0];
  if (name == helpExtra.usage || name == "-h" || name == "--help") return PrintText(Overview());
  return PrintText(HelpOf(Syntax(FindCommand(name))));
}

}  // namespace

Syntax::Syntax(const Command& which) : command(which), declared(which.declare(options)) {}

const std::vector<const Command*>& Commands() {
  static const std::vector<const Command*> commands = {
      &startCommand,     &recordCommand,  &infoCommand,    &listCommand, &statsCommand, &latencyCommand,
      &checkCommand,     &diffCommand,    &explainCommand, &plotCommand, &viewCommand,  &topCommand,
      &exportCommand,    &verifyCommand,  &repairCommand,  &cutCommand,  &joinCommand,
#ifdef TASKLOG_TABLES
      &summarizeCommand, &compactCommand,
#endif
  };
  return commands;
}

const Command* CommandNamed(std::string_view name) {
  for (const Command* command : Commands())
    if (name == command->name) return command;
  return nullptr;
}

int RunCommandLine(std::vector<std::string> arguments) {
  if (arguments.empty()) throw UsageError("no command given ('tasklog --help' lists the commands)");
  const std::string first = arguments.front();
  if (first == "-h" || first == "--help") return PrintText(Overview());
  if (first == "--version") return PrintText("tasklog " TASKLOG_VERSION "\n");
  arguments.erase(arguments.begin());
  if (first == "help") return Help(arguments);
  if (first == "complete") return Complete(arguments);
  return RunCommand(FindCommand(first), std::move(arguments));
}

void RequireOneOf(const char* option, const std::string& value, const std::vector<std::string>& names) {
  if (std::find(names.begin(), names.end(), value) != names.end()) return;
  throw UsageError(fmt::format("{}: {} is not {}{}", option, Quoted(value), Alternatives(names),
                               Suggestion(value, names)));
}

}  // namespace cli
