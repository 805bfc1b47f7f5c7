#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Repositories are missing, unreachable or damaged, and the program reports this."""
import os
import shutil

import journey
from journey import driver
from trouble import REPOMD, StartTest, YUM_ERROR

import metadata
from vyresandbox import needs_groups, server

ADVICE = '\nUnder the Repositories menu, Edit Configuration can be used to configure repositories.'


class RepositoriesTest(StartTest):

    def add(self, name, **options):
        return self.write('etc/yum.repos.d/{}.repo'.format(name), '[{}]\nname={}\nenabled=1\n{}'.format(
            name, name, ''.join('{}={}\n'.format(*option) for option in options.items())))

    def test_a_system_without_configured_repositories_is_reported(self):
        directory = self.path('etc/yum.repos.d')
        shutil.rmtree(directory)
        os.mkdir(directory)
        with self.program() as program:
            text = self.message(program, YUM_ERROR)
            self.assertEqual(text, 'No repositories are configured.' + ADVICE)
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('No repositories are configured.', self.read_log(window))
            self.sandbox.write_repository_files()
            self.check_refresh_helps(window)
            self.quit(window)

    def test_a_session_without_enabled_repositories_is_reported(self):
        with self.program('--disablerepo=*') as program:
            text = self.message(program, YUM_ERROR)
            self.assertEqual(text, 'No repositories are enabled.' + ADVICE)
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('No repositories are enabled.', self.read_log(window))
            # The patterns on the command line also apply to later collections in this session.
            window.click_button('Refresh')
            self.message(program, YUM_ERROR, 'No repositories are enabled.')
            self.check_nothing_listed(window)
            self.quit(window)

    def test_an_unreachable_repository_is_skipped_if_its_settings_allow_this(self):
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            log = self.read_log(window)
            for text in ("Failed to download metadata for repo 'sandbox-unreachable'",
                         'Ignoring repositories: sandbox-unreachable'):
                self.assertIn(text, log)
            self.quit(window)

    def test_an_unreachable_repository_is_reported_if_its_settings_forbid_skipping(self):
        path = self.add('gone', baseurl='http://127.0.0.1:9/gone/', retries=1, timeout=2)
        with self.program() as program:
            self.refuse_without(program, 'gone', "Failed to download metadata for repo 'gone'")
            self.message(program, YUM_ERROR, "Failed to download metadata for repo 'gone'", '\nUnable to initialize')
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('Unable to initialize', self.read_log(window))
            os.unlink(path)
            self.check_refresh_helps(window)
            self.quit(window)

    def test_a_disabled_unreachable_repository_is_ignored(self):
        self.add('gone', baseurl='http://127.0.0.1:9/gone/', retries=1, timeout=2)
        with self.program('--disablerepo=gone') as program:
            window = program.ready()
            self.check_usable(window)
            self.assertNotIn("'gone'", self.read_log(window))
            self.quit(window)

    def test_a_repository_without_a_url_is_reported(self):
        path = self.add('nowhere')
        with self.program() as program:
            self.refuse_without(program, 'nowhere', 'nowhere')
            self.message(program, YUM_ERROR, 'nowhere', '\nUnable to initialize')
            window = program.ready()
            self.check_nothing_listed(window)
            os.unlink(path)
            self.check_refresh_helps(window)
            self.quit(window)

    # Patterns on the command line

    def check_listed_repositories(self, arguments, repositories):
        """Check that the available packages and the updates come from exactly these repositories."""
        with self.subTest(arguments=arguments), self.program('-sa', *arguments) as program:
            window = program.ready()
            found = {row[2] for row in window.rows()}
            self.assertEqual(found - {'@System', ''}, set(repositories))
            self.quit(window)

    def test_patterns_on_the_command_line_enable_and_disable_repositories(self):
        usual = ['sandbox-http', 'sandbox-updates', 'sandbox-signed', 'sandbox-file']
        for arguments, repositories in (
                ([], usual),
                (['--enablerepo=sandbox-disabled'], usual + ['sandbox-disabled']),
                (['--enablerepo', '*-disabled'], usual + ['sandbox-disabled']),
                (['--enable=sandbox-d?sabled'], usual + ['sandbox-disabled']),
                (['--disablerepo=sandbox-[hu]*'], ['sandbox-signed', 'sandbox-file']),
                (['--disablerepo=*', '--enablerepo=sandbox-file'], ['sandbox-file']),
                (['--disablerepo=sandbox-http', '--disablerepo=sandbox-signed'], ['sandbox-updates', 'sandbox-file']),
                # If several patterns match, the last of them enables or disables the repository.
                (['--enablerepo=sandbox-file', '--disablerepo=*', '--enablerepo=sandbox-u*'], ['sandbox-updates']),
                # A pattern must match the whole identifier, with the same letter case.
                (['--disablerepo=sandbox', '--disablerepo=http', '--disablerepo=SANDBOX-*'], usual),
                (['--disablerepo=', '--enablerepo=nonsense', '--disablerepo=sandbox-http|sandbox-file'], usual)):
            self.check_listed_repositories(arguments, repositories)


