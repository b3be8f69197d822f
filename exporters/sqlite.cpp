#include "sqlite.h"

#include <sqlite3.h>

#include <optional>
#include <stdexcept>

#include "analysis/walker.h"
#include "entries.h"
#include "sqliteschema.h"
#include "text.h"

namespace exporters {
namespace {

using analysis::TaskIndex;

// A number, or null.
struct Number {
  Number() = default;
  explicit Number(std::uint64_t number) : value(number), isKnown(true) {}

  std::uint64_t value = 0;
  bool isKnown = false;
};

struct Close {
  void operator()(sqlite3* database) const { sqlite3_close(database); }
  void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};

class Database {
 public:
  explicit Database(const std::string& path) {
    sqlite3* database = nullptr;
    const int status = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE, nullptr);
    database_.reset(database);
    Check(status);
    // Nobody sees the file before it is complete, so there is nothing to roll back to.
    Execute("PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; BEGIN");
  }

  void Execute(const char* sql) { Check(sqlite3_exec(Handle(), sql, nullptr, nullptr, nullptr)); }
  void Check(int status) const {
    if (status != SQLITE_OK && status != SQLITE_DONE)
      throw std::runtime_error(std::string("writing the database: ") + sqlite3_errmsg(database_.get()));
  }
  sqlite3* Handle() const { return database_.get(); }

 private:
  std::unique_ptr<sqlite3, Close> database_;
};

// Rows of one table.
class Table {
 public:
  Table(Database& database, const char* name, int columns) : database_(database) {
    std::string sql = std::string("INSERT INTO ") + name + " VALUES(?";
    for (int i = 1; i < columns; ++i) sql += ",?";
    sqlite3_stmt* statement = nullptr;
    database.Check(sqlite3_prepare_v2(database.Handle(), (sql + ")").c_str(), -1, &statement, nullptr));
    statement_.reset(statement);
  }

  template <class... Values>
  void Add(const Values&... values) {
    int column = 0;
    (Bind(++column, values), ...);
    database_.Check(sqlite3_step(statement_.get()));
    sqlite3_reset(statement_.get());
  }

 private:
  void Bind(int column, std::uint64_t value) {
    sqlite3_bind_int64(statement_.get(), column, static_cast<sqlite3_int64>(value));
  }
  void Bind(int column, const Number& value) {
    if (value.isKnown) Bind(column, value.value);
    if (!value.isKnown) sqlite3_bind_null(statement_.get(), column);
  }
  void Bind(int column, const std::string& text) {
    sqlite3_bind_text(statement_.get(), column, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
  }

  Database& database_;
  std::unique_ptr<sqlite3_stmt, Close> statement_;
};

// The statements, prepared once.
struct Tables {
  explicit Tables(Database& database)
      : lanes(database, "lanes", 8),
        tasks(database, "tasks", 5),
        marks(database, "marks", 5),
        entries(database, "entries", 6),
        runs(database, "runs", 5),
        jobs(database, "jobs", 13),
        gaps(database, "gaps", 3) {}

  Table lanes, tasks, marks, entries, runs, jobs, gaps;
};

// Adds one lane. Its tasks and marks have numbers that no other lane uses.
class LaneRows : public analysis::Visitor {
 public:
  LaneRows(const Source& source, std::uint64_t lane, std::uint64_t firstSubject, Tables& tables)
      : Visitor(wantsRuns | wantsJobs),
        source_(source),
        names_(source.lane.Names()),
        lane_(lane),
        first_(firstSubject),
        tables_(tables) {}

  void AddNames() {
    for (TaskIndex task = 0; task < names_.Tasks().size(); ++task) {
      const analysis::Task& of = names_.Tasks()[task];
      if (source_.Wants(task))
        tables_.tasks.Add(first_ + task, lane_, SafeText(of.name), std::uint64_t{of.priority},
                          static_cast<std::uint64_t>(std::int64_t{of.timeSlice}));
    }
    std::uint64_t number = first_ + names_.Tasks().size();
    for (const analysis::MarkSubject& mark : names_.MarkSubjects())
      tables_.marks.Add(number++, lane_, std::string(mark.kind == TLCatTestpoint ? "testpoint" : "issue"),
                        SafeText(mark.name), std::uint64_t{mark.id});
  }

