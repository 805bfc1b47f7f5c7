# SPDX-License-Identifier: GPL-2.0-or-later
"""Finds the transaction for the marks, and the marks that cannot be carried out.

The worker that applies the marks runs this module.
"""

import contextlib
import copy
import sys

import dnf.exceptions
import dnf.transaction
import hawkey
import libdnf.transaction

from .listing import otherSections, refuseModuleSwitch
from .marks import Judged, Marks, installedVersions, markAll, markInstallation, markUpdate
from .output import showActivity
from .program import tr, yumIOC
from .reasons import clearest, nothingToDo, reasonsOf, refusal
from .stopping import endIfStopped
from .updates import findUpdates


def stepOfResolution():
    """The progress bar's text about the resolution of a transaction."""
    return tr('Resolve Dependencies')


def resolveMarks(base, marks):
    """Find the transaction for the marks. If some marks cannot be carried out, ask the user whether to leave them out.

    Return three values: the marks of the transaction, or None if the user refuses; the packages and groups that are
    left out; and a text with their names and the reasons.
    """
    rest, impossible, failure, problems = marks, [], None, []
    try:
        try:
            resolveAll(base, marks)
        except dnf.exceptions.MarkingError as e:
            failure = e
            impossible, problems = unmarkable(base, marks)
            rest = marks.without(impossible)
            if not impossible or rest.isEmpty():
                raise refusal(e, marks, impossible, problems)
            resolveAll(base, rest)
    except dnf.exceptions.MarkingError as again:
        raise refusal(again, marks, impossible, problems)
    except dnf.exceptions.DepsolveError as e:
        failure = failure or e
        problems += base.problems()
        showActivity(tr('Finding the marks that can be applied'))
        impossible += impossibleMarks(base, rest)
        rest = marks.without(impossible)
        if not impossible and not marks.hasGroups() or rest.isEmpty():
            raise refusal(failure, marks, impossible, problems)
        try:
            resolveAll(base, rest, strict=False)
        except dnf.exceptions.MarkingError as again:
            raise refusal(again, marks, impossible, problems)
        except dnf.exceptions.DepsolveError as again:
            problems += [lines for lines in base.problems() if lines not in problems]
            raise refusal(again, marks, impossible, problems)
    refuseModuleSwitch(base, rest.installs + rest.newVersions())
    lacking = missingMembers(base, rest)
    absent = missingMarks(base, rest)
    if lacking or absent:
        problems += [lines for lines in problemsOfTheBest(base, rest) if lines not in problems]
    impossible += absent
    rest = rest.without(absent)
    left = impossible + [package for group, package in lacking]
    if not base.items() and not (otherSections(base) or base.history.group or base.history.env):
        if left or failure is not None:
            raise refusal(failure, marks, left, problems)
        raise nothingToDo()
    if not left:
        return rest, [], ''
    text = reasonsOf(left, problems)
    yumIOC.gpgsigcheck()
    sys.stdout.write(tr('Go on without these packages?\n\n'
                        '"Yes" goes on with the remaining marks: {}.\nVYRE keeps the marks that cannot be applied.\n'
                        '"No" changes nothing. VYRE keeps all marks.\n\n'
                        '{}\n').format(rest.inShort(), text))
    if yumIOC.userconfirm() != 1:
        return None, [], ''
    return rest, impossible + [group for group, package in lacking], text


def resolveAll(base, marks, strict=True):
    """Find the transaction for these marks. strict: whether dnf must install all members of the marked groups."""
    best = base.conf.best
    base.reset(goal=True)
    try:
        if not strict and marks.hasGroups():
            base.conf.best = False
        if not marks.isRemoving():
            markAll(base, marks, strict or not marks.hasGroups())
            base.resolve()
        elif not marks.isChanging():
            with availableHidden(base):
                markAll(base, marks)
                base.resolve(allow_erasing=True)
        else:
            resolveWithRemovals(base, marks, strict)
    finally:
        base.conf.best = best


