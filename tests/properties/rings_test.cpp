// Reading a controller's buffer so often that nothing is lost gives what a larger buffer would have given.
#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <set>
#include <sstream>

#include "sim/ring.h"
#include "support/logs.h"

namespace {

constexpr std::uint64_t startTime = 1'000'000;

// Ids of the categories that PutCategories() gives a target, and some that it does not know.
rc::Gen<std::uint32_t> AnyId() {
  return rc::gen::element<std::uint32_t>(1, 2, 3, 77, 0x9000, 0x9004, 0x53544B4F, 0x4C415445, 3, 0xFFFFFFFF);
}

// Cells whose times follow each other in steps below a span, most of them short; no markers.
rc::Gen<std::vector<RingRecord>> AnyRecords(std::uint64_t start, std::uint64_t leastStep) {
  const auto step =
      rc::gen::weightedOneOf<std::uint64_t>({{8, rc::gen::inRange<std::uint64_t>(leastStep, leastStep + 4)},
                                             {1, rc::gen::inRange<std::uint64_t>(leastStep, 0xFFFF)}});
  const auto type = rc::gen::weightedOneOf<std::uint32_t>(
      {{8, rc::gen::inRange<std::uint32_t>(0, 8)}, {1, rc::gen::inRange<std::uint32_t>(8, 15)}});
  const auto draft = rc::gen::construct<RingRecord>(type, step, AnyId());
  return rc::gen::map(rc::gen::container<std::vector<RingRecord>>(draft),
                      [start](std::vector<RingRecord> records) {
                        std::uint64_t time = start;
                        for (RingRecord& record : records) record.tick = time += record.tick;
                        return records;
                      });
}

sim::Ring EmptyRing(std::uint32_t cells, int tickBits) {
  sim::Ring ring(cells, tickBits);
  ring.Clear(startTime);
  return ring;
}

// The log of somebody who reads a ring of few cells so often that nothing is lost.
LogPtr Poll(const std::vector<RingRecord>& records, int tickBits) {
  const auto cells = *rc::gen::inRange<std::uint32_t>(2, 40);
  sim::Ring ring = EmptyRing(cells, tickBits);
  LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), ring.Words()) == 0u);
  for (std::size_t next = 0; next < records.size();) {
    const auto fresh = *rc::gen::inRange<std::uint32_t>(1, cells);  // at most what the ring holds
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

using Lines = std::multiset<std::string>;

// The pieces of a dump without their order.
Lines LinesOf(const std::string& dump) {
  Lines lines;
  std::istringstream stream(dump);
  for (std::string line; std::getline(stream >> std::ws, line, ';');) lines.insert(line);
  return lines;
}

// Entries without slot 1, which stands last.
Lines WithoutRunningTasks(TLTaskLog log) {
  Lines lines;
  for (const std::string& line : LinesOf(DumpEntries(log))) lines.insert(line.substr(0, line.rfind(' ')));
  return lines;
}

RC_GTEST_PROP(Rings, GiveTheSameLogPolledAsAtOnce, ()) {
  const int tickBits = *rc::gen::element(16, 28);
  const auto records = *AnyRecords(startTime, 1);
  const LogPtr polled = Poll(records, tickBits);
  const LogPtr whole = ReadAtOnce(records, tickBits);
  RC_ASSERT(DumpEntries(polled.get()) == DumpEntries(whole.get()));
  // They come in the order in which a ring is decoded, which is not that of their times.
  RC_ASSERT(LinesOf(DumpCategories(polled.get())) == LinesOf(DumpCategories(whole.get())));
  RC_ASSERT(DumpTimes(polled.get()) == DumpTimes(whole.get()));
}

// Polling may come between records of one time, and their order is then not known any more.
RC_GTEST_PROP(Rings, GiveTheSameEntriesPolledWhereTimesAreShared, ()) {
  const int tickBits = *rc::gen::element(16, 28);
  const auto records = *AnyRecords(startTime, 0);
  RC_ASSERT(WithoutRunningTasks(Poll(records, tickBits).get()) ==
            WithoutRunningTasks(ReadAtOnce(records, tickBits).get()));
}

}  // namespace
