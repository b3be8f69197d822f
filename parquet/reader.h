// Reads back the files that Writer wrote, to join them. It knows just the encodings that are used there.
// Nothing of a file is trusted: all of it throws std::runtime_error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "column.h"

namespace parquet {

struct ColumnSchema {
  std::string name;
  std::int32_t physical = 0;
  std::int32_t converted = -1;
  bool mayBeNull = false;
  bool operator==(const ColumnSchema&) const = default;
};

// The values of a column in one row group.
struct ReadValues {
  std::vector<std::uint64_t> present;  // for each row 1 or 0; empty where all are there
  // Those that are there: integers, the bits of a double, 0 and 1, or numbers of texts.
  std::vector<std::uint64_t> values;
  std::vector<std::string> texts;
};

class Reader {
 public:
  // Of a whole file, which is borrowed.
  explicit Reader(std::string_view file);

  const std::vector<ColumnSchema>& Columns() const { return columns_; }
  std::size_t Groups() const { return groups_.size(); }
  std::size_t RowsOf(std::size_t group) const { return groups_[group].rows; }
  ReadValues Read(std::size_t group, std::size_t column) const;

 private:
  struct Place {
    std::uint64_t data = 0;
    std::uint64_t dictionary = 0;  // 0: none
  };
  struct Group {
    std::size_t rows = 0;
    std::vector<Place> places;
  };
  struct Page;

  Page PageAt(std::uint64_t at) const;
  std::string_view file_;
  std::vector<ColumnSchema> columns_;
  std::vector<Group> groups_;
};

}  // namespace parquet
