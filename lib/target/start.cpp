// Names the trigger task and calls the start procedure. The fallbacks are for a controller without loggers
// per kernel, which knows only the scheduler's names.
#include <tasklog/tasklog.h>

#include <cstdio>
#include <cstring>

#include "target/access.h"
#include "target/target.h"

namespace {

// Holds the longest of the names, with a kernel number of ten digits.
struct KernelName {
  KernelName(const char* format, u32 kernel) { std::snprintf(text, sizeof text, format, kernel); }
  char text[37];
};

u32 PutTrigger(const char* target, const char* variable, const char* triggerTask) {
  return PutVariable(target, variable, triggerTask, static_cast<u32>(std::strlen(triggerTask) + 1));
}

u32 Judge(u32 status, double result) {
  if (status != TL_OK) return status;
  return result == 0.0 ? TLErrLoggerNotStarted : TL_OK;
}

u32 StartScheduler(const char* target) {
  double result = 0.0;
  const u32 status = CallProcedure(target, "Scheduler.Logger.Start()", &result);
  return Judge(status, result);
}

u32 StartKernel(const char* target, u32 kernel) {
  const KernelName procedure("Kernel.%u.Logger.Start()", kernel);
  double result = 0.0;
  const u32 status = CallProcedure(target, procedure.text, &result);
  return status == noSuchProcedure ? StartScheduler(target) : Judge(status, result);
}

}  // namespace

u32 StartLog(const char* target, const char* triggerTask) {
  const u32 kernel = KernelOfTarget(target);
  if (triggerTask && *triggerTask) {
    const KernelName variable("Kernel.%u.Logger.TriggerTask", kernel);
    // No other failure ends the start: a log without its trigger is better than none.
    if (PutTrigger(target, variable.text, triggerTask) == noSuchVariable) {
      const u32 status = PutTrigger(target, "Scheduler.Logger.TriggerTask", triggerTask);
      return status == TL_OK ? StartScheduler(target) : status;
    }
  }
  return StartKernel(target, kernel);
}
