# SPDX-License-Identifier: GPL-2.0-or-later
"""Additions to the listing: the changes to groups and module streams, and the groups without packages.

dnf's library does not list these changes, but the dnf command does. The sections have the command's texts and
translations. The worker that applies the marks runs this module.
"""

import dnf.exceptions
import dnf.i18n
import dnf.transaction
import dnf.util
import libdnf.transaction

from .program import tr
from .streams import fullName


def otherSections(base, withGroups=True):
    """The sections in which the dnf command lists the changes to groups and module streams: a list of pairs of a
    heading and its lines. Empty sections are left out. withGroups: whether to include the groups.
    """
    sections = []
    dnfText = dnf.i18n._
    container = base._moduleContainer
    for heading, found in ((dnfText('Installing module profiles'), container.getInstalledProfiles()),
                           (dnfText('Disabling module profiles'), container.getRemovedProfiles())):
        sections.append((heading, ['%s/%s' % (name, profile) for name, profiles in sorted(dict(found).items())
                                   for profile in profiles]))
    sections.append((dnfText('Enabling module streams'),
                     ['%s %s' % pair for pair in sorted(dict(container.getEnabledStreams()).items())]))
    sections.append((dnfText('Switching module streams'),
                     ['%s %s -> %s' % (name, streams[0], streams[1])
                      for name, streams in sorted(dict(container.getSwitchedStreams()).items())]))
    sections.append((dnfText('Disabling modules'), sorted(container.getDisabledModules())))
    sections.append((dnfText('Resetting modules'), sorted(container.getResetModules())))
    for persistor, headings in (
            (base.history.env, (dnfText('Installing Environment Groups'), dnfText('Upgrading Environment Groups'),
                                dnfText('Removing Environment Groups'))),
            (base.history.group, (dnfText('Installing Groups'), dnfText('Upgrading Groups'),
                                  dnfText('Removing Groups')))) if withGroups else ():
        for heading, groups in zip(headings, (persistor._installed, persistor._upgraded, persistor._removed)):
            sections.append((heading, [group.getName() or identifier for identifier, group in groups.items()]))
    return [(heading, list(lines)) for heading, lines in sections if lines]


def repeatsReason(base, item):
    """Whether an item only records the installation reason that the history already contains. When dnf removes one of
    several installed versions of a package, it adds such an item, usually for a package of another name. The dnf
    command does not list this item.
    """
    return (item.action == libdnf.transaction.TransactionItemAction_REASON_CHANGE and
            item.reason == base.history.rpm.get_reason(item))


def remarksAboutGroups(base):
    """A sentence for each group that a resolved transaction installs or removes without any of its packages. Without
    these sentences, the listing of such a transaction would be empty.
    """
    transaction = base.items()
    coming = [item.pkg for item in transaction if item.action in dnf.transaction.FORWARD_ACTIONS]
    going = set(item.name for item in transaction if item.action in dnf.transaction.BACKWARD_ACTIONS)
    remarks = []
    for identifier, group in base.history.group._installed.items():
        names = membersOf(group)
        members = base.sack.query().filterm(name=names)
        replacements = base.sack.query().filterm(pkg=coming, obsoletes=members) if coming and members else ()
        if not replacements and not any(package.name in names for package in coming):
            text = (tr('The group {} has no further packages that can be installed; it is only recorded as installed.')
                    if members.installed() else
                    tr('The group {} has no packages that can be installed; it is only recorded as installed.'))
            remarks.append(text.format(group.getName() or identifier))
    for identifier, group in base.history.group._removed.items():
        if not going.intersection(package.getName() for package in group.getPackages()):
            remarks.append(tr('The group {} has no packages that can be removed; only its record is removed.')
                           .format(group.getName() or identifier))
    return sorted(remarks)


def remarksAboutUpdates(base, groups):
    """A sentence for each group in "groups" that is not installed. groups: the groups that are marked for an update.

    The dnf command refuses to update a group that is not installed. If a member has an update, the table offers only
    the update of the group, not its installation.
    """
    return sorted(tr('The group {} is not installed: only its installed packages are updated. To install the whole '
                     'group, mark it for Install after this transaction.').format(group.name)
                  for group in groups if base.history.group.get(group.id) is None)


def membersOf(group):
    """The names of the packages that dnf installs with a group. group: a group object of dnf's history."""
    types = group.getPackageTypes()
    return [package.getName() for package in group.getPackages() if package.getPackageType() & types]


def refuseModuleSwitch(base, packages):
    """Refuse to switch an enabled module to another stream, unless the module_stream_switch option allows this. The dnf
    command checks this option, but dnf's library does not. The error names the marked packages in the other streams.
    """
    conf = base.conf
    if not conf._has_option('module_stream_switch') or conf.module_stream_switch:
        return
    switched = sorted(dict(base._moduleContainer.getSwitchedStreams()).items())
    if not switched:
        return
    dnfText = dnf.i18n._
    lines = [dnfText("The operation would result in switching of module '{0}' stream '{1}' to stream '{2}'").format(
        name, streams[0], streams[1]) for name, streams in switched]
    lines.append(dnfText(
        "It is not possible to switch enabled streams of a module unless explicitly enabled via configuration option "
        "module_stream_switch.\nIt is recommended to rather remove all installed content from the module, and reset "
        "the module using '{prog} module reset <module_name>' command. After you reset the module, you can install "
        "the other stream.").format(prog=getattr(dnf.util, 'MAIN_PROG', 'dnf')))
    named = packagesOfStreams(base, packages, [(name, streams[1]) for name, streams in switched])
    parts = []
    if named:
        parts.append(tr('These marked packages belong to streams that are not enabled: {}').format(', '.join(named)))
    raise dnf.exceptions.Error('\n'.join(lines + parts))


def packagesOfStreams(base, packages, streams):
    """The full names of the packages that belong to these module streams. streams: pairs of a module and a stream."""
    found = set()
    for module in base._moduleContainer.getModulePackages():
        if (module.getName(), module.getStream()) in streams:
            found.update(module.getArtifacts())
    return sorted(set(str(package) for package in packages if fullName(package) in found))
