# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of operations that the user stops, and of failing repositories that the user excludes from the session."""

import ctypes
import os
import re
import shutil
import threading
import time

import metadata
from scenario import ScenarioTest, in_own_process

from vyresandbox.catalogue import TRUSTED_KEY_FILE

REPODATA = "/sandbox-http/repodata/"
REPOMD = REPODATA + "repomd.xml"
UPDATES_REPOMD = "/sandbox-updates/repodata/repomd.xml"
GARGANTUA = "/sandbox-http/gargantua-1.0-1.noarch.rpm"
UNREACHABLE = "[{0}]\nname={0}\nbaseurl=http://127.0.0.1:9/{0}/\nretries=1\ntimeout=2\nskip_if_unavailable=0\n"


class Stop:
    """A stand-in for the program's stopWanted(). After a request to stop, it sets librepo's `lr_interrupt` repeatedly,
    as the program does.
    """

    def __init__(self):
        self.requested = False
        self.refused = False
        self._ended = threading.Event()

    def __call__(self, last):
        self.refused = self.refused or last and not self.requested
        return self.requested

    def request(self):
        self.requested = True
        interrupted = ctypes.c_int.in_dll(ctypes.CDLL("librepo.so.0"), "lr_interrupt")
        while not self._ended.wait(0.05):
            interrupted.value = 1

    def request_when(self, condition):
        def wait():
            while not condition():
                if self._ended.wait(0.02):
                    return
            self.request()
        self._thread = threading.Thread(target=wait)
        self._thread.start()

    def end(self):
        self._ended.set()
        self._thread.join()
        self.requested = False
        self._ended.clear()


