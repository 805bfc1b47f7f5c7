"""Throw-away system roots with repositories, on which VYRE is shown and tested."""

from .sandbox import Sandbox

__all__ = ["Sandbox", "make"]


def make(directory):
    """Makes a sandbox from nothing in a directory that does not exist yet; returns it."""
    from .maker import make as make_sandbox  # needs dnf and rpm, which users of a made sandbox may lack

    return make_sandbox(directory)
