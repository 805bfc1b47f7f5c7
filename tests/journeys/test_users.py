#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The program runs as a user who can read the packages but cannot change them."""
import contextlib
import os
import shutil
import stat
import subprocess
import unittest.mock

import journey
from journey import JourneyTest, driver, wait_for

YUM_ERROR = 'VYRE Yum Error'
NOBODY = 65534
AS_NOBODY = 'setpriv --reuid={0} --regid={0} --clear-groups'.format(NOBODY)


class UserTest(JourneyTest):

    REFUSAL = 'VYRE cannot change packages, because it has no right to change '

    def setUp(self):
        super().setUp()
        os.chmod(self.scratch, 0o755)
        # The user who runs the program may have no access to the source tree.
        self.share = shutil.copytree(driver.SHARE, os.path.join(self.scratch, 'share'))
        self.binary = shutil.copy(os.environ['VYRE_BINARY'], os.path.join(self.scratch, 'vyre'))
        self.home = os.path.join(self.scratch, 'home')
        os.mkdir(self.home)
        os.chmod(self.home, 0o777)

    @contextlib.contextmanager
    def run_by(self, command):
        """Run the program as another user, with a /var/tmp that no other process sees."""
        path = os.path.join(self.scratch, 'wrapper')
        with open(path, 'w') as stream:
            stream.write('#!/bin/sh\nexec unshare --mount sh -ec \'mount -t tmpfs -o mode=1777 none /var/tmp; '
                         'exec {} "{}" "$@"\' sh "$@"\n'.format(command, self.binary))
        os.chmod(path, 0o755)
        with unittest.mock.patch.dict(os.environ, VYRE_BINARY=path), self.program(
                environment={'HOME': self.home, 'TMPDIR': self.home, 'VYRESHARE': self.share},
                unset=['XDG_RUNTIME_DIR']) as program:
            yield program

    def change_owner(self, name, user):
        subprocess.run(['chown', '--recursive', str(user), os.path.join(self.sandbox.root, name)],
                       check=True)

    def check_ends(self, window):
        driver.key('ctrl+q')
        self.assertEqual(window.program.wait(), 0)
        self.assertEqual(window.program.complaints(), '')

    def all_files(self):
        """All files of the managed system, with their types, modes, owners, times and sizes."""
        found = {}
        for directory, directories, files in os.walk(self.sandbox.root):
            for name in directories + files:
                path = os.path.join(directory, name)
                status = os.lstat(path)
                # The time of a directory changes even if a process creates a file in it and removes the file again.
                found[path] = (stat.S_IFMT(status.st_mode), status.st_mode, status.st_uid, status.st_mtime,
                               status.st_size)
        return found

    def test_ordinary_user_sees_everything_and_changes_nothing(self):
        with self.opened() as window:
            rows = sorted(window.rows())
        before = self.all_files()
        with self.run_by(AS_NOBODY) as program:
            window = program.ready()
            # Before the user marks a package, a notice already says that the program cannot change packages.
            text = 'VYRE cannot change packages, because it does not run as root'
            wait_for(lambda: text in window.labels(), 'the notice')
            self.picture('not-root-notice')
            self.assertIn(text, self.read_log(window))
            window.show_all()
            self.assertEqual(sorted(window.rows()), rows)
            window.mark_listed('pergola')
            window.mark_listed('birch-log')
            window.click_button('Apply Actions')
            dialog = program.window(YUM_ERROR)
            self.assertEqual(wait_for(dialog.text, 'the text'), 'Must be run as root to apply changes')
            dialog.wait_settled()
            self.picture('not-root')
            self.close_dialog(program, dialog)
            window.wait_ready()
            self.assertEqual(program.titles(), [driver.main_title()])
            # The notice about the rights is visible again, and no notice about other errors.
            wait_for(lambda: text in window.labels(), 'the notice after the refusal')
            self.assertFalse([label for label in window.labels() if 'reported errors' in label])
            # The program has kept the mark.
            window.wait_action('remove', 'birch-log')
            self.check_usable(window)
            window.set_filter('^pergola ')
            window.wait_names(['pergola'])
            window.select_first()
            window.click_button('Describe')
            description = program.window('VYRE Package Description')
            self.assertIn('Available for installation', description.labels())
            description.click_button('Close')
            program.no_window(description.title)
            self.assertIn('Must be run as root to apply changes', self.read_log(window))
            self.check_ends(window)
        self.assertEqual(self.all_files(), before)

    def test_an_ordinary_user_can_search(self):
        with self.run_by(AS_NOBODY) as program:
            window = program.ready()
            window.show_all()
            window.choose(0, 'Search')
            # When the user presses Enter, the program first reads the file lists. It ignores keys until it has read
            # them.
            window.type_expression('/usr/share/doc/orchard/README')
            driver.key('Return')
            window.wait_names(['orchard'])
            window.wait_ready()
            self.check_ends(window)

    def test_an_ordinary_user_has_a_separate_cache(self):
        with self.opened():
            pass
        before = self.all_files()
        with self.run_by(AS_NOBODY) as program:
            window = program.ready()
            self.choose_from_menu(window, 'Cache', 3)
            window.wait_ready()
            wait_for(lambda: 'Cleaning All' in self.read_log(window), 'the cleaning')
            self.check_usable(window)
            self.check_ends(window)
        self.assertEqual(self.all_files(), before)

    def test_root_inside_a_user_namespace_changes_nothing_if_root_is_an_ordinary_user_outside(self):
        before = self.all_files()
        with self.run_by(AS_NOBODY + ' unshare --user --map-root-user') as program:
            self.check_message(program, YUM_ERROR, 'Permission denied', 'rpmdb_lock.pid', '\nUnable to obtain yum lock')
            window = program.ready()
            self.assertEqual(window.row_count(), 0)
            self.assertIn('Unable to obtain yum lock', self.read_log(window))
            self.check_ends(window)
        self.assertEqual(self.all_files(), before)

    def test_root_inside_a_user_namespace_changes_nothing_if_root_can_write_only_the_cache_and_the_log(self):
        for name in ('var/cache', 'var/log', 'var/lib/dnf'):
            self.change_owner(name, NOBODY)
        with self.run_by(AS_NOBODY + ' unshare --user --map-root-user') as program:
            window = program.ready()
            # Before the user marks a package, a notice already says that the program cannot change packages.
            text = self.REFUSAL + self.sandbox.root
            wait_for(lambda: any(label.startswith(text) for label in window.labels()), 'the notice')
            self.picture('namespace-notice')
            window.show_all()
            window.mark_listed('pergola')
            window.mark_listed('birch-log')
            window.accept(window.apply())
            self.check_message(program, YUM_ERROR, 'Permission denied', 'Could not run transaction.',
                               '\nUnable to apply changes')
            self.check_usable(window)
            self.assertEqual(program.titles(), [driver.main_title()])
            self.assertIn('Could not run transaction.', self.read_log(window))
            self.check_unchanged()
            self.check_ends(window)
        for name in ('var/cache', 'var/log', 'var/lib/dnf'):
            self.change_owner(name, 0)
        self.check_consistent()

    def test_root_inside_a_user_namespace_can_change_packages_if_this_user_is_root_outside(self):
        with self.run_by('unshare --user --map-root-user') as program:
            window = program.ready()
            self.assertNotIn(self.REFUSAL, self.read_log(window))
            window.show_all()
            window.mark_listed('pergola')
            window.mark_listed('birch-log')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'], gone=['birch-log-3.0-1.x86_64'])
            self.check_ends(window)
        self.check_consistent()


if __name__ == '__main__':
    journey.main()
