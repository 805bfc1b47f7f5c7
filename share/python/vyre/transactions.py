# SPDX-License-Identifier: GPL-2.0-or-later
"""The recorded transactions, for the History window. A worker runs this module.

This module reads all transactions with a few queries from dnf's history database. dnf's own classes would need several
queries for each transaction.
"""

import collections
import os
import pwd
import sqlite3
import time
import urllib.parse

import dnf.i18n
import dnf.transaction
import libdnf.transaction

from .history import refuseHistory, unrecorded
from .program import tr
from .stopping import endIfStopped

# The possible outcomes of a transaction.
SUCCEEDED, FAILED, INTERRUPTED = range(3)

# dnf's actions on packages and groups, with the words for them. A summary lists the actions in this order. VYRE itself
# translates the words, because the listing of a transaction uses the same words.
ACTIONS = collections.OrderedDict((
    (libdnf.transaction.TransactionItemAction_INSTALL, tr('Install')),
    (libdnf.transaction.TransactionItemAction_UPGRADE, tr('Upgrade')),
    (libdnf.transaction.TransactionItemAction_DOWNGRADE, tr('Downgrade')),
    (libdnf.transaction.TransactionItemAction_REINSTALL, tr('Reinstall')),
    (libdnf.transaction.TransactionItemAction_REMOVE, tr('Removed')),
    (libdnf.transaction.TransactionItemAction_OBSOLETED, tr('Obsoleted')),
    (libdnf.transaction.TransactionItemAction_REASON_CHANGE, tr('Reason Change')),
    (libdnf.transaction.TransactionItemAction_UPGRADED, tr('Upgraded')),
    (libdnf.transaction.TransactionItemAction_DOWNGRADED, tr('Downgraded')),
    (libdnf.transaction.TransactionItemAction_REINSTALLED, tr('Reinstalled')),
    (libdnf.transaction.TransactionItemAction_OBSOLETE, tr('Obsoleting')),
))

# The actions on replaced packages. A summary has only the actions on the packages that replace them.
HALVES = (libdnf.transaction.TransactionItemAction_UPGRADED, libdnf.transaction.TransactionItemAction_DOWNGRADED,
          libdnf.transaction.TransactionItemAction_REINSTALLED, libdnf.transaction.TransactionItemAction_OBSOLETE)

# What dnf has recorded about a transaction item. dnf records the results of all items when the transaction ends, so the
# items of an interrupted transaction have no results.
DONE, NOT_DONE, UNRECORDED = range(3)

# The largest number of packages that a summary names for one action. For more packages, the summary shows only their
# number.
NAMED = 3

# If another process has locked the database, VYRE tries to read the database for PATIENCE seconds. Each attempt takes
# ATTEMPT seconds. Between two attempts, the user can stop the operation.
PATIENCE, ATTEMPT = 20, 0.2

# Parts of SQL queries: the tables, and the name of a transaction item. The names of groups begin with "@".
ITEMS = ('trans_item ti left join rpm r on r.item_id = ti.item_id '
         'left join comps_group g on g.item_id = ti.item_id left join comps_environment e on e.item_id = ti.item_id')
NAME = "coalesce(r.name, '@' || g.groupid, '@' || e.environmentid, '?')"

# One package or group of a transaction.
Item = collections.namedtuple('Item', 'name epoch version release arch action fate repository isPackage')


def isLocked(fault):
    return 'locked' in str(fault)


def patiently(read):
    """Call read(), which reads the database, until no other process has locked the database. Return the result."""
    end = time.monotonic() + PATIENCE
    while True:
        try:
            return read()
        except sqlite3.OperationalError as e:
            if not isLocked(e) or time.monotonic() > end:
                raise
        endIfStopped()


class History:
    """A context manager that opens dnf's history database for reading, and turns SQLite's errors into dnf's errors."""

    def __init__(self, base):
        self._base = base
        self._connection = None

    def __enter__(self):
        path = self._base.history.dbpath
        if os.path.exists(path):
            try:
                self._connection = patiently(lambda: self._connect(path))
            except sqlite3.Error as e:
                refuseHistory(self._base, '{}: {}'.format(path, e))
        return self

    def __exit__(self, kind, fault, traceback):
        if self._connection is not None:
            self._connection.close()
            self._connection = None
        if isinstance(fault, sqlite3.Error):
            refuseHistory(self._base, '{}: {}'.format(self._base.history.dbpath, fault))
        return False

    @staticmethod
    def _connect(path):
        address = 'file:{}?mode=ro'.format(urllib.parse.quote(path))
        for options in ('', '&immutable=1'):
            connection = sqlite3.connect(address + options, uri=True, timeout=ATTEMPT)
            connection.text_factory = lambda content: content.decode('utf-8', 'replace')
            connection.row_factory = sqlite3.Row
            try:
                connection.execute('select id from trans limit 1').fetchall()
                return connection
            except sqlite3.OperationalError as e:
                connection.close()
                # SQLite keeps temporary files next to the database, and needs these files for reading too. If the user
                # has no right to create these files and no process is writing, the option "immutable" opens the
                # database without these files.
                log = path + '-wal'
                if options or isLocked(e) or \
                        os.access(os.path.dirname(path), os.W_OK, effective_ids=True) or \
                        os.path.exists(log) and os.path.getsize(log):
                    raise

    def rows(self, query, *arguments):
        """The result of a query; empty if the history is missing."""
        if self._connection is None:
            return []
        return patiently(lambda: self._connection.execute(query, arguments).fetchall())


