#include "partmedians.h"

#include <algorithm>
#include <tuple>

namespace analysis {

void PartMedians::Add(const std::vector<Part>& parts) {
  ++jobs_;
  all_.insert(all_.end(), parts.begin(), parts.end());
  for (const Part& part : parts) {
    std::uint32_t& row = rowsAt_[PlaceOf(part)];
    if (row == 0) {
      rows_.push_back({part, 0, 0});
      row = static_cast<std::uint32_t>(rows_.size());
    }
    ++rows_[row - 1].count;
  }
}

// Row by row.
std::vector<Ticks> PartMedians::ValuesOfCommon() {
  std::size_t begin = 0;
  for (Row& row : rows_) {
    row.end = begin;
    if (IsCommon(row)) begin += row.count;
  }
  std::vector<Ticks> values(begin);
  for (const Part& part : all_) {
    Row& row = rows_[rowsAt_[PlaceOf(part)] - 1];
    if (IsCommon(row)) values[row.end++] = part.ticks;
  }
  return values;
}

std::vector<Part> PartMedians::Take() {
  std::vector<Ticks> values = ValuesOfCommon();
  std::vector<Part> medians;
  for (const Row& row : rows_) {
    rowsAt_[PlaceOf(row.part)] = 0;
    if (!IsCommon(row)) continue;
    // The jobs without this part come first.
    const auto end = values.begin() + static_cast<std::ptrdiff_t>(row.end);
    const auto median = end - static_cast<std::ptrdiff_t>(jobs_ / 2 + 1);
    std::nth_element(end - static_cast<std::ptrdiff_t>(row.count), median, end);
    if (*median > 0) medians.push_back({row.part.kind, row.part.task, *median});
  }
  std::sort(medians.begin(), medians.end(),
            [](const Part& a, const Part& b) { return std::tie(a.kind, a.task) < std::tie(b.kind, b.task); });
  jobs_ = 0;
  all_.clear();
  rows_.clear();
  return medians;
}

}  // namespace analysis
