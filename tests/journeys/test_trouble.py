#!/usr/bin/python3
"""What keeps the program from starting well is told, and does not keep it from going on, or from ending well."""
import os
import shutil
import signal
import socket
import subprocess
import unittest.mock

import journey
from journey import DATABASE_LOCK, Gate, JourneyTest, driver, wait_for

import metadata
from vyresandbox import needs_groups, server

YUM_ERROR = 'VYRE Yum Error'
EDITOR_ERROR = 'VYRE Repository Editor Error'
UNEXPECTED = ('Internal error: python exception occurred from C code.\n'
              'When reporting this issue, please include the contents of the\n'
              'Log window, which should contain a walkback.')
# What a plug-in of dnf writes below.
COMPLETIONS = '/var/cache/dnf'
ADVICE = '\nUnder the Repositories menu, Edit Configuration can be used to configure repositories.'
REPOMD = '/sandbox-http/repodata/repomd.xml'


class StartTest(JourneyTest):

    def path(self, *names):
        """Of a file in the sandbox's root; its directory is there afterwards."""
        path = os.path.join(self.sandbox.root, *names)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        return path

    def write(self, name, content):
        path = self.path(name)
        with open(path, 'w') as stream:
            stream.write(content)
        return path

    def message(self, program, title, *texts, picture=None):
        """Read and close the message with these texts. The next one may have the same title."""
        def look():
            if not program.running():
                raise driver.Ended('the program ended with status {}: {}'.format(
                    program.process.returncode, program.stderr()))
            for dialog in program.windows():
                if dialog.title == title and dialog.text():
                    missing = [text for text in texts if text not in dialog.text()]
                    if missing:
                        raise driver.NotThere('{} in {!r}'.format(missing, dialog.text()))
                    return dialog
            return None
        dialog = wait_for(look, title, 30)
        text = dialog.text()
        buttons = dialog.buttons()
        self.assertEqual(len(buttons), 1, buttons)
        if picture is not None:
            dialog.wait_settled()
            self.picture(picture)
        dialog.click_button(buttons[0])
        wait_for(lambda: not program.running() or
                 all(window.title != title or window.text() != text for window in program.windows()),
                 'the end of ' + title, 30)
        return text

    def check_nothing_listed(self, window):
        window.wait_ready(30)
        self.assertEqual(window.program.titles(), [driver.main_title()])
        self.assertEqual(window.row_count(), 0)

    def check_refresh_helps(self, window):
        """What was wrong is mended: all packages come with the next reading."""
        window.click_button('Refresh')
        self.check_usable(window)

    def wrapped(self, commands):
        """Runs of the program begin with these shell commands, which see no other process's mounts."""
        path = os.path.join(self.scratch, 'wrapper')
        with open(path, 'w') as stream:
            stream.write('#!/bin/sh\nexec unshare --mount sh -ec \'{}; exec "{}" "$@"\' sh "$@"\n'.format(
                commands, os.environ['VYRE_BINARY']))
        os.chmod(path, 0o755)
        return unittest.mock.patch.dict(os.environ, VYRE_BINARY=path)

    def unprivileged(self):
        """Runs of the program for which the permissions of files count although their user is root."""
        path = os.path.join(self.scratch, 'wrapper')
        with open(path, 'w') as stream:
            stream.write('#!/bin/sh\nexec setpriv --bounding-set=-dac_override,-dac_read_search "{}" "$@"\n'.format(
                os.environ['VYRE_BINARY']))
        os.chmod(path, 0o755)
        return unittest.mock.patch.dict(os.environ, VYRE_BINARY=path)


