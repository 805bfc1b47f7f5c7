#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user reads the outcome of a transaction: the line next to the menus, the log that it opens, and the message about
a failure.
"""
import journey
from journey import JourneyTest, driver, wait_for

BUTTON = 'Show in Log'


class OutcomeTest(JourneyTest):

    def check_line(self, window, text):
        wait_for(lambda: text in window.labels(), 'the line ' + repr(text), seconds=300)

    def check_no_line(self, window):
        wait_for(lambda: BUTTON not in window.buttons(), 'the end of the line')

    def line_at_top(self, log):
        """The text of the log line at the top of the log's window."""
        text = max(log.find_all(driver.pyatspi.ROLE_TEXT), key=lambda each: len(driver.text_of(each)))
        x, y, _, _ = driver.rectangle(text)
        offset = text.queryText().getOffsetAtPoint(x + 8, y + 12, driver.pyatspi.DESKTOP_COORDS)
        return driver.text_of(text)[offset:].split('\n')[0]

    def test_the_outcome_line_stays_until_the_next_operation_and_opens_the_log_by_keyboard(self):
        with self.opened() as window:
            self.assertNotIn(BUTTON, window.buttons())
            # In each collection, one repository is unreachable. The notice about this repository must not hide the
            # outcome.
            self.check_line(window, 'The repository sandbox-unreachable is left out: see the log (Ctrl+L)')
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_line(window, '1 installed')
            for name in ('limpgate', 'loudhailer', 'almanac'):
                window.mark_listed(name)
            window.set_filter('^kernel 6.1.31')
            window.wait_names(['kernel'])
            window.mark('kernel')
            window.accept(window.apply())
            self.check_line(window, '3 installed, 1 removed; a restart is needed; the scriptlet of limpgate failed')
            window.wait_ready()
            window.wait_settled()
            self.assertFalse([label for label in window.labels() if 'Ctrl+L' in label])
            self.picture('outcome')
            # Neither a filter nor the Log window is an operation, so the outcome is still shown.
            window.set_filter('^limpgate ')
            window.press('alt+l')
            log = window.program.window('VYRE Log')
            log.wait_settled()
            self.picture('outcome-log')
            wait_for(lambda: self.line_at_top(log) == 'Applying', 'the beginning of the transaction')
            texts = wait_for(lambda: log.find_all(driver.pyatspi.ROLE_TEXT), 'the text of the log')
            whole = max((driver.text_of(each) for each in texts), key=len)
            self.assertEqual(whole.count('The scriptlet of limpgate-1.0-1.noarch failed.'), 1)
            self.assertIn("Failed to download metadata for repo 'sandbox-unreachable'",
                          whole.partition('The scriptlet of limpgate-1.0-1.noarch failed.')[2])
            driver.key('Escape')
            window.program.no_window('VYRE Log')
            # The letters of the menus next to the line still open the menus.
            window.wait_settled()
            before = window.program.popups()
            driver.key('alt+w')
            wait_for(lambda: window.program.popups() > before, 'the menu')
            driver.key('Escape')
            wait_for(lambda: window.program.popups() <= before, 'the end of the menu')
            driver.key('Escape')
            self.check_line(window, '3 installed, 1 removed; a restart is needed; the scriptlet of limpgate failed')
            window.press('alt+f')
            self.check_no_line(window)
            window.wait_ready()
        self.check_changed(new=['pergola-6.1-1.x86_64', 'limpgate-1.0-1.noarch', 'loudhailer-1.0-1.noarch',
                                'kernel-6.1.31-1.x86_64'], gone=['almanac-1.9-1.noarch'])

    def test_the_message_about_a_partial_failure_begins_with_the_number_of_changes(self):
        with self.opened() as window:
            for name in ('brokenlatch', 'pergola', 'abacus-cli'):
                window.mark_listed(name)
            window.accept(window.apply())
            dialog = self.read_dialog(window.program, 'VYRE Yum Error', 'The transaction failed for:\nbrokenlatch',
                                      'The scriptlet of brokenlatch-1.0-1.noarch failed.',
                                      'Unable to apply changes')
            self.assertTrue(dialog.text().startswith('Carried out: 1 installed, 1 updated.\n'), dialog.text())
            self.picture('failure-after-changes')
            self.close_dialog(window.program, dialog)
            window.wait_ready()
            self.check_line(window, '1 installed, 1 updated, 1 failed; the scriptlet of brokenlatch failed')
            window.set_filter('^brokenlatch ')
            wait_for(lambda: set(window.names()) == {'brokenlatch'}, 'brokenlatch alone')
            self.assertEqual(window.action('brokenlatch'), 'install')
            self.picture('outcome-failed')


if __name__ == '__main__':
    journey.main()
