"""A log of one processor, and what it means."""

from __future__ import annotations

import json
import os
import warnings
import weakref
from typing import Any

from . import _native
from .errors import ClosedError, TasklogWarning
from .results import Explanation, Latencies, Stats
from .tables import KINDS, LENGTH, SUBJECT, TIME, Entries, Frame, Subject, Table, masked

#: A point of time: ticks as the controller counts them, or text such as ``"1.5s"``, from the start of the log.
Time = int | str

_RUNS = {"task": SUBJECT, "begin": TIME, "end": TIME}
_JOBS = {
    "task": SUBJECT,
    "activation": TIME,
    "start": TIME,
    "end": TIME,
    "response": LENGTH,
    "execution": LENGTH,
    "start_latency": LENGTH,
    "interval": LENGTH,
    "waiting": LENGTH,
    "activator": SUBJECT,
}
_GAPS = {"begin": TIME, "end": TIME, "length": LENGTH}


class Log:
    """The log of one processor in memory. Made by :func:`tasklog.read`, :func:`tasklog.record` and
    :func:`tasklog.open`.

    A log never changes, and threads may share one; long work lets other threads run. It holds 32 bytes an
    entry until it is garbage or :meth:`close` is called, also by ``with``. What its methods returned stays.

    Attributes: ``name`` of the lane, ``path`` as messages call it, ``start`` and ``stop`` in ticks,
    ``ticks_per_second`` (0: unknown), ``coverage`` (0 to 1, the share outside gaps), ``subjects`` and their
    ``names``, by number.
    """

    def __init__(self, lane: _native.Lane) -> None:
        self._lane: _native.Lane | None = lane
        self._entries: weakref.ref[Entries] | None = None
        self.name = lane.name
        self.path = lane.shown_as
        self.start = lane.start
        self.stop = lane.stop
        self.ticks_per_second = lane.ticks_per_second
        self.coverage = lane.coverage
        self.subjects = tuple(
            Subject(name, KINDS[kind], number, priority, time_slice)
            for name, kind, number, priority, time_slice in lane.subjects()
        )
        self.names = tuple(subject.name for subject in self.subjects)
        self._frame = Frame(lane.origin, self.ticks_per_second, self.subjects)

    def __repr__(self) -> str:
        state = " (closed)" if self._lane is None else ""
        return f"<tasklog.Log {self.path!r}: {self.start} to {self.stop} ticks{state}>"

    def __enter__(self) -> Log:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Lets the memory go, as soon as no other thread works on it. May be called twice."""
        self._lane = None

    def _open(self) -> _native.Lane:
        lane = self._lane
        if lane is None:
            raise ClosedError(f"{self.path}: the log is closed")
        return lane

    # ---- What is in it

    def entries(self) -> Entries:
        """Entries of types 0 to 7 in the order of time, as a structured array of shape (n,).

        Fields: ``time`` (ticks), ``type``, ``subject`` and ``running``; see :class:`tasklog.Entries`. The
        library keeps entries by address, so one pass fills the array; while you hold it, further calls
        return the same one.

        >>> entries = log.entries()
        >>> entries["time"].dtype
        dtype('uint64')
        >>> passed = entries[entries["type"] == 6][0]
        >>> log.subjects[passed["subject"]].kind, log.subjects[passed["running"]].kind
        ('testpoint', 'task')
        """
        lane = self._open()
        known = self._entries() if self._entries else None
        if known is None:
            known = lane.entries().view(Entries)
            known.frame = self._frame
            self._entries = weakref.ref(known)
        return known

    def runs(self) -> Table:
        """Who had the processor when: n rows in the order of time, with ``task`` (-1: nobody is known),
        ``begin`` and ``end`` in ticks, ``cut_begin`` and ``cut_end``.

        >>> runs = log.runs()
        >>> int(runs["begin"][0]) == log.start, int(runs["end"][-1]) == log.stop
        (True, True)
        """
        return Table(self._open().runs(), _RUNS, self._frame)

    def jobs(self) -> Table:
        """The jobs of all tasks, in the order of their ends.

        ============================= ====== ==========================================================
        ``task``                      int32  number of the task
        ``activation`` ``start``      uint64 times in ticks; no ``start`` where it did not run
        ``end``                       uint64 completion, or where it was cut; ticks
        ``response`` ``start_latency``  uint64 ticks; none of jobs that are cut
        ``execution`` ``waiting``     uint64 ticks; of jobs that are cut what was seen
        ``interval``                  uint64 ticks from the activation before; none behind the start or a gap
        ``preemptions`` ``slices``    uint32 how often it left the processor so; also ``waits``
        ``events``                    uint32 events for it while it was under way
        ``activator``                 int32  who ran at the event that began it; -1: nobody
        ``by_event``                  bool   begun by an event, otherwise by a switch
        ``asked_earlier``             bool   response and start latency are lower bounds
        ``cut_begin`` ``cut_end``     bool   touched by the start or stop, or by a gap
        ============================= ====== ==========================================================

        >>> jobs = log.jobs().of("PositionLoop")
        >>> jobs["response"].max() / log.ticks_per_second < 0.001
        True
        """
        columns = self._open().jobs()
        no_start, no_interval = columns.pop("no_start"), columns.pop("no_interval")
        cut = columns["cut_begin"] | columns["cut_end"]
        masks = {"start": no_start, "interval": no_interval, "response": cut, "start_latency": cut}
        for name, mask in masks.items():
            columns[name] = masked(columns[name], mask)
        return Table(columns, _JOBS, self._frame)

    def gaps(self) -> Table:
        """Where records were lost: ``begin`` and ``end`` in ticks, both still known."""
        columns = self._open().gaps()
        columns["length"] = columns["end"] - columns["begin"]
        return Table(columns, _GAPS, self._frame)

    # ---- What it means

    def stats(self) -> Stats:
        """Exact statistics, a row for each task: load, jobs, and of each quantity count, min, max, mean,
        stddev and percentiles.

        >>> stats = log.stats()
        >>> stats.names[stats["task"][0]], bool(stats["response_p99"][0] >= stats["response_p50"][0])
        ('PositionLoop', True)
        """
        return Stats(json.loads(self._open().stats_json())["lanes"][0], self._frame)

    def latency(self, begin: str, end: str) -> Latencies:
        """From each moment that ``begin`` names to the next that ``end`` names: ``testpoint:NAME``,
        ``issue:NAME``, ``event:TASK``, ``activation:TASK``, ``start:TASK`` or ``completion:TASK``.

        >>> latency = log.latency("activation:PositionLoop", "completion:PositionLoop")
        >>> latency.summary["count"] == len(latency)
        True
        """
        columns = self._open().latencies(begin, end)
        facts = json.loads(columns.pop("json"))["lanes"][0]
        columns["length"] = columns["end"] - columns["begin"]
        return Latencies(columns, facts, self._frame)

    def explain(
        self,
        task: str | None = None,
        at: Time | None = None,
        issue: str | None = None,
        over: str | None = None,
        against: Log | None = None,
        limit: int = 1 << 30,
    ) -> Explanation:
        """What was late, and why; the questions are those of ``tasklog explain``.

        ``over`` is a length such as ``"2ms"``, ``against`` a good log that says what is normal.

        >>> for finding in log.explain(task="Interpolator", over="700us", limit=1):
        ...     print(finding["verdict"])
        Interpolator ...
        """
        good = None if against is None else against._open()
        text = self._open().explain_json(task, _time(at), issue, over, limit, good)
        return Explanation(json.loads(text), self._frame)

    def between(self, begin: Time | None = None, end: Time | None = None) -> Log:
        """The part from ``begin`` to ``end``, both included, as a log that shares this one's memory.

        >>> part = log.between("100ms", "200ms")
        >>> (part.stop - part.start) / part.ticks_per_second
        0.1
        """
        return Log(self._open().between(_time(begin), _time(end)))

    # ---- Around it

    def seconds(self, times: Any) -> Any:
        """Times in ticks, one or an array, as float64 seconds from the start of the log."""
        return self._frame.since(times)

    @property
    def idle(self) -> str | None:
        """The idle task; None: there is none."""
        return self._open().idle or None

    @property
    def switches(self) -> str | None:
        """What the types of switches mean, such as ``"0=preempted,1=done"``; None: nothing is known."""
        return self._open().switches or None

    @property
    def metadata(self) -> dict[str, Any] | None:
        """What was noted beside the files: target, times, loggers (docs/recording.md); None: nothing."""
        text = self._open().metadata_json()
        metadata: dict[str, Any] | None = json.loads(text) if text else None
        return metadata

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes a TaskLog file, and beside it what is known beyond it (``PATH.json``); both complete or not
        at all. Of a part the whole log is written. Warns about what a file cannot carry.
        """
        lost = self._open().save(file_name(path))
        if lost:
            warnings.warn(f"{os.fspath(path)}: a TaskLog file cannot carry {lost}", TasklogWarning, 2)


def file_name(path: str | os.PathLike[str]) -> bytes:
    """A path as the system takes it."""
    name = os.fsencode(path)
    if b"\0" in name:
        raise ValueError("embedded null byte")
    return name


def _time(time: Time | None) -> str | None:
    return None if time is None else str(time)
