// What the machine needs for the least that an operation has to do, so that ratios come from one run.
#include <sys/mman.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "setting.h"

namespace bench {
namespace {

// As large as an entry of the library.
struct Entry {
  std::uint64_t type;
  std::uint64_t time;
  std::uint64_t slots[2];
};

// Records of 8 bytes into entries, without a look at whether they are there or what their ids mean.
void Decode(const std::vector<std::uint32_t>& ring, Entry* entries) {
  std::uint64_t time = std::uint64_t{ring[0]} << 32 | ring[1];
  for (std::size_t word = 2; word + 1 < ring.size(); word += 2) {
    const std::uint64_t tick = (ring[word] & 0xFFFF) | (ring[word] >> 4 & 0x0FFF0000);
    const std::uint64_t candidate = (time & ~std::uint64_t{0x0FFFFFFF}) | tick;
    time = candidate < time ? candidate + 0x10000000 : candidate;
    *entries++ = {ring[word] >> 16 & 0xF, time, {ring[word + 1], 0}};
  }
}

// In large pages, where the system has them: the least that fresh memory costs.
Entry* FreshEntries(std::size_t count) {
  constexpr std::size_t largePageSize = std::size_t{2} << 20;
  const std::size_t size = (count * sizeof(Entry) / largePageSize + 1) * largePageSize;
  void* const memory = std::aligned_alloc(largePageSize, size);
  madvise(memory, size, MADV_HUGEPAGE);
  return static_cast<Entry*>(memory);
}

void DecodeIntoFresh(benchmark::State& state, std::uint32_t) {
  SetController(usualTaskCount, 1, state.range(0));
  const auto& ring = TheController().ring;
  Entry* entries = nullptr;
  for (auto _ : state) {
    entries = FreshEntries(ring.size() / 2);
    Decode(ring, entries);
    benchmark::DoNotOptimize(entries);
    Untimed(state, [&] { std::free(entries); });
  }
  Report(state, static_cast<double>(state.range(0)));
}

void DecodeIntoWarm(benchmark::State& state, std::size_t recordCount, double per) {
  SetController(usualTaskCount, 1, static_cast<std::int64_t>(recordCount));
  const auto& ring = TheController().ring;
  std::vector<Entry> entries(ring.size() / 2);
  for (auto _ : state) {
    Decode(ring, entries.data());
    benchmark::ClobberMemory();
  }
  Report(state, per);
}

void DecodeAll(benchmark::State& state, std::uint32_t) {
  DecodeIntoWarm(state, static_cast<std::size_t>(state.range(0)), static_cast<double>(state.range(0)));
}

// The records of a poll's buffer, whatever the log holds.
void DecodeSmallRing(benchmark::State& state, std::uint32_t) { DecodeIntoWarm(state, 8191, 1000); }

// Time an entry that comes in, as it is stated for merging; `heldKernels` times as many are held.
template <int heldKernels>
void StandardMerge(benchmark::State& state, std::uint32_t) {
  const auto size = static_cast<std::size_t>(state.range(0));
  const auto byTime = [](const Entry& a, const Entry& b) { return a.time < b.time; };
  std::vector<Entry> held(size * heldKernels);
  std::vector<Entry> added(size);
  std::vector<Entry> merged(held.size() + added.size());
  for (std::size_t i = 0; i < held.size(); ++i) held[i].time = 7 * i;
  for (std::size_t i = 0; i < added.size(); ++i) added[i].time = 7 * heldKernels * i + i % 5;
  for (auto _ : state) {
    std::merge(held.begin(), held.end(), added.begin(), added.end(), merged.begin(), byTime);
    benchmark::ClobberMemory();
  }
  Report(state, static_cast<double>(size));
}

struct Close {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, Close>;

constexpr std::size_t pieceSize = 16;  // of a record

// As many bytes as a saved log has, record by record.
void WriteRecords(benchmark::State& state, std::uint32_t) {
  const TempFile file;
  LogOf<Library>(usualTaskCount, state.range(0)).Save(file.Path());
  const std::size_t count = std::filesystem::file_size(file.Path()) / pieceSize;
  const char piece[pieceSize] = {};
  for (auto _ : state) {
    Untimed(state, [&] { file.Remove(); });
    const File stream(std::fopen(file.Path().c_str(), "wb"));
    for (std::size_t i = 0; i < count; ++i) std::fwrite(piece, 1, sizeof piece, stream.get());
  }
  Report(state, static_cast<double>(state.range(0)));
}

void ReadRecords(benchmark::State& state, std::uint32_t) {
  const TempFile file;
  LogOf<Library>(usualTaskCount, state.range(0)).Save(file.Path());
  char piece[pieceSize];
  for (auto _ : state) {
    const File stream(std::fopen(file.Path().c_str(), "rb"));
    while (std::fread(piece, 1, sizeof piece, stream.get()) == sizeof piece) benchmark::DoNotOptimize(piece);
  }
  Report(state, static_cast<double>(state.range(0)));
}

// Two calls an entry that do nothing but read it.
void TwoCalls(benchmark::State& state, std::uint32_t) {
  LogOf<Library>(usualTaskCount, 10'000);
  TLTaskLog log = nullptr;
  TLTaskLogCreate(&log);
  TLTaskLogAppendFromTarget(log, "bench", 1, nullptr, nullptr);
  TLEntryIterator iterator = TLTaskLogGetEntries(log, nullptr, 0, 0, UINT64_MAX);
  const TLEntry entry = TLEntryIteratorNext(iterator);
  for (auto _ : state)
    for (std::int64_t i = 0; i < state.range(0); ++i)
      benchmark::DoNotOptimize(TLEntryGetTimestamp(entry) + TLEntryGetType(entry));
  TLEntryIteratorDestroy(iterator);
  TLTaskLogDestroy(log);
  Report(state, static_cast<double>(state.range(0)));
}

void RegisterLimit(const std::string& operation, Run run) {
  RegisterSizes({operation, "limit", 0, ""}, sizes[3], run);
}

}  // namespace

void RegisterLimits() {
  RegisterLimit("acquire", DecodeIntoFresh);
  RegisterLimit("read again", DecodeAll);
  RegisterLimit("merge a 2nd kernel", StandardMerge<1>);
  RegisterLimit("merge a 3rd kernel", StandardMerge<2>);
  RegisterLimit("merge a 4th kernel", StandardMerge<3>);
  RegisterLimit("poll", DecodeSmallRing);
  RegisterLimit("save", WriteRecords);
  RegisterLimit("load", ReadRecords);
  RegisterLimit("iterate", TwoCalls);
}

}  // namespace bench
