"""Columns first: results as numpy arrays of equal length, rows and data frames on request."""

from __future__ import annotations

import collections
from collections.abc import Callable, Iterator, Mapping
from typing import TYPE_CHECKING, Any, NamedTuple

import numpy as np

from .errors import AnalysisError

if TYPE_CHECKING:
    import pandas

Array = np.ndarray[Any, Any]

#: What a column holds: a time in ticks, a length in ticks, the number of a subject, or anything else.
TIME, LENGTH, SUBJECT, OTHER = "time", "length", "subject", "other"

KINDS = ("task", "testpoint", "issue")


class Subject(NamedTuple):
    """What entries are about: a task, a testpoint or a timing issue.

    ``priority`` and ``time_slice`` are those of tasks, ``id`` is the controller's.
    """

    name: str
    kind: str
    id: int
    priority: int
    time_slice: int


class Frame:
    """What numbers in a table mean: the clock that ticks and the names of subjects."""

    def __init__(self, start: int, ticks_per_second: int, subjects: tuple[Subject, ...]) -> None:
        self.start = start
        self.ticks_per_second = ticks_per_second
        self.subjects = subjects

    def rate(self) -> int:
        if self.ticks_per_second == 0:
            raise AnalysisError("the tick rate is unknown, so there are no seconds")
        return self.ticks_per_second

    def seconds(self, ticks: Any) -> Any:
        """Lengths in ticks as seconds."""
        return ticks / self.rate()

    def since(self, ticks: Any) -> Any:
        """Times in ticks as seconds from the start of the log; negative before it."""
        distance: Array = np.asarray(ticks, np.uint64) - np.asarray([self.start], np.uint64)
        seconds = distance.view(np.int64) / self.rate()
        return seconds if np.ndim(ticks) else float(seconds[0])

    def numbers(self, name: str, kind: str | None = None) -> list[int]:
        """The numbers of the subjects of this name; several may share one."""
        return [
            number
            for number, subject in enumerate(self.subjects)
            if subject.name == name and kind in (None, subject.kind)
        ]

    def categorical(self, numbers: Array) -> pandas.Categorical:
        """Numbers of subjects as their names; -1 is missing."""
        names = list(dict.fromkeys(subject.name for subject in self.subjects))
        codes = numbers
        if len(names) != len(self.subjects):
            place = {name: code for code, name in enumerate(names)}
            table = np.array([place[subject.name] for subject in self.subjects] + [-1], dtype=np.int32)
            codes = table[numbers]
        return load_pandas().Categorical.from_codes(codes, categories=names)


class Table:
    """Columns of equal length.

    ``table["response"]`` is a column, ``table.columns`` all of them in order. Where a column may lack values it
    is a ``numpy.ma`` array whose mask says where. A column of tasks holds numbers: ``table.names[number]`` is
    the name and -1 stands for nobody. Arrays own their memory: they outlive the log, and may be changed.

    Iteration gives named tuples, one row after the other; columns are a thousand times faster.
    """

    def __init__(self, columns: Mapping[str, Array], kinds: Mapping[str, str], frame: Frame) -> None:
        self.columns = dict(columns)
        self._kinds = dict(kinds)
        self._frame = frame

    @property
    def names(self) -> tuple[str, ...]:
        """The name of each subject, by its number."""
        return tuple(subject.name for subject in self._frame.subjects)

    def __len__(self) -> int:
        return len(next(iter(self.columns.values())))

    def __getitem__(self, column: str) -> Array:
        return self.columns[column]

    def __repr__(self) -> str:
        return f"<{type(self).__name__}: {len(self)} rows of {', '.join(self.columns)}>"

    def __iter__(self) -> Iterator[Any]:
        row = collections.namedtuple("Row", list(self.columns))  # type: ignore[misc]
        columns = [_plain(column, self._names(name)) for name, column in self.columns.items()]
        return map(row, *columns)

    def where(self, rows: Array) -> Table:
        """The rows that a mask or an array of places selects, as a table of the same columns (a copy)."""
        return Table({name: column[rows] for name, column in self.columns.items()}, self._kinds, self._frame)

    def of(self, task: str) -> Table:
        """The rows of one task, by its name; those of several tasks of that name together."""
        numbers = self._frame.numbers(task, "task")
        if not numbers:
            raise AnalysisError(f"there is no task {task!r}")
        return self.where(np.isin(self.columns["task"], numbers))

    def seconds(self, column: str) -> Array:
        """A column of ticks as float64 seconds: lengths as they are, times from the start of the log."""
        return self._seconds(column)

    def to_pandas(self, seconds: bool = False) -> pandas.DataFrame:
        """A ``pandas.DataFrame``, with names in place of numbers of subjects.

        ``seconds``: all ticks as seconds, times from the start of the log. Numeric columns are not copied.
        """
        pd = load_pandas()
        data = {name: self._for_pandas(name, column, seconds) for name, column in self.columns.items()}
        return pd.DataFrame(data, copy=False)

    def _names(self, column: str) -> tuple[str, ...] | None:
        return self.names if self._kinds.get(column) == SUBJECT else None

    def _seconds(self, column: str) -> Array:
        kind = self._kinds.get(column, OTHER)
        if kind not in (TIME, LENGTH):
            raise KeyError(f"{column} is no column of ticks")
        convert: Callable[[Any], Any] = self._frame.since if kind == TIME else self._frame.seconds
        values = self.columns[column]
        if isinstance(values, np.ma.MaskedArray):
            return masked(convert(values.data), values.mask)
        return np.asarray(convert(values))

    def _for_pandas(self, name: str, column: Array, seconds: bool) -> Any:
        kind = self._kinds.get(name, OTHER)
        if kind == SUBJECT:
            return self._frame.categorical(column)
        if seconds and kind in (TIME, LENGTH):
            column = self._seconds(name)
        return _nullable(column) if isinstance(column, np.ma.MaskedArray) else column


