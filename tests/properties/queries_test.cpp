// Queries against a plain look at every entry.
#include <algorithm>

#include "randomlogs.h"

namespace {

struct Query {
  TLCategory category;
  std::uint64_t types;
  std::uint64_t from;
  std::uint64_t to;
};

std::vector<TLEntry> Yielded(TLTaskLog log, const Query& query) {
  std::vector<TLEntry> entries;
  const TLEntryIterator iterator =
      TLTaskLogGetEntries(log, query.category, query.types, query.from, query.to);
  while (const TLEntry entry = TLEntryIteratorNext(iterator)) entries.push_back(entry);
  TLEntryIteratorDestroy(iterator);
  return entries;
}

// A log from a controller, a file whose period may leave entries out, and the controller again.
LogPtr AnyLog() {
  LogPtr log = NewLog();
  RC_ASSERT(AppendRing(log.get(), *AnyWords()) == 0u);
  if (*rc::gen::arbitrary<bool>()) {
    const auto start = *rc::gen::element<std::uint64_t>(0, 0x1'FFFF'0000, 0x2'0000'0000);
    const auto stop = start + *rc::gen::element<std::uint64_t>(0, 0x8000, 0x1000'0000);
    const FileHeader header{.startTime = start, .stopTime = stop};
    RC_ASSERT(AppendBytes(log.get(), TaskFile(header, {{"File", 1, 2, {{2, 0, start + 9}, {0, 0, 1}}}})) ==
              0u);
  }
  RC_ASSERT(AppendRing(log.get(), *AnyWords()) == 0u);
  return log;
}

Query AnyQuery(const std::vector<TLEntry>& entries) {
  const auto bound = [&]() -> std::uint64_t {
    if (entries.empty() || *rc::gen::inRange(0, 4) == 0) return *rc::gen::arbitrary<std::uint64_t>();
    const TLEntry entry = entries[*rc::gen::inRange<std::size_t>(0, entries.size())];
    return TLEntryGetTimestamp(entry) + static_cast<std::uint64_t>(*rc::gen::inRange(-1, 2));
  };
  TLCategory category = nullptr;
  if (!entries.empty() && *rc::gen::arbitrary<bool>()) {
    category = TLEntryGetCategory(entries[*rc::gen::inRange<std::size_t>(0, entries.size())], 0);
  }
  const auto types = *rc::gen::element<std::uint64_t>(0, 0xFF, 0x3B, 0x40, 0x84, 0x7FFF, 0x100, UINT64_MAX);
  return {category, types, bound(), bound()};
}

// docs of TLTaskLogGetEntries(): both bounds included, each only where it cuts into the log's period.
bool Keeps(TLTaskLog log, const Query& query, TLEntry entry) {
  const std::uint64_t time = TLEntryGetTimestamp(entry);
  if (TLTaskLogGetStartTime(log) < query.from && time < query.from) return false;
  if (TLTaskLogGetStopTime(log) > query.to && time > query.to) return false;
  if (((query.types ? query.types : 0xFF) >> TLEntryGetType(entry) & 1) == 0) return false;
  return !query.category || TLEntryGetCategory(entry, 0) == query.category ||
         TLEntryGetCategory(entry, 1) == query.category;
}

RC_GTEST_PROP(Queries, KeepTimeOrder, ()) {
  const LogPtr log = AnyLog();
  const EntryLines lines = LinesOf(log.get());
  RC_ASSERT(std::is_sorted(lines.begin(), lines.end(),
                           [](const EntryLine& a, const EntryLine& b) { return a.timestamp < b.timestamp; }));
}

RC_GTEST_PROP(Queries, YieldExactlyWhatTheFilterKeeps, ()) {
  const LogPtr log = AnyLog();
  const std::vector<TLEntry> all = Yielded(log.get(), {nullptr, anyType, 0, UINT64_MAX});
  for (int i = 0; i < 20; ++i) {
    const Query query = AnyQuery(all);
    std::vector<TLEntry> kept;
    std::copy_if(all.begin(), all.end(), std::back_inserter(kept),
                 [&](TLEntry entry) { return Keeps(log.get(), query, entry); });
    const bool same = Yielded(log.get(), query) == kept;
    RC_ASSERT(same);

    // Without a category, a mask of all named types counts the unnamed ones, too.
    Query counted = query;
    if (!query.category && (query.types == 0 || (query.types & 0xFF) == 0xFF)) counted.types = anyType;
    const auto expected = std::count_if(all.begin(), all.end(),
                                        [&](TLEntry entry) { return Keeps(log.get(), counted, entry); });
    RC_ASSERT(TLTaskLogGetEntriesCount(log.get(), query.category, query.types, query.from, query.to) ==
              static_cast<std::uint64_t>(expected));
  }
}

RC_GTEST_PROP(Queries, CountTheCategoriesThatTheyYield, ()) {
  const LogPtr log = AnyLog();
  for (const char* name : {static_cast<const char*>(nullptr), "Idle", "TP1", "STKO", "0x00000003", "none"}) {
    for (const std::uint64_t kinds : {0, 1, 2, 3, 4, 6, 7, 8, 15}) {
      RC_ASSERT(TLTaskLogGetCategoriesCount(log.get(), kinds, name) ==
                CountIn(DumpCategories(log.get(), kinds, name)));
    }
  }
}

}  // namespace
