// From a controller's ring into the log: read it, decode it, merge. docs/ring-buffer.md describes rings.
#include <new>

#include "target/access.h"
#include "target/ringdecoder.h"
#include "target/target.h"

namespace {

std::string LoggerName(i32 kernel) {
  return kernel == -1 ? "Scheduler.Logger" : "Kernel." + std::to_string(kernel) + ".Logger";
}

// Leaves the copy empty when the ring is too small to hold anything.
u32 ReadRing(const std::string& target, const std::string& logger, ProgressReporter& progress, Ring& ring) {
  double sizeBytes = 0.0;
  double address = 0.0;
  if (const u32 status = GetVariable(target.c_str(), (logger + ".BufferSize").c_str(), &sizeBytes, 0))
    return status;
  if (progress.CanceledAt(fraction::sizeFetched)) return TLErrCanceled;
  const u32 wordCount = TruncateToU32(sizeBytes) / 4;
  if (wordCount < 2) return TL_OK;

  if (const u32 status = GetVariable(target.c_str(), (logger + ".BufferAddress").c_str(), &address, 0))
    return status;
  if (progress.CanceledAt(fraction::addressFetched)) return TLErrCanceled;
  ring.Resize(wordCount);
  if (const u32 status = GetBlock32(target.c_str(), TruncateToI64(address), ring.Words(), wordCount))
    return status;
  return progress.CanceledAt(fraction::ringRead) ? TLErrCanceled : TL_OK;
}

// Makes the period of a log cover all its entries.
void WidenPeriod(_STLTaskLog& log) {
  if (log.entries.empty()) return;
  const u64 first = log.entries.front().timestamp;
  const u64 last = log.entries.back().timestamp;
  if (log.startTime == 0 || log.startTime > first) log.startTime = first;
  if (log.stopTime == 0 || log.stopTime < last) log.stopTime = last;
}

}  // namespace

u32 _STLTaskLog::AppendFromTarget(const char* target, i32 kernel, TLProgress progress, void* user) try {
  ProgressReporter reporter(this, progress, user);
  if (reporter.CanceledAt(fraction::begun)) return TLErrCanceled;
  const std::string name = WorkingTargetName(target, kernel);
  if (const u32 status = FetchTicksPerSecond(name)) return status;
  if (reporter.CanceledAt(fraction::rateFetched)) return TLErrCanceled;

  Ring ring;
  if (const u32 status = ReadRing(name, LoggerName(kernel), reporter, ring)) return status;
  u32 fetchError = TL_OK;
  if (ring.WordCount() > 0) {
    RingDecoder decoder(*this, ring, name, reporter);
    if (const u32 status = decoder.Decode()) return status;
    TakeNewEntries(decoder.Added().ReadBackward(), decoder.Added().ReadForward());
    WidenPeriod(*this);
    fetchError = decoder.FetchError();
  }
  reporter.Report(fraction::finished);
  return fetchError;
} catch (const std::bad_alloc&) {
  return TLErrOutOfMemory;
}
