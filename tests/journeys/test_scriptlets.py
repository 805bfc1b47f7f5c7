#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Scriptlets print output and start processes. The log shows the output, and the processes do not disturb the
transaction.
"""
import os
import shutil

import journey
from journey import Gate, JourneyTest, driver, wait_for


class OutputTest(JourneyTest):

    def test_long_scriptlet_output_on_both_streams_is_complete_in_the_log(self):
        with self.opened() as window:
            window.mark_listed('loudhailer')
            self.carry_out(window)
            self.check_changed(new=['loudhailer-1.0-1.noarch'])
            lines = self.read_log(window).splitlines()
            for stream in ('stdout', 'stderr'):
                begin = 'loudhailer: {} line '.format(stream)
                wanted = [(begin + '{:05} of 06000 '.format(number)).ljust(49, '.') for number in range(1, 6001)]
                self.assertEqual([line for line in lines if line.startswith(begin)], wanted)
            self.check_usable(window)
        self.check_consistent()

    def test_long_scriptlet_output_is_added_to_the_open_log_window(self):
        gate = Gate()
        self.sandbox.server.faults['/sandbox-http/loudhailer-1.0-1.noarch.rpm'] = gate
        with self.opened() as window:
            window.mark_listed('loudhailer')
            window.accept(window.apply())
            gate.wait_reached()
            driver.key('ctrl+l')
            log = window.program.window('VYRE Log')
            gate.open()
            window.wait_ready()
            self.check_changed(new=['loudhailer-1.0-1.noarch'])
            log.click_button('Close')
            window.program.no_window('VYRE Log')
            text = self.read_log(window)
            for stream in ('stdout', 'stderr'):
                self.assertEqual(text.count('\nloudhailer: {} line '.format(stream)), 6000)

    def test_scriptlet_output_without_a_final_line_feed_is_in_the_log(self):
        with self.opened() as window:
            window.mark_listed('halfline')
            window.mark_listed('chatterbox')
            self.carry_out(window)
            self.check_changed(new=['halfline-1.0-1.noarch', 'chatterbox-1.0-1.noarch'])
            lines = self.read_log(window).splitlines()
            for line in ('halfline: first line', 'halfline: no line feed after this',
                         'chatterbox: post to standard output', 'chatterbox: post to standard error'):
                self.assertEqual(lines.count(line), 1, lines)
            window.mark_listed('halfline')
            self.carry_out(window)
            self.check_changed(new=['chatterbox-1.0-1.noarch'])
            self.assertEqual(self.read_log(window).splitlines().count('halfline: nor after this'), 1)
        self.check_consistent()


class ProcessTest(JourneyTest):

    def test_a_background_process_of_a_scriptlet_can_end_during_the_transaction(self):
        nightwatch, glutton = self.waiting('nightwatch'), self.waiting('glutton')
        with self.opened() as window:
            window.mark_listed('nightwatch')
            window.mark_listed('glutton')
            window.accept(window.apply())
            glutton.wait_waiting()
            self.assertTrue(nightwatch.is_waiting())
            nightwatch.let_go()
            wait_for(lambda: not nightwatch.is_waiting(), 'the end of the process of the scriptlet')
            glutton.let_go()
            window.wait_ready()
            self.check_changed(new=['nightwatch-1.0-1.noarch', 'glutton-1.0-1.noarch'])
            self.check_usable(window)
        self.check_consistent()

    def test_a_background_process_of_a_scriptlet_can_outlive_the_transaction(self):
        nightwatch = self.waiting('nightwatch')
        with self.opened() as window:
            window.mark_listed('nightwatch')
            self.carry_out(window)
            self.assertTrue(nightwatch.is_waiting())
            self.check_changed(new=['nightwatch-1.0-1.noarch'])
            # The process that the scriptlet has left behind prevents neither the next transaction nor the end of the
            # program.
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_changed(new=['nightwatch-1.0-1.noarch', 'pergola-6.1-1.x86_64'])
            self.assertTrue(nightwatch.is_waiting())
            nightwatch.let_go()
            wait_for(lambda: not nightwatch.is_waiting(), 'the end of the process of the scriptlet')

    def test_a_browser_that_the_user_has_opened_can_end_during_the_transaction(self):
        share = os.path.join(self.scratch, 'share')
        shutil.copytree(driver.SHARE, share)
        ending = os.path.join(self.scratch, 'ending')
        with open(os.path.join(share, 'webbrowser'), 'w') as stream:
            stream.write('#!/bin/sh\ntouch {0}/running.$$\nwhile [ ! -e {1} ]; do sleep 0.05; done\n'
                         'rm {0}/running.$$\n'.format(self.scratch, ending))

        def wait_running(count):
            wait_for(lambda: len([name for name in os.listdir(self.scratch) if name.startswith('running.')]) == count,
                     '{} browsers'.format(count))
        doorkeeper = self.waiting('doorkeeper')
        with self.program(environment={'VYRESHARE': share}) as program:
            window = program.ready()
            window.show_all()
            self.choose_from_cell_menu(window, 'abacus-cli', driver.REPOSITORY, 1)
            wait_running(1)
            self.choose_from_cell_menu(window, 'amberfont-sans', driver.REPOSITORY, 1)
            wait_running(2)
            window.mark_listed('doorkeeper')
            window.accept(window.apply())
            doorkeeper.wait_waiting()
            open(ending, 'w').close()
            wait_running(0)
            self.assertFalse(window.is_ready())
            doorkeeper.let_go()
            self.check_usable(window)
            self.check_changed(new=['doorkeeper-1.1-1.noarch'], gone=['doorkeeper-1.0-1.noarch'])
            self.assertNotIn('zombie', self.read_log(window))
            self.quit(window)
        self.check_consistent()


if __name__ == '__main__':
    journey.main()
