# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the locks of VYRE and dnf, and of waits for these locks."""

import os
import re
import subprocess
import threading
import time

from scenario import ScenarioTest, in_own_process

HOLDER = """
import sys, dnf.lock
with dnf.lock.build_rpmdb_lock(sys.argv[1], True):
    print("held", flush=True)
    sys.stdin.read()
"""


class LockTest(ScenarioTest):
    def lock_file(self):
        return self.sandbox.root + "/var/lib/dnf/rpmdb_lock.pid"

    def hold(self):
        """Starts a process that holds dnf's lock on the package database until its standard input ends."""
        holder = subprocess.Popen(["/usr/bin/python3", "-c", HOLDER, self.sandbox.root + "/var/lib/dnf"],
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        return holder, holder.stdout.readline()

    @in_own_process
    def test_a_lock_held_by_another_process_is_reported_until_it_is_released(self):
        yumio = self.load()
        holder, word = self.hold()
        self.assertEqual(word, b"held\n")
        with self.assertRaisesRegex(self.dnf.exceptions.LockError, "already locked by %d" % holder.pid):
            yumio.lock()
        self.assertIn("already locked by %d" % holder.pid, "\n".join(self.recording.errors()))
        holder.communicate()
        yumio.lock()
        with open(self.lock_file()) as stream:
            self.assertEqual(stream.read(), str(os.getpid()))

    @in_own_process
    def test_no_other_process_gets_the_lock_until_it_is_released(self):
        yumio = self.load()
        yumio.lock()
        holder, word = self.hold()
        self.assertEqual(word, b"")
        self.assertIn(b"LockError", holder.communicate()[1])
        yumio.unlock()
        self.assertFalse(os.path.exists(self.lock_file()))
        holder, word = self.hold()
        self.assertEqual(word, b"held\n")
        holder.communicate()

    @in_own_process
    def test_a_lock_of_an_ended_process_is_taken_over(self):
        dead = subprocess.Popen(["true"])
        dead.wait()
        self.write("/var/lib/dnf/rpmdb_lock.pid", str(dead.pid))
        self.load().lock()
        with open(self.lock_file()) as stream:
            self.assertEqual(stream.read(), str(os.getpid()))

    # The message about a lock file whose process has ended.
    LEFT = "Process {} has ended without removing its lock file {}. VYRE removes this file."

    def reports(self):
        return [args[1] for name, args in self.recording.calls if name == "log" and "lock file" in args[1]]

    @in_own_process
    def test_each_lock_of_an_ended_process_is_reported(self):
        dead = subprocess.Popen(["true"])
        dead.wait()
        files = [self.write(path, str(dead.pid)) for path in (
            "/var/lib/dnf/rpmdb_lock.pid", "/var/cache/yum/metadata_lock.pid", "/var/cache/yum/download_lock.pid")]
        self.load().lock()
        self.assertEqual(self.reports(), [self.LEFT.format(dead.pid, path) for path in files])
        self.assertEqual([os.path.exists(path) for path in files], [True, False, False])

    @in_own_process
    def test_a_lock_file_is_taken_over_if_it_is_older_than_the_process_that_it_names(self):
        """After a restart of the machine, a process that has not written the lock file can have the number in this
        file.
        """
        other = subprocess.Popen(["sleep", "600"])
        try:
            lock = self.write("/var/lib/dnf/rpmdb_lock.pid", str(other.pid))
            for age in (10, 86400 * 365):
                with open(lock, "w") as stream:
                    stream.write(str(other.pid))
                os.utime(lock, (time.time() - age,) * 2)
                yumio = self.load()
                yumio.lock()
                with open(lock) as stream:
                    self.assertEqual(stream.read(), str(os.getpid()))
                self.assertEqual(self.reports(), [self.LEFT.format(other.pid, lock)])
                yumio.unlock()
                self.recording.calls.clear()
        finally:
            other.kill()
            other.wait()

    @in_own_process
    def test_a_lock_file_is_kept_if_it_is_newer_than_the_process_that_it_names(self):
        other = subprocess.Popen(["sleep", "600"])
        try:
            lock = self.write("/var/lib/dnf/rpmdb_lock.pid", str(other.pid))
            yumio = self.load()
            with self.assertRaisesRegex(self.dnf.exceptions.LockError, "already locked by %d" % other.pid):
                yumio.lock()
            with open(lock) as stream:
                self.assertEqual(stream.read(), str(other.pid))
            self.assertEqual(self.reports(), [])
        finally:
            other.kill()
            other.wait()

    @in_own_process
    def test_a_lock_is_kept_if_the_start_time_of_its_process_is_unknown(self):
        other = subprocess.Popen(["sleep", "600"])
        try:
            lock = self.write("/var/lib/dnf/rpmdb_lock.pid", str(other.pid))
            os.utime(lock, (time.time() - 86400,) * 2)
            yumio = self.load()
            # If the script cannot read the start time of the system, it cannot calculate the start times of processes.
            self.isolate()
            statistics = os.path.join(self.directory, "statistics")
            with open(statistics, "w") as stream:
                stream.write("cpu 0 0 0 0\n")
            subprocess.run(["mount", "--bind", statistics, "/proc/stat"], check=True)
            with self.assertRaisesRegex(self.dnf.exceptions.LockError, "already locked by %d" % other.pid):
                yumio.lock()
            self.assertEqual(self.reports(), [])
        finally:
            other.kill()
            other.wait()
        # Even if the script cannot calculate start times, it detects that the process has ended.
        yumio.lock()
        self.assertEqual(self.reports(), [self.LEFT.format(other.pid, lock)])

    @in_own_process
    def test_a_lock_of_a_running_package_manager_is_kept_despite_its_age(self):
        yumio = self.load()
        holder, word = self.hold()
        self.assertEqual(word, b"held\n")
        os.utime(self.lock_file(), (time.time() - 86400,) * 2)
        with self.assertRaisesRegex(self.dnf.exceptions.LockError, "already locked by %d" % holder.pid):
            yumio.lock()
        holder.communicate()

    @in_own_process
    def test_locking_returns_the_path_of_the_lock_file(self):
        self.assertEqual(self.load().lock(), self.lock_file())

    @in_own_process
    def test_a_malformed_lock_file_causes_a_lock_error(self):
        self.write("/var/lib/dnf/rpmdb_lock.pid", "what?")
        yumio = self.load()
        with self.assertRaisesRegex(self.dnf.exceptions.LockError, "Malformed"):
            yumio.lock()
        os.unlink(self.lock_file())
        yumio.lock()

    @in_own_process
    def test_a_released_lock_can_be_taken_again(self):
        yumio = self.load()
        yumio.unlock()
        yumio.lock()
        yumio.unlock()
        yumio.unlock()
        yumio.lock()
        self.assertTrue(os.path.exists(self.lock_file()))

    @in_own_process
    def test_a_release_without_the_lock_file_causes_a_lock_error(self):
        yumio = self.load()
        yumio.lock()
        os.unlink(self.lock_file())
        with self.assertRaises(self.dnf.exceptions.LockError):
            yumio.unlock()

    @in_own_process
    def test_a_transaction_on_another_thread_does_not_release_the_lock(self):
        self.started()
        failures = []

        def work():
            try:
                self.apply(removes=["almanac"])
            except BaseException as e:
                failures.append(e)

        thread = threading.Thread(target=work)
        thread.start()
        thread.join()
        self.assertEqual(failures, [])
        self.assertNotIn("almanac-1.9-1.noarch", self.sandbox.installed())
        with open(self.lock_file()) as stream:
            self.assertEqual(stream.read(), str(os.getpid()))
        self.yumio.unlock()
        self.assertFalse(os.path.exists(self.lock_file()))


CACHE_HOLDER = """
import sys, dnf.lock
kind, directory = sys.argv[1:]
with getattr(dnf.lock, "build_%s_lock" % kind)(directory, True):
    print("held", flush=True)
    sys.stdin.read()
"""


class WaitTest(ScenarioTest):
    """Tests in which another process holds a lock on the cache."""

    def enter(self):
        super(WaitTest, self).enter()
        self.holder = None
        self.shown = []

    def leave(self):
        if self.holder is not None:
            self.holder.kill()
            self.holder.communicate()
        super(WaitTest, self).leave()

    def lock_file(self, kind):
        return self.sandbox.root + "/var/cache/yum/%s_lock.pid" % kind

    def hold(self, kind):
        self.holder = subprocess.Popen(["/usr/bin/python3", "-c", CACHE_HOLDER, kind,
                                        self.sandbox.root + "/var/cache/yum"],
                                       stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.assertEqual(self.holder.stdout.readline(), b"held\n")
        self.waiting = "Waiting for python3 (%d), which uses the cache of the package manager" % self.holder.pid

    def let_go(self):
        self.holder.communicate()

    def kill(self):
        self.holder.kill()
        self.holder.communicate()

    def wait_function(self, third):
        """A stand-in for the program's waitForLock(). It records the shown texts. The third call returns the result of
        third().
        """
        def wait(text):
            self.shown.append(text)
            return third() if len(self.shown) == 3 else True
        return wait

    def set_wait(self, third):
        self.module("program").waitForLock = self.wait_function(third)

    def logged(self):
        return [text for level, text in self.recording.of("log") if "Waiting" in text or "has ended" in text]

    def check_waited(self, others=()):
        self.assertEqual(self.shown[-1], None)
        self.assertGreaterEqual(len(self.shown), 4)
        self.assertEqual(set(self.shown[:-1]), {self.waiting})
        # The log contains the message about the wait only once.
        self.assertEqual(self.logged(), [self.waiting] + list(others))
        self.assertEqual([path for path in map(self.lock_file, ("metadata", "download")) if os.path.exists(path)], [])

    @in_own_process
    def test_reading_metadata_waits_for_the_lock_of_another_process(self):
        self.load()
        self.yumio.lock()
        self.hold("metadata")
        self.set_wait(lambda: self.let_go() or True)
        self.collect()
        self.check_waited()
        self.package(self.available, "astrolabe")
        self.assert_no_faults()

    @in_own_process
    def test_metadata_are_read_when_the_process_that_holds_the_lock_dies(self):
        self.load()
        self.yumio.lock()
        self.hold("metadata")
        self.set_wait(lambda: self.kill() or True)
        self.collect()
        self.check_waited(["Process %d has ended without removing its lock file %s. VYRE removes this file." % (
            self.holder.pid, self.lock_file("metadata"))])
        self.package(self.available, "astrolabe")
        self.assert_no_faults()

    @in_own_process
    def test_metadata_in_the_cache_are_read_without_a_wait(self):
        self.load()
        self.yumio.lock()
        self.collect()
        before = [str(package) for package in self.available + self.installed + self.updates]
        self.yumio.reset()
        self.hold("metadata")
        self.set_wait(lambda: self.fail("The script waits."))
        setup, self.yumio.setupRepos = self.yumio.setupRepos, self.yumio.setupCachedRepos
        self.collect()
        self.yumio.setupRepos = setup
        self.assertEqual([str(package) for package in self.available + self.installed + self.updates], before)
        self.assertEqual(self.shown, [])
        # The other process still holds the metadata lock.
        with open(self.lock_file("metadata")) as stream:
            self.assertEqual(stream.read(), str(self.holder.pid))
        self.assert_no_faults()

    @in_own_process
    def test_downloads_wait_for_the_lock_of_another_process(self):
        self.started()
        self.hold("download")
        self.set_wait(lambda: self.let_go() or True)
        self.assertEqual(self.changes(self.apply, installs=["loupe"]), ({"loupe-45.0-1.x86_64"}, set()))
        self.check_waited()

    def check_ended(self, kind, attempt, error, third):
        """Checks that the program can end the wait, that the other process keeps its lock, and that later transactions
        succeed.
        """
        self.started()
        self.hold(kind)
        before = self.sandbox.installed()
        self.set_wait(third)
        said = "" if error is KeyboardInterrupt else (
            r"^VYRE no longer waits for python3 \(%d\). Nothing was changed.$" % self.holder.pid)
        with self.assertRaisesRegex(error, said):
            attempt()
        self.assertEqual(self.shown, [self.waiting] * 3 + [None])
        self.assertEqual(self.sandbox.installed(), before)
        with open(self.lock_file(kind)) as stream:
            self.assertEqual(stream.read(), str(self.holder.pid))
        self.assertFalse(self.yumio.systemChanged)
        self.let_go()
        self.again()
        self.assertEqual(self.changes(self.apply, installs=["loupe"]), ({"loupe-45.0-1.x86_64"}, set()))
        self.assert_no_faults()

    def install(self):
        self.apply(installs=["loupe"])

    def collect_again(self):
        self.yumio.reset()
        self.yumio.setupRepos()

    @staticmethod
    def interrupt():
        raise KeyboardInterrupt()

    @in_own_process
    def test_the_user_can_end_the_wait_for_the_metadata_lock(self):
        import dnf.exceptions

        self.check_ended("metadata", self.collect_again, dnf.exceptions.RepoError, lambda: False)

    @in_own_process
    def test_the_message_does_not_claim_that_nothing_was_changed_if_a_wait_after_a_transaction_ends(self):
        self.started()
        self.apply(installs=["loupe"])
        self.hold("metadata")
        self.set_wait(lambda: False)
        for number in range(2):
            del self.shown[:]
            with self.assertRaisesRegex(self.dnf.exceptions.RepoError,
                                        r"^VYRE no longer waits for python3 \(%d\).$" % self.holder.pid):
                self.collect_again()
        self.let_go()
        self.again()
        # Now the packages have been read after the transaction. So the next message says "Nothing was changed" again.
        self.hold("metadata")
        del self.shown[:]
        with self.assertRaisesRegex(self.dnf.exceptions.RepoError,
                                    "^VYRE no longer waits for .* Nothing was changed.$"):
            self.collect_again()
        self.let_go()

    @in_own_process
    def test_the_user_can_end_the_wait_for_the_download_lock(self):
        import dnf.exceptions

        self.check_ended("download", self.install, dnf.exceptions.Error, lambda: False)

    @in_own_process
    def test_the_end_of_the_program_ends_the_wait_for_the_metadata_lock(self):
        self.check_ended("metadata", self.collect_again, KeyboardInterrupt, self.interrupt)

    @in_own_process
    def test_the_end_of_the_program_ends_the_wait_for_the_download_lock(self):
        self.check_ended("download", self.install, KeyboardInterrupt, self.interrupt)

    def cached(self):
        """The files in the cache that cleaning removes."""
        return set(os.path.join(directory, name) for directory, _, names in os.walk(
            self.sandbox.root + "/var/cache/yum") for name in names if re.search(r"\.(rpm|solvx?|gz|zst|xml)$", name))

    def check_cleaning_waits(self, kind):
        self.started()
        self.assertTrue(self.cached())
        self.hold(kind)
        self.set_wait(lambda: self.let_go() or True)
        self.assertTrue(self.yumio.cleanAll())
        self.check_waited()
        self.assertEqual(self.cached(), set())
        self.assert_no_faults()

    @in_own_process
    def test_cleaning_waits_for_the_metadata_lock(self):
        self.check_cleaning_waits("metadata")

    @in_own_process
    def test_cleaning_waits_for_the_download_lock(self):
        self.check_cleaning_waits("download")

    def check_cleaning_ended(self, kind):
        import dnf.exceptions

        self.started()
        before = self.cached()
        self.assertTrue(before)

        def clean():
            try:
                self.yumio.cleanAll()
            finally:
                self.assertEqual(self.cached(), before)
        self.check_ended(kind, clean, dnf.exceptions.LockError, lambda: False)

    @in_own_process
    def test_nothing_is_cleaned_if_the_user_ends_the_wait_for_the_metadata_lock(self):
        self.check_cleaning_ended("metadata")

    @in_own_process
    def test_nothing_is_cleaned_if_the_user_ends_the_wait_for_the_download_lock(self):
        self.check_cleaning_ended("download")

    @in_own_process
    def test_the_script_waits_for_the_metadata_lock_before_it_reads_change_logs(self):
        self.started()
        self.hold("metadata")
        self.set_wait(lambda: self.let_go() or True)
        self.assertEqual(len(self.package(self.available, "tagsoup").changelogs), 3)
        self.check_waited()
        self.assert_no_faults()

    @in_own_process
    def test_the_user_can_end_the_wait_for_the_lock_before_change_logs_are_read(self):
        self.started()
        tagsoup = self.package(self.available, "tagsoup")
        self.hold("metadata")
        self.set_wait(lambda: False)
        self.assertEqual(tagsoup.changelogs, [])
        self.assertEqual(self.shown, [self.waiting] * 3 + [None])
        self.assertIn("VYRE no longer waits for ", "\n".join(self.recording.errors()))
        self.let_go()
        # The next access to "changelogs" reads the change log again.
        self.assertEqual(len(tagsoup.changelogs), 3)

    @in_own_process
    def test_a_process_whose_name_cannot_be_read_is_shown_by_its_number(self):
        self.load()
        self.hold("metadata")
        self.module("locks").nameOfProcess = lambda number: "?"
        self.waiting = "Waiting for process %d, which uses the cache of the package manager" % self.holder.pid
        self.set_wait(lambda: self.let_go() or True)
        self.yumio.setupRepos()
        self.check_waited()

    @in_own_process
    def test_a_malformed_lock_file_causes_an_error_instead_of_a_wait(self):
        self.load()
        lock = self.write("/var/cache/yum/metadata_lock.pid", "what?")
        with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "Malformed lock file"):
            self.yumio.setupRepos()
        os.unlink(lock)
        self.yumio.setupRepos()

    @in_own_process
    def test_the_script_releases_a_lock_that_it_gets_just_when_the_user_ends_the_wait(self):
        self.started()
        self.hold("download")

        def wait(text):
            self.shown.append(text)
            if text is not None:
                self.let_go()
            return text is not None
        self.module("program").waitForLock = wait
        self.assert_refused("^VYRE no longer waits for another program. Nothing was changed.$", installs=["loupe"])
        self.assertEqual(self.shown, [self.waiting, None])
        self.assertFalse(os.path.exists(self.lock_file("download")))
