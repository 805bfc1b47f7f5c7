#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user stops operations, and continues without failing repositories."""
import os
import time

import journey
from journey import driver, wait_for
from trouble import REPOMD, StartTest, YUM_ERROR

from vyresandbox import server

GARGANTUA = '/sandbox-http/gargantua-1.0-1.noarch.rpm'
QUESTION = 'Repositories'
HTTP = ('sandbox-http', 'sandbox-signed', 'sandbox-updates')


class StoppingTest(StartTest):

    def is_stoppable(self, window):
        return driver.enabled(window.button('Stop'))

    def wait_slow(self, window, path):
        """Wait until the program waits for the slow server and the Stop button is enabled."""
        wait_for(lambda: path in self.sandbox.server.paths(), path)
        wait_for(lambda: self.is_stoppable(window), 'the button')
        window.wait_settled()

    def stop(self, window, act):
        begin = time.monotonic()
        act()
        window.wait_ready()
        # If the program did not stop, the answer of the server would take much longer.
        self.assertLess(time.monotonic() - begin, 60)
        self.assertEqual(window.program.titles(), [driver.main_title()])

    def click_stop(self, window):
        driver.click(window.button('Stop'))

    def test_the_stop_button_its_mnemonic_and_escape_stop_a_refresh(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            self.sandbox.server.faults[REPOMD] = server.paced(1)
            for number, act in enumerate((lambda: self.click_stop(window), lambda: driver.key('Escape'),
                                          lambda: driver.key('alt+s')), 1):
                del self.sandbox.server.requests[:]
                self.sandbox.expire_metadata()
                window.click_button('Refresh')
                self.wait_slow(window, REPOMD)
                self.picture('stoppable')
                self.stop(window, act)
                self.picture('stopped')
                window.wait_names(['pergola'])
                window.wait_action('install', 'pergola')
                log = self.read_log(window)
                self.assertEqual(log.count('Stopped.'), number)
                self.assertNotIn('Interrupted', log)
                self.assertNotIn('Unable to', log)
            del self.sandbox.server.faults[REPOMD]
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.check_refresh_helps(window)
            self.quit(window)

    def test_the_installed_packages_are_listed_if_the_user_stops_the_first_collection(self):
        self.sandbox.clear_cache()
        for name in HTTP:
            self.sandbox.server.faults['/{}/repodata/repomd.xml'.format(name)] = server.paced(1)
        with self.program() as program:
            window = program.main()
            wait_for(lambda: self.sandbox.server.paths(), 'a request')
            wait_for(lambda: self.is_stoppable(window), 'the button')
            window.wait_settled()
            self.stop(window, lambda: self.click_stop(window))
            window.show_all()
            wait_for(lambda: 'almanac' in window.names(), 'the installed packages')
            self.assertNotIn('pergola', window.names())
            self.sandbox.server.faults.clear()
            self.check_refresh_helps(window)
            self.assertIn('pergola', window.names())
            self.quit(window)

    def test_escape_stops_a_search(self):
        # The C library needs hours for this expression.
        hard = '(.*)(.*)(.*)(.*)\\1\\2\\3\\4[Q][9]'
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.choose(0, 'Search')
            window.wait_ready()

            def search(expression):
                # set_filter() would press a key while the controls are disabled.
                window.type_expression(expression)
                driver.key('Return')

            search('^pergola$')
            window.wait_names(['pergola'])
            window.wait_ready()
            search(hard)
            wait_for(lambda: self.is_stoppable(window), 'the button')
            window.wait_settled()  # the window is responsive
            self.picture('stoppable-search')
            self.stop(window, lambda: driver.key('Escape'))
            self.picture('stopped-search')
            window.wait_names(['pergola'])
            self.assertEqual(driver.text_of(window.edit()), hard)
            self.assertEqual(self.read_log(window).count('Stopped.'), 1)
            search('^gargantua$')
            window.wait_names(['gargantua'])
            self.quit(window)

    def test_the_stop_button_and_escape_stop_a_download(self):
        self.sandbox.server.faults[GARGANTUA] = server.paced(1)
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('gargantua')
            for number, act in enumerate((lambda: self.click_stop(window), lambda: driver.key('Escape')), 1):
                del self.sandbox.server.requests[:]
                window.accept(window.apply())
                self.wait_slow(window, GARGANTUA)
                self.picture('stoppable-download')
                self.stop(window, act)
                wait_for(lambda: 'Stopped: nothing was changed' in window.labels(), 'the outcome')
                self.check_unchanged()
                window.wait_action('install', 'gargantua')
                log = self.read_log(window)
                self.assertEqual(log.count('Stopped.'), number)
                self.assertNotIn('Unable to', log)
            del self.sandbox.server.faults[GARGANTUA]
            self.carry_out(window)
            self.check_changed(new=['gargantua-1.0-1.noarch'])
            self.quit(window)
        self.check_history_complete()

    def test_a_transaction_cannot_be_stopped(self):
        doorkeeper = self.waiting('doorkeeper')
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('doorkeeper')
            window.accept(window.apply())
            doorkeeper.wait_waiting()
            button = window.button('Stop')
            self.assertFalse(driver.enabled(button))
            self.assertIn('After a stop, the system would have only some of these changes', button.description)
            window.wait_settled()
            driver.key('Escape')
            driver.click(button)
            self.picture('not-stoppable')
            doorkeeper.let_go()
            self.check_usable(window)
            self.check_changed(new=['doorkeeper-1.1-1.noarch'], gone=['doorkeeper-1.0-1.noarch'])
            self.quit(window)
        self.check_consistent()

    def test_escape_stops_the_wait_for_the_download_lock(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            lock = self.cache_lock('download')
            window.accept(window.apply())
            self.wait_waiting(window, lock)
            self.stop(window, lambda: driver.key('Escape'))
            self.assertTrue(lock.is_held())
            lock.let_go()
            self.check_unchanged()
            window.wait_action('install', 'pergola')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.quit(window)


class WithoutRepositoriesTest(StartTest):

    def add(self, *names):
        for name in names:
            self.write('etc/yum.repos.d/{}.repo'.format(name),
                       '[{0}]\nname={0}\nenabled=1\nbaseurl=http://127.0.0.1:9/{0}/\nretries=1\ntimeout=2\n'.format(
                           name))

    def question(self, program, name):
        """Wait for the question about this repository; return it."""
        def look():
            return next((dialog for dialog in program.windows() if dialog.title == QUESTION and
                         'The repository {} cannot be read:'.format(name) in dialog.text()), None)
        dialog = wait_for(look, 'the question about ' + name)
        self.assertIn('Go on without it for this session?', dialog.text())
        return dialog

    def test_a_question_names_each_failing_repository(self):
        self.add('away', 'gone')
        self.sandbox.server.faults[REPOMD] = server.status(401)
        with self.program() as program:
            dialog = self.question(program, 'away')
            self.assertIn("repo 'away'", dialog.text())
            self.assertNotIn('gone', dialog.text())
            self.assertNotIn('unreachable', dialog.text())
            self.assertEqual(dialog.buttons(), ['Yes', 'No', 'Yes to All'])
            dialog.click_button('Yes')
            dialog = self.question(program, 'gone')
            dialog.click_button('Yes')
            dialog = self.question(program, 'sandbox-http')
            self.assertIn('401', dialog.text())
            self.assertEqual(dialog.buttons(), ['Yes', 'No'])
            dialog.wait_settled()
            self.picture('failing-repository')
            dialog.click_button('Yes')
            window = program.ready()
            window.show_all()
            wait_for(lambda: 'almanac' in window.names(), 'the installed packages')
            self.assertNotIn('pergola', window.names())
            # The editor shows the repositories that are disabled for the session. If the user enables one of
            # them, the program reads this repository again.
            del self.sandbox.server.faults[REPOMD]
            driver.key('ctrl+e')
            editor = program.window('VYRE Repository Configuration Editor')
            table = next(each for each in driver.walk(editor.accessible)
                         if each.getRole() in (driver.pyatspi.ROLE_TABLE, driver.pyatspi.ROLE_TREE_TABLE))
            cells = table.queryTable()
            row = wait_for(lambda: [number for number in range(cells.nRows)
                                    if cells.getAccessibleAt(number, 2).name == 'sandbox-http'], 'the row')[0]
            editor.wait_settled()
            self.picture('switched-off-repository')
            driver.click(cells.getAccessibleAt(row, 0))
            editor.click_button('OK')
            program.no_window('VYRE Repository Configuration Editor')
            self.check_usable(window)
            wait_for(lambda: 'pergola' in window.names(), 'the packages of the repository')
            self.quit(window)

    def test_only_installed_packages_are_listed_if_the_user_continues_without_any_repository(self):
        self.sandbox.clear_cache()
        self.sandbox.stop()
        with self.program('--disablerepo=sandbox-file') as program:
            dialog = self.question(program, 'sandbox-http')
            dialog.click_button('Yes to All')
            window = program.ready()
            window.show_all()
            wait_for(lambda: 'almanac' in window.names(), 'the installed packages')
            self.assertNotIn('pergola', window.names())
            self.picture('without-network')
            # A refresh does not ask about these repositories a second time.
            window.click_button('Refresh')
            window.wait_ready()
            wait_for(lambda: 'almanac' in window.names(), 'the installed packages')
            self.assertEqual(program.titles(), [driver.main_title()])
            window.mark_listed('birch-log')
            self.carry_out(window)
            self.check_changed(gone=['birch-log-3.0-1.x86_64'])
            self.quit(window)

    def test_if_the_user_refuses_to_go_on_without_a_repository_the_table_is_empty_until_a_collection_succeeds(self):
        with self.program('--state=all') as program:
            window = program.ready()
            for name in ('pergola', 'birch-log'):
                window.mark_listed(name)
            self.add('gone')
            window.click_button('Refresh')
            self.refuse_without(program, 'gone')
            self.message(program, YUM_ERROR, "Failed to download metadata for repo 'gone'", '\nUnable to initialize')
            self.check_nothing_listed(window)
            # The next collection succeeds, and sets the marks again.
            os.unlink(self.path('etc/yum.repos.d/gone.repo'))
            window.click_button('Refresh')
            window.wait_names(['birch-log'])
            window.wait_ready()
            window.set_filter('^(pergola|birch-log) ')
            window.wait_names(['pergola', 'birch-log'])
            window.wait_action('install', 'pergola')
            window.wait_action('remove', 'birch-log')
            self.quit(window)


if __name__ == '__main__':
    journey.main()
