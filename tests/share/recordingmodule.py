# SPDX-License-Identifier: GPL-2.0-or-later
"""A stand-in for the module yumIOC that records the script's calls. The stand-in checks the arguments of these calls as
strictly as the real module.
"""

import os
import re
import types

# For each function, the format of its arguments: "s" is a string, "l" and "L" are a 64-bit integer, "d" is a number,
# "O" is anything. None permits any number of arguments of any type.
FORMATS = {
    "stdoutWrite": "s",
    "stderrWrite": "s",
    "log": "ls",
    "errorlog": "ls",
    "downloadStart": "LLL",
    "downloadProgress": "Od",
    "downloadMessage": "O",
    "downloadEnd": "OOO",
    "userconfirm": "",
    "reportDownloadSize": "O",
    "reportRemoveSize": "O",
    "listTransaction": "OO",
    "downloadRemotePayloads": "O",
    "rpmtransInit": "O",
    "rpmtransDel": "",
    "rpmtransProgress": "OlOOOO",
    "rpmtransScriptout": "O",
    "postTransactionOutput": None,
    "gpgsigcheck": None,
}

INSTALL, DOWNGRADE, DOWNGRADED, OBSOLETE, OBSOLETED, UPGRADE, UPGRADED, REMOVE, REINSTALL = range(1, 10)
DEPENDENCY, USER, CLEAN, WEAK, GROUP = range(1, 6)


# How the message in the log begins if dnf cannot read groups.
WITHOUT_GROUPS = "VYRE cannot read groups of packages on this system"


def check(name, arguments):
    """Raises an exception for wrong arguments, as PyArg_ParseTuple does for the real module."""
    format = FORMATS[name]
    if format is None:
        return
    if len(arguments) != len(format):
        raise TypeError("%s takes %d arguments (%d given)" % (name, len(format), len(arguments)))
    for unit, argument in zip(format, arguments):
        if unit == "s":
            _check_text(name, argument)
        elif unit in "lL":
            if not isinstance(argument, int):
                raise TypeError("%s: an integer is required, not %s" % (name, type(argument).__name__))
            if not -2 ** 63 <= argument < 2 ** 63:
                raise OverflowError("%s: %d is too large" % (name, argument))
        elif unit == "d" and not isinstance(argument, (int, float)):
            raise TypeError("%s: must be a real number, not %s" % (name, type(argument).__name__))


def _check_text(name, text):
    if not isinstance(text, str):
        raise TypeError("%s: must be str, not %s" % (name, type(text).__name__))
    if "\0" in text:
        raise ValueError("%s: embedded null character" % name)
    text.encode("utf-8")


def _integer(value):
    if not isinstance(value, int):
        raise TypeError("not an integer: %r" % (value,))
    return value


def _text(value):
    _check_text("attribute", value)
    return value


def limits():
    """The constants of the real module, read from its header."""
    sources = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
    with open(os.path.join(sources, "app", "base", "RepositoryFileLimit.h")) as header:
        found = re.findall(r"^constexpr int (\w+) = (\d+) << (\d+);$", header.read(), re.M)
    return {name: int(number) << int(shift) for name, number, shift in found}


