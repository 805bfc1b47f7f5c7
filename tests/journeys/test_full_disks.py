#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Directories are full or cannot be written, and the program reports this."""
import os
import subprocess

import journey
from journey import DATABASE_LOCK
from trouble import StartTest, YUM_ERROR


class DiskTest(StartTest):

    def check_no_lock(self, *texts):
        with self.program() as program:
            self.message(program, YUM_ERROR, '\nUnable to obtain yum lock', *texts)
            window = program.ready()
            self.check_nothing_listed(window)
            self.read_log(window)
            self.quit(window)

    def test_a_read_only_managed_root_is_reported(self):
        with self.wrapped('mount --bind "$VYREROOT" "$VYREROOT"; mount -o remount,bind,ro "$VYREROOT"'):
            self.check_no_lock('Read-only file system')

    def test_a_lock_directory_without_write_permission_is_reported(self):
        directory = os.path.dirname(self.path(DATABASE_LOCK))
        os.chmod(directory, 0o555)
        with self.unprivileged():
            self.check_no_lock('Permission denied', directory)

    def test_a_lock_directory_on_a_full_disk_is_reported(self):
        directory = os.path.dirname(self.path(DATABASE_LOCK))
        with self.wrapped('mount -t tmpfs -o size=4k none {0}; printf x > {0}/fill'.format(directory)):
            self.check_no_lock('No space left on device')

    def test_a_cache_directory_on_a_full_disk_is_reported(self):
        directory = os.path.dirname(self.path('var/cache/yum/x'))
        with self.wrapped('mount -t tmpfs -o size=16k none ' + directory):
            with self.program() as program:
                self.refuse_without(program, '', 'Failed to download metadata')
                self.message(program, YUM_ERROR, 'Failed to download metadata', '\nUnable to initialize')
                window = program.ready()
                self.check_nothing_listed(window)
                # After the cache directory gets more space, a refresh succeeds.
                subprocess.run(['nsenter', '--mount', '--root', '--target', str(program.process.pid), 'mount', '-o',
                                'remount,size=64m', directory], check=True)
                self.check_refresh_helps(window)
                self.quit(window)

    def test_the_program_starts_even_if_the_log_directory_is_on_a_full_disk(self):
        directory = os.path.dirname(self.path('var/log/x'))
        with self.wrapped('mount -t tmpfs -o size=4k none {0}; printf x > {0}/fill'.format(directory)):
            with self.program() as program:
                window = program.ready()
                self.check_usable(window)
                self.quit(window)

    def test_a_missing_managed_root_is_reported(self):
        """The user has probably mistyped the path, so the program does not create the directory."""
        root = os.path.join(self.scratch, 'nothing')
        with self.program(environment={'VYREROOT': root}) as program:
            self.assertEqual(self.message(program, YUM_ERROR), 'The root directory {} does not exist'.format(root))
            self.assertEqual(program.wait(), 0)
            self.assertEqual(program.complaints(), '')
        self.assertFalse(os.path.exists(root))


if __name__ == '__main__':
    journey.main()
