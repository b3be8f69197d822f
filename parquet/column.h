// The values of one column, from row to row, until a row group takes them.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "encodings.h"

namespace parquet {

enum class Nulls : std::uint8_t { never, allowed };

// What the format calls a type: of bytes, and what they mean.
struct Type {
  std::int32_t physical;
  std::int32_t converted;  // -1: none
  std::int8_t bits;        // of an integer whose meaning is told; else 0
  bool isSigned;
};

// The values of a row group, encoded. One object serves many of them: its texts keep their memory.
struct Chunk {
  std::size_t rows = 0;
  std::size_t nulls = 0;
  std::string dictionary = {};
  std::size_t dictionarySize = 0;  // 0: none
  std::string page = {};
  Encoding encoding = Encoding::plain;
  // Of the values, as the format compares them; empty where all are null or cannot be compared.
  std::optional<std::string> least = {};
  std::optional<std::string> largest = {};
};

class Column {
 public:
  Column(std::string name, Nulls nulls) : name_(std::move(name)), nulls_(nulls) {}
  Column(const Column&) = delete;
  Column& operator=(const Column&) = delete;
  virtual ~Column() = default;

  void AddNull() { nullRows_.push_back(Rows()); }

  const std::string& Name() const { return name_; }
  bool MayBeNull() const { return nulls_ == Nulls::allowed; }
  std::size_t Rows() const { return ValueCount() + nullRows_.size(); }
  bool HasForbiddenNulls() const { return !MayBeNull() && !nullRows_.empty(); }
  virtual Type TypeOf() const = 0;
  // Encodes what was added, and forgets it.
  void Take(Chunk& chunk);

 protected:
  virtual std::size_t ValueCount() const = 0;
  // Appends the values to the page, sets all but the counts, and forgets the values.
  virtual void TakeValues(Chunk& chunk) = 0;

 private:
  void PutLevels(std::string& page) const;

  std::string name_;
  Nulls nulls_;
  std::vector<std::size_t> nullRows_;
};

// Integers: std::int32_t, std::uint32_t, std::int64_t or std::uint64_t.
template <class Integer>
class IntegerColumn : public Column {
 public:
  using Column::Column;

  void Add(Integer value) { values_.push_back(static_cast<Unsigned>(value)); }
  void Add(const std::optional<Integer>& value) { value ? Add(*value) : AddNull(); }

  Type TypeOf() const override;

 protected:
  std::size_t ValueCount() const override { return values_.size(); }
  void TakeValues(Chunk& chunk) override;

 private:
  using Unsigned = std::make_unsigned_t<Integer>;
  std::vector<Unsigned> values_;
};

using Int32Column = IntegerColumn<std::int32_t>;
using Uint32Column = IntegerColumn<std::uint32_t>;
using Int64Column = IntegerColumn<std::int64_t>;
using Uint64Column = IntegerColumn<std::uint64_t>;

class DoubleColumn : public Column {
 public:
  using Column::Column;

  void Add(double value) { values_.push_back(value); }
  void Add(const std::optional<double>& value) { value ? Add(*value) : AddNull(); }

  Type TypeOf() const override;

 protected:
  std::size_t ValueCount() const override { return values_.size(); }
  void TakeValues(Chunk& chunk) override;

 private:
  std::vector<double> values_;
};

class BoolColumn : public Column {
 public:
  using Column::Column;

  void Add(bool value) { values_.push_back(value); }
  void Add(const std::optional<bool>& value) { value ? Add(*value) : AddNull(); }

  Type TypeOf() const override;

 protected:
  std::size_t ValueCount() const override { return values_.size(); }
  void TakeValues(Chunk& chunk) override;

 private:
  std::vector<std::uint8_t> values_;
};

class TextColumn;

// A text that many rows of one column share: it is not looked up again for each of them.
struct Label {
  std::string text;
  const TextColumn* column = nullptr;  // and the row group in which `number` holds
  std::uint64_t group = 0;
  std::uint32_t number = 0;
};

// Texts are UTF-8, which is up to the caller. A row group holds each of them once.
class TextColumn : public Column {
 public:
  // `held` grows by the bytes of each new text.
  TextColumn(std::string name, Nulls nulls, std::size_t& held)
      : Column(std::move(name), nulls), held_(held) {}

  void Add(std::string_view text) { numbers_.push_back(NumberOf(text)); }
  void Add(Label& label) {
    if (label.group != group_ || label.column != this) Enter(label);
    numbers_.push_back(label.number);
  }

  Type TypeOf() const override;

 protected:
  std::size_t ValueCount() const override { return numbers_.size(); }
  void TakeValues(Chunk& chunk) override;

 private:
  std::uint32_t NumberOf(std::string_view text);
  void Enter(Label& label);

  std::size_t& held_;
  std::uint64_t group_ = 0;
  std::unordered_map<std::string, std::uint32_t> known_;  // in this row group
  std::vector<const std::string*> texts_;                 // by number
  std::vector<std::uint32_t> numbers_;
};

}  // namespace parquet
