#include "places.h"

#include "walker.h"

namespace analysis {
namespace {

// Calls `use(place)` for each value.
template <class Use>
class Series : public Visitor {
 public:
  Series(TaskIndex task, Quantity quantity, Use use)
      : Visitor(quantity == Quantity::run ? wantsRuns : wantsJobs),
        task_(task),
        quantity_(quantity),
        use_(std::move(use)) {}

  void OnRun(const Run& run) override {
    if (run.task == task_ && quantity_ == Quantity::run && run.IsWhole())
      use_(Place{run.begin, run.end, run.Length()});
  }
  void OnJob(const Job& job) override {
    if (job.task != task_) return;
    ForEachValue(job, [&](Quantity quantity, Ticks ticks) {
      if (quantity != quantity_) return;
      const bool isInterval = quantity == Quantity::activationInterval;
      use_(isInterval ? Place{job.activation - ticks, job.activation, ticks}
                      : Place{job.activation, job.end, ticks});
    });
  }

 private:
  TaskIndex task_;
  Quantity quantity_;
  Use use_;
};

template <class Use>
void ForEachPlace(const Lane& lane, const Conventions& conventions, TaskIndex task, Quantity quantity,
                  Use use) {
  Series<Use> series(task, quantity, std::move(use));
  Walk(lane, conventions, {&series});
}

}  // namespace

Values ValuesOf(const Lane& lane, const Conventions& conventions, TaskIndex task, Quantity quantity) {
  Values values;
  ForEachPlace(lane, conventions, task, quantity,
               [&](const Place& place) { values.Add(place.value, place.from); });
  return values;
}

Places PlacesOf(const Lane& lane, const Conventions& conventions, TaskIndex task, Quantity quantity,
                const Bin& bin, std::size_t most) {
  Places places;
  ForEachPlace(lane, conventions, task, quantity, [&](const Place& place) {
    if (place.value < bin.from || place.value > bin.to) return;
    if (places.count++ < most) places.first.push_back(place);
  });
  return places;
}

}  // namespace analysis
