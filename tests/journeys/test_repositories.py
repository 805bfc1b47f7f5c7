#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user enables and disables repositories, and changes their configuration."""
import os
import shutil
import subprocess

import editing
from editing import PERMANENT, SESSION, UNAPPLIED, EditingTest, Editor
from journey import driver, wait_for

# sandbox-updates and sandbox-http contain abacus-cli, sandbox-file contains hedgerow, sandbox-disabled contains
# hidden-gem, and sandbox-http contains pergola.
USUAL = ['abacus-cli', 'hedgerow', 'pergola']
ALL = ['abacus-cli', 'hedgerow', 'hidden-gem', 'pergola']

IDENTIFIERS = ['sandbox-disabled', 'sandbox-file', 'sandbox-http', 'sandbox-signed', 'sandbox-unreachable',
               'sandbox-updates']


class EnablingTest(EditingTest):
    """The user enables and disables repositories."""

    def test_packages_of_a_repository_that_the_user_disables_for_the_session_are_not_listed(self):
        files = self.files()
        with self.opened() as window:
            self.check_listed(window, USUAL)
            editor = self.edit(window)
            self.assertEqual(editor.identifiers(), IDENTIFIERS)
            editor.wait_on(True, 'sandbox-file', SESSION)
            editor.toggle('sandbox-file', SESSION)
            self.assertTrue(editor.is_on('sandbox-file', PERMANENT))
            # A change that lasts only for the session needs no Apply.
            self.assertEqual(editor.status(), '')
            self.assertFalse(driver.enabled(editor.button('Apply')))
            editor.close('OK')
            self.check_listed(window, ['abacus-cli', 'pergola'])
            self.assertEqual(self.files(), files)

            editor = self.edit(window)
            editor.wait_on(False, 'sandbox-file', SESSION)
            editor.toggle('sandbox-file', SESSION)
            editor.close('OK')
            self.check_listed(window, USUAL)
            self.assertEqual(self.files(), files)

    def test_packages_are_read_again_even_if_the_user_reverts_a_session_setting_before_closing_the_editor(self):
        with self.opened() as window:
            count = self.requests_from_now()
            editor = self.edit(window)
            editor.close('OK')
            self.assertTrue(window.is_ready())
            self.assertEqual(len(self.sandbox.server.paths()), count)
            editor = self.edit(window)
            editor.wait_on(True, 'sandbox-file', SESSION)
            editor.toggle('sandbox-file', SESSION)
            editor.toggle('sandbox-file', SESSION)
            editor.close('OK')
            # After the editor has closed, the window is ready for a moment before it reads the packages again.
            wait_for(lambda: len(self.sandbox.server.paths()) > count, 'the packages to be read')
            window.wait_ready()
            self.check_listed(window, USUAL)

    def test_packages_of_a_repository_that_the_user_enables_for_the_session_are_listed(self):
        files = self.files()
        with self.opened() as window:
            editor = self.edit(window)
            editor.wait_on(False, 'sandbox-disabled', SESSION)
            editor.toggle('sandbox-disabled', SESSION)
            editor.close('OK')
            self.check_listed(window, ALL)
            window.mark_listed('hidden-gem')
            self.carry_out(window)
            self.check_changed(new=['hidden-gem-1.0-1.noarch'])
            self.assertEqual(self.files(), files)
        # The next run does not use the setting for this session.
        with self.opened() as window:
            editor = self.edit(window)
            editor.wait_on(False, 'sandbox-disabled', SESSION)
            editor.close('Cancel')

    def test_a_repository_that_the_user_enables_permanently_is_enabled_in_the_next_run(self):
        with self.opened() as window:
            editor = self.edit(window)
            editor.wait_on(False, 'sandbox-disabled', PERMANENT)
            editor.toggle('sandbox-disabled', PERMANENT)
            editor.wait_status(UNAPPLIED)
            text = self.read_repo('sandbox-disabled.repo')
            files = self.files()
            editor.click_button('Apply')
            editor.wait_status('')
            self.assertTrue(editor.is_on('sandbox-disabled', PERMANENT))
            # The change to the file has not changed the session.
            self.assertFalse(editor.is_on('sandbox-disabled', SESSION))
            files[self.repo_path('sandbox-disabled.repo')] = text.replace('enabled=0', 'enabled=1').encode()
            self.assertEqual(self.files(), files)
            editor.close('OK')
            self.check_listed(window, USUAL)
        with self.opened() as window:
            self.check_listed(window, ALL)
            self.assertEqual(self.files(), files)


