// CLI11 reads the options of one subcommand; the subcommand itself is looked up here, so that a target or
// file that is named like one is never taken for it.
#include "commandline.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <iterator>

#include "completion.h"
#include "failure.h"
#include "stdoutwriter.h"
#include "suggest.h"
#include "text.h"

namespace cli {
namespace {

std::string Overview() {
  std::string text = fmt::format("{}.\n\nUsage: tasklog COMMAND [OPTIONS]\n\nCommands:\n", programSummary);
  const auto row = [&](int width, const char* name, const char* summary) {
    fmt::format_to(std::back_inserter(text), "  {:<{}}{}\n", name, width, summary);
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

std::vector<std::string> OptionNames(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

// What CLI11 could not place: report the first option among it, else the first of all.
UsageError Unexpected(const CLI::App& app, const Command& command) {
  const std::vector<std::string> rest = app.remaining();
  const auto isOption = [](const std::string& argument) { return argument.starts_with('-'); };
  const auto option = std::find_if(rest.begin(), rest.end(), isOption);
  if (option == rest.end()) {
    return UsageError(fmt::format("{}: unexpected argument {} ('tasklog {} --help' shows the usage)",
                                  command.name, rest.empty() ? "" : Quoted(rest.front()), command.name));
  }
  const std::string name = option->substr(0, option->find('='));
  const std::string suggestion = Suggestion(name, OptionNames(app));
  const std::string help = fmt::format(" ('tasklog {} --help' lists the options)", command.name);
  return UsageError(fmt::format("{}: unknown option {}{}", command.name, Quoted(name),
                                suggestion.empty() ? help : suggestion));
}

// In place of "--limit: 1 required N missing" and "--limit: At Most 1 required but received 2".
std::string Explained(const CLI::ParseError& error) {
  const std::string text = error.what();
  if (error.get_name() != "ArgumentMismatch") return SafeText(text);
  const bool tooMany = text.find("received") != std::string::npos;
  return text.substr(0, text.find(':')) + (tooMany ? " is given more than once" : " needs a value");
}

// CLI11 takes an argument of a list such as "[a,b]" apart. A path in brackets is meant as it is; the value of
// an option stays.
void ProtectBrackets(const CLI::App& app, std::vector<std::string>& arguments) {
  const auto lists = app.get_options(
      [](const CLI::Option* option) { return option->get_positional() && option->get_allow_extra_args(); });
  if (lists.empty()) return;
  const CLI::Option* before = nullptr;
  for (std::string& argument : arguments) {
    const bool isValue = before && before->get_items_expected_max() > 0;
    before = isValue ? nullptr : app.get_option_no_throw(argument);
    if (!isValue && argument.starts_with('[') && argument.ends_with(']')) argument.insert(0, "./");
  }
}

// Throws UsageError when an option has a value that it does not take.
void CheckChoices(const Syntax& syntax) {
  for (const auto& [option, values] : syntax.declared.choices)
    for (const std::string& value : syntax.app.get_option(option)->results())
      RequireOneOf(option.c_str(), value, values);
}

int RunCommand(const Command& command, std::vector<std::string> arguments) {
  Syntax syntax(command);
  CLI::App& app = syntax.app;
  ProtectBrackets(app, arguments);
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 wants it
  try {
    app.parse(arguments);
  } catch (const CLI::CallForHelp&) {
    return PrintText(app.help());
  } catch (const CLI::ExtrasError&) {
    throw Unexpected(app, command);
  } catch (const CLI::ParseError& error) {
    throw UsageError(fmt::format("{}: {} ('tasklog {} --help' shows the usage)", command.name,
                                 Explained(error), command.name));
  }
  CheckChoices(syntax);
  return syntax.declared.run();
}

int Help(const std::vector<std::string>& arguments) {
  if (arguments.size() > 1) throw UsageError("help: unexpected argument " + Quoted(arguments[1]));
  const std::string name = arguments.empty() ? helpExtra.usage : arguments[0];
  if (name == helpExtra.usage || name == "-h" || name == "--help") return PrintText(Overview());
  return PrintText(Syntax(FindCommand(name)).app.help());
}

}  // namespace

Syntax::Syntax(const Command& command) : app(command.summary, std::string("tasklog ") + command.name) {
  app.set_help_flag("-h,--help", "Print this help");
  app.footer(command.examples);
  app.get_formatter()->column_width(28);
  declared = command.declare(app);
}

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
