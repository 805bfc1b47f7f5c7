#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user installs, updates and removes packages and suites."""
import glob
import os

import journey
from journey import JourneyTest


class ApplyTest(JourneyTest):

    def test_installation_update_and_removal_are_one_transaction(self):
        with self.opened() as window:
            self.picture('main-window')
            window.mark_listed('libbough')
            window.mark_listed('anvil-make')
            window.mark_listed('cinder-backup')
            window.set_filter('.*')
            dialog = window.apply()
            dialog.wait_settled()
            self.picture('confirmation')
            self.check_listing(dialog, [
                'Install: libbough 1.1-1 (x86_64) [sandbox-http]',
                'Remove: cinder-backup 1.4-1 (noarch)',
                'Upgrade: anvil-make 4.2-2 (x86_64) [sandbox-updates]'],
                ['Install: libtwig 1.0-1 (x86_64) [sandbox-http]'])
            self.check_unchanged()
            self.carry_out(window, dialog)
            self.check_changed(
                new=['libbough-1.1-1.x86_64', 'libtwig-1.0-1.x86_64', 'anvil-make-4.2-2.x86_64'],
                gone=['anvil-make-4.1-1.x86_64', 'cinder-backup-1.4-1.noarch'])

            # After the transaction, the table shows the new state.
            window.set_filter('^(libbough|libtwig|anvil-make|cinder-backup) ')
            window.wait_names(['libbough', 'libtwig', 'anvil-make', 'cinder-backup'])
            repositories = {row[0]: row[2] for row in window.rows()}
            self.assertEqual(repositories, {'libbough': '@System', 'libtwig': '@System', 'anvil-make': '@System',
                                            'cinder-backup': 'sandbox-http'})
            self.assertEqual([window.action(name) for name in window.names()], ['none'] * 4)

    def test_log_contains_the_transaction_and_the_scriptlet_output(self):
        with self.opened() as window:
            window.mark_listed('chatterbox')
            self.carry_out(window)
            log = self.read_log(window, picture='log')
            for text in ('Initialization', 'Applying', 'Applying: OK', 'Installing chatterbox',
                         'chatterbox: post to standard output', 'chatterbox: post to standard error'):
                self.assertIn(text, log)
            self.check_changed(new=['chatterbox-1.0-1.noarch'])

    def test_a_removal_also_removes_an_unused_dependency(self):
        with self.opened() as window:
            window.mark_listed('trellis-editor')
            dialog = window.apply()
            self.check_listing(dialog, ['Remove: trellis-editor 1.2-1 (x86_64)'],
                               ['Remove (unused): libtrellis 1.2-1 (x86_64)'], sizes=False)
            self.carry_out(window, dialog)
            self.check_changed(gone=['trellis-editor-1.2-1.x86_64', 'libtrellis-1.2-1.x86_64'])

    def test_a_removal_also_removes_dependent_packages(self):
        with self.opened() as window:
            window.mark_listed('libtrellis')
            dialog = window.apply()
            self.check_listing(dialog, ['Remove: libtrellis 1.2-1 (x86_64)'],
                               ['Remove: trellis-editor 1.2-1 (x86_64)'], sizes=False)
            # Labels outside the scrolled listing show the numbers of removals.
            self.assertIn('Removals: 2. You did not mark 1 of them:\n    trellis-editor 1.2-1 (x86_64)',
                          dialog.labels())
            self.assertIn('Remove: 2', dialog.labels())
            self.picture('removals')
            self.carry_out(window, dialog)
            self.check_changed(gone=['trellis-editor-1.2-1.x86_64', 'libtrellis-1.2-1.x86_64'])

    def test_a_transaction_with_only_a_removal_downloads_nothing(self):
        with self.opened() as window:
            window.mark_listed('birch-log')
            dialog = window.apply()
            self.assertEqual(dialog.listing(), 'Transaction to be performed:\n\tRemove: birch-log 3.0-1 (x86_64)\n'
                                               'No downloads; only removals\n')
            self.carry_out(window, dialog)
            self.check_changed(gone=['birch-log-3.0-1.x86_64'])
            self.assertEqual([path for path in self.sandbox.server.paths() if path.endswith('.rpm')], [])

    def test_two_transactions_in_a_row_succeed(self):
        with self.opened() as window:
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            window.mark_listed('pergola')
            dialog = window.apply()
            self.check_listing(dialog, ['Remove: pergola 6.1-1 (x86_64)'], sizes=False)
            self.carry_out(window, dialog)
            self.check_unchanged()
            window.mark_listed('barometer')
            self.carry_out(window)
            self.check_changed(new=['barometer-1.1-2.x86_64'], gone=['barometer-1.0-1.x86_64'])

    def test_an_installation_of_a_suite_installs_its_members(self):
        with self.opened() as window:
            window.mark_listed('vyre-office-suite')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: vyre-office-suite 1.0-1 (noarch) [sandbox-http]'], [
                'Install: lectern-slides 2.0-1 (x86_64) [sandbox-http]',
                'Install: ledger-calc 2.0-1 (x86_64) [sandbox-http]',
                'Install: scribe-writer 2.0-1 (x86_64) [sandbox-http]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['vyre-office-suite-1.0-1.noarch', 'lectern-slides-2.0-1.x86_64',
                                    'ledger-calc-2.0-1.x86_64', 'scribe-writer-2.0-1.x86_64'])

    def test_an_update_of_a_suite_installs_its_new_member(self):
        with self.opened() as window:
            window.mark_listed('vyre-network-suite')
            dialog = window.apply()
            self.check_listing(dialog, ['Upgrade: vyre-network-suite 1.1-1 (noarch) [sandbox-updates]'],
                               ['Install: nettle-scan 7.9-1 (x86_64) [sandbox-http]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['vyre-network-suite-1.1-1.noarch', 'nettle-scan-7.9-1.x86_64'],
                               gone=['vyre-network-suite-1.0-1.noarch'])

    def test_an_installation_also_installs_weak_dependencies(self):
        with self.opened() as window:
            window.mark_listed('orchard')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: orchard 3.0-1 (x86_64) [sandbox-http]'], [
                'Install: libbough 1.1-1 (x86_64) [sandbox-http]',
                'Install: libtwig 1.0-1 (x86_64) [sandbox-http]',
                'Install: orchard-lang 3.0-1 (noarch) [sandbox-http]',
                'Install (weak): orchard-plugins 3.0-1 (noarch) [sandbox-http]',
                'Install (weak): orchard-thumbnails 3.0-1 (noarch) [sandbox-http]'])
            self.carry_out(window, dialog)
            self.check_changed(new=[
                'libbough-1.1-1.x86_64', 'libtwig-1.0-1.x86_64', 'orchard-3.0-1.x86_64', 'orchard-lang-3.0-1.noarch',
                'orchard-plugins-3.0-1.noarch', 'orchard-thumbnails-3.0-1.noarch'])

    def test_a_marked_package_replaces_the_package_that_it_obsoletes(self):
        with self.opened() as window:
            window.mark_listed('newpost')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: newpost 2.0-1 (x86_64) [sandbox-updates]'],
                               ['Obsoleting: oldpost 1.8-1 (x86_64)'])
            # The transaction removes a package without a mark, so the dialog says so and Enter cancels.
            self.assertIn('Removals: 1. You did not mark 1 of them:\n    oldpost 1.8-1 (x86_64)', dialog.labels())
            self.assertIn('Install: 1    Obsoleting: 1\n', dialog.text())
            self.picture('obsoleted-package')
            dialog.wait_input()
            dialog.press('Return')
            window.program.no_window('Apply')
            window.wait_ready()
            self.check_unchanged()
            dialog = window.apply()
            self.carry_out(window, dialog)
            self.check_changed(new=['newpost-2.0-1.x86_64'], gone=['oldpost-1.8-1.x86_64'])


