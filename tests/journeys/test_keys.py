#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user moves in the table and in every long text with the Home and End keys."""
import journey
import updateinfo
from editing import EditingTest
from journey import driver, wait_for

TEXT = driver.pyatspi.ROLE_TEXT


class TableTest(EditingTest):

    def selected(self, window):
        table = window.table().queryTable()
        return [row for row in range(table.nRows) if table.isRowSelected(row)]

    def press_in_table(self, window, name, row):
        """Press a key in the table, and wait until only this row is selected and visible on the screen."""
        driver.key(name)
        wait_for(lambda: self.selected(window) == [row], 'row {} after {}'.format(row, name))
        _, top, _, height = driver.rectangle(window.table())

        def is_visible():
            _, y, _, row_height = driver.rectangle(window.cell(row, driver.NAME))
            return top < y and y + row_height <= top + height
        wait_for(is_visible, 'row {} on the screen'.format(row))

    def test_ctrl_home_and_ctrl_end_select_the_first_and_the_last_row(self):
        with self.opened() as window:
            last = window.row_count() - 1
            self.assertGreater(last, 50)
            window.select_first()
            self.press_in_table(window, 'ctrl+End', last)
            self.picture('last-row')
            self.press_in_table(window, 'ctrl+Home', 0)
            # The keys move the current row, so the next key continues from this row.
            self.press_in_table(window, 'Down', 1)

    def test_the_describe_button_is_enabled_only_if_the_current_row_is_listed(self):
        with self.opened() as window:
            def is_enabled():
                return driver.enabled(window.button('Describe'))

            def check(expected, when):
                wait_for(lambda: is_enabled() == expected, 'the state of the button ' + when)
            check(False, 'after the start')
            window.select('almanac')
            check(True, 'with a current row')
            window.set_filter('^pergola ')
            window.wait_names(['pergola'])
            check(False, 'while the filter hides the current row')
            window.select_first()
            check(True, 'with another current row')
            window.set_filter('no such package')
            window.wait_names([])
            check(False, 'with an empty table')
            window.set_filter('^pergola ')
            window.select_first()
            window.click_button('Refresh')
            window.wait_ready()
            window.wait_names(['pergola'])
            check(False, 'after a refresh')


class LongTextTest(EditingTest):

    def bars(self, window, text):
        """The values of the vertical scroll bars next to this text, or of all bars if no text is given."""
        found = []
        for each in window.find_all(driver.pyatspi.ROLE_SCROLL_BAR):
            _, y, width, height = driver.rectangle(each)
            value = each.queryValue()
            if height > width and value.maximumValue > 0 and (text is None or driver.rectangle(text)[1] <= y):
                found.append(value)
        return found

    def check_keys(self, window, text=None):
        """Make the window small, and press the keys. text: the text that gets the focus."""
        window.wait_settled()
        number = wait_for(lambda: driver.xdotool('getactivewindow').strip(), 'the number of the window')
        driver.xdotool('windowsize', '--sync', number, 300, 200)
        window.wait_settled()
        if text is not None:
            text.queryComponent().grabFocus()
        bars = wait_for(lambda: self.bars(window, text), 'the scroll bars of ' + window.title)
        for end, home in (('End', 'Home'), ('ctrl+End', 'ctrl+Home')):
            driver.key(end)
            wait_for(lambda: all(bar.currentValue == bar.maximumValue for bar in bars),
                     '{} in {}'.format(end, window.title))
            driver.key(home)
            wait_for(lambda: all(bar.currentValue == 0 for bar in bars), '{} in {}'.format(home, window.title))

    def test_the_home_and_end_keys_move_the_cursor_in_the_log(self):
        with self.opened() as window:
            window.press('ctrl+l')
            log = window.program.window('VYRE Log')
            self.check_keys(log, max(log.find_all(TEXT), key=lambda each: len(driver.text_of(each))))
            log.click_button('Close')
            window.program.no_window('VYRE Log')

    def test_the_home_and_end_keys_move_the_cursor_in_the_listing(self):
        with self.opened() as window:
            window.set_filter('^tilepack-')
            window.wait_names(['tilepack-{}'.format(number) for number in range(1, 9)])
            window.select_first()
            driver.key('ctrl+a')
            window.click_button('Set Install/Update of Selected')
            dialog = window.apply()
            self.picture('long-listing')
            self.check_keys(dialog)
            dialog.click_button('Cancel')
            window.program.no_window('Apply')
            window.wait_ready()

    def test_the_home_and_end_keys_move_the_cursor_in_descriptions(self):
        with self.opened() as window:
            window.set_filter('^orchard ')
            window.wait_names(['orchard'])
            window.select_first()
            window.click_button('Describe')
            description = window.program.window('VYRE Package Description')
            self.check_keys(description)
            self.picture('small-description')
            description.click_button('Close')
            window.program.no_window(description.title)

    def test_the_home_and_end_keys_move_the_cursor_in_transaction_details(self):
        with self.opened() as window:
            window.press('ctrl+h')
            history = window.program.window('VYRE History')
            details = wait_for(lambda: next(each for each in history.find_all(TEXT)
                                            if 'Packages Altered' in driver.text_of(each)), 'the details')
            self.check_keys(history, details)
            history.click_button('Close')
            window.program.no_window(history.title)

    def test_the_home_and_end_keys_move_the_cursor_in_advisory_details(self):
        updateinfo.add(self.sandbox, 'sandbox-updates', [updateinfo.advisory(
            'LSA-2024-1', 'security', ['pergola 6.1-1.x86_64', 'kernel 6.1.31-1.x86_64'],
            description='\n'.join('Line {}'.format(number) for number in range(100)))])
        with self.opened() as window:
            window.press('ctrl+d')
            advisories = window.program.window('VYRE Advisories')
            details = wait_for(lambda: next(each for each in advisories.find_all(TEXT)
                                            if 'Line 50' in driver.text_of(each)), 'the details')
            self.check_keys(advisories, details)
            advisories.click_button('Close')
            window.program.no_window(advisories.title)


if __name__ == '__main__':
    journey.main()
