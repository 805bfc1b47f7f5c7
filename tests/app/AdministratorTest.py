#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of vyre-admin on a system with a real polkit: who must authenticate, and what root receives.

usage: AdministratorTest.py CMAKE BUILD [options of unittest...]

The tests run in name spaces of their own, so other processes see none of their changes. In these name spaces, the
program is installed, the system has two additional users, and a separate message bus and polkit run.
"""
import getopt
import importlib.machinery
import json
import os
import random
import re
import resource
import signal
import stat
import subprocess
import sys
import tempfile
import unittest

from administrator import (ADMIN, COOKIE, HOSTILE_PKEXEC, NAME, NOT_LET, PASSWORD, PKEXEC, RECORDER, TRUSTED_UID, UID,
                           Agent, Display, System, WaylandDisplay, become_user, run, wait_for, write)

INSIDE = '--inside'


class AdministratorTest(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.system = System(*sys.argv[2:4])
        cls.addClassCleanup(cls.system.stop)

    def setUp(self):
        self.show_on(Display(self.system))
        self.agent = None
        self.process = None
        self.addCleanup(self.clean)

    def show_on(self, display):
        self.display = display
        self.addCleanup(display.server.wait)
        self.addCleanup(display.server.terminate)

    def clean(self):
        if self.agent is not None:
            self.agent.stop()
        if self.process is not None and self.process.poll() is None:
            self.process.kill()
            self.process.wait()
        for stream in (self.out, self.err) if self.process is not None else ():
            stream.close()
        for name in os.listdir(self.system.home) + [self.system.runtime + '/cookies']:
            path = os.path.join(self.system.home, name)
            if os.path.isfile(path):
                os.remove(path)

    def start(self, *arguments, password=PASSWORD, unset=(), command=(ADMIN,), uid=UID, **environment):
        """Start vyre-admin as the user does on a desktop. If password is None, the session has no authentication agent.
        """
        variables = {'DISPLAY': self.display.name, 'HOME': self.system.home, 'USER': NAME, 'LOGNAME': NAME,
                     'LANG': 'C.UTF-8', 'PATH': '/usr/local/bin:/usr/bin:/bin', 'SHELL': '/bin/sh',
                     'XDG_RUNTIME_DIR': self.system.runtime}
        variables.update(environment)
        for name in unset:
            del variables[name]
        self.out, self.err = tempfile.TemporaryFile('w+'), tempfile.TemporaryFile('w+')
        # The process runs the command only after it has read a line, so that the test can register an agent first.
        self.process = subprocess.Popen(
            ['/bin/sh', '-c', 'read go; umask 0; exec "$0" "$@"'] + list(command) + list(arguments), env=variables,
            stdin=subprocess.PIPE, stdout=self.out, stderr=self.err, cwd='/', start_new_session=True,
            preexec_fn=lambda: become_user(uid))
        if password is not None:
            self.agent = Agent(self.process, password)
        self.process.stdin.write(b'go\n')
        self.process.stdin.close()

    def ended(self):
        """The exit status and the text on standard error of the process that start() started."""
        status = self.process.wait(60)
        self.err.seek(0)
        return status, self.err.read()

    def vyre(self):
        """Wait until the main window of VYRE has opened; return the number of VYRE's process."""
        def look():
            if self.process.poll() is not None:
                raise AssertionError('ended with {}'.format(self.ended()))
            return self.display.windows('^VYRE - ')
        window = wait_for(look, 'the main window')[0]
        return int(self.display.do('getwindowpid', window))

    def quit(self):
        """Press the key for Quit until VYRE ends, because VYRE ignores the key while it works."""
        for _ in range(200):
            window = self.display.windows('^VYRE - ')
            if window:
                self.display.do('windowfocus', window[0], 'key', 'ctrl+q')
            try:
                self.process.wait(0.2)
                break
            except subprocess.TimeoutExpired:
                pass
        self.assertEqual(self.ended(), (0, ''))

    def status(self, pid, field):
        with open('/proc/{}/status'.format(pid)) as stream:
            return re.search('^{}:\t(.*)$'.format(field), stream.read(), re.MULTILINE).group(1)

    def environment(self, pid):
        with open('/proc/{}/environ'.format(pid)) as stream:
            return dict(entry.split('=', 1) for entry in stream.read().split('\0') if entry)

    def dismiss_message(self):
        """Close the message box that vyre-admin shows if standard error is not a terminal."""
        window = wait_for(lambda: self.display.windows('^VYRE$'), 'the message')[0]
        self.display.do('windowkill', window)

    def check_not_started(self, message):
        self.assertEqual(self.ended(), (1, message))
        self.assertEqual(self.display.windows('^VYRE - '), [])

    def end(self):
        """Return the result of ended(). After that, the test may call start() again."""
        try:
            return self.ended()
        finally:
            if self.agent is not None:
                self.agent.stop()
                self.agent = None
            for stream in (self.out, self.err):
                stream.close()
            self.process = None

    def record_the_start_of_vyre(self):
        """For this test, replace VYRE by a stand-in that records its start."""
        os.rename('/usr/bin/vyre', '/usr/bin/vyre.real')
        self.addCleanup(os.rename, '/usr/bin/vyre.real', '/usr/bin/vyre')
        write('/usr/bin/vyre', RECORDER.format(path=self.system.recorded))
        os.chmod('/usr/bin/vyre', 0o755)

    def permit_user_without_cookie(self):
        """Let the user use the display without a cookie, as the X servers of some Wayland desktops do."""
        self.display.xhost('+si:localuser:' + NAME)

    # What root receives

    def test_vyre_runs_as_root_and_inherits_only_the_display_of_the_user(self):
        cookies = self.system.runtime + '/cookies'
        self.display.write_cookie(cookies, UID)
        hurtful = os.path.join(self.system.home, 'hurtful')
        arguments = ['--regexp=$(touch {0}); `touch {0}` "\'*'.format(hurtful), '--state', 'all; touch ' + hurtful,
                     '--disablerepo=a b\nc']
        # VYRE must get this value of --state in one piece, and refuse it.
        self.start(*arguments, XAUTHORITY=cookies)
        self.dismiss_message()
        self.assertIn('vyre: unrecogized argument to -s/--state option: all; touch ' + hurtful + '\n', self.ended()[1])
        self.agent.stop()
        self.agent = None
        for stream in (self.out, self.err):
            stream.close()

        del arguments[1:3]
        self.start(*arguments, XAUTHORITY=cookies, LC_TIME='C', PYTHONPATH=self.system.home,
                   LD_LIBRARY_PATH=self.system.home, QT_PLUGIN_PATH=self.system.home,
                   VYRESHARE=self.system.home, VYREROOT=self.system.home, TMPDIR=self.system.home,
                   WAYLAND_DISPLAY='wayland-0', DBUS_SESSION_BUS_ADDRESS='unix:path=/nowhere')
        vyre = self.vyre()
        self.assertIn('Authentication is required to change the packages of this system with VYRE', self.agent.text)
        self.assertIn('example.vyre.Vyre.administer', self.agent.text)
        self.assertEqual(self.status(vyre, 'Uid'), '0\t0\t0\t0')
        self.assertEqual(self.status(vyre, 'Umask'), '0022')
        self.assertEqual(os.readlink('/proc/{}/cwd'.format(vyre)), '/root')
        with open('/proc/{}/cmdline'.format(vyre)) as stream:
            self.assertEqual(stream.read().split('\0')[:-1], ['/usr/bin/vyre'] + arguments)
        environment = self.environment(vyre)
        self.assertEqual(environment, {
            'DISPLAY': self.display.name, 'XAUTHORITY': cookies, 'LANG': 'C.UTF-8', 'LC_TIME': 'C',
            'SHELL': '/bin/sh', 'HOME': '/root', 'USER': 'root', 'LOGNAME': 'root', 'PKEXEC_UID': str(UID),
            'XDG_RUNTIME_DIR': '/run/vyre', 'PATH': environment['PATH']})
        self.assertNotIn(self.system.home, environment['PATH'])
        directory = os.stat('/run/vyre')
        self.assertEqual((stat.S_IMODE(directory.st_mode), directory.st_uid), (0o700, 0))
        self.assertFalse(os.path.exists(hurtful))
        # Root gets the cookie, so vyre-admin does not add root to the permissions of the display.
        self.assertEqual(self.display.let_in(), [])

        # The browser runs as the user, not as root, and finds the display.
        run('/usr/share/vyre/webbrowser', 'https://vyre.example/', env=environment)
        with open(wait_for(lambda: os.path.exists(self.system.opened) and self.system.opened, 'the browser')) as stream:
            opened = json.load(stream)
        self.assertEqual(opened[:2], [['https://vyre.example/'], UID])
        self.assertEqual({name: opened[2].get(name) for name in ('DISPLAY', 'XAUTHORITY', 'HOME', 'XDG_RUNTIME_DIR')},
                         {'DISPLAY': self.display.name, 'XAUTHORITY': cookies, 'HOME': self.system.home,
                          'XDG_RUNTIME_DIR': self.system.runtime})
        self.quit()

    def test_vyre_uses_the_display_cookies_in_the_home_directory_of_the_user(self):
        cookies = os.path.join(self.system.home, '.Xauthority')
        self.display.write_cookie(cookies, UID)
        self.start()
        self.assertEqual(self.environment(self.vyre())['XAUTHORITY'], cookies)
        self.assertEqual(self.display.let_in(), [])
        self.quit()

    def test_if_no_display_cookie_exists_root_may_use_the_display_only_while_vyre_runs(self):
        self.permit_user_without_cookie()
        # This cookie belongs to another display, so it is useless.
        run('xauth', '-q', '-f', self.system.home + '/.Xauthority', 'add', ':987', '.', COOKIE)
        os.chown(self.system.home + '/.Xauthority', UID, UID)
        self.start()
        self.assertEqual(self.status(self.vyre(), 'Uid'), '0\t0\t0\t0')
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina', 'SI:localuser:root'])
        self.quit()
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])

    def test_root_keeps_a_display_permission_that_it_had_before_vyre_started(self):
        self.permit_user_without_cookie()
        self.display.xhost('+si:localuser:root')
        self.start()
        self.vyre()
        self.quit()
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina', 'SI:localuser:root'])

    def test_if_the_session_ends_root_loses_its_display_permission_and_vyre_keeps_running(self):
        self.permit_user_without_cookie()
        self.start()
        vyre = self.vyre()
        self.process.terminate()
        self.assertEqual(self.ended(), (128 + signal.SIGTERM, ''))
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])
        self.assertEqual(self.display.do('getwindowpid', self.display.windows('^VYRE - ')[0]), str(vyre))
        os.kill(vyre, signal.SIGKILL)

    def test_vyre_runs_as_root_in_a_wayland_session(self):
        self.show_on(WaylandDisplay(self.system))
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])
        self.start(XDG_SESSION_TYPE='wayland', WAYLAND_DISPLAY='wayland-0')
        vyre = self.vyre()
        self.assertEqual(self.status(vyre, 'Uid'), '0\t0\t0\t0')
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina', 'SI:localuser:root'])
        # This compositor has no keyboard, so the test ends VYRE with a signal.
        os.kill(vyre, signal.SIGTERM)
        # The text on standard error is not compared: VYRE may report that it stopped reading the metadata.
        self.assertEqual(self.ended()[0], 128 + signal.SIGTERM)
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])

    def test_vyre_inherits_neither_signal_settings_nor_limits_from_the_user(self):
        self.record_the_start_of_vyre()
        self.start('--keep-cwd', ADMIN, command=HOSTILE_PKEXEC, password=None, uid=TRUSTED_UID)
        self.assertEqual(self.end(), (0, ''))
        given = self.system.record()
        self.assertEqual(given['status']['Uid'], '0\t0\t0\t0')
        # The stand-in is a Python program, and Python itself ignores these two signals.
        ignored = sum(1 << (number - 1) for number in (signal.SIGPIPE, signal.SIGXFSZ))
        for field, expected in (('SigBlk', 0), ('SigPnd', 0), ('ShdPnd', 0), ('SigIgn', ignored)):
            with self.subTest(field):
                self.assertEqual(int(given['status'][field], 16), expected)
        everything = (resource.RLIM_INFINITY, resource.RLIM_INFINITY)
        for name, limits in given['limits'].items():
            with self.subTest(name):
                first = resource.prlimit(1, getattr(resource, name))
                self.assertEqual(limits[1], first[1])
                if name in ('RLIMIT_FSIZE', 'RLIMIT_CPU', 'RLIMIT_DATA', 'RLIMIT_AS'):
                    self.assertEqual(tuple(limits), everything)
        self.assertEqual(given['limits']['RLIMIT_CORE'][0], 0)
        self.assertEqual(given['limits']['RLIMIT_STACK'][0], 8 << 20)
        self.assertEqual(given['limits']['RLIMIT_NOFILE'][0], 1024)
        self.assertEqual(given['timers'], [0, 0, 0])
        self.assertEqual((given['priority'], given['scheduler'], given['score']), (0, os.SCHED_OTHER, 0))
        self.assertEqual((given['directory'], given['status']['Umask']), ('/root', '0022'))
        self.assertEqual(len(given['descriptors']), 3)

    def test_vyre_starts_even_if_the_user_has_harmful_signal_settings_and_limits(self):
        self.start('--keep-cwd', ADMIN, command=HOSTILE_PKEXEC, password=None, uid=TRUSTED_UID,
                   XAUTHORITY=self.trusted_cookies())
        self.vyre()
        self.quit()

    def test_vyre_does_not_start_if_a_resource_limit_of_the_user_cannot_be_reset(self):
        self.record_the_start_of_vyre()
        for option, name in (('--fsize=65536', 'the size of files'), ('--cpu=100', 'processor time'),
                             ('--as=2000000000', 'the address space'), ('--data=1000000000', 'the size of data'),
                             ('--nofile=50', 'the number of open files')):
            with self.subTest(name):
                done = run('prlimit', option, 'setpriv', '--bounding-set=-sys_resource', ADMIN, check=False,
                           env=dict(self.display.client['env'], PKEXEC_UID=str(UID)))
                self.assertEqual((done.returncode, done.stderr),
                                 (1, 'vyre-admin: the limit on {} cannot be reset\n'.format(name)))
                self.assertIsNone(self.system.record())
        # If no limit needs a reset, vyre-admin starts VYRE even without the right to raise limits.
        run('setpriv', '--bounding-set=-sys_resource', ADMIN, env={'PKEXEC_UID': str(UID)})
        self.assertIsNotNone(self.system.record())

    def test_vyre_starts_if_the_standard_streams_are_closed(self):
        self.record_the_start_of_vyre()
        for closed in ('<&-', '>&-', '2>&-', '<&- >&-', '<&- 2>&-', '>&- 2>&-', '<&- >&- 2>&-'):
            with self.subTest(closed):
                self.start(command=['/bin/sh', '-c', 'exec {} {}'.format(ADMIN, closed)], password=None,
                           uid=TRUSTED_UID, XAUTHORITY=self.trusted_cookies())
                self.assertEqual(self.end()[0], 0)
                self.assertEqual(len(self.system.record()['descriptors']), 3)

    # The arguments

    def trusted_cookies(self):
        cookies = os.path.join(self.system.home, 'cookies')
        self.display.write_cookie(cookies, TRUSTED_UID)
        return cookies

    def test_every_spelling_of_a_known_option_is_passed_on_to_vyre(self):
        self.record_the_start_of_vyre()
        for words, expected in (
                ([], []), (['--'], []), (['-r', '--repo-editor', '--rep'], ['--repo-editor'] * 3),
                (['-grl'], ['--groups', '--repo-editor', '--log']), (['--duplicates', '--du'], ['--duplicates'] * 2),
                (['-m', 'search', '-msearch', '-gmsearch', '--mode', 'search', '--mo=search', '-m', ''],
                 ['--mode=search', '--mode=search', '--groups', '--mode=search', '--mode=search', '--mode=search',
                  '--mode=']),
                (['-s', 'u', '-su', '--state', 'u', '--s=u'], ['--state=u'] * 4),
                (['-e', '-x=', '-e-x=', '--regexp', '-x=', '--reg=-x=', '-gle', '-x='],
                 ['--regexp=-x='] * 4 + ['--groups', '--log', '--regexp=-x=']),
                (['--regexp=-platform', '-e--plugin'], ['--regexp=-platform', '--regexp=--plugin']),
                (['--disablerepo', '*', '--enablerepo=a b\nc', '--e=$(true)'],
                 ['--disablerepo=*', '--enablerepo=a b\nc', '--enablerepo=$(true)']),
                (['-h', '-H', '--help', '--h', '-gh'], ['--help'] * 4 + ['--groups', '--help']),
                (['-style', 'windows', '-style=Fusion'], ['-style=windows', '-style=Fusion'])):
            with self.subTest(words):
                run(ADMIN, *words)
                self.assertEqual(self.system.record()['arguments'], expected)
                if '--help' not in expected:
                    self.start(*words, password=None, uid=TRUSTED_UID, XAUTHORITY=self.trusted_cookies())
                    self.assertEqual(self.end(), (0, ''))
                    self.assertEqual(self.system.record()['arguments'], expected)

    def test_vyre_admin_and_vyre_parse_arguments_in_the_same_way(self):
        """For random arguments, vyre-admin either refuses the arguments, or gives VYRE equivalent arguments that Qt
        does not interpret.
        """
        admin = importlib.machinery.SourceFileLoader('admin', ADMIN).load_module()
        letters = {'-h': '--help', '-H': '--help', '-m': '--mode', '-e': '--regexp', '-s': '--state', '-g': '--groups',
                   '-r': '--repo-editor', '-l': '--log'}
        long_names = ['help', 'mode=', 'regexp=', 'state=', 'duplicates', 'groups', 'repo-editor', 'log',
                      'disablerepo=', 'enablerepo=']
        of_qt = 'platformpluginpath platform plugin stylesheet stylesheet= reverse session style style= icon'.split()
        parts = of_qt + ['-' + name for name in of_qt] + [name.rstrip('=') for name in long_names] + \
            list('hHmesgrldx=- ') + ['--']
        generator = random.Random(20261122)
        taken = 0
        for _ in range(30000):
            words = [''.join(generator.choices(parts, k=generator.randint(1, 3))) if generator.random() < 0.7 else
                     generator.choice(['-', '--']) + generator.choice(parts) for _ in range(generator.randint(0, 4))]
            try:
                found, left = getopt.getopt(words, 'hHm:e:s:grl', long_names)
            except getopt.GetoptError:
                found, left = None, words
            expected = None
            if not left and not any(re.match('--?({})'.format('|'.join(of_qt)), word) for word in words):
                expected = [letters.get(name, name) + ('=' + value if letters.get(name, name)[2:] + '=' in long_names
                                                       else '') for name, value in found]
            try:
                arguments = admin.Arguments(words).words
            except admin.Failure:
                arguments = None
            if expected is not None:
                taken += 1
                self.assertEqual(arguments, expected, words)
            for word in arguments or ():
                self.assertRegex(word, '^(--(help|duplicates|groups|repo-editor|log)|'
                                       '--(mode|regexp|state|disablerepo|enablerepo)=(.|\n)*|-style=\\w[\\w+.-]*)$')
            if left:
                self.assertIsNone(None if '-style' in ' '.join(words) else arguments, words)
        self.assertGreater(taken, 500)

    def test_unknown_options_are_refused_before_the_password_is_requested(self):
        self.permit_user_without_cookie()
        directory = self.system.plug_ins
        for words, refused in (
                (['-platformpluginpath', directory + '/platforms', '-platform', 'marking'], '-platformpluginpath'),
                (['--platformpluginpath', directory + '/platforms', '--platform', 'marking'], '--platformpluginpath'),
                (['-g', '-platform', 'offscreen'], '-platform'), (['-platformtheme', 'marking'], '-platformtheme'),
                (['-plugin', 'evdevkeyboard:/dev/null'], '-plugin'), (['-stylesheet', '/etc/shadow'], '-stylesheet'),
                (['-stylesheet=/etc/shadow'], '-stylesheet=/etc/shadow'),
                (['--stylesheet=/etc/shadow'], '--stylesheet=/etc/shadow'),
                (['-style=/tmp/style'], '-style=/tmp/style'),
                (['-style', '../style'], '../style'), (['-style', '-platform', 'x'], '-platform'),
                (['-style', ''], ''), (['-style='], '-style='), (['--style=windows'], '--style=windows'),
                (['-qwindowicon', '/etc/shadow'], '-qwindowicon'), (['-icon', '/etc/shadow'], '-icon'),
                (['-testability'], '-testability'), (['-session', 'x'], '-session'), (['-display', ':1'], '-display'),
                (['-qmljsdebugger=port:1,file:/x'], '-qmljsdebugger=port:1,file:/x'), (['-reverse'], '-reverse'),
                (['-geometry', '1x1'], '-geometry'),
                # vyre itself would accept each of these words, as the argument of the preceding option.
                (['-e', '-platformpluginpath', '--log'], '-platformpluginpath'),
                (['--regexp', '--platform', '-gl'], '--platform'),
                (['--disablerepo', '-stylesheet=/etc/shadow'], '-stylesheet=/etc/shadow'),
                (['-gm', '-style'], '-style'),
                # Arguments that vyre itself refuses.
                (['-d'], '-d'), (['-gd'], '-gd'), (['--d'], '--d'), (['--log=x'], '--log=x'), (['--foo'], '--foo'),
                (['foo'], 'foo'), (['--', '-g'], '--'), (['-'], '-'), (['-g', ''], '')):
            with self.subTest(words):
                message = 'vyre-admin: "{}" is refused; vyre-admin accepts the options that --help lists, and -style ' \
                          'NAME\n'.format(refused)
                self.start(*words, password=None)
                self.dismiss_message()
                self.assertEqual(self.end(), (1, message))
                # vyre-admin starts itself again as root. A user can also start this second run directly.
                self.start(*words, command=PKEXEC + (ADMIN,), password=None, uid=TRUSTED_UID,
                           XAUTHORITY=self.trusted_cookies())
                self.assertEqual(self.end(), (1, message))
        self.assertEqual(self.system.marks(), [])

    def test_an_option_without_its_argument_is_refused_before_the_password_is_requested(self):
        self.permit_user_without_cookie()
        for word in ('-m', '-ge', '--regexp', '--sta', '-style'):
            with self.subTest(word):
                self.start(word, password=None)
                self.dismiss_message()
                self.assertEqual(self.end(), (1, 'vyre-admin: the argument of {} is missing\n'.format(word)))

    def test_vyre_runs_as_root_without_libraries_from_directories_of_the_user(self):
        directory = self.system.plug_ins
        client = self.display.client['env']

        # First show that the test can fail: each of these settings makes VYRE load a library.
        def load(*words, **environment):
            run('/usr/bin/vyre', *words, '--help', check=False,
                env=dict(client, VYRESHARE='/usr/share/vyre', **environment))
            return self.system.marks()
        platform, generic, style, theme = ('{}/libmarking.so.0'.format(name)
                                           for name in ('platforms', 'generic', 'styles', 'platformthemes'))
        self.assertEqual(load('-platformpluginpath', directory + '/platforms', '-platform', 'marking'), [platform])
        self.assertEqual(load('-platformpluginpath', directory + '/platformthemes', '-platformtheme', 'marking'),
                         [theme])
        by_variables = {'QT_PLUGIN_PATH': directory}
        self.assertEqual(load('-plugin', 'marking', **by_variables), [generic])
        self.assertEqual(load('-style=marking', **by_variables), [style])
        self.assertEqual(load(QT_QPA_GENERIC_PLUGINS='marking', **by_variables), [generic])
        self.assertEqual(load(QT_STYLE_OVERRIDE='marking', **by_variables), [style])
        self.assertEqual(load(QT_QPA_PLATFORM='marking', **by_variables), [platform])
        self.assertEqual(load(QT_QPA_PLATFORMTHEME='marking', **by_variables), [theme])
        self.assertEqual(load(QT_QPA_PLATFORM_PLUGIN_PATH=directory + '/platforms', QT_QPA_PLATFORM='marking'),
                         [platform])
        self.assertEqual(load(LD_PRELOAD=directory + '/generic/libmarking.so'), [generic])

        hurtful = os.path.join(directory, 'hurtful')
        code = 'import os\nif os.geteuid() == 0:\n    open({!r}, "w").close()\n'
        for name in ('sitecustomize.py', 'usercustomize.py', 'struct.py', 'python/YumIO.py'):
            write(os.path.join(hurtful, name), code.format(os.path.join(hurtful, os.path.basename(name)) + '.0'))
        # If pkexec does not start vyre-admin, vyre-admin runs as the user, who may load any library into this process.
        cookies = self.trusted_cookies()
        for command in ((ADMIN, '-style=marking'), PKEXEC + (ADMIN, '-style', 'marking')):
            with self.subTest(command):
                self.start(command=command, password=None, uid=TRUSTED_UID, XAUTHORITY=cookies,
                           QT_PLUGIN_PATH=directory, QT_QPA_PLATFORM='marking', QT_QPA_PLATFORMTHEME='marking',
                           QT_QPA_PLATFORM_PLUGIN_PATH=directory + '/platforms', QT_STYLE_OVERRIDE='marking',
                           QT_QPA_GENERIC_PLUGINS='marking', LD_PRELOAD=directory + '/generic/libmarking.so',
                           LD_LIBRARY_PATH=hurtful, PYTHONPATH=hurtful,
                           PYTHONHOME=hurtful if command[0] != ADMIN else '/usr',
                           PYTHONSTARTUP=hurtful + '/sitecustomize.py',
                           VYRESHARE=hurtful, VYREROOT=hurtful, XDG_CONFIG_HOME=hurtful, XDG_DATA_DIRS=hurtful,
                           GCONV_PATH=hurtful, QT_LOGGING_CONF=hurtful, HOME=hurtful)
                os.kill(self.vyre(), signal.SIGTERM)
                status, errors = self.end()
                self.assertEqual(status, 128 + signal.SIGTERM)
                # The user's style was not found, because root's Qt looks only in the system's directories.
                self.assertIn("invalid style override 'marking'", errors)
                self.assertEqual(self.system.marks(), [])

    # Refusals

    def test_vyre_does_not_start_if_the_password_is_wrong(self):
        self.permit_user_without_cookie()
        self.start(password='weasel')
        self.dismiss_message()
        status, errors = self.ended()
        self.assertEqual(status, 1)
        self.assertIn('Not authorized', errors)
        self.assertTrue(errors.endswith(NOT_LET), errors)
        self.assertEqual(self.display.windows('^VYRE - '), [])
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])

    def test_a_message_is_shown_if_the_session_has_no_authentication_agent(self):
        self.permit_user_without_cookie()
        self.start(password=None)
        self.dismiss_message()
        status, errors = self.ended()
        self.assertEqual(status, 1)
        self.assertTrue(errors.endswith(NOT_LET), errors)

    def test_no_message_is_shown_if_the_user_cancels_the_password_dialog(self):
        # The real pkexec has this exit status if the user presses Cancel in the agent of a desktop. The agent for
        # terminals has no such button.
        stand_in = os.path.join(self.system.scratch, 'dismissing')
        write(stand_in + '/pkexec', '#!/bin/sh\necho "pkexec: dismissed" >&2\nexit 126\n')
        os.chmod(stand_in + '/pkexec', 0o755)
        self.permit_user_without_cookie()
        self.start(password=None, PATH=stand_in + ':/usr/bin')
        self.assertEqual(self.ended(), (126, 'pkexec: dismissed\n'))

    def test_one_message_is_shown_if_both_the_display_cookie_and_xhost_are_missing(self):
        programs = os.path.join(self.system.scratch, 'programs')
        os.mkdir(programs)
        os.symlink('/usr/bin/pkexec', programs + '/pkexec')
        self.permit_user_without_cookie()
        self.start(password=None, PATH=programs)
        self.check_not_started('vyre-admin: root cannot be given access to the display {}: it has no cookie, and '
                               'xhost is missing\n'.format(self.display.name))

    def test_one_message_is_shown_if_the_user_has_no_access_to_the_display(self):
        self.start(password=None)
        self.check_not_started('vyre-admin: root cannot be given access to the display {}: it has no cookie, and '
                               'xhost has failed\n'.format(self.display.name))

    def test_vyre_reports_a_display_that_no_server_provides(self):
        cookies = os.path.join(self.system.home, '.Xauthority')
        run('xauth', '-q', '-f', cookies, 'add', ':987654', '.', COOKIE)
        os.chown(cookies, UID, UID)
        self.start(DISPLAY=':987654')
        self.check_not_started('vyre: the X display :987654 cannot be opened: no server answers there, or it does not '
                               'let this user in\n')

    def test_one_message_is_shown_if_no_display_is_named(self):
        self.start(password=None, unset=['DISPLAY'])
        self.check_not_started('vyre-admin: there is no X display: DISPLAY is not set\n')

    def test_one_message_is_shown_if_pkexec_is_missing(self):
        self.start(password=None, PATH='/nowhere')
        self.check_not_started('vyre-admin: the program pkexec is missing; root can start VYRE with the command vyre\n')

    # Without authentication

    def test_help_is_printed_without_a_password(self):
        self.display.write_cookie(self.system.home + '/.Xauthority', UID)
        self.start('--help', password=None)
        self.assertEqual(self.ended(), (1, ''))
        self.out.seek(0)
        self.assertTrue(self.out.read().startswith('usage: vyre [options...]\n'))

    def test_root_starts_vyre_without_a_password(self):
        done = run(ADMIN, '--state=x', env=dict(self.display.client['env'], VYRESHARE='/usr/share/vyre'), check=False)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, 'vyre: unrecogized argument to -s/--state option: x\n')


if __name__ == '__main__':
    if INSIDE not in sys.argv[1:2]:
        command = ['/usr/bin/python3', '-B', os.path.abspath(__file__), INSIDE] + sys.argv[1:]
        os.execvp('unshare', ['unshare', '--mount', '--propagation', 'private', '--pid', '--fork', '--mount-proc',
                              '--kill-child'] + command)
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2, warnings=False)
