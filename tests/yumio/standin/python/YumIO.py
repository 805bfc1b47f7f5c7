# SPDX-License-Identifier: GPL-2.0-or-later
"""A stand-in for the script and for dnf. The test sets its data and its behaviour.

The object of the class YumIO is also the global "it". The object records the calls of its methods. If "raises" has an
exception for the name of a method, the method raises this exception. If "does" has a function for the name, the method
calls this function. Otherwise the method returns its usual answer.
"""

import datetime
import sys

import bdb
import dnf
import dnf.drpm
import dnf.exceptions
import dnf.repo
import rpm

import yumIOC


class Writer:
    def __init__(self, write):
        self.write = write

    def flush(self):
        pass


class Thing:
    """An object with the given attributes."""

    def __init__(self, **attributes):
        self.__dict__.update(attributes)


class Package(Thing):
    def __init__(self, name, version='1.0', arch='x86_64', repo='main', **attributes):
        Thing.__init__(self, name=name, version=version, arch=arch, repoid=repo)
        self.epoch = 0
        self.release = '1'
        self.size = 20000
        self.summary = 'The package ' + name
        self.description = 'All about ' + name + '\n\n'
        self.group = 'Applications/Testing'
        self.buildtime = 86400
        self.installtime = 172800
        self.vendor = 'Vendor'
        self.buildhost = 'host.example'
        self.sourcerpm = name + '.src.rpm'
        self.license = 'MIT'
        self.packager = 'Packager'
        self.url = 'https://example.org/' + name
        self.advisories = ''
        self.modulestreams = ''
        self.__dict__.update(attributes)


class Member(Thing):
    def __init__(self, name):
        Thing.__init__(self, name=name)

    def __str__(self):
        return 'member ' + self.name


class Group(Thing):
    def __init__(self, name, id, mandatory=(), default=(), optional=(), conditional=(), **attributes):
        Thing.__init__(self, name=name, id=id, uservisible=True)
        self.mandatory_packages = [Member(each) for each in mandatory]
        self.default_packages = [Member(each) for each in default]
        self.optional_packages = [Member(each) for each in optional]
        self.conditional_packages = [Member(each) for each in conditional]
        self.__dict__.update(attributes)


class History:
    def __init__(self):
        self.group = self
        self.installed = {}

    def get(self, id):
        return self.installed.get(id)


def item(action, name, reason=0, **attributes):
    """An item of a transaction."""
    values = dict(action=action, reason=reason, name=name, arch='x86_64', epoch=0, version='1.0', release='1',
                  from_repo='main')
    values.update(attributes)
    return Thing(**values)


class YumIO:
    def __init__(self):
        global it
        it = self
        sys.stdout = Writer(yumIOC.stdoutWrite)
        sys.stderr = Writer(yumIOC.stderrWrite)
        self.setUp()

    def setUp(self):
        """Set the initial state for a test: one enabled repository without packages."""
        self.calls = []
        self.raises = {}
        self.does = {}
        self.updates = []
        self.counterparts = []
        self.installed = []
        self.available = []
        self.groups = []
        self.locks = None
        self.updateAdvisories = []
        self.base = BASE
        BASE.repos = {'main': Thing(enabled=1)}
        BASE.conf = Thing(basearch='x86_64')
        BASE.history = History()

    def did(self, name):
        return [call[1:] for call in self.calls if call[0] == name]

    def _called(self, name, *args, answer=None):
        self.calls.append((name,) + args)
        if name in self.raises:
            raise self.raises[name]
        if name in self.does:
            return self.does[name](*args)
        return answer

    def lock(self):
        return self._called('lock')

    def unlock(self):
        return self._called('unlock')

    def reset(self):
        return self._called('reset')

    def enableRepo(self, id):
        return self._called('enableRepo', id)

    def disableRepo(self, id):
        return self._called('disableRepo', id)

    def setupRepos(self):
        return self._called('setupRepos')

    def setupCachedRepos(self):
        return self._called('setupCachedRepos')

    def collectUpdates(self):
        return self._called('collectUpdates', answer=self.updates)

    def collectAll(self):
        return self._called('collectAll', answer=Thing(installed=self.installed, available=self.available))

    def collectGroups(self):
        return self._called('collectGroups', answer=self.groups)

    def collectDone(self):
        return self._called('collectDone')

    def collectFileLists(self):
        return self._called('collectFileLists', answer=True)

    def collectOtherData(self):
        return self._called('collectOtherData', answer=True)

    def isBetterThan(self, a, b):
        return self._called('isBetterThan', a, b, answer=a.arch == 'x86_64')

    def getBiArch(self, arch):
        return {'noarch': 'x86_64', 'i686': 'i386', 'i586': 'i386'}.get(arch, arch)

    def verifyLocalPkg(self, package):
        return self._called('verifyLocalPkg', package, answer=False)

    def isLocal(self, package):
        return self._called('isLocal', package.repoid, answer=False)

    def collectAdvisories(self):
        return self._called('collectAdvisories', answer=[])

    def loadAdvisories(self):
        return self._called('loadAdvisories')

    def forgetAdvisories(self):
        return self._called('forgetAdvisories')

    def versionLocks(self):
        return self.locks

    def lockVersions(self, packages):
        return self._called('lockVersions', [package.name for package in packages], answer=True)

    def unlockVersions(self, packages):
        return self._called('unlockVersions', [package.name for package in packages], answer=True)

    def apply(self, *lists):
        return self._called('apply', *lists, answer=True)

    def transactions(self):
        return self._called('transactions', answer=[])

    def describeTransaction(self, number):
        return self._called('describeTransaction', number, answer='')

    def lacksReplay(self):
        return self._called('lacksReplay', answer='')

    def replay(self, kind, number):
        return self._called('replay', kind, number, answer=True)

    def cleanDbcache(self):
        return self._called('cleanDbcache', answer=True)

    def cleanPackages(self):
        return self._called('cleanPackages', answer=True)

    def cleanMetadata(self):
        return self._called('cleanMetadata', answer=True)

    def cleanAll(self):
        return self._called('cleanAll', answer=True)


# When the back end starts, it stores this object. So tests may change the object, but must not replace it.
BASE = Thing()
