"""The examples of the docstrings and of docs/python.md."""

import doctest
import os
import pathlib
import sys
import unittest

import tasklog
import tasklog.fleet
import tasklog.log
import tasklog.recording
from support import pandas

ROOT = pathlib.Path(__file__).resolve().parents[2]
FLAGS = doctest.ELLIPSIS | doctest.NORMALIZE_WHITESPACE | doctest.IGNORE_EXCEPTION_DETAIL


def set_up(test):
    os.makedirs("machine", exist_ok=True)
    log = tasklog.record("demo", 1)
    log.save("machine.tasklog")
    log.save("machine/kernel1.tasklog")
    test.globs.update(tasklog=tasklog, log=log)


def load_tests(loader, tests, pattern):
    for module in (tasklog, tasklog.fleet, tasklog.log, tasklog.recording):
        tests.addTests(doctest.DocTestSuite(module, setUp=set_up, optionflags=FLAGS))
    if pandas:
        page = str(ROOT / "docs/python.md")
        tests.addTests(doctest.DocFileSuite(page, module_relative=False, setUp=set_up, optionflags=FLAGS))
    return tests


if __name__ == "__main__":
    import tempfile

    with tempfile.TemporaryDirectory() as folder:
        os.chdir(folder)
        result = unittest.TextTestRunner().run(load_tests(None, unittest.TestSuite(), None))
        os.chdir("/")
    sys.exit(not result.wasSuccessful())
