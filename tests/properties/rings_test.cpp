// Reading a controller's buffer again and again.
#include <algorithm>
#include <set>
#include <sstream>

#include "randomlogs.h"
#include "sim/ring.h"

namespace {

constexpr std::uint64_t startTime = 1'000'000;

sim::Ring EmptyRing(std::uint32_t slots, int tickBits) {
  sim::Ring ring(slots, tickBits);
  ring.Clear(startTime);
  return ring;
}

// The log of somebody who reads a ring of few slots so often that nothing is lost.
LogPtr Poll(const std::vector<RingRecord>& records, int tickBits) {
  const auto slots = *rc::gen::inRange<std::uint32_t>(2, 40);
  sim::Ring ring = EmptyRing(slots, tickBits);
  LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), ring.Words()) == 0u);
  for (std::size_t next = 0; next < records.size();) {
    const auto fresh = *rc::gen::inRange<std::uint32_t>(1, slots);  // at most what the ring holds
    for (std::uint32_t i = 0; i < fresh && next < records.size(); ++i, ++next) {
      ring.Write(records[next].tick, records[next].type, records[next].id);
    }
    RC_ASSERT(AppendRing(log.get(), ring.Words()) == 0u);
  }
  return log;
}

LogPtr ReadAtOnce(const std::vector<RingRecord>& records, int tickBits) {
  sim::Ring ring = EmptyRing(static_cast<std::uint32_t>(records.size()) + 2, tickBits);
  for (const RingRecord& record : records) ring.Write(record.tick, record.type, record.id);
  LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), ring.Words()) == 0u);
  return log;
}

// Without slot 1 and without the order of entries of one time.
EntryLines AsSet(TLTaskLog log) {
  EntryLines lines = LinesOf(log);
  for (EntryLine& line : lines) line.slot1 = "-";
  std::sort(lines.begin(), lines.end());
  return lines;
}

// They come in the order in which the ring was decoded, which is not that of their times.
std::set<std::string> CategoriesOf(TLTaskLog log) {
  std::set<std::string> categories;
  std::istringstream dump(DumpCategories(log));
  for (std::string line; std::getline(dump >> std::ws, line, ';');) categories.insert(line);
  return categories;
}

RC_GTEST_PROP(Rings, AddNothingWhenReadAgain, ()) {
  const std::vector<std::uint32_t> words = *AnyWords();
  const LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), words) == 0u);
  const std::string entries = DumpEntries(log.get());
  const std::string categories = DumpCategories(log.get());
  const std::string times = DumpTimes(log.get());
  RC_ASSERT(AppendRing(log.get(), words) == 0u);
  RC_ASSERT(DumpEntries(log.get()) == entries);
  RC_ASSERT(DumpCategories(log.get()) == categories);
  RC_ASSERT(DumpTimes(log.get()) == times);
}

RC_GTEST_PROP(Rings, GiveTheSameLogPolledAsAtOnce, ()) {
  const int tickBits = *rc::gen::element(16, 28);
  const auto records = *AnyRecords(startTime, 1);
  const LogPtr polled = Poll(records, tickBits);
  const LogPtr whole = ReadAtOnce(records, tickBits);
  RC_ASSERT(LinesOf(polled.get()) == LinesOf(whole.get()));
  RC_ASSERT(CategoriesOf(polled.get()) == CategoriesOf(whole.get()));
  RC_ASSERT(DumpTimes(polled.get()) == DumpTimes(whole.get()));
}

// Polling may come between records of one time, and their order is then not known any more.
RC_GTEST_PROP(Rings, GiveTheSameEntriesPolledWhereTimesAreShared, ()) {
  const int tickBits = *rc::gen::element(16, 28);
  const auto records = *AnyRecords(startTime, 0);
  RC_ASSERT(AsSet(Poll(records, tickBits).get()) == AsSet(ReadAtOnce(records, tickBits).get()));
}

}  // namespace
