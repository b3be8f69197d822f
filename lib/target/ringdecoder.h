// Decodes a ring into the new entries of a log.
#pragma once

#include "target/acquisition.h"
#include "target/progress.h"
#include "target/ring.h"

// The current lap is read forward. Of the previous lap only the newest record is known to lie just before the
// reference time, so that lap is read backward, each record's upper bits coming from the one before.
class RingDecoder {
 public:
  // Throws bad_alloc.
  RingDecoder(_STLTaskLog& log, const Ring& ring, const std::string& target, ProgressReporter& progress)
      : log_(log),
        ring_(ring),
        progress_(progress),
        laps_(ring),
        acquisition_(log, target, laps_.timeBits, laps_.previousRoom, laps_.marker) {}

  // Decodes both laps; TLErrCanceled when the caller asked to stop. Throws bad_alloc.
  u32 Decode();
  // What was decoded, in the order of time.
  const NewEntries& Added() const { return acquisition_.added; }
  u32 FetchError() const { return acquisition_.fetchError; }

 private:
  bool DecodeCell(u32 cell, bool forward);
  double Fraction() const;

  _STLTaskLog& log_;
  const Ring& ring_;
  ProgressReporter& progress_;
  const Laps laps_;
  _STLTaskLog::Acquisition acquisition_;
  u32 recordsDecoded_ = 0;
};
