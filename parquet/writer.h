// Writes a table as an Apache Parquet file: compressed with zstd, in row groups with statistics, so that a
// reader leaves out what it does not ask for.
//
//   parquet::Writer writer([&](std::string_view bytes) { file.write(bytes.data(), bytes.size()); });
//   auto& ticks = writer.Add<parquet::Uint64Column>("ticks");
//   auto& task = writer.Add<parquet::TextColumn>("task", parquet::Nulls::allowed);
//   for (...) {
//     ticks.Add(17);
//     task.AddNull();
//     writer.EndRow();
//   }
//   writer.Finish();
//
// Memory: one row group, and some 100 bytes a column for each one that was written.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "column.h"
#include "compressor.h"

namespace parquet {

struct Options {
  std::size_t rowsPerGroup = std::size_t{1} << 17;  // or fewer, when texts are long
  int zstdLevel = 1;
};

class Writer {
 public:
  // Takes the bytes of the file from the first to the last. What it throws goes through.
  using Sink = std::function<void(std::string_view)>;

  explicit Writer(Sink sink, Options options = {});

  // Columns come before the first row. They live as long as this.
  template <class C>
  C& Add(std::string name, Nulls nulls = Nulls::never) {
    std::unique_ptr<C> column;
    if constexpr (std::is_same_v<C, TextColumn>) {
      column = std::make_unique<C>(std::move(name), nulls, heldTextBytes_);
    } else {
      column = std::make_unique<C>(std::move(name), nulls);
    }
    C& added = *column;
    columns_.push_back(std::move(column));
    return added;
  }

  // Each column has got one value more, or a null. Throws std::logic_error, possibly some rows later, when
  // that is not so.
  void EndRow() {
    if (++rows_ == options_.rowsPerGroup || heldTextBytes_ > mostTextBytes) EndGroup();
  }

  // Behind the last row.
  void Finish();

 private:
  static constexpr std::size_t mostTextBytes = std::size_t{16} << 20;

  struct Placed;
  void EndGroup();
  Placed PutChunk();
  void PutPage(bool isDictionary, std::string_view bytes, std::size_t count, Encoding encoding,
               Placed& placed);
  void PutMetadata(std::string& out, const Column& column, const Placed& placed) const;
  void Write(std::string_view bytes);
  std::string Footer() const;

  Sink sink_;
  Options options_;
  Compressor compressor_;
  Chunk chunk_;  // the one at hand
  std::vector<std::unique_ptr<Column>> columns_;
  std::size_t heldTextBytes_ = 0;
  std::size_t rows_ = 0;  // of the row group that is not written yet
  std::uint64_t rowsWritten_ = 0;
  std::uint64_t bytesWritten_ = 0;
  std::string groups_;  // what the footer will say of those that are written
  std::size_t groupCount_ = 0;
};

}  // namespace parquet
