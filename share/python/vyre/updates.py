# SPDX-License-Identifier: GPL-2.0-or-later
"""Finds the updates, and the packages that replace installed packages with other names.

The worker that collects the packages runs this module.
"""

import dnf.rpm
import hawkey


def biArchOf(base, arch):
    """The bi-arch class of an architecture: the common name of all architectures that replace each other.

    The class of "noarch" is the class of the system's architecture.
    """
    try:
        found = dnf.rpm.basearch(arch)
    except KeyError:  # dnf does not know the architecture
        return arch
    return base.conf.basearch if found == 'noarch' else found


def findUpdates(base):
    """Returns two lists: the updates, and the counterparts. A counterpart is a pair: an update, and an installed
    package of another bi-arch class that the update replaces.
    """
    query = base.sack.query()
    try:
        query.filterm(upgrades_by_priority=True)
    except (ValueError, hawkey.Exception):  # this version of dnf has no priorities
        query = query.upgrades()
    query.filterm(arch__neq=['src', 'nosrc'])
    return chooseUpdates(base, withoutExcluded(base, query.latest().run()))


def withoutExcluded(base, updates):
    """The updates that dnf would install: dnf does not update an installed package that the configuration excludes."""
    excluded = set(package.name for package in excludedPackages(base))
    if not excluded:
        return updates
    seen = base.sack.query().installed().filterm(name=sorted(excluded)).run()
    names = set(package.name for package in seen)
    exact = set((package.name, package.arch) for package in seen)
    return [package for package in updates if package.name not in excluded or
            (package.name, package.arch) in exact or (package.name, 'noarch') in exact or
            (package.arch == 'noarch' and package.name in names)]


def excludedPackages(base):
    """The installed packages that the configuration excludes."""
    everything = base.sack.query(flags=hawkey.IGNORE_EXCLUDES).installed()
    return everything.difference(base.sack.query().installed())


def chooseUpdates(base, updates):
    """Returns the updates that "dnf upgrade NAME" would install, and the counterparts (see findUpdates()).

    If an installed package is "noarch", dnf's query returns an update for each architecture. Only one of these updates
    replaces the installed package.
    """
    counterparts = []
    candidates = {}
    for package in updates:
        candidates.setdefault(package.name, []).append(package)
    if not candidates:
        return updates, counterparts
    installed = {}
    for package in base.sack.query().installed().filterm(name=list(candidates)):
        installed.setdefault(package.name, []).append(package)
    chosen = []
    for name, news in candidates.items():
        olds = installed.get(name, [])
        archs = set(package.arch for package in news + olds)
        # A choice is necessary only if some of these packages are "noarch" and others are not.
        if 'noarch' in archs and len(archs) > 1:
            pairs = replacementPairs(base, news, olds)
            news = [new for new in news if any(new is each for each, old in pairs)]
            counterparts += [(new, old) for new, old in pairs
                             if biArchOf(base, new.arch) != biArchOf(base, old.arch)]
        chosen += news
    return chosen, counterparts


def replacementPairs(base, news, olds):
    """Pairs of a new package and the installed package that it replaces. news, olds: new and installed packages of one
    name. Like dnf's resolver, the function decides first by the bi-arch class, then by the version.
    """
    pairs = []
    for old in olds:
        new = newestOf(base, [new for new in news if new.evr_cmp(old) > 0 and
                              (new.arch == old.arch or 'noarch' in (new.arch, old.arch))])
        if new is not None:
            pairs.append((new, old))
    if len(set(new.arch == 'noarch' for new, old in pairs)) > 1:
        # A "noarch" package and a package of the same name with an architecture cannot both be installed.
        others = [(newestOf(base, [new for new in news if new.arch == old.arch and new.evr_cmp(best) == 0]), old)
                  for best, old in pairs]
        if all(new is not None for new, old in others):
            return others
        pairs = [(new, old) for new, old in pairs if new.arch == 'noarch']
    if any(new.arch == 'noarch' for new, old in pairs):
        # A "noarch" package replaces all installed packages of its name.
        return [(pairs[0][0], old) for old in olds]
    return pairs


def newestOf(base, packages):
    classes = set(biArchOf(base, package.arch) for package in packages if package.arch != 'noarch')
    native = base.conf.basearch
    best = None
    for package in packages:
        if package.arch != 'noarch' and native in classes and biArchOf(base, package.arch) != native:
            continue
        # If several packages have the same version, choose the first of them, as dnf's resolver does.
        if best is None or package.evr_cmp(best) > 0:
            best = package
    return best


def findReplacements(base):
    """Pairs of an installed package and the package of another name that replaces it if dnf updates all packages.

    To save time, the function calls the resolver only if an available package obsoletes an installed package.
    """
    query = base.sack.query()
    if not base.conf.obsoletes or not query.available().filterm(obsoletes=query.installed()):
        return []
    base.reset(goal=True)
    try:
        base.upgrade_all()
        goal = base.goal
        goal.add_protected(base.sack.query().filterm(name=base.conf.protected_packages))
        if not any(goal.run(force_best=best, ignore_weak_deps=not base.conf.install_weak_deps)
                   for best in sorted({bool(base.conf.best), False}, reverse=True)):
            return []
        replaced = set(goal.list_obsoleted())
        return sorted((old, new) for new in goal.list_installs() + goal.list_upgrades()
                      for old in goal.obsoleted_by_package(new) if old in replaced and old.name != new.name)
    finally:
        base.reset(goal=True)
