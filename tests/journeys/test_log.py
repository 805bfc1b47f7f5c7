#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user reads the log with times, finds text in it, and saves it, by keys alone."""
import os
import re
import stat

import journey
from journey import JourneyTest, driver, wait_for

TITLE = 'VYRE Log'
SAVING = 'Save the Log'
TEXT = driver.pyatspi.ROLE_TEXT
# The time at the start of a line in the window, and at the start of a line in a saved file.
TIME = re.compile(r'^\d\d:\d\d:\d\d ', re.M)
DATE = re.compile(r'^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d  ', re.M)


class LogTest(JourneyTest):

    def shown(self, log):
        """The accessible object with the text of the log, which is the longest text in the window."""
        return max(log.find_all(TEXT), key=lambda accessible: len(driver.text_of(accessible)))

    def text(self, log):
        return driver.text_of(self.shown(log))

    def lines(self, text):
        return [line.strip() for line in text.splitlines() if line.strip()]

    def save(self, log, path):
        log.press('alt+s')
        dialog = log.program.window(SAVING)
        dialog.wait_settled()
        self.picture('save-log')
        driver.key('ctrl+a')
        driver.type_text(path)
        driver.key('Return')

    def test_the_log_can_be_shown_and_saved_with_the_keyboard_alone(self):
        path = os.path.join(self.scratch, 'saved.txt')
        with self.opened() as window:
            window.press('ctrl+l')
            log = window.program.window(TITLE)
            log.program = window.program
            plain = wait_for(lambda: self.text(log), 'the text of the log')
            self.assertNotRegex(plain, TIME)

            log.press('alt+t')
            wait_for(lambda: TIME.search(self.text(log)), 'the times')
            self.picture('log-with-times')
            self.assertEqual(self.lines(TIME.sub('', self.text(log))), self.lines(plain))
            log.press('alt+t')
            wait_for(lambda: not TIME.search(self.text(log)), 'the log without times')

            log.press('ctrl+f')
            driver.type_text('initialization')
            wait_for(lambda: self.shown(log).queryText().getNSelections() == 1, 'a match')
            self.assertEqual(plain[slice(*self.shown(log).queryText().getSelection(0))], 'Initialization')
            driver.key('Escape')
            self.assertIn(TITLE, window.program.titles())

            self.save(log, path)
            window.program.no_window(SAVING)
            wait_for(lambda: os.path.exists(path), 'the file')
            with open(path, encoding='utf-8') as stream:
                saved = stream.read()
            self.assertEqual(self.lines(DATE.sub('', saved)), self.lines(plain))
            self.assertRegex(saved, DATE)
            self.assertEqual(stat.S_IMODE(os.stat(path).st_mode), 0o600)

            # An existing file is replaced only after a question.
            for answer in ('Return', 'alt+r'):
                with open(path, 'w', encoding='utf-8') as stream:
                    stream.write('mine')
                self.save(log, path)
                question = wait_for(lambda: next((each for each in window.program.windows() if each.title == SAVING and
                                                  'Replace' in each.buttons()), None), 'the question')
                question.press(answer)
                window.program.no_window(SAVING)
                with open(path, encoding='utf-8') as stream:
                    self.assertEqual(stream.read() == 'mine', answer == 'Return')
            log.press('Escape')
            window.program.no_window(TITLE)


if __name__ == '__main__':
    journey.main()
