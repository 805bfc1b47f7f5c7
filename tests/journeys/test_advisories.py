#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user reads the advisories of the repositories, and marks the updates that the advisories request."""
import journey
import updateinfo
from journey import JourneyTest, driver, wait_for

ADVISORIES = [
    updateinfo.advisory('LSA-1', 'security', ['abacus-cli 3.3.0-2.x86_64'], 'Important', cves=['CVE-2024-7'],
                        title='Wrong <b>sums</b>', date='2024-05-05', description='Sums of large numbers are wrong.'),
    updateinfo.advisory('LSA-2', 'security', ['almanac 2.0-1.noarch'], 'Low', date='2024-04-04'),
    updateinfo.advisory('LBA-3', 'bugfix', ['barometer 1.1-2.x86_64'], date='2024-03-03'),
    updateinfo.advisory('LBA-4', 'bugfix', ['quillbase 1:2.4-1.x86_64'], date='2024-02-02'),
    updateinfo.advisory('LBA-5', 'bugfix', ['anvil-make 4.2-2.x86_64'], date='2024-01-01'),
]


class AdvisoriesTest(JourneyTest):

    def setUp(self):
        super(AdvisoriesTest, self).setUp()
        updateinfo.add(self.sandbox, 'sandbox-updates', ADVISORIES)

    def open(self, window):
        window.press('ctrl+d')
        dialog = window.program.window('VYRE Advisories')
        dialog.wait_settled()
        return dialog

    def rows(self, dialog):
        table = next(each for each in driver.walk(dialog.accessible)
                     if each.getRole() in (driver.pyatspi.ROLE_TABLE, driver.pyatspi.ROLE_TREE_TABLE)).queryTable()
        return [tuple(table.getAccessibleAt(row, column).name for column in range(table.nColumns))
                for row in range(table.nRows)]

    def details(self, dialog):
        return max((driver.text_of(each) for each in dialog.find_all(driver.pyatspi.ROLE_TEXT)), key=len)

    def test_all_security_updates_are_marked_and_installed(self):
        with self.opened() as window:
            dialog = self.open(window)
            self.assertEqual(self.rows(dialog), [
                ('LSA-1', 'security', 'Important/Sec.', '2024-05-05', 'Not Installed', 'Wrong <b>sums</b>'),
                ('LSA-2', 'security', 'Low/Sec.', '2024-04-04', 'Not Installed', 'The advisory LSA-2'),
                ('LBA-3', 'bugfix', '', '2024-03-03', 'Not Installed', 'The advisory LBA-3'),
                ('LBA-4', 'bugfix', '', '2024-02-02', 'Installed', 'The advisory LBA-4'),
                ('LBA-5', 'bugfix', '', '2024-01-01', 'Not Installed', 'The advisory LBA-5')])
            for text in ('CVE:\n  CVE-2024-7\n',
                         'abacus-cli-3.3.0-2.x86_64: not installed; the update 3.3.0-2 is available',
                         'Sums of large numbers are wrong.'):
                self.assertIn(text, self.details(dialog))
            self.picture('advisories')
            dialog.click_button('Mark All Security Updates')
            refused = window.program.window('Mark Updates')
            self.assertEqual(self.details(refused), 'Packages marked for an update: 1\n\nThese packages could not be '
                             'marked:\nalmanac-2.0-1.noarch: no repository offers an update')
            refused.click_button('Close')
            window.program.no_window('Mark Updates')
            dialog.click_button('Close')
            window.program.no_window('VYRE Advisories')
            window.set_filter('^(abacus-cli|almanac|barometer) ')
            window.wait_action('update', 'abacus-cli')
            window.wait_action('none', 'almanac')
            window.wait_action('none', 'barometer')
            self.carry_out(window)
            self.check_changed(new=['abacus-cli-3.3.0-2.x86_64'], gone=['abacus-cli-3.2.1-1.x86_64'])
            # After the update, the advisory counts as installed.
            dialog = self.open(window)
            self.assertEqual(self.rows(dialog)[0][4], 'Installed')
            driver.key('Escape')
            window.program.no_window('VYRE Advisories')

    def test_the_keyboard_alone_can_mark_the_updates_of_one_or_several_advisories(self):
        with self.opened() as window:
            window.set_filter('^barometer ')
            window.wait_names(['barometer'])
            self.assertEqual(self.tool_tip(window, 'barometer', driver.STATE),
                             'Package is available to update an out-of-date version\nAdvisories: LBA-3')
            dialog = self.open(window)
            driver.key('alt+f')
            driver.type_text('barometer')
            wait_for(lambda: len(self.rows(dialog)) == 1, 'the filtered advisories')
            driver.key('alt+m', 'Escape')
            window.program.no_window('VYRE Advisories')
            window.set_filter('^(abacus-cli|barometer) ')
            window.wait_action('update', 'barometer')
            window.wait_action('none', 'abacus-cli')

            # The first three advisories concern "abacus-cli", "almanac" and "barometer".
            window.click_button('Clear Actions')
            window.set_filter('^(abacus-cli|almanac|anvil-make|barometer) ')
            window.wait_action('none', 'barometer')
            dialog = self.open(window)
            driver.key('alt+f', 'ctrl+a', 'BackSpace', 'Tab')
            wait_for(lambda: len(self.rows(dialog)) == len(ADVISORIES), 'all advisories')
            driver.key('ctrl+Home', 'shift+Down', 'shift+Down', 'alt+m')
            refused = window.program.window('Mark Updates')
            self.assertIn('Packages marked for an update: 2\n', self.details(refused))
            self.assertIn('\nalmanac-2.0-1.noarch: no repository offers an update', self.details(refused))
            refused.press('Escape')
            window.program.no_window('Mark Updates')
            dialog.press('Escape')
            window.program.no_window('VYRE Advisories')
            window.wait_action('update', 'abacus-cli')
            window.wait_action('update', 'barometer')
            window.wait_action('none', 'anvil-make')
            window.wait_action('none', 'almanac')
        self.check_unchanged()

    def test_a_search_for_an_advisory_lists_the_packages_of_the_advisory(self):
        with self.opened() as window:
            window.choose(0, 'Search')
            window.wait_ready()
            window.type_expression('CVE-2024-7')
            driver.key('Return')
            window.wait_names(['abacus-cli'])
            window.select_first()
            window.click_button('Describe')
            description = window.program.window('VYRE Package Description')
            self.assertIn('LSA-1 (Important/Sec., CVE-2024-7): Wrong <b>sums</b>', description.labels())
            description.click_button('Close')
            window.program.no_window('VYRE Package Description')


if __name__ == '__main__':
    journey.main()
