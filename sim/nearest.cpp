#include "nearest.h"

#include <algorithm>
#include <numeric>

namespace sim {
namespace {

// Insertions, deletions and replacements that turn one text into the other.
size_t EditDistance(std::string_view a, std::string_view b) {
  std::vector<size_t> row(b.size() + 1);
  std::iota(row.begin(), row.end(), size_t{0});
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t replaced = diagonal + (a[i - 1] == b[j - 1] ? 0 : 1);
      diagonal = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, replaced});
    }
  }
  return row.back();
}

}  // namespace

std::string Suggestion(std::string_view name, const std::vector<std::string>& candidates) {
  constexpr size_t longestName = 200;  // bounds the work for hostile input
  const std::string* best = nullptr;
  size_t bestDistance = std::min(name.size() / 2, size_t{3}) + 1;
  if (name.size() > longestName) return {};
  for (const std::string& candidate : candidates) {
    const size_t distance = EditDistance(name, candidate);
    if (distance >= bestDistance) continue;
    best = &candidate;
    bestDistance = distance;
  }
  return best ? ", did you mean '" + *best + "'?" : std::string();
}

}  // namespace sim
