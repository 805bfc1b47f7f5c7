#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The script or a configuration file is unusable, and the program reports the problem."""
import os
import shutil
import socket
import subprocess

import journey
from journey import driver, wait_for
from trouble import StartTest, YUM_ERROR

EDITOR_ERROR = 'VYRE Repository Editor Error'
UNEXPECTED = ('Internal error: python exception occurred from C code.\n'
              'When reporting this issue, please include the contents of the\n'
              'Log window, which should contain a walkback.')
# The directory to which dnf's generate_completion_cache plug-in writes.
COMPLETIONS = '/var/cache/dnf'


class ScriptTest(StartTest):
    """The script in the share directory cannot be used: the program shows messages and ends."""

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

    def test_a_missing_script_is_reported(self):
        self.check_ends(None, ['Internal error: unable to open YumIO.py'])

    def test_an_empty_script_is_reported(self):
        self.check_ends('', ['Internal error: cannot find python YumIO'])

    def test_a_syntax_error_in_the_script_is_reported(self):
        self.check_ends('def broken(:\n', [UNEXPECTED, 'Internal error: unable to execute YumIO.py'],
                        'File "YumIO.py", line 1', 'SyntaxError')

    def test_an_exception_while_the_script_is_loaded_is_reported(self):
        self.check_ends('raise RuntimeError("the reason")\n',
                        [UNEXPECTED, 'Internal error: unable to execute YumIO.py'], 'RuntimeError: the reason')

    def test_a_missing_module_is_reported(self):
        self.check_ends('import no_such_module\n', [UNEXPECTED, 'Internal error: unable to execute YumIO.py'],
                        'No module named \'no_such_module\'')

    def test_an_exit_call_while_the_script_is_loaded_is_reported(self):
        self.check_ends('import sys\nsys.exit(3)\n', [UNEXPECTED, 'Internal error: unable to execute YumIO.py'],
                        'SystemExit: 3')

    def test_an_exit_call_while_the_script_object_is_created_is_reported(self):
        self.check_ends('import sys, yumIOC\n'
                        'class YumIO:\n'
                        '    def __init__(self):\n'
                        '        yumIOC.errorlog(0, "the reason")\n'
                        '        sys.exit(3)\n', ['the reason\nUnable to initialize'])

    def test_an_exception_while_the_script_object_is_created_is_reported(self):
        self.check_ends('class YumIO:\n'
                        '    def __init__(self):\n'
                        '        raise ValueError("the reason")\n',
                        [UNEXPECTED, 'Internal error: cannot create python yumIO'], 'ValueError: the reason')

    def test_a_script_object_without_a_dnf_base_is_reported(self):
        self.check_ends('class YumIO:\n    pass\n', [UNEXPECTED, 'Internal error: yumIO.base not evaluable'],
                        'AttributeError')


class ManualTest(StartTest):

    def test_a_missing_manual_causes_a_notice_and_starts_no_other_program(self):
        directory = '/usr/share/doc/vyre'
        with self.wrapped('if [ -d {0} ]; then mount -t tmpfs none {0}; fi'.format(directory)), \
                self.program() as program:
            window = program.ready()
            for number, name in enumerate(('html/index.html', 'manual.pdf')):
                self.choose_from_menu(window, 'Help', number)
                notice = 'The manual is not installed: {}/{} is missing'.format(directory, name)
                wait_for(lambda text=notice: text in window.labels(), notice)
            self.assertEqual(program.titles(), [driver.main_title()])
            # A helper program would show its message in a bare window, and wait for the user.
            self.assertEqual(program.left_over(), [])
            self.quit(window)


