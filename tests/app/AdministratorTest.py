#!/usr/bin/python3
"""vyre-admin on a system with a real polkit: who is asked, and what reaches root.

usage: AdministratorTest.py CMAKE BUILD [options of unittest...]

All runs in name spaces of its own, where this system has an installation of what was built, one more user, its own
message bus and polkit. Nothing of that is there for anybody else.
"""
import json
import os
import pty
import re
import select
import signal
import stat
import subprocess
import sys
import tempfile
import termios
import threading
import time
import unittest

INSIDE = '--inside'
ADMIN = '/usr/bin/vyre-admin'
NAME, UID, PASSWORD = 'mina', 47110, 'otter'
# Of that password.
SHADOW = '$6$vyreadmin$KhNZBRnwTWpblZrZK7gD0UlaROYCuCZD61.j0/74q.RuLofXpKuEzWvHs0SSsuVVdhmy4iF26Ju2Bz07i8e851'
COOKIE = '0123456789abcdef0123456789abcdef'
RULE = 'polkit.addAdminRule(function(action, subject) { return ["unix-user:%s"]; });\n' % NAME
NOT_LET = 'vyre-admin: the system does not let you be its administrator\n'

# It writes down how it was started.
BROWSER = '''#!/usr/bin/python3 -ISB
import json, os, sys
with open({path!r} + '.part', 'w') as stream:
    json.dump([sys.argv[1:], os.getuid(), dict(os.environ)], stream)
os.rename({path!r} + '.part', {path!r})
'''


def wait_for(condition, what, seconds=60):
    end = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > end:
            raise AssertionError('{} did not come within {} s'.format(what, seconds))
        time.sleep(0.03)


def run(*command, **options):
    options.setdefault('check', True)
    return subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                          universal_newlines=True, **options)


def write(path, text, mode='w'):
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, mode) as stream:
        stream.write(text)


def become_user():
    os.setgroups([UID])
    os.setgid(UID)
    os.setuid(UID)


class System:
    """The system with VYRE and the user, for the life of this process and its name spaces."""

    def __init__(self, cmake, build):
        self.scratch = tempfile.mkdtemp(prefix='administrator-test-')
        run('mount', '-t', 'tmpfs', '-o', 'mode=755', 'none', self.scratch)
        stage = self.directory('stage', 0)
        run(cmake, '--install', build, '--prefix', '/usr', env=dict(os.environ, DESTDIR=stage))
        for name in ('usr', 'etc', 'var', 'root'):
            upper, work = (self.directory(name + '-' + part, 0) for part in ('upper', 'work'))
            os.chmod(upper, stat.S_IMODE(os.stat('/' + name).st_mode))
            lower = stage + '/usr:/usr' if name == 'usr' else '/' + name
            run('mount', '-t', 'overlay', '-o', 'lowerdir={},upperdir={},workdir={}'.format(lower, upper, work),
                'none', '/' + name)
        run('mount', '-t', 'tmpfs', '-o', 'mode=755', 'none', '/run')
        self.runtime = '/run/user/%d' % UID
        self.home = self.directory('home', UID)
        for path in ('/run/dbus', self.runtime):
            os.makedirs(path)
        os.chown(self.runtime, UID, UID)
        os.chmod(self.runtime, 0o700)
        write('/etc/passwd', '{0}:x:{1}:{1}::{2}:/bin/sh\n'.format(NAME, UID, self.home), 'a')
        write('/etc/group', '{}:x:{}:\n'.format(NAME, UID), 'a')
        write('/etc/shadow', '{}:{}:19000:0:99999:7:::\n'.format(NAME, SHADOW), 'a')
        write('/etc/polkit-1/rules.d/00-test.rules', RULE)
        os.chmod('/etc/polkit-1/rules.d', 0o755)
        # What VYRE finds here is a system without packages, and a repository without any.
        repository = self.directory('repository', 0)
        run('createrepo_c', repository)
        write('/etc/yum.conf', '[main]\nreposdir={}\n'.format(repository))
        write(repository + '/empty.repo', '[empty]\nname=empty\nbaseurl=file://{}\n'.format(repository))
        self.opened = os.path.join(self.home, 'opened')
        write('/usr/bin/xdg-open', BROWSER.format(path=self.opened))
        os.chmod('/usr/bin/xdg-open', 0o755)

        self.log = open(os.path.join(self.scratch, 'log'), 'w+b')
        self.started = []
        self.start('dbus-daemon', '--system', '--nofork', '--nopidfile')
        wait_for(lambda: os.path.exists('/run/dbus/system_bus_socket'), 'the system bus')
        self.start(next(path for path in ('/usr/lib/polkit-1/polkitd', '/usr/libexec/polkitd')
                        if os.path.exists(path)), '--no-debug')
        wait_for(lambda: 'org.freedesktop.PolicyKit1' in run(
            'dbus-send', '--system', '--print-reply', '--dest=org.freedesktop.DBus', '/',
            'org.freedesktop.DBus.ListNames', check=False).stdout, 'polkit')

    def directory(self, name, owner):
        path = os.path.join(self.scratch, name)
        os.mkdir(path)
        os.chown(path, owner, owner)
        return path

    def start(self, *command, **options):
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=self.log, stderr=self.log, **options)
        self.started.append(process)
        return process

    def stop(self):
        for process in reversed(self.started):
            process.terminate()
            process.wait()
        self.log.close()
        # What is mounted there stays in use until the end of the name space.
        run('umount', '--lazy', self.scratch)
        os.rmdir(self.scratch)


