# SPDX-License-Identifier: GPL-2.0-or-later
"""Ends the operation that the user wants to stop. On the worker."""

import dnf.exceptions

from . import program
from .program import tr


class Stopped(dnf.exceptions.Error):
    """The user has stopped the operation. dnf does not take it for the failure of a repository."""


def isStopped(last=False):
    """Whether the user has asked the operation to stop. If last is true, and the user has not, it is too late now."""
    return program.stopWanted is not None and program.stopWanted(last)


def endIfStopped(last=False):
    if isStopped(last):
        raise Stopped(tr('Stopped.'))
