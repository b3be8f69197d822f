"""What goes wrong. Every class is an :class:`Error`, and its text is the library's own."""

from __future__ import annotations


class Error(Exception):
    """Base of all exceptions of this package.

    ``status`` is the code of the library or of the controller behind it, such as 0x40CA0012 for a file that
    is no TaskLog file; ``None`` where no call of the library failed.
    """

    def __init__(self, text: str, status: int | None = None) -> None:
        super().__init__(text)
        self.status = status


class FileError(Error):
    """A file or folder cannot be read or written, or is no TaskLog file. The text names it."""


class TargetError(Error):
    """The controller or the library that reaches it refused."""


class AnalysisError(Error):
    """The log does not have what was asked for, such as a task of that name."""


class UsageError(Error, ValueError):
    """An argument is wrong whatever the log holds."""


class ClosedError(Error, ValueError):
    """The log was closed."""


class TasklogWarning(UserWarning):
    """Something beside the logs, such as damaged metadata, was not used."""
