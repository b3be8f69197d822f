// What a file carries and what it does not: docs/file-format.md, What a file cannot carry.
#include <algorithm>
#include <set>

#include "randomlogs.h"

namespace {

constexpr bool IsSwitch(ETLLogType type) { return type < 6 && type != TLLogTaskEvent; }

LogPtr ReadBack(const Bytes& file) {
  LogPtr log = NewLog();
  RC_ASSERT(AppendBytes(log.get(), file) == 0u);
  return log;
}

// ---- Logs that a file carries whole ----

// Switches between different tasks, events, testpoints and timing issues, no two at one time, that begin with
// a plain switch and end with any.
std::vector<RingRecord> CarriedRecords() {
  std::vector<RingRecord> records = *AnyRecords(1'000'000, 1);
  records.insert(records.begin(), {TLLogSwitch4, 1'000'000, 1});
  records.push_back({TLLogSwitch0, records.back().tick + 1, 0});
  std::uint32_t running = 1;
  for (RingRecord& record : records) {
    record.type %= 8;
    if (record.type == TLLogTestpoint) record.id = 0x9000;
    if (record.type == TLLogTimingIssue) record.id = 0x53544B4F;
    if (record.type < 6) record.id = 1 + record.id % 3;
    const bool stays = IsSwitch(record.type) && record.id == running && &record != &records.front();
    if (stays) record.id = 1 + running % 3;
    if (IsSwitch(record.type)) running = record.id;
  }
  return records;
}

RC_GTEST_PROP(SavedLogs, AreReadBackWholeWhereFilesCarryThem, ()) {
  const std::vector<RingRecord> records = CarriedRecords();
  const LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), RingWords(1'000'000, records)) == 0u);
  const LogPtr readBack = ReadBack(Save(log.get()));
  RC_ASSERT(LinesOf(readBack.get()) == LinesOf(log.get()));
  RC_ASSERT(DumpTimes(readBack.get()) == DumpTimes(log.get()));
}

RC_GTEST_PROP(SavedLogs, AreTheSameBytesEachTime, ()) {
  const auto words = *AnyWords();
  const LogPtr log = NewLog();
  const LogPtr other = NewLog();
  AppendRing(log.get(), words);
  AppendRing(other.get(), words);
  const Bytes saved = Save(log.get());
  RC_ASSERT(Save(log.get()) == saved);
  RC_ASSERT(Save(other.get()) == saved);
}

// ---- Any log without shared times ----

constexpr const char* none = "-";
const std::vector<std::string> tasks = {"T1", "T2", "T3", "T4"};

// The Ko type of an entry's record in the section of a task; nothing when it has none there.
std::optional<std::uint32_t> KoType(const EntryLine& entry, const std::string& task) {
  constexpr std::uint32_t ofSlot1[] = {5, 3, 0, 4, 4, 6};
  if (entry.type > 5) return std::nullopt;
  if (entry.slot0 == task) return entry.type == TLLogTaskEvent ? 0u : entry.type == TLLogSwitch3 ? 1u : 2u;
  if (entry.type == TLLogTaskEvent || entry.slot1 != task) return std::nullopt;
  return ofSlot1[entry.type];
}

// A file with these entries and no prolog; its period is none, for the log to take its own.
Bytes FileOf(const EntryLines& entries) {
  std::vector<FileSection> sections;
  std::vector<FileRecord> stamps, events;
  for (const std::string& task : tasks) {
    FileSection section{task, 1, 2};
    for (const EntryLine& entry : entries) {
      const auto koType = KoType(entry, task);
      const auto id = static_cast<std::uint32_t>(entry.slot0.back() - '0');  // of task "T3": 3
      if (koType) section.records.push_back({*koType, entry.slot0 == none ? 0 : id, entry.timestamp});
    }
    sections.push_back(section);
  }
  for (const EntryLine& entry : entries) {
    if (entry.type == TLLogTestpoint) stamps.push_back({7, 9, entry.timestamp, "TP"});
    if (entry.type == TLLogTimingIssue) events.push_back({8, 0, entry.timestamp, "LATE"});
  }
  return TaskFile({.startTime = 0, .stopTime = 0}, sections, stamps, events);
}