class LockTest(StartTest):

    def lock(self, content):
        return self.write(DATABASE_LOCK, content)

    def test_lock_of_another_process(self):
        path = self.lock(str(os.getpid()))
        with self.program() as program:
            text = self.message(program, YUM_ERROR, picture='lock-held')
            self.assertEqual(text, 'The rpm database already locked by {}\nUnable to obtain yum lock'.format(
                os.getpid()))
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('Unable to obtain yum lock', self.read_log(window))
            # It is asked for again each time, and left to its owner.
            window.click_button('Refresh')
            self.message(program, YUM_ERROR, 'Unable to obtain yum lock')
            self.check_nothing_listed(window)
            with open(path) as stream:
                self.assertEqual(stream.read(), str(os.getpid()))
            os.unlink(path)
            self.check_refresh_helps(window)
            self.quit(window)

    def test_lock_of_another_process_outlives_the_program(self):
        path = self.lock(str(os.getpid()))
        with self.program() as program:
            self.message(program, YUM_ERROR, 'Unable to obtain yum lock')
            program.ready()
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)
            self.assertEqual(self.locks(), [path])
            with open(path) as stream:
                self.assertEqual(stream.read(), str(os.getpid()))

    def test_second_program_on_the_same_system(self):
        with self.program() as first:
            first_window = first.ready()
            with self.program() as second:
                self.message(second, YUM_ERROR, 'already locked by {}\n'.format(first.process.pid),
                             'Unable to obtain yum lock')
                window = second.ready()
                self.check_nothing_listed(window)
                # The first one still can be used, and gives its lock back.
                self.assertTrue(first_window.is_ready())
                first.process.send_signal(signal.SIGTERM)
                first.wait()
                self.check_refresh_helps(window)
                self.quit(window)

    def check_taken_over(self, content):
        self.lock(content)
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            with open(self.path(DATABASE_LOCK)) as stream:
                self.assertEqual(stream.read(), str(program.process.pid))
            self.quit(window)

    def test_lock_of_a_process_that_is_gone(self):
        gone = subprocess.Popen(['true'])
        gone.wait()
        self.check_taken_over(str(gone.pid))

    def test_lock_of_nobody(self):
        self.check_taken_over('')

    def test_lock_that_is_no_file(self):
        path = self.path(DATABASE_LOCK)
        os.mkdir(path)
        with self.program() as program:
            self.message(program, YUM_ERROR, 'Is a directory', path, 'Unable to obtain yum lock')
            window = program.ready()
            self.check_nothing_listed(window)
            os.rmdir(path)
            self.check_refresh_helps(window)
            self.quit(window)


class RepositoriesTest(StartTest):

    def add(self, name, **options):
        return self.write('etc/yum.repos.d/{}.repo'.format(name), '[{}]\nname={}\nenabled=1\n{}'.format(
            name, name, ''.join('{}={}\n'.format(*option) for option in options.items())))

    def test_none_is_configured(self):
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

    def test_none_is_enabled(self):
        with self.program('--disablerepo=*') as program:
            text = self.message(program, YUM_ERROR)
            self.assertEqual(text, 'No repositories are enabled.' + ADVICE)
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('No repositories are enabled.', self.read_log(window))
            # The patterns of the command line count for the whole session.
            window.click_button('Refresh')
            self.message(program, YUM_ERROR, 'No repositories are enabled.')
            self.check_nothing_listed(window)
            self.quit(window)

    def test_unreachable_repository_that_may_be_skipped(self):
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            log = self.read_log(window)
            for text in ("Failed to download metadata for repo 'sandbox-unreachable'",
                         'Ignoring repositories: sandbox-unreachable'):
                self.assertIn(text, log)
            self.quit(window)

    def test_unreachable_repository_that_is_needed(self):
        path = self.add('gone', baseurl='http://127.0.0.1:9/gone/', retries=1, timeout=2)
        with self.program() as program:
            self.message(program, YUM_ERROR, "Failed to download metadata for repo 'gone'", '\nUnable to initialize')
            window = program.ready()
            self.check_nothing_listed(window)
            self.assertIn('Unable to initialize', self.read_log(window))
            os.unlink(path)
            self.check_refresh_helps(window)
            self.quit(window)

    def test_unreachable_repository_is_of_no_account_when_disabled(self):
        self.add('gone', baseurl='http://127.0.0.1:9/gone/', retries=1, timeout=2)
        with self.program('--disablerepo=gone') as program:
            window = program.ready()
            self.check_usable(window)
            self.assertNotIn("'gone'", self.read_log(window))
            self.quit(window)

    def test_repository_without_an_address(self):
        path = self.add('nowhere')
        with self.program() as program:
            self.message(program, YUM_ERROR, 'nowhere', '\nUnable to initialize')
            window = program.ready()
            self.check_nothing_listed(window)
            os.unlink(path)
            self.check_refresh_helps(window)
            self.quit(window)

    # Patterns of the command line

    def check_listed_repositories(self, arguments, repositories):
        """The packages that can be installed or updated come from these repositories."""
        with self.subTest(arguments=arguments), self.program('-sa', *arguments) as program:
            window = program.ready()
            found = {row[2] for row in window.rows()}
            self.assertEqual(found - {'@System', ''}, set(repositories))
            self.quit(window)

    def test_patterns(self):
        usual = ['sandbox-http', 'sandbox-updates', 'sandbox-signed', 'sandbox-file']
        for arguments, repositories in (
                ([], usual),
                (['--enablerepo=sandbox-disabled'], usual + ['sandbox-disabled']),
                (['--enablerepo', '*-disabled'], usual + ['sandbox-disabled']),
                (['--enable=sandbox-d?sabled'], usual + ['sandbox-disabled']),
                (['--disablerepo=sandbox-[hu]*'], ['sandbox-signed', 'sandbox-file']),
                (['--disablerepo=*', '--enablerepo=sandbox-file'], ['sandbox-file']),
                (['--disablerepo=sandbox-http', '--disablerepo=sandbox-signed'], ['sandbox-updates', 'sandbox-file']),
                # The last one that matches counts.
                (['--enablerepo=sandbox-file', '--disablerepo=*', '--enablerepo=sandbox-u*'], ['sandbox-updates']),
                # A pattern is compared with the whole name, and with its case.
                (['--disablerepo=sandbox', '--disablerepo=http', '--disablerepo=SANDBOX-*'], usual),
                (['--disablerepo=', '--enablerepo=nonsense', '--disablerepo=sandbox-http|sandbox-file'], usual)):
            self.check_listed_repositories(arguments, repositories)


