# SPDX-License-Identifier: GPL-2.0-or-later
"""The parts of AdministratorTest: a system with a real polkit, its displays, and an agent that answers for the user."""
import json
import os
import pty
import re
import select
import shutil
import signal
import socket
import stat
import subprocess
import tempfile
import termios
import threading
import time

ADMIN = '/usr/bin/vyre-admin'
NAME, UID, PASSWORD = 'mina', 47110, 'otter'
# The hash of the user's password.
SHADOW = '$6$vyreadmin$KhNZBRnwTWpblZrZK7gD0UlaROYCuCZD61.j0/74q.RuLofXpKuEzWvHs0SSsuVVdhmy4iF26Ju2Bz07i8e851'
COOKIE = '0123456789abcdef0123456789abcdef'
TRUSTED, TRUSTED_UID = 'tove', 47111  # this user may do everything without authentication
RULE = '''
polkit.addAdminRule(function(action, subject) {{ return ["unix-user:{}"]; }});
polkit.addRule(function(action, subject) {{ if (subject.user == "{}") {{ return polkit.Result.YES; }} }});
'''.format(NAME, TRUSTED)
HELPER = '/usr/lib/polkit-1/polkit-agent-helper-1'
NOT_LET = 'vyre-admin: the system does not permit you to become administrator\n'

# A browser that records its arguments, its user and its environment.
BROWSER = '''#!/usr/bin/python3 -ISB
import json, os, sys
with open({path!r} + '.part', 'w') as stream:
    json.dump([sys.argv[1:], os.getuid(), dict(os.environ)], stream)
os.rename({path!r} + '.part', {path!r})
'''

# A stand-in for VYRE that records its start.
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

# pkexec refuses to run if its parent is process 1, so a shell is its parent here.
PKEXEC = ('/bin/sh', '-c', '"$0" "$@"; exit $?', '/usr/bin/pkexec')

# The kind of limits that root can reset. In some containers, root may not raise hard limits.
with open('/proc/self/status') as status_file:
    LIMITS = 'hard' if int(re.search('^CapEff:\t(.*)', status_file.read(), re.MULTILINE).group(1), 16) >> 24 & 1 else \
        'soft'

# A script that sets every inheritable setting of a process to a harmful value, and then runs a program. An attacker
# could do so to make a program fail in the middle of its work.
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
    """A system with VYRE and two users, in the name spaces of this process. It exists until the process ends."""

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
        # A killed X server leaves root's socket behind, which the user's compositor could not replace.
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
        # The repositories and the package database are empty, so VYRE finds no packages.
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
        """Start the process that checks the password, once for each connection. In some versions of polkit, systemd has
        to start this process, but this system has no systemd.
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
        """The record that VYRE's stand-in has written since the last call; None if VYRE was not started."""
        try:
            with open(self.recorded) as stream:
                return json.load(stream)
        except FileNotFoundError:
            return None
        finally:
            if os.path.exists(self.recorded):
                os.remove(self.recorded)

    def marks(self):
        """The test plug-ins that a process of root has loaded since the last call. Each of these plug-ins records its
        loading.
        """
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
        # The mounts are in use until the name space ends, so the unmounting is lazy.
        run('umount', '--lazy', self.scratch)
        os.rmdir(self.scratch)


class Display:
    """An X server that requires a cookie, which is in the file "cookies"."""

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
        """The permissions that xhost lists, sorted by text."""
        return sorted(line for line in self.xhost().splitlines() if ':' in line)

    def windows(self, name):
        found = run('xdotool', 'search', '--onlyvisible', '--name', name, check=False, **self.client)
        return found.stdout.split()

    def do(self, *arguments):
        return run('xdotool', *arguments, check=False, **self.client).stdout.strip()


class WaylandDisplay(Display):
    """The X server that a user's Wayland compositor starts for X programs. This server has no cookies."""

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
    """The authentication agent of a session, together with a user who types the password when the agent asks."""

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
        os.read(reading, 1)  # pkttyagent closes the descriptor when it is registered
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
            # A terminal that still shows typed text would discard the password. So wait until the terminal hides typed
            # text.
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