// Entries as a file may have them: the slots of a switch hold any tasks, the same one twice, or one of them
// none.
EntryLines AnyEntries() {
  const auto slot = rc::gen::element<std::string>("T1", "T2", "T3", "T4", none);
  const auto draft = rc::gen::tuple(rc::gen::inRange<std::uint32_t>(0, 8), slot, slot);
  EntryLines entries;
  std::uint64_t time = 1000;
  for (const auto& [type, slot0, slot1] :
       *rc::gen::container<std::vector<std::tuple<std::uint32_t, std::string, std::string>>>(draft)) {
    entries.push_back({time += 10, type, slot0, slot1});
    if (type == TLLogTaskEvent && slot0 == none) entries.back().slot0 = "T1";
  }
  return entries;
}

// The log of these entries, with records of types 8 to 14 among them, and with a period of its own or a wider
// one.
LogPtr AnyLogWithoutSharedTimes() {
  LogPtr log = ReadBack(FileOf(AnyEntries()));
  std::vector<RingRecord> unnamed;
  for (const auto type :
       *rc::gen::container<std::vector<std::uint32_t>>(rc::gen::inRange<std::uint32_t>(8, 15))) {
    unnamed.push_back({type, 1005 + 10 * unnamed.size(), 2});
    if (unnamed.size() == 3) break;
  }
  RC_ASSERT(AppendRing(log.get(), RingWords(1000, unnamed)) == 0u);
  const EntryLines entries = LinesOf(log.get());
  if (entries.empty() || *rc::gen::arbitrary<bool>()) return log;
  const std::uint64_t start = entries.front().timestamp - *rc::gen::inRange<std::uint64_t>(0, 2);
  const std::uint64_t stop = entries.back().timestamp + *rc::gen::inRange<std::uint64_t>(0, 2);
  RC_ASSERT(AppendBytes(log.get(), TaskFile({.startTime = start, .stopTime = stop}, {})) == 0u);
  return log;
}

// What the page says of a log without shared times.
class Prediction {
 public:
  Prediction(std::uint64_t start, std::uint64_t stop, EntryLines entries)
      : start_(start), stop_(stop), entries_(std::move(entries)) {
    for (const std::string& task : tasks) AddGained(task);
    for (const EntryLine& entry : entries_) AddKept(entry);
    std::stable_sort(result_.begin(), result_.end(),
                     [](const EntryLine& a, const EntryLine& b) { return a.timestamp < b.timestamp; });
    FillIn();
  }
  const EntryLines& Result() const { return result_; }
  bool GainedAny() const { return gained_; }

 private:
  const EntryLine* FirstOf(const std::string& task) const {
    const auto first = std::find_if(entries_.begin(), entries_.end(),
                                    [&](const EntryLine& entry) { return KoType(entry, task).has_value(); });
    return first == entries_.end() ? nullptr : &*first;
  }

  // A prolog of Ko type 2 is read as an entry.
  void AddGained(const std::string& task) {
    const EntryLine* first = FirstOf(task);
    if (!first || first->timestamp == start_ || *KoType(*first, task) < 4) return;
    result_.push_back({start_, TLLogSwitch4, task, none});
    gained_ = true;
  }

  void AddKept(EntryLine entry) {
    if (entry.type > 7 || (entry.type > 5 && IsTakenForEpilog(entry))) return;
    if (entry.type == TLLogTaskEvent || entry.type > 5) {
      result_.push_back(entry);  // slot 1 is filled in again
      return;
    }
    const bool slot1Stored = entry.slot1 != none && entry.slot1 != entry.slot0 && !IsTakenForProlog(entry);
    if (entry.slot0 == none && !slot1Stored) return;
    if (!slot1Stored) {
      entry.slot1 = none;
      if (entry.type != TLLogSwitch3) entry.type = TLLogSwitch4;
    }
    if (entry.slot0 == none && entry.type == TLLogSwitch3) entry.type = TLLogSwitch4;
    result_.push_back(entry);
  }

  // The record of slot 1, that is.
  bool IsTakenForProlog(const EntryLine& entry) const {
    return entry.timestamp == start_ && FirstOf(entry.slot1) == &*Find(entry);
  }

  bool IsTakenForEpilog(const EntryLine& entry) const {
    const auto isOfSection = [&](const EntryLine& other) { return other.type == entry.type; };
    const auto first = std::find_if(entries_.begin(), entries_.end(), isOfSection);
    const auto last = std::find_if(entries_.rbegin(), entries_.rend(), isOfSection);
    const bool sole = *first == *last && first->timestamp == start_;
    return *last == entry && entry.timestamp == stop_ && !sole;
  }

  EntryLines::const_iterator Find(const EntryLine& entry) const {
    return std::find(entries_.begin(), entries_.end(), entry);
  }

