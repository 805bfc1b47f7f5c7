# SPDX-License-Identifier: GPL-2.0-or-later
"""Runs each test in a process of its own, on its own copy of a sandbox.

Each test needs its own process, because dnf and rpm keep state in a process, and the script changes some of this state.
"""

import functools
import multiprocessing
import os
import runpy
import shutil
import signal
import subprocess
import sys
import tempfile
import traceback
import unittest
import xml.etree.ElementTree as ElementTree

SOURCES = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SCRIPT = os.path.join(SOURCES, "share", "python", "YumIO.py")
sys.path[:0] = [os.path.join(SOURCES, "tools", "sandbox"), os.path.join(SOURCES, "tests", "support")]

import filesystems  # noqa: E402
from vyresandbox import Sandbox, server  # noqa: E402
from vyresandbox.sandbox import CREATEREPO  # noqa: E402

from recordingmodule import Recording  # noqa: E402

_SKIPPED = 77  # the exit status of the process of a skipped test

_PATIENCE = 180  # the number of seconds after which the process of a test is ended

workspace = None

# The repositories of each sandbox.
LAYOUT = ("sandbox-disabled", "sandbox-file", "sandbox-http", "sandbox-signed", "sandbox-unreachable",
          "sandbox-updates")


def repositories(yumio):
    """The sorted names of the configured repositories, except the repository of dnf's local plug-in.

    The running system's local plug-in can add this repository, unless the main configuration file disables plug-ins.
    """
    return sorted(id for id in yumio.base.repos if id != "_dnf_local")


def german():
    """The German translations of the script's texts. The keys are the English texts."""
    context, = [each for each in ElementTree.parse(os.path.join(SOURCES, "translations", "vyre_de.ts")).iter("context")
                if each.findtext("name") == "YumIO"]
    return {each.findtext("source"): each.findtext("translation") for each in context.iter("message")}


def setUpWorkspace():
    """Called once, by the process that runs all tests."""
    global workspace
    workspace = tempfile.mkdtemp(prefix="yumio-script-")


def tearDownWorkspace():
    shutil.rmtree(workspace)


def original():
    directory = os.environ.get("VYRE_SANDBOX")
    if not directory:
        directory = os.path.join(workspace, "original")
        if not os.path.isdir(directory):
            command = [os.path.join(SOURCES, "tools", "sandbox", "sandbox"), "make", directory]
            subprocess.run(command, check=True)
    return Sandbox.made(directory)


def start_child(run):
    """Starts a child process that calls run() with the writing end of a pipe. The child's exit status is the result of
    run().

    Returns the number of the child process, and the reading end of the pipe.
    """
    reader, writer = os.pipe()
    sys.stdout.flush()
    sys.stderr.flush()
    child = os.fork()
    if child == 0:
        status = 1
        try:
            os.close(reader)
            signal.alarm(_PATIENCE)
            status = run(writer)
        finally:
            os._exit(status)
    os.close(writer)
    return child, reader


def in_own_process(method):
    """A decorator that runs the test in a child process. The parent process reports the exceptions of the child as
    failures.
    """

    @functools.wraps(method)
    def run(self):
        def in_child(writer):
            report = ""
            skipped = False
            try:
                self.enter()
                try:
                    method(self)
                finally:
                    self.leave()
            except unittest.SkipTest as e:
                skipped = True
                report = str(e)
            except BaseException:
                report = traceback.format_exc()
            # The script has replaced this process's standard streams, so the report goes through the pipe.
            with os.fdopen(writer, "w", errors="backslashreplace") as stream:
                stream.write(report)
            return _SKIPPED if skipped else 1 if report else 0

        child, reader = start_child(in_child)
        with os.fdopen(reader) as stream:
            report = stream.read()
        status = os.waitpid(child, 0)[1]
        if os.WIFEXITED(status) and os.WEXITSTATUS(status) == _SKIPPED:
            self.skipTest(report)
        if report:
            self.fail("in the process of the test:\n" + report)
        if status:
            self.fail("the process of the test ended with status %d" % status)

    return run