class DirectoriesTest(EditingTest):

    def test_the_editor_lists_the_repositories_of_all_directories_that_the_installed_dnf_reads(self):
        known = subprocess.run(['/usr/bin/python3', '-c', 'import dnf.conf\nconf = dnf.conf.Conf()\n'
                                'print(*conf.reposdir)'], stdout=subprocess.PIPE, check=True).stdout.decode().split()
        optional = {'distro': '/etc/distro.repos.d', 'newer': '/usr/share/dnf5/repos.d'}
        for name, directory in optional.items():
            os.makedirs(self.sandbox.root + directory)
            with open('{}{}/{}.repo'.format(self.sandbox.root, directory, name), 'w') as stream:
                stream.write('[{0}]\nname={0}\nbaseurl=file:///nowhere\nenabled=0\n'.format(name))
        with self.opened() as window:
            editor = self.edit(window)
            self.assertEqual(set(editor.identifiers()) - set(IDENTIFIERS),
                             {name for name, directory in optional.items() if directory in known})
            editor.close('Cancel')


class DnfConfTest(EditingTest):
    """dnf's own file, /etc/dnf/dnf.conf, is the only main configuration file, as on systems without yum."""

    def test_if_dnf_conf_requires_signatures_an_unsigned_package_is_refused(self):
        root = self.sandbox.root
        own = os.path.join(root, 'etc/dnf/dnf.conf')
        os.makedirs(os.path.dirname(own), exist_ok=True)
        os.rename(os.path.join(root, 'etc/yum.conf'), own)
        with open(own, 'a') as stream:
            stream.write('gpgcheck=1\nexclude=pergola\n')
        repository = self.read_repo('sandbox-http.repo')
        self.assertIn('gpgcheck=0\n', repository)
        self.write_repo('sandbox-http.repo', repository.replace('gpgcheck=0\n', ''))
        with open(own) as stream:
            text = stream.read()
        with self.opened() as window:
            # The program shows no message, and does not list pergola, which the file excludes.
            self.check_listed(window, ['abacus-cli', 'hedgerow'])
            editor = self.edit(window)
            self.assertEqual(editor.identifiers(), IDENTIFIERS)
            editor.toggle('sandbox-disabled', PERMANENT)
            editor.wait_status(UNAPPLIED)
            editor.click_button('Apply')
            editor.wait_status('')
            editor.close('Cancel')
            self.assertIn('enabled=1', self.read_repo('sandbox-disabled.repo'))
            with open(own) as stream:
                self.assertEqual(stream.read(), text)
            self.assertFalse(os.path.lexists(os.path.join(root, 'etc/yum.conf')))
            window.wait_ready()
            window.set_filter('^loupe ')
            window.mark_listed('loupe')
            window.accept(window.apply())
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', 'loupe', 'not signed')
            window.wait_ready()
            self.check_unchanged()


