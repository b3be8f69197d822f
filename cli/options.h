// What a command takes, as it declares it. Its parser, the manual page and completion go by the same list.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace cli {

// Where what was typed goes: a flag, one value, one that may be missing, or several. None for what the parser
// answers itself.
using Place =
    std::variant<std::monostate, bool*, std::string*, std::optional<std::string>*, std::vector<std::string>*>;

// An option, or an argument, which has no '-' before its name.
struct Option {
  std::string names;  // as typed: "LOG", "--from" or "-o,--output"
  Place place;
  std::string help;
  std::string valueName = {};
  bool required = false;

  bool IsArgument() const { return !names.starts_with('-'); }
  bool TakesValue() const { return place.index() > 1; }
  bool MayRepeat() const { return std::holds_alternative<std::vector<std::string>*>(place); }
  std::string LongName() const;  // "--output"; empty for an argument
  bool IsCalled(std::string_view name) const;
};

// Options in the order of --help.
class OptionList {
 public:
  OptionList();  // --help

  // `place` is filled while the command line is read.
  void Add(const char* names, Place place, std::string help, const char* valueName = "");
  void AddRequired(const char* names, Place place, std::string help, const char* valueName = "");

  // Null when there is none.
  const Option* Called(std::string_view name) const;
  const Option* Argument() const;
  auto begin() const { return options_.begin(); }
  auto end() const { return options_.end(); }

 private:
  std::vector<Option> options_;
};

}  // namespace cli
