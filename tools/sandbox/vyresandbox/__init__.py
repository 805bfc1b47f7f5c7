"""Throw-away system roots with repositories, on which VYRE is shown and tested."""

import functools
import sys

from .sandbox import Sandbox

__all__ = ["Sandbox", "make", "needs_groups"]


def make(directory):
    """Makes a sandbox from nothing in a directory that does not exist yet; returns it."""
    from .maker import make as make_sandbox  # needs dnf and rpm, which users of a made sandbox may lack

    return make_sandbox(directory)


def needs_groups(test):
    """For a method of a test that has a sandbox: skips it, and prints why, where dnf cannot read groups."""
    @functools.wraps(test)
    def run(self, *arguments):
        reason = self.sandbox.without_groups
        if reason:
            print("SKIP   : %s: %s" % (self.id(), reason), file=sys.stderr, flush=True)
            self.skipTest(reason)
        test(self, *arguments)

    return run
