#!/usr/bin/python3
"""vyre-admin on a system with a real polkit: who is asked, and what reaches root.

usage: AdministratorTest.py CMAKE BUILD [options of unittest...]

All runs in name spaces of its own, where this system has an installation of what was built, two more users, its own
message bus and polkit. Nothing of that is there for anybody else.
"""
import getopt
import importlib.machinery
import json
import os
import pty
import random
import re
import resource
import select
import shutil
import signal
import socket
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
TRUSTED, TRUSTED_UID = 'tove', 47111  # may do everything without a question
RULE = '''
polkit.addAdminRule(function(action, subject) {{ return ["unix-user:{}"]; }});
polkit.addRule(function(action, subject) {{ if (subject.user == "{}") {{ return polkit.Result.YES; }} }});
'''.format(NAME, TRUSTED)
HELPER = '/usr/lib/polkit-1/polkit-agent-helper-1'
NOT_LET = 'vyre-admin: the system does not let you be its administrator\n'

# It writes down how it was started.
BROWSER = '''#!/usr/bin/python3 -ISB
import json, os, sys
with open({path!r} + '.part', 'w') as stream:
    json.dump([sys.argv[1:], os.getuid(), dict(os.environ)], stream)
os.rename({path!r} + '.part', {path!r})
'''

# It stands in for VYRE and writes down what it was given.
RECORDER = '''#!/usr/bin/python3 -ISB
import json, os, resource, signal, sys
with open('/proc/self/status') as stream:
    status = dict(line.rstrip('\\n').split(':\\t', 1) for line in stream if ':\\t' in line)
with open('/proc/self/oom_score_adj') as stream:
    score = int(stream.read())
with open({path!r}, 'w') as stream:
    json.dump({{'arguments': sys.argv[1:], 'status': status, 'directory': os.getcwd(), 'score': score,
               'limits': {{name: resource.getrlimit(getattr(resource, name))
                          for name in dir(resource) if name.startswith('RLIMIT_')}},
               'timers': [signal.getitimer(number)[0] for number in range(3)],
               'priority': os.getpriority(os.PRIO_PROCESS, 0), 'scheduler': os.sched_getscheduler(0),
               'descriptors': [os.readlink('/proc/self/fd/%d' % fd) for fd in range(10)
                               if os.path.lexists('/proc/self/fd/%d' % fd)][:-1]}}, stream)
'''

# It serves nobody whose parent is the first process.
PKEXEC = ('/bin/sh', '-c', '"$0" "$@"; exit $?', '/usr/bin/pkexec')

# Which limits root can set back: those of a container's root are few.
with open('/proc/self/status') as status_file:
    LIMITS = 'hard' if int(re.search('^CapEff:\t(.*)', status_file.read(), re.MULTILINE).group(1), 16) >> 24 & 1 else \
        'soft'

# It runs a program as somebody would who wants to have it fail when it is too late: everything is handed on by which a
# process can make the next one different.
HOSTILE = '''
import os, resource, signal, sys
for name, limit in (('FSIZE', 1 << 16), ('CPU', 300), ('DATA', 1 << 30), ('AS', 2 << 30), ('STACK', 1 << 20),
                    ('NOFILE', 60), ('NPROC', 300), ('MEMLOCK', 0), ('SIGPENDING', 10), ('MSGQUEUE', 0)):
    number = getattr(resource, 'RLIMIT_' + name)
    resource.setrlimit(number, (limit, limit if sys.argv[1] == 'hard' else resource.getrlimit(number)[1]))
resource.setrlimit(resource.RLIMIT_CORE, resource.getrlimit(resource.RLIMIT_CORE)[1:] * 2)
os.umask(0o777)
os.sched_setscheduler(0, os.SCHED_BATCH, os.sched_param(0))
os.nice(15)
with open('/proc/self/oom_score_adj', 'w') as stream:
    stream.write('900')
os.set_inheritable(os.open('/dev/null', os.O_RDWR), True)
for timer in range(3):
    signal.setitimer(timer, 100000)
for number in range(1, signal.NSIG):
    try:
        signal.signal(number, signal.SIG_IGN if number % 2 else signal.SIG_DFL)
    except (OSError, ValueError):
        pass
signal.signal(signal.SIGCHLD, signal.SIG_IGN)
signal.pthread_sigmask(signal.SIG_SETMASK, signal.valid_signals())
os.kill(os.getpid(), signal.SIGUSR2)
os.kill(os.getpid(), signal.SIGTERM)
os.execv(sys.argv[2], sys.argv[2:])
'''

HOSTILE_PKEXEC = PKEXEC[:3] + ('/usr/bin/python3', '-c', HOSTILE, LIMITS) + PKEXEC[3:]


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


