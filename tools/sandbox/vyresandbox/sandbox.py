# SPDX-License-Identifier: GPL-2.0-or-later
"""A sandbox: its root, its repositories, its server."""

import os
import shutil
import subprocess

from .catalogue import TRUSTED_KEY_FILE
from .server import Server

HTTP_REPOSITORIES = ("sandbox-http", "sandbox-updates", "sandbox-signed")
FILE_REPOSITORIES = ("sandbox-file", "sandbox-disabled")

# The default compression depends on the version of createrepo_c. Tests that change the metadata need gz.
CREATEREPO = ("createrepo_c", "--quiet", "--no-database", "--general-compress-type", "gz")

# No program listens on the discard port.
_CLOSED_PORT = 9

_NAMES = {
    "sandbox-http": "Sandbox, by HTTP",
    "sandbox-updates": "Sandbox updates",
    "sandbox-signed": "Sandbox, signed packages",
    "sandbox-file": "Sandbox, from files",
    "sandbox-disabled": "Sandbox, disabled",
    "sandbox-unreachable": "Sandbox, not reachable",
}


class Sandbox(object):
    """A system root and repositories below one directory.

    directory/root  the system root (.root)
    directory/http  the repositories that the server serves
    directory/file  the repositories with file URLs
    directory/more  the repositories that the root uses only after a call of use()
    directory/home  the home directory for programs that run on the sandbox
    directory/without-groups
                    exists if dnf cannot read groups, and contains the reason; then the repositories have groups, but
                    no group is installed in the root

    A "with" statement starts the server, and stops it at the end:

        with Sandbox.made("/tmp/original").copy("/tmp/copy") as sandbox:
            subprocess.run(command, env=sandbox.environment())
            assert "/sandbox-http/repodata/repomd.xml" in sandbox.server.paths(200)

    The server answers in threads of this process. dnf holds the interpreter lock while it downloads, so dnf and the
    server must run in different processes: run dnf as a command, or start the server with "sandbox run".
    """

    def __init__(self, directory):
        self.directory = os.path.abspath(directory)
        self.root = os.path.join(self.directory, "root")
        self.server = None
        self._last_port = 0

    @classmethod
    def made(cls, directory):
        """The existing sandbox in that directory; RuntimeError if it contains none."""
        sandbox = cls(directory)
        if not os.path.isdir(os.path.join(sandbox.root, "var/lib/rpm")):
            raise RuntimeError("%s does not contain a sandbox" % sandbox.directory)
        return sandbox

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *exception):
        self.stop()

    def repository(self, name):
        """The directory of a repository."""
        kind = "http" if name in HTTP_REPOSITORIES else "more" if name.startswith("extra-") else "file"
        return os.path.join(self.directory, kind, name)

    def copy(self, directory):
        """A private copy in a new directory. Changes to the copy do not affect the original, and vice versa."""
        copied = Sandbox(directory)
        if os.path.lexists(copied.directory):
            raise RuntimeError("%s exists already" % copied.directory)
        os.makedirs(copied.directory)
        parts = [os.path.join(self.directory, part) for part in ("root", "http", "file", "more")]
        subprocess.run(["cp", "-a", "--reflink=auto"] + parts + [copied.directory], check=True)
        copied.without_groups = self.without_groups
        copied.write_repository_files()
        return copied

    @property
    def without_groups(self):
        """The reason why no group is installed; empty if dnf can use groups."""
        try:
            with open(os.path.join(self.directory, "without-groups")) as stream:
                return stream.read()
        except FileNotFoundError:
            return ""

    @without_groups.setter
    def without_groups(self, reason):
        if reason:
            with open(os.path.join(self.directory, "without-groups"), "w") as stream:
                stream.write(reason)

    def remove(self):
        self.stop()
        shutil.rmtree(self.directory)

    def start(self):
        """Starts the server and writes its port to the repository files. A second start uses the same port."""
        if self.server is None:
            self.server = Server.preferring(os.path.join(self.directory, "http"), self._last_port)
            self.server.start()
            self._last_port = self.server.port
            self.write_repository_files()
            self.expire_metadata()

    def stop(self):
        """Stops the server; its port stays in the repository files."""
        if self.server is not None:
            self.server.stop()
            self.server = None

    def write_repository_files(self):
        """Rewrites root/etc/yum.repos.d/*.repo, one file for each repository."""
        port = self.server.port if self.server is not None else self._last_port or _CLOSED_PORT
        for name in HTTP_REPOSITORIES:
            self._write_repository_file(name, "http://127.0.0.1:%d/%s/" % (port, name))
        for name in FILE_REPOSITORIES:
            self._write_repository_file(name, "file://%s/" % self.repository(name))
        self._write_repository_file("sandbox-unreachable", "http://127.0.0.1:%d/nowhere/" % _CLOSED_PORT)

    def use(self, name, *lines):
        """Adds a repository of directory/more to the root. lines: additional options."""
        lines = ["[%s]" % name, "name=Sandbox, " + name, "baseurl=file://" + self.repository(name), "enabled=1",
                 "gpgcheck=0"] + list(lines)
        with open(os.path.join(self.root, "etc/yum.repos.d", name + ".repo"), "w") as stream:
            stream.write("\n".join(lines) + "\n")

    def _write_repository_file(self, name, url):
        lines = [
            "[%s]" % name, "name=" + _NAMES[name], "baseurl=" + url,
            "enabled=%d" % (name != "sandbox-disabled"), "gpgcheck=%d" % (name == "sandbox-signed")]
        if name == "sandbox-signed":
            lines.append("gpgkey=file://%s%s" % (self.root, TRUSTED_KEY_FILE))
        if name == "sandbox-unreachable":
            lines += ["skip_if_unavailable=1", "retries=1", "timeout=2"]
        with open(os.path.join(self.root, "etc/yum.repos.d", name + ".repo"), "w") as stream:
            stream.write("\n".join(lines) + "\n")

    def expire_metadata(self):
        """Makes dnf ask the repositories again, by changing the times of the cached files."""
        for cache in self._caches():
            for directory, _, files in os.walk(cache):
                if os.path.basename(directory) == "repodata":
                    for name in files:
                        os.utime(os.path.join(directory, name), (0, 0))

    def clear_cache(self):
        """Removes all files that dnf has downloaded."""
        for cache in self._caches():
            shutil.rmtree(cache, ignore_errors=True)

    def _caches(self):
        """The caches of the command dnf and of VYRE."""
        return [os.path.join(self.root, "var/cache", name) for name in ("dnf", "yum")]

    def environment(self):
        """The environment for a program that works on this sandbox.

        The home directory belongs to the sandbox, so that its settings do not mix with the user's settings. This
        directory also contains the database's location for rpm's tools, because some distributions have the database
        in the home directory by default.
        """
        home = os.path.join(self.directory, "home")
        os.makedirs(home, exist_ok=True)
        with open(os.path.join(home, ".rpmmacros"), "w") as stream:
            stream.write("%_dbpath /var/lib/rpm\n")
        environment = dict(os.environ, VYREROOT=self.root, HOME=home)
        authority = os.path.expanduser("~/.Xauthority")
        if "XAUTHORITY" not in environment and os.path.exists(authority):
            environment["XAUTHORITY"] = authority
        return environment

    def rpm(self, *arguments):
        """The output of rpm for the root; subprocess.CalledProcessError on failure."""
        command = ["rpm", "--root", self.root, "--define", "_dbpath /var/lib/rpm"] + list(arguments)
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, check=True)
        return done.stdout.decode("utf-8")

    def installed(self):
        """The installed packages in dnf's format: name-[epoch:]version-release.arch. An imported public key counts as a
        package without an architecture."""
        query = r"%{NAME}-%|EPOCH?{%{EPOCH}:}:{}|%{VERSION}-%{RELEASE}%|ARCH?{.%{ARCH}}:{}|\n"
        return set(self.rpm("-qa", "--queryformat", query).split())
