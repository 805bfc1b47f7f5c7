# SPDX-License-Identifier: GPL-2.0-or-later
"""Ends the operation that the user wants to stop. The worker that runs the operation also runs this module."""

import dnf.exceptions

from . import program
from .program import tr


class Stopped(dnf.exceptions.Error):
    """The user has stopped the operation. dnf does not treat this exception like the failure of a repository."""


def isStopped(last=False):
    """Whether the user has asked the operation to stop. If last is true, the program refuses all later requests."""
    return program.stopWanted is not None and program.stopWanted(last)


def endIfStopped(last=False):
    if isStopped(last):
        raise Stopped(tr('Stopped.'))
