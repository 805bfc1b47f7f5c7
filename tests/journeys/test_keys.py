#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user moves in the table and in every long text with the Home and End keys."""
import os
import unittest.mock

import journey
import metadata
import updateinfo
from editing import EditingTest
from historywindow import HistoryJourneyTest
from journey import driver, wait_for

TEXT = driver.pyatspi.ROLE_TEXT
# The result of driver.focused() if the table has the focus.
TABLE = None


class TableKeysTest(EditingTest):

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


class TableTest(TableKeysTest):

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


class KeyboardTest(HistoryJourneyTest, TableKeysTest):

    def wait_focus(self, window, name):
        wait_for(lambda: driver.focused(window) == name, 'the focus on {}'.format(name))

    def check_table_has_focus(self, window):
        """Check that no row is selected, and that a key selects the first row."""
        window.wait_settled()
        self.wait_focus(window, TABLE)
        self.assertEqual(self.selected(window), [])
        self.press_in_table(window, 'ctrl+Home', 0)

    def go_to(self, window, name, key):
        """Press a key until the widget with this name has the focus."""
        for _ in range(20):
            before = driver.focused(window)
            if before == name:
                return
            driver.key(key)
            wait_for(lambda: driver.focused(window) != before, 'another focus than {}'.format(before))
        self.fail('{} never moves the focus to {}'.format(key, name))

    def mark_first_row(self, window):
        self.go_to(window, TABLE, 'shift+Tab')
        self.press_in_table(window, 'ctrl+Home', 0)
        driver.key('space')
        window.wait_action('update', 'barometer')

    def test_a_package_can_be_found_and_marked_and_updated_and_downgraded_with_the_keyboard_alone(self):
        no_click = unittest.mock.patch.object(driver, 'click_at', side_effect=AssertionError('a click'))
        with no_click, self.program('--state=all') as program:
            window = program.ready()
            self.check_table_has_focus(window)
            self.go_to(window, 'Regular expression', 'Tab')
            driver.type_text('^barometer ')
            driver.key('Return')
            window.wait_names(['barometer'])
            self.mark_first_row(window)

            # Enter does not press the focused button. The key after Enter shows that Enter has been handled.
            self.go_to(window, 'Clear Actions', 'alt+c')
            driver.key('Return', 'Tab')
            self.wait_focus(window, 'Apply Actions')
            self.assertEqual(window.action('barometer'), 'update')
            self.go_to(window, 'Clear Actions', 'shift+Tab')
            driver.key('space')
            window.wait_action('none', 'barometer')

            self.mark_first_row(window)
            driver.key('alt+a')
            dialog = program.window('Apply')
            dialog.wait_input()
            self.check_listing(dialog, ['Upgrade: barometer 1.1-2 (x86_64) [sandbox-updates]'])
            dialog.press('Return')
            program.no_window('Apply')
            window.wait_ready()
            self.check_changed(new=['barometer-1.1-2.x86_64'], gone=['barometer-1.0-1.x86_64'])
            wait_for(lambda: '1 updated' in window.labels(), 'the outcome')
            self.check_table_has_focus(window)

            requests = self.requests_from_now()
            driver.key('alt+f')
            wait_for(lambda: len(self.sandbox.server.paths()) > requests, 'the refresh')
            window.wait_ready()
            self.check_table_has_focus(window)

            history = self.open_history(window)
            history.wait_details('Upgrade\tbarometer-1.1-2.x86_64 @sandbox-updates')
            history.choose('u')
            dialog = program.window('Apply')
            dialog.wait_input()
            self.check_listing(dialog, ['Downgrade: barometer 1.0-1 (x86_64) [sandbox-http]'],
                               remark='This undoes transaction {}.'.format(history.row_count()))
            dialog.press('Return')
            program.no_window('Apply')
            window.wait_ready()
            self.check_unchanged()
            self.check_table_has_focus(window)
            self.quit(window)


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
        """Make the window small, and check that the Home and End keys scroll it, alone and with Ctrl. text: the text
        that gets the focus.
        """
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

    def test_the_home_and_end_keys_scroll_in_all_windows_with_long_texts(self):
        updateinfo.add(self.sandbox, 'sandbox-updates', [updateinfo.advisory(
            'LSA-2024-1', 'security', ['pergola 6.1-1.x86_64', 'kernel 6.1.31-1.x86_64'],
            description='\n'.join('Line {}'.format(number) for number in range(100)))])
        with self.opened() as window:
            def opened(title, part):
                """The window with this title, and its text that contains this part."""
                found = window.program.window(title)
                return found, wait_for(
                    lambda: next(each for each in found.find_all(TEXT) if part in driver.text_of(each)), part)

            def close(shown):
                shown.click_button('Close')
                window.program.no_window(shown.title)

            for key, title, part in (('ctrl+l', 'VYRE Log', 'Initialization'),
                                     ('ctrl+h', 'VYRE History', 'Packages Altered'),
                                     ('ctrl+d', 'VYRE Advisories', 'Line 50')):
                window.press(key)
                shown, text = opened(title, part)
                self.check_keys(shown, text)
                close(shown)
            window.set_filter('^orchard ')
            window.wait_names(['orchard'])
            window.select_first()
            window.click_button('Describe')
            description = window.program.window('VYRE Package Description')
            self.check_keys(description)
            self.picture('small-description')
            close(description)

    def check_visible(self, dialog, text):
        """Check that the whole label with this text is on the screen and inside the dialog."""
        label = next(each for each in dialog.find_all(driver.pyatspi.ROLE_LABEL) if each.name.startswith(text))
        left, top, width, height = driver.rectangle(label)
        outer = driver.rectangle(dialog.accessible)
        self.assertGreaterEqual(left, max(0, outer[0]))
        self.assertGreaterEqual(top, max(0, outer[1]))
        self.assertLessEqual(left + width, min(1280, outer[0] + outer[2]))
        self.assertLessEqual(top + height, min(900, outer[1] + outer[3]))

    def check_line_is_visible(self, dialog, line):
        """Wait until this line of the listing is on the screen and inside the dialog."""
        listing = next(each for each in dialog.find_all(driver.pyatspi.ROLE_LABEL)
                       if each.name.startswith('Transaction to be performed:'))
        lines = listing.name.rstrip('\n').split('\n')

        def is_visible():
            _, top, _, height = driver.rectangle(listing)
            _, outer, _, outer_height = driver.rectangle(dialog.accessible)
            y = top + height * (lines.index('\t' + line) + 0.5) / (len(lines) + 1)
            return outer < y < min(900, outer + outer_height)
        wait_for(is_visible, line + ' on the screen')

    def test_keys_scroll_a_listing_of_2000_packages_and_find_text_in_it(self):
        large = os.path.join(self.scratch, 'large')
        metadata.make_large(large, 2000)
        self.write_repo('large.repo', '[large]\nname=Large\nenabled=1\ngpgcheck=0\nbaseurl=file://{}\n'.format(large))
        with self.opened() as window:
            window.mark_listed('libtrellis')
            window.set_filter('^large-')
            wait_for(lambda: window.row_count() == 2000, 'the packages')
            window.select_first()
            driver.key('ctrl+a')
            window.click_button('Set Install/Update of Selected')
            dialog = window.apply()
            self.picture('long-listing')
            # Because of the removals, Enter cancels the transaction.
            wait_for(lambda: driver.focused(dialog) == 'Cancel', 'the focus on Cancel')
            # Nobody needs to scroll to see the removals and the sizes.
            for text in ('Removals: 2. You did not mark 1 of them:\n    trellis-editor 1.2-1 (x86_64)',
                         'Install: 2000    Remove: 2\nCached size: '):
                self.check_visible(dialog, text)

            line = 'Install: large-1999 1-1 (noarch) [large]'
            dialog.press('ctrl+f')
            driver.type_text('LARGE-1999')
            self.check_line_is_visible(dialog, line)
            # Enter in the bar goes to the next match, and presses no button of the dialog.
            driver.key('ctrl+a')
            driver.type_text('trellis')
            self.check_line_is_visible(dialog, 'Remove: libtrellis 1.2-1 (x86_64)')
            driver.key('Return')
            self.check_line_is_visible(dialog, 'Remove: trellis-editor 1.2-1 (x86_64)')
            driver.key('ctrl+a')
            driver.type_text('nowhere')
            wait_for(lambda: 'Not found' in dialog.labels(), 'the message')
            driver.key('Escape')
            wait_for(lambda: 'Not found' not in dialog.labels(), 'the end of the bar')

            self.check_keys(dialog)
            dialog.click_button('Cancel')
            window.program.no_window('Apply')
            window.wait_ready()
        self.check_unchanged()


if __name__ == '__main__':
    journey.main()