  void FillIn() {
    std::string running = none;
    for (EntryLine& entry : result_) {
      if (!IsSwitch(entry.type) || entry.slot1 == none) entry.slot1 = running;
      if (IsSwitch(entry.type)) running = entry.slot0;
    }
  }

  const std::uint64_t start_;
  const std::uint64_t stop_;
  const EntryLines entries_;
  EntryLines result_;
  bool gained_ = false;
};

RC_GTEST_PROP(SavedLogs, LoseWhatThePageSays, ()) {
  const LogPtr log = AnyLogWithoutSharedTimes();
  const EntryLines entries = LinesOf(log.get());
  const Prediction prediction(TLTaskLogGetStartTime(log.get()), TLTaskLogGetStopTime(log.get()), entries);
  const bool shares = !entries.empty() && entries.front().timestamp == TLTaskLogGetStartTime(log.get());
  RC_PRE(!prediction.GainedAny() || !shares);
  const LogPtr readBack = ReadBack(Save(log.get()));
  RC_ASSERT(LinesOf(readBack.get()) == prediction.Result());
  RC_ASSERT(DumpTimes(readBack.get()) == DumpTimes(log.get()));
}

// ---- Logs with shared times ----

// Switches and task events come before testpoints, and these before timing issues.
int RankOf(ETLLogType type) { return type < 6 ? 0 : static_cast<int>(type) - 5; }

RC_GTEST_PROP(SavedLogs, PutEntriesOfOneTimeInOrderOfTheirKinds, ()) {
  const LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), RingWords(1000, *AnyRecords(1000, 0))) == 0u);
  const EntryLines lines = LinesOf(ReadBack(Save(log.get())).get());
  const auto before = [](const EntryLine& a, const EntryLine& b) {
    return std::pair(a.timestamp, RankOf(a.type)) < std::pair(b.timestamp, RankOf(b.type));
  };
  RC_ASSERT(std::is_sorted(lines.begin(), lines.end(), before));
}

// Testpoints and timing issues do not pair, so they come back as they were, but for the last one.
RC_GTEST_PROP(SavedLogs, KeepTestpointsAndTimingIssues, ()) {
  const LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), RingWords(1000, *AnyRecords(1000, 0))) == 0u);
  const LogPtr readBack = ReadBack(Save(log.get()));
  for (const std::uint64_t types : {TL_LOGS_TESTPOINTS, TL_LOGS_TIMING_ISSUES}) {
    EntryLines expected = LinesOf(log.get(), nullptr, types);
    const bool hasProlog =
        !expected.empty() && expected.front().timestamp != TLTaskLogGetStartTime(log.get());
    const bool sole = expected.size() == 1 && !hasProlog;
    if (!expected.empty() && !sole && expected.back().timestamp == TLTaskLogGetStopTime(log.get())) {
      expected.pop_back();
    }
    EntryLines lines = LinesOf(readBack.get(), nullptr, types);
    for (EntryLines* list : {&expected, &lines}) {
      for (EntryLine& line : *list) line.slot1 = none;  // filled in again
    }
    RC_ASSERT(lines == expected);
  }
}

// ---- Categories ----

// A task that is in slot 0 of no entry comes back without its id.
RC_GTEST_PROP(SavedLogs, KeepTheTasksAndTheirIds, ()) {
  const LogPtr log = AnyLogWithoutSharedTimes();
  const LogPtr readBack = ReadBack(Save(log.get()));
  RC_ASSERT(TLTaskLogGetCategoriesCount(readBack.get(), TL_CATS_TASKS, nullptr) ==
            TLTaskLogGetCategoriesCount(log.get(), TL_CATS_TASKS, nullptr));
  std::set<std::string> subjects;
  for (const EntryLine& line : LinesOf(log.get(), nullptr, TL_LOGS_SWITCHES | TL_LOGS_TASK_EVENTS)) {
    subjects.insert(line.slot0);
  }
  for (const std::string& name : tasks) {
    const TLCategory task = CategoryNamed(log.get(), name.c_str());
    const TLCategory same = CategoryNamed(readBack.get(), name.c_str());
    if (!same) RC_FAIL("lost " + name);
    RC_ASSERT(TLTaskGetPriority(same) == TLTaskGetPriority(task));
    RC_ASSERT(TLTaskGetTimeslice(same) == TLTaskGetTimeslice(task));
    RC_ASSERT(TLCategoryGetId(same) == (subjects.contains(name) ? TLCategoryGetId(task) : 0));
  }
}

}  // namespace
