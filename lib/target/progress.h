// Tells the caller of an append how far it has come.
#pragma once

#include <tasklog/tasklog.h>

#include "model/types.h"

// Fractions done when a step of an append from a target is complete. Decoding a full ring leads from 0.75 to
// 0.95; each fetch adds its share.
namespace fraction {

inline constexpr double begun = 0.0;
inline constexpr double rateFetched = 0.01;
inline constexpr double sizeFetched = 0.02;
inline constexpr double addressFetched = 0.03;
inline constexpr double ringRead = 0.75;
inline constexpr double tasksFetched = 0.02;
inline constexpr double testpointsFetched = 0.01;
inline constexpr double halfOfDecoding = 0.2;  // of the words: a record has two
inline constexpr double finished = 1.0;

}  // namespace fraction

// Tells the caller how far the append has come, and asks whether to go on.
class ProgressReporter {
 public:
  ProgressReporter(TLTaskLog log, TLProgress progress, void* user)
      : log_(log), progress_(progress), user_(user) {}

  bool IsWanted() const { return progress_ != nullptr; }
  void Report(double done) {
    if (progress_) progress_(log_, done, &proceed_, user_);
  }
  // True when the caller asked to stop.
  bool CanceledAt(double done) {
    Report(done);
    return proceed_ == 0;
  }

 private:
  TLTaskLog log_;
  TLProgress progress_;
  void* user_;
  i32 proceed_ = 1;
};
