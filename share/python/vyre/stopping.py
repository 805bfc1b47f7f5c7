# SPDX-License-Identifier: GPL-2.0-or-later
"""Ends an operation when the user wants to stop it. The worker that runs the operation runs this module."""

import dnf.exceptions

from . import program
from .program import tr


class Stopped(dnf.exceptions.Error):
    """Raised when the user has stopped the operation. The class does not derive from RepoError: after a RepoError, dnf
    would go on without the repository.
    """


def isStopped(last=False):
    """Whether the user has asked VYRE to stop the operation. If last is true and the user has not asked yet, VYRE
    refuses all requests to stop from now on.
    """
    return program.stopWanted is not None and program.stopWanted(last)


def endIfStopped(last=False):
    if isStopped(last):
        raise Stopped(tr('Stopped.'))
