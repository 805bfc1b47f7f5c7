#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user types names and passwords for repositories that need them in their URLs."""
import os

import editing
from editing import SESSION, EditingTest, Editor
from journey import driver, wait_for
from vantor import VantorServer

TITLE = 'VYRE Authentication'
HEADING = 'Some configured repositories require authentication'

NAME = 'a b&c'
PASSWORD = 's3:cr@t %41+&/x'
ENCODED_NAME = 'a%20b%26c'
ENCODED_PASSWORD = 's3%3acr%40t%20%2541%2b%26%2fx'
HIDDEN = '●'


class CredentialsTest(EditingTest):

    # The host of each repository. Both host names mean this machine.
    HOSTS = {'one': '127.0.0.1', 'two': 'localhost', 'three': '127.0.0.1'}

    def setUp(self):
        super().setUp()
        self.server = VantorServer(self.sandbox.repository('sandbox-disabled').rpartition('/')[0], {NAME: PASSWORD})
        self.addCleanup(self.server.stop)

    def configuration(self, *filled, identifiers=('one', 'two', 'three')):
        """The contents of the repository file, in which only the repositories in "filled" have credentials."""
        return '\n'.join(
            '[{0}]\nname=Number {0}\nbaseurl={1}\nenabled=1\ngpgcheck=0\nskip_if_unavailable=1\nretries=1\n'.format(
                identifier, self.url(identifier, *(ENCODED_NAME, ENCODED_PASSWORD) if identifier in filled else ()))
            for identifier in identifiers)

    def url(self, identifier, name='', password=''):
        # Each repository has a different path to the same packages.
        path = {'one': '/', 'two': '/./', 'three': '/././'}[identifier] + 'sandbox-disabled'
        return self.server.url(path, name, password, self.HOSTS[identifier])

    def configure(self, *filled, **options):
        self.write_repo('vantor.repo', self.configuration(*filled, **options))
        self.before_files = self.files()

    def check_file(self, *filled, **options):
        """Check that no configuration file has changed, except that these repositories have credentials in the
        repository file.
        """
        files = dict(self.before_files)
        files[self.repo_path('vantor.repo')] = self.configuration(*filled, **options).encode()
        self.assertEqual(self.files(), files)

    def check_reached(self, *identifiers):
        """Check that the server got requests for exactly these repositories, with the right credentials."""
        self.assertEqual({(host, name, password, status) for host, _, name, password, status in self.server.requests},
                         {(self.HOSTS[identifier], NAME, PASSWORD, 200) for identifier in identifiers})

    def question_about(self, program, identifier):
        """Wait for the dialog that asks for the credentials of this repository; return it."""
        # The dialog about the previous repository has the same title, and may still be open.
        dialog = wait_for(lambda: next((each for each in program.windows()
                                        if each.title == TITLE and identifier in each.labels()), None),
                          'the question about ' + identifier)
        dialog.wait_settled()
        dialog.wait_input()
        return dialog

    def field(self, dialog, password=False):
        return dialog.find(driver.pyatspi.ROLE_PASSWORD_TEXT if password else driver.pyatspi.ROLE_TEXT)

    def answer(self, program, identifier, button, name=NAME, password=PASSWORD):
        dialog = self.question_about(program, identifier)
        # The field for the user name has the focus.
        driver.type_text(name)
        wait_for(lambda: driver.text_of(self.field(dialog)) == name, 'the name')
        driver.key('Tab')
        driver.type_text(password)
        shown = HIDDEN * len(password)
        wait_for(lambda: any('={}&path='.format(shown) in label for label in dialog.labels()), 'the masked URL')
        self.check_secret(program)
        dialog.click_button(button)

    def check_secret(self, program):
        """Check that assistive programs can read no text with the password."""
        for text in editing.readable_texts(program):
            for secret in (PASSWORD, ENCODED_PASSWORD):
                self.assertNotIn(secret, text or '')

    def check_log_files(self):
        """Check that dnf's log files contain the URL and the failure, but not the password."""
        directory = os.path.join(self.sandbox.root, 'var/log')
        texts = []
        for name in os.listdir(directory):
            with open(os.path.join(directory, name), errors='replace') as stream:
                texts.append(stream.read())
        for secret in (PASSWORD, ENCODED_PASSWORD):
            self.assertNotIn(secret, ''.join(texts))
        for name in ('dnf.log', 'dnf.librepo.log'):
            with open(os.path.join(directory, name), errors='replace') as stream:
                self.assertRegex(stream.read(), '403.*user={}&secret={}&path='.format(ENCODED_NAME, HIDDEN * 3))

    def all_packages_window(self, program):
        window = program.ready()
        window.show_all()
        return window