class ScriptTest(StartTest):
    """The script of the share directory is not what it should be: the program tells, and ends."""

    def check_ends(self, content, messages, *complaints):
        share = os.path.join(self.scratch, 'share')
        shutil.copytree(driver.SHARE, share)
        script = os.path.join(share, 'python', 'YumIO.py')
        os.unlink(script)
        if content is not None:
            with open(script, 'w') as stream:
                stream.write(content)
        with self.program(environment={'VYRESHARE': share}) as program:
            for text in messages:
                self.assertEqual(self.message(program, YUM_ERROR), text)
            self.assertEqual(program.wait(), 0)
            for text in complaints:
                self.assertIn(text, program.complaints())
            if not complaints:
                self.assertEqual(program.complaints(), '')
            self.assertEqual(self.locks(), [])
            self.assertEqual(program.left_over(), [])

    def test_missing(self):
        self.check_ends(None, ['Internal error: unable to open YumIO.py'])

    def test_empty(self):
        self.check_ends('', ['Internal error: cannot find python YumIO'])

    def test_syntax_error(self):
        self.check_ends('def broken(:\n', [UNEXPECTED, 'Internal error: unable to execute YumIO.py'],
                        'File "YumIO.py", line 1', 'SyntaxError')

    def test_exception_while_it_is_read(self):
        self.check_ends('raise RuntimeError("the reason")\n',
                        [UNEXPECTED, 'Internal error: unable to execute YumIO.py'], 'RuntimeError: the reason')

    def test_missing_module(self):
        self.check_ends('import no_such_module\n', [UNEXPECTED, 'Internal error: unable to execute YumIO.py'],
                        'No module named \'no_such_module\'')

    def test_exit_while_it_is_read(self):
        self.check_ends('import sys\nsys.exit(3)\n', [UNEXPECTED, 'Internal error: unable to execute YumIO.py'],
                        'SystemExit: 3')

    def test_exit_while_the_object_is_made(self):
        self.check_ends('import sys, yumIOC\n'
                        'class YumIO:\n'
                        '    def __init__(self):\n'
                        '        yumIOC.errorlog(0, "the reason")\n'
                        '        sys.exit(3)\n', ['the reason\nUnable to initialize'])

    def test_exception_while_the_object_is_made(self):
        self.check_ends('class YumIO:\n'
                        '    def __init__(self):\n'
                        '        raise ValueError("the reason")\n',
                        [UNEXPECTED, 'Internal error: cannot create python yumIO'], 'ValueError: the reason')

    def test_object_without_a_base(self):
        self.check_ends('class YumIO:\n    pass\n', [UNEXPECTED, 'Internal error: yumIO.base not evaluable'],
                        'AttributeError')


