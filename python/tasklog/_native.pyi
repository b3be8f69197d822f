# The compiled module. It is for this package alone.
from typing import Any

import numpy as np

Array = np.ndarray[Any, Any]

version: str

class Source:
    name: str
    shown_as: str

class Lane:
    name: str
    shown_as: str
    start: int
    stop: int
    origin: int
    ticks_per_second: int
    coverage: float
    is_merged: bool
    idle: str
    switches: str
    def between(self, begin: str | None, end: str | None) -> Lane: ...
    def entries(self) -> Array: ...
    def runs(self) -> dict[str, Array]: ...
    def jobs(self) -> dict[str, Array]: ...
    def latencies(self, begin: str, end: str) -> dict[str, Any]: ...
    def gaps(self) -> dict[str, Array]: ...
    def subjects(self) -> list[tuple[str, int, int, int, int]]: ...
    def metadata_json(self) -> str: ...
    def stats_json(self) -> str: ...
    def explain_json(
        self,
        task: str | None,
        at: str | None,
        issue: str | None,
        over: str | None,
        limit: int,
        good: Lane | None,
    ) -> str: ...
    def save(self, path: bytes) -> str: ...

def find(path: bytes) -> tuple[list[Source], list[str]]: ...
def load(source: Source, idle: str | None, switches: str | None) -> tuple[Lane, list[str]]: ...
def record(
    target: bytes, loggers: list[str], start: bool, trigger: str, seconds: float, every: float
) -> tuple[list[Lane], list[str]]: ...
def json_name(name: str) -> str: ...
