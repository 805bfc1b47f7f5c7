# SPDX-License-Identifier: GPL-2.0-or-later
"""Reads the advisories of the repositories: the advisories about all installed packages, or about one package. Workers
call this module. To describe a package, the graphical thread also calls it.
"""

import dnf.i18n
import dnf.package
import hawkey

from . import program
from .metadata import documentPath
from .updates import findUpdates
from .versionlock import versionLocks

# Selects all advisories about a package: those about its own version, about older versions and about newer versions.
ANY = hawkey.LT | hawkey.EQ | hawkey.GT

# POSSIBLE means that a package of an advisory can be marked for an update. Any other value is the reason why this is
# impossible. The program has the texts for these values.
POSSIBLE, INSTALLED, NOT_OFFERED, OLDER, LOCKED, EXCLUDED = range(6)


def haveAdvisories(base):
    """Whether any repository has advisories. If no repository has advisories, the script does not search the packages
    for advisories.
    """
    return any(documentPath(repo, 'updateinfo') for repo in base.repos.iter_enabled())


# Words -----------------------------------------------------------------------------------------------------

def words():
    """dnf's words for kinds and severities. To save time, call this function only if advisories exist, because it
    imports a dnf command.
    """
    from dnf.cli.commands.updateinfo import UpdateInfoCommand
    return UpdateInfoCommand


def kindOf(advisory):
    return words().TYPE2LABEL.get(advisory.type, dnf.i18n._('unknown'))


def labelOf(advisory):
    """The kind and severity of an advisory in one word, as in dnf's list."""
    if advisory.type != hawkey.ADVISORY_SECURITY:
        return kindOf(advisory)
    return words().SECURITY2LABEL.get(advisory.severity, dnf.i18n._('Unknown/Sec.'))


# The severities in ascending order. An unknown severity ranks below all of them.
SEVERITIES = ('Low', 'Moderate', 'Important', 'Critical')


def severityOf(advisory):
    """A pair: the severity in dnf's words, and its rank. If the advisory is not about security, the word is empty."""
    if advisory.type != hawkey.ADVISORY_SECURITY:
        return '', 0
    return labelOf(advisory), SEVERITIES.index(advisory.severity) + 2 if advisory.severity in SEVERITIES else 1


def references(advisory, kind):
    return sorted(set(reference.id for reference in advisory.references if reference.type == kind))


# The advisories of one package -------------------------------------------------------------------------------

class AdvisoryIndex:
    """The advisories by package name, for a search. Without this index, dnf would look through all advisories for each
    package.
    """

    def __init__(self):
        self.clear()

    def clear(self):
        self._byName = None
        self._installed = {}

    def load(self, base):
        found = {}
        self._installed = {}
        if haveAdvisories(base):
            words()
            # For each version of a package, the query finds the same advisories. So ask only about the latest version.
            for named in base.sack.query(flags=hawkey.IGNORE_EXCLUDES).latest().get_advisory_pkgs(ANY):
                found.setdefault(named.name, []).append(named)
            # Collect the installed packages here, with one query: a search asks about many packages, and a query for
            # each of them would look at all packages of the sack.
            for package in base.sack.query().installed():
                if package.name in found:
                    self._installed.setdefault((package.name, package.arch), []).append(package)
        self._byName = found

    def of(self, package):
        """The advisories about the version of a package. If an older version is installed, the result also contains the
        advisories about the versions between this older version and the version of the package.
        """
        if self._byName is not None and package.name not in self._byName:
            return []
        sack = package.base.sack
        if self._byName is None and not haveAdvisories(package.base):
            return []
        if self._byName is None:
            before = installedBefore(package)
        else:
            before = newestBefore(package, self._installed.get((package.name, package.arch), ()))

        def isAbout(named):
            if named.name != package.name or named.arch != package.arch:
                return False
            difference = sack.evr_cmp(named.evr, package.evr)
            return difference == 0 or before is not None and difference < 0 and sack.evr_cmp(named.evr, before.evr) > 0

        if self._byName is None:
            candidates = package.get_advisories(hawkey.EQ if before is None else hawkey.EQ | hawkey.LT)
            found = [advisory for advisory in candidates if any(isAbout(named) for named in advisory.packages)]
        else:
            found = [named.get_advisory(sack) for named in self._byName[package.name] if isAbout(named)]
        return newestFirst(found)


def newestFirst(advisories):
    """The advisories, the newest first, without duplicates: several repositories may have the same advisory."""
    found = {advisory.id: advisory for advisory in advisories}
    return sorted(found.values(), key=lambda advisory: (advisory.updated, advisory.id), reverse=True)


def installedBefore(package):
    """The newest installed version that is older than the available package; None if no older version is installed."""
    return newestBefore(package, package.base.sack.query().installed().filterm(name=package.name, arch=package.arch))


