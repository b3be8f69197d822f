#include "manpage.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <sstream>

namespace cli {
namespace {

// Text as it is to be shown: no part of it is an instruction.
std::string Escaped(std::string_view text) {
  std::string page;
  bool atLineStart = true;
  for (const char byte : text) {
    if (atLineStart && (byte == '.' || byte == '\'')) page += "\\&";
    if (byte == '\\')
      page += "\\e";
    else if (byte == '-')
      page += "\\-";
    else
      page += byte;
    atLineStart = byte == '\n';
  }
  return page;
}

std::string Upper(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char byte) { return static_cast<char>(std::toupper(byte)); });
  return text;
}

std::string Head(const std::string& name, const std::string& summary) {
  return fmt::format(".TH {} 1 \"\" \"tasklog {}\" \"User Commands\"\n.SH NAME\n{} \\- {}\n",
                     Upper(Escaped(name)), TASKLOG_VERSION, Escaped(name), Escaped(summary));
}

std::string Item(const std::string& head, const std::string& text) {
  return fmt::format(".TP\n{}\n{}\n", head, Escaped(text));
}

// "\fB\-o\fR, \fB\-\-output\fR \fIPATH\fR"
std::string UsageOf(const Option& option) {
  if (option.IsArgument()) return "\\fI" + Escaped(option.names) + "\\fR";
  std::string names;
  const auto add = [&](const std::string& name) {
    names += (names.empty() ? "\\fB" : ", \\fB") + Escaped(name) + "\\fR";
  };
  if (const std::size_t comma = option.names.find(','); comma != std::string::npos)
    add(option.names.substr(0, comma));
  add(option.LongName());
  return option.TakesValue() ? names + " \\fI" + Escaped(option.valueName) + "\\fR" : names;
}

std::string Options(const OptionList& options, const char* heading, bool arguments) {
  std::string items;
  for (const Option& option : options)
    if (option.IsArgument() == arguments) items += Item(UsageOf(option), option.help);
  return items.empty() ? items : fmt::format(".SH {}\n{}", heading, items);
}

// What is required by its shortest name, all else as OPTIONS.
std::string Synopsis(const Syntax& syntax) {
  std::string required;
  std::string argument;
  for (const Option& option : syntax.options) {
    if (!option.required) continue;
    std::string usage = UsageOf(option);
    if (const std::size_t other = usage.find(", "); other != std::string::npos)
      usage.erase(other, usage.rfind(' ') - other);
    const bool several = option.IsArgument() && option.MayRepeat();
    (option.IsArgument() ? argument : required) += " " + usage + (several ? "..." : "");
  }
  return fmt::format(".SH SYNOPSIS\n\\fBtasklog {}\\fR{}{} [\\fIOPTIONS\\fR]\n", Escaped(syntax.command.name),
                     argument, required);
}

// What closes --help: paragraphs, with lines among them that begin with blanks and stay as they are.
std::string Footer(const std::string& text) {
  std::istringstream lines(text);
  std::string page;
  bool asTyped = false;
  for (std::string line; std::getline(lines, line);) {
    const bool isTyped = line.starts_with("  ");
    if (isTyped != asTyped) page += isTyped ? ".nf\n" : ".fi\n";
    asTyped = isTyped;
    const bool isHeading = line.starts_with("Example");
    page += isHeading ? ".SH EXAMPLES" : line.empty() ? ".PP" : Escaped(line);
    page += '\n';
  }
  if (asTyped) page += ".fi\n";
  return text.starts_with("Example") ? page : ".SH NOTES\n" + page;
}

std::string LowerFirst(std::string text) {
  text[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(text[0])));
  return text;
}

}  // namespace

std::string ManPage() {
  std::string page = Head("tasklog", LowerFirst(programSummary));
  page += ".SH SYNOPSIS\n\\fBtasklog\\fR \\fICOMMAND\\fR [\\fIOPTIONS\\fR]\n.SH COMMANDS\n";
  for (const Command* command : Commands())
    page += Item(fmt::format("\\fB{}\\fR", command->name),
                 fmt::format("{}: tasklog-{}(1)", command->summary, command->name));
  page += Item(fmt::format("\\fB{}\\fR", helpExtra.usage), helpExtra.summary);
  page += ".SH OPTIONS\n";
  for (const Extra& option : optionExtras)
    page += Item("\\fB" + Escaped(option.usage) + "\\fR", option.summary);
  return page + Footer(programExamples);
}

std::string ManPage(const Command& command) {
  const Syntax syntax(command);
  return Head(std::string("tasklog-") + command.name, LowerFirst(command.summary)) + Synopsis(syntax) +
         Options(syntax.options, "ARGUMENTS", true) + Options(syntax.options, "OPTIONS", false) +
         Footer(command.examples) + ".SH SEE ALSO\ntasklog(1)\n";
}

}  // namespace cli
