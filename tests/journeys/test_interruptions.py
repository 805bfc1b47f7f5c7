#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The program is killed while it works. The next run reports this, and the user can complete the work."""
import os
import subprocess

import journey
from historywindow import RESULT, HistoryJourneyTest
from journey import Gate, JourneyTest, wait_for

INTERRUPTED = 'was interrupted.\nIn the History window (Ctrl+H), "Redo" completes it.'
SEVERAL = ('An interrupted transaction has left several installed versions of these packages:\n'
           '  doorkeeper-1.0-1.noarch, doorkeeper-1.1-1.noarch\n'
           '"dnf remove --duplicates" removes the older versions.')


class KillInTransactionTest(HistoryJourneyTest):

    def kill_in_transaction(self, *names):
        """Kill the program while the scriptlet of doorkeeper waits. The scriptlet continues."""
        doorkeeper = self.waiting('doorkeeper')
        with self.program() as program:
            window = program.ready()
            window.show_all()
            for name in names:
                window.mark_listed(name)
            window.accept(window.apply())
            doorkeeper.wait_waiting()
            program.process.kill()
            program.process.wait()
            doorkeeper.let_go()
            wait_for(lambda: program.left_over() == [], 'the end of the scriptlet')
        self.assertNotEqual(self.locks(), [])

    def test_the_next_start_reports_an_interrupted_installation_which_the_history_window_can_complete(self):
        self.sandbox.rpm('--erase', 'doorkeeper')
        self.before = self.sandbox.installed()
        self.kill_in_transaction('doorkeeper', 'birch-log', 'pergola')
        self.check_changed(new=['doorkeeper-1.1-1.noarch'])
        with self.opened() as window:
            log = self.read_log(window)
            self.assertEqual(log.count(INTERRUPTED), 1, log)
            self.assertNotIn('several installed versions', log)
            window.set_filter('^(doorkeeper|birch-log|pergola) ')
            window.wait_names(['doorkeeper', 'birch-log', 'pergola'])
            self.assertEqual({row[0]: row[2] for row in window.rows()},
                             {'doorkeeper': '@System', 'birch-log': '@System', 'pergola': 'sandbox-http'})
            history = self.open_history(window)
            self.assertEqual(history.cells(RESULT)[0], 'Interrupted')
            history.wait_details('birch-log-3.0-1.x86_64')
            self.picture('interrupted-in-history')
            history.choose('r')
            dialog = window.program.window('Apply')
            self.check_listing(dialog, ['Install: pergola 6.1-1 (x86_64) [sandbox-http]',
                                        'Remove: birch-log 3.0-1 (x86_64)'], remark=(
                'This completes transaction 2.\n'
                'Package "doorkeeper.noarch" is already installed for action "Install".'))
            self.carry_out(window, dialog)
            self.check_changed(new=['doorkeeper-1.1-1.noarch', 'pergola-6.1-1.x86_64'], gone=['birch-log-3.0-1.x86_64'])
            history = self.open_history(window)
            self.assertEqual(history.cells(RESULT)[:2], ['Succeeded', 'Interrupted'])
            history.press('Escape')
            window.program.no_window(history.title)
            # Later collections have not added the report to the log again.
            self.assertEqual(self.read_log(window).count(INTERRUPTED), 1)
        self.check_consistent()

    def test_next_start_reports_that_an_update_was_interrupted_by_a_kill(self):
        self.kill_in_transaction('doorkeeper', 'birch-log', 'pergola')
        self.check_changed(new=['doorkeeper-1.1-1.noarch'])
        with self.opened() as window:
            log = self.read_log(window, picture='interrupted-transaction')
            self.assertEqual(log.count(INTERRUPTED), 1, log)
            self.assertEqual(log.count(SEVERAL), 1, log)
            window.mark_listed('doorkeeper')
            self.assertEqual([row[1:3] for row in window.rows()], [('1.1-1 *', '@System')])
            window.mark_listed('birch-log')
            window.mark_listed('pergola')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: pergola 6.1-1 (x86_64) [sandbox-http]',
                                        'Remove: birch-log 3.0-1 (x86_64)', 'Remove: doorkeeper 1.0-1 (noarch)',
                                        'Remove: doorkeeper 1.1-1 (noarch)'])
            self.carry_out(window, dialog)
            window.mark_listed('doorkeeper')
            self.carry_out(window)
            self.check_changed(new=['doorkeeper-1.1-1.noarch', 'pergola-6.1-1.x86_64'],
                               gone=['doorkeeper-1.0-1.noarch', 'birch-log-3.0-1.x86_64'])
            log = self.read_log(window)
            self.assertEqual((log.count(INTERRUPTED), log.count(SEVERAL)), (1, 1), log)
        self.check_consistent()