class Display:
    """An X server that lets nobody in without its cookie, which is in the file "cookies"."""

    def __init__(self, system):
        self.directory = tempfile.mkdtemp(dir=system.scratch)
        self.cookies = os.path.join(self.directory, 'cookies')
        run('xauth', '-q', '-f', self.cookies, 'add', ':0', '.', COOKIE)
        reading, writing = os.pipe()
        self.server = system.start('Xvfb', '-displayfd', str(writing), '-screen', '0', '1024x768x24', '-nolisten',
                                   'tcp', '-noreset', '-auth', self.cookies, pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        assert number, 'Xvfb did not start'
        self.name = ':' + number
        self.write_cookie(self.cookies, 0)
        self.client = {'env': dict(os.environ, DISPLAY=self.name, XAUTHORITY=self.cookies)}

    def write_cookie(self, path, owner):
        run('xauth', '-q', '-f', path, 'add', self.name, '.', COOKIE)
        os.chown(path, owner, owner)

    def xhost(self, *arguments):
        return run('xhost', *arguments, **self.client).stdout

    def let_in(self):
        """What xhost lists, sorted."""
        return sorted(line for line in self.xhost().splitlines() if ':' in line)

    def windows(self, name):
        found = run('xdotool', 'search', '--onlyvisible', '--name', name, check=False, **self.client)
        return found.stdout.split()

    def do(self, *arguments):
        return run('xdotool', *arguments, check=False, **self.client).stdout.strip()


class WaylandDisplay(Display):
    """The X server that a Wayland compositor of the user starts for X programs. It has no cookies."""

    def __init__(self, system):
        messages = os.path.join(tempfile.mkdtemp(dir=system.scratch), 'messages')
        with open(messages, 'w') as stream:
            self.server = subprocess.Popen(
                ['weston', '--backend=headless-backend.so', '--xwayland', '--no-config', '--idle-time=0'],
                stdin=subprocess.DEVNULL, stdout=stream, stderr=stream, preexec_fn=become_user,
                env={'PATH': '/usr/bin:/bin', 'HOME': system.home, 'XDG_RUNTIME_DIR': system.runtime})

        def look():
            with open(messages) as stream:
                return re.search('xserver listening on display (:[0-9]+)', stream.read())
        self.name = wait_for(look, 'the X server of the compositor').group(1)
        self.client = {'preexec_fn': become_user,
                       'env': {'PATH': '/usr/bin:/bin', 'HOME': system.home, 'DISPLAY': self.name}}


class Agent(threading.Thread):
    """The authentication agent of a session, with a user who types the password when asked for it."""

    def __init__(self, process, password):
        super().__init__()
        self.password = password
        self.text = ''
        reading, writing = os.pipe()
        self.process, self.terminal = pty.fork()
        if self.process == 0:
            become_user()
            os.set_inheritable(writing, True)
            os.execvp('pkttyagent', ['pkttyagent', '--process', str(process.pid), '--notify-fd', str(writing)])
        os.close(writing)
        os.read(reading, 1)  # its end tells that the agent is registered
        os.close(reading)
        self.ended = False
        self.start()

    def run(self):
        answered = 0
        while not self.ended:
            if select.select([self.terminal], [], [], 0.05)[0]:
                try:
                    self.text += os.read(self.terminal, 4096).decode('utf-8', 'replace')
                except OSError:
                    break
            # What is typed before the terminal is told not to show it is thrown away.
            if self.text[answered:].rstrip().lower().endswith('password:') and \
                    not termios.tcgetattr(self.terminal)[3] & termios.ECHO:
                answered = len(self.text)
                os.write(self.terminal, (self.password + '\n').encode())

    def stop(self):
        self.ended = True
        self.join()
        os.kill(self.process, signal.SIGTERM)
        os.waitpid(self.process, 0)
        os.close(self.terminal)


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

    def start(self, *arguments, password=PASSWORD, unset=(), **environment):
        """Start vyre-admin as the user does from a desktop. The password is None when nobody could be asked."""
        variables = {'DISPLAY': self.display.name, 'HOME': self.system.home, 'USER': NAME, 'LOGNAME': NAME,
                     'LANG': 'C.UTF-8', 'PATH': '/usr/local/bin:/usr/bin:/bin', 'SHELL': '/bin/sh',
                     'XDG_RUNTIME_DIR': self.system.runtime}
        variables.update(environment)
        for name in unset:
            del variables[name]
        self.out, self.err = tempfile.TemporaryFile('w+'), tempfile.TemporaryFile('w+')
        # The process waits, so that the agent can be told of it.
        self.process = subprocess.Popen(['/bin/sh', '-c', 'read go; umask 0; exec "$0" "$@"', ADMIN] + list(arguments),
                                        env=variables, stdin=subprocess.PIPE, stdout=self.out, stderr=self.err, cwd='/',
                                        start_new_session=True, preexec_fn=become_user)
        if password is not None:
            self.agent = Agent(self.process, password)
        self.process.stdin.write(b'go\n')
        self.process.stdin.close()

    def ended(self):
        """The exit status, and what was written to standard error."""
        status = self.process.wait(60)
        self.err.seek(0)
        return status, self.err.read()

    def vyre(self):
        """The process of VYRE, when its main window is on the display."""
        def look():
            if self.process.poll() is not None:
                raise AssertionError('ended with {}'.format(self.ended()))
            return self.display.windows('^VYRE - ')
        window = wait_for(look, 'the main window')[0]
        return int(self.display.do('getwindowpid', window))

    def quit(self):
        """Press the key that ends VYRE until it is of effect."""
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
        """The message that those get who have no terminal."""
        window = wait_for(lambda: self.display.windows('^VYRE$'), 'the message')[0]
        self.display.do('windowkill', window)

    def check_not_started(self, message):
        self.assertEqual(self.ended(), (1, message))
        self.assertEqual(self.display.windows('^VYRE - '), [])

    def let_user_in_without_cookie(self):
        """As the X servers do that some Wayland desktops start."""
        self.display.xhost('+si:localuser:' + NAME)

    # What reaches root

    def test_vyre_runs_as_root_on_the_display_of_the_user_and_takes_nothing_else_over(self):
        cookies = self.system.runtime + '/cookies'
        self.display.write_cookie(cookies, UID)
        hurtful = os.path.join(self.system.home, 'hurtful')
        arguments = ['--regexp=$(touch {0}); `touch {0}` "\'*'.format(hurtful), '--state', 'all; touch ' + hurtful,
                     '--disablerepo=a b\nc']
        # An argument with a blank in it is none of the known states.
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
        # With a cookie nobody else has to be let in.
        self.assertEqual(self.display.let_in(), [])

        # The user's browser is started as the user, and finds the display.
        run('/usr/share/vyre/webbrowser', 'https://vyre.example/', env=environment)
        with open(wait_for(lambda: os.path.exists(self.system.opened) and self.system.opened, 'the browser')) as stream:
            opened = json.load(stream)
        self.assertEqual(opened[:2], [['https://vyre.example/'], UID])
        self.assertEqual({name: opened[2].get(name) for name in ('DISPLAY', 'XAUTHORITY', 'HOME', 'XDG_RUNTIME_DIR')},
                         {'DISPLAY': self.display.name, 'XAUTHORITY': cookies, 'HOME': self.system.home,
                          'XDG_RUNTIME_DIR': self.system.runtime})
        self.quit()

    def test_a_cookie_at_home_is_found(self):
        cookies = os.path.join(self.system.home, '.Xauthority')
        self.display.write_cookie(cookies, UID)
        self.start()
        self.assertEqual(self.environment(self.vyre())['XAUTHORITY'], cookies)
        self.assertEqual(self.display.let_in(), [])
        self.quit()

    def test_without_a_cookie_root_is_let_in_for_as_long_as_vyre_runs(self):
        self.let_user_in_without_cookie()
        # That of another display does not count.
        run('xauth', '-q', '-f', self.system.home + '/.Xauthority', 'add', ':987', '.', COOKIE)
        os.chown(self.system.home + '/.Xauthority', UID, UID)
        self.start()
        self.assertEqual(self.status(self.vyre(), 'Uid'), '0\t0\t0\t0')
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina', 'SI:localuser:root'])
        self.quit()
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])

    def test_root_stays_let_in_where_it_was_before(self):
        self.let_user_in_without_cookie()
        self.display.xhost('+si:localuser:root')
        self.start()
        self.vyre()
        self.quit()
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina', 'SI:localuser:root'])

    def test_an_end_of_the_session_takes_the_permission_back_and_leaves_vyre_alone(self):
        self.let_user_in_without_cookie()
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
        # The compositor has no keyboard here.
        os.kill(vyre, signal.SIGTERM)
        self.assertEqual(self.ended(), (128 + signal.SIGTERM, ''))
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])

    # What is refused

    def test_a_wrong_password_starts_nothing(self):
        self.let_user_in_without_cookie()
        self.start(password='weasel')
        self.dismiss_message()
        status, errors = self.ended()
        self.assertEqual(status, 1)
        self.assertIn('Not authorized', errors)
        self.assertTrue(errors.endswith(NOT_LET), errors)
        self.assertEqual(self.display.windows('^VYRE - '), [])
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])

    def test_a_session_without_an_agent_shows_a_message(self):
        self.let_user_in_without_cookie()
        self.start(password=None)
        self.dismiss_message()
        status, errors = self.ended()
        self.assertEqual(status, 1)
        self.assertTrue(errors.endswith(NOT_LET), errors)

    def test_who_dismisses_the_question_is_not_told_of_it(self):
        # The real one ends so when the agent of a desktop has a button pressed for it; that of terminals has none.
        stand_in = os.path.join(self.system.scratch, 'dismissing')
        write(stand_in + '/pkexec', '#!/bin/sh\necho "pkexec: dismissed" >&2\nexit 126\n')
        os.chmod(stand_in + '/pkexec', 0o755)
        self.let_user_in_without_cookie()
        self.start(password=None, PATH=stand_in + ':/usr/bin')
        self.assertEqual(self.ended(), (126, 'pkexec: dismissed\n'))

    def test_without_a_cookie_and_without_xhost_there_is_one_message(self):
        programs = os.path.join(self.system.scratch, 'programs')
        os.mkdir(programs)
        os.symlink('/usr/bin/pkexec', programs + '/pkexec')
        self.let_user_in_without_cookie()
        self.start(password=None, PATH=programs)
        self.check_not_started('vyre-admin: root cannot be let to the display {}: there is no cookie for it, and no '
                               'program xhost\n'.format(self.display.name))

    def test_a_user_whom_the_display_does_not_let_in_gets_one_message(self):
        self.start(password=None)
        self.check_not_started('vyre-admin: root cannot be let to the display {}: there is no cookie for it, and xhost '
                               'has failed\n'.format(self.display.name))

    def test_a_display_that_is_gone_is_told_by_vyre(self):
        cookies = os.path.join(self.system.home, '.Xauthority')
        run('xauth', '-q', '-f', cookies, 'add', ':987654', '.', COOKIE)
        os.chown(cookies, UID, UID)
        self.start(DISPLAY=':987654')
        self.check_not_started('vyre: the X display :987654 cannot be opened: no server answers there, or it does not '
                               'let this user in\n')

    def test_without_a_display_there_is_one_message(self):
        self.start(password=None, unset=['DISPLAY'])
        self.check_not_started('vyre-admin: there is no X display: DISPLAY is not set\n')

    def test_without_pkexec_there_is_one_message(self):
        self.start(password=None, PATH='/nowhere')
        self.check_not_started('vyre-admin: there is no program pkexec; root can start VYRE by the command vyre\n')

    # Who needs not be asked

    def test_nobody_authenticates_for_help(self):
        self.display.write_cookie(self.system.home + '/.Xauthority', UID)
        self.start('--help', password=None)
        self.assertEqual(self.ended(), (1, ''))
        self.out.seek(0)
        self.assertTrue(self.out.read().startswith('usage: vyre [options...]\n'))

    def test_root_is_not_asked(self):
        done = run(ADMIN, '--state=x', env=dict(self.display.client['env'], VYRESHARE='/usr/share/vyre'), check=False)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(done.stderr, 'vyre: unrecogized argument to -s/--state option: x\n')


if __name__ == '__main__':
    if INSIDE not in sys.argv[1:2]:
        command = ['/usr/bin/python3', '-B', os.path.abspath(__file__), INSIDE] + sys.argv[1:]
        os.execvp('unshare', ['unshare', '--mount', '--propagation', 'private', '--pid', '--fork', '--mount-proc',
                              '--kill-child'] + command)
    unittest.main(argv=sys.argv[:1] + sys.argv[4:], verbosity=2, warnings=False)
