#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user undoes and repeats transactions in the history window, by keys alone."""
import contextlib
import os
import sqlite3

import journey
from historywindow import NUMBER, RESULT, TITLE, HistoryJourneyTest
from journey import driver, wait_for


class HistoryTest(HistoryJourneyTest):

    def test_a_transaction_with_an_installation_and_an_update_can_be_undone_and_redone(self):
        changed = dict(new=['libbough-1.1-1.x86_64', 'libtwig-1.0-1.x86_64', 'anvil-make-4.2-2.x86_64'],
                       gone=['anvil-make-4.1-1.x86_64'])
        with self.opened() as window:
            window.mark_listed('libbough')
            window.mark_listed('anvil-make')
            window.set_filter('.*')
            self.carry_out(window)
            self.check_changed(**changed)

            history = self.open_history(window)
            history.wait_details('Upgrade\tanvil-make-4.2-2.x86_64 @sandbox-updates', 'Install\tlibbough-1.1-1.x86_64')
            self.picture('history')
            count = history.row_count()
            self.assertEqual(history.cells(RESULT)[0], 'Succeeded')

            # The user first refuses the listing: nothing changes, and the history window opens again.
            history.choose('u')
            dialog = window.program.window('Apply')
            self.check_listing(dialog, [
                'Downgrade: anvil-make 4.1-1 (x86_64) [sandbox-http]', 'Remove: libbough 1.1-1 (x86_64)'],
                ['Remove: libtwig 1.0-1 (x86_64)'], remark='This undoes transaction {}.'.format(count))
            self.assertIn('Total download size: {}\n'.format(self.size_of(('sandbox-http', 'anvil-make-4.1-1.x86_64'))),
                          dialog.text())
            self.picture('undo')
            dialog.click_button('Cancel')
            history = self.history(window)
            self.check_changed(**changed)

            history.choose('u')
            window.accept(window.program.window('Apply'))
            window.wait_ready()
            self.check_unchanged()
            self.check_history_complete()
            window.program.no_window(TITLE)

            # After the undo, the table shows the new state.
            window.set_filter('^(libbough|anvil-make) ')
            window.wait_names(['libbough', 'anvil-make'])
            self.assertEqual({row[0]: row[2] for row in window.rows()},
                             {'libbough': 'sandbox-http', 'anvil-make': 'sandbox-updates'})

            # The newest recorded transaction is now the undo. The user repeats the transaction before it.
            history = self.open_history(window)
            self.assertEqual(history.row_count(), count + 1)
            driver.key('Down')
            history.wait_details('Command Line: vyre: install libbough; upgrade anvil-make')
            history.choose('r')
            window.accept(window.program.window('Apply'))
            window.wait_ready()
            self.check_changed(**changed)
            log = self.read_log(window)
            for text in ('Undoing transaction {}'.format(count), 'Repeating transaction {}'.format(count),
                         'Applying: OK', 'Not Applying: Canceled'):
                self.assertIn(text, log)

    def test_a_rollback_undoes_all_transactions_after_the_chosen_one_and_keeps_the_marks(self):
        with self.opened() as window:
            for name in ('astrolabe', 'loupe'):
                window.mark_listed(name)
                self.carry_out(window)
            window.mark_listed('barometer')
            window.mark_listed('cinder-backup')
            self.carry_out(window)
            window.mark_listed('sextant')
            window.set_filter('.*')

            history = self.open_history(window)
            driver.key('alt+f')
            driver.type_text('astrolabe')
            wait_for(lambda: history.row_count() == 1, 'the filtered list')
            history.wait_details('Install\tastrolabe-5.6-1.x86_64')
            number = history.cells(NUMBER)[0]
            history.choose('s')
            dialog = window.program.window('Apply')
            self.check_listing(dialog, [
                'Install: cinder-backup 1.4-1 (noarch) [sandbox-http]', 'Remove: loupe 45.0-1 (x86_64)',
                'Downgrade: barometer 1.0-1 (x86_64) [sandbox-http]'],
                remark='This undoes all transactions after transaction {}.'.format(number))
            window.accept(dialog)
            window.wait_ready()
            self.check_changed(new=['astrolabe-5.6-1.x86_64'])
            window.set_filter('^sextant ')
            window.wait_names(['sextant'])
            self.assertEqual(window.action('sextant'), 'install')

    def lengthen(self, count):
        """Copy the last transaction of the history until the history has this number of transactions. The command line
        of each copy contains its number.
        """
        path = os.path.join(self.sandbox.root, 'var/lib/dnf/history.sqlite')
        with contextlib.closing(sqlite3.connect(path)) as history, history:
            def columns(table):
                return ', '.join(row[1] for row in history.execute('pragma table_info({})'.format(table))
                                 if row[1] not in ('id', 'trans_id', 'cmdline'))
            last, = history.execute('select max(id) from trans').fetchone()
            for command in ("trans(id, cmdline, {0}) select i, 'copy ' || i, {0} from n, trans where trans.id = ?",
                            'trans_item(trans_id, {0}) select i, {0} from n, trans_item where trans_id = ?'):
                history.execute(
                    'with recursive n(i) as (select ? union all select i + 1 from n where i < ?) insert into ' +
                    command.format(columns(command.partition('(')[0])), (last + 1, count, last))

    def test_all_of_5000_transactions_are_listed_found_and_described(self):
        self.lengthen(5000)
        with self.opened() as window:
            history = self.open_history(window)
            wait_for(lambda: history.row_count() == 5000, 'all transactions')
            # The newest transaction is the first and the current one.
            history.wait_details('Transaction ID: 5000', 'copy 5000', 'parrot-1.0-1.noarch')
            driver.key('alt+f')
            driver.type_text('copy 4[0-9]33( |$)')
            numbers = [str(number) for number in range(4933, 4000, -100)]
            wait_for(lambda: history.cells(NUMBER) == numbers, 'the matching transactions')
            history.wait_details('copy 4933')
            driver.key('ctrl+a', 'BackSpace')
            wait_for(lambda: history.row_count() == 5000, 'all transactions')
            self.assertEqual(history.cells(NUMBER), [str(number) for number in range(5000, 0, -1)])
            driver.key('Tab', 'ctrl+End')
            history.wait_details('Transaction ID: 1\n')
            driver.key('Escape')
            window.program.no_window(TITLE)

    def test_before_the_listing_an_undo_names_a_package_that_no_repository_has(self):
        with self.opened() as window:
            window.mark_listed('lexicon-en')
            window.mark_listed('almanac')
            self.carry_out(window)
            self.check_changed(gone=['lexicon-en-2023.1-1.noarch', 'almanac-1.9-1.noarch'])
        os.unlink(os.path.join(self.sandbox.root, 'etc/yum.repos.d/sandbox-file.repo'))
        with self.opened() as window:
            history = self.open_history(window)
            history.choose('u')
            self.read_dialog(window.program, 'Query', 'Cannot find rpm nevra "lexicon-en-2023.1-1.noarch"',
                             'Go on without them?').click_button('No')
            history = self.history(window)
            number = history.cells(NUMBER)[0]
            history.choose('u')
            self.read_dialog(window.program, 'Query', 'lexicon-en').click_button('Yes')
            dialog = window.program.window('Apply')
            self.check_listing(dialog, ['Install: almanac 1.9-1 (noarch) [sandbox-http]'],
                               remark='This undoes transaction {}.'.format(number))
            self.carry_out(window, dialog)
            self.check_changed(gone=['lexicon-en-2023.1-1.noarch'])


if __name__ == '__main__':
    journey.main()