def newestBefore(package, installed):
    """The newest of these installed versions that is older than the available package; None if none is older."""
    if package._from_system:
        return None
    return max((each for each in installed if each.evr_lt(package)), default=None)


def advisoriesOf(package):
    """The text of the package's advisory field: a line for each advisory."""
    return '\n'.join('{} ({}): {}'.format(
        advisory.id, ', '.join([labelOf(advisory)] + references(advisory, hawkey.REFERENCE_CVE)), advisory.title or '')
        for advisory in package.base.advisories.of(package))


def advisoriesOfUpdates(base, updates):
    """Pairs: an update, and the identifiers of the advisories about all versions that are newer than the installed
    version, up to the version of the update. The newest advisory comes first.
    """
    byName = {}
    for update in updates:
        byName.setdefault(update.name, []).append(update)
    if not byName or not haveAdvisories(base):
        return []
    words()
    query = base.sack.query().installed().filterm(name=list(byName))
    named = {}
    for each in query.get_advisory_pkgs(hawkey.GT):
        named.setdefault((each.name, each.arch), []).append(each)
    # Look up the installed versions once, because each query of the sack would look at all packages.
    installed = {}
    for package in query:
        installed.setdefault((package.name, package.arch), []).append(package)
    pairs = []
    for update in updates:
        key = update.name, update.arch
        before = newestBefore(update, installed.get(key, ())) if key in named else None
        if before is not None:
            compare = base.sack.evr_cmp
            found = newestFirst(each.get_advisory(base.sack) for each in named[update.name, update.arch]
                                if compare(before.evr, each.evr) < 0 and compare(each.evr, update.evr) <= 0)
            if found:
                pairs.append((update, [advisory.id for advisory in found]))
    return pairs


# The advisories about installed packages -----------------------------------------------------------------------

def concerning(base):
    """Yields each package version that an advisory names, the advisory, and whether this version or a newer one is
    installed. Packages without any installed version are left out, as in "dnf updateinfo list --all". Unlike this
    command, the function includes packages that the configuration excludes: they may have security faults too.
    """
    installed = base.sack.query(flags=hawkey.IGNORE_EXCLUDES).installed()
    newest = {}
    for package in installed:
        if package.name not in newest or package.evr_gt(newest[package.name]):
            newest[package.name] = package
    newest = {name: package.evr for name, package in newest.items()}
    for named in installed.get_advisory_pkgs(ANY):
        yield named, named.get_advisory(base.sack), base.sack.evr_cmp(newest[named.name], named.evr) >= 0


def collectAdvisories(base):
    """The advisories about installed packages, as tuples for the program."""
    if not haveAdvisories(base):
        return []
    obstacles = Obstacles(base)
    found, packages = {}, {}
    for named, advisory, installed in concerning(base):
        found.setdefault(advisory.id, advisory)
        key = named.name, named.arch, named.evr
        if key not in packages.setdefault(advisory.id, {}):
            packages[advisory.id][key] = key + ((INSTALLED, '') if installed else obstacles.of(named))
    return [(advisory.id, kindOf(advisory), advisory.type == hawkey.ADVISORY_SECURITY) + severityOf(advisory) + (
        str(advisory.updated.date()), advisory.title or '', advisory.description or '',
        references(advisory, hawkey.REFERENCE_CVE), bugsOf(advisory),
        [packages[advisory.id][key] for key in sorted(packages[advisory.id])])
        for advisory in newestFirst(found.values())]


def bugsOf(advisory):
    """An advisory's bugs with their titles, as in "dnf updateinfo info"."""
    return sorted(set('{} - {}'.format(reference.id, reference.title) if reference.title else reference.id
                      for reference in advisory.references if reference.type == hawkey.REFERENCE_BUGZILLA))


class Obstacles:
    """Finds the obstacles to the updates that advisories ask for."""

    def __init__(self, base):
        self._base = base
        self._offered = {}
        for update in findUpdates(base)[0]:
            self._offered.setdefault((update.name, update.arch), update.evr)
        locks = versionLocks(base)
        self._locked = set() if locks is None else set(locks[1])

    def of(self, named):
        """The obstacle to the update that the advisory names, and the version of the offered update."""
        offered = self._offered.get((named.name, named.arch))
        if offered is not None:
            return (OLDER if self._base.sack.evr_cmp(offered, named.evr) < 0 else POSSIBLE), offered
        if named.name in self._locked:
            return LOCKED, ''
        hidden = self._base.sack.query(flags=hawkey.IGNORE_EXCLUDES).available().filterm(
            name=named.name, arch=named.arch, evr__gte=named.evr)
        return (EXCLUDED if hidden else NOT_OFFERED), ''


program.replace(dnf.package.Package, 'advisories', property(advisoriesOf))
