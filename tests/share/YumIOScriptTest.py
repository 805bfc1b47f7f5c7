#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the script YumIO.py with the real dnf on temporary systems.

VYRE_SANDBOX names the directory of an existing sandbox. If it is not set, the tests make a sandbox.
"""

import os
import signal
import sys
import unittest

DIRECTORY = os.path.dirname(os.path.abspath(__file__))
sys.dont_write_bytecode = True
sys.path.insert(0, DIRECTORY)

import scenario  # noqa: E402


def main():
    """Runs the tests that the command line names as module.class.method. If it names none, runs all tests."""
    loader = unittest.defaultTestLoader
    if len(sys.argv) > 1:
        tests = loader.loadTestsFromNames(sys.argv[1:])
    else:
        tests = loader.discover(DIRECTORY, pattern="test_*.py")
    # After SIGTERM, the copies of the sandbox must still be removed.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    scenario.setUpWorkspace()
    try:
        result = unittest.TextTestRunner(verbosity=2).run(tests)
    finally:
        scenario.tearDownWorkspace()
    return 0 if result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
