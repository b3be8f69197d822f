// The input is a controller with one ring buffer, and how it is asked. The buffer is read, and read again as
// it is.
#include "check.h"
#include "controller.h"
#include "mirror.h"

namespace {

fuzz::Request DecodeRequest(fuzz::Input& input) {
  constexpr std::int32_t kernels[] = {-1, 0, 1, 2, 12, INT32_MIN, INT32_MAX};
  const char* const targets[] = {"ctl", "ctl/@1",  "ctl\\@12", "ctl/@9", "ctl/@", "/@1",
                                 "@3",  "ctl/@10", "",         "1",      "/@",    "a/@1/@2"};
  fuzz::Request request;
  request.kernel = input.Pick(kernels);
  request.target = input.Pick(targets);
  if (input.Rarely(16)) request.reports = false;
  if (input.Rarely(4)) request.cancelAt = input.Below(64);
  return request;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const fuzz::Request request = DecodeRequest(input);
  fuzz::Controller controller;
  controller.TakeMachine(input);
  controller.TakeLogger(input, request.kernel);
  const auto describe = [&](ScriptedTarget& target) { controller.Describe(target, request.kernel); };

  fuzz::Mirror log;
  log.AppendFromTarget(describe, request);
  log.RequireSame();
  log.AskAround();

  const std::size_t before = log.Model().entries.size();
  log.AppendFromTarget(describe, request);
  log.RequireSame();
  ScriptedTarget asked;
  describe(asked);
  if (request.cancelAt || !asked.failingCalls.empty()) return 0;
  fuzz::RequireEqual("entries after a second reading", log.Model().entries.size(), before);
  return 0;
}
