#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The program asks questions before a transaction, and each answer has its effect."""
import contextlib
import time

import journey
from journey import JourneyTest, driver
from vyresandbox import needs_groups


class ConfirmationTest(JourneyTest):

    def test_a_canceled_transaction_changes_nothing_and_keeps_the_marks(self):
        with self.opened() as window:
            def check_kept(cancellations):
                window.program.no_window('Apply')
                window.wait_ready()
                self.check_unchanged()
                self.assertEqual(window.program.titles(), [driver.main_title()])
                self.assertEqual(self.read_log(window).count('Not Applying: Canceled'), cancellations)

            window.mark_listed('pergola')
            for number, cancel in enumerate((lambda dialog: dialog.click_button('Cancel'),
                                             lambda dialog: dialog.press('Escape'),
                                             lambda dialog: dialog.press('alt+F4')), 1):
                cancel(window.apply())
                check_kept(number)
                window.wait_action('install', 'pergola')
            # If the transaction removes packages, Enter cancels it too.
            window.mark_listed('birch-log')
            window.apply().press('Return')
            check_kept(4)
            window.wait_action('remove', 'birch-log')
            self.assertEqual([path for path in self.sandbox.server.paths() if path.endswith('.rpm')], [])
            # The program has kept the marks, so the user can apply them.
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'], gone=['birch-log-3.0-1.x86_64'])

    def test_a_key_held_down_before_the_listing_appears_does_not_confirm_the_transaction(self):
        with self.opened() as window:
            window.mark_listed('pergola')
            window.wait_settled()
            driver.click(window.edit())
            # The user presses Enter before the listing opens, and holds the key.
            driver.xdotool('key', 'alt+a', 'keydown', 'Return')
            try:
                dialog = window.program.window('Apply')
                dialog.wait_input()
                time.sleep(0.5)  # in this time, the key repeats several times
                dialog = window.program.window('Apply', 0)
            finally:
                driver.xdotool('keyup', 'Return')
            self.assertEqual(dialog.buttons(), ['OK', 'Cancel'])
            self.check_unchanged()
            driver.key('Return')
            window.program.no_window('Apply')
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])

    def test_enter_pressed_before_the_user_could_read_the_listing_does_not_confirm_the_transaction(self):
        with self.opened() as window:
            window.mark_listed('pergola')
            window.wait_settled()
            # The listing appears between the two key presses, or the second key arrives while the program still works.
            driver.xdotool('key', 'alt+a', 'sleep', '0.35', 'key', 'Return')
            driver.key_in_new_window('Apply', 'Return', 'Return')
            dialog = window.program.window('Apply')
            dialog.wait_input()
            self.assertEqual(dialog.buttons(), ['OK', 'Cancel'])
            self.check_unchanged()
            dialog.press('Return')
            window.program.no_window('Apply')
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])


