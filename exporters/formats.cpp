// The formats that there are.
#include <algorithm>

#include "chrome.h"
#include "csv.h"
#include "ctf.h"
#include "ctfkernel.h"
#include "exporter.h"
#include "jsonl.h"
#include "parquet.h"
#include "perfetto.h"
#include "sqlite.h"

namespace exporters {

const std::vector<Format>& Formats() {
  using Kind = Format::Kind;
  static const std::vector<Format> formats = {
      {"csv", MakeCsv, Kind::stream},       {"jsonl", MakeJsonLines, Kind::stream},
      {"chrome", MakeChrome, Kind::stream}, {"perfetto", MakePerfetto, Kind::stream},
      {"ctf", MakeCtf, Kind::folder},       {"ctf-kernel", MakeCtfKernel, Kind::folder},
#ifdef TASKLOG_TABLES
      {"sqlite", MakeSqlite, Kind::file},   {"parquet", MakeParquet, Kind::folder},
#endif
  };
  return formats;
}

const Format* FindFormat(const std::string& name) {
  const std::vector<Format>& formats = Formats();
  const auto found =
      std::find_if(formats.begin(), formats.end(), [&](const Format& format) { return format.name == name; });
  return found == formats.end() ? nullptr : &*found;
}

}  // namespace exporters
