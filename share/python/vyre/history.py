# SPDX-License-Identifier: GPL-2.0-or-later
"""dnf's transaction history, and a check whether rpm's database contains the changes of a transaction.

A worker runs this module.
"""

import logging
import os
import time

import dnf.exceptions
import dnf.transaction
import hawkey
import libdnf.error
import libdnf.transaction
import rpm

from .packages import decoded
from .program import tr
from .space import spaceHint

# The largest number of characters in a recorded command line.
COMMAND_LENGTH = 1000


def commandLine(*lists):
    """The command line that the history stores for a transaction. lists: pairs of a verb and names of packages or
    groups.

    "?" replaces each unprintable character of a name, because dnf shows the history on a terminal.
    """
    parts = []
    for verb, objects in lists:
        names = sorted(set(''.join(letter if letter.isprintable() else '?' for letter in name) for name in objects))
        if names:
            parts.append('{} {}'.format(verb, ' '.join(names)))
    text = 'vyre: ' + '; '.join(parts)
    return text if len(text) <= COMMAND_LENGTH else text[:COMMAND_LENGTH - 3] + '...'


def reportLeftovers(base):
    """Log the effects of a transaction that a crash or a power failure has interrupted, because dnf does not log these
    effects.
    """
    parts = []
    try:
        reportInterrupted(base, parts)
        several = severalVersions(base)
        if several:
            parts.append(tr('An interrupted transaction has left several installed versions of these packages:\n'
                            '{}\n"dnf remove --duplicates" removes the older versions.').format(
                                '\n'.join('  ' + ', '.join(str(package) for package in packages)
                                          for packages in several)))
    except (dnf.exceptions.Error, hawkey.Exception, libdnf.error.Error, RuntimeError, OSError) as e:
        # The failure must not end the operation, because VYRE can show the packages even if the history cannot be
        # read.
        logging.getLogger('dnf').debug('It is not known how the last transaction ended: %s', e)
    if parts:
        logging.getLogger('dnf').warning('%s', '\n'.join(parts))


def reportInterrupted(base, parts):
    """Append a message to the list "parts" if the history lacks the end of the last transaction."""
    history = base.history
    # If the history is missing, dnf would create it here. A user who cannot write the history cannot complete the
    # transaction, so the message would not help.
    if not os.access(history.dbpath, os.R_OK | os.W_OK):
        return
    try:
        last = history.last()
        if last is None or last.end_timestamp:
            return
        begin = time.ctime(last.beg_timestamp)
        # Leave out the groups: their items have no names.
        if not unrecorded(base, [item for item in last.packages() if item.name]):
            parts.append(tr('The history does not record the end of the last transaction, begun on {}.\n'
                            'All its packages are in the intended state.').format(begin))
        else:
            parts.append(tr('The last transaction, begun on {}, was interrupted.\n'
                            'In the History window (Ctrl+H), "Redo" completes it.').format(begin))
    finally:
        history.close()
        del base._ts  # close rpm's database, because other programs may need it


def severalVersions(base):
    """The packages of which several versions are installed by mistake: for each name and architecture, a list of the
    installed versions, the oldest first. Packages such as kernels, which may have several installed versions, are left
    out.
    """
    installed = base.sack.query(flags=hawkey.IGNORE_EXCLUDES).installed()
    duplicated = installed.duplicated().difference(base._get_installonly_query(installed))
    found = {}
    for package in duplicated:
        found.setdefault((package.name, package.arch), []).append(package)
    return [sorted(found[key]) for key in sorted(found)]


def refuseHistory(base, text):
    """Raise an exception that reports why the history file cannot be read or written. text: dnf's or SQLite's error
    message.
    """
    if any(damage in text for damage in ('not a database', 'malformed', 'no such table')):
        raise dnf.exceptions.Error(tr('The transaction history is damaged: {}\n'
                                      'Move the file to another place. The package manager then creates a new '
                                      'file.').format(text))
    raise dnf.exceptions.Error(text + spaceHint(base.conf.persistdir))


def endHistory(base):
    """Record that the transaction failed before rpm began. Without this record, the transaction would look interrupted.
    """
    try:
        for item in base.transaction or []:
            item.state = libdnf.transaction.TransactionItemState_ERROR
        base.history.end(return_code=libdnf.transaction.TransactionState_ERROR)
    except (dnf.exceptions.Error, libdnf.error.Error, RuntimeError, OSError) as e:
        logging.getLogger('dnf').debug('The history does not have the end of the transaction: %s', e)


def unrecorded(base, items):
    """The items of a transaction whose changes are missing in rpm's database. This check is necessary because rpm
    ignores failures to write its database.
    """
    del base._ts  # so that dbMatch() below opens and reads the database again
    wanted = {}
    for item in items:
        key = (item.name, item.epoch, item.version, item.release, item.arch)
        # dnf has two items for a reinstalled package: one for its installation, and one for its removal.
        if item.action in dnf.transaction.FORWARD_ACTIONS:
            wanted[key] = (item, True)
        elif item.action in dnf.transaction.BACKWARD_ACTIONS:
            wanted.setdefault(key, (item, False))
    headers = {name: list(base._ts.dbMatch('name', name)) for name in set(key[0] for key in wanted)}
    present = set(tuple([name, header[rpm.RPMTAG_EPOCH] or 0] +
                        [decoded(header[tag]) for tag in (rpm.RPMTAG_VERSION, rpm.RPMTAG_RELEASE, rpm.RPMTAG_ARCH)])
                  for name, found in headers.items() for header in found)
    return [item for key, (item, installed) in wanted.items() if (key in present) != installed]
