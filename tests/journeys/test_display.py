#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The program loses the display at different moments. It completes a running transaction, and cancels everything else.
"""
import os
import signal
import subprocess
import sys
import unittest

import journey
from journey import Gate, JourneyTest, driver, wait_for

REPOMD = '/sandbox-http/repodata/repomd.xml'
PERGOLA = '/sandbox-http/pergola-6.1-1.x86_64.rpm'

LOST = 'The display is lost. VYRE ends.'
GOES_ON = 'The display is lost. The transaction goes on without it.'
OVER = 'The transaction has ended. VYRE ends.'


class DisplayTest(JourneyTest):

    def setUp(self):
        super().setUp()
        self.temporary = os.path.join(self.scratch, 'tmp')
        os.mkdir(self.temporary)

    def started(self):
        return self.program(environment={'TMPDIR': self.temporary}, unset=['XDG_RUNTIME_DIR'])

    def lose(self, program):
        driver.kill_display()

    def gate(self, path):
        gate = Gate()
        self.sandbox.server.faults[path] = gate
        self.addCleanup(gate.open)
        return gate

    def check_end(self, program, *messages):
        """Check that the program has ended with status 1 and these messages, and has left no locks, files or processes.
        """
        status = program.wait()
        self.assertEqual(status, 1, program.stderr())
        for message in messages:
            self.assertIn('vyre: ' + message, program.stderr())
        self.assertEqual(self.locks(), [])
        self.assertEqual(os.listdir(self.temporary), [])
        wait_for(lambda: program.left_over() == [], 'the end of all processes')

    def check_nothing_done(self, program):
        self.check_end(program, LOST)
        self.assertNotIn(GOES_ON, program.stderr())
        self.check_unchanged()
        self.check_consistent()

    def mark_and_apply(self, program, *names):
        """Mark these packages and press Apply. Return the main window, and the dialog with the listing."""
        window = program.ready()
        window.show_all()
        for name in names:
            window.mark_listed(name)
        return window, window.apply()

    def test_losing_the_display_ends_the_idle_program(self):
        with self.started() as program:
            program.ready()
            self.assertNotEqual(self.locks(), [])
            self.lose(program)
            self.check_nothing_done(program)

    def test_losing_the_display_cancels_the_download_of_metadata(self):
        self.sandbox.expire_metadata()
        gate = self.gate(REPOMD)
        with self.started() as program:
            program.main()
            gate.wait_reached()
            self.lose(program)
            self.check_nothing_done(program)

    def test_losing_the_display_ends_the_wait_for_the_metadata_lock(self):
        lock = self.cache_lock('metadata')
        with self.started() as program:
            self.wait_waiting(program.main(), lock)
            self.lose(program)
            self.assertEqual(program.wait(), 1, program.stderr())
            self.assertTrue(lock.is_held())
            lock.let_go()
            self.check_nothing_done(program)

    def test_losing_the_display_ends_the_program_while_a_window_is_shown(self):
        with self.started() as program:
            window = program.ready()
            window.show_all()
            driver.key('F1')
            program.window('About')
            self.lose(program)
            self.check_nothing_done(program)

    def test_losing_the_display_cancels_the_transaction_while_the_listing_is_shown(self):
        with self.started() as program:
            self.mark_and_apply(program, 'pergola')
            self.lose(program)
            self.check_nothing_done(program)
            self.assertIn('vyre: Not Applying: Canceled', program.stderr())

    def test_losing_the_display_cancels_the_download_of_packages(self):
        gate = self.gate(PERGOLA)
        with self.started() as program:
            window, dialog = self.mark_and_apply(program, 'pergola')
            window.accept(dialog)
            gate.wait_reached()
            self.lose(program)
            self.check_nothing_done(program)
            self.assertIn('vyre: Unable to apply changes', program.stderr())

    def check_transaction_completes(self, lose, name='doorkeeper', new='doorkeeper-1.1-1.noarch',
                                    gone=('doorkeeper-1.0-1.noarch',)):
        """Lose the display while a scriptlet waits. Check that the program still completes the transaction."""
        waiting = self.waiting(name)
        with self.started() as program:
            window, dialog = self.mark_and_apply(program, name, 'birch-log', 'loudhailer')
            window.accept(dialog)
            waiting.wait_waiting()
            lose(program)
            wait_for(lambda: GOES_ON in program.stderr(), 'the message')
            self.assertTrue(program.running())
            waiting.let_go()
            self.check_end(program, GOES_ON, OVER)
            self.check_changed(new=[new, 'loudhailer-1.0-1.noarch'], gone=['birch-log-3.0-1.x86_64', *gone])
            self.check_history_complete()
            self.check_consistent()
            return program.stderr()

    def test_losing_the_display_does_not_interrupt_a_transaction(self):
        output = self.check_transaction_completes(self.lose)
        # After the loss of the display, the captured output goes to standard error. The 600,000 bytes of this
        # scriptlet are more than a pipe can hold.
        for stream in ('stdout', 'stderr'):
            self.assertEqual(output.count('vyre: loudhailer: {} line '.format(stream)), 6000)

    def test_losing_the_display_does_not_interrupt_the_last_scriptlets_of_a_transaction(self):
        output = self.check_transaction_completes(self.lose, 'lastword', 'lastword-1.0-1.noarch', ())
        self.assertIn('vyre: lastword: end', output)

    def test_cutting_the_display_connection_does_not_interrupt_a_transaction(self):
        def cut(program):
            driver.kill_window(program, driver.main_title())
        self.check_transaction_completes(cut)

    def test_the_end_of_the_session_does_not_interrupt_a_transaction(self):
        """At the end of a session, the desktop sends signals and closes the display at the same time."""
        def end(program):
            for number in (signal.SIGHUP, signal.SIGTERM):
                program.process.send_signal(number)
            self.lose(program)
        self.check_transaction_completes(end)

    def test_the_end_of_the_session_ends_the_idle_program(self):
        with self.started() as program:
            program.ready()
            for number in (signal.SIGHUP, signal.SIGTERM):
                program.process.send_signal(number)
            self.lose(program)
            self.assertNotEqual(program.wait(), 0)
            self.assertEqual(self.locks(), [])
            self.assertEqual(os.listdir(self.temporary), [])
            self.check_unchanged()

    def test_losing_the_display_during_the_question_about_a_key_declines_the_key(self):
        """If the user cannot answer, the program does not import the key."""
        with self.started() as program:
            window, dialog = self.mark_and_apply(program, 'wax-tablet')
            window.accept(dialog)
            program.window('Query')
            self.lose(program)
            self.check_nothing_done(program)
            self.assertIn('vyre: Confirmation: No', program.stderr())


class OwnDisplays(unittest.TestCase):
    """Tests that run on displays of their own, because each test ends its own display."""


def on_own_display(name):
    def run(self):
        done = subprocess.run([os.path.join(journey.TESTS, 'support', 'with-display'), '--accessible',
                               sys.executable, '-B', os.path.abspath(__file__), 'DisplayTest.' + name])
        self.assertEqual(done.returncode, 0)
    return run


for method in unittest.defaultTestLoader.getTestCaseNames(DisplayTest):
    setattr(OwnDisplays, method, on_own_display(method))


if __name__ == '__main__':
    unittest.main(verbosity=2, warnings=False, defaultTest='OwnDisplays')
