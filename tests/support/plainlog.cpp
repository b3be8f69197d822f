// The model's registry and queries.
#include "support/plainlog.h"

#include <algorithm>

namespace plain {
namespace {

bool Holds(std::uint64_t mask, std::uint32_t bit) { return (mask >> (bit % 64) & 1) != 0; }

bool IsSwitch(std::uint32_t type) { return type == 0 || type == 1 || type == 3 || type == 4 || type == 5; }
bool IsEvent(std::uint32_t type) { return type == 2 || type == 6 || type == 7; }

// A task is known by name, priority and time slice, a testpoint by name and id, a timing issue by its name.
bool IsSame(const Category& a, const Category& b) {
  if (a.kind != b.kind || a.name != b.name) return false;
  if (a.kind == task) return a.priority == b.priority && a.timeSlice == b.timeSlice;
  return a.kind == timingIssue || a.id == b.id;
}

}  // namespace

std::vector<const Category*> Log::Categories(std::uint64_t kinds, const char* name) const {
  std::vector<const Category*> found;
  for (const auto& category : categories) {
    if (name && category->name != name) continue;
    if (Holds(kinds ? kinds : 7, category->kind)) found.push_back(category.get());
  }
  return found;
}

Cursor::Cursor(Position begin, Position end, const Filter& filter)
    : next_(begin), end_(end), filter_(filter) {
  if (filter_.types == 0) filter_.types = 0xFF;
}

const Entry* Cursor::Next() {
  while (next_ != end_) {
    const Entry& entry = *next_++;
    const Category* category = filter_.category;
    const bool concerns = !category || entry.slots[0] == category || entry.slots[1] == category;
    if (concerns && Holds(filter_.types, entry.type)) return &entry;
  }
  return nullptr;
}

// A bound outside the log's period is not applied.
Cursor Log::Entries(const Filter& filter) const {
  auto begin = entries.begin();
  auto end = entries.end();
  if (startTime < filter.from) {
    begin = std::partition_point(begin, end, [&](const Entry& e) { return e.timestamp < filter.from; });
  }
  if (stopTime > filter.to) {
    end = std::partition_point(begin, end, [&](const Entry& e) { return e.timestamp <= filter.to; });
  }
  return Cursor(begin, end, filter);
}

std::uint64_t Log::EntriesCount(const Filter& filter) const {
  Cursor cursor = Entries(filter);
  const bool anyType = filter.types == 0 || (filter.types & 0xFF) == 0xFF;
  if (!filter.category && anyType) return cursor.InRange();
  std::uint64_t count = 0;
  while (cursor.Next()) ++count;
  return count;
}

Category* Log::FindOrCreate(const Category& wanted) {
  const auto [begin, end] = categoriesByName_.equal_range(wanted.name);
  for (auto known = begin; known != end; ++known) {
    if (IsSame(*known->second, wanted)) return known->second;
  }
  Category* created = categories.emplace_back(std::make_unique<Category>(wanted)).get();
  created->place = categories.size() - 1;
  categoriesByName_.emplace(wanted.name, created);
  return created;
}

Category* Log::FindById(Kind kind, std::uint32_t id) const {
  for (const auto& category : categories) {
    if (category->kind == kind && category->id == id) return category.get();
  }
  return nullptr;
}

void Log::FillInOldTasks() {
  Category* running = nullptr;
  for (Entry& entry : entries) {
    if (IsEvent(entry.type) || !entry.slots[1]) entry.slots[1] = running;
    if (IsSwitch(entry.type)) running = entry.slots[0];
  }
}

std::uint32_t TimingIssueId(const std::string& name) {
  std::string code = name.substr(0, 4);
  code.resize(4);
  std::uint32_t id = 0;
  for (const char c : code) id = id << 8 | static_cast<unsigned char>(c);
  return id;
}

}  // namespace plain
