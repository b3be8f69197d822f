// A folder of summaries: DATASET/day=2026-11-23/machine=press-7/IDENTITY.parquet, a file for each recording
// until `compact` joins them. Files never change: each is written beside its place and renamed, so any number
// of processes may write, and readers see whole files. docs/fleet.md, What a reader sees.
#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace cli {

struct Partition {
  std::string day;      // "2026-11-23"; empty: unknown
  std::string machine;  // any bytes; empty: unknown

  // "day=2026-11-23/machine=press-7"; what is not harmless in the name of a folder becomes %XX, as engines
  // expect it.
  std::string Folder() const;
  std::string DayFolder() const;  // "day=2026-11-23"
};

// What `compact` makes of the files of a day lies here.
inline constexpr const char* joinedFolder = "machine=joined";

// "2026-11-23", as it may stand in the name of a folder.
bool IsDay(std::string_view text);

std::string JoinedName(const std::set<std::string>& recordings);

// Files and folders below a folder, sorted; hidden ones are left out. Nothing where there is no such folder.
std::vector<std::string> NamesIn(const std::string& folder);
// Of those the ones that hold rows.
std::vector<std::string> TablesIn(const std::string& folder);

// Several threads may use it, and others at the same time: one thread of a process writes.
class Dataset {
 public:
  // Makes the folder if it is missing. Throws Failure.
  explicit Dataset(const std::string& path);

  // Whether the rows of this recording are in the partition.
  bool Has(const Partition& partition, const std::string& identity);
  // False when they have come there meanwhile. Throws Failure.
  bool Put(const Partition& partition, const std::string& identity, std::string_view rows);

 private:
  bool IsIn(const Partition& partition, const std::string& identity);
  const std::set<std::string>& RecordingsOf(const std::string& folder, const std::string& joined);

  std::string path_;
  std::map<std::string, std::set<std::string>> joined_;  // what joined files hold, by name
};

}  // namespace cli
