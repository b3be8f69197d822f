#include "options.h"

#include <algorithm>
#include <utility>

namespace cli {

std::string Option::LongName() const {
  const std::size_t start = names.find("--");
  return start == names.npos ? "" : names.substr(start);
}

bool Option::IsCalled(std::string_view name) const {
  if (IsArgument()) return name == names;
  return name == LongName() || name == names.substr(0, names.find(','));
}

OptionList::OptionList() { Add("-h,--help", {}, "Print this help"); }

void OptionList::Add(const char* names, Place place, std::string help, const char* valueName) {
  options_.push_back({names, place, std::move(help), valueName});
}

void OptionList::AddRequired(const char* names, Place place, std::string help, const char* valueName) {
  Add(names, place, std::move(help), valueName);
  options_.back().required = true;
}

const Option* OptionList::Called(std::string_view name) const {
  const auto isCalled = [&](const Option& option) { return option.IsCalled(name); };
  const auto found = std::find_if(options_.begin(), options_.end(), isCalled);
  return found == options_.end() ? nullptr : &*found;
}

const Option* OptionList::Argument() const {
  const auto found = std::find_if(options_.begin(), options_.end(),
                                  [](const Option& option) { return option.IsArgument(); });
  return found == options_.end() ? nullptr : &*found;
}

}  // namespace cli