class ConfigurationTest(StartTest):
    """Some configuration files cannot be read. dnf uses the parts that it can read."""

    def setUp(self):
        super().setUp()
        # If the main configuration file is missing, the program loads the plug-ins of the running system. One of these
        # plug-ins writes to COMPLETIONS, so with-display has mounted another directory there.
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

    def test_a_missing_main_configuration_file_is_reported(self):
        path = self.path('etc/yum.conf')
        os.unlink(path)
        self.check_message('Unable to read yum configuration file', path, 2, 'No such file or directory')

    def test_a_directory_in_place_of_the_main_configuration_file_is_reported(self):
        path = self.path('etc/yum.conf')
        os.unlink(path)
        os.mkdir(path)
        self.check_message('Error reading repository configuration file', path, 21, 'Is a directory')

    def test_a_main_configuration_file_without_read_permission_is_reported(self):
        path = self.path('etc/yum.conf')
        os.chmod(path, 0)
        with self.unprivileged():
            self.check_message('Unable to read yum configuration file', path, 13, 'Permission denied')

    def test_a_malformed_section_in_the_main_configuration_file_is_reported(self):
        self.write('etc/yum.conf', '[main]\ngpgcheck=0\n\n[nonsense\n')
        self.check_message('Malformed section name in line:', '[nonsense', 0, 'Success')

    def test_a_malformed_section_in_a_repository_file_is_reported(self):
        self.write('etc/yum.repos.d/broken.repo', '[broken\nname=Broken\nbaseurl=file:///nonexistent/\n')
        self.check_message('Malformed section name in line:', '[broken', 0, 'Success')

    def test_markup_in_a_malformed_section_name_is_shown_literally(self):
        self.write('etc/yum.repos.d/broken.repo', '[<b>bold</b> & <img src=x>\n')
        self.check_message('Malformed section name in line:', '[<b>bold</b> & <img src=x>', 0, 'Success')

    def check_left_alone(self, path, reason):
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.assertEqual(self.read_log(window).count('{} is left alone: {}.'.format(path, reason)), 1)
            self.quit(window)
        self.assertTrue(os.path.lexists(path))

    def test_a_repository_file_that_is_a_broken_link_is_neither_read_nor_changed(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.symlink('/nonexistent/file', path)
        self.check_left_alone(path, 'it is a broken link')

    def test_a_repository_file_that_is_a_link_to_itself_is_neither_read_nor_changed(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.symlink('broken.repo', path)
        self.check_left_alone(path, 'it is a broken link')

    def test_a_repository_file_that_is_a_pipe_is_neither_read_nor_changed(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.mkfifo(path)
        self.check_left_alone(path, 'it is not a regular file')

    def test_a_repository_file_that_is_a_socket_is_neither_read_nor_changed(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        made = socket.socket(socket.AF_UNIX)
        self.addCleanup(made.close)
        # The path of a socket has a small maximum length, so use the path of a descriptor.
        short = os.open(os.path.dirname(path), os.O_PATH)
        self.addCleanup(os.close, short)
        made.bind('/proc/self/fd/{}/broken.repo'.format(short))
        self.check_left_alone(path, 'it is not a regular file')

    def test_a_repository_file_without_read_permission_is_reported(self):
        path = self.write('etc/yum.repos.d/broken.repo', '[broken]\nenabled=0\n')
        os.chmod(path, 0)
        with self.unprivileged():
            self.check_message('Unable to read repository configuration file', path, 13, 'Permission denied')

    def test_a_repository_file_with_a_read_error_is_reported(self):
        path = self.path('etc/yum.repos.d/broken.repo')
        os.symlink('/proc/self/mem', path)
        self.check_message('Error reading repository configuration file', path, 5, 'Input/output error')

    def test_a_directory_with_the_name_of_a_repository_file_is_ignored(self):
        os.mkdir(self.path('etc/yum.repos.d/directory.repo'))
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.quit(window)

    def test_a_repository_file_of_random_bytes_is_reported(self):
        with open(self.path('etc/yum.repos.d/nonsense.repo'), 'wb') as stream:
            stream.write(bytes(byte for byte in range(256) if byte != ord('[')) * 100)
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.assertIn('nonsense.repo', self.read_log(window))
            self.quit(window)

    def test_a_main_configuration_file_that_dnf_cannot_parse_is_reported(self):
        path = self.write('etc/yum.conf', 'nonsense\n')
        with self.program() as program:
            window = program.ready()
            self.check_usable(window)
            self.assertIn('Unable to use the configuration file ' + path, self.read_log(window))
            self.quit(window)


if __name__ == '__main__':
    journey.main()
