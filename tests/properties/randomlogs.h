// Random records and rings. All categories have names of their own, without spaces, which tell them apart.
#pragma once

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include "support/logs.h"

inline std::ostream& operator<<(std::ostream& out, const RingRecord& record) {
  return out << '{' << record.type << ", " << record.tick << ", " << record.id << '}';
}

// Ids of the categories that PutCategories() gives a target, and some that it does not know.
inline rc::Gen<std::uint32_t> AnyId() {
  return rc::gen::element<std::uint32_t>(1, 2, 3, 77, 0x9000, 0x9004, 0x53544B4F, 0x4C415445, 3, 0xFFFFFFFF);
}

// Slots whose times follow each other in steps below a span, most of them short; no markers.
inline rc::Gen<std::vector<RingRecord>> AnyRecords(std::uint64_t start, std::uint64_t leastStep) {
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

// Whatever may stand in a controller's memory.
inline rc::Gen<std::vector<std::uint32_t>> AnyWords() {
  const auto timeWord =
      rc::gen::map(rc::gen::pair(rc::gen::arbitrary<std::uint32_t>(), rc::gen::arbitrary<bool>()),
                   [](const auto& pair) { return pair.second ? pair.first & 0x000FFFFF : pair.first; });
  const auto slot = rc::gen::pair(timeWord, AnyId());
  return rc::gen::map(rc::gen::container<std::vector<std::pair<std::uint32_t, std::uint32_t>>>(slot),
                      [](const auto& slots) {
                        std::vector<std::uint32_t> words = {1, 0xFFFF0000};
                        for (const auto& [time, id] : slots) words.insert(words.end(), {time, id});
                        return words;
                      });
}