class CredentialsDialogTest(CredentialsTest):

    def test_credentials_are_asked_for_and_saved(self):
        self.configure(identifiers=['one'])
        with self.program() as program:
            dialog = self.question_about(program, 'one')
            dialog.wait_settled()
            self.picture('credentials')
            self.assertEqual(self.server.requests, [])
            labels = dialog.labels()
            for text in (HEADING, 'one', 'Number one', self.url('one'), 'user', 'secret'):
                self.assertIn(text, labels)
            self.assertEqual(dialog.buttons(), ['Quit', 'Disable for Session', 'Skip All', 'Apply to All',
                                                'Apply to All with this Host', 'OK'])
            self.answer(program, 'one', 'OK')
            window = self.all_packages_window(program)
            self.check_listed(window, ['abacus-cli', 'hedgerow', 'hidden-gem', 'pergola'])
            self.check_reached('one')
            self.check_file('one', identifiers=['one'])
            window.mark_listed('hidden-gem')
            self.carry_out(window)
            self.check_changed(new=['hidden-gem-1.0-1.noarch'])
            self.check_reached('one')

            # The form of the repository, the descriptions and the log do not show the password either.
            editor = self.edit(window)
            form = editor.form('Edit', 'one')
            self.picture('form-with-credentials')
            self.assertEqual(form.value('URLs'), self.url('one', ENCODED_NAME, HIDDEN * len(ENCODED_PASSWORD)))
            self.assertEqual(form.value('user'), NAME)
            self.check_secret(program)
            form.close('Cancel')
            editor.close('OK')
            window.mark_listed('zither')
            window.click_button('Describe')
            description = program.window('VYRE Package Description')
            description.click_button('Details')
            details = program.window('VYRE Repository Description')
            self.assertIn(self.url('one', ENCODED_NAME, HIDDEN * len(ENCODED_PASSWORD)), details.labels())
            self.check_secret(program)
            details.click_button('Close')
            program.no_window(details.title)
            description.click_button('Close')
            program.no_window(description.title)
            driver.key('ctrl+l')
            log = program.window('VYRE Log')
            self.check_secret(program)
            log.click_button('Close')
            program.no_window('VYRE Log')
            self.quit(window)
            self.assertNotIn(PASSWORD, program.stdout() + program.stderr())
        # In the next run, the program does not ask.
        with self.program() as program:
            self.quit(program.ready())
        self.check_reached('one')

    def test_the_apply_to_all_button_uses_the_credentials_for_all_repositories(self):
        self.configure()
        with self.program() as program:
            self.answer(program, 'one', 'Apply to All')
            self.quit(program.ready())
        self.check_reached('one', 'two', 'three')
        self.check_file('one', 'two', 'three')

    def test_the_credentials_for_one_host_are_used_only_for_the_repositories_on_this_host(self):
        self.configure()
        with self.program() as program:
            self.answer(program, 'one', 'Apply to All with this Host')
            # The third repository has the same host as the first, so the program asks only about the second.
            self.answer(program, 'two', 'OK')
            self.quit(program.ready())
        self.check_reached('one', 'two', 'three')
        self.check_file('one', 'two', 'three')

    def check_skipped(self, skip):
        self.configure()
        with self.program() as program:
            self.answer(program, 'one', 'OK')
            self.question_about(program, 'two')
            skip()
            window = self.all_packages_window(program)
            self.check_listed(window, ['abacus-cli', 'hedgerow', 'hidden-gem', 'pergola'])
            self.check_file('one')
            self.quit(window)
        self.assertEqual({request[2:] for request in self.server.requests}, {(NAME, PASSWORD, 200), ('', '', 403)})

    def test_escape_skips_the_shown_repository(self):
        self.check_skipped(lambda: driver.key('Escape'))

    def test_closing_the_dialog_skips_the_shown_repository(self):
        self.check_skipped(lambda: driver.key('alt+F4'))

    def test_the_skip_all_button_saves_no_credentials(self):
        self.configure()
        with self.program() as program:
            self.question_about(program, 'one').click_button('Skip All')
            window = self.all_packages_window(program)
            self.check_listed(window, ['abacus-cli', 'hedgerow', 'pergola'])
            self.check_file()
            self.quit(window)

    def test_after_a_transaction_the_program_asks_again_for_skipped_credentials(self):
        self.configure()
        with self.program() as program:
            self.question_about(program, 'one').click_button('Skip All')
            window = self.all_packages_window(program)
            window.mark_listed('pergola')
            window.accept(window.apply())
            self.question_about(program, 'one').click_button('Quit')
            self.check_ended(program)
        self.check_file()
        self.check_changed(new=['pergola-6.1-1.x86_64'])

    def test_the_disable_for_session_button_disables_the_shown_repository(self):
        self.configure()
        with self.program() as program:
            self.question_about(program, 'one').click_button('Disable for Session')
            self.answer(program, 'two', 'OK')
            self.question_about(program, 'three').click_button('Disable for Session')
            window = self.all_packages_window(program)
            self.check_listed(window, ['abacus-cli', 'hedgerow', 'hidden-gem', 'pergola'])
            self.check_reached('two')
            self.check_file('two')
            editor = self.edit(window)
            for identifier, on in (('one', False), ('two', True), ('three', False)):
                editor.wait_on(on, identifier, SESSION)
            # If the user enables a disabled repository again, the program asks for its credentials.
            editor.toggle('one', SESSION)
            editor.click_button('OK')
            self.answer(program, 'one', 'OK')
            window.wait_ready()
            self.check_reached('one', 'two')
            self.check_file('one', 'two')
            self.quit(window)

    def test_the_quit_button_ends_the_program_and_saves_no_credentials(self):
        self.configure()
        with self.program() as program:
            self.question_about(program, 'one').click_button('Quit')
            self.check_ended(program)
        self.check_file()
        self.assertEqual(self.server.requests, [])
        self.check_unchanged()

    def test_the_quit_button_keeps_credentials_already_entered_for_other_repositories(self):
        self.configure()
        with self.program() as program:
            self.answer(program, 'one', 'OK')
            self.question_about(program, 'two').click_button('Quit')
            self.check_ended(program)
        self.check_file('one')
        self.assertEqual(self.server.requests, [])

    def test_the_program_does_not_ask_for_credentials_of_disabled_repositories(self):
        self.configure()
        with self.program('--disablerepo=t*', '--disablerepo=one') as program:
            self.quit(program.ready())
        self.check_file()
        self.assertEqual(self.server.requests, [])

    def test_with_option_r_the_program_asks_for_credentials_after_the_editor_closes(self):
        self.configure()
        with self.program('-r') as program:
            editor = Editor(program)
            editor.toggle('two', SESSION)
            editor.click_button('OK')
            self.answer(program, 'one', 'Apply to All')
            self.quit(program.ready())
        self.check_reached('one', 'three')
        self.check_file('one', 'three')


