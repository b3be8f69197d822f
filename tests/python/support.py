"""Recordings for tests, and the command to compare with."""

import json
import os
import subprocess
import tempfile
import unittest

import tasklog

try:
    import pandas
except ImportError:
    pandas = None


def run(*words):
    return subprocess.run([os.environ["TASKLOG"], *words], capture_output=True, check=False).stdout


def command(*words):
    return json.loads(run(*words))


class Folder(unittest.TestCase):
    """A folder of its own, which is the current one."""

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.addCleanup(os.chdir, os.getcwd())
        os.chdir(folder.name)


def saved(target, logger, **options):
    name = "machine.tasklog"
    tasklog.record(target, logger, **options).save(name)
    return name
