#include "notcarried.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "suggest.h"

namespace cli {
namespace {

enum Class { switches, events, testpoints, issues, others, classCount };
constexpr const char* classNames[][2] = {{"switch", "switches"},
                                         {"event", "events"},
                                         {"testpoint", "testpoints"},
                                         {"issue", "issues"},
                                         {"entry of types 8 to 14", "entries of types 8 to 14"}};

// An entry as far as a file keeps it; equal in two logs.
struct Kept {
  Class kind;
  std::uint32_t subject;  // the number of its name
  ETLLogType type;

  auto Loosely() const { return std::tuple(kind, subject); }
  auto operator<=>(const Kept&) const = default;
};

Class ClassOf(ETLLogType type) {
  switch (type) {
    case TLLogTaskEvent: return events;
    case TLLogTestpoint: return testpoints;
    case TLLogTimingIssue: return issues;
    default: return type > TLLogTimingIssue ? others : switches;
  }
}

// Numbers for the names in two logs.
class Names {
 public:
  void Add(const tasklog::Log& log) {
    for (const auto& category : log.Categories()) {
      const auto next = static_cast<std::uint32_t>(numbers_.size() + 1);
      byCategory_[category.Handle()] = numbers_.try_emplace(category.Name(), next).first->second;
    }
  }
  std::uint32_t Of(TLCategory category) const { return category ? byCategory_.at(category) : 0; }

 private:
  std::unordered_map<std::string, std::uint32_t> numbers_;
  std::unordered_map<TLCategory, std::uint32_t> byCategory_;
};

// The entries of one log, tick by tick.
class Walk {
 public:
  Walk(const tasklog::Log& log, const Names& names)
      : entries_(log.Entries({.types = UINT64_MAX})), next_(entries_.begin()), names_(names) {}

  bool AtEnd() const { return next_ == entries_.end(); }
  std::uint64_t Tick() const { return (*next_).Timestamp(); }

  // Those of `tick`, in order, if it is the next one.
  const std::vector<Kept>& Take(std::uint64_t tick) {
    taken_.clear();
    for (; !AtEnd() && Tick() == tick; ++next_) {
      const TLEntry entry = (*next_).Handle();
      const Class kind = ClassOf(TLEntryGetType(entry));
      const std::uint32_t subject = names_.Of(TLEntryGetCategory(entry, 0));
      const std::uint32_t running = names_.Of(TLEntryGetCategory(entry, 1));
      const bool knowsWhoLeft = running != 0 && running != subject;
      taken_.push_back({kind, subject, knowsWhoLeft ? TLEntryGetType(entry) : ETLLogType{TLLogSwitch4}});
    }
    std::sort(taken_.begin(), taken_.end());
    return taken_;
  }

 private:
  tasklog::EntryRange entries_;
  tasklog::EntryRange::Iterator next_;
  const Names& names_;
  std::vector<Kept> taken_;
};

class Comparison {
 public:
  void Add(const std::vector<Kept>& saved, const std::vector<Kept>& read) {
    if (saved == read) return;
    const auto loosely = [](const Kept& a, const Kept& b) { return a.Loosely() < b.Loosely(); };
    missing_.clear();
    std::set_difference(saved.begin(), saved.end(), read.begin(), read.end(), std::back_inserter(missing_),
                        loosely);
    for (const Kept& kept : missing_) ++lost_[kept.kind];
    typesLost_ -= TypesKnown();
    missing_.clear();
    std::set_difference(saved.begin(), saved.end(), read.begin(), read.end(), std::back_inserter(missing_));
    typesLost_ += TypesKnown();
  }

  std::string Text() const {
    std::vector<std::string> parts;
    for (std::size_t kind = 0; kind < classCount; ++kind) {
      if (lost_[kind] > 0)
        parts.push_back(fmt::format("{} {}", lost_[kind], classNames[kind][lost_[kind] > 1]));
    }
    if (typesLost_ > 0) {
      parts.push_back(typesLost_ == 1 ? "the type of 1 switch"
                                      : fmt::format("the types of {} switches", typesLost_));
    }
    return Listed(parts, "and");
  }

 private:
  // Among the missing: those whose type says something.
  std::int64_t TypesKnown() const {
    return std::count_if(missing_.begin(), missing_.end(),
                         [](const Kept& kept) { return kept.kind == switches && kept.type != TLLogSwitch4; });
  }

  std::array<std::uint64_t, classCount> lost_{};
  std::int64_t typesLost_ = 0;
  std::vector<Kept> missing_;
};

}  // namespace

std::string NotCarried(const tasklog::Log& log, const tasklog::Log& readBack) {
  Names names;
  names.Add(log);
  names.Add(readBack);
  Walk saved(log, names), read(readBack, names);
  Comparison comparison;
  while (!saved.AtEnd()) {
    const std::uint64_t tick = saved.Tick();
    while (!read.AtEnd() && read.Tick() < tick) read.Take(read.Tick());
    comparison.Add(saved.Take(tick), read.Take(tick));
  }
  return comparison.Text();
}

}  // namespace cli