class ConfiguredTest(JourneyTest):
    """Transactions with additional options in dnf's configuration."""

    def configure(self, *lines):
        with open(os.path.join(self.sandbox.root, 'etc/yum.conf'), 'a') as configuration:
            configuration.write(''.join(line + '\n' for line in lines))

    def test_a_locked_package_has_no_update(self):
        settings = os.path.join(self.scratch, 'settings')
        os.mkdir(settings)
        for name, lines in (('versionlock.conf', '[main]\nenabled=1\nlocklist={}/locks\n'.format(settings)),
                            ('generate_completion_cache.conf', '[main]\nenabled=0\n'),
                            ('locks', 'abacus-cli-0:3.2.1-1.*\n')):
            with open(os.path.join(settings, name), 'w') as stream:
                stream.write(lines)
        with self.opened() as window:
            window.mark_listed('abacus-cli')
            window.wait_action('update', 'abacus-cli')
        self.configure('plugins=1', 'pluginconfpath=' + settings)
        with self.opened() as window:
            # The locked package has no update, so the first possible action is the removal.
            window.mark_listed('abacus-cli')
            window.wait_action('remove', 'abacus-cli')
            self.assertEqual([row[1].split()[0] for row in window.rows()], ['3.2.1-1'])
            window.mark_listed('quillbase')
            window.wait_action('update', 'quillbase')
        self.check_unchanged()

    def test_a_transaction_changes_nothing_if_tsflags_contains_test(self):
        self.configure('tsflags=test')
        with self.opened() as window:
            window.mark_listed('pergola')
            window.mark_listed('birch-log')
            dialog = window.apply()
            self.assertTrue(dialog.listing().startswith(
                'This is only a test, because the tsflags option contains test. '
                'dnf downloads and checks the packages;\n'
                'it installs, updates and removes nothing.\n\nTransaction to be performed:\n'), dialog.listing())
            window.accept(dialog)
            self.check_message(window.program, 'VYRE Yum Warning',
                               'The transaction was only tested, because the tsflags option contains test. Nothing '
                               'was changed.')
            window.wait_ready()
        self.check_unchanged()
        self.check_consistent()