def readTransactions(base):
    """All transactions, the newest first. Each transaction is a tuple: its number, its start time in seconds since
    1970, the user, the command line, a summary of the changes, the names of all packages, the outcome, and the number
    of recorded output lines.
    """
    with History(base) as history:
        transactions = history.rows('select * from trans order by id desc')
        ended = set(row['id'] for row in transactions if row['dt_end'])
        summaries, names = {}, {}
        for row in history.rows('select ti.trans_id as id, ti.action as action, ti.state as state, count(*) as number, '
                                "group_concat({}, ' ') as names from {} group by ti.trans_id, ti.action, ti.state"
                                .format(NAME, ITEMS)):
            changes = summaries.setdefault(row['id'], {})
            key = row['action'], fateOf(row['state'], row['id'] in ended)
            number, before = changes.get(key, (0, ''))
            changes[key] = (number + row['number'], before + ' ' + row['names'])
            names.setdefault(row['id'], []).append(row['names'])
        lines = {row['id']: row['number'] for row in history.rows(
            'select trans_id as id, count(*) as number from console_output group by trans_id')}
        users = {}
        return [(row['id'], row['dt_begin'], userName(row['user_id'], users), printable(row['cmdline']),
                 summary(summaries.get(row['id'], {})),
                 printable(' '.join(sorted(set(' '.join(names.get(row['id'], [])).split())))),
                 outcome(row), lines.get(row['id'], 0))
                for row in transactions]


def fateOf(state, ended):
    """What dnf has recorded about an item with this state. ended: whether the end of its transaction is recorded."""
    if state == libdnf.transaction.TransactionItemState_ERROR:
        return NOT_DONE
    return DONE if ended or state == libdnf.transaction.TransactionItemState_DONE else UNRECORDED


def outcome(row):
    if not row['dt_end']:
        return INTERRUPTED
    return SUCCEEDED if row['state'] == libdnf.transaction.TransactionState_DONE else FAILED


def userName(number, known):
    """The login name of a user, without the full name that dnf also shows. known: a dictionary from user numbers to the
    names that were already found.
    """
    if number not in known:
        # Each of these numbers means that the transaction had no login user.
        if number in (-1, 0xFFFFFFFF, 0x7FFFFFFF):
            known[number] = '{} {}'.format(dnf.i18n._('System'), dnf.i18n._('<unset>'))
        else:
            try:
                known[number] = pwd.getpwuid(number).pw_name
            except (KeyError, OverflowError):
                known[number] = str(number)
    return known[number]


def printable(text):
    """The text in one line. A blank replaces each unprintable character, because a table cell cannot show such a
    character.
    """
    text = text or ''
    if not text.isprintable():
        text = ''.join(letter if letter.isprintable() else ' ' for letter in text)
    return ' '.join(text.split())


def word(action):
    return ACTIONS.get(action, str(action))


def addRemark(parts, fate):
    """Append a remark to the words about a change, unless dnf has recorded that the change is done."""
    if fate == NOT_DONE:
        parts.append(tr('(failed)'))
    elif fate == UNRECORDED:
        parts.append(tr('(result not recorded)'))


def summary(changes):
    """A short text about a transaction's changes. changes: a dictionary from pairs of an action and a fate to pairs of
    the number of packages and their names.
    """
    order = {action: place for place, action in enumerate(ACTIONS) if action not in HALVES}
    parts = []
    for action, fate in sorted((key for key in changes if key[0] in order), key=lambda key: (order[key[0]], key[1])):
        number, names = changes[action, fate]
        words = [word(action)]
        addRemark(words, fate)
        parts.append('{}: {}'.format(' '.join(words), ', '.join(sorted(names.split())) if number <= NAMED else number))
    return printable('; '.join(parts))


# Details ----------------------------------------------------------------------------------------------------

