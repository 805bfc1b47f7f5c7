# SPDX-License-Identifier: GPL-2.0-or-later
"""A context manager that runs an X server with a window manager and, on request, an accessibility bus.

The server chooses a free display number, so any number of servers can run at the same time.
"""
import os
import socket
import subprocess
import tempfile
import time


# A user in another name space cannot authenticate, so the bus also accepts anonymous clients.
BUS_OF_ALL = '''<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>{}</listen>
  <auth>EXTERNAL</auth>
  <auth>ANONYMOUS</auth>
  <allow_anonymous/>
  <servicedir>/usr/share/dbus-1/accessibility-services</servicedir>
  <policy context="default">
    <allow user="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
'''


class StartError(Exception):
    """A program that the display needs did not start."""


class VirtualDisplay:
    """The display of one `with` block. "with VirtualDisplay() as environment" returns the environment for programs.

    any_user: if true, the accessibility bus accepts programs of all users.
    """

    def __init__(self, accessible=False, size='1280x900', any_user=False):
        self.accessible = accessible
        self.any_user = any_user
        self.size = size
        self.started = []

    def __enter__(self):
        self.scratch = tempfile.TemporaryDirectory(prefix='virtual-display.')
        self.log = open(os.path.join(self.scratch.name, 'log'), 'w+b')
        self.environment = dict(os.environ)
        self.environment.pop('WAYLAND_DISPLAY', None)
        runtime = os.path.join(self.scratch.name, 'runtime')
        os.mkdir(runtime, 0o700)
        self.environment.setdefault('XDG_RUNTIME_DIR', runtime)
        try:
            self._start_server()
            self._start(['openbox', '--sm-disable'])
            self._wait(['xprop', '-root', '_NET_CLIENT_LIST'], b'window id', 'the window manager')
            if self.accessible:
                self._start_accessibility()
        except BaseException:
            self.__exit__()
            raise
        return self.environment

    def __exit__(self, *_):
        for process in reversed(self.started):
            process.terminate()
            try:
                process.wait(10)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        # A server that ends by itself removes its socket.
        if self.started and self.started[0].returncode < 0:
            self._clean_up_after_server()
        self.log.close()
        self.scratch.cleanup()

    def _start(self, command, **arguments):
        arguments.setdefault('stdout', self.log)
        arguments.setdefault('env', self.environment)
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stderr=self.log, **arguments)
        self.started.append(process)
        return process

    def _start_server(self):
        reading, writing = os.pipe()
        self._start(['Xvfb', '-displayfd', str(writing), '-screen', '0', self.size + 'x24', '-nolisten', 'tcp',
                     '-noreset'], pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            self.log.seek(0)
            raise StartError('Xvfb did not start:\n' + self.log.read().decode(errors='replace'))
        self.environment['DISPLAY'] = ':' + number
        # Some tests kill the server, and need its process number.
        self.environment['X_SERVER_PID'] = str(self.started[0].pid)

    def _clean_up_after_server(self):
        """Remove the socket of a killed server, unless another server already uses the same display number."""
        path = '/tmp/.X11-unix/X' + self.environment.get('DISPLAY', '')[1:]
        with socket.socket(socket.AF_UNIX) as client:
            try:
                client.connect(path)
            except ConnectionRefusedError:
                os.remove(path)
            except OSError:
                pass

    def _start_bus(self, configuration):
        bus = self._start(['dbus-daemon', configuration, '--nofork', '--print-address=1'], stdout=subprocess.PIPE)
        address = bus.stdout.readline().decode().strip()
        if not address:
            raise StartError('the message bus did not start')
        self.environment['DBUS_SESSION_BUS_ADDRESS'] = address

    def _start_accessibility(self):
        self.environment['QT_LINUX_ACCESSIBILITY_ALWAYS_ON'] = '1'
        if self.any_user:
            # The usual launcher starts an accessibility bus that accepts only programs of the same user and of root.
            # Therefore the message bus serves as the accessibility bus too.
            os.chmod(self.scratch.name, 0o711)
            address = 'unix:path=' + os.path.join(self.scratch.name, 'bus')
            # Programs that the message bus starts need this variable too.
            self.environment['AT_SPI_BUS_ADDRESS'] = address
            path = os.path.join(self.scratch.name, 'bus.conf')
            with open(path, 'w') as stream:
                stream.write(BUS_OF_ALL.format(address))
            self._start_bus('--config-file=' + path)
            # A program that finds no launcher reads the AT_SPI_BUS property of the root window.
            self._set_bus_property(address)
            return
        self._start_bus('--session')
        # When a launcher with a display ends, it deletes the AT_SPI_BUS property of the root window. A test may have
        # killed the server, and by then another server may already use the same display number.
        environment = {name: value for name, value in self.environment.items() if name != 'DISPLAY'}
        for launcher in ('/usr/libexec/at-spi-bus-launcher', '/usr/lib/at-spi2-core/at-spi-bus-launcher'):
            if os.path.exists(launcher):
                self._start([launcher, '--launch-immediately'], env=environment)
                break
        else:
            raise StartError('at-spi-bus-launcher is missing')
        # A call to this name before its owner exists would make the message bus start a second launcher, which has a
        # display. The end of that one cannot be waited for.
        self._wait(['dbus-send', '--session', '--print-reply', '--dest=org.freedesktop.DBus', '/org/freedesktop/DBus',
                    'org.freedesktop.DBus.NameHasOwner', 'string:org.a11y.Bus'], b'boolean true',
                   'the launcher of the accessibility bus')
        # Programs read the IsEnabled setting only once, when they start.
        self._wait(['dbus-send', '--session', '--print-reply', '--dest=org.a11y.Bus', '/org/a11y/bus',
                    'org.freedesktop.DBus.Properties.Set', 'string:org.a11y.Status', 'string:IsEnabled',
                    'variant:boolean:true'], b'method return', 'the accessibility bus')
        # Qt uses the bus only if the root window has the AT_SPI_BUS property. The launcher has no display, so it cannot
        # set this property.
        answer = self._wait(['dbus-send', '--session', '--print-reply=literal', '--dest=org.a11y.Bus', '/org/a11y/bus',
                             'org.a11y.Bus.GetAddress'], b'unix:', 'the address of the accessibility bus')
        self._set_bus_property(answer.decode().strip())

    def _set_bus_property(self, address):
        subprocess.run(['xprop', '-root', '-f', 'AT_SPI_BUS', '8s', '-set', 'AT_SPI_BUS', address],
                       env=self.environment, check=True)

    def _wait(self, command, expected, what):
        """Repeat the command until its output contains the expected text; return the output."""
        for _ in range(200):
            answer = subprocess.run(command, env=self.environment, stdout=subprocess.PIPE,
                                    stderr=subprocess.DEVNULL)
            if expected in answer.stdout:
                return answer.stdout
            time.sleep(0.05)
        raise StartError(what + ' did not start')