def become_user(uid=UID):
    os.setgroups([uid])
    os.setgid(uid)
    os.setuid(uid)


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
        # A server of root's that was killed leaves its socket behind; the user's compositor cannot replace that.
        os.makedirs('/tmp/.X11-unix', exist_ok=True)
        run('mount', '-t', 'tmpfs', '-o', 'mode=1777', 'none', '/tmp/.X11-unix')
        self.runtime = '/run/user/%d' % UID
        self.home = self.directory('home', UID)
        for path in ('/run/dbus', self.runtime):
            os.makedirs(path)
        os.chown(self.runtime, UID, UID)
        os.chmod(self.runtime, 0o700)
        for name, uid in ((NAME, UID), (TRUSTED, TRUSTED_UID)):
            write('/etc/passwd', '{0}:x:{1}:{1}::{2}:/bin/sh\n'.format(name, uid, self.home), 'a')
            write('/etc/group', '{}:x:{}:\n'.format(name, uid), 'a')
            write('/etc/shadow', '{}:{}:19000:0:99999:7:::\n'.format(name, SHADOW), 'a')
        self.plug_ins = os.path.join(self.scratch, 'plug-ins')
        shutil.copytree(os.path.join(build, 'tests/app/marking'), self.plug_ins)
        write('/etc/polkit-1/rules.d/00-test.rules', RULE)
        os.chmod('/etc/polkit-1/rules.d', 0o755)
        self.recorded = os.path.join(self.directory('record', 0), 'record')
        # What VYRE finds here is a system without packages, and a repository without any.
        repository = self.directory('repository', 0)
        run('createrepo_c', repository)
        write('/etc/yum.conf', '[main]\nplugins=0\nreposdir={}\n'.format(repository))
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
        if not os.stat(HELPER).st_mode & stat.S_ISUID:
            threading.Thread(target=self.serve_helper, args=[socket.socket(socket.AF_UNIX)], daemon=True).start()

    def serve_helper(self, server):
        """What checks the password in newer versions of polkit is not started by the agent, with root's rights, but by
        systemd, for each connection. There is no systemd here.
        """
        os.makedirs('/run/polkit', exist_ok=True)
        server.bind('/run/polkit/agent-helper.socket')
        os.chmod('/run/polkit/agent-helper.socket', 0o666)
        server.listen()
        while True:
            connection = server.accept()[0]
            with connection:
                subprocess.call([HELPER, '--socket-activated'], stdin=connection, stdout=connection, stderr=self.log)

    def record(self):
        """What VYRE's stand-in was given last; None: it was not started."""
        try:
            with open(self.recorded) as stream:
                return json.load(stream)
        except FileNotFoundError:
            return None
        finally:
            if os.path.exists(self.recorded):
                os.remove(self.recorded)

    def marks(self):
        """The plug-ins that root has loaded since this was called last."""
        found = []
        for path, _, files in os.walk(self.plug_ins):
            for name in sorted(files):
                if name.endswith('.0'):
                    found.append(os.path.relpath(os.path.join(path, name), self.plug_ins))
                    os.remove(os.path.join(path, name))
        return sorted(found)

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

        def text():
            with open(messages) as stream:
                return stream.read()
        try:
            self.name = wait_for(lambda: re.search('xserver listening on display (:[0-9]+)', text()),
                                 'the X server of the compositor').group(1)
        except AssertionError as fault:
            raise AssertionError('{}\n{}'.format(fault, text()))
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

    def start(self, *arguments, password=PASSWORD, unset=(), command=(ADMIN,), uid=UID, **environment):
        """Start vyre-admin as the user does from a desktop. The password is None when nobody could be asked."""
        variables = {'DISPLAY': self.display.name, 'HOME': self.system.home, 'USER': NAME, 'LOGNAME': NAME,
                     'LANG': 'C.UTF-8', 'PATH': '/usr/local/bin:/usr/bin:/bin', 'SHELL': '/bin/sh',
                     'XDG_RUNTIME_DIR': self.system.runtime}
        variables.update(environment)
        for name in unset:
            del variables[name]
        self.out, self.err = tempfile.TemporaryFile('w+'), tempfile.TemporaryFile('w+')
        # The process waits, so that the agent can be told of it.
        self.process = subprocess.Popen(
            ['/bin/sh', '-c', 'read go; umask 0; exec "$0" "$@"'] + list(command) + list(arguments), env=variables,
            stdin=subprocess.PIPE, stdout=self.out, stderr=self.err, cwd='/', start_new_session=True,
            preexec_fn=lambda: become_user(uid))
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

    def end(self):
        """The same, when another process is to be started."""
        try:
            return self.ended()
        finally:
            if self.agent is not None:
                self.agent.stop()
                self.agent = None
            for stream in (self.out, self.err):
                stream.close()
            self.process = None

    def record_what_vyre_is_given(self):
        """Put a stand-in in the place of VYRE for this test."""
        os.rename('/usr/bin/vyre', '/usr/bin/vyre.real')
        self.addCleanup(os.rename, '/usr/bin/vyre.real', '/usr/bin/vyre')
        write('/usr/bin/vyre', RECORDER.format(path=self.system.recorded))
        os.chmod('/usr/bin/vyre', 0o755)

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
        # While it reads the metadata, it says that this was cut off.
        self.assertEqual(self.ended()[0], 128 + signal.SIGTERM)
        self.assertEqual(self.display.let_in(), ['SI:localuser:mina'])

    def test_what_a_process_hands_on_is_set_back_for_root(self):
        self.record_what_vyre_is_given()
        self.start('--keep-cwd', ADMIN, command=HOSTILE_PKEXEC, password=None, uid=TRUSTED_UID)
        self.assertEqual(self.end(), (0, ''))
        given = self.system.record()
        self.assertEqual(given['status']['Uid'], '0\t0\t0\t0')
        # The interpreter that runs the stand-in ignores two of them itself.
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

    def test_vyre_comes_up_whatever_a_process_hands_on(self):
        self.start('--keep-cwd', ADMIN, command=HOSTILE_PKEXEC, password=None, uid=TRUSTED_UID,
                   XAUTHORITY=self.trusted_cookies())
        self.vyre()
        self.quit()

    def test_a_limit_that_cannot_be_reset_is_refused(self):
        self.record_what_vyre_is_given()
        for option, name in (('--fsize=65536', 'the size of files'), ('--cpu=100', 'processor time'),
                             ('--as=2000000000', 'the address space'), ('--data=1000000000', 'the size of data'),
                             ('--nofile=50', 'the number of open files')):
            with self.subTest(name):
                done = run('prlimit', option, 'setpriv', '--bounding-set=-sys_resource', ADMIN, check=False,
                           env=dict(self.display.client['env'], PKEXEC_UID=str(UID)))
                self.assertEqual((done.returncode, done.stderr),
                                 (1, 'vyre-admin: the limit on {} cannot be reset\n'.format(name)))
                self.assertIsNone(self.system.record())
        # Where there is nothing to set back, nothing is refused.
        run('setpriv', '--bounding-set=-sys_resource', ADMIN, env={'PKEXEC_UID': str(UID)})
        self.assertIsNotNone(self.system.record())

    def test_closed_standard_streams_do_not_matter(self):
        self.record_what_vyre_is_given()
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

    def test_options_that_help_lists_are_taken_in_all_their_spellings(self):
        self.record_what_vyre_is_given()
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

    def test_arguments_are_read_as_vyre_reads_them(self):
        """Words by chance are refused, or what VYRE is given means the same and is nothing to Qt."""
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

    def test_everything_else_is_refused_before_anybody_is_asked(self):
        self.let_user_in_without_cookie()
        directory = self.system.plug_ins
        for words, told in (
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
                # Where vyre would see the argument of one of its own.
                (['-e', '-platformpluginpath', '--log'], '-platformpluginpath'),
                (['--regexp', '--platform', '-gl'], '--platform'),
                (['--disablerepo', '-stylesheet=/etc/shadow'], '-stylesheet=/etc/shadow'),
                (['-gm', '-style'], '-style'),
                # What vyre itself does not take.
                (['-d'], '-d'), (['-gd'], '-gd'), (['--d'], '--d'), (['--log=x'], '--log=x'), (['--foo'], '--foo'),
                (['foo'], 'foo'), (['--', '-g'], '--'), (['-'], '-'), (['-g', ''], '')):
            with self.subTest(words):
                message = 'vyre-admin: "{}" is refused; vyre-admin takes the options that --help lists, and -style ' \
                          'NAME\n'.format(told)
                self.start(*words, password=None)
                self.dismiss_message()
                self.assertEqual(self.end(), (1, message))
                # Anyone can leave the first run out.
                self.start(*words, command=PKEXEC + (ADMIN,), password=None, uid=TRUSTED_UID,
                           XAUTHORITY=self.trusted_cookies())
                self.assertEqual(self.end(), (1, message))
        self.assertEqual(self.system.marks(), [])

    def test_an_argument_that_is_missing_is_reported_before_anybody_is_asked(self):
        self.let_user_in_without_cookie()
        for word in ('-m', '-ge', '--regexp', '--sta', '-style'):
            with self.subTest(word):
                self.start(word, password=None)
                self.dismiss_message()
                self.assertEqual(self.end(), (1, 'vyre-admin: the argument of {} is missing\n'.format(word)))

    def test_no_library_of_the_user_is_loaded_as_root(self):
        directory = self.system.plug_ins
        client = self.display.client['env']

        # They are ones that VYRE would load.
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
        # The first run, too, is the user's own here, who may load what he wants there.
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
                # Nothing of that name is among the styles of the system.
                self.assertIn("invalid style override 'marking'", errors)
                self.assertEqual(self.system.marks(), [])

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
        self.check_not_started('vyre-admin: root cannot be given access to the display {}: it has no cookie, and '
                               'xhost is missing\n'.format(self.display.name))

    def test_a_user_whom_the_display_does_not_let_in_gets_one_message(self):
        self.start(password=None)
        self.check_not_started('vyre-admin: root cannot be given access to the display {}: it has no cookie, and '
                               'xhost has failed\n'.format(self.display.name))

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
        self.check_not_started('vyre-admin: the program pkexec is missing; root can start VYRE with the command vyre\n')

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