class RemoteServer(object):
    """The sandbox's server in a process of its own, because dnf blocks this process's interpreter while it downloads.
    """

    def __init__(self, sandbox):
        self._sandbox = sandbox
        self._here, there = multiprocessing.Pipe()
        self.process = os.fork()
        if self.process == 0:
            self._here.close()
            signal.alarm(_PATIENCE)
            _serve(sandbox, there)
        there.close()
        # The URLs of the repositories contain the port, so restart() must use the same port.
        sandbox._last_port = self._here.recv()

    def _call(self, *command):
        self._here.send(command)
        return self._here.recv()

    def fault(self, path, kind, *arguments):
        """kind: "none"; or the name of a fault function of vyresandbox.server; or "end_after" with a number of bytes,
        after which the server ends.
        """
        self._call("fault", path, kind, arguments)

    def paths(self, status=None):
        return self._call("paths", status)

    def forget(self):
        """Clears the list of received requests."""
        self._call("forget")

    def start(self):
        self._call("start")

    def stop(self):
        self._call("stop")

    def restart(self):
        """Starts the server again after the fault "end_after" has ended the server."""
        os.waitpid(self.process, 0)
        self.__init__(self._sandbox)

    def end(self):
        self._here.close()
        os.waitpid(self.process, 0)


def _end_after(size, handler):
    handler.send_file(alter=lambda content: content[:size])
    os._exit(0)


def _serve(sandbox, pipe):
    sandbox.start()
    pipe.send(sandbox.server.port)
    while True:
        try:
            command, *arguments = pipe.recv()
        except EOFError:
            os._exit(0)
        answer = None
        if command == "fault":
            path, kind, values = arguments
            if kind == "none":
                sandbox.server.faults.pop(path, None)
            elif kind == "end_after":
                sandbox.server.faults[path] = functools.partial(_end_after, *values)
            else:
                sandbox.server.faults[path] = getattr(server, kind)(*values)
        elif command == "paths":
            answer = sandbox.server.paths(*arguments)
        elif command == "forget":
            del sandbox.server.requests[:]
        elif command == "start":
            sandbox.start()
        elif command == "stop":
            sandbox.stop()
        pipe.send(answer)


