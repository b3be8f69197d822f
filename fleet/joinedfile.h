// Files of a dataset joined into one, row by row.
#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace fleet {

// The recordings whose rows a file holds. Throws std::runtime_error.
std::set<std::string> RecordingsIn(std::string_view file);

class JoinedFile {
 public:
  JoinedFile();
  JoinedFile(const JoinedFile&) = delete;
  JoinedFile& operator=(const JoinedFile&) = delete;
  ~JoinedFile();

  // Throws std::runtime_error, also for a file of other columns than the first one. Rows of recordings that
  // are there already, or in `others`, are left out.
  void Add(std::string_view file, const std::set<std::string>& others);
  const std::set<std::string>& Recordings() const { return recordings_; }
  std::size_t Rows() const { return rows_; }
  // Behind the last file: the bytes of the joined one.
  std::string Finish();

 private:
  class Columns;

  std::string out_;
  std::unique_ptr<Columns> columns_;
  std::set<std::string> recordings_;
  std::size_t rows_ = 0;
};

}  // namespace fleet
