#include "completion.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <exception>

#include "analysis/pattern.h"
#include "args.h"
#include "commandline.h"
#include "failure.h"
#include "logger.h"
#include "namesinlog.h"
#include "stdoutwriter.h"
#include "targetsfile.h"
#include "text.h"

namespace cli {
namespace {

constexpr std::int64_t mostKernels = 64;  // that are offered

// Takes the place of a typed "~", which a shell has not replaced yet.
std::string ExpandedPath(const std::string& path) {
  const char* const home = std::getenv("HOME");
  return home != nullptr && path.starts_with("~/") ? home + path.substr(1) : path;
}

// Prints what begins as the word that is typed. What would steer a terminal is left out: nobody can type it.
class Offers {
 public:
  explicit Offers(std::string typed) : typed_(std::move(typed)) {}

  void Add(const std::string& value, std::string meaning = {}) {
    if (value.empty() || !value.starts_with(typed_) || !IsHarmless(value)) return;
    if (value == typed_ && value.ends_with(':')) return;  // it is there; what is missing is the name
    std::replace(meaning.begin(), meaning.end(), '\n', ' ');
    out_.Print("{}{}{}\n", value, meaning.empty() ? "" : "\t", meaning);
  }
  // `before`: what of the typed word is no part of the path.
  void AddFiles(const std::string& before) {
    if (IsHarmless(before)) out_.Print("\tfiles\t{}\n", before);
  }
  void Finish() { out_.Finish(); }

 private:
  std::string typed_;
  StdoutWriter out_;
};

// The words of one command, and what stands at the place that is typed at.
class Line {
 public:
  Line(const Command& command, const std::vector<std::string>& words, std::size_t place)
      : syntax_(command), words_(words), place_(place), argument_(syntax_.options.Argument()) {
    Read();
  }

  void Offer(Offers& offers) const {
    if (isOption_) return OfferOptions(offers);
    if (typedOption_ == nullptr) return;
    const std::string& word = words_[place_];
    OfferValues(*typedOption_, word.substr(0, valueAt_), word.substr(valueAt_), offers);
  }

 private:
  void Read() {
    const Option* waiting = nullptr;  // for its value
    bool onlyArguments = false;
    for (std::size_t i = 1; i < words_.size(); ++i) {
      const std::string& word = words_[i];
      if (waiting != nullptr) {
        Take(i, waiting, 0);
        waiting = nullptr;
      } else if (onlyArguments || !word.starts_with('-') || (word == "-" && i != place_)) {
        Take(i, argument_, 0);
      } else if (word == "--" && i != place_) {
        onlyArguments = true;
      } else {
        waiting = TakeOption(i);
      }
    }
  }

  // Returns the option when its value is the next word.
  const Option* TakeOption(std::size_t i) {
    const std::string& word = words_[i];
    const std::size_t sign = word.find('=');
    const Option* const option = syntax_.options.Called(word.substr(0, sign));
    if (i == place_ && sign == std::string::npos) isOption_ = true;
    if (option == nullptr || i == place_) {
      if (option != nullptr && sign != std::string::npos) Take(i, option, sign + 1);
      return nullptr;
    }
    given_.push_back(option);
    if (sign != std::string::npos) Take(i, option, sign + 1);
    return sign == std::string::npos && option->TakesValue() ? option : nullptr;
  }

  // The value, from `at` on, of an option or argument.
  void Take(std::size_t i, const Option* option, std::size_t at) {
    if (option == nullptr) return;
    if (i == place_) {
      const bool isSpare = option == argument_ && !arguments_.empty() && !option->MayRepeat();
      typedOption_ = isSpare ? nullptr : option;
      valueAt_ = at;
      return;
    }
    const std::string& type = option == argument_ ? option->names : option->valueName;
    if (option == argument_) arguments_.push_back(words_[i]);
    if (type == "LOG" || type == "FILE") logs_.push_back(ExpandedPath(words_[i].substr(at)));
  }

  void OfferOptions(Offers& offers) const {
    for (const Option& option : syntax_.options) {
      const bool isGiven = std::find(given_.begin(), given_.end(), &option) != given_.end();
      if (option.IsArgument() || (isGiven && !option.MayRepeat())) continue;
      offers.Add(option.LongName(), option.help);
    }
  }

