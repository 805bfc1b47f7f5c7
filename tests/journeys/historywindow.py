# SPDX-License-Identifier: GPL-2.0-or-later
"""Code for the journeys that use the History window."""
from journey import JourneyTest, driver, wait_for

TITLE = 'VYRE History'
NUMBER = 0
RESULT = 5


class HistoryWindow(driver.MainWindow):
    """The history window. Its list is read with the functions for the main window's table."""

    def cells(self, column):
        table = self.table().queryTable()
        return [table.getAccessibleAt(row, column).name for row in range(table.nRows)]

    def details(self):
        return max((driver.text_of(accessible) for accessible in self.find_all(driver.pyatspi.ROLE_TEXT)), key=len)

    def wait_details(self, *texts):
        wait_for(lambda: all(text in self.details() for text in texts), 'details with {}'.format(texts))

    def choose(self, letter):
        """Press the button whose mnemonic is this letter."""
        self.wait_settled()
        driver.key('alt+' + letter)


class HistoryJourneyTest(JourneyTest):

    def open_history(self, window):
        window.press('ctrl+h')
        return self.history(window)

    def history(self, window):
        history = HistoryWindow(window.program.window(TITLE).accessible, window.program)
        wait_for(lambda: history.row_count() > 0, 'the transactions')
        history.wait_settled()
        return history
