// What is measured, the library and the plain model, behind one face; that both come to the same is what
// fuzz/ tests. Every operation of the library goes through its exports.
#pragma once

#include <tasklog/tasklog.h>

#include <cstdint>
#include <memory>
#include <string>
#include <type_traits>

#include "support/plainlog.h"

namespace bench {

class Library {
 public:
  using Category = TLCategory;
  static constexpr char name[] = "tasklog";

  Library();
  void Acquire(std::int32_t kernel);
  void Load(const std::string& path);
  void Save(const std::string& path) const;
  std::uint64_t Count(Category category, std::uint64_t types, std::uint64_t from, std::uint64_t to) const {
    return TLTaskLogGetEntriesCount(log_.get(), category, types, from, to);
  }
  std::uint64_t SumOfTimes() const;  // of all entries
  std::uint64_t StartTime() const { return TLTaskLogGetStartTime(log_.get()); }
  std::uint64_t StopTime() const { return TLTaskLogGetStopTime(log_.get()); }
  Category CategoryNamed(const char* categoryName) const;

 private:
  struct Destroy {
    void operator()(TLTaskLog log) const { TLTaskLogDestroy(log); }
  };
  std::unique_ptr<std::remove_pointer_t<TLTaskLog>, Destroy> log_;
};

class Plain {
 public:
  using Category = const plain::Category*;
  static constexpr char name[] = "plain";

  void Acquire(std::int32_t kernel);
  void Load(const std::string& path);
  void Save(const std::string& path) const;
  std::uint64_t Count(Category category, std::uint64_t types, std::uint64_t from, std::uint64_t to) const {
    return log_.EntriesCount({category, types, from, to});
  }
  std::uint64_t SumOfTimes() const;
  std::uint64_t StartTime() const { return log_.startTime; }
  std::uint64_t StopTime() const { return log_.stopTime; }
  Category CategoryNamed(const char* categoryName) const;

 private:
  plain::Log log_;
};

}  // namespace bench
