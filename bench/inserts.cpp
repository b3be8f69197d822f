// What SQLite itself takes for the rows of an export: inserts them, one prepared statement a table, into the
// tables that an export makes, and makes the same indexes. Nothing is read, and nothing is analysed.
// usage: tasklog_bench_inserts DATABASE ENTRIES RUNS JOBS
#include <sqlite3.h>

#include <cstdint>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "exporters/sqliteschema.h"

namespace bench {
namespace {

void Check(sqlite3* database, int status) {
  if (status != SQLITE_OK && status != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(database));
}

// `columns` has a letter for each: t for a time, n for null, 0 for a small number.
void Insert(sqlite3* database, const std::string& table, std::uint64_t rows, const std::string& columns) {
  std::string sql = "INSERT INTO " + table + " VALUES(?";
  for (std::size_t i = 1; i < columns.size(); ++i) sql += ",?";
  sqlite3_stmt* statement = nullptr;
  Check(database, sqlite3_prepare_v2(database, (sql + ")").c_str(), -1, &statement, nullptr));
  for (std::uint64_t row = 0; row < rows; ++row) {
    int at = 0;
    for (const char column : columns) {
      const std::uint64_t value = column == 't' ? 1'000'000'000 + 300 * row : row % 64;
      column == 'n' ? sqlite3_bind_null(statement, ++at)
                    : sqlite3_bind_int64(statement, ++at, static_cast<sqlite3_int64>(value));
    }
    Check(database, sqlite3_step(statement));
    sqlite3_reset(statement);
  }
  sqlite3_finalize(statement);
}

void Run(char** arguments) {
  sqlite3* database = nullptr;
  Check(database, sqlite3_open(arguments[1], &database));
  const auto execute = [&](const char* sql) {
    Check(database, sqlite3_exec(database, sql, nullptr, nullptr, nullptr));
  };
  execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; BEGIN");
  execute(exporters::sqliteTables);
  Insert(database, "entries", std::stoull(arguments[2]), "0t00n0");
  Insert(database, "runs", std::stoull(arguments[3]), "00tt0");
  Insert(database, "jobs", std::stoull(arguments[4]), "0ttt00t000000");
  execute(exporters::sqliteViews);
  execute("COMMIT");
  Check(database, sqlite3_close(database));
}

}  // namespace
}  // namespace bench

int main(int count, char** arguments) try {
  if (count != 5) throw std::runtime_error("usage: tasklog_bench_inserts DATABASE ENTRIES RUNS JOBS");
  bench::Run(arguments);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 1;
}
