#include "joinedfile.h"

#include <bit>
#include <functional>
#include <stdexcept>
#include <vector>

#include "parquet/reader.h"
#include "parquet/writer.h"

namespace fleet {
namespace {

constexpr const char* recordingColumn = "recording";

std::size_t RecordingColumnOf(const parquet::Reader& file) {
  for (std::size_t i = 0; i < file.Columns().size(); ++i)
    if (file.Columns()[i].name == recordingColumn && !file.Columns()[i].mayBeNull) return i;
  throw std::runtime_error("it is no file of a dataset: the column 'recording' is missing");
}

// Takes the next value of a column, or a null; by row.
using Feed = std::function<void(const parquet::ReadValues& values, std::size_t row, std::size_t place)>;

template <class Column, class Convert>
Feed FeedOf(parquet::Writer& writer, const parquet::ColumnSchema& schema, Convert convert) {
  auto& column =
      writer.Add<Column>(schema.name, schema.mayBeNull ? parquet::Nulls::allowed : parquet::Nulls::never);
  return [&column, convert](const parquet::ReadValues& values, std::size_t row, std::size_t place) {
    const bool isThere = values.present.empty() || values.present[row] != 0;
    isThere ? column.Add(convert(values, values.values[place])) : column.AddNull();
  };
}

template <class Column, class Integer>
Feed IntegerFeed(parquet::Writer& writer, const parquet::ColumnSchema& schema) {
  return FeedOf<Column>(writer, schema, [](const parquet::ReadValues&, std::uint64_t value) {
    return static_cast<Integer>(value);
  });
}

// The numbers of the format, as in parquet/column.cpp.
Feed MakeFeed(parquet::Writer& writer, const parquet::ColumnSchema& schema) {
  switch (schema.physical * 100 + schema.converted) {
    case 113: return IntegerFeed<parquet::Uint32Column, std::uint32_t>(writer, schema);
    case 117: return IntegerFeed<parquet::Int32Column, std::int32_t>(writer, schema);
    case 214: return IntegerFeed<parquet::Uint64Column, std::uint64_t>(writer, schema);
    case 218: return IntegerFeed<parquet::Int64Column, std::int64_t>(writer, schema);
    case 499:
      return FeedOf<parquet::DoubleColumn>(
          writer, schema, [](const auto&, std::uint64_t value) { return std::bit_cast<double>(value); });
    case 600:
      return FeedOf<parquet::TextColumn>(writer, schema, [](const auto& values, std::uint64_t number) {
        return std::string_view(values.texts[static_cast<std::size_t>(number)]);
      });
    default: throw std::runtime_error("the column '" + schema.name + "' has a type that no dataset has");
  }
}

}  // namespace

std::set<std::string> RecordingsIn(std::string_view file) {
  const parquet::Reader reader(file);
  const std::size_t column = RecordingColumnOf(reader);
  std::set<std::string> recordings;
  for (std::size_t group = 0; group < reader.Groups(); ++group)
    for (std::string& text : reader.Read(group, column).texts) recordings.insert(std::move(text));
  return recordings;
}

class JoinedFile::Columns {
 public:
  Columns(const parquet::Reader& first, std::string& out)
      : writer_([&out](std::string_view bytes) { out += bytes; }, {.zstdLevel = 3}),
        schema_(first.Columns()) {
    for (const parquet::ColumnSchema& column : schema_) feeds_.push_back(MakeFeed(writer_, column));
  }

  // The rows of these recordings; returns how many.
  std::size_t Add(const parquet::Reader& file, const std::set<std::string>& wanted) {
    if (file.Columns() != schema_)
      throw std::runtime_error("its columns are others than those of the files before");
    const std::size_t recording = RecordingColumnOf(file);
    std::size_t rows = 0;
    for (std::size_t group = 0; group < file.Groups(); ++group)
      rows += AddGroup(file, group, recording, wanted);
    return rows;
  }

  void Finish() { writer_.Finish(); }

 private:
  std::size_t AddGroup(const parquet::Reader& file, std::size_t group, std::size_t recording,
                       const std::set<std::string>& recordings) {
    std::vector<parquet::ReadValues> columns;
    for (std::size_t i = 0; i < schema_.size(); ++i) columns.push_back(file.Read(group, i));
    std::vector<bool> isWanted;  // by number of the text
    for (const std::string& text : columns[recording].texts) isWanted.push_back(recordings.contains(text));
    std::vector<std::size_t> places(schema_.size());  // of the next value
    std::size_t rows = 0;
    for (std::size_t row = 0; row < file.RowsOf(group); ++row) {
      const bool wanted = isWanted[static_cast<std::size_t>(columns[recording].values[row])];
      for (std::size_t i = 0; i < schema_.size(); ++i) {
        if (wanted) feeds_[i](columns[i], row, places[i]);
        const auto& present = columns[i].present;
        places[i] += present.empty() || present[row] != 0;
      }
      if (wanted) writer_.EndRow();
      rows += wanted;
    }
    return rows;
  }

  parquet::Writer writer_;
  std::vector<parquet::ColumnSchema> schema_;
  std::vector<Feed> feeds_;
};

JoinedFile::JoinedFile() = default;
JoinedFile::~JoinedFile() = default;

void JoinedFile::Add(std::string_view file, const std::set<std::string>& others) {
  const parquet::Reader reader(file);
  std::set<std::string> recordings = RecordingsIn(file);
  std::erase_if(recordings,
                [&](const std::string& one) { return others.contains(one) || recordings_.contains(one); });
  if (!columns_) columns_ = std::make_unique<Columns>(reader, out_);
  rows_ += columns_->Add(reader, recordings);
  recordings_.merge(recordings);
}

std::string JoinedFile::Finish() {
  if (columns_) columns_->Finish();
  return std::move(out_);
}

}  // namespace fleet
