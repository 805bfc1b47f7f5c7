#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of webbrowser and mimeviewer: which arguments these programs open or refuse, and as which user they start a
desktop program.

Stand-ins replace the desktop programs and record how they were started. VYRE_BUILD names the build directory, from
which the tests install the program.
"""
import html
import json
import os
import pwd
import re
import shutil
import socket
import stat
import subprocess
import sys
import tempfile
import unittest

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SHARE = os.path.join(ROOT, 'share')
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(SHARE, 'python'))

import DesktopOpener  # noqa: E402

STAND_IN = '''#!/usr/bin/python3 -ISB
import json, os, sys
facts = dict(argv=sys.argv, environment=dict(os.environ), uids=os.getresuid(), gids=os.getresgid(),
             groups=sorted(os.getgroups()), directory=os.getcwd())
with open({report!r} + '.part', 'w') as report:
    json.dump(facts, report)
os.rename({report!r} + '.part', {report!r})
'''

NOBODY = pwd.getpwnam('nobody')

# Programs that another user runs are copies, because this user may have no access to the source tree.
programs = tempfile.TemporaryDirectory(prefix='desktop-programs.')
COPY = programs.name


def setUpModule():
    os.chmod(COPY, 0o755)
    shutil.copytree(SHARE, os.path.join(COPY, 'share'))
    shutil.copytree(os.path.join(ROOT, 'desktop'), os.path.join(COPY, 'desktop'))


def tearDownModule():
    programs.cleanup()


class DesktopTest(unittest.TestCase):

    def setUp(self):
        self.scratch = tempfile.mkdtemp(prefix='desktop.')
        self.addCleanup(shutil.rmtree, self.scratch)
        os.chmod(self.scratch, 0o755)
        self.reports = self.directory('reports', 0o777)
        self.report = os.path.join(self.reports, 'report')
        self.bin = self.directory('bin', 0o755)
        self.install('xdg-open')

    def directory(self, name, mode):
        path = os.path.join(self.scratch, name)
        os.mkdir(path)
        os.chmod(path, mode)
        return path

    def install(self, name, content=None):
        path = os.path.join(self.bin, name)
        with open(path, 'w') as program:
            program.write(content or STAND_IN.format(report=self.report))
        os.chmod(path, 0o755)

    def file(self, name):
        path = os.path.join(self.scratch, name)
        with open(path, 'w'):
            pass
        return path

    def run_program(self, program, *arguments, environment=None, user=None):
        """Start webbrowser or mimeviewer. By default, root starts it on behalf of the user nobody."""
        variables = {'PATH': self.bin, 'PKEXEC_UID': str(NOBODY.pw_uid)}
        variables.update(environment or {})
        variables = {name: value for name, value in variables.items() if value is not None}

        def become():
            if user is not None:
                os.setgroups([])
                os.setgid(user.pw_gid)
                os.setuid(user.pw_uid)
        return subprocess.run([os.path.join(COPY, 'share', program)] + list(arguments), env=variables,
                              preexec_fn=become, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, universal_newlines=True)

    def opened(self, program, *arguments, **options):
        """The arguments, the user and the environment with which a desktop program was started."""
        done = self.run_program(program, *arguments, **options)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, '', ''))
        with open(self.report) as report:
            facts = json.load(report)
        os.remove(self.report)
        return facts

    def refused(self, program, *arguments, shown=False, environment=None, **options):
        """The message of a refusal. If shown is true, exactly one program must have been started, to show the message.
        Otherwise no program may have been started.
        """
        environment = dict(environment or {}, **{'DISPLAY': ':7'} if shown else {})
        done = self.run_program(program, *arguments, environment=environment, **options)
        self.assertEqual((done.returncode, done.stdout), (1, ''))
        self.assertEqual(os.path.exists(self.report), shown)
        self.assertEqual(done.stderr.count('\n'), 1, done.stderr)
        self.assertTrue(done.stderr.startswith(program + ': '), done.stderr)
        return done.stderr[len(program) + 2:-1]


class OpenedTest(DesktopTest):

    def test_http_https_ftp_and_file_urls_are_opened(self):
        for url in ('http://host', 'https://host/path?query=1#part', 'ftp://host/', 'file:///usr/share/doc',
                    'file://localhost/etc', 'HTTP://HOST/', 'http://host:8080/', 'http://[::1]:80/x',
                    'http://h/$basearch/%20', 'http://host?query'):
            with self.subTest(url=url):
                self.assertEqual(self.opened('webbrowser', url)['argv'], [os.path.join(self.bin, 'xdg-open'), url])

    def test_urls_with_credentials_are_opened_without_the_credentials(self):
        with open(os.path.join(ROOT, 'tests', 'support', 'urls-with-credentials')) as lines:
            pairs = [line.rstrip('\n').split('\t') for line in lines if not line.startswith('#')]
        self.assertGreater(len(pairs), 20)
        for url, opened in pairs:
            with self.subTest(url=url):
                self.assertEqual(self.opened('webbrowser', url)['argv'][1], opened)

    def test_a_file_path_is_opened_as_a_file_url(self):
        path = self.file('index page#1.html')
        self.assertEqual(self.opened('webbrowser', path)['argv'][1],
                         'file://' + self.scratch + '/index%20page%231.html')

    def test_a_url_with_a_character_beyond_ascii_is_opened(self):
        self.assertEqual(self.opened('webbrowser', 'http://h/ä')['argv'][1], 'http://h/ä')

    def test_files_of_every_plain_mime_type_are_opened(self):
        path = self.file('manual.pdf')
        for mime_type in ('application/pdf', 'text/x-c++src', 'image/svg+xml', 'application/vnd.ms-excel'):
            with self.subTest(type=mime_type):
                self.assertEqual(self.opened('mimeviewer', mime_type, path)['argv'][1:], [path])

    def test_a_file_whose_name_looks_like_an_option_is_opened(self):
        os.chdir(self.scratch)
        self.addCleanup(os.chdir, '/')
        self.file('--help')
        self.assertEqual(self.opened('mimeviewer', 'text/plain', '--help')['argv'][1:],
                         [os.path.join(self.scratch, '--help')])

    def test_the_next_installed_program_is_used_if_a_desktop_program_is_missing(self):
        os.remove(os.path.join(self.bin, 'xdg-open'))
        self.install('gio')
        self.assertEqual(self.opened('webbrowser', 'http://h/')['argv'],
                         [os.path.join(self.bin, 'gio'), 'open', 'http://h/'])
        path = self.file('x')
        self.assertEqual(self.opened('mimeviewer', 'a/b', path)['argv'][1:], ['open', path])
        os.remove(os.path.join(self.bin, 'gio'))
        self.install('run-mailcap')
        self.assertEqual(self.opened('mimeviewer', 'a/b', path)['argv'][1:], ['--action=view', 'a/b:' + path])

    def test_the_desktop_program_does_not_inherit_ignored_signals(self):
        self.install('xdg-open', '#!/bin/sh\nPATH=/bin:/usr/bin\ngrep SigIgn /proc/self/status > "{}"\n'.format(
            self.report))
        self.run_program('webbrowser', 'http://h/')
        with open(self.report) as report:
            self.assertEqual(report.read().split(), ['SigIgn:', '0' * 16])


class RefusedTest(DesktopTest):

    def test_a_text_that_is_no_http_https_ftp_or_file_url_is_refused(self):
        for url in ('', 'host', 'host/path', 'javascript:alert(1)', 'mailto:a@b', 'data:text/html,x', 'http:',
                    'http://',
                    'http:///path', 'http://:80/', 'http://h:port/', 'file://host/etc', 'file:etc', 'smb://h/', '-h',
                    '--version', 'xhttp://h/', 'relative/path'):
            with self.subTest(url=url):
                self.assertTrue(self.refused('webbrowser', url).startswith(
                    'not a URL of the kinds http, https, ftp and file: "'))

    def test_a_url_that_is_too_long_is_refused(self):
        longest = 'http://h/' + 'x' * (8192 - 9)
        self.assertEqual(self.opened('webbrowser', longest)['argv'][1], longest)
        for url in (longest + 'x', '/vantor?' * 15000, 'password=' * 14000):
            self.assertEqual(self.refused('webbrowser', url), 'the URL has more than 8192 characters')

    def test_a_url_with_blanks_or_control_characters_is_refused(self):
        for url in ('http://h/a b', 'http://h/\n', 'http://h/\x1b[31m', ' http://h/', 'http://h/\x7f'):
            with self.subTest(url=url):
                message = self.refused('webbrowser', url)
                self.assertTrue(message.startswith('there is a blank or a control character in the URL "'))
                self.assertTrue(message.isprintable())

    def test_messages_about_refused_urls_hide_passwords(self):
        for url in ('http://me:secret@h/a b', 'smb://me:secret@h', 'http://h/vantor?u=me&p=secret &x=1',
                    'http://me:sec/secret@h/ b'):
            with self.subTest(url=url):
                message = self.refused('webbrowser', url)
                self.assertNotIn('secret', message)
                self.assertIn('h', message)

    def test_a_path_of_a_missing_file_is_refused(self):
        for path in (self.scratch + '/missing', self.scratch):
            for program, arguments in (('webbrowser', (path,)), ('mimeviewer', ('text/plain', path))):
                with self.subTest(path=path, program=program):
                    self.assertEqual(self.refused(program, *arguments), 'there is no file "{}"'.format(path))

    def test_a_text_that_is_not_a_plain_mime_type_is_refused(self):
        path = self.file('x')
        for mime_type in ('', 'text', 'text/', '/plain', 'text/plain; charset=utf-8', 'text/*', 'a/b/c', '-x/y',
                          'text/plain\n', 'tex t/plain'):
            with self.subTest(type=mime_type):
                self.assertTrue(self.refused('mimeviewer', mime_type, path).startswith('not a plain MIME type: "'))

    def test_the_wrong_number_of_arguments_is_refused(self):
        self.assertEqual(self.refused('webbrowser'), 'usage: webbrowser URL')
        self.assertEqual(self.refused('webbrowser', 'http://a', 'http://b'), 'usage: webbrowser URL')
        self.assertEqual(self.refused('mimeviewer', 'text/plain'), 'usage: mimeviewer TYPE FILE')

    def test_a_missing_desktop_program_is_reported(self):
        os.remove(os.path.join(self.bin, 'xdg-open'))
        self.assertRegex(self.refused('webbrowser', 'http://me:secret@h/'),
                         '^"http://h/" is not opened: none of xdg-open, .* is installed$')
        path = self.file('x')
        self.assertRegex(self.refused('mimeviewer', 'a/b', path),
                         '^"{}" is not opened: none of xdg-open, .* is installed$'.format(path))

    def test_a_desktop_program_that_cannot_be_started_is_reported(self):
        self.install('xdg-open', '#!/nonexistent/interpreter\n')
        self.assertEqual(self.refused('webbrowser', 'http://h/'),
                         'cannot start {}/xdg-open: No such file or directory'.format(self.bin))


class UserTest(DesktopTest):

    def check_nobody(self, facts):
        self.assertEqual(facts['uids'], [NOBODY.pw_uid] * 3)
        self.assertEqual(facts['gids'], [NOBODY.pw_gid] * 3)
        self.assertEqual(facts['groups'], sorted(set(os.getgrouplist('nobody', NOBODY.pw_gid))))

    def test_the_desktop_program_runs_as_the_user_who_used_pkexec(self):
        self.check_nobody(self.opened('webbrowser', 'http://h/'))
        self.check_nobody(self.opened('mimeviewer', 'a/b', self.file('x')))

    def test_the_desktop_program_runs_as_the_user_who_used_sudo(self):
        for pkexec in (None, '0', ''):
            self.check_nobody(self.opened('webbrowser', 'http://h/', environment={
                'PKEXEC_UID': pkexec, 'SUDO_UID': str(NOBODY.pw_uid)}))

    def test_the_desktop_program_never_runs_as_root(self):
        for variables in ({}, {'SUDO_UID': '0'}, {'PKEXEC_UID': '0'}, {'SUDO_UID': '-1'}, {'SUDO_UID': 'root'},
                          {'SUDO_UID': '00'}, {'SUDO_UID': '²'}):
            with self.subTest(**variables):
                self.assertEqual(
                    self.refused('webbrowser', 'http://me:secret@h/?x',
                                 environment=dict({'PKEXEC_UID': None}, **variables)),
                    '"http://h/" is not opened as root, and neither pkexec nor sudo names the user who started VYRE')

    def test_the_reason_for_a_refusal_is_shown_on_the_display(self):
        # The stand-in does not wait; the real xmessage would wait for the user.
        self.install('xmessage')
        message = self.refused('webbrowser', 'http://h/', environment={'PKEXEC_UID': None}, shown=True)
        with open(self.report) as report:
            self.assertEqual(json.load(report)['argv'][-1], 'webbrowser: ' + message)

    HOSTILE = '<h1>x</h1><img src="/etc/passwd"> & \\n \\t'

    def message_of(self, program, started):
        """The text that a message program would show the user if it were started with these arguments."""
        argument = started[-1]
        if program == 'kdialog':
            self.assertNotIn('\\', argument)
            content = re.match(r'<qt><p style="white-space: pre-wrap">([^<>]*)</p></qt>\Z', argument)
            self.assertIsNotNone(content, argument)
            return html.unescape(content.group(1))
        if program == 'zenity':
            self.assertIn('--no-markup', started)
            self.assertTrue(argument.startswith('--text='))
            return re.sub(r'\\(.)', lambda match: {'n': '\n', 't': '\t'}.get(match.group(1), match.group(1)),
                          argument[len('--text='):])
        return argument

    def test_the_text_of_a_message_is_never_shown_as_markup(self):
        for program in ('zenity', 'kdialog', 'xmessage'):
            with self.subTest(program=program):
                self.install(program)
                message = self.refused('webbrowser', self.HOSTILE, environment={'PKEXEC_UID': None}, shown=True)
                with open(self.report) as report:
                    shown = self.message_of(program, json.load(report)['argv'])
                self.assertEqual(shown, 'webbrowser: ' + message)
                self.assertIn('<h1>x</h1>', shown)
                os.remove(self.report)
                os.remove(os.path.join(self.bin, program))

    def run_admin_with_ended_vyre(self, end):
        """Run vyre-admin. A stand-in for pkexec prints a message and runs the shell command "end" instead of VYRE."""
        self.install('pkexec', "#!/bin/sh\nprintf '%s\\n' '{}' >&2\n{}\n".format(self.HOSTILE, end))

        def become():
            os.setgroups([])
            os.setgid(NOBODY.pw_gid)
            os.setuid(NOBODY.pw_uid)
        return subprocess.run([os.path.join(COPY, 'desktop', 'vyre-admin')],
                              env={'PATH': self.bin, 'DISPLAY': 'host:0'}, preexec_fn=become,
                              stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    def test_no_message_is_shown_if_the_user_ends_vyre_by_a_signal(self):
        self.install('xmessage')
        for name, number in (('TERM', 15), ('HUP', 1), ('INT', 2)):
            done = self.run_admin_with_ended_vyre('kill -{} $$'.format(name))
            self.assertEqual(done.returncode, 128 + number)
            self.assertIn(self.HOSTILE, done.stderr.decode())
            self.assertFalse(os.path.exists(self.report))
        self.assertEqual(self.run_admin_with_ended_vyre('exit 3').returncode, 3)
        self.assertTrue(os.path.exists(self.report))
        os.remove(self.report)

    def test_the_message_about_a_failed_vyre_never_shows_its_last_output_as_markup(self):
        for program in ('zenity', 'kdialog', 'xmessage'):
            with self.subTest(program=program):
                self.install(program)
                done = self.run_admin_with_ended_vyre('exit 3')
                self.assertEqual(done.returncode, 3, done.stderr)
                with open(self.report) as report:
                    shown = self.message_of(program, json.load(report)['argv'])
                self.assertEqual(shown, 'VYRE has ended with status 3.\n\n{}\n'.format(self.HOSTILE))
                os.remove(self.report)
                os.remove(os.path.join(self.bin, program))

    def test_no_desktop_program_runs_if_pkexec_names_an_unknown_user(self):
        for uid in ('4000000', '99999999999999999999'):
            self.assertEqual(self.refused('webbrowser', 'http://h/', environment={'PKEXEC_UID': uid}),
                             'the user {} of PKEXEC_UID does not exist'.format(uid))

    def test_the_desktop_program_runs_as_the_user_of_vyre_if_this_user_is_not_root(self):
        daemon = pwd.getpwnam('daemon')
        facts = self.opened('webbrowser', 'http://h/', user=daemon,
                            environment={'ANYTHING': 'kept', 'PKEXEC_UID': str(NOBODY.pw_uid)})
        self.assertEqual(facts['uids'], [daemon.pw_uid] * 3)
        self.assertEqual(facts['environment']['ANYTHING'], 'kept')

    def test_the_desktop_program_gets_the_environment_of_the_user(self):
        runtime = self.directory('runtime', 0o700)
        os.chown(runtime, NOBODY.pw_uid, NOBODY.pw_gid)
        cookies = self.file('cookies')
        os.chown(cookies, NOBODY.pw_uid, NOBODY.pw_gid)
        os.chmod(cookies, 0o600)
        kept = {'DISPLAY': ':7', 'WAYLAND_DISPLAY': 'wayland-3', 'LANG': 'de_DE.UTF-8', 'LC_TIME': 'C',
                'XDG_CURRENT_DESKTOP': 'KDE', 'XAUTHORITY': cookies, 'XDG_RUNTIME_DIR': runtime,
                'DBUS_SESSION_BUS_ADDRESS': 'unix:path=/some/bus'}
        roots = {'HOME': '/root', 'USER': 'root', 'LOGNAME': 'root', 'SHELL': '/bin/rootsh',
                 'XDG_CONFIG_HOME': '/root/c',
                 'SUDO_USER': 'somebody', 'VYRESHARE': '/x', 'VYREROOT': '/y', 'LD_LIBRARY_PATH': '/nonexistent'}
        facts = self.opened('webbrowser', 'http://h/', environment=dict(kept, **roots))
        expected = dict(kept, PATH=self.bin, HOME=NOBODY.pw_dir, USER='nobody', LOGNAME='nobody', SHELL=NOBODY.pw_shell)
        found = {name: value for name, value in facts['environment'].items() if name != 'LC_CTYPE'}
        self.assertEqual(found, expected)

    def test_the_desktop_program_gets_neither_the_runtime_directory_nor_the_cookies_of_root(self):
        runtime = self.directory('runtime', 0o700)
        cookies = self.file('cookies')
        os.chmod(cookies, 0o600)
        facts = self.opened('webbrowser', 'http://h/', environment={'XDG_RUNTIME_DIR': runtime, 'XAUTHORITY': cookies})
        self.assertNotEqual(facts['environment'].get('XDG_RUNTIME_DIR'), runtime)
        self.assertNotIn('XAUTHORITY', facts['environment'])

    def test_the_desktop_program_starts_in_the_home_directory_of_the_user(self):
        expected = NOBODY.pw_dir if os.path.isdir(NOBODY.pw_dir) else '/'
        self.assertEqual(self.opened('webbrowser', 'http://h/')['directory'], expected)


class EnvironmentTest(unittest.TestCase):
    """Tests of the environment that the module builds from the user's entry in the user database and from given
    variables. The tests run as the current user.
    """

    def setUp(self):
        self.scratch = tempfile.mkdtemp(prefix='desktop.')
        self.addCleanup(shutil.rmtree, self.scratch)
        self.addCleanup(setattr, DesktopOpener, 'RUNTIME_DIRECTORIES', DesktopOpener.RUNTIME_DIRECTORIES)
        DesktopOpener.RUNTIME_DIRECTORIES = self.scratch
        self.home = os.path.join(self.scratch, 'home')
        os.mkdir(self.home)
        self.uid = os.getuid()
        self.user = pwd.struct_passwd(('me', 'x', self.uid, os.getgid(), '', self.home, ''))

    def make(self, **given):
        return DesktopOpener.environment(self.user, given)

    def runtime(self):
        path = os.path.join(self.scratch, str(self.uid))
        os.mkdir(path)
        return path

    def test_the_runtime_directory_of_the_user_is_used_if_it_exists(self):
        self.assertNotIn('XDG_RUNTIME_DIR', self.make())
        runtime = self.runtime()
        self.assertEqual(self.make()['XDG_RUNTIME_DIR'], runtime)
        self.assertEqual(self.make(XDG_RUNTIME_DIR='/nonexistent')['XDG_RUNTIME_DIR'], runtime)

    def test_the_session_bus_in_the_runtime_directory_is_used_if_no_variable_names_a_bus(self):
        runtime = self.runtime()
        self.assertNotIn('DBUS_SESSION_BUS_ADDRESS', self.make())
        with socket.socket(socket.AF_UNIX) as bus:
            bus.bind(os.path.join(runtime, 'bus'))
            self.assertEqual(self.make()['DBUS_SESSION_BUS_ADDRESS'], 'unix:path=' + runtime + '/bus')
            self.assertEqual(self.make(DBUS_SESSION_BUS_ADDRESS='given')['DBUS_SESSION_BUS_ADDRESS'], 'given')

    def test_display_cookies_in_the_home_directory_are_used_if_no_variable_names_cookies(self):
        self.assertNotIn('XAUTHORITY', self.make())
        cookies = os.path.join(self.home, '.Xauthority')
        with open(cookies, 'w'):
            pass
        self.assertEqual(self.make()['XAUTHORITY'], cookies)
        self.assertEqual(self.make(XAUTHORITY='/nonexistent')['XAUTHORITY'], cookies)

    def test_a_user_without_a_shell_gets_the_default_shell(self):
        self.assertEqual(self.make()['SHELL'], '/bin/sh')


class InstallationTest(unittest.TestCase):

    def test_every_user_can_run_the_installed_programs(self):
        with tempfile.TemporaryDirectory(prefix='desktop.') as prefix:
            subprocess.run(['cmake', '--install', os.environ['VYRE_BUILD'], '--prefix', prefix], check=True,
                           stdout=subprocess.DEVNULL)
            share = os.path.join(prefix, 'share', 'vyre')
            installed = self.files(prefix)
            for program in ('webbrowser', 'mimeviewer'):
                self.assertEqual(stat.S_IMODE(os.stat(os.path.join(share, program)).st_mode), 0o755)
                # Without its installed Python module, the program could not print its usage.
                done = subprocess.run([os.path.join(share, program)], stderr=subprocess.PIPE, universal_newlines=True)
                self.assertTrue(done.stderr.startswith(program + ': usage: '), done.stderr)
            # Python must not write compiled modules into the installation.
            self.assertEqual(self.files(prefix), installed)

    @staticmethod
    def files(top):
        """The paths and the change times of all files and directories below this directory."""
        return {path: os.stat(path).st_ctime_ns for directory, directories, files in os.walk(top)
                for path in [os.path.join(directory, name) for name in directories + files]}


if __name__ == '__main__':
    unittest.main()
