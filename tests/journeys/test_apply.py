#!/usr/bin/python3
"""Packages and groups are installed, updated and removed."""
import journey
from journey import Gate, JourneyTest, driver, wait_for
from vyresandbox import server

DEPENDENCIES = 'Performing the following to resolve dependencies:\n'


class ApplyTest(JourneyTest):

    def test_install_with_dependency_update_and_remove_in_one_transaction(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('libbough')
            window.mark_listed('anvil-make')
            window.mark_listed('cinder-backup')
            window.set_filter('.*')

            dialog = window.apply()
            listing, _, dependencies = dialog.text().partition(DEPENDENCIES)
            dependencies, _, sizes = dependencies.partition('\n\n')
            self.assertEqual(listing.splitlines()[0], 'Transaction to be performed:')
            self.assertEqual(sorted(listing.splitlines()[1:]), [
                '\tInstall: libbough 1.1-1 (x86_64) [sandbox-http]',
                '\tRemove: cinder-backup 1.4-1 (noarch)',
                '\tUpgrade: anvil-make 4.2-2 (x86_64) [sandbox-updates]'])
            self.assertEqual(dependencies, '\tInstall: libtwig 1.0-1 (x86_64) [sandbox-http]')
            self.assertEqual([line.partition(':')[0] for line in sizes.splitlines()],
                             ['Cached size', 'Total download size', 'Installed size'])
            self.assertEqual(dialog.buttons(), ['OK', 'Cancel'])
            self.check_unchanged()
            window.accept(dialog)
            window.wait_ready()

            self.check_changed(
                new=['libbough-1.1-1.x86_64', 'libtwig-1.0-1.x86_64', 'anvil-make-4.2-2.x86_64'],
                gone=['anvil-make-4.1-1.x86_64', 'cinder-backup-1.4-1.noarch'])
            window.set_filter('^(libbough|libtwig|anvil-make|cinder-backup) ')
            window.wait_names(['libbough', 'libtwig', 'anvil-make', 'cinder-backup'])
            repositories = {row[0]: row[2] for row in window.rows()}
            self.assertEqual(repositories, {'libbough': '@System', 'libtwig': '@System', 'anvil-make': '@System',
                                            'cinder-backup': 'sandbox-http'})
            self.assertEqual([window.action(name) for name in window.names()], ['none'] * 4)
            self.quit(window)

    def test_log_tells_of_the_transaction_and_its_scriptlets(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('chatterbox')
            window.accept(window.apply())
            window.wait_ready()
            log = self.read_log(window)
            for text in ('Initialization', 'Applying', 'Applying: OK', 'Installing chatterbox',
                         'chatterbox: post to standard output', 'chatterbox: post to standard error'):
                self.assertIn(text, log)
            self.check_changed(new=['chatterbox-1.0-1.noarch'])
            self.quit(window)

    def test_removal_takes_an_unused_dependency_along(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('trellis-editor')
            dialog = window.apply()
            listing, _, dependencies = dialog.text().partition(DEPENDENCIES)
            self.assertEqual(listing, 'Transaction to be performed:\n\tRemove: trellis-editor 1.2-1 (x86_64)\n')
            self.assertEqual(dependencies, '\tRemove (unused): libtrellis 1.2-1 (x86_64)\n'
                                           'No downloads; only removals\n')
            window.accept(dialog)
            window.wait_ready()
            self.check_changed(gone=['trellis-editor-1.2-1.x86_64', 'libtrellis-1.2-1.x86_64'])
            self.quit(window)

    def test_group_is_installed(self):
        with self.program('--groups') as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('Games')
            dialog = window.apply()
            self.assertEqual(sorted(line for line in dialog.text().splitlines() if line.startswith('\t')), [
                '\tInstall (group): hedgerow 4.0-1 (noarch) [sandbox-file]',
                '\tInstall (group): orrery 3.7-1 (x86_64) [sandbox-http]',
                '\tInstall (group): pebble-go 1.4-1 (x86_64) [sandbox-http]'])
            window.accept(dialog)
            window.wait_ready()
            self.check_changed(new=['hedgerow-4.0-1.noarch', 'orrery-3.7-1.x86_64', 'pebble-go-1.4-1.x86_64'])
            # The group itself counts as installed now.
            window.choose(1, 'View Removable')
            window.set_filter('^Games ')
            window.wait_names(['Games'])
            self.quit(window)

    def test_two_transactions_after_each_other(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            window.mark_listed('pergola')
            dialog = window.apply()
            self.assertIn('\tRemove: pergola 6.1-1 (x86_64)\n', dialog.text())
            self.assertNotIn('Install:', dialog.text())
            window.accept(dialog)
            window.wait_ready()
            self.check_unchanged()
            window.mark_listed('barometer')
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['barometer-1.1-2.x86_64'], gone=['barometer-1.0-1.x86_64'])
            self.quit(window)

    def check_canceled(self, cancel):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            cancel(window.apply())
            program.no_window('Apply')
            window.wait_ready()
            self.check_unchanged()
            self.assertEqual(program.titles(), [driver.main_title()])
            window.wait_action('install', 'pergola')
            log = self.read_log(window)
            self.assertIn('Not Applying: Canceled', log)
            # It can be applied after all.
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.quit(window)

    def test_canceling_changes_nothing_and_keeps_the_marks(self):
        self.check_canceled(lambda dialog: dialog.click_button('Cancel'))

    def test_escape_cancels(self):
        self.check_canceled(lambda dialog: driver.key('Escape'))

    def test_closing_the_question_cancels(self):
        self.check_canceled(lambda dialog: driver.key('alt+F4'))

    def test_unresolvable_package_gives_one_message(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('moonbridge')
            window.click_button('Apply Actions')
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'libtide.so.9')
            self.check_usable(window)
            self.check_unchanged()
            self.quit(window)

    def test_failing_scriptlet_gives_one_message(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('brokenlatch')
            window.accept(window.apply())
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'brokenlatch')
            self.check_usable(window)
            self.check_unchanged()
            self.quit(window)


class ClosingTest(JourneyTest):
    """A close request while the program works is refused."""

    def request_close(self, program):
        """Ask the window manager to close the main window, and wait until the program has heard of it."""
        window = driver.xdotool('search', '--onlyvisible', '--pid', program.process.pid, '--name',
                                '^' + driver.main_title() + '$').split()[0]
        before = driver.xdotool('getwindowgeometry', window)
        driver.xdotool('windowfocus', '--sync', window)
        driver.key('alt+F4')
        # The window manager serves requests in turn, and the program gets its messages in the order they are sent.
        driver.xdotool('windowsize', window, 900, 650)
        wait_for(lambda: driver.xdotool('getwindowgeometry', window) != before, 'the new size of the window')
        driver.key('ctrl+l')
        log = program.window('VYRE Log')
        self.assertIn(driver.main_title(), program.titles())
        log.click_button('Close')
        program.no_window('VYRE Log')

    def test_while_collecting(self):
        gate = Gate()
        self.sandbox.server.faults['/sandbox-http/repodata/repomd.xml'] = gate
        with self.program() as program:
            window = program.main()
            gate.wait_reached()
            self.request_close(program)
            self.assertTrue(program.running())
            gate.open()
            self.check_usable(window)
            self.close(window)

    def test_while_applying(self):
        gate = Gate()
        self.sandbox.server.faults['/sandbox-http/pergola-6.1-1.x86_64.rpm'] = gate
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            gate.wait_reached()
            self.request_close(program)
            self.assertFalse(window.is_ready())
            self.check_unchanged()
            gate.open()
            self.check_usable(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.close(window)

    def test_marked_packages_do_not_keep_the_window_open(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            self.close(window)
            self.check_unchanged()


class TroubleTest(JourneyTest):
    """Downloads go wrong."""

    def check_refused(self, fault, *texts):
        path = '/sandbox-http/pergola-6.1-1.x86_64.rpm'
        self.sandbox.server.faults[path] = fault
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'pergola', *texts)
            window.wait_ready()
            self.check_unchanged()
            self.check_usable(window)
            # Once the server works again, so does the program.
            del self.sandbox.server.faults[path]
            window.set_filter('^pergola ')
            window.wait_names(['pergola'])
            window.wait_action('install', 'pergola')
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.quit(window)

    def test_package_is_not_on_the_server(self):
        self.check_refused(server.status(404), '404')

    def test_server_hangs_up_in_the_middle(self):
        self.check_refused(server.truncated(1000))

    def test_package_is_not_what_the_repository_tells(self):
        self.check_refused(server.corrupted())

    def test_second_package_is_not_on_the_server(self):
        self.sandbox.server.faults['/sandbox-http/libtwig-1.0-1.x86_64.rpm'] = server.status(404)
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('libbough')
            window.accept(window.apply())
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'libtwig', '404')
            self.check_usable(window)
            self.check_unchanged()
            self.quit(window)


class SignatureTest(JourneyTest):
    """Packages of the signed repository."""

    def keys(self):
        return {name for name in self.sandbox.installed() if name.startswith('gpg-pubkey-')}

    def ask(self, program):
        window = program.ready()
        window.show_all()
        window.mark_listed('wax-tablet')
        window.accept(window.apply())
        query = self.read_dialog(program, 'Query', 'Import the signing key 0x', 'Larkspur Signing Key',
                                 'RPM-GPG-KEY-larkspur')
        self.assertEqual(query.buttons(), ['Yes', 'No'])
        self.check_unchanged()
        return window, query

    def test_key_is_accepted(self):
        with self.program() as program:
            window, query = self.ask(program)
            query.click_button('Yes')
            program.no_window('Query')
            window.wait_ready()
            self.check_changed(new=['wax-tablet-1.0-1.noarch'])
            self.assertEqual(len(self.keys()), 1)
            self.assertIn('Confirmation: Yes', self.read_log(window))
            # The key is known now.
            window.mark_listed('wax-candle')
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['wax-tablet-1.0-1.noarch', 'wax-candle-1.0-1.noarch'])
            self.quit(window)

    def test_key_is_declined_and_accepted_the_next_time(self):
        with self.program() as program:
            window, query = self.ask(program)
            query.click_button('No')
            program.no_window('Query')
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes')
            window.wait_ready()
            self.check_unchanged()
            self.assertIn('Confirmation: No', self.read_log(window))
            window.wait_action('install', 'wax-tablet')
            window.accept(window.apply())
            query = self.read_dialog(program, 'Query', 'Import the signing key 0x')
            query.click_button('Yes')
            program.no_window('Query')
            window.wait_ready()
            self.check_changed(new=['wax-tablet-1.0-1.noarch'])
            self.quit(window)

    def test_escape_declines_the_key(self):
        with self.program() as program:
            window, _ = self.ask(program)
            driver.key('Escape')
            program.no_window('Query')
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes')
            self.check_usable(window)
            self.check_unchanged()
            self.quit(window)

    def test_unsigned_package_is_refused(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('wax-blank')
            window.accept(window.apply())
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'wax-blank', 'not signed')
            self.check_usable(window)
            self.check_unchanged()
            self.quit(window)

    def test_package_signed_with_another_key_is_refused(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('wax-forged')
            window.accept(window.apply())
            # The repository's key is offered, and does not help.
            query = self.read_dialog(program, 'Query', 'Import the signing key 0x')
            query.click_button('Yes')
            program.no_window('Query')
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'wax-forged')
            self.check_usable(window)
            self.assertEqual({name for name in self.sandbox.installed() if 'wax' in name}, set())
            self.quit(window)



if __name__ == '__main__':
    journey.main()
