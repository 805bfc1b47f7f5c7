# SPDX-License-Identifier: GPL-2.0-or-later
"""Passes the progress of downloads and transactions on to the program. A worker runs this module."""

import logging
import re
import weakref

import dnf.callback
import dnf.transaction
import dnf.yum.rpmtrans
import hawkey
import rpm

from . import program
from .output import passable, programListens
from .program import tr, yumIOC


class DownloadProgress(dnf.callback.DownloadProgress):
    """Passes the progress of downloads of metadata and packages on to the program."""

    def __init__(self):
        super(DownloadProgress, self).__init__()
        self._reported = set()

    def start(self, total_files, total_size, total_drpms=0):
        self._reported.clear()
        yumIOC.downloadStart(total_files, int(total_size), total_drpms)

    def progress(self, payload, done):
        yumIOC.downloadProgress(payload, float(done))

    def message(self, msg):
        yumIOC.downloadMessage(msg)

    def end(self, payload, status, msg):
        if status == dnf.callback.STATUS_MIRROR:
            # The download continues with the next mirror, which may be the same server.
            text = '{}: {}'.format(payload, msg)
            failure = re.sub(r' after [0-9]+ ms', '', text)
            logging.getLogger('dnf').log(logging.DEBUG if failure in self._reported else logging.WARNING, '%s', text)
            self._reported.add(failure)
        else:
            yumIOC.downloadEnd(payload, status, msg)


class TransactionProgress(dnf.yum.rpmtrans.TransactionDisplay):
    """Passes the progress of a transaction on to the program.

    The program shows the progress of one package at a time, so each report must name a package. The phases of the whole
    transaction have no package, and for some scriptlets dnf does not know the package. Therefore the script does not
    report these phases and scriptlets to the program.
    """

    def progress(self, package, action, ti_done, ti_total, ts_done, ts_total):
        if isinstance(package, hawkey.Package) and action not in (dnf.transaction.TRANS_PREPARATION,
                                                                  dnf.transaction.TRANS_POST):
            yumIOC.rpmtransProgress(package, action, ti_done, ti_total, ts_done, ts_total)

    def scriptout(self, msgs):
        if isinstance(msgs, bytes):
            msgs = msgs.decode('utf-8', 'replace')
        if msgs and msgs.endswith('\n'):
            msgs = msgs[:-1]  # the program logs whole lines
        yumIOC.rpmtransScriptout(passable(msgs) if msgs else None)

    def error(self, message):
        yumIOC.errorlog(0, passable(str(message)))


# The largest number of output lines that the message about a failure repeats.
REASON_LINES = 10


class RPMTransaction(dnf.yum.rpmtrans.RPMTransaction):
    """Reports to the program when a transaction, or its test, begins and ends."""

    _last = None

    def __init__(self, base, test=False, displays=()):
        self._ended = True  # the transaction has not begun yet, and the program may refuse it
        self._heard = None
        self.scriptFailed = False
        self._space = base.scriptSpace
        yumIOC.rpmtransInit(test)
        super(RPMTransaction, self).__init__(base, test=test, displays=displays or [TransactionProgress()])
        self._ended = False
        RPMTransaction._last = weakref.ref(self)

    def __del__(self):
        self.end()

    # rpm reports one of these events before its first change.
    CHANGES = (rpm.RPMCALLBACK_ELEM_PROGRESS, rpm.RPMCALLBACK_INST_START, rpm.RPMCALLBACK_UNINST_START,
               rpm.RPMCALLBACK_SCRIPT_START)

    def callback(self, what, amount, total, key, data):
        if what in self.CHANGES and not self.test:
            self.base.changed = True
            if what == rpm.RPMCALLBACK_SCRIPT_START and self._space and not self._space.isEnough():
                self.base.withoutSpace.append(self._nameOf(key))
        return super(RPMTransaction, self).callback(what, amount, total, key, data)

    def _nameOf(self, key):
        try:
            return str(self._extract_cbkey(key)[0].pkg)
        except (AttributeError, IndexError, KeyError, RuntimeError):  # before rpm has named the package
            return tr('another package')

    def _scriptOutput(self):
        self._heard = super(RPMTransaction, self)._scriptOutput()
        return self._heard

    # For the failures in the next two methods, dnf either hides rpm's messages or shows them as scriptlet output.

    def _cpioError(self, key):
        self._heard = None
        super(RPMTransaction, self)._cpioError(key)
        self._showReason(self._heard or self._scriptOutput())

    def _unpackError(self, key):
        self._heard = None
        super(RPMTransaction, self)._unpackError(key)
        self._showReason(self._heard or self._scriptOutput())

    def _scriptError(self, amount, total, key):
        """The program already has the scriptlet's output. If rpm reports a total other than 0, the failure prevents a
        change to a package. In this case, show the end of the output again, together with the failure.
        """
        self.scriptFailed = True
        super(RPMTransaction, self)._scriptError(amount, total, key)
        if total:
            self._showReason(self._heard)
        owner = self._ownerOfScriptlet(key)
        yumIOC.errorlog(0, tr('The scriptlet of {} failed.').format(owner))
        if self.base.outcome is not None:
            self.base.outcome.failedScriptlets.append(owner)

    def _ownerOfScriptlet(self, key):
        """The full name of the package whose scriptlet has just failed. If the scriptlet is a trigger, dnf's key names
        the package that has caused the trigger. Only rpm's message at the end of the output names the package that
        contains the trigger.
        """
        lines = self._heard.decode('utf-8', 'replace').split('\n') if self._heard else []
        for line in reversed(lines):
            found = re.search(r'%[a-z]+\(([^()]+)\)', line)
            if found:
                return passable(found.group(1))
        return passable(self._nameOf(key))

    @staticmethod
    def _showReason(output):
        if output:
            lines = output.decode('utf-8', 'replace').rstrip('\n').split('\n')
            yumIOC.errorlog(0, passable('\n'.join(lines[-REASON_LINES:])))

    def end(self):
        if not self._ended and programListens():
            self._ended = True
            self._shutdownOutputLogging()
            yumIOC.rpmtransDel()

    @classmethod
    def endLast(cls):
        """End the last transaction. Without this call, the traceback of a failure may keep the transaction's object and
        rpm's log alive too long.
        """
        last = cls._last() if cls._last is not None else None
        if last is not None:
            last.end()


program.replace(dnf.yum.rpmtrans, 'RPMTransaction', RPMTransaction)