def describeTransaction(base, number):
    """All details of a transaction as text; empty if the history has no transaction of this number."""
    with History(base) as history:
        found = history.rows('select * from trans where id = ?', number)
        if not found:
            return ''
        row = found[0]
        items = itemsOf(history, number, bool(row['dt_end']))
        parts = [headOf(row)]
        if not row['dt_end']:
            left = remaining(base, history, number, items)
            if left:
                parts.append(tr('This transaction was interrupted. "Redo" completes it with these changes:\n{}').format(
                    '\n'.join(linesOf(left, withFates=False))))
            else:
                parts.append(tr('This transaction was interrupted. All its packages are in the intended state.'))
        parts += outsideChanges(history, row)
        if items:
            parts.append(label('Packages Altered:') + ':\n' + '\n'.join(linesOf(items)))
        output = history.rows('select line from console_output where trans_id = ? order by id', number)
        if output:
            parts.append(label('Scriptlet output:') + ':\n' + '\n'.join('    ' + line['line'] for line in output))
        return '\n\n'.join(parts)


def label(text):
    """The translation of one of dnf's labels, without the blanks and the colon at its end."""
    return dnf.i18n._(text).rstrip(' :')


def headOf(row):
    values = [('Transaction ID :', row['id']), ('Begin time     :', moment(row['dt_begin']))]
    if row['dt_end']:
        values.append(('End time       :', moment(row['dt_end'])))
    values.append(('User           :', userName(row['user_id'], {})))
    if row['dt_end']:
        done = row['state'] == libdnf.transaction.TransactionState_DONE
        values.append(('Return-Code    :', dnf.i18n._('Success') if done else label('Failure:')))
    values += [('Releasever     :', row['releasever']), ('Command Line   :', printable(row['cmdline'])),
               ('Comment        :', row['comment'] if 'comment' in row.keys() else '')]
    return '\n'.join('{}: {}'.format(label(text), value) for text, value in values if value not in ('', None))


def moment(seconds):
    return time.strftime('%Y-%m-%d %H:%M:%S', time.localtime(seconds))


def itemsOf(history, number, ended):
    return [Item(row['name'], row['epoch'], row['version'], row['release'], row['arch'], row['action'],
                 fateOf(row['state'], ended), row['repoid'], row['package'] is not None) for row in history.rows(
                     'select {} as name, r.epoch as epoch, r.version as version, r.release as release, r.arch as arch, '
                     'ti.action as action, ti.state as state, repo.repoid as repoid, r.name as package from {} '
                     'left join repo on repo.id = ti.repo_id where ti.trans_id = ? order by ti.id'
                     .format(NAME, ITEMS), number)]


def fullName(item):
    """The name, version and architecture of a package in dnf's form, or the name of a group."""
    if not item.isPackage:
        return item.name
    epoch = '{}:'.format(item.epoch) if item.epoch else ''
    return '{}-{}{}-{}.{}'.format(item.name, epoch, item.version, item.release, item.arch)


def linesOf(items, withFates=True):
    """A line for each item. withFates: whether to say of an item that dnf has not changed its package."""
    order = list(ACTIONS)
    places = {action: place for place, action in enumerate(order)}
    ordered = sorted(items, key=lambda item: (item.name.lstrip('@'), item.arch or '',
                                              places.get(item.action, len(order))))
    lines = []
    for item in ordered:
        parts = ['    {}\t{}'.format(word(item.action), printable(fullName(item)))]
        if item.repository:
            parts.append('@' + printable(item.repository.lstrip('@')))
        if withFates:
            addRemark(parts, item.fate)
        lines.append(' '.join(parts))
    return lines


def outsideChanges(history, row):
    """Sentences about packages that a program other than dnf has changed directly before or after a transaction."""
    parts = []
    before = history.rows('select rpmdb_version_end as version from trans where id < ? order by id desc limit 1',
                          row['id'])
    if before and before[0]['version'] and row['rpmdb_version_begin'] not in ('', None, before[0]['version']):
        parts.append(tr('Packages were changed without dnf between the previous transaction and this transaction.'))
    after = history.rows('select rpmdb_version_begin as version from trans where id > ? order by id limit 1', row['id'])
    if after and row['rpmdb_version_end'] and after[0]['version'] not in ('', None, row['rpmdb_version_end']):
        parts.append(tr('Packages were changed without dnf between this transaction and the next transaction.'))
    return parts


def remaining(base, history, number, items):
    """The changes that an interrupted transaction has not made. If a transaction after the interrupted one has changed
    a package, the result leaves out this package.
    """
    later = set((row['name'], row['arch']) for row in history.rows(
        'select distinct r.name as name, r.arch as arch from trans_item ti join rpm r on r.item_id = ti.item_id '
        'where ti.trans_id > ?', number))
    packages = [item for item in items if item.isPackage and
                item.action in dnf.transaction.FORWARD_ACTIONS + dnf.transaction.BACKWARD_ACTIONS and
                (item.name, item.arch) not in later]
    try:
        return unrecorded(base, packages)
    finally:
        del base._ts  # close rpm's database, because other programs may need it