class ChangesTest(EditingTest):
    """The user changes the configuration of repositories."""

    def test_packages_of_a_repository_that_the_user_adds_are_listed(self):
        copy = os.path.join(self.scratch, 'copy')
        shutil.copytree(self.sandbox.repository('sandbox-disabled'), copy)
        with self.opened() as window:
            self.check_listed(window, USUAL)
            files = self.files()
            editor = self.edit(window)
            form = editor.form('Add')
            self.assertEqual(form.status(), 'No Identifier specified')
            form.set('Identifier', 'my-copy')
            wait_for(lambda: form.status() == 'No URLs or Mirror list URL specified', 'the warning')
            form.set('Name', 'Copy of my own')
            form.set('URLs', 'file://' + copy)
            wait_for(lambda: form.status() == '', 'no warning')
            form.choose(0, 'Yes')
            form.choose(1, 'No')
            self.picture('form')
            form.close('OK')
            wait_for(lambda: 'my-copy' in editor.identifiers(), 'the new row')
            self.picture('editor')
            self.assertEqual(editor.names()['my-copy'], 'Copy of my own')
            self.assertTrue(editor.is_on('my-copy', SESSION))
            self.assertTrue(editor.is_on('my-copy', PERMANENT))
            editor.wait_status(UNAPPLIED)
            self.assertEqual(self.files(), files)
            editor.close('OK')
            self.check_listed(window, ALL)
            files[self.repo_path('my-copy.repo')] = (
                '[my-copy]\nname=Copy of my own\nbaseurl=file://{}\nenabled=1\ngpgcheck=0\n'.format(copy)).encode()
            self.assertEqual(self.files(), files)
            self.assertEqual([row[driver.REPOSITORY - driver.NAME] for row in window.rows() if row[0] == 'hidden-gem'],
                             ['my-copy'])
            window.mark_listed('hidden-gem')
            dialog = window.apply()
            self.check_listing(dialog, ['Install: hidden-gem 1.0-1 (noarch) [my-copy]'])
            self.carry_out(window, dialog)
            self.check_changed(new=['hidden-gem-1.0-1.noarch'])

    def change(self, editor):
        """Make a change of each kind."""
        editor.toggle('sandbox-file', SESSION)
        editor.toggle('sandbox-http', PERMANENT)
        form = editor.form('Edit', 'sandbox-signed')
        form.set('Name', 'Renamed')
        form.close('OK')
        editor.select('sandbox-updates')
        editor.click_button('Remove')
        wait_for(lambda: editor.identifiers() == IDENTIFIERS[:-1], 'the removal')
        self.assertEqual(editor.names()['sandbox-signed'], 'Renamed')
        editor.wait_status(UNAPPLIED)

    def check_as_before(self, editor):
        wait_for(lambda: editor.identifiers() == IDENTIFIERS, 'all repositories')
        self.assertEqual(editor.names()['sandbox-signed'], 'Sandbox, signed packages')
        editor.wait_on(True, 'sandbox-file', SESSION)
        editor.wait_on(True, 'sandbox-http', PERMANENT)
        self.assertEqual(editor.status(), '')
        for name in ('Reset All', 'Apply'):
            self.assertFalse(driver.enabled(editor.button(name)))

    def test_the_reset_all_and_cancel_buttons_revert_the_changes_in_the_editor(self):
        with self.opened() as window:
            files = self.files()
            count = self.requests_from_now()
            editor = self.edit(window)
            self.change(editor)
            editor.click_button('Reset All')
            self.check_as_before(editor)
            self.change(editor)
            editor.close('Cancel')
            self.assertTrue(window.is_ready())
            self.assertEqual(self.files(), files)
            self.assertEqual(len(self.sandbox.server.paths()), count)
            editor = self.edit(window)
            self.check_as_before(editor)
            # The user can also reset or cancel the form of a single repository.
            form = editor.form('Edit', 'sandbox-signed')
            form.set('Name', 'Renamed')
            form.click_button('Reset')
            wait_for(lambda: form.value('Name') == 'Sandbox, signed packages', 'the old name')
            form.set('Name', 'Renamed')
            form.close('Cancel')
            self.check_as_before(editor)
            editor.close('OK')
            self.assertEqual(self.files(), files)
            self.assertEqual(len(self.sandbox.server.paths()), count)

    def test_the_removal_of_three_repositories_keeps_the_other_sections_of_their_file(self):
        sections = [
            '[many{0}]\nname=Number {0}\nbaseurl=http://127.0.0.1:9/{0}/$basearch\n'
            '        http://127.0.0.1:9/again/{0}\n'
            'enabled=0\ngpgcheck=1\ngpgkey=file:///etc/{0}\n        file:///etc/again\n# of number {0}\npriority={0}\n'
            .format(number) for number in range(1, 7)]
        self.write_repo('many.repo', '\n'.join(sections))
        with self.opened() as window:
            files = self.files()
            editor = self.edit(window)
            editor.select('many2', 'many3', 'many6')
            editor.click_button('Remove')
            wait_for(lambda: [name for name in editor.identifiers() if name.startswith('many')] ==
                     ['many1', 'many4', 'many5'], 'the removal')
            self.assertEqual(self.files(), files)
            editor.close('OK')
            self.check_listed(window, USUAL)
            files[self.repo_path('many.repo')] = '\n'.join([sections[0], sections[3], sections[4]]).encode()
            self.assertEqual(self.files(), files)

    def test_the_removal_of_the_last_repository_of_a_file_removes_the_file(self):
        with self.opened() as window:
            files = self.files()
            editor = self.edit(window)
            editor.select('sandbox-file')
            editor.click_button('Remove')
            editor.wait_status(UNAPPLIED)
            editor.close('OK')
            self.check_listed(window, ['abacus-cli', 'pergola'])
            del files[self.repo_path('sandbox-file.repo')]
            self.assertEqual(self.files(), files)

    def test_two_repositories_with_the_same_identifier_cause_a_question(self):
        with self.opened() as window:
            files = self.files()
            editor = self.edit(window)
            form = editor.form('Copy', 'sandbox-file')
            form.set('Name', 'The copy')
            form.close('OK')
            editor.wait_status('Two or more repositories have the Identifier, sandbox-file')
            editor.click_button('Apply')
            question = self.read_dialog(
                window.program, 'Repository Editor', 'Two or more repositories have the same Identifier(s), '
                'sandbox-file.  Only one repository will be applied for each Identifier.  Proceed?')
            question.click_button('No')
            window.program.no_window('Repository Editor')
            self.assertEqual(editor.identifiers().count('sandbox-file'), 2)
            self.assertEqual(self.files(), files)
            editor.click_button('Apply')
            window.program.window('Repository Editor').click_button('Yes')
            window.program.no_window('Repository Editor')
            wait_for(lambda: editor.identifiers() == IDENTIFIERS, 'the removal')
            self.assertEqual(self.files(), files)
            editor.close('OK')
            self.check_listed(window, USUAL)


