#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the script YumIO.py with the real package manager on temporary systems.

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
    """Runs the tests that the command line names as module.class.method, or all tests if it names none."""
    loader = unittest.defaultTestLoader
    if len(sys.argv) > 1:
        tests = loader.loadTestsFromNames(sys.argv[1:])
    else:
        tests = loader.discover(DIRECTORY, pattern="test_*.py")
    # SIGTERM must not prevent the removal of the sandbox copies.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    scenario.setUpWorkspace()
    try:
        result = unittest.TextTestRunner(verbosity=2).run(tests)
    finally:
        scenario.tearDownWorkspace()
    return 0 if result.wasSuccessful() else 1


if __name__ == "__main__":
    sys.exit(main())
