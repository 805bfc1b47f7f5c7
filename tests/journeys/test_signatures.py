#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user installs packages from a repository whose packages are signed."""
import journey
import metadata
from editing import SESSION, EditingTest
from journey import JourneyTest, driver, wait_for


class SignatureTest(JourneyTest):
    """All packages of these tests come from the signed repository."""

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
        query.wait_settled()
        self.picture('key-asked-for')
        self.check_unchanged()
        return window, query

    def test_accepted_key_is_imported(self):
        with self.program() as program:
            window, query = self.ask(program)
            query.click_button('Yes')
            program.no_window('Query')
            window.wait_ready()
            self.check_changed(new=['wax-tablet-1.0-1.noarch'])
            self.assertEqual(len(self.keys()), 1)
            self.assertEqual(program.titles(), [driver.main_title()])
            self.assertIn('Confirmation: Yes', self.read_log(window))
            # The key is now in the package database, so the program does not ask again.
            window.mark_listed('wax-candle')
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['wax-tablet-1.0-1.noarch', 'wax-candle-1.0-1.noarch'])
            self.quit(window)

    def test_a_key_that_the_user_declined_can_be_accepted_in_the_next_transaction(self):
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

    def test_quick_presses_of_enter_do_not_answer_the_question_and_a_later_enter_or_escape_declines_the_key(self):
        with self.opened() as window:
            program = window.program
            window.mark_listed('wax-tablet')
            window.apply().press('Return')
            driver.key_in_new_window('Query', 'Return', 'Return', 'Return')
            query = self.read_dialog(program, 'Query', 'Package:\twax-tablet-1.0-1.noarch\n',
                                     'Repository:\tsandbox-signed\n')
            self.assertRegex(query.text(), r'Fingerprint:\t[0-9A-F]{4}( [0-9A-F]{4}){9}\n')
            self.assertEqual(self.keys(), set())
            for name in ('Return', 'Escape'):
                query.press(name)
                program.no_window('Query')
                self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes')
                window.wait_ready()
                self.check_unchanged()
                if name == 'Return':
                    window.accept(window.apply())
                    query = self.read_dialog(program, 'Query')

    def test_unsigned_package_is_refused(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('wax-blank')
            window.accept(window.apply())
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'wax-blank', 'not signed',
                               picture='unsigned')
            self.check_usable(window)
            self.check_unchanged()
            self.quit(window)

    def test_package_that_is_not_signed_with_the_key_of_its_repository_is_refused(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('wax-forged')
            window.accept(window.apply())
            # The program asks about the key of the repository, but the package is signed with another key.
            query = self.read_dialog(program, 'Query', 'Import the signing key 0x')
            query.click_button('Yes')
            program.no_window('Query')
            self.check_message(program, 'VYRE Yum Error', 'Unable to apply changes', 'wax-forged',
                               picture='wrong-signature')
            self.check_usable(window)
            self.assertEqual({name for name in self.sandbox.installed() if 'wax' in name}, set())
            self.quit(window)


class MetadataTest(EditingTest):

    def ask(self, program):
        """Wait for the question about the key of the metadata; return it."""
        query = self.read_dialog(program, 'Query', 'Import the signing key 0x', 'Metadata of:\tsandbox-http\n',
                                 'Metadata Key <metadata@larkspur.example>', 'key.asc')
        self.assertRegex(query.text(), r'Fingerprint:\t[0-9A-F]{4}( [0-9A-F]{4}){9}\n')
        self.assertEqual(query.buttons(), ['Yes', 'No'])
        wait_for(lambda: driver.focused(query) == 'No', 'the focus on No')
        return query

    def test_the_user_decides_whether_a_key_for_the_metadata_of_a_repository_is_imported(self):
        key = metadata.sign(self.sandbox.repository('sandbox-http'), self.scratch)
        with open(self.repo_path('sandbox-http.repo'), 'a') as stream:
            stream.write('repo_gpgcheck=1\ngpgkey=file://{}\n'.format(key))
        with self.program('--state=all') as program:
            query = self.ask(program)
            self.picture('metadata-key')
            query.press('Return')
            program.no_window('Query')
            question = self.read_dialog(program, 'Repositories', 'The repository sandbox-http cannot be read:')
            question.click_button('Yes')
            window = program.ready()
            # "gull-mta" is only in this repository. The other packages are installed or in another repository.
            self.check_listed(window, ['almanac', 'hedgerow'], '^(almanac|gull-mta|hedgerow) ')

            # The user has answered "No", so the key is not imported. The program asks again as soon as it needs the
            # key.
            editor = self.edit(window)
            editor.toggle('sandbox-http', SESSION)
            editor.close('OK')
            self.ask(program).click_button('Yes')
            program.no_window('Query')
            self.check_listed(window, ['almanac', 'gull-mta', 'hedgerow'], '^(almanac|gull-mta|hedgerow) ')
            requests = self.requests_from_now()
            window.click_button('Refresh')
            wait_for(lambda: len(self.sandbox.server.paths()) > requests, 'the refresh')
            self.check_usable(window, 'gull-mta')
            self.assertEqual(program.titles(), [driver.main_title()])
            self.quit(window)
        self.check_unchanged()


if __name__ == '__main__':
    journey.main()