def resolveWithRemovals(base, marks, strict):
    """Find the transaction for marks that contain removals and other marks. A marked removal may also remove the
    packages that need the removed package. A marked installation or update must not remove a package.
    """
    dependents = set()

    def judge(goal):
        dependents.update(package for package in goal.list_erasures()
                          if goal.get_reason(package) == libdnf.transaction.TransactionItemReason_DEPENDENCY)
        if dependents:
            raise Judged()

    try:
        markAll(base, marks, strict)
        base.resolveIf(judge, True)
        return
    except Judged:
        pass
    # Without the marked installations and updates, dnf would remove the packages in `allowed`. The transaction must not
    # remove other packages.
    allowed = removedAlone(base, marks)
    unwanted = dependents - allowed
    base.reset(goal=True)
    markAll(base, marks, strict)
    if not unwanted:
        base.resolve(allow_erasing=True)
        return
    for package in dependents & allowed:
        base.goal.erase(package)
    base.resolve()
    for item in base.items():
        if item.action in dnf.transaction.BACKWARD_ACTIONS and item.pkg in dependents:
            item.reason = libdnf.transaction.TransactionItemReason_DEPENDENCY


def removedAlone(base, marks):
    """All packages that dnf would remove if only the removals were marked."""
    found = set()

    def judge(goal):
        found.update(goal.list_erasures())
        raise Judged()

    base.reset(goal=True)
    with availableHidden(base):
        markAll(base, marks.removals())
        try:
            base.resolveIf(judge, True)
        except Judged:
            pass
    return found


@contextlib.contextmanager
def availableHidden(base):
    """Within this scope, hides the available packages, so that the resolver cannot replace a removed package with an
    available one. The dnf command does the same for a removal.
    """
    names = [repo.id for repo in base.repos.iter_enabled()]
    hidden = []
    try:
        for name in names:
            try:
                base.sack.disable_repo(name)
                hidden.append(name)
            except (ValueError, hawkey.Exception):  # the repository is not in the sack, because dnf could not read it
                pass
        yield
    finally:
        for name in hidden:
            base.sack.enable_repo(name)


# The largest number of resolutions in impossibleRemovals().
ATTEMPTS = 40


def impossibleMarks(base, marks):
    """The marked packages and groups that must be left out so that dnf can carry out the other marks. If dnf finds no
    solution even without the impossible removals, the list contains only these removals.

    If every removal is possible, the number of resolutions does not depend on the number of marks.
    """
    impossible = impossibleRemovals(base, marks)
    marks = marks.without(impossible)
    if not marks.isChanging():
        return impossible
    removed = removedAlone(base, marks) if marks.isRemoving() else set()
    found = set()

    def judge(goal):
        for list in (goal.list_installs, goal.list_upgrades, goal.list_downgrades, goal.list_reinstalls):
            found.update(str(package) for package in list())
        raise Judged()

    base.reset(goal=True)
    best = base.conf.best
    try:
        base.conf.best = False
        markAll(base, marks, strict=False)
        for package in removed:
            base.goal.erase(package)
        base.resolveIf(judge, False)
    except Judged:
        pass
    except dnf.exceptions.DepsolveError:
        return impossible
    finally:
        base.conf.best = best
    return impossible + [package for package in marks.installs + marks.newVersions()
                         if str(package) not in found]


def unmarkable(base, marks):
    """Returns the packages that dnf refuses to add to its goal, and the reasons: a list of lines for each package."""
    found, reasons = [], []
    base.reset(goal=True)
    versions = installedVersions(base)
    for mark, packages in ((markInstallation, marks.installs), (markUpdate, marks.newVersions())):
        for package in packages:
            try:
                mark(base, package, versions, True)
            except dnf.exceptions.MarkingError as e:
                found.append(package)
                reasons.append([str(e) if str(package) in str(e) else '{}: {}'.format(package, e)])
    return found, reasons