class ConflictingMarksTest(JourneyTest):
    """A group and one of its packages are marked for different actions."""

    def ask(self, window, group, package, texts, clicks=1):
        """Mark the group and the package, and press Apply; return the question."""
        window.mark_listed(package, clicks=clicks)
        window.mark_listed(group)
        window.set_filter('^({}|{})( |$)'.format(group, package))
        window.wait_names([group, package])
        window.click_button('Apply Actions')
        question = window.program.window('Apply')
        self.assertEqual(question.text(),
                         'Package {} is included in group {} which was marked for {}, so the package would be '
                         'marked for {}.\nBut the package also was marked individually for {}.\n'
                         'Do you wish to proceed?'.format(package, group, *texts))
        self.assertEqual(question.buttons(), ['Yes', 'No'])
        question.wait_input()
        return question

    def check_declined(self, answer):
        with self.opened('--groups') as window:
            answer(self.ask(window, 'Network Tools', 'cormorant-fetch', ('Install', 'Remove', 'Remove')))
            window.program.no_window('Apply')
            window.wait_ready()
            self.assertEqual(window.program.titles(), [driver.main_title()])
            self.check_unchanged()
            window.wait_action('install', 'Network Tools')
            window.wait_action('remove', 'cormorant-fetch')

    @needs_groups
    def test_if_the_user_answers_no_neither_packages_nor_marks_change(self):
        self.check_declined(lambda question: question.click_button('No'))

    @needs_groups
    def test_escape_declines_the_question(self):
        self.check_declined(lambda question: question.press('Escape'))

    @needs_groups
    def test_enter_declines_the_question(self):
        self.check_declined(lambda question: question.press('Return'))

    def accept_conflict(self, window, question):
        """Answer Yes. Return the dialog with the listing, whose title is the same as the title of the question."""
        question.click_button('Yes')
        return journey.wait_for(
            lambda: next((dialog for dialog in window.program.windows()
                          if dialog.title == 'Apply' and dialog.buttons() == ['OK', 'Cancel']), None), 'the listing')

    @needs_groups
    def test_if_the_user_answers_yes_a_marked_member_of_an_updated_group_is_removed(self):
        with self.opened('--groups') as window:
            question = self.ask(window, 'Weaving', 'loomctl', ('Update', 'Update', 'Remove'), clicks=2)
            dialog = self.accept_conflict(window, question)
            self.check_listing(dialog, ['Remove: loomctl 1.0-1 (x86_64)'], sizes=False, remark=(
                'The group Weaving is not installed: only its installed packages are updated. To install the whole '
                'group, mark it for Install after this transaction.'))
            self.carry_out(window, dialog)
            self.check_changed(gone=['loomctl-1.0-1.x86_64'])

    @needs_groups
    def test_if_the_user_answers_yes_a_marked_member_of_a_removed_group_is_installed(self):
        with self.opened('--groups') as window:
            question = self.ask(window, 'Arts', 'varnish-coat', ('Remove', 'Install', 'Install'))
            dialog = self.accept_conflict(window, question)
            self.check_listing(dialog, ['Install: varnish-coat 1.0-1 (noarch) [sandbox-http]',
                                        'Remove: easel 1.1-1 (noarch)', 'Remove: palette-knife 1.0-1 (noarch)'],
                               groups={'Removing Groups': ['Arts']})
            self.carry_out(window, dialog)
            self.check_changed(new=['varnish-coat-1.0-1.noarch'],
                               gone=['easel-1.1-1.noarch', 'palette-knife-1.0-1.noarch'])

    @needs_groups
    def test_the_listing_can_be_canceled_after_the_user_has_answered_yes(self):
        with self.opened('--groups') as window:
            question = self.ask(window, 'Arts', 'varnish-coat', ('Remove', 'Install', 'Install'))
            self.accept_conflict(window, question).click_button('Cancel')
            window.program.no_window('Apply')
            window.wait_ready()
            self.check_unchanged()
            window.wait_action('remove', 'Arts')


class ImpossibleMarksTest(JourneyTest):
    """Two updates are marked, but one of them needs a missing library."""

    @contextlib.contextmanager
    def asked(self):
        """Mark both packages and press Apply; yield the main window and the question."""
        with self.opened() as window:
            window.mark_listed('tidewatch')
            window.mark_listed('anvil-make')
            window.click_button('Apply Actions')
            question = window.program.window('Query')
            # Some versions of dnf name the repository at the end of a reason.
            self.assertEqual(question.text().rstrip('\n').replace(' from sandbox-updates', ''),
                             'Go on without these packages?\n\n'
                             '"Yes" goes on with the remaining marks: anvil-make.\n'
                             'VYRE keeps the marks that cannot be applied.\n'
                             '"No" changes nothing. VYRE keeps all marks.\n\n'
                             'tidewatch-2.0-1.noarch\n'
                             '    nothing provides libtide.so.9()(64bit) needed by tidewatch-2.0-1.noarch')
            self.assertEqual(question.buttons(), ['Yes', 'No'])
            self.picture('impossible')
            question.wait_input()
            yield window, question

    def test_if_the_user_answers_yes_the_possible_mark_is_applied_and_the_impossible_mark_is_kept(self):
        with self.asked() as (window, question):
            question.click_button('Yes')
            dialog = window.program.window('Apply')
            self.check_listing(dialog, ['Upgrade: anvil-make 4.2-2 (x86_64) [sandbox-updates]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['anvil-make-4.2-2.x86_64'], gone=['anvil-make-4.1-1.x86_64'])
            window.set_filter('^(tidewatch|anvil-make) ')
            window.wait_names(['tidewatch', 'anvil-make'])
            window.wait_action('update', 'tidewatch')
            window.wait_action('none', 'anvil-make')
            log = self.read_log(window)
            self.assertRegex(log, r'(?s)Applying: OK.*These packages are not in the transaction. '
                                  r'VYRE keeps their marks:\n'
                                  r'tidewatch-2\.0-1\.noarch\n    nothing provides libtide')
            self.assertNotIn('conflicting requests', log)

    def test_if_the_user_answers_no_neither_packages_nor_marks_change(self):
        with self.asked() as (window, question):
            # The default button gives the safe answer, "No".
            question.press('Return')
            window.program.no_window('Query')
            window.wait_ready()
            self.assertEqual(window.program.titles(), [driver.main_title()])
            self.check_unchanged()
            window.set_filter('^(tidewatch|anvil-make) ')
            window.wait_names(['tidewatch', 'anvil-make'])
            window.wait_action('update', 'tidewatch')
            window.wait_action('update', 'anvil-make')
            self.assertIn('Confirmation: No', self.read_log(window))


if __name__ == '__main__':
    journey.main()