class StoppingTest(ScenarioTest):

    def load_stoppable(self, **given):
        self.stop = Stop()
        self.load(stopWanted=self.stop, **given)
        self.yumio.lock()

    def check_stopped(self, operation, condition, failing=()):
        """Checks that the operation ends soon after the request, and logs no error, except about the repositories in
        "failing", which fail before the request.
        """
        errors = len(self.recording.errors())
        self.stop.request_when(condition)
        begin = time.monotonic()
        try:
            with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]"):
                operation()
        finally:
            self.stop.end()
        # Without the stop, the slow download would take hours.
        self.assertLess(time.monotonic() - begin, 60)
        self.assertEqual([text for text in self.recording.errors()[errors:]
                          if not any(name in text for name in failing)], [])
        self.assert_no_faults()

    def requested(self, path):
        return lambda: path in self.server.paths()

    @in_own_process
    def test_the_user_can_stop_a_slow_download_of_metadata(self):
        self.change_repository("sandbox-unreachable", "enabled=1", "enabled=0")
        self.load_stoppable()
        for path in (REPOMD, REPODATA + next(name for name in os.listdir(
                self.sandbox.directory + "/http" + REPODATA) if name.endswith("primary.xml.gz"))):
            self.yumio.cleanAll()
            self.yumio.reset()
            self.server.forget()
            self.server.fault(path, "paced", 1)
            self.check_stopped(self.yumio.setupRepos, self.requested(path))
            self.server.fault(path, "none")
            # After the stop, the repository is neither disabled nor damaged.
            self.collect()
            self.package(self.available, "astrolabe")

    @in_own_process
    def test_a_stop_does_not_skip_a_repository_even_if_its_settings_allow_skipping(self):
        self.change_repository("sandbox-http", "enabled=1", "enabled=1\nskip_if_unavailable=1")
        self.load_stoppable()
        self.server.fault(REPOMD, "paced", 1)
        self.stop.request_when(self.requested(REPOMD))
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]"):
            self.yumio.setupRepos()
        self.stop.end()
        self.assertTrue(self.yumio.base.repos["sandbox-http"].enabled)

    @in_own_process
    def test_packages_of_cached_repositories_can_be_collected_after_a_stop(self):
        self.load_stoppable()
        self.collect()
        self.recording.clear()
        before = [str(package) for package in self.available + self.installed + self.updates]
        self.sandbox.expire_metadata()
        self.yumio.reset()
        self.server.forget()
        self.server.fault(REPOMD, "paced", 1)
        self.check_stopped(self.yumio.setupRepos, self.requested(REPOMD))
        self.server.forget()
        self.collect_from_cache()
        self.assertEqual(self.server.paths(), [])
        self.assertEqual([str(package) for package in self.available + self.installed + self.updates], before)
        self.assertEqual(self.recording.errors(), [])
        # Packages of a repository that was read from the cache can be installed.
        self.assertEqual(self.changes(self.apply, installs=["loupe"]), ({"loupe-45.0-1.x86_64"}, set()))
        # The next collection reads the repository from the server again.
        self.server.fault(REPOMD, "none")
        self.sandbox.expire_metadata()
        self.again()
        self.assertIn(REPOMD, self.server.paths())

    def collect_from_cache(self):
        """Collects the packages with the same calls as the program uses after a stop."""
        setup, self.yumio.setupRepos = self.yumio.setupRepos, self.yumio.setupCachedRepos
        self.collect()
        self.yumio.setupRepos = setup

    @in_own_process
    def test_packages_of_a_cached_repository_can_be_collected_if_this_repository_fails_before_a_stop(self):
        asked = []
        self.load_stoppable(goOnWithout=lambda *arguments: asked.append(arguments))
        for setting in ("skip_if_unavailable=0", "skip_if_unavailable=1"):
            self.change_repository("sandbox-http", "enabled=1", "enabled=1\n" + setting)
            self.yumio.reset()
            self.collect()
            before = [str(package) for package in self.available + self.installed + self.updates]
            self.assertIn("sandbox-http", {package.reponame for package in self.available})
            self.sandbox.expire_metadata()
            self.yumio.reset()
            self.server.forget()
            self.server.fault(REPOMD, "status", 503)
            self.server.fault(UPDATES_REPOMD, "hang")
            self.check_stopped(self.yumio.setupRepos, self.requested(UPDATES_REPOMD),
                               ["sandbox-http", "sandbox-unreachable"])
            self.assertIn(REPOMD, self.server.paths(503))
            self.collect_from_cache()
            self.assertEqual([str(package) for package in self.available + self.installed + self.updates], before)
            self.server.fault(REPOMD, "none")
            self.server.fault(UPDATES_REPOMD, "none")
        self.assertEqual(asked, [])

    @in_own_process
    def test_the_log_names_a_repository_with_damaged_modules_metadata_after_a_stop(self):
        self.load_stoppable(goOnWithout=lambda *arguments: False)
        self.collect()
        self.sandbox.expire_metadata()
        self.yumio.reset()
        self.server.forget()
        self.server.fault(UPDATES_REPOMD, "hang")
        path, find = self.module("base").documentPath, self.module("base").modulesFault
        self.module("base").documentPath = lambda repo, kind: (
            repo.id if kind == "modules" and repo.id == "sandbox-http" else path(repo, kind))
        self.module("base").modulesFault = lambda base, name: (
            "a stand-in for an error" if name == "sandbox-http" else find(base, name))
        self.check_stopped(self.yumio.setupRepos, self.requested(UPDATES_REPOMD), ["sandbox-unreachable"])
        self.recording.clear()
        self.collect_from_cache()
        self.assertNotIn("sandbox-http", {package.reponame for package in self.available})
        self.assertEqual(self.recording.errors(),
                         ["The modules metadata of the repository sandbox-http are damaged: a stand-in for an error"])
        lines = "\n".join(text for level, text in self.recording.of("log"))
        self.assertRegex(lines, "These repositories have no usable metadata in the cache, .*sandbox-http")

    @in_own_process
    def test_a_repository_remains_disabled_after_a_stop_if_the_user_goes_on_without_it(self):
        for name in ("away", "gone"):
            self.write("/etc/yum.repos.d/%s.repo" % name, UNREACHABLE.format(name))

        def ask(id, reason, others):
            self.stop.requested = others == 0
            return others != 0
        self.load_stoppable(goOnWithout=ask)
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]"):
            self.yumio.setupRepos()
        self.stop.requested = False
        self.yumio.setupCachedRepos()
        self.assertEqual([self.yumio.base.repos[name].enabled for name in ("away", "gone")], [False, False])
        lines = "\n".join(text for level, text in self.recording.of("log"))
        self.assertRegex(lines, "These repositories have no usable metadata in the cache, .*gone")
        self.assertNotRegex(lines, "These repositories have no usable metadata in the cache, .*away")

    @in_own_process
    def test_installed_packages_can_be_collected_after_a_stop_even_if_no_repository_is_cached(self):
        self.load_stoppable()
        self.server.stop()
        self.yumio.setupCachedRepos()
        packages = [package.name for package in self.yumio.collectAll().installed]
        self.assertIn("almanac", packages)
        lines = "\n".join(text for level, text in self.recording.of("log"))
        self.assertRegex(lines, "These repositories have no usable metadata in the cache, and are left out until the "
                                "next Refresh: .*sandbox-http")
        # Local repositories are also read only from the cache, and cause no error.
        self.assertEqual(self.recording.errors(), [])
        self.server.start()
        self.yumio.reset()
        self.collect()
        self.package(self.available, "astrolabe")

    @in_own_process
    def test_after_a_cleaning_and_a_stop_only_repositories_that_were_read_again_have_packages(self):
        for method in ("cleanMetadata", "cleanAll"):
            with self.subTest(method):
                self.load_stoppable()
                self.collect()
                self.assertIn("sandbox-http", {package.reponame for package in self.available})
                installed = sorted(str(package) for package in self.installed)
                self.assertTrue(getattr(self.yumio, method)())
                self.recording.clear()
                self.yumio.reset()
                self.server.forget()
                self.server.fault(REPOMD, "paced", 1)
                self.check_stopped(self.yumio.setupRepos, self.requested(REPOMD))
                self.collect_from_cache()
                self.server.fault(REPOMD, "none")
                self.assertEqual(sorted(str(package) for package in self.installed), installed)
                self.assertNotIn("sandbox-http", {package.reponame for package in self.available})
                lines = "\n".join(text for level, text in self.recording.of("log"))
                self.assertRegex(lines, "These repositories have no usable metadata in the cache, .*sandbox-http")
                self.again()
                self.package(self.available, "astrolabe")

    @in_own_process
    def test_the_user_can_stop_a_slow_download_of_packages(self):
        self.load_stoppable()
        self.collect()
        self.recording.clear()
        self.server.fault(GARGANTUA, "paced", 1)
        before = self.sandbox.installed()
        self.check_stopped(lambda: self.apply(installs=["gargantua"]), self.requested(GARGANTUA))
        self.assertEqual(self.sandbox.installed(), before)
        self.assertFalse(self.yumio.systemChanged)
        self.assertEqual([name for name in self.recording.names() if name.startswith("rpmtrans")], [])
        self.server.fault(GARGANTUA, "none")
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({"gargantua-1.0-1.noarch"}, set()))
        self.again()
        self.package(self.installed, "gargantua")

    KEY = "/keys/larkspur"

    def serve_key_slowly(self, key):
        """Makes the sandbox's server send this key with one byte a second; returns the lines for a repository file."""
        path = self.sandbox.directory + "/http" + self.KEY
        os.mkdir(os.path.dirname(path))
        shutil.copyfile(key, path)
        # The server needs longer than check_stopped() permits, and dnf does not end the slow download itself.
        self.assertGreater(os.path.getsize(path), 120)
        self.server.fault(self.KEY, "paced", 1)
        with open(self.repository_file("sandbox-http")) as stream:
            server, = re.findall("^baseurl=(http://[^/]*)/", stream.read(), re.M)
        return "gpgkey=%s\ntimeout=600\nminrate=1\n" % (server + self.KEY)

    @in_own_process
    def test_the_user_can_stop_a_slow_download_of_a_key_that_signs_packages(self):
        lines = self.serve_key_slowly(self.sandbox.root + TRUSTED_KEY_FILE)
        self.change_repository("sandbox-signed", "gpgkey=", lines + "#")
        self.load_stoppable()
        self.collect()
        self.recording.clear()
        before = self.sandbox.installed()
        self.check_stopped(lambda: self.apply(installs=["wax-tablet"]), self.requested(self.KEY), ["repo key"])
        self.assertEqual(self.recording.names().count("userconfirm"), 1)  # only the question about the listing
        self.assertEqual(self.sandbox.installed(), before)
        self.assertFalse(self.yumio.systemChanged)
        # The next transaction downloads the key again.
        self.server.fault(self.KEY, "none")
        self.apply(installs=["wax-tablet"], answers=[1, 1])
        self.assertIn("wax-tablet-1.0-1.noarch", self.sandbox.installed())

    @in_own_process
    def test_the_user_can_stop_a_slow_download_of_a_key_that_signs_metadata(self):
        lines = self.serve_key_slowly(metadata.sign(self.sandbox.repository("sandbox-file"), self.directory))
        with open(self.repository_file("sandbox-file"), "a") as stream:
            stream.write("repo_gpgcheck=1\n" + lines)
        self.load_stoppable()
        self.check_stopped(self.yumio.setupRepos, self.requested(self.KEY), ["sandbox-unreachable"])
        self.assertNotIn("userconfirm", self.recording.names())
        self.server.fault(self.KEY, "none")
        self.recording.answers = [1]
        self.again()
        self.package(self.available, "corkboard")

    @in_own_process
    def test_no_question_is_asked_if_the_user_stops_the_resolution(self):
        self.load_stoppable()
        self.collect()
        resolve = self.module("resolving").resolveMarks

        def stopped(*arguments):
            self.stop.requested = True
            return resolve(*arguments)
        self.yumio.apply.__globals__["resolveMarks"] = stopped
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]"):
            self.apply(installs=["loupe"], answers=())
        self.assert_no_faults()

    @in_own_process
    def test_a_stop_ends_the_search_for_possible_removals_before_the_next_resolution(self):
        names = ["almanac", "barometer", "birch-log", "parrot"]
        self.configure("protected_packages=" + ",".join(names))
        for last in (1, 2, 4):
            self.load_stoppable()
            self.collect()
            counted = []
            base = self.yumio.base
            run = base._run_hawkey_goal

            def count(*arguments):
                counted.append(1)
                self.stop.requested = len(counted) >= last
                return run(*arguments)
            base._run_hawkey_goal = count
            before = self.sandbox.installed()
            with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]"):
                self.apply(removes=names + ["gallivant"], answers=())
            self.assertEqual(len(counted), last)
            self.assertEqual(self.sandbox.installed(), before)
            self.assert_no_faults()
            self.stop.requested = False
            base._run_hawkey_goal = run
        # After a stop, the available packages are not hidden.
        self.assertEqual(self.changes(self.apply, installs=["loupe"]), ({"loupe-45.0-1.x86_64"}, set()))

    @in_own_process
    def test_the_script_leaves_it_to_the_program_to_refuse_stops_during_a_transaction(self):
        self.load_stoppable()
        self.collect()
        self.apply(installs=["loupe"])
        # The program refuses requests to stop as soon as rpm begins, so the script need not refuse them.
        self.assertFalse(self.stop.refused)


