#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""A disk is full."""
import os
import sys
import unittest

import journey
from journey import JourneyTest, driver

import filesystems

YUM_ERROR = 'VYRE Yum Error'
PLENTY = 100 << 10  # in kilobytes
GARGANTUA = 'gargantua-1.0-1.noarch'
GLUTTON = 'glutton-1.0-1.noarch'


class SpaceTest(JourneyTest):

    def mount_small_file_system(self, path):
        """Mount a file system on a directory of the managed system. At first, it has plenty of space."""
        path = os.path.normpath(os.path.join(self.sandbox.root, path))
        filesystems.mount_small(path, PLENTY)
        self.addCleanup(filesystems.unmount, path)
        return path

    def check_applies(self, window, name, package):
        """After the disk has got free space, check that the mark is still set and can be applied."""
        window.set_filter('^{} '.format(name))
        window.wait_names([name])
        window.wait_action('install', name)
        self.carry_out(window)
        self.check_changed(new=[package])

    def test_too_little_space_for_the_download_is_reported(self):
        cache = self.mount_small_file_system('var/cache')
        with self.opened() as window:
            window.mark_listed('gargantua')
            dialog = window.apply()
            filesystems.resize(cache, 300)
            window.accept(dialog)
            self.check_message(window.program, YUM_ERROR, 'gargantua',
                               ' kB are free in {}/yum\n'.format(cache),
                               '\nUnable to apply changes', picture='no-space')
            self.check_usable(window)
            self.assertEqual(window.program.titles(), [driver.main_title()])
            self.check_unchanged()
            self.assertIn(' kB are free in {}/yum\n'.format(cache), self.read_log(window))
            filesystems.resize(cache, PLENTY)
            self.check_applies(window, 'gargantua', GARGANTUA)
        self.check_consistent()

    def test_too_little_space_for_the_files_of_a_package_is_reported_before_the_transaction(self):
        root = self.mount_small_file_system('')
        with self.opened() as window:
            window.mark_listed('gargantua')
            dialog = window.apply()
            # The downloaded package fits into this space, but its files do not.
            filesystems.resize(root, 10 << 10)
            window.accept(dialog)
            self.check_message(window.program, YUM_ERROR, 'At least ', 'MB more space needed on the / filesystem',
                               '\nUnable to apply changes', picture='no-space-for-files')
            self.check_usable(window)
            self.check_unchanged()
            self.assertIn('more space needed', self.read_log(window))
            filesystems.resize(root, PLENTY)
            self.check_applies(window, 'gargantua', GARGANTUA)
        self.check_consistent()

    # In the next two tests, the check before the transaction finds enough space, and the space runs out later.

    def test_space_that_runs_out_during_the_transaction_is_reported(self):
        root = self.mount_small_file_system('')
        glutton = self.waiting('glutton')
        with self.opened() as window:
            window.mark_listed('glutton')
            window.accept(window.apply())
            glutton.wait_waiting()
            filesystems.resize(root, 64)
            glutton.let_go()
            self.check_message(window.program, YUM_ERROR, 'Error unpacking rpm package glutton-1.0-1.noarch\n',
                               'unpacking of archive failed on file /usr/share/glutton/noise.bin',
                               '\nThe transaction failed for:\nglutton-1.0-1.noarch\nOnly ',
                               ' kB are free in {}/'.format(root), '\nUnable to apply changes',
                               picture='no-space-in-transaction')
            self.check_usable(window)
            self.check_unchanged()
            self.assertFalse(os.path.exists(os.path.join(root, 'usr/share/glutton/noise.bin')))
            self.assertIn(' kB are free in {}/'.format(root), self.read_log(window))
            filesystems.resize(root, PLENTY)
            # The failed transaction may have changed the system, so the program has read the packages again. It has
            # kept the mark, because the package is not installed.
            window.set_filter('^glutton ')
            window.wait_names(['glutton'])
            self.assertEqual(window.action('glutton'), 'install')
            self.carry_out(window)
            self.check_changed(new=[GLUTTON])
        self.check_consistent()

    def test_too_little_space_for_the_package_database_is_reported(self):
        database = self.mount_small_file_system('var/lib/rpm')
        glutton = self.waiting('glutton')
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('glutton')
            window.mark_listed('birch-log')
            window.accept(window.apply())
            glutton.wait_waiting()
            filesystems.resize(database, 0)
            glutton.let_go()
            self.check_message(window.program, YUM_ERROR, 'The transaction failed for:\nglutton-1.0-1.noarch\n'
                               'The package database does not record these changes:\nbirch-log-3.0-1.x86_64\n'
                               'Only 0 kB are free in {}\nUnable to apply changes'.format(database))
            window.wait_ready()
            self.check_unchanged()
            filesystems.resize(database, PLENTY)
            self.check_usable(window)
            # The package database contains neither change, so the program has kept both marks.
            window.set_filter('^birch-log ')
            window.wait_names(['birch-log'])
            self.assertEqual(window.action('birch-log'), 'remove')
            self.carry_out(window)
            self.check_changed(new=[GLUTTON], gone=['birch-log-3.0-1.x86_64'])
            # Do not call quit(): it would report the messages that rpm has written to standard error.
            driver.key('ctrl+q')
            self.assertEqual(window.program.wait(), 0)
        self.check_consistent()


if __name__ == '__main__':
    # From here on, only the tests and the program see the file systems that are mounted.
    try:
        filesystems.isolate()
    except unittest.SkipTest as e:
        print('skipped: {}'.format(e))
        sys.exit(0)
    journey.main()
