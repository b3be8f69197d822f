// Latencies: from each moment that one selector names to the next that another names.
#pragma once

#include <vector>

#include "selector.h"
#include "values.h"
#include "visitor.h"

namespace analysis {

struct Latency {
  Ticks begin;
  Ticks end;
  Ticks Length() const { return end - begin; }
};

// A visitor. A begin is matched with the next end behind it, unless another begin or a gap comes first.
// Within one tick the order is that of Visitor. Memory: 16 bytes for each moment selected.
class Latencies : public Visitor {
 public:
  // Selectors that select nothing in the lane are for the caller to refuse: Selector::In().
  Latencies(const Lane& lane, const Selector& begin, const Selector& end);

  void OnMark(const Mark& mark) override;
  void OnActivation(const Job& job) override;
  void OnStart(const Job& job) override;
  void OnJob(const Job& job) override;
  void OnGap(const Gap& gap) override;
  void OnEnd(Ticks stop) override;

  // After the walk. In order of time.
  const std::vector<Latency>& All() const { return latencies_; }
  std::uint64_t UnmatchedBegins() const { return unmatchedBegins_; }
  // Lengths; of the largest, when it began.
  Values Lengths() const;
  // The `count` longest, longest first; of equal ones the earlier first.
  std::vector<Latency> Worst(std::size_t count) const;

 private:
  struct Moment {
    Ticks time;
    std::uint64_t order;  // among all moments and gaps
  };
  // What one selector has selected so far.
  struct Side {
    Selector::Kind kind;
    std::vector<bool> selects;    // by SubjectIndex
    std::vector<Moment> pending;  // by TaskIndex, activations that may yet be dropped; for activations alone
    std::vector<Moment> moments;
  };

  static Side MakeSide(const Lane& lane, const Selector& selector);
  bool Selects(const Side& side, Selector::Kind kind, SubjectIndex subject) const {
    return side.kind == kind && side.selects[subject];
  }
  void Take(Selector::Kind kind, SubjectIndex subject, Ticks time);
  void TakePending(TaskIndex task);
  void Match();

  Side begin_;
  Side end_;
  std::vector<Moment> gaps_;
  std::uint64_t order_ = 0;
  std::vector<Latency> latencies_;
  std::uint64_t unmatchedBegins_ = 0;
};

}  // namespace analysis