class SeveralVersionsTest(JourneyTest):
    """Updates and removals of packages with several installed versions."""

    def test_an_update_of_a_package_with_two_installed_versions_replaces_both(self):
        found = glob.glob(os.path.join(self.sandbox.repository('sandbox-updates'), '**', 'abacus-cli-3.3.0-2.*.rpm'),
                          recursive=True)
        self.sandbox.rpm('--install', '--force', '--nosignature', *found)
        self.before = self.sandbox.installed()
        versions = ['abacus-cli-3.2.1-1.x86_64', 'abacus-cli-3.3.0-2.x86_64']
        self.assertLessEqual(set(versions), self.before)
        with self.opened('--enablerepo', 'sandbox-disabled') as window:
            window.mark_listed('abacus-cli')
            self.assertEqual([row[1] for row in window.rows()], ['4.0-0.beta *'])
            dialog = window.apply()
            self.assertIn('\tUpgrade: abacus-cli 4.0-0.beta (x86_64) [sandbox-disabled]\n', dialog.text())
            self.carry_out(window, dialog)
            self.check_changed(new=['abacus-cli-4.0-0.beta.x86_64'], gone=versions)

    def test_a_new_kernel_does_not_replace_installed_kernels(self):
        with self.opened() as window:
            window.mark_listed('kernel')
            self.assertEqual([row[1] for row in window.rows()], ['6.1.31-1 *'])
            dialog = window.apply()
            self.check_listing(dialog, ['Install: kernel 6.1.31-1 (x86_64) [sandbox-updates]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['kernel-6.1.31-1.x86_64'])
            # Of the three installed versions, the row shows the newest.
            window.wait_names(['kernel'])
            self.assertEqual([row[1:3] for row in window.rows()], [('6.1.31-1 *', '@System')])

    def test_a_removal_of_a_package_with_two_installed_versions_removes_both(self):
        with self.opened() as window:
            window.mark_listed('kernel', clicks=2)
            window.wait_action('remove', 'kernel')
            dialog = window.apply()
            self.check_listing(dialog, ['Remove: kernel 6.1.20-1 (x86_64)', 'Remove: kernel 6.1.25-1 (x86_64)'],
                               sizes=False)
            self.carry_out(window, dialog)
            self.check_changed(gone=['kernel-6.1.20-1.x86_64', 'kernel-6.1.25-1.x86_64'])


if __name__ == '__main__':
    journey.main()
