"""Many recordings as one dataset of Parquet files, which engines ask (docs/fleet.md)."""

from __future__ import annotations

import concurrent.futures
import os
from collections.abc import Iterable, Iterator
from dataclasses import dataclass, field
from typing import Any

from . import _native
from .errors import Error
from .log import file_name

__all__ = ["Summary", "summarize"]

#: Recordings of one task of a cluster: what a killed worker had under way is at most this much to do again.
BATCH = 16


@dataclass
class Summary:
    """What came of the recordings: how many were ``added``, were ``known`` already, are ``broken`` (and have rows
    that say so); ``failed`` has the path and the message of each that could not be read at all. ``entries`` of
    those that were added.
    """

    added: int = 0
    known: int = 0
    broken: int = 0
    entries: int = 0
    failed: list[tuple[str, str]] = field(default_factory=list)

    def add(self, other: Summary) -> None:
        self.added += other.added
        self.known += other.known
        self.broken += other.broken
        self.entries += other.entries
        self.failed += other.failed


def summarize(
    paths: Iterable[str | os.PathLike[str]],
    dataset: str | os.PathLike[str],
    client: Any = None,
    *,
    machine: str | None = None,
    day: str | None = None,
    idle: str | None = None,
    switches: str | None = None,
) -> Summary:
    """Adds statistics and findings of recordings to a dataset, as ``tasklog summarize`` does.

    ``paths`` are TaskLog files or folders of recordings. ``client`` is a ``distributed.Client`` of Dask: its
    workers share the work, and must see the same paths; what a worker that dies had under way is done again by
    others, and is added once all the same. Without a client the cores of this computer share it. ``machine`` and
    ``day`` (such as ``"2026-11-23"``) are else what the recordings say.

    >>> from tasklog import fleet
    >>> fleet.summarize(["machine.tasklog"], "dataset").added
    1
    >>> fleet.summarize(["machine.tasklog"], "dataset").known
    1
    """
    # Workers have a current folder of their own.
    asked = [os.path.abspath(os.fspath(path)) if client else os.fspath(path) for path in paths]
    place = os.path.abspath(os.fspath(dataset)) if client else os.fspath(dataset)
    options = (place, machine, day, idle, switches)
    total = Summary()
    for part in _on_cluster(client, asked, options) if client else _here(asked, options):
        total.add(part)
    return total


_Options = tuple[str, str | None, str | None, str | None, str | None]


def _here(paths: list[str], options: _Options) -> Iterator[Summary]:
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        yield from pool.map(lambda path: _summarize([path], *options), paths)


def _on_cluster(client: Any, paths: list[str], options: _Options) -> Iterator[Summary]:
    batches = [paths[at : at + BATCH] for at in range(0, len(paths), BATCH)]
    futures = [client.submit(_summarize, batch, *options, pure=False) for batch in batches]
    for future in futures:
        yield future.result()


def _summarize(
    paths: list[str], dataset: str, machine: str | None, day: str | None, idle: str | None, switches: str | None
) -> Summary:
    summary = Summary()
    for path in paths:
        try:
            outcome, entries = _native.summarize(file_name(path), file_name(dataset), machine, day, idle, switches)
        except Error as error:
            summary.failed.append((path, str(error)))
            continue
        setattr(summary, outcome, getattr(summary, outcome) + 1)
        summary.entries += entries
    return summary