class WithoutRepositoriesTest(ScenarioTest):
    """Tests of failing repositories, and of the question whether to go on without them."""

    def load_asking(self, *answers):
        self.asked = []
        remaining = list(answers)

        def ask(id, reason, others):
            self.asked.append((id, reason, others))
            return remaining.pop(0)
        self.load(goOnWithout=ask)
        self.yumio.lock()

    def add_unreachable(self, *names):
        for name in names:
            self.write("/etc/yum.repos.d/%s.repo" % name, UNREACHABLE.format(name))

    @in_own_process
    def test_all_repositories_are_read_before_the_first_question_about_a_failing_repository(self):
        self.add_unreachable("away", "gone")
        self.server.fault(REPOMD, "status", 401)
        self.load_asking(True, True, True)
        self.collect()
        self.assertEqual({id for id, reason, others in self.asked}, {"away", "gone", "sandbox-http"})
        self.assertEqual([others for id, reason, others in self.asked], [2, 1, 0])
        for id, reason, others in self.asked:
            # Each reason names only its own repository.
            for other in ("away", "gone", "sandbox-http"):
                self.assertEqual(other in reason, other == id, reason)
            if id == "sandbox-http":
                self.assertIn("401", reason)
        self.assertEqual([self.yumio.base.repos[id].enabled for id, *_ in self.asked], [False] * 3)
        self.package(self.installed, "almanac")
        self.assertTrue(self.available)
        self.assertNotIn("sandbox-http", {package.repoid for package in self.available})
        # This repository may be skipped, so it causes an error in the log, but no question.
        self.assertIn("sandbox-unreachable", "\n".join(self.recording.errors()))
        self.assert_no_faults()
        self.apply(installs=["hedgerow"])

    @in_own_process
    def test_the_operation_fails_if_the_user_refuses_to_go_on_without_a_repository(self):
        self.add_unreachable("away", "gone")
        self.load_asking(True, False)
        with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "Failed to download metadata") as caught:
            self.yumio.setupRepos()
        self.assertIn(self.asked[1][0], str(caught.exception))
        self.assertNotIn(self.asked[0][0], str(caught.exception))
        self.assertEqual(len(self.asked), 2)

    @in_own_process
    def test_the_user_can_go_on_without_a_repository_with_damaged_metadata(self):
        self.server.fault(REPOMD, "corrupted")
        self.load_asking(True)
        self.collect()
        self.assertEqual([id for id, *_ in self.asked], ["sandbox-http"])
        # After the next reset, the script reads the repository again.
        self.server.fault(REPOMD, "none")
        self.yumio.reset()
        self.collect()
        self.assertEqual(len(self.asked), 1)
        self.package(self.available, "astrolabe")

    @in_own_process
    def test_the_user_can_go_on_without_a_repository_with_damaged_modules_metadata(self):
        original = self.sandbox.repository("sandbox-file")
        shutil.copytree(original, original + ".away")
        metadata.add_modules(original, "nonsense: [\n", self.directory)
        self.load_asking(True, False)
        self.collect()
        (id, reason, others), = self.asked
        self.assertEqual((id, others), ("sandbox-file", 0))
        self.assertRegex(reason, "^The modules metadata of the repository sandbox-file are damaged: .")
        self.assertFalse(self.yumio.base.repos["sandbox-file"].enabled)
        self.assertNotIn("sandbox-file", {package.repoid for package in self.available})
        self.package(self.available, "astrolabe")
        self.assertEqual(self.yumio.remarks, [])
        # Each collection asks again while the metadata are damaged.
        self.yumio.reset()
        with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
            self.yumio.setupRepos()
        self.assertEqual(str(caught.exception), reason)
        self.assertEqual(len(self.asked), 2)
        # When the repository is mended, its packages are available again.
        shutil.rmtree(original)
        os.rename(original + ".away", original)
        self.yumio.cleanMetadata()
        self.yumio.reset()
        self.collect()
        self.assertEqual(len(self.asked), 2)
        self.package(self.available, "corkboard")

    @in_own_process
    def test_installed_packages_can_be_collected_without_any_network(self):
        self.change_repository("sandbox-file", "enabled=1", "enabled=0")
        self.load_asking(*[True] * 9)
        self.server.stop()
        self.collect()
        self.assertEqual(self.available, [])
        self.package(self.installed, "almanac")
        self.assertEqual(list(self.yumio.base.repos.iter_enabled()), [])
        self.assert_no_faults()

    @in_own_process
    def test_the_progress_bar_shows_each_step_for_each_repository(self):
        shown = []
        self.load(showReading=lambda *arguments: shown.append(arguments))
        self.collect()
        name = self.yumio.base.repos["sandbox-file"].name
        self.assertEqual([text for id, text in shown if id == "sandbox-file"],
                         [text.format(name) for text in ("Reading repository metadata for {}",
                                                         "Reading the packages of {}", "Checking the metadata of {}")])
        self.assertEqual(len({id for id, text in shown}), len(list(self.yumio.base.repos.iter_enabled())) + 1)
