#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user finds and marks rows in every possible way."""
import glob
import os

import journey
from journey import JourneyTest, driver, wait_for
from vyresandbox import needs_groups


def apply_enabled(window):
    return driver.enabled(window.button('Apply Actions'))


class MarksTest(JourneyTest):

    def list_packages(self, window, *names):
        window.set_filter('^({}) '.format('|'.join(names)))
        window.wait_names(names)

    def check_actions(self, window, **actions):
        for name, action in actions.items():
            window.wait_action(action, name)

    def test_each_click_on_an_action_cell_chooses_the_next_possible_action(self):
        with self.opened() as window:
            # The first package is available, the second has an update, and the third is installed without an update.
            for name, actions in (('pergola', ('install', 'none')), ('barometer', ('update', 'remove', 'none')),
                                  ('almanac', ('remove', 'none'))):
                self.list_packages(window, name)
                self.assertEqual(window.action(name), 'none')
                self.assertFalse(apply_enabled(window))
                for action in actions:
                    driver.click(window.visible_cell(name, driver.ACTION))
                    window.wait_action(action, name)
                    wait_for(lambda wanted=action != 'none': apply_enabled(window) == wanted, 'the state of Apply')

    def test_the_status_bar_counts_rows_and_marks(self):
        with self.opened() as window:
            bar = window.find(driver.pyatspi.ROLE_STATUS_BAR, 'Rows and marks')

            def wait_line(text):
                def look():
                    line = bar.getChildAtIndex(0).name
                    if line != text:
                        raise AssertionError(line)
                    return True
                wait_for(look, text, 20)

            update = 'sandbox-updates', 'barometer-1.1-2.x86_64'
            all_marks = 'Marks: 1 Install, 1 Update, 1 Remove   To download: '
            one = self.size_of(update)
            both = self.size_of(update, ('sandbox-http', 'pergola-6.1-1.x86_64'))
            self.list_packages(window, 'pergola', 'barometer', 'almanac')
            wait_line('Listed: 3   Selected: 0   No marks')
            window.mark('barometer')
            wait_line('Listed: 3   Selected: 1   Marks: 0 Install, 1 Update, 0 Remove   To download: ' + one)
            window.mark('almanac')
            wait_line('Listed: 3   Selected: 1   Marks: 0 Install, 1 Update, 1 Remove   To download: ' + one)
            window.mark('pergola')
            wait_line('Listed: 3   Selected: 1   ' + all_marks + both)
            driver.key('ctrl+a')
            wait_line('Listed: 3   Selected: 3   ' + all_marks + both)
            # Marks of unlisted rows are counted too.
            self.list_packages(window, 'barometer')
            wait_line('Listed: 1   Selected: 0   ' + all_marks + both)
            self.picture('line-below-the-table')
            window.click_button('Clear Actions')
            wait_line('Listed: 1   Selected: 0   No marks')

    def test_several_quick_clicks_on_an_action_cell_are_all_counted(self):
        with self.opened() as window:
            self.list_packages(window, 'barometer')
            window.mark('barometer')
            window.wait_action('update', 'barometer')
            x, y = driver.place(window.visible_cell('barometer', driver.ACTION))
            # The first click changes "update" to "remove", the second changes "remove" to "none".
            driver.xdotool('mousemove', x, y, 'click', '--repeat', 2, '--delay', 40, 1)
            window.wait_action('none', 'barometer')
            driver.xdotool('click', '--repeat', 4, '--delay', 40, 1)
            window.wait_action('update', 'barometer')
            self.assertEqual(window.program.titles(), [driver.main_title()])

    def test_the_cell_menu_offers_the_possible_actions(self):
        with self.opened() as window:
            self.list_packages(window, 'pergola', 'barometer', 'almanac')
            for name, chosen, action in (('pergola', 'i', 'install'), ('pergola', 'n', 'none'),
                                         ('barometer', 'u', 'update'), ('barometer', 'r', 'remove'),
                                         ('barometer', 'n', 'none'), ('almanac', 'r', 'remove'),
                                         ('almanac', 'n', 'none')):
                window.action_menu(name)
                window.press_in_menu(chosen)
                window.wait_action(action, name)
            # The menu does not offer the action with this letter, so the key has no effect, and the menu stays open.
            for name, refused in (('pergola', 'ur'), ('barometer', 'i'), ('almanac', 'iu')):
                for letter in refused:
                    window.action_menu(name)
                    shown = window.program.popups()
                    driver.key(letter)
                    window.press_in_menu('Escape')
                    self.assertEqual(len(shown - window.program.popups()), 1)
                    window.wait_action('none', name)
            self.assertFalse(apply_enabled(window))

    def test_the_cell_menu_marks_all_selected_rows(self):
        with self.opened() as window:
            self.list_packages(window, 'pergola', 'barometer', 'almanac')
            window.select('pergola', 'barometer', 'almanac')
            window.action_menu('pergola')
            window.press_in_menu('r')
            self.check_actions(window, barometer='remove', almanac='remove', pergola='none')
            window.action_menu('pergola')
            window.press_in_menu('i')
            self.check_actions(window, barometer='remove', almanac='remove', pergola='install')
            window.action_menu('pergola')
            window.press_in_menu('n')
            self.check_actions(window, barometer='none', almanac='none', pergola='none')

    def test_marks_from_the_cell_menu_are_applied(self):
        with self.opened() as window:
            self.list_packages(window, 'pergola', 'barometer')
            window.action_menu('pergola')
            window.press_in_menu('i')
            window.wait_action('install', 'pergola')
            window.action_menu('barometer')
            window.press_in_menu('u')
            window.wait_action('update', 'barometer')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: pergola 6.1-1 (x86_64) [sandbox-http]',
                                        'Upgrade: barometer 1.1-2 (x86_64) [sandbox-updates]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['pergola-6.1-1.x86_64', 'barometer-1.1-2.x86_64'],
                               gone=['barometer-1.0-1.x86_64'])

    def test_a_button_marks_the_selected_rows(self):
        with self.opened() as window:
            self.list_packages(window, 'pergola', 'barometer', 'almanac', 'aquifer')
            window.select('pergola', 'barometer', 'almanac')
            window.click_button('Set Install/Update of Selected')
            self.check_actions(window, pergola='install', barometer='update', almanac='none', aquifer='none')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64', 'barometer-1.1-2.x86_64'],
                               gone=['barometer-1.0-1.x86_64'])

    def test_a_button_marks_the_listed_updates(self):
        with self.opened() as window:
            self.list_packages(window, 'pergola', 'barometer', 'almanac', 'anvil-make')
            window.click_button('Set Update of Listed')
            self.check_actions(window, pergola='none', barometer='update', almanac='none')
            self.check_actions(window, **{'anvil-make': 'update'})
            dialog = window.apply()
            self.check_listing(dialog, ['Upgrade: anvil-make 4.2-2 (x86_64) [sandbox-updates]',
                                        'Upgrade: barometer 1.1-2 (x86_64) [sandbox-updates]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['anvil-make-4.2-2.x86_64', 'barometer-1.1-2.x86_64'],
                               gone=['anvil-make-4.1-1.x86_64', 'barometer-1.0-1.x86_64'])

    def test_a_button_removes_the_marks_of_listed_and_unlisted_packages(self):
        with self.opened() as window:
            self.list_packages(window, 'pergola', 'barometer', 'almanac')
            for name in ('pergola', 'barometer', 'almanac'):
                window.mark(name)
            # One of the marked packages is no longer listed.
            self.list_packages(window, 'pergola', 'barometer')
            wait_for(lambda: window.warning() == 'Unlisted Actions', 'the warning')
            window.click_button('Clear Actions')
            self.check_actions(window, pergola='none', barometer='none')
            wait_for(lambda: window.warning() == '', 'the end of the warning')
            self.assertFalse(apply_enabled(window))
            self.list_packages(window, 'pergola', 'barometer', 'almanac')
            self.check_actions(window, pergola='none', barometer='none', almanac='none')

    def test_marks_of_unlisted_packages_cause_a_warning_and_are_applied(self):
        with self.opened() as window:
            window.mark_listed('pergola')
            self.assertEqual(window.warning(), '')
            self.list_packages(window, 'almanac')
            wait_for(lambda: window.warning() == 'Unlisted Actions', 'the warning')
            self.list_packages(window, 'pergola', 'almanac')
            wait_for(lambda: window.warning() == '', 'the end of the warning')
            window.wait_action('install', 'pergola')
            # The view "View Removable" also hides the marked package.
            window.choose(1, 'View Removable')
            window.wait_names(['almanac'])
            wait_for(lambda: window.warning() == 'Unlisted Actions', 'the warning')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: pergola 6.1-1 (x86_64) [sandbox-http]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.assertEqual(window.warning(), '')
            window.wait_names(['pergola', 'almanac'])


class FilterRowTest(JourneyTest):

    def test_each_entry_of_the_state_box_lists_the_packages_with_this_state(self):
        with self.program() as program:
            window = program.ready()
            window.set_filter('^(pergola|barometer|almanac) ')
            window.wait_names(['barometer'])
            window.choose(1, 'View Installable')
            window.wait_names(['pergola'])
            window.choose(1, 'View Removable')
            window.wait_names(['barometer', 'almanac'])
            window.choose(1, 'View All')
            window.wait_names(['pergola', 'barometer', 'almanac'])
            self.quit(window)

    def test_a_filter_expression_lists_the_matching_packages(self):
        with self.opened() as window:
            window.set_filter('^moonbridge 1.0-1 sandbox-http noarch ')
            window.wait_names(['moonbridge'])
            window.set_filter('.*amberfont-s.*')
            window.wait_names(['amberfont-sans', 'amberfont-serif'])
            # An invalid expression matches no rows.
            window.set_filter('(')
            window.wait_names([])
            window.set_filter('')
            wait_for(lambda: window.row_count() > 100, 'all packages')

    def without_duplicates(self, window):
        window.set_filter('^(libmoss |Games$)')
        window.wait_names(['libmoss', 'libmoss'])
        window.set_checked('Include Duplicates', False)
        window.wait_names(['libmoss'])
        self.assertEqual([row[3] for row in window.rows()], ['x86_64'])

    def test_duplicates_are_listed_only_if_their_box_is_checked(self):
        with self.opened() as window:
            self.without_duplicates(window)

    @needs_groups
    def test_duplicates_and_groups_are_listed_if_their_boxes_are_checked(self):
        with self.opened() as window:
            self.without_duplicates(window)
            window.set_checked('Include Groups', True)
            window.wait_names(['libmoss', 'Games'])

    def test_a_package_that_a_search_finds_by_its_file_can_be_installed(self):
        with self.opened() as window:
            window.set_filter('/usr/bin/inkwell-modern')
            window.wait_names([])
            window.choose(0, 'Search')
            window.wait_ready()
            window.wait_names(['inkwell-modern'])
            window.set_filter('/usr/bin/Inkwell-modern')
            window.wait_names([])
            self.assertIn('With other upper and lower case letters, packages match', window.table().description)
            # "$" matches only the end of the whole list of files. The empty table then shows a hint with an expression
            # that finds the package.
            window.set_filter('/usr/bin/inkwell-modern$')
            window.wait_names([])
            self.assertIn('In a search, "$" is the end of a whole field', window.table().description)
            self.picture('search-hint')
            window.set_filter('/usr/bin/inkwell-modern([[:space:]]|$)')
            window.wait_names(['inkwell-modern'])
            window.mark('inkwell-modern')
            self.carry_out(window)
            self.check_changed(new=['inkwell-modern-1.0-1.noarch'])
            window.wait_names(['inkwell-modern'])
            self.assertEqual([row[2] for row in window.rows()], ['@System'])

    def test_a_refresh_shows_a_package_that_another_program_has_installed(self):
        with self.opened() as window:
            window.set_filter('^pergola ')
            window.wait_names(['pergola'])
            self.assertEqual([row[2] for row in window.rows()], ['sandbox-http'])
            found = glob.glob(os.path.join(self.sandbox.repository('sandbox-http'), '**', 'pergola-*.rpm'),
                              recursive=True)
            self.sandbox.rpm('--install', '--nosignature', *found)
            window.click_button('Refresh')
            wait_for(lambda: [row[2] for row in window.rows()] == ['@System'], 'the installed package')
            window.wait_ready()
            # The package is installed now, so the user can remove it.
            window.mark('pergola')
            window.wait_action('remove', 'pergola')
            self.carry_out(window)
            self.check_unchanged()


if __name__ == '__main__':
    journey.main()
