"""A recording: the logs of several loggers of one controller."""

from __future__ import annotations

import warnings
from collections.abc import Iterator

from . import _native
from .errors import AnalysisError, ClosedError, TasklogWarning
from .log import Log


class Recording:
    """The lanes of a recording, by name and in order. A lane is read when it is first used, and then kept.

    ``len()``, ``in``, iteration over logs, ``recording["kernel1"]`` and ``recording[0]``. A lane that cannot
    be read raises FileError when it is used, and keeps no other from being read. ``with`` or :meth:`close`
    lets all logs go.
    """

    def __init__(
        self, path: str, sources: list[_native.Source], idle: str | None = None, switches: str | None = None
    ) -> None:
        self.path = path
        self._sources = sources
        self._conventions = (idle, switches)
        self._logs: dict[int, Log] = {}
        self._names = [source.name for source in sources]
        self._closed = False

    @classmethod
    def of(cls, target: str, lanes: list[_native.Lane]) -> Recording:
        """Of logs that are in memory."""
        recording = cls(target, [])
        recording._logs = {place: Log(lane) for place, lane in enumerate(lanes)}
        recording._names = [lane.name for lane in lanes]
        return recording

    @property
    def names(self) -> list[str]:
        """The names of the lanes, such as ``kernel1``; two may be equal."""
        return list(self._names)

    def __repr__(self) -> str:
        return f"<tasklog.Recording {self.path!r}: {', '.join(self._names)}>"

    def __len__(self) -> int:
        return len(self._names)

    def __contains__(self, name: object) -> bool:
        return name in self._names

    def __iter__(self) -> Iterator[Log]:
        return (self._at(place) for place in range(len(self._names)))

    def __getitem__(self, lane: str | int) -> Log:
        if isinstance(lane, int):
            return self._at(range(len(self._names))[lane])
        if lane not in self._names:
            raise AnalysisError(f"{self.path} has no lane {lane!r}: it has {', '.join(self._names) or 'none'}")
        return self._at(self._names.index(lane))

    def __enter__(self) -> Recording:
        return self

    def __exit__(self, *_: object) -> None:
        self.close()

    def close(self) -> None:
        """Closes all logs of it. May be called twice."""
        self._closed = True
        while self._logs:
            self._logs.popitem()[1].close()

    def _at(self, place: int) -> Log:
        if self._closed:
            raise ClosedError(f"{self.path}: the recording is closed")
        log = self._logs.get(place)
        if log is None:
            lane, notes = _native.load(self._sources[place], *self._conventions)
            for note in notes:
                warnings.warn(note, TasklogWarning, stacklevel=3)
            # Of two threads that read a lane at once the first one's stays.
            log = self._logs.setdefault(place, Log(lane))
        return log
