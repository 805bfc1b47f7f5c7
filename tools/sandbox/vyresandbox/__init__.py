# SPDX-License-Identifier: GPL-2.0-or-later
"""Temporary system roots with repositories, for demonstrations and tests of VYRE."""

import functools
import sys

from .sandbox import Sandbox

__all__ = ["Sandbox", "make", "needs_groups"]


def make(directory):
    """Makes a sandbox in a directory that does not exist yet; returns the sandbox."""
    from .maker import make as make_sandbox  # needs dnf and rpm, which users of an existing sandbox may lack

    return make_sandbox(directory)


def needs_groups(test):
    """A decorator for a test method whose class has a sandbox: if dnf cannot read groups, the test is skipped, and the
    reason is printed."""
    @functools.wraps(test)
    def run(self, *arguments):
        reason = self.sandbox.without_groups
        if reason:
            print("SKIP   : %s: %s" % (self.id(), reason), file=sys.stderr, flush=True)
            self.skipTest(reason)
        test(self, *arguments)

    return run
