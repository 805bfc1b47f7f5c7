#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user closes the program while it works or is idle."""
import os
import signal

import journey
from journey import Gate, JourneyTest, driver, wait_for


class ClosingTest(JourneyTest):
    """While the program changes the system, it refuses to close. During every other operation, a request to close stops
    this operation.
    """

    def request_close(self, program):
        """Close the main window, press the key for Quit, and wait until the program has received both requests."""
        window = driver.xdotool('search', '--onlyvisible', '--pid', program.process.pid, '--name',
                                '^' + driver.main_title() + '$').split()[0]
        before = driver.xdotool('getwindowgeometry', window)
        driver.xdotool('windowfocus', '--sync', window)
        driver.key('alt+F4')
        # The window manager and the program handle requests in order. So when the window has its new size, the program
        # has received the request to close.
        driver.xdotool('windowsize', window, 900, 650)
        wait_for(lambda: driver.xdotool('getwindowgeometry', window) != before, 'the new size of the window')
        driver.key('ctrl+q')
        driver.key('ctrl+l')
        log = program.window('VYRE Log')
        self.assertIn(driver.main_title(), program.titles())
        log.click_button('Close')
        program.no_window('VYRE Log')

    def test_closing_the_window_stops_the_reading_of_repositories(self):
        gate = Gate()
        self.sandbox.server.faults['/sandbox-http/repodata/repomd.xml'] = gate
        with self.program() as program:
            program.main().wait_settled()
            gate.wait_reached()
            self.close_by_window_manager(program)
            self.check_ended(program)
            self.check_unchanged()

    def test_closing_the_window_stops_a_download(self):
        gate = Gate()
        self.sandbox.server.faults['/sandbox-http/pergola-6.1-1.x86_64.rpm'] = gate
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            gate.wait_reached()
            self.close_by_window_manager(program)
            self.check_ended(program)
            self.check_unchanged()

    def test_window_cannot_be_closed_during_a_transaction(self):
        doorkeeper = self.waiting('doorkeeper')
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('doorkeeper')
            window.mark_listed('birch-log')
            window.accept(window.apply())
            doorkeeper.wait_waiting()
            self.picture('transaction')
            self.request_close(program)
            self.assertTrue(program.running())
            self.assertFalse(window.is_ready())
            refusal = 'VYRE cannot close while it changes packages'
            wait_for(lambda: refusal in window.labels(), 'the notice')
            doorkeeper.let_go()
            self.check_usable(window)
            self.check_changed(new=['doorkeeper-1.1-1.noarch'],
                               gone=['doorkeeper-1.0-1.noarch', 'birch-log-3.0-1.x86_64'])
            self.assertNotIn(refusal, window.labels())
            self.assertIn(refusal, self.read_log(window))
            self.close(window)
        self.check_consistent()

    def close_by_window_manager(self, program):
        driver.xdotool('search', '--onlyvisible', '--sync', '--pid', program.process.pid, '--name',
                       '^' + driver.main_title() + '$', 'windowfocus', '--sync')
        driver.key('alt+F4')

    def check_closed_while_waiting(self, program, lock):
        """Close the program. Check that it ends without a message, and that the other process keeps its lock."""
        self.close_by_window_manager(program)
        self.assertEqual(program.wait(), 0, program.stderr())
        self.assertTrue(lock.is_held())
        lock.let_go()
        self.check_ended(program)
        self.check_unchanged()

    def test_closing_the_window_ends_the_wait_for_the_metadata_lock(self):
        lock = self.cache_lock('metadata')
        with self.program() as program:
            self.wait_waiting(program.main(), lock)
            self.picture('waiting-for-metadata')
            self.check_closed_while_waiting(program, lock)

    def test_closing_the_window_ends_the_wait_for_the_download_lock(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            lock = self.cache_lock('download')
            window.accept(window.apply())
            self.wait_waiting(window, lock)
            self.check_closed_while_waiting(program, lock)

    def cached(self):
        """The files in the cache, without lock files."""
        return sorted(os.path.join(directory, name) for directory, _, names in os.walk(
            os.path.join(self.sandbox.root, 'var/cache/yum')) for name in names if not name.endswith('.pid'))

    def clean_all(self, window, kind):
        """Choose Clean All while another process holds a lock; return the lock."""
        lock = self.cache_lock(kind)
        self.choose_from_menu(window, 'Cache', 3)
        self.wait_waiting(window, lock)
        return lock

    def test_closing_the_window_stops_a_cleaning_that_waits_for_the_metadata_lock(self):
        with self.program() as program:
            window = program.ready()
            before = self.cached()
            self.assertTrue(any(name.endswith('.solv') for name in before))
            lock = self.clean_all(window, 'metadata')
            self.picture('waiting-to-clean')
            self.check_closed_while_waiting(program, lock)
        self.assertEqual(self.cached(), before)

    def test_cleaning_the_cache_waits_until_another_process_releases_the_lock(self):
        with self.program() as program:
            window = program.ready()
            old = os.path.join(self.sandbox.root, 'var/cache/yum/sandbox-http-0123456789abcdef/packages/old.rpm')
            os.makedirs(os.path.dirname(old))
            open(old, 'w').close()
            lock = self.clean_all(window, 'download')
            self.assertTrue(os.path.exists(old))
            lock.let_go()
            self.check_usable(window)
            self.assertFalse(os.path.exists(old))
            self.close(window)

    def test_a_collection_waits_until_another_process_releases_the_lock(self):
        lock = self.cache_lock('metadata')
        with self.program() as program:
            window = program.main()
            self.wait_waiting(window, lock)
            lock.let_go()
            self.check_usable(window)
            self.assertIn(lock.activity, self.read_log(window))
            window.show_all()
            window.mark_listed('pergola')
            lock = self.cache_lock('download')
            window.accept(window.apply())
            self.wait_waiting(window, lock)
            lock.let_go()
            self.check_usable(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.close(window)

    def test_sigterm_ends_the_wait_for_the_metadata_lock(self):
        lock = self.cache_lock('metadata')
        with self.program() as program:
            self.wait_waiting(program.main(), lock)
            program.process.terminate()
            self.assertEqual(program.wait(), -signal.SIGTERM, program.stderr())
            self.assertTrue(lock.is_held())
            lock.let_go()
            self.assertIn('VYRE no longer waits for ', program.stderr())
            self.assertNotIn('Traceback', program.stderr())
            self.assertNotIn('Internal error', program.stderr())
            self.assertEqual(self.locks(), [])
            self.check_unchanged()

    def test_the_main_window_can_be_closed_while_packages_are_marked(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            self.close(window)
            self.check_unchanged()


if __name__ == '__main__':
    journey.main()