class BrokenFileTest(EditingTest):

    MESSAGE = 'Malformed section name in line: [broken; errno = '

    def check_reported(self, program):
        dialog = self.read_dialog(program, 'VYRE Repository Editor Error', self.MESSAGE)
        self.assertTrue(dialog.text().endswith(').'), dialog.text())
        self.close_dialog(program, dialog)

    def test_a_repository_file_that_becomes_invalid_while_the_program_runs_is_reported(self):
        with self.opened() as window:
            self.write_repo('broken.repo', '[broken\nname=Broken\n')
            files = self.files()
            driver.key('ctrl+e')
            self.check_reported(window.program)
            self.check_usable(window)
            self.assertEqual(window.program.titles(), [driver.main_title()])
            self.assertEqual(self.files(), files)
            # Packages from the repositories that the program has already read can still be installed.
            window.mark_listed('hedgerow')
            window.accept(window.apply())
            self.check_reported(window.program)
            window.wait_ready()
            self.check_changed(new=['hedgerow-4.0-1.noarch'])
            os.unlink(self.repo_path('broken.repo'))
            editor = self.edit(window)
            self.assertEqual(editor.identifiers(), IDENTIFIERS)
            editor.close('OK')

    def test_a_repository_file_that_becomes_invalid_while_the_editor_is_open_is_reported(self):
        with self.opened() as window:
            editor = self.edit(window)
            self.write_repo('broken.repo', '[broken\nname=Broken\n')
            files = self.files()
            editor.toggle('sandbox-file', PERMANENT)
            editor.click_button('Reset All')
            self.check_reported(window.program)
            # The editor could not read all repositories. It must not write its incomplete list, because this would
            # delete the missing repositories.
            os.unlink(self.repo_path('broken.repo'))
            del files[self.repo_path('broken.repo')]
            editor.click_button('Cancel')
            window.program.no_window(Editor.TITLE)
            self.check_listed(window, USUAL)
            self.assertEqual(self.files(), files)
            editor = self.edit(window)
            self.assertEqual(editor.identifiers(), IDENTIFIERS)
            editor.close('OK')


class OptionsTest(EditingTest):

    def check_options(self, names, *options):
        with self.subTest(options=options), self.opened(*options) as window:
            self.check_listed(window, names)

    def test_patterns_on_the_command_line_enable_and_disable_repositories(self):
        files = self.files()
        self.check_options(['abacus-cli', 'pergola'], '--disablerepo=sandbox-file')
        self.check_options(ALL, '--enablerepo', 'sandbox-d*d', '--disablerepo=SANDBOX-*', '--disablerepo=sandbox')
        # If several patterns match, the last of them enables or disables the repository. Installed packages are always
        # listed.
        self.check_options(['abacus-cli', 'hedgerow', 'hidden-gem'], '--disablerepo=*', '--enablerepo=sandbox-[df]i*')
        self.check_options(['abacus-cli', 'hedgerow'], '--enablerepo=sandbox-[df]i*', '--disablerepo=sandbox-d*',
                           '--disablerepo=sandbox-[hu]*')
        self.assertEqual(self.files(), files)

    def test_patterns_on_the_command_line_do_not_change_repository_files(self):
        with self.opened('--disablerepo=sandbox-file') as window:
            self.check_listed(window, ['abacus-cli', 'pergola'])
            editor = self.edit(window)
            editor.wait_on(False, 'sandbox-file', SESSION)
            self.assertTrue(editor.is_on('sandbox-file', PERMANENT))
            # The choice that the user makes in the editor has priority over the patterns, even when the program reads
            # the files again.
            editor.toggle('sandbox-file', SESSION)
            editor.close('OK')
            self.check_listed(window, USUAL)
            window.click_button('Refresh')
            self.check_listed(window, USUAL)


