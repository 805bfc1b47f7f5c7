# SPDX-License-Identifier: GPL-2.0-or-later
"""The steps of a resolved transaction: the question, the downloads, rpm's work. A worker runs them."""

import logging

import dnf.exceptions
import dnf.i18n
import dnf.transaction
import dnf.util
import libdnf.transaction

from .history import endHistory, unrecorded
from .listing import otherSections, remarksAboutGroups, repeatsReason
from .locks import DatabaseLock
from .output import extendListing, introduceListing
from .plugins import PlugIns
from .program import tr, yumIOC
from .progress import DownloadProgress, TransactionProgress
from .space import ScriptSpace, checkScriptSpace, spaceHint, spaceHints
from .stopping import endIfStopped


def addRemarks(base):
    """Add remarks about failures that happened after the packages were changed."""
    parts = base.remarks
    if base.historyFault is not None:
        parts.append(tr('The packages were changed, but VYRE could not write the transaction history:\n{}')
                     .format(base.historyFault + spaceHint(base.conf.persistdir)))
    while PlugIns.faults:
        parts.append(tr('The packages were changed.\n{}').format(PlugIns.faults.pop(0)))
    if base.withoutSpace:
        packages = '\n'.join(sorted(set(base.withoutSpace)))
        parts.append(tr('The disk was full, so the scripts of these packages may not have run:\n{}')
                     .format(packages + base.scriptSpace.hint()))


def confirmTransaction(base, sections):
    """Show the listing; return whether the user confirms the transaction."""
    transaction = base.items()
    yumIOC.listTransaction(transaction, sorted((item for item in transaction if not repeatsReason(base, item)),
                                               key=lambda item: (item.name, item.arch, item.action)))
    # If a transaction changes only groups and streams, dnf carries it out although "tsflags" contains "test".
    if transaction and 'test' in base.conf.tsflags:
        introduceListing(tr('This is only a test, because the tsflags option contains test. dnf downloads and '
                            'checks the packages;\n'
                            'it installs, updates and removes nothing.\n\n'))
    for lines in (remarksAboutGroups(base), base.introduction):
        if lines:
            introduceListing('\n'.join(lines) + '\n\n')
    for heading, lines in sections:
        extendListing(heading + ':\n' + ''.join('\t%s\n' % ' '.join(line.split()) for line in lines))
    installed = installSet(base)
    if installed:
        yumIOC.reportDownloadSize(installed)
    elif transaction:
        yumIOC.reportRemoveSize(transaction)
    if 'test' in base.conf.tsflags:
        text = dnf.i18n._('{prog} will only download packages, install gpg keys, and check the transaction.')
        logging.getLogger('dnf').info('%s', text.format(prog=dnf.util.MAIN_PROG_UPPER))
    return yumIOC.userconfirm() == 1


def installSet(base):
    """The packages that the transaction installs."""
    return list(set(item.pkg for item in base.items() if item.action in dnf.transaction.FORWARD_ACTIONS))


def download(base):
    installed = installSet(base)
    endIfStopped()
    if not installed:
        yumIOC.downloadRemotePayloads([])
        return
    try:
        base.download_packages(installed, DownloadProgress())
    except (dnf.exceptions.DownloadError, OSError) as e:
        endIfStopped()
        raise dnf.exceptions.Error(str(e) + spaceHint(base.conf.cachedir))


def runTransaction(base, checkCurrent):
    """Run the confirmed transaction. Call checkCurrent() as soon as no other program can change the packages. Return
    False if rpm has only tested the transaction; otherwise True.
    """
    with DatabaseLock(tr('Preparing to Run Transaction')):
        checkCurrent()
        base.scriptSpace = ScriptSpace()
        checkScriptSpace(base.scriptSpace)
        # dnf saves module streams before the last hook of the plug-ins. If no packages change, dnf also saves groups
        # before this hook.
        saved = otherSections(base, withGroups=not base.transaction)
        PlugIns.ended = False
        # If packages change, the user can stop the transaction until rpm begins; see YumIO::rpmtransInit().
        endIfStopped(last=bool(saved) or not base.transaction)
        try:
            base.do_transaction(TransactionProgress())
        except Exception as e:
            if not base.changed:
                endHistory(base)
                if PlugIns.ended and saved:
                    base.changed = True
                    raise dnf.exceptions.Error(tr(
                        '{}\nNo packages were changed, but dnf had already saved these changes:\n{}').format(
                        e, '\n'.join('{}: {}'.format(heading, ', '.join(lines)) for heading, lines in saved)))
            raise
    if base.transaction and 'test' in base.conf.tsflags:
        base.remarks.append(
            tr('The transaction was only tested, because the tsflags option contains test. Nothing was changed.'))
        return False
    base.outcome.complete = True
    yumIOC.postTransactionOutput()
    items = list(base.transaction or [])
    failed = [item for item in items if item.state == libdnf.transaction.TransactionItemState_ERROR]
    missing = base.outcome.missing = [item for item in unrecorded(base, items) if item not in failed]
    parts = [head + '\n' + '\n'.join(sorted(set(str(item) for item in found))) for head, found in (
        (tr('The transaction failed for:'), failed),
        (tr('The package database does not record these changes:'), missing)) if found]
    if parts:
        raise dnf.exceptions.Error('\n'.join(parts) + spaceHints(failed))
    return True