class WrongPasswordTest(CredentialsTest):

    def test_the_error_message_does_not_show_the_wrong_password(self):
        self.server.users = {NAME: 'another one'}
        # If skip_if_unavailable is off, dnf must report that the repository cannot be read.
        self.write_repo('vantor.repo', '[one]\nbaseurl={}\ngpgcheck=0\n'.format(self.url('one')))
        with self.program() as program:
            self.answer(program, 'one', 'OK')
            question = program.window('Repositories')
            texts = wait_for(lambda: [text for text in editing.readable_texts(program) if text and '403' in text],
                             'the message')
            self.assertTrue(any('/vantor' in text and 'user=' + ENCODED_NAME in text for text in texts), texts)
            self.check_secret(program)
            question.click_button('No')
            self.close_dialog(program, program.window('VYRE Yum Error'))
            window = program.ready()
            log = self.read_log(window)
            self.assertIn('403', log)
            self.assertNotIn(ENCODED_PASSWORD, log)
            self.check_log_files()
            # In the editor, the user replaces the wrong password.
            self.server.users = {NAME: 'right'}
            editor = self.edit(window)
            form = editor.form('Edit', 'one')
            form.set('secret', 'right')
            wait_for(lambda: '=●●●●●&path=' in form.value('URLs'), 'the masked URL')
            form.close('OK')
            editor.close('OK')
            window.show_all()
            self.check_listed(window, ['abacus-cli', 'hedgerow', 'hidden-gem', 'pergola'])
            self.assertIn(self.url('one', ENCODED_NAME, 'right'), self.read_repo('vantor.repo'))
            self.quit(window)


if __name__ == '__main__':
    editing.main()