class Recording(object):
    """The recorded calls in order, and the prepared answers.

    calls    list of (function, values that the program reads from the arguments)
    answers  the results of userconfirm, in order; if no answer is left, userconfirm raises an exception
    faults   the exceptions that calls have raised; they are recorded because dnf suppresses some of them
    """

    def __init__(self):
        self.calls = []
        self.answers = []
        self.faults = []
        self.before_answer = None
        self.module = types.ModuleType("yumIOC")
        for name in FORMATS:
            setattr(self.module, name, self._function(name))
        for name, value in limits().items():
            setattr(self.module, name, value)

    def _function(self, name):
        def function(*arguments):
            try:
                check(name, arguments)
                read = getattr(self, "_read_" + name, lambda *plain: plain)
                self.calls.append((name, read(*arguments)))
                return self._answer() if name == "userconfirm" else None
            except Exception as e:
                self.faults.append("%s%r: %r" % (name, arguments, e))
                raise

        return function

    def _answer(self):
        if self.before_answer is not None:
            self.before_answer()
        if not self.answers:
            raise AssertionError("unexpected question")
        return self.answers.pop(0)

    # The following functions read the same attributes of the arguments as the program does.

    def _read_listTransaction(self, transaction, items):
        read = []
        for item in items:
            read.append({
                "action": _integer(item.action), "reason": _integer(item.reason), "name": _text(item.name),
                "arch": _text(item.arch), "epoch": _integer(item.epoch), "version": _text(item.version),
                "release": _text(item.release), "from_repo": _text(item.from_repo)})
        return read

    def _read_reportDownloadSize(self, packages):
        return {_text(package.name): _integer(package.installsize) for package in packages}

    def _read_downloadRemotePayloads(self, payloads):
        for payload in payloads:
            _text(payload.pkg.arch)
            _text(str(payload))
            _integer(payload.download_size)
        return [_text(payload.pkg.name) for payload in payloads]

    @staticmethod
    def _size(payload):
        """The size of a payload, which for metadata is a floating-point number. The program accepts both types of
        numbers.
        """
        return int(payload.download_size)

    def _read_downloadProgress(self, payload, done):
        return type(payload).__name__, str(payload), self._size(payload), done

    def _read_downloadEnd(self, payload, status, message):
        if not (message is None or isinstance(message, str)):
            raise TypeError("message is %r" % (message,))
        return type(payload).__name__, str(payload), self._size(payload), status

    def _read_rpmtransInit(self, test):
        if not isinstance(test, bool):
            raise TypeError("test is %r" % (test,))
        return test

    def _read_rpmtransProgress(self, package, action, item_done, item_total, done, total):
        if not (1 <= action <= 11 or 101 <= action <= 103):
            raise ValueError("action %d is unknown" % action)
        _text(package.arch)
        for number in (item_done, item_total, done, total):
            if number is not None:
                _integer(number)
        return _text(package.name), action, done

    def _read_rpmtransScriptout(self, text):
        if text is not None:
            _check_text("rpmtransScriptout", text)
        return text

    # Queries

    def clear(self):
        del self.calls[:]

    def names(self):
        return [name for name, read in self.calls]

    def of(self, name):
        """For each call of this function, the values that the program reads from the arguments."""
        return [read for called, read in self.calls if called == name]

    def order(self, *leaving_out):
        """The names of the called functions, in order, except functions that only write to the log. Successive calls of
        the same function count as one call.
        """
        quiet = ("log", "errorlog", "stdoutWrite", "stderrWrite") + leaving_out
        order = []
        for name, read in self.calls:
            if name not in quiet and order[-1:] != [name]:
                order.append(name)
        return order

    def listed(self):
        """The items of the newest listing, as {name-version-release.arch: (action, reason)}."""
        return {"%s-%s%s-%s.%s" % (item["name"], "%d:" % item["epoch"] if item["epoch"] else "", item["version"],
                                   item["release"], item["arch"]): (item["action"], item["reason"])
                for item in self.of("listTransaction")[-1]}

    def errors(self):
        """The errors and warnings in the log, except the message that dnf cannot read groups."""
        return [text for level, text in self.of("errorlog") if not text.startswith(WITHOUT_GROUPS)]

    def without_groups(self):
        """The levels of the messages that dnf cannot read groups."""
        return [level for name in ("log", "errorlog") for level, text in self.of(name)
                if text.startswith(WITHOUT_GROUPS)]

    def output(self):
        """The output of all scriptlets, as one text."""
        return "\n".join(text for text in self.of("rpmtransScriptout") if text is not None)

    def printed(self):
        return "".join(text for text, in self.of("stdoutWrite"))
