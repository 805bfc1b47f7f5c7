# SPDX-License-Identifier: GPL-2.0-or-later
"""The marks of a transaction, and the functions that add them to dnf's goal.

The worker that applies the marks runs this module.
"""

import dnf.exceptions
import dnf.selector

from .program import tr


class Marks:
    """The marked packages and groups: objects that the script's collectUpdates() and similar methods have returned."""

    def __init__(self, installs=(), updates=(), removes=(), groupInstalls=(), groupUpdates=(), groupRemoves=()):
        self.installs = list(installs)
        self.updates = list(updates)
        self.removes = list(removes)
        self.groupInstalls = list(groupInstalls)
        self.groupUpdates = list(groupUpdates)
        self.groupRemoves = list(groupRemoves)

    def newVersions(self):
        """The new package of each marked update, without duplicates. Each pair in self.updates begins with the new
        package.
        """
        seen = {}
        for new, _ in self.updates:
            seen.setdefault(new, new)
        return list(seen.values())

    def objects(self):
        """All marked packages and groups."""
        return (self.newVersions() + self.installs + self.removes + self.groupInstalls + self.groupUpdates
                + self.groupRemoves)

    def isChanging(self):
        return bool(self.installs or self.updates or self.groupInstalls or self.groupUpdates)

    def isRemoving(self):
        return bool(self.removes or self.groupRemoves)

    def hasGroups(self):
        return bool(self.groupInstalls or self.groupUpdates)

    def isEmpty(self):
        return not self.isChanging() and not self.isRemoving()

    # The largest number of names that inShort() returns.
    SHOWN = 6

    def inShort(self):
        """The names of the marked packages and groups in one line, for a question. If the line would have more than
        SHOWN names, it ends with the number of the names that it leaves out.
        """
        objects = self.newVersions() + self.installs + self.removes
        names = sorted(set(package.name for package in objects))
        names += sorted(str(group) for group in self.groupInstalls + self.groupUpdates + self.groupRemoves)
        names = [' '.join(name.split()) for name in names]
        if len(names) <= self.SHOWN:
            return ', '.join(names)
        return tr('{} and {} more').format(', '.join(names[:self.SHOWN - 1]), len(names) - self.SHOWN + 1)

    def removals(self):
        return Marks(removes=self.removes, groupRemoves=self.groupRemoves)

    def without(self, objects):
        unwanted = set(id(each) for each in objects)

        def wanted(each):
            return id(each) not in unwanted

        return Marks(filter(wanted, self.installs), [pair for pair in self.updates if wanted(pair[0])],
                     *(filter(wanted, each) for each in (self.removes, self.groupInstalls, self.groupUpdates,
                                                         self.groupRemoves)))


class Judged(Exception):
    """Raised by a judge to end a resolution whose transaction is not needed; see Base.resolveIf()."""


def markAll(base, marks, strict=True):
    """Add the marks to dnf's goal. If strict is true, one impossible mark makes the whole goal unsolvable. If strict is
    false, dnf leaves out impossible installations and updates.
    """
    for package in marks.removes:
        base.goal.erase(package, clean_deps=base.conf.clean_requirements_on_remove)
    versions = installedVersions(base) if marks.installs or marks.updates else {}
    for package in marks.installs:
        markInstallation(base, package, versions, strict)
    for package in marks.newVersions():
        markUpdate(base, package, versions, strict)
    strict = strict and base.conf.strict
    for group in marks.groupInstalls:
        base.group_install(group.id, list(base.conf.group_package_types), strict=strict)
    for group in marks.groupUpdates:
        if base.history.group.get(group.id) is not None:
            base.group_upgrade(group.id)
        else:
            upgradeMembers(base, group)
    for group in marks.groupRemoves:
        base.group_remove(group.id)


# package_install() and package_upgrade() of dnf search all packages for each mark, so a few hundred marks would take
# seconds. The functions below call them only if dnf may refuse the mark.

def installedVersions(base):
    """A dictionary from names to lists of the installed packages with this name."""
    found = {}
    for package in base.sack.query().installed():
        found.setdefault(package.name, []).append(package)
    return found


def markInstallation(base, package, versions, strict):
    if any(str(version) == str(package) for version in versions.get(package.name, [])):
        base.package_install(package, strict=strict)
    else:
        demand(base, package, strict)


def markUpdate(base, package, versions, strict):
    """Add exactly this version of the package to dnf's goal. If dnf cannot install this version, dnf must not choose
    another version: the user must see the reason.
    """
    replaced = [version for version in versions.get(package.name, [])
                if package.arch == 'noarch' or version.arch in (package.arch, 'noarch')]
    if not replaced or max(replaced) >= package:
        if not base.package_upgrade(package):
            raise dnf.exceptions.MarkingError(tr('{} is not newer than the installed version.').format(package))
    demand(base, package, strict)


def demand(base, package, strict):
    selector = dnf.selector.Selector(base.sack)
    selector.set(pkg=[package])
    base.goal.install(select=selector, optional=not strict)


def upgradeMembers(base, group):
    """Upgrade the installed members of a group that dnf has not recorded as installed."""
    names = [package.name for package in group.mandatory_packages + group.default_packages]
    installed = base.sack.query().installed().filter(name=names)
    for name in sorted(set(package.name for package in installed)):
        base.upgrade(name)