class Entries(np.ndarray[Any, Any]):
    """Entries of a log, in the order of time: a structured array.

    ======== ======== ==============================================================================
    field    dtype    what it holds
    ======== ======== ==============================================================================
    time     uint64   ticks
    type     uint16   0, 1, 3, 4, 5: a switch; 2: an event; 6: a testpoint; 7: a timing issue
    subject  int16    what the entry is about: a number for ``names``; -1: nothing
    running  int16    the task that ran until then (switches) or was running; -1: nobody is known
    ======== ======== ==============================================================================

    ``subject`` and ``running`` are int32 where the log has more than 32,767 names.
    A field of it is a plain array that shares its memory. The array owns its memory: it outlives the log.
    """

    frame: Frame

    def __array_finalize__(self, parent: Any) -> None:
        self.frame = getattr(parent, "frame", Frame(0, 0, ()))

    def __getitem__(self, key: Any) -> Any:
        item = super().__getitem__(key)
        if isinstance(item, Entries) and item.dtype.names is None:
            return item.view(np.ndarray)
        return item

    @property
    def names(self) -> tuple[str, ...]:
        """The name of each subject, by its number."""
        return tuple(subject.name for subject in self.frame.subjects)

    def seconds(self) -> Array:
        """The times as float64 seconds from the start of the log."""
        return np.asarray(self.frame.since(self["time"]))

    def to_pandas(self, seconds: bool = False) -> pandas.DataFrame:
        """A ``pandas.DataFrame`` with time, type as a word, code, subject and running as names."""
        pd = load_pandas()
        codes = np.asarray(self["type"])
        words = np.array([0, 0, 1, 0, 0, 0, 2, 3], dtype=np.int8)[codes]
        kinds = ["switch", "event", "testpoint", "issue"]
        data = {
            "time": self.seconds() if seconds else self["time"],
            "type": pd.Categorical.from_codes(words, categories=kinds),
            "code": codes,
            "subject": self.frame.categorical(self["subject"]),
            "running": self.frame.categorical(self["running"]),
        }
        return pd.DataFrame(data, copy=False)


def masked(values: Array, missing: Array) -> Array:
    """An array that lacks values."""
    return np.ma.MaskedArray(values, missing)  # type: ignore[no-untyped-call]


def _plain(column: Array, names: tuple[str, ...] | None) -> list[Any]:
    """A column as Python values: names for numbers of subjects, None for what is missing."""
    values: list[Any] = column.tolist()
    if names is None:
        return values
    return [names[value] if value >= 0 else None for value in values]


def _nullable(column: Any) -> Any:
    """A masked array as one of pandas that may lack values."""
    pd = load_pandas()
    array = pd.arrays.FloatingArray if column.dtype.kind == "f" else pd.arrays.IntegerArray
    return array(column.data, np.ma.getmaskarray(column), copy=False)  # type: ignore[no-untyped-call]


def load_pandas() -> Any:
    """The module pandas; says which package lacks."""
    try:
        import pandas
    except ImportError as missing:
        raise ImportError("toload_pandas() needs pandas (Debian: python3-pandas)") from missing
    return pandas
