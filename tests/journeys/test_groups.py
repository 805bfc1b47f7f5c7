#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user installs, updates and removes groups of packages."""
import journey
from journey import JourneyTest
from vyresandbox import needs_groups


class GroupsTest(JourneyTest):

    def check_view(self, window, view, name, listed):
        """Select a view in the filter row, and check whether it lists the group. listed: whether the view should list
        the group.
        """
        window.choose(1, view)
        window.set_filter('^' + name + '$')
        window.wait_names([name] if listed else [])

    @needs_groups
    def test_a_group_that_the_user_has_installed_can_be_removed(self):
        members = ['hedgerow-4.0-1.noarch', 'orrery-3.7-1.x86_64', 'pebble-go-1.4-1.x86_64']
        with self.opened('--groups') as window:
            window.mark_listed('Games')
            dialog = window.apply()
            self.check_listing(dialog, [], [
                'Install (group): hedgerow 4.0-1 (noarch) [sandbox-file]',
                'Install (group): orrery 3.7-1 (x86_64) [sandbox-http]',
                'Install (group): pebble-go 1.4-1 (x86_64) [sandbox-http]'],
                groups={'Installing Groups': ['Games']})
            self.carry_out(window, dialog)
            self.check_changed(new=members)
            self.check_view(window, 'View Removable', 'Games', True)

            window.mark_listed('Games')
            window.wait_action('remove', 'Games')
            dialog = window.apply()
            self.check_listing(dialog, ['Remove: hedgerow 4.0-1 (noarch)', 'Remove: orrery 3.7-1 (x86_64)',
                                        'Remove: pebble-go 1.4-1 (x86_64)'], sizes=False,
                               groups={'Removing Groups': ['Games']})
            self.carry_out(window, dialog)
            self.check_unchanged()
            self.check_view(window, 'View Installable', 'Games', True)

    @needs_groups
    def test_a_group_that_dnf_has_installed_can_be_removed(self):
        with self.opened('--groups') as window:
            window.mark_listed('Arts')
            window.wait_action('remove', 'Arts')
            dialog = window.apply()
            self.check_listing(dialog, ['Remove: easel 1.1-1 (noarch)', 'Remove: palette-knife 1.0-1 (noarch)'],
                               sizes=False, groups={'Removing Groups': ['Arts']})
            self.carry_out(window, dialog)
            self.check_changed(gone=['easel-1.1-1.noarch', 'palette-knife-1.0-1.noarch'])
            self.check_view(window, 'View Removable', 'Arts', False)

    @needs_groups
    def test_an_update_of_a_group_updates_its_installed_packages(self):
        with self.opened('--groups') as window:
            window.mark_listed('Weaving')
            window.wait_action('update', 'Weaving')
            dialog = window.apply()
            self.check_listing(dialog, ['Upgrade: loomctl 1.1-1 (x86_64) [sandbox-updates]'], remark=(
                'The group Weaving is not installed: only its installed packages are updated. To install the whole '
                'group, mark it for Install after this transaction.'))
            self.carry_out(window, dialog)
            self.check_changed(new=['loomctl-1.1-1.x86_64'], gone=['loomctl-1.0-1.x86_64'])
            self.check_view(window, 'View Updatable', 'Weaving', False)

    @needs_groups
    def test_a_conditional_member_is_installed_with_the_group_if_the_required_package_is_installed(self):
        with self.opened('--groups') as window:
            # The name should be "Office & ...", but libcomps has removed a blank from it.
            window.set_filter('^Office &')
            journey.wait_for(lambda: len(window.names()) == 1, 'a list with only the group')
            name = window.names()[0]
            # The markup in the name is shown as text.
            self.assertIn('<b>Productivity</b>', name)
            window.mark(name)
            self.carry_out(window)
            self.check_changed(new=['scribe-writer-2.0-1.x86_64', 'ledger-calc-2.0-1.x86_64',
                                    'scribe-lexicon-1.0-1.noarch'])

    @needs_groups
    def test_a_group_is_installed_without_a_member_that_no_repository_has(self):
        with self.opened('--groups') as window:
            window.mark_listed('Ghosts')
            dialog = window.apply()
            # Of the group's packages, only one exists, and it is already installed.
            self.check_listing(dialog, [], sizes=None, groups={'Installing Groups': ['Ghosts']},
                               remark='The group Ghosts has no further packages that can be installed; '
                                      'it is only recorded as installed.')
            self.carry_out(window, dialog)
            self.check_unchanged()
            self.check_view(window, 'View Removable', 'Ghosts', True)


if __name__ == '__main__':
    journey.main()
