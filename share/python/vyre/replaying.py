# SPDX-License-Identifier: GPL-2.0-or-later
"""Undoes or repeats recorded transactions, as "dnf history undo", "rollback" and "redo" do. The worker that applies the
changes runs this module.
"""

import logging
import sys
import types

import dnf.exceptions
import dnf.i18n
import hawkey

from . import versionlock
from .listing import otherSections
from .output import showActivity
from .privatenames import lacksReplay
from .program import tr, yumIOC
from .reasons import nothingToDo
from .resolving import stepOfResolution
from .stopping import endIfStopped

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


class Interruptible(list):
    """A list whose iteration raises an exception when the user stops the operation."""

    def __iter__(self):
        for item in super(Interruptible, self).__iter__():
            endIfStopped()
            yield item


def interruptible(serialize):
    """Returns a function that reads a transaction as `serialize` does, which is a function of dnf. The lists in the
    result are interruptible, because dnf needs seconds to find the packages of thousands of recorded transactions.
    """
    def read(transaction):
        endIfStopped()
        data = serialize(transaction)
        for key, value in data.items():
            if isinstance(value, list):
                data[key] = Interruptible(value)
        showActivity(tr('Finding the packages of the recorded transactions'))
        return data
    return read


def replayed(base, kind, number):
    """Add to dnf's goal the changes that undo or repeat a recorded transaction. Return dnf's replay object, and dnf's
    errors about impossible changes.
    """
    from dnf.cli.commands import history  # import here: this import loads the whole dnf command
    from dnf.transaction_sr import TransactionReplayError
    showActivity(tr('Reading the recorded transactions'))
    # HistoryCommand uses only the attributes that this function sets.
    line = types.SimpleNamespace(base=base)
    base.output = types.SimpleNamespace(history=base.history)
    serialize = history.serialize_transaction
    history.serialize_transaction = interruptible(serialize)
    errors = []
    try:
        command = history.HistoryCommand(line)
        command.opts = types.SimpleNamespace(skip_unavailable=False)
        prepare = {UNDO: command._hcmd_undo, ROLLBACK: command._hcmd_rollback, REDO: command._hcmd_redo}[kind]
        prepare([number])
    except TransactionReplayError as e:
        errors = e.errors
    finally:
        history.serialize_transaction = serialize
        del base.output
    return command.replay, errors


def withoutImpossible(base, replay):
    """Add to dnf's goal the possible changes of this replay object. Return the replay object that adds these changes.
    """
    from dnf.transaction_sr import TransactionReplay
    base.reset(goal=True)
    # Use the data of the first object, because dnf needs long to read thousands of recorded transactions.
    # HistoryCommand sets the same options.
    possible = TransactionReplay(base, data=replay.get_data(), ignore_installed=True, ignore_extras=True,
                                 skip_unavailable=True)
    possible.run()
    return possible


def explained(base, errors):
    """The texts of dnf's errors. If a repository has the package of an error, but a version lock or the configuration
    excludes this package, a sentence with this reason replaces dnf's text.
    """
    _, locks = versionlock.versionLocks(base) or ('', {})
    everything = base.sack.query(flags=hawkey.IGNORE_REGULAR_EXCLUDES)
    excluded = {str(package): package.name for package in everything.difference(base.sack.query())}
    # This is dnf's text about a package that it cannot find.
    start, _, end = dnf.i18n._('Cannot find rpm nevra "{nevra}".').partition('{nevra}')

    def explain(text):
        nevra = text[len(start):len(text) - len(end)] if text.startswith(start) and text.endswith(end) else ''
        if nevra not in excluded:
            return text
        name = excluded[nevra]
        if name in locks:
            return tr('{}: the version of {} is locked by {}').format(nevra, name, locks[name])
        return tr('{}: the configuration or a plug-in excludes this version').format(nevra)

    return [explain(str(error)) for error in errors]


def introduction(base, kind, number):
    """The first line of the listing: the name of the recorded transaction."""
    if kind == REDO and not all(recorded.end_timestamp for recorded in base.history.old([number])):
        return tr('This completes transaction {}.').format(number)  # a crash has interrupted it
    texts = {UNDO: tr('This undoes transaction {}.'),
             ROLLBACK: tr('This undoes all transactions after transaction {}.'),
             REDO: tr('This repeats transaction {}.')}
    return texts[kind].format(number)


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
        replay, errors = replayed(base, kind, number)
    if errors:
        impossible = explained(base, errors)
        try:
            replay = withoutImpossible(base, replay)
        except TransactionReplayError as again:
            raise impossibility(explained(base, again.errors))
    showActivity(stepOfResolution())
    try:
        base.resolve()
    except dnf.exceptions.DepsolveError as e:
        problems = [line for lines in base.problems() for line in lines]
        raise impossibility(impossible + (problems or [str(e)]))
    replay.post_transaction()
    if not base.items() and not (otherSections(base) or base.history.group or base.history.env):
        raise impossibility(impossible) if impossible else nothingToDo()
    if impossible:
        yumIOC.gpgsigcheck()
        sys.stdout.write(tr('These changes are impossible:\n{}\n\nGo on without them?\n'
                            '"Yes" shows the other changes. "No" changes nothing.\n').format(
                                '\n'.join('  ' + line for line in impossible)))
        if yumIOC.userconfirm() != 1:
            return False
    base.introduction.append(introduction(base, kind, number))
    reported = set(str(error) for error in errors)
    base.introduction += notes.lines + [line for line in replay.get_warnings() if line not in reported]
    return True
