// Joins the files of each day of a dataset. docs/fleet.md, What a reader sees, has the steps.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <vector>

namespace cli {

class Compaction {
 public:
  // Waits for nobody: throws Failure when another one is at work on this dataset, or when it is none.
  explicit Compaction(const std::string& dataset);
  Compaction(const Compaction&) = delete;
  Compaction& operator=(const Compaction&) = delete;
  ~Compaction();

  // `progress` is told the share that is done. A day that cannot be joined stays as it is, and
  // `complain` is told why.
  void Run(const std::function<void(double)>& progress,
           const std::function<void(const std::string&)>& complain);

  std::uint64_t FilesBefore() const { return before_; }
  std::uint64_t FilesAfter() const { return after_; }
  std::uint64_t Days() const { return days_; }

 private:
  std::set<std::string> FinishLastOne(const std::function<void(const std::string&)>& complain) const;
  void Join(const std::string& day, const std::vector<std::string>& files);
  void PutInPlace(const std::string& day) const;
  void Fold(const std::string& from, const std::string& to) const;

  std::string dataset_;
  std::string work_;  // a hidden folder in the dataset, with folders of the same names
  int lock_;
  std::uint64_t before_ = 0;
  std::uint64_t after_ = 0;
  std::uint64_t days_ = 0;
};

}  // namespace cli
