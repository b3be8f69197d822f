"""The rows of bench/python: what the package takes for one file, in this process and, for memory, in fresh ones.

usage: python_rows.py FILE REPEATS
"""

import gc
import statistics
import subprocess
import sys
import time

import numpy
import pandas
import tasklog

# All switches back end a job, so there are as many jobs as there can be.
MEANINGS = "0=preempted,1=preempted,3=preempted,4=done,5=preempted"

PEAKS = {
    "the file in memory": "",
    "and its entries": "log.entries()",
    "and its jobs": "log.jobs()",
    "and its jobs as a data frame": "jobs = log.jobs(); jobs.to_pandas()",
    "and its statistics": "log.stats()",
}


def timed(work):
    """What came of it, its time on the clock, and that of the processor, all threads together."""
    gc.collect()
    clock, processor = time.perf_counter(), time.process_time()
    result = work()
    return result, time.perf_counter() - clock, time.process_time() - processor


def measure(path):
    """One run: seconds by name, on the clock and of the processor."""
    times = {}

    def take(name, work):
        result, *times[name] = timed(work)
        return result

    log = take("read", lambda: tasklog.read(path, switches=MEANINGS))
    entries = take("entries", log.entries)
    jobs = take("jobs", log.jobs)
    take("jobs to pandas", lambda: log.jobs().to_pandas())
    take("jobs to pandas, seconds", lambda: log.jobs().to_pandas(seconds=True))
    take("runs", log.runs)
    take("stats", log.stats)
    take("entries to pandas", entries.to_pandas)
    some = jobs.where(slice(0, 200_000))
    take("largest response, 200000 rows one by one", lambda: max(row.response or 0 for row in some))
    take("largest response, 200000 rows as a column", lambda: some["response"].max())
    ratios = [1 + times["entries"][side] / times["read"][side] for side in (0, 1)]
    return times, ratios, len(entries), len(jobs)


def peak(path, code):
    """Peak memory of a fresh process, in MB."""
    program = f"import tasklog, re\nlog = tasklog.read({path!r}, switches={MEANINGS!r})\nkept = [log]\n"
    program += f"{code}\nprint(re.search('VmHWM:[^0-9]*([0-9]+)', open('/proc/self/status').read())[1])"
    return float(subprocess.run([sys.executable, "-c", program], capture_output=True, check=True).stdout) / 1024


def main(path, repeats):
    print(f"Python {sys.version.split()[0]}, numpy {numpy.__version__}, pandas {pandas.__version__}")
    runs = [measure(path) for _ in range(int(repeats))]
    print(f"{runs[0][2]} entries, {runs[0][3]} jobs\n")
    print(f"{'':44}{'clock':>10}{'processor':>12}")
    for name in runs[0][0]:
        clock, processor = (statistics.median(run[0][name][side] for run in runs) for side in (0, 1))
        print(f"{name:44}{clock:10.4f}{processor:12.4f}  s")
    print()
    for side, name in enumerate(("on the clock", "of the processor")):
        ratios = sorted(run[1][side] for run in runs)
        middle = statistics.median(ratios)
        print(f"read and entries : read, {name:20}{middle:.3f} ({ratios[0]:.3f} to {ratios[-1]:.3f})")
    print()
    print("peak memory of a process")
    for name, code in PEAKS.items():
        print(f"{name:44}{peak(path, code):10.0f}  MB")


if __name__ == "__main__":
    main(*sys.argv[1:])
