# SPDX-License-Identifier: GPL-2.0-or-later
"""The base class for the tests of the sandbox. The tests change only copies of a sandbox. The variable VYRE_SANDBOX
names this sandbox; without this variable, each module of tests makes one.
"""

import collections
import logging
import os
import re
import shutil
import subprocess
import tempfile
import unittest

import rpm

from vyresandbox import Sandbox
from vyresandbox.dnfbase import configured_base, use_sandbox_database

EXECUTABLE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "sandbox")

Outcome = collections.namedtuple("Outcome", "status output errors")

workspace = None
original = None


def setUpModule():
    global workspace, original
    logging.getLogger("dnf").addHandler(logging.NullHandler())
    use_sandbox_database()
    workspace = tempfile.mkdtemp(prefix="sandbox-test-")
    made = os.environ.get("VYRE_SANDBOX")
    if not made:
        made = os.path.join(workspace, "original")
        subprocess.run([EXECUTABLE, "make", made], check=True)
    original = Sandbox.made(made)


def tearDownModule():
    shutil.rmtree(workspace)


def copy_original():
    return original.copy(os.path.join(tempfile.mkdtemp(dir=workspace), "copy"))


class OwnProcess(object):
    """Runs the server of a sandbox in a separate process. If the server were a thread of the test's process, dnf would
    block the server, because dnf holds the interpreter lock while it downloads.
    """

    def __init__(self, sandbox):
        self.process = subprocess.Popen(
            [EXECUTABLE, "run", sandbox.directory, "--", "sh", "-c", "echo started; read line"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.process.stdout.readline()

    def stop(self):
        self.process.communicate()


class SandboxTest(unittest.TestCase):
    @property
    def sandbox(self):
        return original

    def copied(self):
        """A copy of the sandbox for this test."""
        sandbox = copy_original()
        self.addCleanup(sandbox.remove)
        return sandbox

    def served(self):
        """A copy with a running server."""
        sandbox = self.copied()
        self.addCleanup(OwnProcess(sandbox).stop)
        return sandbox

    def base(self, sandbox, groups=False):
        """Returns a dnf base with all packages. The base is valid until the test ends."""
        context = configured_base(sandbox.root)
        base = context.__enter__()
        self.addCleanup(context.__exit__, None, None, None)
        base.fill_sack()
        if groups:
            base.read_comps()
        return base

    def transaction(self, base):
        """The steps of the resolved transaction, as pairs of action and package."""
        return {(item.action_name, str(item.pkg)) for item in base.transaction}

    def apply(self, base):
        base.download_packages(list(base.transaction.install_set))
        base.do_transaction()

    def rpm(self, sandbox, *arguments):
        command = ["rpm", "--root", sandbox.root, "--define", "_dbpath /var/lib/rpm"] + list(arguments)
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        # On a system with another package manager, rpm first prints advice. Some versions of rpm warn that scriptlets
        # of another root see the real /tmp.
        errors = re.sub(r"(?m)^(rpm: .*|warning: private mounts in chroot not implemented)\n", "", done.stderr.decode())
        return Outcome(done.returncode, done.stdout.decode(), errors)

    def file(self, sandbox, repository, name):
        return os.path.join(sandbox.repository(repository), name)

    def header(self, repository, name):
        """The header of a package file."""
        reader = rpm.ts()
        reader.setVSFlags(-1)
        with open(self.file(original, repository, name), "rb") as stream:
            return reader.hdrFromFdno(stream.fileno())
