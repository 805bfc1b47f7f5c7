# SPDX-License-Identifier: GPL-2.0-or-later
"""A stand-in for the script. It reads its answers from files, and needs no package manager."""
import bdb  # noqa: F401  (looked up by name)
import datetime
import json
import os
import sys
import time
import types

import rpm
import yumIOC

SHARE = os.environ['VYRESHARE']


def note(name):
    with open(os.path.join(SHARE, 'calls'), 'a') as calls:
        calls.write(name + '\n')


def module(name, **members):
    made = types.ModuleType(name)
    made.__dict__.update(members)
    sys.modules[name] = made
    return made


class Failure(Exception):
    pass


class Payload:
    pass


dnf = module('dnf', __version__='4.0.0',
             exceptions=module('dnf.exceptions', Error=Failure, MiscError=type('MiscError', (Failure,), {}),
                               RepoError=type('RepoError', (Failure,), {}),
                               LockError=type('LockError', (Failure,), {})),
             drpm=module('dnf.drpm', DeltaPayload=Payload),
             repo=module('dnf.repo', MDPayload=Payload, RPMPayload=Payload))


class Package:

    # The default values of attributes that the test does not set.
    arch = 'x86_64'
    epoch = 0
    version = '1'
    release = '1'
    repoid = 'base'
    size = 1000
    buildtime = 0
    installtime = 0
    summary = group = description = vendor = buildhost = sourcerpm = license = packager = url = advisories = \
        modulestreams = ''
    provides = requires = requires_pre = conflicts = obsoletes = recommends = suggests = supplements = enhances = ()
    files = ()
    changelogs = ()

    def __init__(self, attributes):
        self.__dict__.update(attributes)
        if 'prefixes' in attributes:
            self.hdr = {rpm.RPMTAG_PREFIXES: attributes['prefixes']}
        if 'changelogs' in attributes:
            self.changelogs = [{'timestamp': datetime.datetime(2020, 1, 2), 'author': author, 'text': text}
                               for author, text in attributes['changelogs']]


class WaitingPackage(Package):
    """A package whose change log exists only after the test calls letChangeLogsBeRead(). The test runs on the graphical
    thread. If the program blocks this thread while it reads the change log, the test cannot call the function.
    """

    @property
    def changelogs(self):
        for _ in range(600):
            if os.path.exists(os.path.join(SHARE, 'readable')):
                return [{'timestamp': datetime.datetime(2020, 1, 2), 'author': 'Me', 'text': 'at last'}]
            time.sleep(0.05)
        return []

    @changelogs.setter
    def changelogs(self, _):
        pass


class LockedPackage(Package):
    """A package without a change log. When the change log is read, the script waits for a lock until the program ends
    the wait.
    """

    @property
    def changelogs(self):
        while waitForLock('Waiting for another program'):  # noqa: F821  (the program offers it)
            time.sleep(0.05)
        waitForLock(None)  # noqa: F821
        return []

    @changelogs.setter
    def changelogs(self, _):
        pass


class WatchedPackage(Package):
    """A package that notes each time the program reads its description. The program's records do not store the
    description, because no column shows it. So only a search or an open description dialog reads it.
    """

    @property
    def description(self):
        note('description')
        return ''


class Member:

    def __init__(self, name):
        self.name = name

    def __str__(self):
        return self.name


class Group:

    LISTS = ('mandatory_packages', 'default_packages', 'optional_packages', 'conditional_packages')

    def __init__(self, attributes):
        self.name = self.id = attributes['name']
        self.installed = attributes.get('installed', False)
        self.uservisible = True
        for name in self.LISTS:
            setattr(self, name, [Member(member) for member in attributes.get(name, ())])


class History:
    """A stand-in for dnf's history and for its "group" object."""

    def __init__(self):
        self.group = self
        self.installed = set()

    def get(self, id):
        return id if id in self.installed else None


