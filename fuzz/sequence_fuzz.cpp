// The input is a list of operations on two logs: appends from controllers that stay, change and fail, appends
// of files that were saved by either or damaged, saves and queries. After each step both logs equal their
// models.
#include "controller.h"
#include "mirror.h"

namespace {

class Sequence {
 public:
  explicit Sequence(fuzz::Input& input) : input_(input) {
    controller_.TakeMachine(input_);
    for (const std::int32_t kernel : kernels) controller_.TakeLogger(input_, kernel);
  }

  void Step() {
    fuzz::Mirror& log = logs_[input_.Below(2)];
    if (log.Model().entries.size() > mostEntries) log = fuzz::Mirror();
    switch (input_.Below(8)) {
      case 0: AppendRing(log); break;
      case 1: Renew(); break;
      case 2: log.AppendFromFile(logs_[input_.Below(2)].Save()); break;
      case 3: saved_ = log.Save(); break;
      case 4: log.AppendFromFile(saved_); break;
      case 5: log.AppendFromFile(Damaged(saved_)); break;
      case 6: Ask(log); break;
      case 7: log = fuzz::Mirror(); break;
    }
    log.RequireSame();
    cost_ += 20 + log.Model().entries.size() + log.Model().categories.size();
  }

  // Of all steps, in entries looked at; a step costs as much as 20 and what the log holds.
  std::size_t Cost() const { return cost_; }

 private:
  static constexpr std::int32_t kernels[] = {-1, 0, 1};
  static constexpr std::size_t mostEntries = 1000;

  void AppendRing(fuzz::Mirror& log) {
    fuzz::Request request;
    request.kernel = input_.Pick(kernels);
    if (input_.Rarely(4)) request.cancelAt = input_.Below(64);
    log.AppendFromTarget([&](ScriptedTarget& target) { controller_.Describe(target, request.kernel); },
                         request);
  }

  // The controller goes on: another ring for one logger, or other tasks with the same rings.
  void Renew() {
    if (input_.Rarely(4)) {
      controller_.TakeMachine(input_);
    } else {
      controller_.TakeLogger(input_, input_.Pick(kernels));
    }
  }

  Bytes Damaged(Bytes file) {
    if (file.empty()) return file;
    switch (input_.Below(4)) {
      case 0: file[input_.Word() % file.size()] ^= static_cast<std::uint8_t>(1u << input_.Below(8)); break;
      case 1: file.resize(input_.Word() % file.size()); break;
      case 2: file[(10 + input_.Below(4)) % file.size()] = input_.Byte(); break;
      case 3: file[input_.Word() % file.size()] = input_.Byte(); break;
    }
    return file;
  }

  void Ask(const fuzz::Mirror& log) {
    fuzz::Question question;
    if (input_.Rarely(2)) question.category = input_.Byte();
    question.types = input_.Rarely(4) ? input_.Long() : input_.Byte();
    question.from = Bound(log);
    question.to = input_.Rarely(4) ? UINT64_MAX : Bound(log);
    log.Ask(question);
    const auto& categories = log.Model().categories;
    const char* name =
        categories.empty() ? "Idle" : categories[input_.Byte() % categories.size()]->name.c_str();
    log.AskForCategories(question.types, input_.Rarely(2) ? name : nullptr);
  }

  // Most often at an entry, or one tick beside it.
  std::uint64_t Bound(const fuzz::Mirror& log) {
    const auto& entries = log.Model().entries;
    if (entries.empty() || input_.Rarely(4)) return input_.Long();
    const std::uint64_t time = entries[input_.Byte() % entries.size()].timestamp;
    return time + input_.Below(3) - 1;
  }

  fuzz::Input& input_;
  fuzz::Controller controller_;
  fuzz::Mirror logs_[2];
  Bytes saved_;
  std::size_t cost_ = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr int mostSteps = 64;
#ifdef TASKLOG_FUZZ  // rather many inputs than a few over long logs, which would take nearly all of the time
  constexpr std::size_t mostCost = 400;
#else
  constexpr std::size_t mostCost = SIZE_MAX;
#endif
  fuzz::Input input(data, size);
  Sequence sequence(input);
  for (int step = 0; step < mostSteps && sequence.Cost() < mostCost && !input.Ended(); ++step)
    sequence.Step();
  return 0;
}