  void AddEntries() {
    const auto onEntry = [&](const analysis::Cursor& cursor) {
      const analysis::SubjectIndex subject = cursor.Slot(0);
      const bool isTask = names_.IsTask(subject);
      tables_.entries.Add(lane_, cursor.Time(), std::uint64_t{cursor.Type()},
                          isTask ? NumberOf(subject) : Number(), isTask ? Number() : NumberOf(subject),
                          NumberOf(cursor.Slot(1)));
    };
    const auto onGap = [&](const analysis::Gap& gap) { tables_.gaps.Add(lane_, gap.from, gap.to); };
    ForEachEntry(source_, onEntry, onGap);
  }

  // Behind the walk: only then it is known for how long nobody was known to run.
  void AddLane() {
    const analysis::Lane& lane = source_.lane;
    const Number rate = lane.TicksPerSecond() == 0 ? Number() : Number(lane.TicksPerSecond());
    tables_.lanes.Add(lane_, SafeText(source_.name), rate, lane.StartTime(), lane.StopTime(),
                      lane.CoveredTicks(), unknown_, NumberOf(source_.conventions.idle));
  }

  void OnRun(const analysis::Run& run) override {
    if (run.task == analysis::noTask) unknown_ += run.Length();
    if (run.task == analysis::noTask || source_.Wants(run.task))
      tables_.runs.Add(lane_, NumberOf(run.task), run.begin, run.end, std::uint64_t{!run.IsWhole()});
  }

  void OnJob(const analysis::Job& job) override {
    if (!source_.Wants(job.task)) return;
    tables_.jobs.Add(NumberOf(job.task), job.activation, job.hasRun ? Number(job.start) : Number(), job.end,
                     job.execution, job.waiting, job.hasInterval ? Number(job.interval) : Number(),
                     std::uint64_t{job.preemptions}, std::uint64_t{job.slices}, std::uint64_t{job.waits},
                     std::uint64_t{job.events}, std::uint64_t{job.askedEarlier},
                     std::uint64_t{!job.IsWhole()});
  }

 private:
  Number NumberOf(analysis::SubjectIndex subject) const {
    return subject == analysis::noSubject ? Number() : Number(first_ + subject);
  }

  const Source& source_;
  const analysis::Subjects& names_;
  std::uint64_t lane_;
  std::uint64_t first_;
  Tables& tables_;
  std::uint64_t unknown_ = 0;
};

class Sqlite : public Exporter {
 public:
  explicit Sqlite(Files& files) : database_(files.Create("run.db")) {
    database_.Execute(sqliteTables);
    tables_.emplace(database_);
  }

  void Add(const Source& source) override {
    if (source.lane.StopTime() > INT64_MAX)
      throw std::runtime_error("'" + source.name + "'" +
                               ": its ticks are above 2^63, more than SQLite holds");
    LaneRows rows(source, ++lanes_, nextSubject_, *tables_);
    rows.AddNames();
    rows.AddEntries();
    analysis::Walk(source.lane, source.conventions, {&rows});
    rows.AddLane();
    nextSubject_ += source.lane.Names().Tasks().size() + source.lane.Names().MarkSubjects().size();
  }

  void End() override {
    tables_.reset();
    database_.Execute(sqliteViews);
    database_.Execute("COMMIT");
  }

 private:
  Database database_;
  std::optional<Tables> tables_;
  std::uint64_t lanes_ = 0;
  std::uint64_t nextSubject_ = 1;
};

}  // namespace

std::unique_ptr<Exporter> MakeSqlite(Files& files) { return std::make_unique<Sqlite>(files); }

}  // namespace exporters