class YumIO:

    def __init__(self):
        if os.path.exists(os.path.join(SHARE, 'refusing')):
            raise SystemExit('The stand-in refuses.')
        self.base = types.SimpleNamespace(repos={'base': types.SimpleNamespace(enabled=1),
                                                 'extras': types.SimpleNamespace(enabled=1)}, history=History(),
                                          conf=types.SimpleNamespace(basearch='x86_64', arch='x86_64_v2',
                                                                     releasever='39'))

    def __getattribute__(self, name):
        """Note the name of each method that the program looks up: the program looks up a method only to call it."""
        value = object.__getattribute__(self, name)
        unnoted = ('getBiArch', 'isBetterThan', 'readOutcome', 'restriction', 'versionLocks', 'wait')
        if callable(value) and name not in unnoted:
            note(name)
        return value

    def nothing(self, *_):
        return True

    lock = unlock = reset = collectDone = collectOtherData = nothing
    cleanDbcache = cleanPackages = cleanMetadata = cleanAll = nothing

    def enableRepo(self, id):
        note('enableRepo ' + id)

    def disableRepo(self, id):
        note('disableRepo ' + id)

    def apply(self, installs, updates, removes, *groups):
        """Note the packages, ask for confirmation, and begin the change. The test can set a failure before the change
        or after it has begun.
        """
        note('apply {} {} {}'.format(*(','.join(sorted(package.name for package in packages)) or '-'
                                       for packages in (installs, [pair[0] for pair in updates], removes))))
        self.outcome = None
        self.outdated = os.path.exists(os.path.join(SHARE, 'outdated'))
        if self.outdated:
            raise Failure('somebody else was here')
        yumIOC.listTransaction(None, [])
        if not yumIOC.userconfirm():
            return
        if os.path.exists(os.path.join(SHARE, 'failing')):
            raise RuntimeError('too early')
        if os.path.exists(os.path.join(SHARE, 'downloading')):
            self.outcome = self.readOutcome()
            note('downloading')
            while not stopWanted(False):  # noqa: F821  (the program offers it)
                time.sleep(0.01)
            raise dnf.exceptions.Error('interrupted')
        yumIOC.rpmtransInit(False)
        while os.path.exists(os.path.join(SHARE, 'held')):
            time.sleep(0.01)
        self.outcome = self.readOutcome()
        if os.path.exists(os.path.join(SHARE, 'breaking')):
            raise RuntimeError('half way')

    def readOutcome(self):
        """The outcome in outcome.json; None if this file is missing."""
        try:
            with open(os.path.join(SHARE, 'outcome.json')) as outcome:
                return json.load(outcome)
        except FileNotFoundError:
            return None

    def collectAdvisories(self):
        """The advisories in advisories.json; none if this file is missing."""
        self.wait()
        try:
            with open(os.path.join(SHARE, 'advisories.json')) as advisories:
                found = json.load(advisories)
            return [tuple(each[:-1]) + ([tuple(package) for package in each[-1]],) for each in found]
        except FileNotFoundError:
            return []

    @property
    def updateAdvisories(self):
        """Pairs of an update and the value of its "advised" attribute."""
        return [(update, update.advised) for update in self._packages('updates') if hasattr(update, 'advised')]

    def versionLocks(self):
        """The values in locks.json: the reason why the locks cannot be changed, and the lines that lock packages. None
        if this file is missing.
        """
        try:
            with open(os.path.join(SHARE, 'locks.json')) as locks:
                return tuple(json.load(locks))
        except FileNotFoundError:
            return None

    def lockVersions(self, packages):
        note('lockVersions ' + ','.join(sorted(package.name for package in packages)))
        self.wait()
        if os.path.exists(os.path.join(SHARE, 'failing')):
            raise Failure('it cannot be locked')

    def unlockVersions(self, packages):
        note('unlockVersions ' + ','.join(sorted(package.name for package in packages)))

    def transactions(self):
        """Three or 5,000 transactions. While the test holds the script, this method waits."""
        self.wait()
        if os.path.exists(os.path.join(SHARE, 'nohistory')):
            raise Failure('the history is broken')
        if os.path.exists(os.path.join(SHARE, 'long')):
            return [(number, 1400000000 + number, 'root', 'dnf install p{}'.format(number), 'Install: 3',
                     'p{}'.format(number), 0, 0) for number in range(5000, 0, -1)]
        return [(3, 1700000000, 'root', 'vyre: install editor', 'Install: editor', 'editor', 2, 0),
                (2, 1600000000, 'me', 'dnf upgrade', 'Upgrade: 12', 'tool many', 1, 3),
                (1, 1500000000, 'System <unset>', '', 'Install: 100', 'shell', 0, 0)]

    def describeTransaction(self, number):
        self.wait()
        note('describeTransaction {}'.format(number))
        return 'Details of {}\n<b>not bold</b>'.format(number)

    def restriction(self):
        restricted = os.path.exists(os.path.join(SHARE, 'restricted'))
        return 'VYRE cannot change packages while the file system of /db is read-only' if restricted else ''

    def lacksReplay(self):
        return 'Not with this version.' if os.path.exists(os.path.join(SHARE, 'noreplay')) else ''

    def replay(self, kind, number):
        """Note the transaction, ask for confirmation, and begin the change. While the test holds the script, this
        method waits.
        """
        note('replay {} {}'.format(kind, number))
        self.outcome = None
        self.wait()
        yumIOC.listTransaction(None, [])
        if yumIOC.userconfirm():
            yumIOC.rpmtransInit(False)
            self.outcome = self.readOutcome()

    def wait(self):
        while os.path.exists(os.path.join(SHARE, 'held')):
            if stopWanted(False):  # noqa: F821  (the program offers it)
                raise dnf.exceptions.RepoError('interrupted')
            time.sleep(0.01)

    def collectFileLists(self):
        self.wait()
        return True

    def setupRepos(self):
        if os.path.exists(os.path.join(SHARE, 'complaining')):
            yumIOC.errorlog(1, 'a repository cannot be reached')
        self.skippedRepos = []
        if os.path.exists(os.path.join(SHARE, 'skipping')):
            with open(os.path.join(SHARE, 'skipping')) as skipped:
                self.skippedRepos = skipped.read().split()
        if os.path.exists(os.path.join(SHARE, 'unreadable')):
            raise RuntimeError('nothing can be read')
        self.wait()
        if os.path.exists(os.path.join(SHARE, 'lacking')):
            for others, id in ((1, 'base'), (0, 'extras')):
                if not goOnWithout(id, id + ' is away', others):  # noqa: F821
                    raise dnf.exceptions.RepoError(id + ' is away')
        self.setupCachedRepos()

    def setupCachedRepos(self):
        if os.path.exists(os.path.join(SHARE, 'unreadable')):
            raise RuntimeError('nothing can be read')
        with open(os.path.join(SHARE, 'packages.json')) as packages:
            self.packages = json.load(packages)

    def _packages(self, which):
        def kind(attributes):
            kinds = {'locked': LockedPackage, 'waiting': WaitingPackage, 'watched': WatchedPackage}
            return next((kinds[name] for name in kinds if name in attributes), Package)
        return [kind(attributes)(attributes)
                for attributes in self.packages[which]]

    def collectUpdates(self):
        return self._packages('updates')

    def collectAll(self):
        return types.SimpleNamespace(installed=self._packages('installed'),
                                     available=self._packages('available'))

    def collectGroups(self):
        groups = [Group(attributes) for attributes in self.packages['groups']]
        self.base.history.installed = set(group.id for group in groups if group.installed)
        return groups

    @property
    def replacements(self):
        """Pairs of an installed package and the package that replaces it. The "replaced" attribute of the new package
        names the installed package.
        """
        news = [new for new in self._packages('updates') + self._packages('available') if hasattr(new, 'replaced')]
        return [(old, new) for new in news for old in self._packages('installed') if new.replaced == old.name]

    def getBiArch(self, arch):
        return 'i386' if arch == 'i686' else 'x86_64'

    def isLocal(self, package):
        return package.repoid == 'local'

    def isBetterThan(self, a, b):
        return a.arch != 'i686'