  void OfferValues(const Option& option, const std::string& before, const std::string& typed,
                   Offers& offers) const {
    const std::string name = option.LongName();
    const std::string& type = &option == argument_ ? option.names : option.valueName;
    const auto add = [&](const std::string& value) { offers.Add(before + value); };
    for (const auto* known : {&syntax_.declared.choices, &syntax_.declared.hints})
      if (const auto found = known->find(name); found != known->end())
        std::for_each(found->second.begin(), found->second.end(), add);
    if (name == "--task" || name == "--idle") {
      for (const std::string& task : Names(NameKind::task))
        add(type == "PATTERN" ? analysis::PatternOf(task) : task);
    }
    if (name == "--issue") OfferNames("", NameKind::issue, add);
    if (name == "--logger") OfferLoggers(add);
    if (type == "SELECTOR") OfferSelectors(typed, add);
    if (type == "TARGET") OfferTargets(add);
    constexpr std::string_view paths[] = {"LOG", "FILE", "PATH", "OUT", "TARGET"};
    if (std::find(std::begin(paths), std::end(paths), type) != std::end(paths)) offers.AddFiles(before);
  }

  template <class Add>
  void OfferNames(const std::string& kind, NameKind names, Add add) const {
    for (const std::string& name : Names(names)) add(kind + name);
  }

  template <class Add>
  void OfferSelectors(const std::string& typed, Add add) const {
    const std::size_t colon = typed.find(':');
    if (colon == std::string::npos) return;
    const std::string kind = typed.substr(0, colon + 1);
    const bool isMark = kind == "issue:" || kind == "testpoint:";
    OfferNames(kind,
               !isMark            ? NameKind::task
               : kind == "issue:" ? NameKind::issue
                                  : NameKind::testpoint,
               add);
  }

  // The controller itself is not asked: it may be far away, and in use.
  template <class Add>
  void OfferLoggers(Add add) const {
    add("scheduler");
    add("all");
    if (arguments_.empty()) return;
    const std::int64_t kernels = NotesOn(WithoutKernelSuffix(arguments_.front())).kernels;
    for (std::int64_t kernel = 1; kernel <= std::min(kernels, mostKernels); ++kernel)
      add(std::to_string(kernel));
  }

  template <class Add>
  static void OfferTargets(Add add) {
    for (const std::string& name : TargetNames()) add(name);
  }

  // Each name once, of all logs on the line.
  std::vector<std::string> Names(NameKind kind) const {
    std::vector<std::string> names;
    for (const std::string& log : logs_)
      for (std::string& name : NamesInLog(log, kind)) names.push_back(std::move(name));
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
  }

  Syntax syntax_;
  const std::vector<std::string>& words_;
  std::size_t place_;
  const Option* argument_;  // what stands for itself: LOG, FILE or TARGET
  std::vector<std::string> arguments_;
  std::vector<std::string> logs_;
  std::vector<const Option*> given_;
  bool isOption_ = false;                // an option's name is typed
  const Option* typedOption_ = nullptr;  // what is typed is its value, from
  std::size_t valueAt_ = 0;              // on
};

void OfferCommands(bool withOptions, Offers& offers) {
  for (const Command* command : Commands()) offers.Add(command->name, command->summary);
  offers.Add(helpExtra.usage, helpExtra.summary);
  if (!withOptions) return;
  for (const Extra& option : optionExtras) {
    const std::string usage = option.usage;
    offers.Add(usage.substr(usage.find("--")), option.summary);
  }
}

void OfferNext(std::vector<std::string> words, std::size_t place) {
  if (place > words.size()) return;
  if (place == words.size()) words.emplace_back();
  Offers offers(words[place]);
  const Command* const command = CommandNamed(words.front());
  if (place == 0) {
    OfferCommands(words[0].starts_with('-'), offers);
  } else if (words.front() == helpExtra.usage) {
    if (place == 1) OfferCommands(false, offers);
  } else if (command != nullptr) {
    Line(*command, words, place).Offer(offers);
  }
  offers.Finish();
}

// Whatever is said there would stand in the middle of what somebody types.
void SilenceErrors() {
  const int fd = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (fd < 0) return;
  ::dup2(fd, STDERR_FILENO);
  ::close(fd);
}

}  // namespace

int Complete(const std::vector<std::string>& arguments) {
  SilenceErrors();
  const auto place = arguments.empty() ? std::nullopt : ParseNumber(arguments.front());
  try {
    if (place && *place < arguments.size())
      OfferNext({arguments.begin() + 1, arguments.end()}, static_cast<std::size_t>(*place));
  } catch (const std::exception&) {  // nothing is offered
  } catch (const ClosedPipe&) {      // nobody waits any more
  }
  return exitSuccess;
}

}  // namespace cli
