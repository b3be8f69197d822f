"""Task logs of real-time controllers, in columns.

>>> import tasklog
>>> log = tasklog.read("machine.tasklog")
>>> log.jobs().of("PositionLoop").to_pandas()  # doctest: +SKIP
>>> print(log.explain()[0]["verdict"])  # doctest: +SKIP

Times are uint64 ticks of the controller; ``seconds()`` and ``to_pandas(seconds=True)`` convert them. Names may
hold any bytes: what is no UTF-8 becomes a lone surrogate, ``name.encode("utf-8", "surrogateescape")`` gives
the bytes back. All that goes wrong is a :class:`tasklog.Error`.
"""

from __future__ import annotations

import os
import warnings
from collections.abc import Iterable

from . import _native
from .errors import AnalysisError, ClosedError, Error, FileError, TargetError, TasklogWarning, UsageError
from .log import Log, Time, file_name
from .recording import Recording
from .results import Explanation, Latencies, Stats
from .tables import Entries, Subject, Table

__version__ = _native.version
__all__ = [
    "AnalysisError",
    "ClosedError",
    "Entries",
    "Error",
    "Explanation",
    "FileError",
    "Latencies",
    "Log",
    "Recording",
    "Stats",
    "Subject",
    "Table",
    "TargetError",
    "TasklogWarning",
    "Time",
    "UsageError",
    "open",
    "read",
    "record",
]


def read(path: str | os.PathLike[str], *, idle: str | None = None, switches: str | None = None) -> Log:
    """Reads a TaskLog file into memory.

    ``idle`` names the idle task, ``switches`` says what the types of switches mean, as ``"sim"`` or
    ``"0=preempted,1=done"``; both are else taken from the metadata beside the file. A folder that holds a
    single lane is read, too; :func:`open` is for others. Raises FileError, UsageError, AnalysisError.

    >>> tasklog.read("missing.tasklog")
    Traceback (most recent call last):
    tasklog.errors.FileError: reading 'missing.tasklog': Error opening TaskLog file (No such file or directory)
    """
    sources, notes = _native.find(file_name(path))
    _warn(notes)
    if len(sources) != 1:
        lanes = ", ".join(source.name for source in sources)
        raise UsageError(f"{os.fspath(path)} holds {len(sources)} lanes ({lanes}): tasklog.open() reads them")
    lane, notes = _native.load(sources[0], idle, switches)
    _warn(notes)
    return Log(lane)


def open(path: str | os.PathLike[str], *, idle: str | None = None, switches: str | None = None) -> Recording:
    """Opens a recording: a folder with a lane for each logger, or a file. Lanes are read when they are used.

    >>> with tasklog.open("machine") as recording:
    ...     for log in recording:
    ...         print(log.name, len(log.gaps()))
    kernel1 0
    """
    sources, notes = _native.find(file_name(path))
    _warn(notes)
    return Recording(os.fspath(path), sources, idle, switches)


def record(
    target: str,
    logger: int | str | Iterable[int | str] = "scheduler",
    *,
    start: bool = False,
    trigger: str = "",
    seconds: float = 0,
    every: float = 0.2,
) -> Log | Recording:
    """Reads a logger of a controller into memory: once, or every ``every`` seconds for ``seconds``.

    ``logger`` is ``"scheduler"`` or the number of a kernel, which give a :class:`Log`; ``"all"`` or several
    give a :class:`Recording`. ``start`` starts the loggers first, by ``trigger`` where it is given. Ctrl-C
    ends it without a result. Raises TargetError, UsageError.

    >>> log = tasklog.record("demo", logger=1, start=True, seconds=0.3)
    >>> log.save("machine.tasklog")
    """
    several = not isinstance(logger, (int, str)) or logger == "all"
    asked = [logger] if isinstance(logger, (int, str)) else list(logger)
    if not 0 <= seconds < 1e9 or not 0.001 <= every < 1e9:
        raise UsageError("seconds and every are lengths of time in seconds; every is at least 0.001")
    lanes, notes = _native.record(
        target.encode("utf-8", "surrogateescape"), [str(one) for one in asked], start, trigger, seconds, every
    )
    _warn(notes)
    return Recording.of(target, lanes) if several else Log(lanes[0])


def _warn(notes: list[str]) -> None:
    for note in notes:
        warnings.warn(note, TasklogWarning, stacklevel=3)
