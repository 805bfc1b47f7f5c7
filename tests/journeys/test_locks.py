#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Another program holds a lock, or has ended and left its lock file behind."""
import os
import signal
import subprocess

import journey
from journey import DATABASE_LOCK, driver
from trouble import StartTest, YUM_ERROR


class LockTest(StartTest):

    def lock(self, content):
        return self.write(DATABASE_LOCK, content)

    def test_a_message_names_the_process_that_holds_the_lock_until_it_releases_the_lock(self):
        path = self.lock(str(os.getpid()))
        with self.program() as program:
            text = self.message(program, YUM_ERROR, picture='lock-held')
            self.assertEqual(text, 'The rpm database already locked by {}\nUnable to obtain yum lock'.format(
                os.getpid()))
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('Unable to obtain yum lock', self.read_log(window))
            # A refresh tries to get the lock again, but does not remove the lock of another process.
            window.click_button('Refresh')
            self.message(program, YUM_ERROR, 'Unable to obtain yum lock')
            self.check_nothing_listed(window)
            with open(path) as stream:
                self.assertEqual(stream.read(), str(os.getpid()))
            os.unlink(path)
            self.check_refresh_helps(window)
            self.quit(window)

    def test_the_program_does_not_remove_the_lock_of_another_process(self):
        path = self.lock(str(os.getpid()))
        with self.program() as program:
            self.message(program, YUM_ERROR, 'Unable to obtain yum lock')
            program.ready()
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)
            self.assertEqual(self.locks(), [path])
            with open(path) as stream:
                self.assertEqual(stream.read(), str(os.getpid()))

    def test_a_second_vyre_on_the_same_system_lists_no_packages(self):
        with self.program() as first:
            first_window = first.ready()
            with self.program() as second:
                self.message(second, YUM_ERROR, 'already locked by {}\n'.format(first.process.pid),
                             'Unable to obtain yum lock')
                window = second.ready()
                self.check_nothing_listed(window)
                # The first program can still be used, and releases its lock when it ends.
                self.assertTrue(first_window.is_ready())
                first.process.send_signal(signal.SIGTERM)
                first.wait()
                self.check_refresh_helps(window)
                self.quit(window)

    def check_taken_over(self, content):
        self.lock(content)
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            with open(self.path(DATABASE_LOCK)) as stream:
                self.assertEqual(stream.read(), str(program.process.pid))
            self.quit(window)

    def test_a_lock_file_of_an_ended_process_is_taken_over(self):
        gone = subprocess.Popen(['true'])
        gone.wait()
        self.check_taken_over(str(gone.pid))

    def test_an_empty_lock_file_is_taken_over(self):
        self.check_taken_over('')

    def test_a_lock_file_that_is_a_directory_is_reported(self):
        path = self.path(DATABASE_LOCK)
        os.mkdir(path)
        with self.program() as program:
            self.message(program, YUM_ERROR, 'Is a directory', path, 'Unable to obtain yum lock')
            window = program.ready()
            self.check_nothing_listed(window)
            os.rmdir(path)
            self.check_refresh_helps(window)
            self.quit(window)


if __name__ == '__main__':
    journey.main()
