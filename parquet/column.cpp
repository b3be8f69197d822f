#include "column.h"

#include <cmath>
#include <utility>

namespace parquet {
namespace {

enum Physical : std::int32_t { boolean, int32, int64, floating = 5, bytes };
constexpr std::int32_t utf8 = 0;
constexpr std::int32_t noMeaning = -1;
// A text that is longer has no place in statistics, which all readers of a file load first.
constexpr std::size_t longestStatistic = 128;

template <class Integer>
std::string LittleEndian(Integer value) {
  std::string text;
  PutLittleEndian(text, value);
  return text;
}

// The number of converted type: unsigned ones of 8 to 64 bits, then signed ones.
template <class Integer>
constexpr std::int32_t convertedTypeOf = 13 + (sizeof(Integer) == 8) + (std::is_signed_v<Integer> ? 4 : 0);

}  // namespace

void Column::Take(Chunk& chunk) {
  chunk.rows = Rows();
  chunk.nulls = nullRows_.size();
  chunk.dictionary.clear();
  chunk.dictionarySize = 0;
  chunk.page.clear();
  chunk.encoding = Encoding::plain;
  chunk.least.reset();
  chunk.largest.reset();
  if (MayBeNull()) PutLevels(chunk.page);
  if (ValueCount() > 0) TakeValues(chunk);
  nullRows_.clear();
}

// 1 for a value, 0 for none. Their length in bytes comes first.
void Column::PutLevels(std::string& page) const {
  std::vector<std::uint8_t> present(Rows(), 1);
  for (const std::size_t row : nullRows_) present[row] = 0;
  std::string levels;
  Hybrid<std::uint8_t> hybrid(levels, 1);
  nullRows_.empty() ? hybrid.PutRun(1, Rows()) : hybrid.Put(present);
  PutLittleEndian(page, static_cast<std::uint32_t>(levels.size()));
  page += levels;
}

template <class Integer>
Type IntegerColumn<Integer>::TypeOf() const {
  return {sizeof(Integer) == 8 ? int64 : int32, convertedTypeOf<Integer>, 8 * sizeof(Integer),
          std::is_signed_v<Integer>};
}

template <class Integer>
void IntegerColumn<Integer>::TakeValues(Chunk& chunk) {
  Integer least = static_cast<Integer>(values_.front()), largest = least;
  for (const Unsigned value : values_) {
    least = std::min(least, static_cast<Integer>(value));
    largest = std::max(largest, static_cast<Integer>(value));
  }
  chunk.least = LittleEndian(static_cast<Unsigned>(least));
  chunk.largest = LittleEndian(static_cast<Unsigned>(largest));
  chunk.encoding = Encoding::deltas;
  Deltas<Unsigned> deltas(chunk.page);
  least == largest ? deltas.PutEqual(values_.front(), values_.size()) : deltas.Put(values_);
  values_.clear();
}

template class IntegerColumn<std::int32_t>;
template class IntegerColumn<std::uint32_t>;
template class IntegerColumn<std::int64_t>;
template class IntegerColumn<std::uint64_t>;

Type DoubleColumn::TypeOf() const { return {floating, noMeaning, 0, false}; }

void DoubleColumn::TakeValues(Chunk& chunk) {
  const auto isNan = [](double value) { return std::isnan(value); };
  if (std::none_of(values_.begin(), values_.end(), isNan)) {
    const auto [least, largest] = std::minmax_element(values_.begin(), values_.end());
    // A zero of either sign may stand for both.
    chunk.least = LittleEndian(std::bit_cast<std::uint64_t>(*least == 0 ? -0.0 : *least));
    chunk.largest = LittleEndian(std::bit_cast<std::uint64_t>(*largest == 0 ? 0.0 : *largest));
  }
  for (const double value : values_) PutLittleEndian(chunk.page, std::bit_cast<std::uint64_t>(value));
  values_.clear();
}

Type BoolColumn::TypeOf() const { return {boolean, noMeaning, 0, false}; }

void BoolColumn::TakeValues(Chunk& chunk) {
  const auto [least, largest] = std::minmax_element(values_.begin(), values_.end());
  chunk.least = LittleEndian(*least);
  chunk.largest = LittleEndian(*largest);
  PutBits<std::uint8_t>(chunk.page, values_, 1);
  values_.clear();
}

Type TextColumn::TypeOf() const { return {bytes, utf8, 0, false}; }

std::uint32_t TextColumn::NumberOf(std::string_view text) {
  const auto [place, isNew] =
      known_.try_emplace(std::string(text), static_cast<std::uint32_t>(texts_.size()));
  if (isNew) {
    texts_.push_back(&place->first);
    held_ += text.size();
  }
  return place->second;
}

void TextColumn::Enter(Label& label) {
  label.number = NumberOf(label.text);
  label.column = this;
  label.group = group_;
}

void TextColumn::TakeValues(Chunk& chunk) {
  const auto isBefore = [](const std::string* a, const std::string* b) { return *a < *b; };
  const auto [least, largest] = std::minmax_element(texts_.begin(), texts_.end(), isBefore);
  if ((*least)->size() <= longestStatistic) chunk.least = **least;
  if ((*largest)->size() <= longestStatistic) chunk.largest = **largest;
  for (const std::string* text : texts_) {
    PutLittleEndian(chunk.dictionary, static_cast<std::uint32_t>(text->size()));
    chunk.dictionary += *text;
  }
  chunk.dictionarySize = texts_.size();
  chunk.encoding = Encoding::dictionary;
  // The width comes first. There are readers that do not expect 0.
  const auto width = std::max(1u, static_cast<unsigned>(std::bit_width(texts_.size() - 1)));
  chunk.page += static_cast<char>(width);
  Hybrid<std::uint32_t>(chunk.page, width).Put(numbers_);
  known_.clear();
  texts_.clear();
  numbers_.clear();
  ++group_;
}

}  // namespace parquet
