#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Signals end the program. If a transaction is running, the program first completes the transaction."""
import signal

import journey
from journey import Gate, wait_for
from trouble import REPOMD, StartTest, YUM_ERROR


class SignalTest(StartTest):
    """A signal ends the program and never damages the system."""

    ENDING = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
    # Examples of signals whose purpose is not to end a program.
    OTHER = (signal.SIGUSR1, signal.SIGALRM, signal.SIGSEGV, signal.SIGRTMIN + 3)

    def check_next_run(self):
        """Check that the next run works, although the ended program may have left files behind."""
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.quit(window)

    def check_next_transaction(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.quit(window)

    def check_ends_by(self, program, number, said=''):
        """Send the signal, and check that the program ends by this signal. said: a pattern for the messages about
        canceled work.
        """
        program.process.send_signal(number)
        self.assertEqual(program.wait(), -number)
        self.assertRegex(program.complaints(), r'(?s)\A' + said + r'\Z')
        wait_for(lambda: program.left_over() == [], 'the end of all processes', 20)
        self.check_unchanged()
        self.assertEqual(self.locks(), [])

    def test_a_signal_ends_the_program_while_it_starts(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program() as program:
                self.check_ends_by(program, number)
                self.check_next_run()

    def test_a_signal_ends_the_idle_program(self):
        for number in self.ENDING + self.OTHER:
            with self.subTest(number=number), self.program() as program:
                program.ready()
                self.assertNotEqual(self.locks(), [])
                self.check_ends_by(program, number)
        self.check_next_run()

    def test_a_signal_ends_the_program_while_a_message_is_shown(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program('--disablerepo=*') as program:
                program.window(YUM_ERROR)
                self.check_ends_by(program, number)
        self.check_next_run()

    def test_a_signal_cancels_the_transaction_while_the_listing_is_shown(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program() as program:
                window = program.ready()
                window.show_all()
                window.mark_listed('pergola')
                window.apply()
                self.check_ends_by(program, number)
        self.check_next_transaction()

    def wait_download(self, program, path):
        gate = Gate()
        self.sandbox.server.faults[path] = gate
        self.addCleanup(gate.open)
        return gate

    def test_a_signal_ends_the_program_while_packages_are_collected(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            self.sandbox.expire_metadata()
            with self.subTest(number=number), self.program() as program:
                gate = self.wait_download(program, REPOMD)
                program.main()
                gate.wait_reached()
                self.check_ends_by(program, number, 'vyre: .*[Ii]nterrupted.*vyre: Unable to initialize')
            del self.sandbox.server.faults[REPOMD]
        self.check_next_run()

    def test_a_signal_cancels_the_transaction_while_packages_are_downloaded(self):
        path = '/sandbox-http/pergola-6.1-1.x86_64.rpm'
        for number in (signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number=number), self.program() as program:
                gate = self.wait_download(program, path)
                window = program.ready()
                window.show_all()
                window.mark_listed('pergola')
                window.accept(window.apply())
                gate.wait_reached()
                self.check_ends_by(program, number, 'vyre: .*Interrupted.*vyre: Unable to apply changes')
            del self.sandbox.server.faults[path]
        self.check_next_transaction()

    def test_a_download_interrupted_by_sigint_is_reported(self):
        """During a download, librepo handles SIGINT itself."""
        with self.program() as program:
            gate = self.wait_download(program, REPOMD)
            program.main()
            gate.wait_reached()
            program.process.send_signal(signal.SIGINT)
            self.refuse_without(program, 'sandbox-http', 'interrupted by a signal')
            self.message(program, YUM_ERROR, 'interrupted by a signal', '\nUnable to initialize')
            del self.sandbox.server.faults[REPOMD]
            window = program.ready()
            self.check_nothing_listed(window)
            self.check_ends_by(program, signal.SIGINT)
        self.check_next_run()

    def test_packages_can_be_read_again_after_an_interrupted_download(self):
        with self.program() as program:
            gate = self.wait_download(program, REPOMD)
            program.main()
            gate.wait_reached()
            program.process.send_signal(signal.SIGINT)
            self.refuse_without(program, 'sandbox-http')
            self.message(program, YUM_ERROR, 'interrupted by a signal')
            del self.sandbox.server.faults[REPOMD]
            window = program.ready()
            window.click_button('Refresh')
            wait_for(lambda: window.row_count() > 0, 'packages', 10)
            self.check_usable(window)
            self.quit(window)

    def test_a_transaction_succeeds_after_an_interrupted_download(self):
        path = '/sandbox-http/pergola-6.1-1.x86_64.rpm'
        with self.program() as program:
            gate = self.wait_download(program, path)
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            gate.wait_reached()
            program.process.send_signal(signal.SIGINT)
            self.message(program, YUM_ERROR, 'Unable to apply changes')
            del self.sandbox.server.faults[path]
            gate.open()
            window.wait_ready()
            self.check_unchanged()
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.quit(window)

    def test_a_signal_after_a_transaction_ends_the_program(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program() as program:
                window = program.ready()
                window.show_all()
                # The first and the third run install the package, the second run removes it.
                window.mark_listed('pergola')
                window.accept(window.apply())
                window.wait_ready()
                self.before = self.sandbox.installed()
                self.check_ends_by(program, number)
        self.check_next_run()

    def check_transaction_is_finished(self, number):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('slowpoke')
            window.accept(window.apply())
            wait_for(lambda: 'sleep' in [name_of(process) for process in program.left_over()], 'the scriptlet')
            program.process.send_signal(number)
            self.assertEqual(program.wait(), -number)
            # The signal has not interrupted the scriptlet, and the program has not ended before the scriptlet.
            self.assertEqual(program.left_over(), [])
            self.check_changed(new=['slowpoke-1.0-1.noarch'])
            self.check_history_complete()
            self.assertEqual(self.locks(), [])

    def test_sigint_during_a_transaction_ends_the_program_after_the_transaction(self):
        self.check_transaction_is_finished(signal.SIGINT)

    def test_sigterm_during_a_transaction_ends_the_program_after_the_transaction(self):
        self.check_transaction_is_finished(signal.SIGTERM)

    def test_sighup_during_a_transaction_ends_the_program_after_the_transaction(self):
        self.check_transaction_is_finished(signal.SIGHUP)

    def test_other_fatal_signals_during_a_transaction_end_the_program_after_the_transaction(self):
        for number in self.OTHER:
            with self.subTest(number=number):
                self.check_transaction_is_finished(number)
                self.sandbox.rpm('--erase', 'slowpoke')


def name_of(process):
    try:
        with open('/proc/{}/comm'.format(process)) as stream:
            return stream.read().strip()
    except OSError:
        return ''


if __name__ == '__main__':
    journey.main()
