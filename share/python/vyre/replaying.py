# SPDX-License-Identifier: GPL-2.0-or-later
"""Undoes or repeats recorded transactions, as "dnf history undo", "rollback" and "redo" do. The worker that applies the
changes runs this module.
"""

import logging
import sys
import types

import dnf.exceptions
import dnf.i18n

from .listing import otherSections
from .output import introduceListing
from .privatenames import lacksReplay
from .program import tr, yumIOC
from .reasons import nothingToDo

# The kinds of operations. The values are the names of the commands of "dnf history".
UNDO, ROLLBACK, REDO = 'undo', 'rollback', 'redo'


class Notes(logging.Handler):
    """Collects the warnings that dnf logs within a scope."""

    def __init__(self):
        super(Notes, self).__init__(logging.WARNING)
        self.lines = []

    def emit(self, record):
        self.lines.append(record.getMessage())

    def __enter__(self):
        logging.getLogger('dnf').addHandler(self)
        return self

    def __exit__(self, *_):
        logging.getLogger('dnf').removeHandler(self)


def replayed(base, kind, number, skip):
    """Add the changes that undo or repeat a recorded transaction to dnf's goal, and return dnf's replay object. skip:
    whether to leave out impossible changes; if false, they cause an exception.
    """
    from dnf.cli.commands.history import HistoryCommand  # import here: this import loads the whole dnf command
    # HistoryCommand uses only the attributes that this function sets.
    line = types.SimpleNamespace(base=base)
    base.output = types.SimpleNamespace(history=base.history)
    try:
        command = HistoryCommand(line)
        command.opts = types.SimpleNamespace(skip_unavailable=skip)
        prepare = {UNDO: command._hcmd_undo, ROLLBACK: command._hcmd_rollback, REDO: command._hcmd_redo}[kind]
        prepare([number])
    finally:
        del base.output
    return command.replay


def impossibility(lines):
    """Returns an exception with the reasons why a transaction cannot be undone or repeated."""
    return dnf.exceptions.Error(tr('The transaction is impossible:\n'
                                   '{}\nNothing was changed. VYRE keeps all marks.').format(
        '\n'.join('  ' + line for line in lines)))


def resolveReplay(base, kind, number):
    """Find the transaction that undoes or repeats a recorded transaction, or undoes all transactions after it. If some
    changes are impossible, show them and ask the user whether to go on without them. Return whether to go on.
    """
    missing = lacksReplay()
    if missing:
        raise dnf.exceptions.Error(missing)
    from dnf.transaction_sr import TransactionReplayError
    impossible = []
    with Notes() as notes:
        try:
            replay = replayed(base, kind, number, False)
        except TransactionReplayError as e:
            impossible = [str(each) for each in e.errors]
            del notes.lines[:]
            base.reset(goal=True)
            try:
                replay = replayed(base, kind, number, True)
            except TransactionReplayError as again:
                raise impossibility([str(each) for each in again.errors])
    try:
        base.resolve()
    except dnf.exceptions.DepsolveError as e:
        problems = [line for lines in base.problems() for line in lines]
        raise impossibility(impossible + (problems or [str(e)]))
    replay.post_transaction()
    if not base.transaction and not (otherSections(base) or base.history.group or base.history.env):
        raise impossibility(impossible) if impossible else nothingToDo()
    if impossible:
        yumIOC.gpgsigcheck()
        sys.stdout.write(tr('These changes are impossible:\n{}\n\nGo on without them?\n'
                            '"Yes" shows the other changes. "No" changes nothing.\n').format(
                                '\n'.join('  ' + line for line in impossible)))
        if yumIOC.userconfirm() != 1:
            return False
    lines = notes.lines + [line for line in replay.get_warnings() if line not in impossible]
    if lines:
        introduceListing('\n'.join(lines) + '\n\n')
    return True
