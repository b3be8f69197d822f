"""What analyses say, made from the JSON that the command prints: docs/json.md has its keys."""

from __future__ import annotations

import json
import re
from collections.abc import Iterator
from typing import TYPE_CHECKING, Any

import numpy as np

from . import _native
from .tables import LENGTH, SUBJECT, TIME, Array, Frame, Subject, Table, load_pandas, masked

if TYPE_CHECKING:
    import pandas

_SPANS = {"begin": TIME, "end": TIME, "length": LENGTH}


class Stats(Table):
    """Statistics of a log: a row for each task, columns as in the CSV of ``tasklog stats``, in ticks.

    ``busy``, ``switches``, ``unknown_ticks`` and the like are those of the whole log, in ``log_facts``.
    """

    def __init__(self, facts: dict[str, Any], frame: Frame) -> None:
        rows = [_flat(task) for task in facts.pop("tasks")]
        self.log_facts = _flat(facts)
        columns: dict[str, Array] = {"task": np.arange(len(rows), dtype=np.int32)}
        kinds = {"task": SUBJECT}
        for name in rows[0] if rows else _flat(_NO_TASK):
            if name == "name":
                continue
            columns[name] = _column(name, [row[name] for row in rows])
            kinds[name] = _kind(name)
        super().__init__(columns, kinds, frame)

    @property
    def busy(self) -> float | None:
        """1 minus the load of the idle task; None: there is none."""
        busy: float | None = self.log_facts["busy"]
        return busy


class Latencies(Table):
    """Latencies in the order of time: ``begin``, ``end`` and ``length`` in ticks.

    ``unmatched`` counts begins without an end; ``summary`` has the statistics, ``histogram`` its bins.
    """

    def __init__(self, columns: dict[str, Array], facts: dict[str, Any], frame: Frame) -> None:
        super().__init__(columns, _SPANS, frame)
        self.unmatched: int = facts["unmatched"]
        self.summary: dict[str, Any] = {_snake(key): _number(value) for key, value in facts["latency"].items()}
        self.histogram: list[dict[str, Any]] = [
            {_snake(key): _number(value) for key, value in one.items()} for one in facts["histogram"]["bins"]
        ]


class Explanation:
    """Findings, what the controller itself complains about first.

    Each is a dictionary as ``tasklog explain --format json`` prints it (docs/json.md): ``verdict`` says it in
    a sentence, ``root`` is the cause, ``chain`` the way to it. Ticks are numbers.
    """

    def __init__(self, facts: dict[str, Any], frame: Frame) -> None:
        facts = _with_names(facts, frame.subjects)
        lane = facts["lanes"][0]
        self.findings: list[dict[str, Any]] = _ticks(facts["findings"])
        self.tasks: int = lane["tasks"]
        self.jobs: int = lane["jobs"]
        self._frame = frame

    def __len__(self) -> int:
        return len(self.findings)

    def __iter__(self) -> Iterator[dict[str, Any]]:
        return iter(self.findings)

    def __getitem__(self, place: int) -> dict[str, Any]:
        return self.findings[place]

    def to_pandas(self, seconds: bool = False) -> pandas.DataFrame:
        """A row for each finding: who was late, how much, by which root, in a sentence."""
        columns = {
            "task": [one["task"] for one in self.findings],
            "sign": [one["sign"] for one in self.findings],
            "activation": self._times([one["job"]["activationTicks"] for one in self.findings], seconds),
            "excess": self._lengths([one["excessTicks"] for one in self.findings], seconds),
            "occurrences": [len(one["occurrences"]) for one in self.findings],
            "root_kind": [one["root"]["kind"] for one in self.findings],
            "root_task": [one["root"]["task"] for one in self.findings],
            "confidence": [one["confidence"] for one in self.findings],
            "verdict": [one["verdict"] for one in self.findings],
        }
        return load_pandas().DataFrame(columns)

    def _times(self, ticks: list[int], seconds: bool) -> Array:
        array = np.array(ticks, dtype=np.uint64)
        return np.asarray(self._frame.since(array)) if seconds else array

    def _lengths(self, ticks: list[int], seconds: bool) -> Array:
        array = np.array(ticks, dtype=np.uint64)
        return np.asarray(self._frame.seconds(array)) if seconds else array


def _snake(key: str) -> str:
    return re.sub("([A-Z])", r"_\1", key).lower().replace(".", "_")


_TICKS = re.compile("[0-9]+")


def _number(value: Any) -> Any:
    """JSON has ticks as strings of digits."""
    return int(value) if isinstance(value, str) and _TICKS.fullmatch(value) else value


def _ticks(value: Any, key: str = "") -> Any:
    """The same within lists and dictionaries, where the key says that it is ticks; names may be digits."""
    if isinstance(value, dict):
        return {name: _ticks(one, name) for name, one in value.items()}
    if isinstance(value, list):
        return [_ticks(one, key) for one in value]
    return _number(value) if key.endswith("Ticks") or key in ("from", "to", "at", "since") else value


def _flat(facts: dict[str, Any]) -> dict[str, Any]:
    """{"runTime": {"max": "5"}} as {"run_time_max": 5}."""
    flat: dict[str, Any] = {}
    for key, value in facts.items():
        if isinstance(value, dict):
            flat.update({f"{_snake(key)}_{_snake(name)}": _number(one) for name, one in value.items()})
        else:
            flat[_snake(key)] = _ticks(value, key)
    return flat


def _column(name: str, values: list[Any]) -> Array:
    is_float = name == "load" or name.endswith(("_mean", "_stddev"))
    array = np.array([0 if value is None else value for value in values], np.float64 if is_float else np.uint64)
    may_miss = is_float or _kind(name) != "" and name != "load_ticks"
    return masked(array, np.array([value is None for value in values], bool)) if may_miss else array


def _kind(name: str) -> str:
    if name.endswith("_max_at_ticks"):
        return TIME
    return LENGTH if name.endswith(("_ticks", "_min", "_max", "_mean", "_stddev")) or "_p" in name else ""


# What a log without tasks has no row of.
_NO_TASK: dict[str, Any] = {"priority": None, "load_ticks": None, "load": None, "jobs": None, "cut": None}


def _with_names(facts: Any, subjects: tuple[Subject, ...]) -> Any:
    """JSON shows a byte that is no UTF-8 as U+00NN; the names of the log in its place, where that is clear."""
    names = {subject.name for subject in subjects}
    broken = {json.loads(_native.json_name(name)): name for name in names if not name.isprintable()}
    known = {shown: name for shown, name in broken.items() if shown != name and shown not in names}
    return _renamed(facts, known) if known else facts


def _renamed(value: Any, names: dict[str, str], key: str = "") -> Any:
    if isinstance(value, dict):
        return {one: _renamed(inner, names, one) for one, inner in value.items()}
    if isinstance(value, list):
        return [_renamed(inner, names) for inner in value]
    return names.get(value, value) if key in ("task", "issue") and isinstance(value, str) else value