class ConfigurationTest(StartTest):
    """Configuration files that cannot be read. The package manager makes of them what it can."""

    def setUp(self):
        super().setUp()
        # Without options, the plug-ins of this system are loaded: with-display has put another directory in its place.
        possible = subprocess.call(['unshare', '--mount', 'true'], stderr=subprocess.DEVNULL) == 0
        if possible and os.path.isdir(COMPLETIONS):
            self.assertTrue(os.path.ismount(COMPLETIONS))

    def check_message(self, text, path, number, explanation):
        with self.program() as program:
            self.assertEqual(self.message(program, EDITOR_ERROR),
                             '{} {}; errno = {} ({}).'.format(text, path, number, explanation))
            window = program.ready()
            self.check_usable(window)
            self.quit(window)

    def test_no_main_file(self):
        path = self.path('etc/yum.conf')
        os.unlink(path)
        self.check_message('Unable to read yum configuration file', path, 2, 'No such file or directory')

    def test_main_file_is_a_directory(self):
        path = self.path('etc/yum.conf')
        os.unlink(path)
        os.mkdir(path)
        self.check_message('Error reading repository configuration file', path, 21, 'Is a directory')

    def test_main_file_may_not_be_read(self):
        path = self.path('etc/yum.conf')
        os.chmod(path, 0)
        with self.unprivileged():
            self.check_message('Unable to read yum configuration file', path, 13, 'Permission denied')

    def test_malformed_section_in_the_main_file(self):
        self.write('etc/yum.conf', '[main]\ngpgcheck=0\n\n[nonsense\n')
        self.check_message('Malformed section name in line:', '[nonsense', 0, 'Success')

    def test_malformed_section_in_a_repository_file(self):
        self.write('etc/yum.repos.d/broken.repo', '[broken\nname=Broken\nbaseurl=file:///nonexistent/\n')
        self.check_message('Malformed section name in line:', '[broken', 0, 'Success')

    def test_malformed_section_with_markup_is_shown_as_it_is(self):
        self.write('etc/yum.repos.d/broken.repo', '[<b>bold</b> & <img src=x>\n')
        self.check_message('Malformed section name in line:', '[<b>bold</b> & <img src=x>', 0, 'Success')

    def check_left_alone(self, path, reason):
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.assertEqual(self.read_log(window).count('{} is left alone: {}.'.format(path, reason)), 1)
            self.quit(window)
        self.assertTrue(os.path.lexists(path))

    def test_repository_file_leads_nowhere(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.symlink('/nonexistent/file', path)
        self.check_left_alone(path, 'it is a link that leads nowhere')

    def test_repository_file_leads_to_itself(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.symlink('broken.repo', path)
        self.check_left_alone(path, 'it is a link that leads nowhere')

    def test_repository_file_is_a_pipe(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.mkfifo(path)
        self.check_left_alone(path, 'it is not a regular file')

    def test_repository_file_is_a_socket(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        made = socket.socket(socket.AF_UNIX)
        self.addCleanup(made.close)
        # The name of a socket has to be short.
        short = os.open(os.path.dirname(path), os.O_PATH)
        self.addCleanup(os.close, short)
        made.bind('/proc/self/fd/{}/broken.repo'.format(short))
        self.check_left_alone(path, 'it is not a regular file')

    def test_repository_file_may_not_be_read(self):
        path = self.write('etc/yum.repos.d/broken.repo', '[broken]\nenabled=0\n')
        os.chmod(path, 0)
        with self.unprivileged():
            self.check_message('Unable to read repository configuration file', path, 13, 'Permission denied')

    def test_repository_file_fails_while_it_is_read(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.symlink('/proc/self/mem', path)
        self.check_message('Error reading repository configuration file', path, 5, 'Input/output error')

    def test_directory_with_the_name_of_a_repository_file(self):
        os.mkdir(self.path('etc/yum.repos.d/directory.repo'))
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.quit(window)

    def test_nonsense(self):
        with open(self.path('etc/yum.repos.d/nonsense.repo'), 'wb') as stream:
            stream.write(bytes(byte for byte in range(256) if byte != ord('[')) * 100)
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.assertIn('nonsense.repo', self.read_log(window))
            self.quit(window)

    def test_main_file_that_the_package_manager_does_not_understand(self):
        path = self.write('etc/yum.conf', 'nonsense\n')
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.assertIn('Unable to use the configuration file ' + path, self.read_log(window))
            self.quit(window)


class MetadataTest(StartTest):

    def check_fails(self, mend, *texts):
        with self.program() as program:
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
        self.check_fails(lambda: self.sandbox.server.faults.pop(path), "repo 'sandbox-http'", *texts)

    def test_cut_off(self):
        self.check_fault(REPOMD, server.truncated(100), 'partial file')

    def test_nonsense(self):
        self.check_fault(REPOMD, server.corrupted(), 'repomd.xml parser error')

    def test_not_found(self):
        self.check_fault(REPOMD, server.status(404), '404')

    def test_server_error(self):
        self.check_fault(REPOMD, server.status(503), '503')

    def test_list_of_packages_is_not_the_one_announced(self):
        directory = os.path.join(self.sandbox.repository('sandbox-http'), 'repodata')
        name, = [name for name in os.listdir(directory) if 'primary.xml' in name]
        self.check_fault('/sandbox-http/repodata/' + name, server.corrupted(), "checksum doesn't match")

    def test_directory_without_metadata(self):
        directory = os.path.join(self.sandbox.repository('sandbox-file'), 'repodata')
        os.rename(directory, directory + '.away')
        self.check_fails(lambda: os.rename(directory + '.away', directory), "repo 'sandbox-file'")

    def test_file_lists_that_end_too_early(self):
        metadata.alter(self.sandbox.repository('sandbox-file'), 'filelists', metadata.half)
        with self.program() as program:
            self.message(program, 'VYRE Yum Warning',
                         'The filelists metadata of the repository sandbox-file are damaged: ',
                         '\nFiles or changes of its packages are missing', picture='damaged-metadata')
            window = program.ready()
            self.check_usable(window)
            self.check_usable(window, 'corkboard')
            window.click_button('Refresh')
            self.check_usable(window)
            self.assertEqual(program.titles(), [driver.main_title()])
            self.quit(window)

    def test_packages_that_are_something_else(self):
        repository = self.sandbox.repository('sandbox-file')
        shutil.copytree(repository, repository + '.away')
        metadata.alter(repository, 'primary', metadata.page)

        def mend():
            shutil.rmtree(repository)
            os.rename(repository + '.away', repository)
            shutil.rmtree(self.path('var/cache/yum'))
        self.check_fails(mend, 'The primary metadata of the repository sandbox-file are damaged: '
                         '"html" where "metadata" is expected')

    def test_modules_that_are_no_modules(self):
        """The package manager itself does not survive them."""
        metadata.add_modules(self.sandbox.repository('sandbox-file'), 'nonsense\n' * 100, self.scratch)
        with self.program() as program:
            self.message(program, 'VYRE Yum Warning',
                         'The modules metadata of the repository sandbox-file are damaged: ',
                         '\nThe repository is left out.')
            window = program.ready()
            self.check_usable(window)
            self.assertNotIn('corkboard', window.names())
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)

    @needs_groups
    def test_damaged_history(self):
        """One message for all groups, which are listed all the same."""
        path = self.path('var/lib/dnf/history.sqlite')
        for name in os.listdir(os.path.dirname(path)):
            if name.startswith('history.sqlite-'):
                os.unlink(os.path.join(os.path.dirname(path), name))
        self.write('var/lib/dnf/history.sqlite', 'nonsense' * 10000)
        with self.program() as program:
            self.message(program, 'VYRE Yum Warning', 'It is not known which groups are installed: ', path,
                         'file is not a database', 'move it away', picture='damaged-history')
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

    def test_broken_package_database(self):
        directory = self.path('var/lib/rpm')
        shutil.copytree(directory, directory + '.away')
        for name in os.listdir(directory):
            if name.startswith('rpmdb'):
                os.unlink(os.path.join(directory, name))
        self.write('var/lib/rpm/rpmdb.sqlite', 'nonsense' * 10000)
        with self.program() as program:
            # Before that stands what rpm itself has said, as far as it is captured.
            self.assertRegex(self.message(program, YUM_ERROR), '(^|\n)failed loading RPMDB\nUnable to initialize$')
            window = program.ready()
            self.check_nothing_listed(window)
            shutil.rmtree(directory)
            os.rename(directory + '.away', directory)
            self.check_refresh_helps(window)
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)
            # Of what rpm writes by itself.
            self.assertIn('file is not a database', program.complaints())
            self.assertEqual(self.locks(), [])


class DiskTest(StartTest):

    def check_no_lock(self, *texts):
        with self.program() as program:
            self.message(program, YUM_ERROR, '\nUnable to obtain yum lock', *texts)
            window = program.ready()
            self.check_nothing_listed(window)
            self.read_log(window)
            self.quit(window)

    def test_root_is_read_only(self):
        with self.wrapped('mount --bind "$VYREROOT" "$VYREROOT"; mount -o remount,bind,ro "$VYREROOT"'):
            self.check_no_lock('Read-only file system')

    def test_directory_of_the_lock_may_not_be_written(self):
        directory = os.path.dirname(self.path(DATABASE_LOCK))
        os.chmod(directory, 0o555)
        with self.unprivileged():
            self.check_no_lock('Permission denied', directory)

    def test_full_directory_of_the_lock(self):
        directory = os.path.dirname(self.path(DATABASE_LOCK))
        with self.wrapped('mount -t tmpfs -o size=4k none {0}; printf x > {0}/fill'.format(directory)):
            self.check_no_lock('No space left on device')

    def test_full_cache(self):
        directory = os.path.dirname(self.path('var/cache/yum/x'))
        with self.wrapped('mount -t tmpfs -o size=16k none ' + directory):
            with self.program() as program:
                self.message(program, YUM_ERROR, 'Failed to download metadata', '\nUnable to initialize')
                window = program.ready()
                self.check_nothing_listed(window)
                # Room is made.
                subprocess.run(['nsenter', '--mount', '--root', '--target', str(program.process.pid), 'mount', '-o',
                                'remount,size=64m', directory], check=True)
                self.check_refresh_helps(window)
                self.quit(window)

    def test_full_directory_of_the_log_files(self):
        directory = os.path.dirname(self.path('var/log/x'))
        with self.wrapped('mount -t tmpfs -o size=4k none {0}; printf x > {0}/fill'.format(directory)):
            with self.program() as program:
                window = program.ready()
                self.check_usable(window)
                self.quit(window)

    def test_root_that_does_not_exist(self):
        """It is mistyped, and no packages are wanted in a place that nobody has meant."""
        root = os.path.join(self.scratch, 'nothing')
        with self.program(environment={'VYREROOT': root}) as program:
            self.assertEqual(self.message(program, YUM_ERROR), 'The root directory {} does not exist'.format(root))
            self.assertEqual(program.wait(), 0)
            self.assertEqual(program.complaints(), '')
        self.assertFalse(os.path.exists(root))


class SignalTest(StartTest):
    """A signal ends the program, and never spoils anything."""

    ENDING = (signal.SIGINT, signal.SIGTERM, signal.SIGHUP)
    # A few of the others, which nobody sends for that.
    OTHER = (signal.SIGUSR1, signal.SIGALRM, signal.SIGSEGV, signal.SIGRTMIN + 3)

    def check_next_run(self):
        """Whatever the ended program has left behind is in nobody's way."""
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.quit(window)

    def check_next_transaction(self):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.quit(window)

    def check_ends_by(self, program, number, said=''):
        """The program ends by the signal. said: an expression for what it writes about work that it gives up."""
        program.process.send_signal(number)
        self.assertEqual(program.wait(), -number)
        self.assertRegex(program.complaints(), r'(?s)\A' + said + r'\Z')
        wait_for(lambda: program.left_over() == [], 'the end of all processes', 20)
        self.check_unchanged()
        self.assertEqual(self.locks(), [])

    def test_at_once(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program() as program:
                self.check_ends_by(program, number)
                self.check_next_run()

    def test_while_idle(self):
        for number in self.ENDING + self.OTHER:
            with self.subTest(number=number), self.program() as program:
                program.ready()
                self.assertNotEqual(self.locks(), [])
                self.check_ends_by(program, number)
        self.check_next_run()

    def test_while_a_message_is_shown(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program('--disablerepo=*') as program:
                program.window(YUM_ERROR)
                self.check_ends_by(program, number)
        self.check_next_run()

    def test_while_the_question_is_shown(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program() as program:
                window = program.ready()
                window.show_all()
                window.mark_listed('pergola')
                window.apply()
                self.check_ends_by(program, number)
        self.check_next_transaction()

    def wait_download(self, program, path):
        gate = Gate()
        self.sandbox.server.faults[path] = gate
        self.addCleanup(gate.open)
        return gate

    def test_while_collecting(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            self.sandbox.expire_metadata()
            with self.subTest(number=number), self.program() as program:
                gate = self.wait_download(program, REPOMD)
                program.main()
                gate.wait_reached()
                self.check_ends_by(program, number, 'vyre: .*[Ii]nterrupted.*vyre: Unable to initialize')
            del self.sandbox.server.faults[REPOMD]
        self.check_next_run()

    def test_while_downloading_packages(self):
        path = '/sandbox-http/pergola-6.1-1.x86_64.rpm'
        for number in (signal.SIGTERM, signal.SIGHUP):
            with self.subTest(number=number), self.program() as program:
                gate = self.wait_download(program, path)
                window = program.ready()
                window.show_all()
                window.mark_listed('pergola')
                window.accept(window.apply())
                gate.wait_reached()
                self.check_ends_by(program, number, 'vyre: .*Interrupted.*vyre: Unable to apply changes')
            del self.sandbox.server.faults[path]
        self.check_next_transaction()

    def test_interrupt_of_a_download_is_told(self):
        """The library that downloads has a handler of its own for the time of a download."""
        with self.program() as program:
            gate = self.wait_download(program, REPOMD)
            program.main()
            gate.wait_reached()
            program.process.send_signal(signal.SIGINT)
            self.message(program, YUM_ERROR, 'interrupted by a signal', '\nUnable to initialize')
            del self.sandbox.server.faults[REPOMD]
            window = program.ready()
            self.check_nothing_listed(window)
            self.check_ends_by(program, signal.SIGINT)
        self.check_next_run()

    def test_refresh_after_an_interrupted_download(self):
        with self.program() as program:
            gate = self.wait_download(program, REPOMD)
            program.main()
            gate.wait_reached()
            program.process.send_signal(signal.SIGINT)
            self.message(program, YUM_ERROR, 'interrupted by a signal')
            del self.sandbox.server.faults[REPOMD]
            window = program.ready()
            window.click_button('Refresh')
            wait_for(lambda: window.row_count() > 0, 'packages', 10)
            self.check_usable(window)
            self.quit(window)

    def test_packages_after_an_interrupted_download(self):
        path = '/sandbox-http/pergola-6.1-1.x86_64.rpm'
        with self.program() as program:
            gate = self.wait_download(program, path)
            window = program.ready()
            window.show_all()
            window.mark_listed('pergola')
            window.accept(window.apply())
            gate.wait_reached()
            program.process.send_signal(signal.SIGINT)
            self.message(program, YUM_ERROR, 'Unable to apply changes')
            del self.sandbox.server.faults[path]
            gate.open()
            window.wait_ready()
            self.check_unchanged()
            window.accept(window.apply())
            window.wait_ready()
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.quit(window)

    def test_after_a_transaction(self):
        for number in self.ENDING:
            with self.subTest(number=number), self.program() as program:
                window = program.ready()
                window.show_all()
                # What one run installs, the next removes.
                window.mark_listed('pergola')
                window.accept(window.apply())
                window.wait_ready()
                self.before = self.sandbox.installed()
                self.check_ends_by(program, number)
        self.check_next_run()

    def check_transaction_is_finished(self, number):
        with self.program() as program:
            window = program.ready()
            window.show_all()
            window.mark_listed('slowpoke')
            window.accept(window.apply())
            wait_for(lambda: 'sleep' in [name_of(process) for process in program.left_over()], 'the scriptlet')
            program.process.send_signal(number)
            self.assertEqual(program.wait(), -number)
            # The scriptlet was not cut off, nor is it running without the program.
            self.assertEqual(program.left_over(), [])
            self.check_changed(new=['slowpoke-1.0-1.noarch'])
            self.check_history_complete()
            self.assertEqual(self.locks(), [])

    def test_interrupt_of_a_transaction(self):
        self.check_transaction_is_finished(signal.SIGINT)

    def test_termination_of_a_transaction(self):
        self.check_transaction_is_finished(signal.SIGTERM)

    def test_hangup_of_a_transaction(self):
        self.check_transaction_is_finished(signal.SIGHUP)

    def test_other_signals_in_a_transaction(self):
        for number in self.OTHER:
            with self.subTest(number=number):
                self.check_transaction_is_finished(number)
                self.sandbox.rpm('--erase', 'slowpoke')


def name_of(process):
    try:
        with open('/proc/{}/comm'.format(process)) as stream:
            return stream.read().strip()
    except OSError:
        return ''


if __name__ == '__main__':
    journey.main()