def impossibleRemovals(base, marks):
    """The marked removals that are impossible because of protected or excluded packages.

    If two removals are possible separately, but not together, only the second is in the result. If the search needs
    more than ATTEMPTS resolutions, the result also contains all removals that are still undecided.
    """
    attempts = iter(range(ATTEMPTS))
    kept = Marks()

    def search(packages, groups):
        """Add the possible removals in these lists to "kept". Halve the lists until each impossible removal is found.
        Raise StopIteration after ATTEMPTS calls.
        """
        next(attempts)
        if canBeRemoved(base, Marks(removes=kept.removes + packages, groupRemoves=kept.groupRemoves + groups)):
            kept.removes += packages
            kept.groupRemoves += groups
            return
        names = sorted(set(package.name for package in packages))
        if len(names) + len(groups) == 1:
            return
        if groups and names:
            search(packages, [])
            search([], groups)
        elif groups:
            middle = len(groups) // 2
            search([], groups[:middle])
            search([], groups[middle:])
        else:
            first = set(names[:len(names) // 2])
            search([package for package in packages if package.name in first], [])
            search([package for package in packages if package.name not in first], [])

    if not marks.isRemoving():
        return []
    with availableHidden(base):
        try:
            search(list(marks.removes), list(marks.groupRemoves))
        except StopIteration:
            pass
    undone = marks.removals().without(kept.removes + kept.groupRemoves)
    return undone.removes + undone.groupRemoves


def canBeRemoved(base, marks):
    def judge(goal):
        raise Judged()

    base.reset(goal=True)
    markAll(base, marks)
    try:
        base.resolveIf(judge, True)
    except Judged:
        return True
    except dnf.exceptions.DepsolveError:
        return False
    return True


def missingMarks(base, marks):
    """The packages that are marked for installation or update, but missing in the transaction. If groups are marked,
    the resolver may leave out packages.
    """
    coming = set(str(item) for item in base.items() if item.action in dnf.transaction.FORWARD_ACTIONS)
    absent = [package for package in marks.installs + marks.newVersions() if str(package) not in coming]
    installed = set(str(package) for package in base.sack.query().installed()) if absent else ()
    return [package for package in absent if str(package) not in installed]


def missingMembers(base, marks):
    """Pairs of a marked group and a package that the transaction lacks, although dnf should install or update the
    package for this group.
    """
    if not marks.groupInstalls and not marks.groupUpdates:
        return []
    transaction = base.items()
    there = set((package.name, package.arch) for package in base.sack.query().installed())
    coming = set((item.name, item.arch) for item in transaction
                 if item.action in dnf.transaction.FORWARD_ACTIONS)
    going = set(item.name for item in transaction if item.action in dnf.transaction.BACKWARD_ACTIONS)
    names = set(name for name, arch in there | coming)
    updates = {}
    if marks.groupUpdates:
        for package in findUpdates(base)[0]:
            updates.setdefault(package.name, []).append(package)
    found = []
    for group in marks.groupUpdates:
        for name in group.names('mandatory', 'default'):
            found += [(group, package) for package in updates.get(name, [])
                      if (package.name, package.arch) not in coming and name not in going]
        known = base.history.group.get(group.id)
        if known is not None:
            old = set(package.getName() for package in known.getPackages())
            found += missingOf(base, group, set(group.names('mandatory', 'default')) - old - names - going)
    for group in marks.groupInstalls:
        found += missingOf(base, group, set(group.names(*base.conf.group_package_types)) - names - going)
    return found


def missingOf(base, group, names):
    found = []
    for name in sorted(names):
        available = base.sack.query().available().filter(name=name)
        # The member is not missing if a package that obsoletes it is installed or in the transaction.
        others = base.sack.query().filter(obsoletes=available) if available else []
        coming = set(str(item) for item in base.items()
                     if item.action in dnf.transaction.FORWARD_ACTIONS)
        if available and not any(other._from_system or str(other) in coming for other in others):
            found.append((group, sorted(available)[-1]))
    return found


def problemsOfTheBest(base, marks):
    """dnf's reasons why the transaction cannot contain the newest version of every package; empty if no such reason
    exists.
    """
    endIfStopped()
    goal = copy.deepcopy(base.goal)
    if goal.run(allow_uninstall=marks.isRemoving(), force_best=True, ignore_weak=True):
        return []
    return [clearest(lines) for lines in goal.problem_rules()]
