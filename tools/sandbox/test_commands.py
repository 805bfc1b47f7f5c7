#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the copies of the sandbox, of its server, and of its commands."""

import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.request

import sandboxtest
import vyresandbox
from sandboxtest import EXECUTABLE, Outcome, SandboxTest, setUpModule, tearDownModule  # noqa: F401
from vyresandbox import Sandbox, server


class CopyTest(SandboxTest):
    def test_changes_to_a_copy_do_not_change_the_original(self):
        before = sandboxtest.original.installed()
        sandbox = self.copied()
        sandbox.rpm("-e", "almanac")
        self.assertEqual(before - sandbox.installed(), {"almanac-1.9-1.noarch"})
        package = self.file(sandbox, "sandbox-http", "almanac-1.9-1.noarch.rpm")
        with open(package, "r+b") as stream:
            stream.truncate(10)
        os.unlink(self.file(sandbox, "sandbox-file", "repodata/repomd.xml"))
        self.assertEqual(sandboxtest.original.installed(), before)
        untouched = self.file(sandboxtest.original, "sandbox-http", os.path.basename(package))
        self.assertGreater(os.path.getsize(untouched), 1000)
        self.assertTrue(os.path.exists(self.file(sandboxtest.original, "sandbox-file", "repodata/repomd.xml")))

    def test_the_repository_files_of_a_copy_refer_only_to_the_copy(self):
        sandbox = self.copied()
        for name in ("sandbox-file", "sandbox-disabled", "sandbox-signed"):
            with open(os.path.join(sandbox.root, "etc/yum.repos.d", name + ".repo")) as stream:
                text = stream.read()
            self.assertIn(sandbox.directory + "/", text)
            self.assertNotIn(sandboxtest.original.directory + "/", text)

    def test_existing_directories_are_refused(self):
        with self.assertRaises(RuntimeError):
            sandboxtest.original.copy(sandboxtest.workspace)
        with self.assertRaises(RuntimeError):
            vyresandbox.make(sandboxtest.workspace)
        with self.assertRaises(RuntimeError):
            Sandbox.made(tempfile.mkdtemp(dir=sandboxtest.workspace))

    def test_the_make_command_leaves_nothing_behind_if_it_fails(self):
        target = os.path.join(sandboxtest.workspace, "failed")
        with tempfile.TemporaryDirectory() as empty:
            done = subprocess.run(
                [sys.executable, EXECUTABLE, "make", target], env=dict(os.environ, PATH=empty, TMPDIR=empty),
                stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertEqual(os.listdir(empty), [])
        self.assertNotEqual(done.returncode, 0)
        self.assertFalse(os.path.exists(target))


class ServerTest(SandboxTest):
    index = "/sandbox-http/repodata/repomd.xml"

    def copied(self):
        sandbox = super(ServerTest, self).copied()
        sandbox.start()
        return sandbox

    def dnf(self, sandbox, *arguments):
        """Runs the command dnf. Returns its status and its output."""
        command = ["dnf", "--assumeyes", "--installroot", sandbox.root, "-c", sandbox.root + "/etc/yum.conf",
                   "--setopt=reposdir=%s/etc/yum.repos.d" % sandbox.root]
        done = subprocess.run(
            command + list(arguments), env=sandbox.environment(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout.decode()

    def fetch(self, sandbox, path, **headers):
        request = urllib.request.Request(sandbox.server.url + path, headers=headers)
        with urllib.request.urlopen(request, timeout=30) as answer:
            return answer.status, answer.read()

    def content(self, sandbox):
        with open(self.file(sandbox, "sandbox-http", "repodata/repomd.xml"), "rb") as stream:
            return stream.read()

    def test_the_server_sends_files_and_ranges_and_logs_requests(self):
        sandbox = self.copied()
        content = self.content(sandbox)
        self.assertEqual(self.fetch(sandbox, self.index), (200, content))
        self.assertEqual(self.fetch(sandbox, self.index, Range="bytes=100-"), (206, content[100:]))
        for path in ("/sandbox-http/nothing", "/../root/etc/yum.conf", "/%2e%2e/root/etc/yum.conf", "/"):
            with self.assertRaises(urllib.error.HTTPError) as caught:
                self.fetch(sandbox, path)
            self.assertEqual(caught.exception.code, 404)
        self.assertEqual(sandbox.server.paths()[:2], [self.index, self.index])
        self.assertEqual(sandbox.server.paths(206), [self.index])
        self.assertEqual(len(sandbox.server.paths(404)), 4)

    def test_faults_change_the_answers_of_the_server(self):
        sandbox = self.copied()
        content = self.content(sandbox)
        faults = sandbox.server.faults
        faults[self.index] = server.status(503)
        with self.assertRaises(urllib.error.HTTPError) as caught:
            self.fetch(sandbox, self.index)
        self.assertEqual(caught.exception.code, 503)
        faults[self.index] = server.truncated(20)
        with self.assertRaises(Exception) as caught:
            self.fetch(sandbox, self.index)
        self.assertEqual(getattr(caught.exception, "partial", None), content[:20])
        faults[self.index] = server.corrupted()
        status, received = self.fetch(sandbox, self.index)
        self.assertEqual((status, len(received)), (200, len(content)))
        self.assertNotEqual(received, content)
        faults[self.index] = server.paced(20 * len(content))
        self.assertEqual(self.fetch(sandbox, self.index), (200, content))
        del faults[self.index]
        self.assertEqual(self.fetch(sandbox, self.index), (200, content))

    def test_dnf_fails_if_a_fault_removes_a_package_from_the_server(self):
        sandbox = self.copied()
        package = "/sandbox-http/gargantua-1.0-1.noarch.rpm"
        sandbox.server.faults[package] = server.status(404)
        status, output = self.dnf(sandbox, "install", "gargantua")
        self.assertEqual(status, 1, output)
        self.assertIn(package, sandbox.server.paths(404))
        del sandbox.server.faults[package]
        status, output = self.dnf(sandbox, "install", "gargantua")
        self.assertEqual(status, 0, output)
        self.assertIn("gargantua-1.0-1.noarch", sandbox.installed())

    def test_packages_are_downloaded_by_http(self):
        sandbox = self.copied()
        status, output = self.dnf(sandbox, "install", "tilepack-*")
        self.assertEqual(status, 0, output)
        self.assertEqual(len([path for path in sandbox.server.paths(200) if "/tilepack-" in path]), 8)

    def test_a_hanging_request_does_not_delay_the_stop_of_the_server(self):
        sandbox = self.copied()
        sandbox.server.faults[self.index] = server.hang()
        connection = socket.create_connection(("127.0.0.1", sandbox.server.port))
        self.addCleanup(connection.close)
        connection.sendall(b"GET %s HTTP/1.0\r\n\r\n" % self.index.encode())
        deadline = time.monotonic() + 30
        while not sandbox.server.paths() and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertEqual(sandbox.server.paths(), [self.index])
        connection.settimeout(30)
        sandbox.stop()
        self.assertEqual(connection.recv(1), b"")

    def test_a_second_start_of_the_server_keeps_the_port_and_expires_the_metadata(self):
        sandbox = self.copied()
        port = sandbox.server.port
        self.make_caches(sandbox)
        sandbox.stop()
        with self.assertRaises(ConnectionRefusedError):
            socket.create_connection(("127.0.0.1", port))
        sandbox.start()
        self.assertEqual(sandbox.server.port, port)
        self.assertEqual(sandbox.server.paths(), [])
        self.make_caches(sandbox)
        self.assertEqual(sandbox.server.paths(200).count(self.index), 2)

    def make_caches(self, sandbox):
        """Fills the caches of the command dnf and of VYRE, unless they are fresh."""
        for place in ("/var/cache/dnf", "/var/cache/yum"):
            with open(sandbox.root + "/etc/yum.conf", "w") as stream:
                stream.write("[main]\nmetadata_expire=86400\ncachedir=%s\n" % place)
            # Unlike a query, an update does not use expired metadata.
            output = self.dnf(sandbox, "--assumeno", "update", "abacus-cli")[1]
            self.assertIn("3.3.0-2", output)
            self.assertIn("sandbox-http.solv", os.listdir(sandbox.root + place))

    def test_the_sandbox_can_expire_and_clear_the_caches_of_dnf_and_vyre(self):
        sandbox = self.copied()
        self.make_caches(sandbox)
        fetched = sandbox.server.paths(200).count(self.index)
        self.make_caches(sandbox)
        self.assertEqual((fetched, sandbox.server.paths(200).count(self.index)), (2, 2))
        sandbox.expire_metadata()
        self.make_caches(sandbox)
        self.assertEqual(sandbox.server.paths(200).count(self.index), 4)
        sandbox.clear_cache()
        for place in ("/var/cache/dnf", "/var/cache/yum"):
            self.assertFalse(os.path.exists(sandbox.root + place))


class CommandLineTest(SandboxTest):
    def run_sandbox(self, *arguments):
        done = subprocess.run(
            [EXECUTABLE] + list(arguments), stdout=subprocess.PIPE, stderr=subprocess.PIPE, universal_newlines=True)
        return Outcome(done.returncode, done.stdout, done.stderr)

    def port(self, sandbox):
        with open(os.path.join(sandbox.root, "etc/yum.repos.d/sandbox-http.repo")) as stream:
            return int(re.search(r":(\d+)/", stream.read()).group(1))

    def test_the_copy_command_makes_a_sandbox_and_the_list_command_prints_its_packages(self):
        target = os.path.join(tempfile.mkdtemp(dir=sandboxtest.workspace), "copy")
        self.assertEqual(self.run_sandbox("copy", sandboxtest.original.directory, target).status, 0)
        self.addCleanup(shutil.rmtree, target)
        outcome = self.run_sandbox("list", target)
        self.assertEqual(outcome.output.splitlines(), sorted(sandboxtest.original.rpm("-qa").splitlines()))
        self.assertIn("kernel-6.1.25-1.x86_64\n", outcome.output)

    def test_the_run_command_serves_the_repositories_to_its_program(self):
        sandbox = self.copied()
        script = (
            'import os, re, urllib.request\n'
            'text = open(os.environ["VYREROOT"] + "/etc/yum.repos.d/sandbox-http.repo").read()\n'
            'url = re.search("baseurl=(.*)", text).group(1)\n'
            'print(urllib.request.urlopen(url + "repodata/repomd.xml").status)\n')
        outcome = self.run_sandbox("run", sandbox.directory, "--", sys.executable, "-c", script)
        self.assertEqual(outcome, (0, "200\n", ""))
        with self.assertRaises(ConnectionRefusedError):
            socket.create_connection(("127.0.0.1", self.port(sandbox)))

    def test_the_run_command_sets_the_environment_of_its_program(self):
        sandbox = self.copied()
        outcome = self.run_sandbox("run", sandbox.directory, "sh", "-c", 'echo "$VYREROOT"; rpm --eval %_dbpath')
        self.assertEqual(outcome.output.splitlines(), [sandbox.root, "/var/lib/rpm"])

    def test_the_run_command_returns_the_status_of_its_program(self):
        directory = self.copied().directory
        self.assertEqual(self.run_sandbox("run", directory, "sh", "-c", "exit 7").status, 7)
        self.assertEqual(self.run_sandbox("run", directory, "sh", "-c", "kill -9 $$").status, 128 + 9)
        self.assertEqual(self.run_sandbox("run", directory, "/no/such/command").status, 127)
        self.assertEqual(self.run_sandbox("run", directory).status, 2)

    def test_a_signal_to_the_run_command_ends_its_program_and_the_server(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            sandbox = self.copied()
            process = subprocess.Popen(
                [EXECUTABLE, "run", sandbox.directory, "--", "sh", "-c", "echo $$; exec sleep 600"],
                stdout=subprocess.PIPE)
            command = int(process.stdout.readline())
            process.send_signal(number)
            self.assertEqual(process.wait(), 128 + number)
            process.stdout.close()
            with self.assertRaises(ProcessLookupError):
                os.kill(command, 0)
            with self.assertRaises(ConnectionRefusedError):
                socket.create_connection(("127.0.0.1", self.port(sandbox)))

    def test_a_directory_without_a_sandbox_is_reported(self):
        outcome = self.run_sandbox("list", sandboxtest.workspace)
        self.assertEqual((outcome.status, outcome.output), (1, ""))
        self.assertIn("does not contain a sandbox", outcome.errors)


if __name__ == "__main__":
    unittest.main()
