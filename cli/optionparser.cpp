#include "optionparser.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "failure.h"
#include "suggest.h"
#include "text.h"

namespace cli {
namespace {

// Of several values of one argument each is a word; an option is repeated for them.
CLI::Option* AddTo(CLI::App& app, const Option& option) {
  const auto add = [&](auto& place) { return app.add_option(option.names, place, option.help); };
  if (auto* const flag = std::get_if<bool*>(&option.place))
    return app.add_flag(option.names, **flag, option.help);
  if (auto* const value = std::get_if<std::string*>(&option.place)) return add(**value);
  if (auto* const value = std::get_if<std::optional<std::string>*>(&option.place)) return add(**value);
  return add(*std::get<std::vector<std::string>*>(option.place))->allow_extra_args(option.IsArgument());
}

// The command line of one command, as CLI11 has it.
struct Parser {
  explicit Parser(const Syntax& syntax)
      : command(syntax.command), app(command.summary, std::string("tasklog ") + command.name) {
    app.footer(command.examples);
    app.get_formatter()->column_width(28);
    for (const Option& option : syntax.options) {
      if (std::holds_alternative<std::monostate>(option.place)) {
        app.set_help_flag(option.names, option.help);
        continue;
      }
      CLI::Option* const added = AddTo(app, option)->required(option.required);
      if (option.TakesValue()) added->type_name(option.valueName);
    }
  }

  const Command& command;
  CLI::App app;
};

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
void CheckChoices(const CLI::App& app, const Declared& declared) {
  for (const auto& [option, values] : declared.choices)
    for (const std::string& value : app.get_option(option)->results())
      RequireOneOf(option.c_str(), value, values);
}

}  // namespace

std::string HelpOf(const Syntax& syntax) { return Parser(syntax).app.help(); }

bool Parse(const Syntax& syntax, std::vector<std::string> arguments) {
  Parser parser(syntax);
  const Command& command = syntax.command;
  ProtectBrackets(parser.app, arguments);
  std::reverse(arguments.begin(), arguments.end());  // as CLI11 wants it
  try {
    parser.app.parse(arguments);
  } catch (const CLI::CallForHelp&) {
    return false;
  } catch (const CLI::ExtrasError&) {
    throw Unexpected(parser.app, command);
  } catch (const CLI::ParseError& error) {
    throw UsageError(fmt::format("{}: {} ('tasklog {} --help' shows the usage)", command.name,
                                 Explained(error), command.name));
  }
  CheckChoices(parser.app, syntax.declared);
  return true;
}

}  // namespace cli