class KillBeforeTransactionTest(JourneyTest):
    """The program is killed before it changes the system. The next run reports the lock files that are left behind, and
    dnf works in spite of these files.
    """

    LEFT = 'Process {} has ended without removing its lock file {}. VYRE removes this file.'

    def gate(self, path):
        gate = Gate()
        self.sandbox.server.faults[path] = gate
        self.addCleanup(gate.open)
        return gate

    def check_dnf(self):
        done = subprocess.run(['dnf', '--installroot', self.sandbox.root, '--releasever=9', '--noplugins',
                               '--config', self.sandbox.root + '/etc/yum.conf', '--setopt=logdir=' + self.scratch,
                               '--setopt=reposdir=' + self.sandbox.root + '/etc/yum.repos.d',
                               '--setopt=cachedir=' + self.sandbox.root + '/var/cache/yum',
                               '--setopt=exit_on_lock=True', '--assumeno', 'install', 'pergola'],
                              env=self.sandbox.environment(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              timeout=120)
        self.assertIn('Operation aborted', done.stdout.decode())

    def check_after_kill(self, program, *locks):
        """Wait until the program holds these locks, and kill the program. Check that the lock files are left behind,
        and that no package has changed. Return the number of the killed process, and the paths of the lock files.
        """
        files = [os.path.join(self.sandbox.root, lock) for lock in locks]
        wait_for(lambda: set(files) <= set(self.locks()), 'the locks')
        number = program.process.pid
        program.process.kill()
        program.process.wait()
        self.sandbox.server.faults.clear()
        self.assertEqual([name for name in files if not os.path.exists(name)], [])
        self.check_unchanged()
        return number, files

    def check_next_run(self, number, files):
        with self.opened() as window:
            log = self.read_log(window)
            for name in files:
                self.assertEqual(log.count(self.LEFT.format(number, name)), 1, log)
            self.assertNotIn(INTERRUPTED, log)
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
        self.check_consistent()

    def test_packages_can_be_installed_after_the_idle_program_was_killed(self):
        with self.program() as program:
            program.ready()
            left = self.check_after_kill(program, journey.DATABASE_LOCK)
        self.check_next_run(*left)

    def test_packages_can_be_installed_after_a_kill_during_the_metadata_download(self):
        self.sandbox.expire_metadata()
        gate = self.gate('/sandbox-http/repodata/repomd.xml')
        with self.program() as program:
            program.main()
            gate.wait_reached()
            left = self.check_after_kill(program, journey.DATABASE_LOCK, 'var/cache/yum/metadata_lock.pid')
        self.check_next_run(*left)

    def test_packages_can_be_installed_after_a_kill_while_the_listing_was_shown(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.apply()
            left = self.check_after_kill(program, journey.DATABASE_LOCK)
        self.check_next_run(*left)

    def test_packages_can_be_installed_after_a_kill_during_the_package_download(self):
        gate = self.gate('/sandbox-http/pergola-6.1-1.x86_64.rpm')
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            gate.wait_reached()
            left = self.check_after_kill(program, journey.DATABASE_LOCK, 'var/cache/yum/download_lock.pid')
        self.check_dnf()
        self.check_next_run(*left)


if __name__ == '__main__':
    journey.main()
