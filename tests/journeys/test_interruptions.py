#!/usr/bin/python3
"""The program is killed in the middle of a transaction. The next run tells what was left, and can finish the work."""
import journey
from journey import JourneyTest, wait_for

INTERRUPTED = 'did not come to its end.\nWhat it has left undone has to be marked and applied again.'
SEVERAL = ('Of these packages several versions are installed, as a transaction leaves them that is cut off:\n'
           '  doorkeeper-1.0-1.noarch, doorkeeper-1.1-1.noarch\n'
           '"dnf remove --duplicates" removes the older ones.')


class KillTest(JourneyTest):

    def kill_in_transaction(self, *names):
        """The program is killed while the scriptlet of doorkeeper waits; the scriptlet is not."""
        doorkeeper = self.waiting('doorkeeper')
        with self.program() as program:
            window = program.ready()
            window.show_all()
            for name in names:
                window.mark_listed(name)
            window.accept(window.apply())
            doorkeeper.wait_waiting()
            program.process.kill()
            program.process.wait()
            doorkeeper.let_go()
            wait_for(lambda: program.left_over() == [], 'the end of the scriptlet')
        self.assertNotEqual(self.locks(), [])

    def test_while_packages_are_installed(self):
        self.sandbox.rpm('--erase', 'doorkeeper')
        self.before = self.sandbox.installed()
        self.kill_in_transaction('doorkeeper', 'birch-log', 'pergola')
        self.check_changed(new=['doorkeeper-1.1-1.noarch'])
        with self.opened() as window:
            log = self.read_log(window)
            self.assertEqual(log.count(INTERRUPTED), 1, log)
            self.assertNotIn('several versions', log)
            window.set_filter('^(doorkeeper|birch-log|pergola) ')
            window.wait_names(['doorkeeper', 'birch-log', 'pergola'])
            self.assertEqual({row[0]: row[2] for row in window.rows()},
                             {'doorkeeper': '@System', 'birch-log': '@System', 'pergola': 'sandbox-http'})
            window.mark_listed('birch-log')
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_changed(new=['doorkeeper-1.1-1.noarch', 'pergola-6.1-1.x86_64'], gone=['birch-log-3.0-1.x86_64'])
            # There is nothing more to be told.
            self.assertEqual(self.read_log(window).count(INTERRUPTED), 1)
        self.check_consistent()

    def test_while_packages_are_updated(self):
        self.kill_in_transaction('doorkeeper', 'birch-log', 'pergola')
        self.check_changed(new=['doorkeeper-1.1-1.noarch'])
        with self.opened() as window:
            log = self.read_log(window, picture='interrupted-transaction')
            self.assertEqual(log.count(INTERRUPTED), 1, log)
            self.assertEqual(log.count(SEVERAL), 1, log)
            window.mark_listed('doorkeeper')
            self.assertEqual([row[1:3] for row in window.rows()], [('1.1-1 *', '@System')])
            window.mark_listed('birch-log')
            window.mark_listed('pergola')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: pergola 6.1-1 (x86_64) [sandbox-http]',
                                        'Remove: birch-log 3.0-1 (x86_64)', 'Remove: doorkeeper 1.0-1 (noarch)',
                                        'Remove: doorkeeper 1.1-1 (noarch)'])
            self.carry_out(window, dialog)
            window.mark_listed('doorkeeper')
            self.carry_out(window)
            self.check_changed(new=['doorkeeper-1.1-1.noarch', 'pergola-6.1-1.x86_64'],
                               gone=['doorkeeper-1.0-1.noarch', 'birch-log-3.0-1.x86_64'])
            log = self.read_log(window)
            self.assertEqual((log.count(INTERRUPTED), log.count(SEVERAL)), (1, 1), log)
        self.check_consistent()


if __name__ == '__main__':
    journey.main()
