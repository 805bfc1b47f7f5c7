# SPDX-License-Identifier: GPL-2.0-or-later
"""Undoes or repeats recorded transactions, as "dnf history undo", "rollback" and "redo" do. The worker that applies the
changes runs this module.
"""

import logging
import sys
import types

import dnf.exceptions
import dnf.i18n
import dnf.subject
import hawkey

from . import versionlock
from .listing import otherSections
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
    """Add to dnf's goal the changes that undo or repeat a recorded transaction. Return dnf's replay object. skip:
    whether to leave out impossible changes; if false, an impossible change causes an exception.
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


def explained(base, errors):
    """The texts of dnf's errors. If a repository has the package of an error, but a version lock or the configuration
    excludes this package, a sentence with this reason replaces dnf's text.
    """
    _, locks = versionlock.versionLocks(base) or ('', {})
    return [reasonOfExclusion(base, str(error), locks) or str(error) for error in errors]


def reasonOfExclusion(base, text, locks):
    """The reason why dnf does not find a package, although a repository has this package; otherwise empty. text: dnf's
    error message, which names the package.

    locks: a dictionary from names to the lines that lock their versions.
    """
    # This is dnf's text about a package that it cannot find.
    start, _, end = dnf.i18n._('Cannot find rpm nevra "{nevra}".').partition('{nevra}')
    if not text.startswith(start) or not text.endswith(end):
        return ''
    nevra = text[len(start):len(text) - len(end)]
    everything = base.sack.query(flags=hawkey.IGNORE_REGULAR_EXCLUDES)
    found = dnf.subject.Subject(nevra).get_best_query(base.sack, with_nevra=True, with_provides=False,
                                                      with_filenames=False, query=everything).run()
    if not found:
        return ''
    name = found[0].name
    if name in locks:
        return tr('{}: the version of {} is locked by {}').format(nevra, name, locks[name])
    return tr('{}: the configuration or a plug-in excludes this version').format(nevra)


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
    errors, impossible = [], []
    with Notes() as notes:
        try:
            replay = replayed(base, kind, number, False)
        except TransactionReplayError as e:
            errors = [str(each) for each in e.errors]
            impossible = explained(base, errors)
            del notes.lines[:]
            base.reset(goal=True)
            try:
                replay = replayed(base, kind, number, True)
            except TransactionReplayError as again:
                raise impossibility(explained(base, again.errors))
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
    base.introduction += notes.lines + [line for line in replay.get_warnings() if line not in errors]
    return True
