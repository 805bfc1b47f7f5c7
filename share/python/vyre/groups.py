# SPDX-License-Identifier: GPL-2.0-or-later
"""Groups of packages, the records of installed groups, and a check whether dnf can read groups.

The worker that collects the groups runs this module.
"""

import functools
import logging

import dnf.comps
import dnf.db.group
import dnf.db.history
import libcomps

from .metadata import UNPACKING_ERRORS, canUnpack, unpacked
from .output import HARMLESS
from .program import tr


class GroupPackage:
    """A member of a group."""

    def __init__(self, name):
        self.name = name

    def __str__(self):
        return self.name


class Group:
    """A group of packages with fixed lists of members. dnf's group objects make a new list on every access, and str()
    of a member does not return the member's name.
    """

    def __init__(self, group):
        self.id = group.id
        self.name = group.name
        self.uservisible = group.uservisible
        self.mandatory_packages = self._members(group.mandatory_packages)
        self.default_packages = self._members(group.default_packages)
        self.optional_packages = self._members(group.optional_packages)
        self.conditional_packages = self._members(group.conditional_packages)

    def __str__(self):
        return self.name

    def names(self, *types):
        """The names of the members of these types, without conditional members."""
        return [package.name for type in types if type in ('mandatory', 'default', 'optional')
                for package in getattr(self, type + '_packages')]

    @staticmethod
    def _members(packages):
        return [GroupPackage(package.name) for package in packages]


class GroupRecords(dnf.db.group.GroupPersistor):
    """The records of installed groups in dnf's history.

    The script calls get() for every group of the repositories. For each call, dnf's own class searches the whole
    history, which takes 12 ms if the history contains 5,000 transactions. This class reads the records of all installed
    groups at the first call, and keeps the records until dnf closes the history or changes it.
    """

    def __init__(self, history):
        super(GroupRecords, self).__init__(history)
        self._records = None

    def get(self, obj_id):
        if self._records is None:
            found = [item.getCompsGroupItem() for item in self.search_by_pattern('%')]
            self._records = {group.getGroupId(): group for group in found}
        return self._records.get(obj_id)

    def forget(self):
        self._records = None


class History(dnf.db.history.SwdbInterface):
    """dnf's history, which reads the records of installed groups only once; see GroupRecords."""

    @property
    def group(self):
        if self._group is None:
            self._group = GroupRecords(self)
        return self._group

    def end(self, *args, **kwargs):
        super(History, self).end(*args, **kwargs)
        self.group.forget()


class GeneratorProbe:
    """An iterator that counts the calls of its __iter__() method."""

    asked = 0

    def __iter__(self):
        self.asked += 1
        return self

    def __next__(self):
        raise StopIteration


@functools.lru_cache(maxsize=None)
def groupsCanBeRead():
    """Whether dnf can read lists of groups.

    dnf reads the lists with generators. Some versions of Python call iter() for the list, and then iter() for the
    iterator that the first call returns. Some versions of libcomps, such as the version in Debian 13, treat that
    iterator as a list. Then dnf finds no groups, or the process crashes. iter(iterator) below cannot cause a crash,
    because the list has only one group, and nothing reads the result.
    """
    probe = GeneratorProbe()
    list(each for each in probe)
    if probe.asked == 1:
        return True
    group = libcomps.Group()
    group.id = 'probe'
    comps = libcomps.Comps()
    comps.groups.append(group)
    iterator = iter(comps.groups)
    try:
        return iter(iterator) is iterator
    except TypeError:
        return False


class WithoutGroups(dnf.comps.Comps):
    """Replaces dnf's collection of groups on a system where dnf cannot read groups. This replacement contains no
    groups.
    """

    def __len__(self):
        return 0

    def categories_iter(self):
        return iter(())

    def environments_iter(self):
        return iter(())

    def groups_iter(self):
        return iter(())


def checkGroups(base, repo):
    """If a repository's group list cannot be unpacked, ignore the groups of this repository. Otherwise dnf would not
    read the group lists of the other repositories either.
    """
    path = repo._repo.getCompsFn() if repo.enablegroups and repo.metadata else ''
    if not path or not canUnpack(path):
        return
    try:
        for _ in unpacked(path):
            pass
    except UNPACKING_ERRORS as e:
        base.remark(tr('The group metadata of the repository {} are damaged: {}\n'
                       'VYRE does not list the groups of this repository.')
                    .format(repo.id, e))
        repo.enablegroups = False


def reportUnreadable(base):
    """If an enabled repository has groups, log that VYRE cannot read them. Return whether a repository has groups."""
    found = any(repo.enablegroups and repo.metadata and repo._repo.getCompsFn() for repo in base.repos.iter_enabled())
    if found:
        logging.getLogger('dnf').warning('%s', tr(
            'VYRE cannot read groups of packages on this system, because the installed libcomps does not work with '
            'the installed version of Python. VYRE lists no groups. Everything else works.'), extra={HARMLESS: True})
    return found