class ScenarioTest(unittest.TestCase):
    """The base class of the tests.

    sandbox: the copy of the sandbox. recording: the script's calls of yumIOC. script: the script's global names.
    """

    # The path that the script uses for dnf's configuration of the running system. This file is missing, so the results
    # do not depend on the machine.
    running_configuration = "/nonexistent/dnf.conf"

    def setUp(self):
        self.directory = tempfile.mkdtemp(dir=workspace)
        self.addCleanup(shutil.rmtree, self.directory)
        self.sandbox = original().copy(os.path.join(self.directory, "copy"))

    def enter(self):
        self.home = os.path.join(self.directory, "home")
        os.makedirs(self.home)
        os.environ["HOME"] = self.home
        os.environ["VYREROOT"] = self.sandbox.root
        self.configure("retries=1", "timeout=5")
        self.server = RemoteServer(self.sandbox)
        self.leave_plug_ins_out()

    @staticmethod
    def leave_plug_ins_out():
        """Switches off all plug-ins by default, because some of this machine's plug-ins write to the real /var."""
        import dnf.conf

        initialize = dnf.conf.MainConf.__init__

        def without(conf, *arguments, **named):
            initialize(conf, *arguments, **named)
            conf._set_value("plugins", False, dnf.conf.PRIO_DEFAULT)

        dnf.conf.MainConf.__init__ = without

    def assert_host_is_left_alone(self):
        """Checks that no loaded plug-in writes to files outside the managed system."""
        for plugIn in self.yumio.base._plugins.plugins:
            self.assertNotEqual(plugIn.name, "generate_completion_cache")
            if plugIn.name == "local" and plugIn.main["enabled"]:
                self.assertTrue(plugIn.main["repodir"].startswith(self.directory), plugIn.main)

    def leave(self):
        self.server.end()

    def run_without_object(self):
        """Runs the script, but does not make its object. So the script has not read dnf's configuration yet."""
        self.recording = Recording()
        sys.modules["yumIOC"] = self.recording.module
        self.script = runpy.run_path(SCRIPT, run_name="__main__")

    @staticmethod
    def module(name):
        """A module of the script. To replace a function or a setting of the script, a test sets an attribute of the
        module.

        module("program") contains the functions that the program gives to the script.
        """
        return sys.modules["vyre." + name]

    def configure(self, *lines):
        """Adds lines to the end of the main configuration file."""
        with open(os.path.join(self.sandbox.root, "etc/yum.conf"), "a") as stream:
            stream.write("\n".join(lines) + "\n")

    def write(self, path, content):
        """Writes a file of the managed system."""
        path = self.sandbox.root + path
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb" if isinstance(content, bytes) else "w") as stream:
            stream.write(content)
        return path

    def isolate(self):
        """From now on, other processes do not see the mounts of this process. The mounts end with the process."""
        filesystems.isolate()

    def mount_small(self, path, kilobytes):
        """Mounts a file system of this size on a directory of the managed system, and copies the directory's contents
        to it.
        """
        filesystems.mount_small(self.sandbox.root + path, kilobytes)

    def resize(self, path, kilobytes):
        """Changes the size of a file system of mount_small(), so that this number of kilobytes is free."""
        filesystems.resize(self.sandbox.root + path, kilobytes)

    def index(self, name, *options):
        """Makes the metadata of a repository again, because its packages have changed."""
        subprocess.run(list(CREATEREPO) + list(options) + [self.sandbox.repository(name)], check=True)

    def repository_file(self, name):
        return os.path.join(self.sandbox.root, "etc/yum.repos.d", name + ".repo")

    def change_repository(self, name, old, new):
        with open(self.repository_file(name)) as stream:
            content = stream.read()
        self.assertIn(old, content)
        with open(self.repository_file(name), "w") as stream:
            stream.write(content.replace(old, new))

    def load(self, script=SCRIPT, **given):
        """Runs the script with these additional globals and makes its object, as the program does when it starts."""
        self.recording = Recording()
        sys.modules["yumIOC"] = self.recording.module
        # In the program, the script runs in __main__ too.
        self.script = runpy.run_path(script, init_globals=given, run_name="__main__")
        import dnf

        self.dnf = dnf
        if "vyre.configuration" in sys.modules:
            self.module("configuration").RUNNING_CONFIGURATION = self.running_configuration
        self.yumio = self.script["YumIO"]()
        return self.yumio

    def collect(self):
        """Collects the packages with the same calls as the program."""
        yumio = self.yumio
        yumio.setupRepos()
        self.assert_host_is_left_alone()
        self.updates = list(yumio.collectUpdates())
        everything = yumio.collectAll()
        self.installed = list(everything.installed)
        self.available = list(everything.available)
        self.groups = {group.id: group for group in yumio.collectGroups()}
        yumio.collectDone()

    def started(self):
        """Starts the script, takes the lock and collects the packages. No call may fail."""
        self.load()
        self.yumio.lock()
        self.collect()
        self.assert_no_faults()
        self.recording.clear()

    def again(self):
        """Collects the packages again, as the program does after a transaction."""
        self.yumio.reset()
        self.collect()
        self.recording.clear()

    def assert_no_faults(self):
        self.assertEqual(self.recording.faults, [])

    def package(self, packages, name, arch=None, version=None):
        found = [package for package in packages if package.name == name and arch in (None, package.arch)
                 and version in (None, package.version)]
        self.assertEqual(len(found), 1, "%s: %s" % (name, found))
        return found[0]

    def apply(self, installs=(), updates=(), removes=(), group_installs=(), group_updates=(), group_removes=(),
              answers=(1,)):
        """Applies actions to packages with these names. Each update is paired with all installed versions of the same
        package and architecture.
        """
        self.recording.answers = list(answers)
        pairs = []
        for name in updates:
            new = self.package(self.updates, name, "x86_64" if name == "libcairn" else None)
            pairs += [[new, old] for old in self.installed if old.name == name and old.arch == new.arch]
        result = self.yumio.apply(
            [self.package(self.available, name) for name in installs], pairs,
            [old for name in removes for old in self.installed if old.name == name],
            [self.groups[name] for name in group_installs], [self.groups[name] for name in group_updates],
            [self.groups[name] for name in group_removes])
        self.assert_no_faults()
        return result

    def assert_refused(self, text, **actions):
        """Checks that the actions are refused for this reason: they must raise one of dnf's exceptions, and change
        nothing.
        """
        before = self.sandbox.installed()
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.apply(**actions)
        self.assertRegex(str(caught.exception), text)
        self.assertEqual(self.sandbox.installed(), before)
        self.assert_no_faults()

    def changes(self, action, *arguments, **actions):
        """Calls action(). Returns the packages that are installed and removed by this call, as two sets of
        name-version-release.arch.
        """
        before = self.sandbox.installed()
        action(*arguments, **actions)
        after = self.sandbox.installed()
        return after - before, before - after
