// Writes a table with every type of column, both ends of integers and nulls, in row groups of 300 rows; the
// check of Parquet knows each value. usage: parquet_sample FILE
#include <fstream>

#include "parquet/writer.h"

namespace {

constexpr std::uint32_t rows = 1000;

void Write(std::ofstream& file) {
  using parquet::Nulls;
  parquet::Writer writer([&](std::string_view bytes) { file << bytes; }, {.rowsPerGroup = 300});
  auto& u64 = writer.Add<parquet::Uint64Column>("u64", Nulls::allowed);
  auto& i64 = writer.Add<parquet::Int64Column>("i64");
  auto& u32 = writer.Add<parquet::Uint32Column>("u32", Nulls::allowed);
  auto& i32 = writer.Add<parquet::Int32Column>("i32");
  auto& real = writer.Add<parquet::DoubleColumn>("real");
  auto& flag = writer.Add<parquet::BoolColumn>("flag", Nulls::allowed);
  auto& text = writer.Add<parquet::TextColumn>("text", Nulls::allowed);
  auto& same = writer.Add<parquet::TextColumn>("same");
  parquet::Label label;
  label.text = "\xC3\xA9";
  for (std::uint32_t row = 0; row < rows; ++row) {
    row % 3 == 1 ? u64.AddNull() : u64.Add(row % 2 ? UINT64_MAX - row : row);
    i64.Add(row % 2 ? INT64_MIN + std::int64_t{row} : INT64_MAX - std::int64_t{row});
    row >= 600 ? u32.AddNull() : u32.Add(row * 2654435761u);
    i32.Add(row % 2 ? INT32_MIN : static_cast<std::int32_t>(row));
    real.Add(row * 0.25);
    row % 7 == 3 ? flag.AddNull() : flag.Add(row % 2 == 0);
    row % 11 == 10 ? text.AddNull() : text.Add("name" + std::to_string(row % 290));
    same.Add(label);
    writer.EndRow();
  }
  writer.Finish();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  std::ofstream file(arguments[1], std::ios::binary);
  Write(file);
  return file.flush() ? 0 : 1;
}