class MetadataTest(StartTest):

    def check_fails(self, mend, name, *texts):
        with self.program() as program:
            self.refuse_without(program, name, *texts)
            self.message(program, YUM_ERROR, '\nUnable to initialize', *texts)
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('Unable to initialize', self.read_log(window))
            mend()
            self.check_refresh_helps(window)
            self.quit(window)

    def check_fault(self, path, fault, *texts):
        self.sandbox.clear_cache()
        shutil.rmtree(self.path('var/cache/yum'), ignore_errors=True)
        self.sandbox.server.faults[path] = fault
        self.check_fails(lambda: self.sandbox.server.faults.pop(path), 'sandbox-http', "repo 'sandbox-http'", *texts)

    def test_a_truncated_repomd_is_reported(self):
        self.check_fault(REPOMD, server.truncated(100), 'partial file')

    def test_a_corrupted_repomd_is_reported(self):
        self.check_fault(REPOMD, server.corrupted(), 'repomd.xml parser error')

    def test_a_missing_repomd_is_reported(self):
        self.check_fault(REPOMD, server.status(404), '404')

    def test_a_server_error_for_repomd_is_reported(self):
        self.check_fault(REPOMD, server.status(503), '503')

    def test_a_package_list_with_a_wrong_checksum_is_reported(self):
        directory = os.path.join(self.sandbox.repository('sandbox-http'), 'repodata')
        name, = [name for name in os.listdir(directory) if 'primary.xml' in name]
        self.check_fault('/sandbox-http/repodata/' + name, server.corrupted(), "checksum doesn't match")

    def test_a_local_repository_without_metadata_is_reported(self):
        directory = os.path.join(self.sandbox.repository('sandbox-file'), 'repodata')
        os.rename(directory, directory + '.away')
        self.check_fails(lambda: os.rename(directory + '.away', directory), 'sandbox-file', "repo 'sandbox-file'")

    def test_truncated_file_lists_are_reported(self):
        metadata.alter(self.sandbox.repository('sandbox-file'), 'filelists', metadata.half)
        with self.program() as program:
            self.message(program, 'VYRE Yum Warning',
                         'The filelists metadata of the repository sandbox-file are damaged: ',
                         '\nSearches and descriptions lack some file lists', picture='damaged-metadata')
            window = program.ready()
            self.check_usable(window)
            self.check_usable(window, 'corkboard')
            window.click_button('Refresh')
            self.check_usable(window)
            self.assertEqual(program.titles(), [driver.main_title()])
            self.quit(window)

    def test_package_lists_with_wrong_contents_are_reported(self):
        repository = self.sandbox.repository('sandbox-file')
        shutil.copytree(repository, repository + '.away')
        metadata.alter(repository, 'primary', metadata.page)

        def mend():
            shutil.rmtree(repository)
            os.rename(repository + '.away', repository)
            shutil.rmtree(self.path('var/cache/yum'))
        self.check_fails(mend, 'sandbox-file', 'The primary metadata of the repository sandbox-file are damaged: '
                         '"html" where "metadata" is expected')

    def test_modules_with_wrong_contents_are_reported(self):
        """If dnf read such modules, it would crash."""
        metadata.add_modules(self.sandbox.repository('sandbox-file'), 'nonsense\n' * 100, self.scratch)
        with self.program() as program:
            dialog = self.question_about_repository(program, 'sandbox-file',
                                                    'The modules metadata of the repository sandbox-file are damaged: ')
            dialog.click_button('Yes')
            window = program.ready()
            self.check_usable(window)
            self.assertNotIn('corkboard', window.names())
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)

    @needs_groups
    def test_a_damaged_history_is_reported(self):
        """One message reports that the states of the groups cannot be read. The program still lists the groups."""
        path = self.path('var/lib/dnf/history.sqlite')
        for name in os.listdir(os.path.dirname(path)):
            if name.startswith('history.sqlite-'):
                os.unlink(os.path.join(os.path.dirname(path), name))
        self.write('var/lib/dnf/history.sqlite', 'nonsense' * 10000)
        with self.program() as program:
            self.message(program, 'VYRE Yum Warning', 'VYRE does not know which groups are installed, ', path,
                         'file is not a database', 'move it to another place', picture='damaged-history')
            window = program.ready()
            self.check_usable(window)
            window.show_all(True)
            window.set_filter('^Seafaring')
            window.wait_names(['Seafaring'])
            window.click_button('Refresh')
            self.check_usable(window)
            self.assertEqual(program.titles(), [driver.main_title()])
            os.rename(path, path + '.away')
            window.click_button('Refresh')
            self.check_usable(window)
            self.quit(window)

    def test_a_broken_package_database_is_reported(self):
        directory = self.path('var/lib/rpm')
        shutil.copytree(directory, directory + '.away')
        for name in os.listdir(directory):
            if name.startswith('rpmdb'):
                os.unlink(os.path.join(directory, name))
        self.write('var/lib/rpm/rpmdb.sqlite', 'nonsense' * 10000)
        with self.program() as program:
            # Before this text, the message may contain rpm's captured output.
            self.assertRegex(self.message(program, YUM_ERROR), '(^|\n)failed loading RPMDB\nUnable to initialize$')
            window = program.ready()
            self.check_nothing_listed(window)
            shutil.rmtree(directory)
            os.rename(directory + '.away', directory)
            self.check_refresh_helps(window)
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)
            # This text on standard error comes from rpm itself.
            self.assertIn('file is not a database', program.complaints())
            self.assertEqual(self.locks(), [])


if __name__ == '__main__':
    journey.main()
