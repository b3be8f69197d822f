"""What users do to a library: damaged files, odd names, things used after their end, many threads."""

import gc
import os
import sys
import threading
import time
import unittest
import warnings

import numpy as np
import tasklog
from support import Folder, pandas, run, saved


class Errors(Folder):
    def test_files_that_cannot_be_read(self):
        with open(saved("demo", 1), "rb") as file:
            whole = file.read()
        cases = {"cut": whole[: len(whole) // 2], "empty": b"", "other": b"x" * 5000}
        for name, content in cases.items():
            with open(name, "wb") as file:
                file.write(content)
            with self.subTest(name), self.assertRaises(tasklog.FileError) as raised:
                tasklog.read(name)
            self.assertEqual(raised.exception.status, 0x40CA0012)
            self.assertIn(f"reading '{name}': Not a valid TaskLog file", str(raised.exception))

    def test_one_broken_lane_keeps_no_other_from_being_read(self):
        os.mkdir("machine")
        os.rename(saved("demo", 1), "machine/a.tasklog")
        with open("machine/b.tasklog", "wb"):
            pass
        with tasklog.open("machine") as recording:
            self.assertGreater(len(recording["a"].entries()), 0)
            with self.assertRaises(tasklog.FileError):
                recording["b"]
            with self.assertRaises(tasklog.AnalysisError):
                recording["c"]

    def test_damaged_metadata_is_a_warning(self):
        path = saved("demo", 1)
        with open(path + ".json", "w", encoding="utf-8") as file:
            file.write("{")
        with self.assertWarnsRegex(tasklog.TasklogWarning, "not usable as metadata"):
            self.assertIsNone(tasklog.read(path).switches)

    def test_several_loggers_in_one_file_are_read_but_not_analysed(self):
        run("record", "demo", "--logger", "all", "--merge", "-o", "merged.tasklog", "--start")
        log = tasklog.read("merged.tasklog")
        self.assertGreater(len(log.entries()), 0)
        for method in (log.jobs, log.stats, log.explain):
            with self.assertRaisesRegex(tasklog.AnalysisError, "several loggers were merged"):
                method()

    def test_paths_that_are_no_text(self):
        path = os.fsencode(saved("demo", 1))
        os.rename(path, b"\xff.tasklog")
        self.assertGreater(len(tasklog.read(b"\xff.tasklog").entries()), 0)
        with self.assertRaises(ValueError):
            tasklog.read("a\0b")
        with self.assertRaisesRegex(tasklog.FileError, r"\\xFE"):
            tasklog.read(b"\xfe")

    def test_saving_fails_as_a_whole(self):
        log = tasklog.record("demo", 1)
        with self.assertRaises(tasklog.FileError):
            log.save("missing/machine.tasklog")
        self.assertEqual(os.listdir(), [])


class Names(Folder):
    def test_any_bytes(self):
        path = saved("demo", 1)
        os.remove(path + ".json")
        with open(path, "rb") as file:
            content = file.read()
        with open(path, "wb") as file:
            file.write(content.replace(b"PositionLoop", b"Posi\xff\xc3\xa9nLoop"))
        log = tasklog.read(path)
        (name,) = {name for name in log.names if name.startswith("Posi")}
        self.assertEqual(name.encode("utf-8", "surrogateescape"), b"Posi\xff\xc3\xa9nLoop")
        jobs = log.jobs().of(name)
        self.assertGreater(len(jobs), 0)
        self.assertEqual(len(log.latency(f"activation:{name}", f"completion:{name}")), jobs["response"].count())
        self.assertIn(name, [row.task for row in log.stats()])
        self.assertLessEqual({one["task"] for one in log.explain(task=name, over="1us", limit=5)}, {name})
        if pandas:
            self.assertIn(name, log.jobs().to_pandas()["task"].tolist())


class AfterTheEnd(Folder):
    def test_what_was_returned_outlives_the_log(self):
        with tasklog.read(saved("demo", 1)) as log:
            entries, jobs, part = log.entries(), log.jobs(), log.between("1ms")
            self.assertIs(log.entries(), entries)
            copy = np.array(entries), jobs["response"].copy()
        del log
        gc.collect()
        np.array([np.full(1 << 20, 7) for _ in range(8)])  # takes what was freed
        np.testing.assert_array_equal(np.array(entries), copy[0])
        np.testing.assert_array_equal(jobs["response"], copy[1])
        times = entries[entries["type"] == 6]["time"]
        self.assertGreater(len(part.entries()), len(times))

    def test_a_closed_log_says_so(self):
        log = tasklog.read(saved("demo", 1))
        log.close()
        log.close()
        for use in (log.entries, log.jobs, log.stats, lambda: log.idle, lambda: log.save("x")):
            with self.assertRaisesRegex(tasklog.ClosedError, "machine.tasklog: the log is closed"):
                use()
        recording = tasklog.open("machine.tasklog")
        recording.close()
        with self.assertRaises(tasklog.ClosedError):
            recording[0]

    def test_a_row_of_a_category_with_nothing(self):
        self.assertEqual(tasklog.read(saved("demo", 1)).entries()[:0].seconds().tolist(), [])
        with warnings.catch_warnings():
            warnings.simplefilter("ignore", tasklog.TasklogWarning)
            log = tasklog.record("faults/burst")
        self.assertEqual((len(log.entries()), len(log.jobs()), len(log.stats())), (0, 0, 0))
        with self.assertRaisesRegex(tasklog.AnalysisError, "no task 'x'"):
            log.jobs().of("x")


class Threads(Folder):
    def test_threads_share_a_log_while_one_closes_it(self):
        log = tasklog.read(saved("demo", 1))
        expected = log.stats().busy
        wrong, begin = [], threading.Barrier(5)

        def work():
            begin.wait()
            try:
                for _ in range(50):
                    if log.stats().busy != expected or len(log.jobs()) == 0:
                        wrong.append("other numbers")
            except tasklog.ClosedError:
                pass
            except Exception as error:  # pylint: disable=broad-except
                wrong.append(error)

        threads = [threading.Thread(target=work) for _ in range(4)]
        for thread in threads:
            thread.start()
        begin.wait()
        log.close()
        for thread in threads:
            thread.join()
        self.assertEqual(wrong, [])

    # Nobody is made to let go for a minute, so another thread counts only where a call lets it.
    def test_others_run_meanwhile(self):
        log = tasklog.read(saved("demo", 1))
        self.addCleanup(sys.setswitchinterval, sys.getswitchinterval())
        sys.setswitchinterval(60)
        for work in (log.stats, log.jobs, log.runs, log.explain, lambda: tasklog.read("machine.tasklog")):
            rounds, done = [0], []

            def count():
                while not done:
                    rounds[0] += 1
                    time.sleep(0)

            counter = threading.Thread(target=count)
            counter.start()
            before, tries = rounds[0], 0
            while rounds[0] == before and tries < 2000:  # the other one may be late, on a busy machine
                work()
                tries += 1
            done.append(True)
            counter.join()
            self.assertLess(tries, 2000)


if __name__ == "__main__":
    unittest.main()
