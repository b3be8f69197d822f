// Status to text. GetErrorDescription is asked without a target, so the texts of the latest failures are kept
// here: for the thread that met them, which is most likely the one that asks, and for all.
#include "status.h"

#include <fmt/format.h>

#include <map>
#include <mutex>
#include <new>

#include "target/access.h"

namespace sim {
namespace {

using Texts = std::map<uint32_t, std::string>;

struct SharedTexts {
  std::mutex mutex;
  Texts texts;
};

SharedTexts& Shared() {
  static SharedTexts shared;
  return shared;
}

Texts& OfThisThread() {
  thread_local Texts texts;
  return texts;
}

const Texts& General() {
  static const Texts texts = {
      {0, "No error"},
      {noSuchVariable, "The controller has no variable of that name"},
      {noSuchProcedure, "The controller has no procedure of that name"},
      {loggerNotStarted, "The logger did not start: its start procedure answered 0"},
      {unknownTarget, "There is no such target"},
      {badScenario, "The scenario of the target has a mistake"},
      {badAddress, "The address does not lie in the controller's memory"},
      {noAnswer, "The controller does not answer"},
      {injectedFault, "A fault that the scenario injects"},
      {badArgument, "An argument of the call is not valid"},
      {wrongType, "The variable is of another type"},
      {readOnly, "The variable cannot be written"},
      {unknownKernel, "The controller has no kernel of that number"},
      {unknownTask, "The controller has no task of that identifier"},
      {unknownTaskItem, "The controller has no such item of a task's data"},
      {unknownTrigger, "The trigger task is not known to the logger"},
      {outOfMemory, "Out of memory in the simulated controller"},
      {internalError, "Internal error of the simulated controller"},
  };
  return texts;
}

}  // namespace

void RememberText(uint32_t status, const std::string& text) {
  if (text.empty()) return;
  OfThisThread()[status] = text;
  const std::lock_guard lock(Shared().mutex);
  Shared().texts[status] = text;
}

std::string TextOf(uint32_t status) {
  const Texts& own = OfThisThread();
  if (const auto found = own.find(status); found != own.end()) return found->second;
  {
    const std::lock_guard lock(Shared().mutex);
    const Texts& all = Shared().texts;
    if (const auto found = all.find(status); found != all.end()) return found->second;
  }
  return GeneralTextOf(status);
}

std::string GeneralTextOf(uint32_t status) {
  const auto found = General().find(status);
  return found != General().end() ? found->second : fmt::format("Unknown status 0x{:08X}", status);
}

}  // namespace sim
