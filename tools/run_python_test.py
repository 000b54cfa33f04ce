#!/usr/bin/python3
"""Runs one test method of one file: 0 passed, 1 failed, 77 skipped with its reason printed.

    tools/run_python_test.py FILE Class.test_method
"""

import importlib.util
import pathlib
import sys
import unittest


def main(path, name):
    path = pathlib.Path(path)
    sys.path[:0] = [str(path.parent), str(pathlib.Path(__file__).parent)]
    found = importlib.util.spec_from_file_location(path.stem, path)
    module = importlib.util.module_from_spec(found)
    found.loader.exec_module(module)
    suite = unittest.defaultTestLoader.loadTestsFromName(name, module)
    result = unittest.TextTestRunner(stream=sys.stdout, verbosity=2).run(suite)
    for _, reason in result.skipped:
        print(f"SKIPPED: {reason}")
    if result.testsRun != 1 or not result.wasSuccessful():
        return 1
    return 77 if result.skipped else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