class EditorAtStartTest(EditingTest):
    """The program opens the editor when it starts."""

    def check_nothing_read(self, program):
        self.assertEqual(self.sandbox.server.paths(), [])
        self.assertNotIn('Refresh', program.main().buttons())

    def test_with_option_r_the_editor_is_shown_before_the_packages_are_read(self):
        for option in ('-r', '--repo-editor'):
            with self.subTest(option=option), self.program(option) as program:
                editor = Editor(program)
                self.assertEqual(editor.identifiers(), IDENTIFIERS)
                self.check_nothing_read(program)
                self.sandbox.server.requests.clear()
                editor.toggle('sandbox-file', SESSION)
                editor.toggle('sandbox-disabled', SESSION)
                editor.close('OK')
                window = program.ready()
                window.show_all()
                self.check_listed(window, ['abacus-cli', 'hidden-gem', 'pergola'])
                # If the user opens the editor again but changes nothing, the program does not read the packages again.
                count = self.requests_from_now()
                self.edit(window).close('OK')
                self.assertEqual(len(self.sandbox.server.paths()), count)
                self.quit(window)
                self.sandbox.server.requests.clear()

    def check_closed(self, close):
        """Call close(), which closes the editor, and check that the window then lists the packages."""
        with self.program('-r') as program:
            editor = Editor(program)
            editor.toggle('sandbox-file', SESSION)
            self.check_nothing_read(program)
            close(editor)
            program.no_window(Editor.TITLE)
            window = program.ready()
            window.show_all()
            self.check_usable(window)
            self.quit(window)

    def test_canceling_the_editor_discards_its_changes(self):
        files = self.files()
        with self.program('-r') as program:
            editor = Editor(program)
            editor.toggle('sandbox-file', SESSION)
            editor.close('Cancel')
            window = program.ready()
            window.show_all()
            self.check_listed(window, USUAL)
            self.quit(window)
        self.assertEqual(self.files(), files)

    def test_escape_in_the_editor_asks_whether_to_drop_unapplied_changes(self):
        files = self.files()
        with self.opened() as window:
            editor = self.edit(window)
            editor.toggle('sandbox-file', PERMANENT)
            editor.wait_on(False, 'sandbox-file', PERMANENT)
            for answer in ('No', 'Yes'):
                editor.wait_settled()
                driver.key('Escape')
                question = self.read_dialog(window.program, 'Repository Editor',
                                            'Close the window and drop the changes?')
                self.assertEqual(question.buttons(), ['Yes', 'No'])
                self.picture('unapplied-' + answer)
                question.click_button(answer)
                window.program.no_window('Repository Editor')
                if answer == 'No':
                    editor.wait_on(False, 'sandbox-file', PERMANENT)
            window.program.no_window(Editor.TITLE)
            window.wait_ready()
            self.assertEqual(self.files(), files)
            editor = self.edit(window)
            editor.wait_on(True, 'sandbox-file', PERMANENT)
            editor.close('Cancel')

    def test_escape_in_the_form_asks_whether_to_drop_typed_text(self):
        files = self.files()
        with self.opened() as window:
            editor = self.edit(window)
            editor.select('sandbox-file')
            form = editor.form('Edit')
            form.set('Name', 'Typed')
            for answer in ('No', 'Yes'):
                driver.key('Escape')
                question = self.read_dialog(window.program, 'Repository Editor',
                                            'Close the window and drop the changes?')
                self.picture('unapplied-form-' + answer)
                question.click_button(answer)
                window.program.no_window('Repository Editor')
                if answer == 'No':
                    form.wait_settled()
                    self.assertEqual(form.value('Name'), 'Typed')
            window.program.no_window(form.TITLE)
            self.assertNotIn('Typed', editor.names().values())
            form = editor.form('Edit')
            driver.key('Escape')
            window.program.no_window(form.TITLE)
            editor.close('Cancel')
            window.wait_ready()
            self.assertEqual(self.files(), files)

    def test_closing_the_editor_with_the_window_manager_discards_its_changes(self):
        self.check_closed(lambda editor: editor.press('alt+F4'))

    def test_closing_the_editor_with_escape_discards_its_changes(self):
        self.check_closed(lambda editor: editor.press('Escape'))


if __name__ == '__main__':
    editing.main()
