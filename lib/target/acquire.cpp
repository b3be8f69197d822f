// From a controller's logger buffer into the log: read the ring, decode its two laps, merge. The buffer is
// described in docs/ring-buffer.md.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <new>

#include "model/free.h"
#include "model/pages.h"
#include "target/access.h"
#include "target/acquisition.h"
#include "target/number.h"
#include "target/record.h"
#include "target/targetname.h"

namespace {

// Tells the caller how far the append has come, and hears whether to go on.
class ProgressReporter {
 public:
  ProgressReporter(TLTaskLog log, TLProgress progress, void* user)
      : log_(log), progress_(progress), user_(user) {}

  bool IsWanted() const { return progress_ != nullptr; }
  void Report(double fraction) {
    if (progress_) progress_(log_, fraction, &proceed_, user_);
  }
  // True when the caller asked to stop.
  bool CanceledAt(double fraction) {
    Report(fraction);
    return proceed_ == 0;
  }

 private:
  TLTaskLog log_;
  TLProgress progress_;
  void* user_;
  i32 proceed_ = 1;
};

// A copy of a logger buffer: the reference time in two words, then slots of two words. Zeroed, so that words
// which a target leaves out hold something defined.
class Ring {
 public:
  void Resize(u32 wordCount) {
    words_.reset(static_cast<u32*>(std::calloc(wordCount, sizeof(u32))));
    if (!words_) throw std::bad_alloc();
    PreferLargePages(words_.get(), wordCount * sizeof(u32));
    wordCount_ = wordCount;
  }
  u32* Words() { return words_.get(); }
  u32 WordCount() const { return wordCount_; }
  u64 ReferenceTime() const { return u64{words_[0]} << 32 | words_[1]; }
  u32 SlotCount() const { return (wordCount_ - 2) / 2; }  // a trailing part of a slot is ignored
  // The number of slots when there is no marker.
  u32 FindMarker() const {
    u32 slot = 0;
    while (slot < SlotCount() && RecordType(*Slot(slot)) != markerType) ++slot;
    return slot;
  }
  const u32* Slot(u32 index) const { return words_.get() + 2 + 2 * std::size_t{index}; }

 private:
  std::unique_ptr<u32[], Free> words_;
  u32 wordCount_ = 0;  // stays 0 when the buffer is too small to hold anything
};

std::string LoggerName(i32 kernel) {
  return kernel == -1 ? "Scheduler.Logger" : "Kernel." + std::to_string(kernel) + ".Logger";
}

u32 ReadRing(const std::string& target, const std::string& logger, ProgressReporter& progress, Ring& ring) {
  double sizeBytes = 0.0;
  double address = 0.0;
  if (const u32 status = GetVariable(target.c_str(), (logger + ".BufferSize").c_str(), &sizeBytes, 0))
    return status;
  if (progress.CanceledAt(0.02)) return TLErrCanceled;
  const u32 wordCount = TruncateToU32(sizeBytes) / 4;
  if (wordCount < 2) return TL_OK;

  if (const u32 status = GetVariable(target.c_str(), (logger + ".BufferAddress").c_str(), &address, 0))
    return status;
  if (progress.CanceledAt(0.03)) return TLErrCanceled;
  ring.Resize(wordCount);
  if (const u32 status = GetBlock32(target.c_str(), TruncateToI64(address), ring.Words(), wordCount))
    return status;
  return progress.CanceledAt(0.75) ? TLErrCanceled : TL_OK;
}

// Decodes the two laps of a ring. The current lap lies before the marker and is read forward. Behind the
// marker lies the previous lap. Only its newest record is known to lie just before the reference time, so the
// lap is read backward, each record's upper bits coming from the one before.
class RingDecoder {
 public:
  RingDecoder(_STLTaskLog& log, const Ring& ring, const std::string& target, ProgressReporter& progress)
      : log_(log),
        ring_(ring),
        progress_(progress),
        marker_(ring.FindMarker()),
        acquisition_(log, target, DetectTimeBits(ring.Slot(0), ring.SlotCount()),
                     ring.SlotCount() - std::min(ring.SlotCount(), marker_ + 1), marker_) {}

  u32 Decode() {
    Step step = Step::GoOn;
    acquisition_.time = ring_.ReferenceTime();
    for (u32 slot = 0; slot < marker_ && step == Step::GoOn; ++slot) step = DecodeSlot(slot, true);
    acquisition_.time = ring_.ReferenceTime();
    for (u32 slot = ring_.SlotCount(); slot > marker_ + 1 && step == Step::GoOn;)
      step = DecodeSlot(--slot, false);
    return step == Step::Canceled ? TLErrCanceled : TL_OK;
  }

  NewEntries& Added() { return acquisition_.added; }
  u32 FetchError() const { return acquisition_.fetchError; }

 private:
  enum class Step { GoOn, Marker, Canceled };

  Step DecodeSlot(u32 slot, bool forward) {
    if (log_.AddEntry(ring_.Slot(slot), forward, acquisition_)) return Step::Marker;
    ++recordsDecoded_;
    return progress_.IsWanted() && progress_.CanceledAt(Fraction()) ? Step::Canceled : Step::GoOn;
  }

  // Decoding a full ring leads from 0.75 to 0.95; each fetch adds its share. The order of the operations is
  // part of the interface: callers see the same doubles everywhere.
  double Fraction() const {
    double fetched = 0.75 + (acquisition_.tasksFetched ? 0.02 : 0.0);
    fetched += acquisition_.testpointsFetched ? 0.01 : 0.0;
    double decoded = recordsDecoded_ * 0.2;
    decoded += decoded;
    decoded /= ring_.WordCount();
    return fetched + decoded;
  }

  _STLTaskLog& log_;
  const Ring& ring_;
  ProgressReporter& progress_;
  const u32 marker_;  // slot of the marker; the number of slots when there is none
  _STLTaskLog::Acquisition acquisition_;
  u32 recordsDecoded_ = 0;
};

}  // namespace

u32 _STLTaskLog::AppendFromTarget(const char* target, i32 kernel, TLProgress progress, void* user) try {
  ProgressReporter reporter(this, progress, user);
  if (reporter.CanceledAt(0.0)) return TLErrCanceled;
  const std::string name = WorkingTargetName(target, kernel);
  if (const u32 status = FetchTicksPerSecond(name)) return status;
  if (reporter.CanceledAt(0.01)) return TLErrCanceled;

  Ring ring;
  if (const u32 status = ReadRing(name, LoggerName(kernel), reporter, ring)) return status;
  u32 fetchError = TL_OK;
  if (ring.WordCount() > 0) {
    RingDecoder decoder(*this, ring, name, reporter);
    if (const u32 status = decoder.Decode()) return status;
    decoder.Added().Close();
    TakeNewEntries(decoder.Added().BackwardCount(), decoder.Added().ForwardCount());
    WidenPeriod();
    fetchError = decoder.FetchError();
  }
  reporter.Report(1.0);
  return fetchError;
} catch (const std::bad_alloc&) {
  return TLErrOutOfMemory;
}

void _STLTaskLog::WidenPeriod() {
  if (entries.empty()) return;
  const u64 first = entries.front().timestamp;
  const u64 last = entries.back().timestamp;
  if (startTime == 0 || startTime > first) startTime = first;
  if (stopTime == 0 || stopTime < last) stopTime = last;
}
