#include "writer.h"

#include <limits>
#include <stdexcept>
#include <utility>

#include "thrift.h"

namespace parquet {
namespace {

constexpr std::string_view magic = "PAR1";
constexpr std::int32_t zstd = 6;
constexpr std::int32_t dataPage = 0;
constexpr std::int32_t dictionaryPage = 2;
constexpr int textMeaning = 1;
constexpr int integerMeaning = 10;

// Field numbers are those of the format's definition, parquet.thrift.
void PutSchemaRoot(Thrift& footer, std::size_t columns) {
  footer.BeginElement();
  footer.Text(4, "schema");
  footer.Int32(5, static_cast<std::int32_t>(columns));
  footer.End();
}

void PutSchema(Thrift& footer, const Column& column) {
  const Type type = column.TypeOf();
  footer.BeginElement();
  footer.Int32(1, type.physical);
  footer.Int32(3, column.MayBeNull());
  footer.Text(4, column.Name());
  if (type.converted >= 0) {
    footer.Int32(6, type.converted);
    footer.BeginStruct(10);
    footer.BeginStruct(type.bits > 0 ? integerMeaning : textMeaning);
    if (type.bits > 0) {
      footer.Byte(1, type.bits);
      footer.Bool(2, type.isSigned);
    }
    footer.End();
    footer.End();
  }
  footer.End();
}

void PutStatistics(Thrift& metadata, const Chunk& chunk) {
  metadata.BeginStruct(12);
  metadata.Int64(3, chunk.nulls);
  if (chunk.largest) metadata.Text(5, *chunk.largest);
  if (chunk.least) metadata.Text(6, *chunk.least);
  metadata.End();
}

}  // namespace

// Where the pages of a chunk lie in the file.
struct Writer::Placed {
  std::uint64_t begin = 0;
  std::uint64_t data = 0;  // the page of values; a dictionary lies before it
  std::uint64_t rawBytes = 0;
};

Writer::Writer(Sink sink, Options options)
    : sink_(std::move(sink)), options_(options), compressor_(options.zstdLevel) {
  Write(magic);
}

void Writer::Finish() {
  if (rows_ > 0) EndGroup();
  const std::string footer = Footer();
  Write(footer);
  std::string end;
  PutLittleEndian(end, static_cast<std::uint32_t>(footer.size()));
  Write(end.append(magic));
}

void Writer::EndGroup() {
  const std::uint64_t begin = bytesWritten_;
  std::uint64_t rawBytes = 0;
  std::string columns;
  for (const auto& column : columns_) {
    if (column->Rows() != rows_ || column->HasForbiddenNulls())
      throw std::logic_error("the column '" + column->Name() + "' has not one value a row");
    column->Take(chunk_);
    const Placed placed = PutChunk();
    rawBytes += placed.rawBytes;
    PutMetadata(columns, *column, placed);
  }
  Thrift group(groups_);
  group.List(1, Thrift::structure, columns_.size());
  group.Raw(columns);
  group.Int64(2, rawBytes);
  group.Int64(3, rows_);
  group.Int64(5, begin);
  group.Int64(6, bytesWritten_ - begin);
  group.End();
  ++groupCount_;
  rowsWritten_ += rows_;
  rows_ = 0;
  heldTextBytes_ = 0;
}

Writer::Placed Writer::PutChunk() {
  Placed placed;
  placed.begin = bytesWritten_;
  if (chunk_.dictionarySize > 0)
    PutPage(true, chunk_.dictionary, chunk_.dictionarySize, Encoding::plain, placed);
  placed.data = bytesWritten_;
  PutPage(false, chunk_.page, chunk_.rows, chunk_.encoding, placed);
  return placed;
}

void Writer::PutPage(bool isDictionary, std::string_view bytes, std::size_t count, Encoding encoding,
                     Placed& placed) {
  if (bytes.size() > std::numeric_limits<std::int32_t>::max())
    throw std::runtime_error("a text is longer than a Parquet file holds");
  const std::string_view compressed = compressor_.Compress(bytes);
  std::string header;
  Thrift page(header);
  page.Int32(1, isDictionary ? dictionaryPage : dataPage);
  page.Int32(2, static_cast<std::int32_t>(bytes.size()));
  page.Int32(3, static_cast<std::int32_t>(compressed.size()));
  page.BeginStruct(isDictionary ? 7 : 5);
  page.Int32(1, static_cast<std::int32_t>(count));
  page.Int32(2, static_cast<std::int32_t>(encoding));
  if (!isDictionary) {
    page.Int32(3, static_cast<std::int32_t>(Encoding::hybrid));
    page.Int32(4, static_cast<std::int32_t>(Encoding::hybrid));
  }
  page.End();
  page.End();
  Write(header);
  Write(compressed);
  placed.rawBytes += header.size() + bytes.size();
}

void Writer::PutMetadata(std::string& out, const Column& column, const Placed& placed) const {
  Thrift element(out);
  element.Int64(2, placed.begin);
  element.BeginStruct(3);
  element.Int32(1, column.TypeOf().physical);
  const bool hasDictionary = placed.data != placed.begin;
  element.List(2, Thrift::int32, hasDictionary ? 3 : 2);
  element.Element(static_cast<std::int32_t>(chunk_.encoding));
  element.Element(static_cast<std::int32_t>(Encoding::hybrid));
  if (hasDictionary) element.Element(static_cast<std::int32_t>(Encoding::plain));
  element.List(3, Thrift::binary, 1);
  element.Element(column.Name());
  element.Int32(4, zstd);
  element.Int64(5, chunk_.rows);
  element.Int64(6, placed.rawBytes);
  element.Int64(7, bytesWritten_ - placed.begin);
  element.Int64(9, placed.data);
  if (hasDictionary) element.Int64(11, placed.begin);
  PutStatistics(element, chunk_);
  element.End();
  element.End();
}

void Writer::Write(std::string_view bytes) {
  sink_(bytes);
  bytesWritten_ += bytes.size();
}

std::string Writer::Footer() const {
  std::string text;
  Thrift footer(text);
  footer.Int32(1, 2);
  footer.List(2, Thrift::structure, columns_.size() + 1);
  PutSchemaRoot(footer, columns_.size());
  for (const auto& column : columns_) PutSchema(footer, *column);
  footer.Int64(3, rowsWritten_);
  footer.List(4, Thrift::structure, groupCount_);
  footer.Raw(groups_);
  footer.Text(6, "tasklog");
  // All columns are ordered as their types say: without this, statistics count for nothing.
  footer.List(7, Thrift::structure, columns_.size());
  for (std::size_t i = 0; i < columns_.size(); ++i) {
    footer.BeginElement();
    footer.BeginStruct(1);
    footer.End();
    footer.End();
  }
  footer.End();
  return text;
}

}  // namespace parquet
