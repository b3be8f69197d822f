#include "reader.h"

#include <algorithm>

#include "compressor.h"
#include "decodings.h"
#include "encodings.h"

namespace parquet {
namespace {

constexpr std::string_view magic = "PAR1";
constexpr std::size_t mostRows = std::size_t{1} << 24;     // of a row group; Writer makes far smaller ones
constexpr std::int64_t mostBytes = std::int64_t{1} << 30;  // of a page
enum Physical : std::int32_t { boolean, int32, int64, floating = 5, bytes };

ColumnSchema ReadSchema(ThriftReader& in) {
  ColumnSchema column;
  in.Struct([&](int id, int type) {
    switch (id) {
      case 1: column.physical = static_cast<std::int32_t>(in.Int()); break;
      case 3: column.mayBeNull = in.Int() == 1; break;
      case 4: column.name = in.Text(); break;
      case 6: column.converted = static_cast<std::int32_t>(in.Int()); break;
      default: in.Skip(type);
    }
  });
  return column;
}

std::vector<std::string> TextsOf(std::string_view page, std::size_t count) {
  std::vector<std::string> texts;
  for (std::size_t at = 0; texts.size() < count;) {
    const auto size = static_cast<std::size_t>(LittleEndianAt(page, at, 4));
    at += 4;
    if (size > page.size() - at) throw std::runtime_error("a text goes beyond its page");
    texts.emplace_back(page.substr(at, size));
    at += size;
  }
  return texts;
}

std::vector<std::uint64_t> PlainDoubles(std::string_view page, std::size_t count) {
  std::vector<std::uint64_t> values;
  for (std::size_t i = 0; i < count; ++i) values.push_back(LittleEndianAt(page, 8 * i, 8));
  return values;
}

std::vector<std::uint64_t> TextNumbers(std::string_view page, std::size_t count, std::size_t texts) {
  const auto width = static_cast<unsigned>(LittleEndianAt(page, 0, 1));
  std::vector<std::uint64_t> numbers = GetHybrid(page.substr(1), count, width);
  if (std::any_of(numbers.begin(), numbers.end(), [&](std::uint64_t number) { return number >= texts; }))
    throw std::runtime_error("a text is not in the dictionary");
  return numbers;
}

}  // namespace

struct Reader::Page {
  std::string bytes;
  std::size_t count = 0;
  std::uint64_t next = 0;
};

Reader::Reader(std::string_view file) : file_(file) {
  if (file.size() < 12 || !file.starts_with(magic) || !file.ends_with(magic))
    throw std::runtime_error("it is no Parquet file, or cut short");
  const std::uint64_t size = LittleEndianAt(file, file.size() - 8, 4);
  if (size > file.size() - 12) throw std::runtime_error("its footer is longer than the file");
  ThriftReader in(
      file.substr(file.size() - 8 - static_cast<std::size_t>(size), static_cast<std::size_t>(size)));
  const auto readPlace = [&](Place& place) {
    in.Struct([&](int id, int type) {
      if (id != 3) return in.Skip(type);
      in.Struct([&](int field, int of) {
        if (field == 9) return void(place.data = static_cast<std::uint64_t>(in.Int()));
        if (field == 11) return void(place.dictionary = static_cast<std::uint64_t>(in.Int()));
        in.Skip(of);
      });
    });
  };
  const auto readGroup = [&](Group& group) {
    in.Struct([&](int id, int type) {
      if (id == 1) return in.List([&](int) { readPlace(group.places.emplace_back()); });
      if (id == 3) return void(group.rows = static_cast<std::size_t>(in.Int()));
      in.Skip(type);
    });
  };
  in.Struct([&](int id, int type) {
    if (id == 2) return in.List([&](int) { columns_.push_back(ReadSchema(in)); });
    if (id == 4) return in.List([&](int) { readGroup(groups_.emplace_back()); });
    in.Skip(type);
  });
  if (!columns_.empty()) columns_.erase(columns_.begin());  // the root
  for (const Group& group : groups_)
    if (group.places.size() != columns_.size() || group.rows > mostRows)
      throw std::runtime_error("its row groups do not fit its columns");
}

Reader::Page Reader::PageAt(std::uint64_t at) const {
  if (at >= file_.size()) throw std::runtime_error("a page lies behind the end");
  ThriftReader in(file_.substr(static_cast<std::size_t>(at)));
  Page page;
  std::int64_t rawSize = 0, size = 0;
  in.Struct([&](int id, int type) {
    if (id == 2) return void(rawSize = in.Int());
    if (id == 3) return void(size = in.Int());
    if (id != 5 && id != 7) return in.Skip(type);
    in.Struct([&](int field, int of) {
      if (field == 1) return void(page.count = static_cast<std::size_t>(in.Int()));
      in.Skip(of);
    });
  });
  const std::uint64_t begin = at + in.Position();
  if (size < 0 || static_cast<std::uint64_t>(size) > file_.size() - begin || rawSize < 0 ||
      rawSize > mostBytes || page.count > mostRows)
    throw std::runtime_error("a page has a size that cannot be");
  page.bytes = Decompress(file_.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(size)),
                          static_cast<std::size_t>(rawSize));
  page.next = begin + static_cast<std::uint64_t>(size);
  return page;
}

ReadValues Reader::Read(std::size_t group, std::size_t column) const {
  const Place& place = groups_[group].places[column];
  const std::size_t rows = groups_[group].rows;
  ReadValues read;
  if (place.dictionary != 0) {
    const Page dictionary = PageAt(place.dictionary);
    read.texts = TextsOf(dictionary.bytes, dictionary.count);
  }
  const Page page = PageAt(place.data);
  if (page.count != rows) throw std::runtime_error("a page has not the rows of its group");
  std::string_view bytes = page.bytes;
  std::size_t count = rows;
  if (columns_[column].mayBeNull) {
    const auto size = static_cast<std::size_t>(LittleEndianAt(bytes, 0, 4));
    if (size > bytes.size() - 4) throw std::runtime_error("a page ends too early");
    read.present = GetHybrid(bytes.substr(4, size), rows, 1);
    bytes.remove_prefix(4 + size);
    count = static_cast<std::size_t>(std::count(read.present.begin(), read.present.end(), 1u));
    if (count == rows) read.present.clear();
  }
  if (count == 0) return read;
  switch (columns_[column].physical) {
    case boolean: GetBits(bytes, count, 1, read.values); break;
    case floating: read.values = PlainDoubles(bytes, count); break;
    case Physical::bytes: read.values = TextNumbers(bytes, count, read.texts.size()); break;
    case int32:
    case int64: read.values = GetDeltas(bytes, count); break;
    default: throw std::runtime_error("a column has a type that Writer does not write");
  }
  return read;
}

}  // namespace parquet
