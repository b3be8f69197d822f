// Tables and views of an exported database. docs/export.md says what each column holds.
#pragma once

namespace exporters {

// Behind the rows comes what makes queries fast: an index built row by row costs several times as much.
inline constexpr char sqliteTables[] = R"(
CREATE TABLE lanes(lane INTEGER PRIMARY KEY, name TEXT, ticks_per_second INTEGER, start_ticks INTEGER,
  stop_ticks INTEGER, covered_ticks INTEGER, unknown_ticks INTEGER, idle_task INTEGER);
CREATE TABLE tasks(task INTEGER PRIMARY KEY, lane INTEGER, name TEXT, priority INTEGER, time_slice INTEGER);
CREATE TABLE marks(mark INTEGER PRIMARY KEY, lane INTEGER, kind TEXT, name TEXT, id INTEGER);
CREATE TABLE entries(lane INTEGER, ticks INTEGER, code INTEGER, task INTEGER, mark INTEGER, running INTEGER);
CREATE TABLE runs(lane INTEGER, task INTEGER, begin_ticks INTEGER, end_ticks INTEGER, cut INTEGER);
CREATE TABLE jobs(task INTEGER, activation_ticks INTEGER, start_ticks INTEGER, end_ticks INTEGER,
  execution_ticks INTEGER, waiting_ticks INTEGER, interval_ticks INTEGER, preemptions INTEGER, slices INTEGER,
  waits INTEGER, events INTEGER, asked_earlier INTEGER, cut INTEGER);
CREATE TABLE gaps(lane INTEGER, from_ticks INTEGER, to_ticks INTEGER);
)";

inline constexpr char sqliteViews[] = R"(
CREATE INDEX entries_by_time ON entries(lane, ticks);
CREATE INDEX runs_by_task ON runs(task, begin_ticks);
CREATE INDEX jobs_by_task ON jobs(task, activation_ticks);
CREATE VIEW load AS SELECT lanes.name AS lane, tasks.name AS task, priority,
    coalesce(sum(end_ticks - begin_ticks), 0) AS load_ticks,
    CAST(coalesce(sum(end_ticks - begin_ticks), 0) AS REAL) / nullif(covered_ticks - unknown_ticks, 0) AS load
  FROM tasks JOIN lanes USING (lane) LEFT JOIN runs USING (task)
  GROUP BY tasks.task ORDER BY lanes.lane, priority DESC, tasks.task;
CREATE VIEW responses AS WITH ranked AS (
    SELECT task, end_ticks - activation_ticks AS response,
      row_number() OVER (PARTITION BY task ORDER BY end_ticks - activation_ticks) AS rank,
      count(*) OVER (PARTITION BY task) AS jobs
    FROM jobs WHERE NOT cut)
  SELECT lanes.name AS lane, tasks.name AS task, priority, jobs, min(response) AS min, avg(response) AS mean,
    min(CASE WHEN rank * 100 >= jobs * 50 THEN response END) AS p50,
    min(CASE WHEN rank * 100 >= jobs * 95 THEN response END) AS p95,
    min(CASE WHEN rank * 100 >= jobs * 99 THEN response END) AS p99,
    min(CASE WHEN rank * 1000 >= jobs * 999 THEN response END) AS "p99.9",
    max(response) AS max
  FROM ranked JOIN tasks USING (task) JOIN lanes USING (lane)
  GROUP BY tasks.task ORDER BY lanes.lane, priority DESC, tasks.task;
)";

}  // namespace exporters
