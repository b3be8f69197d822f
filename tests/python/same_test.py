"""What the package says is what the command says."""

import unittest

import numpy as np
import tasklog
from support import Folder, command, pandas, saved

TARGETS = [("demo", 1, {}), ("overload", 1, {}), ("faults/overrun", "scheduler", {"start": True, "seconds": 1})]


def ticks(value):
    return None if value is None else int(value)


def plain(array):
    return array.tolist()


class SameAsTheCommand(Folder):
    def each(self):
        for target, logger, options in TARGETS:
            with self.subTest(target):
                path = saved(target, logger, **options)
                yield path, tasklog.read(path)

    def test_entries(self):
        for path, log in self.each():
            rows = command("list", path, "--format", "json")
            names = (*log.names, None)
            entries = log.entries()
            self.assertEqual(plain(entries["time"]), [int(row["ticks"]) for row in rows])
            self.assertEqual(plain(entries["type"]), [row["code"] for row in rows])
            for slot in ("subject", "running"):
                self.assertEqual([names[number] for number in entries[slot]], [row[slot] for row in rows])
            seconds = [row["seconds"] for row in rows]
            np.testing.assert_allclose(entries.seconds(), seconds, atol=1e-6)

    def test_stats(self):
        for path, log in self.each():
            (lane,) = command("stats", path, "--format", "json")["lanes"]
            stats = log.stats()
            self.assertEqual(stats.busy, lane["busy"])
            rows = {row.task: row for row in stats}
            self.assertEqual(len(rows), len(lane["tasks"]))
            for task in lane["tasks"]:
                row = rows[task["name"]]
                self.assertEqual(row.load_ticks, int(task["loadTicks"]))
                self.assertEqual(row.response_p99_9, ticks(task["response"]["p99.9"]))
                self.assertEqual(row.activation_interval_stddev, task["activationInterval"]["stddev"])

    # The columns of jobs and runs hold the values that statistics summarise.
    def test_columns_add_up_to_the_statistics(self):
        for path, log in self.each():
            jobs, runs, stats = log.jobs(), log.runs(), log.stats()
            runs = runs.where(runs["task"] >= 0)
            load = np.bincount(runs["task"], runs["end"] - runs["begin"], len(stats))
            self.assertEqual(load.tolist(), plain(stats["load_ticks"]))
            for row, task in zip(stats, stats["task"]):
                of = jobs.where(jobs["task"] == task)
                for column in ("response", "start_latency"):
                    self.assertEqual(of[column].count(), getattr(row, f"{column}_count"))
                    self.assertEqual(of[column].max() if row.jobs else None, getattr(row, f"{column}_max"))
                self.assertEqual(of["interval"].count(), row.activation_interval_count)
                self.assertEqual((of["cut_begin"] | of["cut_end"]).sum(), row.cut)

    def test_latency(self):
        path = saved("demo", 1)
        selectors = "activation:Interpolator", "completion:Interpolator"
        asked = command("latency", path, "--begin", selectors[0], "--end", selectors[1], "--format", "json")
        latency = tasklog.read(path).latency(*selectors)
        (lane,) = asked["lanes"]
        self.assertEqual(latency.unmatched, lane["unmatched"])
        self.assertEqual(latency.summary["p50"], int(lane["latency"]["p50"]))
        longest = max(range(len(latency)), key=lambda place: latency["length"][place])
        self.assertEqual(latency["begin"][longest], int(lane["worst"][0]["beginTicks"]))
        self.assertEqual(latency["length"][longest], int(lane["worst"][0]["latencyTicks"]))

    def test_explain(self):
        found = 0
        for path, log in self.each():
            asked = command("explain", path, "--limit", "100", "--format", "json")
            explanation = log.explain(limit=100)
            found += len(explanation)
            self.assertEqual([one["verdict"] for one in explanation], [one["verdict"] for one in asked["findings"]])
            for mine, theirs in zip(explanation, asked["findings"]):
                self.assertEqual(mine["root"]["task"], theirs["root"]["task"])
                self.assertEqual(mine["excessTicks"], int(theirs["excessTicks"]))
        self.assertGreater(found, 0)

    def test_a_part(self):
        path = saved("demo", 1)
        (lane,) = command("stats", path, "--from", "100ms", "--to", "250ms", "--format", "json")["lanes"]
        part = tasklog.read(path).between("100ms", "250ms")
        rows = command("list", path, "--from", "100ms", "--to", "250ms", "--format", "json")
        self.assertEqual(part.start, int(lane["startTicks"]))
        self.assertEqual(part.stats().busy, lane["busy"])
        self.assertEqual(plain(part.entries()["time"]), [int(row["ticks"]) for row in rows])

    def test_a_recording_with_gaps(self):
        with tasklog.record("faults/lost-records", logger=["scheduler"], start=True, seconds=1) as recording:
            gaps = recording["scheduler"].gaps()
            recording["scheduler"].save("scheduler.tasklog")
        self.assertGreater(len(gaps), 0)
        (lane,) = command("stats", "scheduler.tasklog", "--format", "json")["lanes"]
        again = tasklog.open(".")[0]
        self.assertEqual(plain(again.gaps()["begin"]), [int(gap["fromTicks"]) for gap in lane["gaps"]])
        self.assertEqual(again.coverage, lane["coverage"])
        self.assertEqual(plain(again.gaps()["end"]), plain(gaps["end"]))

    @unittest.skipUnless(pandas, "pandas is not there")
    def test_data_frames(self):
        log = tasklog.read(saved("demo", 1))
        jobs = log.jobs()
        frame = jobs.to_pandas()
        self.assertEqual(frame["response"].max(), jobs["response"].max())
        self.assertEqual(frame["response"].isna().sum(), np.ma.count_masked(jobs["response"]))
        self.assertEqual(frame["task"].tolist()[:3], [row.task for row in jobs][:3])
        seconds = jobs.to_pandas(seconds=True)
        self.assertAlmostEqual(seconds["response"].max(), jobs["response"].max() / log.ticks_per_second)
        self.assertLess(seconds["activation"].max(), 10)
        self.assertEqual(log.entries().to_pandas()["subject"].isna().sum(), (log.entries()["subject"] < 0).sum())
        for table in (log.runs(), log.stats(), log.gaps()):
            self.assertEqual(len(table.to_pandas(seconds=True)), len(table))


if __name__ == "__main__":
    unittest.main()
