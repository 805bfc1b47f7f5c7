#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""dnf refuses a transaction, or a transaction fails after it has begun."""
import fcntl
import os
import subprocess

import journey
from journey import JourneyTest


class RefusalTest(JourneyTest):

    def check_unresolvable(self, names, action, *texts, picture=None):
        """Check that the program cannot apply the marks: one message gives the reason, nothing changes, and all marks
        are kept.
        """
        with self.opened() as window:
            for name in names:
                window.mark_listed(name)
            window.click_button('Apply Actions')
            self.check_message(window.program, 'VYRE Yum Error', 'The marks cannot be applied:\n',
                               '\nNothing was changed. VYRE keeps all marks.\nUnable to apply changes', *texts,
                               picture=picture)
            window.wait_ready()
            self.assertEqual(window.program.titles(), [journey.driver.main_title()])
            self.check_unchanged()
            window.wait_action(action, names[-1])
            self.check_usable(window)
            self.assertIn('Unable to apply changes', self.read_log(window))

    def test_package_with_a_missing_dependency_is_refused(self):
        self.check_unresolvable(['moonbridge'], 'install', 'libtide.so.9', picture='unresolvable-dependency')

    def test_an_update_with_a_missing_dependency_is_refused(self):
        self.check_unresolvable(['tidewatch'], 'update', 'libtide.so.9', 'tidewatch-2.0-1.noarch')

    def test_two_conflicting_packages_cause_the_question_whether_to_leave_one_of_them_out(self):
        """If the user answers No, the program changes nothing and keeps the marks."""
        with self.opened() as window:
            for name in ('tern-mta', 'gull-mta'):
                window.mark_listed(name)
            window.click_button('Apply Actions')
            question = self.read_dialog(window.program, 'Query', 'Go on without these packages?', 'conflicts with')
            question.click_button('No')
            window.program.no_window('Query')
            window.wait_ready()
            self.check_unchanged()
            window.wait_action('install', 'gull-mta')
            self.check_usable(window)

    def test_a_package_that_conflicts_with_an_installed_package_is_refused(self):
        self.check_unresolvable(['sandstone'], 'install', 'conflicts with libgranite')

    def test_a_transaction_succeeds_after_a_refused_transaction(self):
        with self.opened() as window:
            window.mark_listed('moonbridge')
            window.click_button('Apply Actions')
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes')
            window.wait_ready()
            window.mark('moonbridge')
            window.wait_action('none', 'moonbridge')
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])


class OtherProgramTest(JourneyTest):
    """Another program changes or uses the packages at the same time."""

    def test_marks_are_refused_after_another_program_has_changed_the_system(self):
        with self.opened() as window:
            for name in ('almanac', 'pergola', 'birch-log'):
                window.mark_listed(name)
            subprocess.run(['rpm', '--root', self.sandbox.root, '--dbpath', '/var/lib/rpm', '-e', 'almanac'],
                           check=True, stderr=subprocess.DEVNULL)
            window.click_button('Apply Actions')
            self.check_message(window.program, 'VYRE Yum Error', 'Another program has changed the system',
                               'Unable to apply changes', picture='changed-by-another')
            window.wait_ready()
            self.check_changed(gone=['almanac-1.9-1.noarch'])
            # The table shows the changed system. The program has kept the marks that are still possible.
            window.show_all()
            for name, action in (('almanac', 'none'), ('pergola', 'install'), ('birch-log', 'remove')):
                window.set_filter('^' + name + ' ')
                window.wait_names([name])
                window.wait_action(action, name)
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'], gone=['almanac-1.9-1.noarch', 'birch-log-3.0-1.x86_64'])
            self.assertNotIn('The last transaction, begun on', self.read_log(window))

    def test_a_package_database_that_another_program_uses_is_reported(self):
        with self.opened() as window:
            window.mark_listed('pergola')
            dialog = window.apply()
            lock = open(os.path.join(self.sandbox.root, 'var/lib/rpm/.rpm.lock'), 'w')
            self.addCleanup(lock.close)
            fcntl.lockf(lock, fcntl.LOCK_EX)
            dialog.click_button('OK')
            question = self.read_dialog(
                window.program, 'Query', 'Another program is using the package database: ',
                ' ({})\nKeep waiting?\n'.format(os.getpid()))
            self.picture('database-in-use')
            question.click_button('No')
            self.check_message(window.program, 'VYRE Yum Error',
                               'Another program is using the package database. Nothing was changed.')
            window.wait_ready()
            self.check_unchanged()
            window.wait_action('install', 'pergola')
            fcntl.lockf(lock, fcntl.LOCK_UN)
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.assertNotIn('The last transaction, begun on', self.read_log(window))


class FailureTest(JourneyTest):

    def fail(self, window, names, *texts, picture=None):
        """Mark the packages and apply the marks. Check that the transaction fails after its confirmation, with one
        message.
        """
        for name in names:
            window.mark_listed(name)
        window.accept(window.apply())
        self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', *texts, picture=picture)
        self.check_usable(window)
        self.assertEqual(window.program.titles(), [journey.driver.main_title()])

    def test_two_marked_packages_with_different_versions_of_one_file_are_refused(self):
        with self.opened() as window:
            self.fail(window, ['inkwell-classic', 'inkwell-modern'], '/usr/share/inkwell/palette.conf',
                      'inkwell-classic', 'inkwell-modern', picture='file-conflict')
            self.check_unchanged()

    def test_a_package_is_refused_if_an_installed_package_has_another_version_of_its_file(self):
        with self.opened() as window:
            self.fail(window, ['vanity-shell'], '/bin/sh', 'busybox')
            self.check_unchanged()

    def test_scriptlet_that_prevents_the_installation_is_reported(self):
        with self.opened() as window:
            self.fail(window, ['brokenlatch'], 'Error in PREIN scriptlet in rpm package brokenlatch\n'
                      'brokenlatch: the latch is stuck\n', 'The transaction failed for:\nbrokenlatch-1.0-1.noarch\n',
                      picture='failing-scriptlet')
            self.check_unchanged()
            self.assertIn('brokenlatch: the latch is stuck', self.read_log(window))

    def test_a_scriptlet_that_prevents_the_removal_is_reported(self):
        with self.opened() as window:
            self.fail(window, ['stickyburr'], 'Error in PREUN scriptlet in rpm package stickyburr')
            self.check_unchanged()

    def test_the_table_shows_the_changed_packages_after_one_package_has_failed(self):
        with self.opened() as window:
            self.fail(window, ['stickyburr', 'pergola'], 'Error in PREUN scriptlet in rpm package stickyburr')
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            # After the failure, the table shows the new state.
            window.set_filter('^pergola ')
            window.wait_names(['pergola'])
            self.assertEqual([row[2] for row in window.rows()], ['@System'])
            self.assertEqual(window.action('pergola'), 'none')

    def test_a_scriptlet_that_fails_after_the_installation_is_reported(self):
        with self.opened() as window:
            window.mark_listed('limpgate')
            self.carry_out(window)
            self.check_changed(new=['limpgate-1.0-1.noarch'])
            log = self.read_log(window)
            self.assertIn('Error in POSTIN scriptlet in rpm package limpgate', log)
            self.assertIn('limpgate: the hinge is gone', log)


if __name__ == '__main__':
    journey.main()
