# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests with other programs that use the package database at the same time."""

import ctypes
import fcntl
import os
import shutil
import signal
import sqlite3
import subprocess
import threading

from scenario import ScenarioTest, in_own_process

CHANGED = "^Another program has changed the system since VYRE read the packages"
DATABASE = "/var/lib/rpm"
ALMANAC = "almanac-1.9-1.noarch"
ASTROLABE = "astrolabe-5.6-1.x86_64"


class DatabaseTest(ScenarioTest):
    def rpm(self, *arguments):
        subprocess.run(["rpm", "--root", self.sandbox.root, "--dbpath", "/var/lib/rpm"] + list(arguments), check=True,
                       stderr=subprocess.DEVNULL)

    def check_outdated(self):
        self.assertTrue(self.yumio.outdated)
        self.assertFalse(self.yumio.systemChanged)
        self.assertNotIn("rpmtransInit", self.recording.names())
        self.assert_history_is_complete()

    def assert_history_is_complete(self):
        """Checks that the next collection reports no interrupted transaction."""
        self.recording.clear()
        self.module("history").reportLeftovers(self.yumio.base)
        self.assertEqual(self.recording.errors(), [])


class OutdatedTest(DatabaseTest):
    @in_own_process
    def test_marks_are_refused_after_another_program_has_removed_a_package(self):
        self.started()
        self.rpm("-e", "almanac")
        self.assert_refused(CHANGED, removes=["almanac"], answers=[])
        self.check_outdated()
        # After the script has read the packages again, a transaction succeeds.
        self.again()
        self.assertEqual(self.changes(self.apply, installs=["astrolabe"]), ({ASTROLABE}, set()))
        self.assertFalse(self.yumio.outdated)
        self.assertTrue(self.yumio.systemChanged)

    @in_own_process
    def test_marks_are_refused_after_another_program_has_installed_a_package(self):
        self.started()
        self.rpm("-i", "--nodeps", os.path.join(self.sandbox.repository("sandbox-http"), ASTROLABE + ".rpm"))
        self.assert_refused(CHANGED, installs=["astrolabe"], answers=[])
        self.check_outdated()

    @in_own_process
    def test_marks_are_refused_if_packages_change_while_the_question_is_shown(self):
        self.started()
        self.recording.before_answer = lambda: self.rpm("-e", "almanac")
        with self.assertRaisesRegex(self.dnf.exceptions.Error, CHANGED):
            self.apply(removes=["almanac"])
        self.check_outdated()

    @in_own_process
    def test_marks_are_refused_after_another_program_has_reinstalled_a_package(self):
        """The package has the same version as before, but a new number in the database."""
        self.started()
        self.rpm("-i", "--nodeps", "--replacepkgs",
                 os.path.join(self.sandbox.repository("sandbox-http"), ALMANAC + ".rpm"))
        self.assert_refused(CHANGED, removes=["almanac"], answers=[])
        self.check_outdated()

    @in_own_process
    def test_marks_are_applied_after_another_program_has_imported_a_key(self):
        self.started()
        cookie = self.module("database").databaseCookie()
        self.rpm("--import", self.sandbox.root + "/etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur")
        self.assertNotEqual(self.module("database").databaseCookie(), cookie)
        self.assertEqual(self.changes(self.apply, removes=["almanac"]), (set(), {ALMANAC}))


class Holder(object):
    """Another process that holds a lock until let_go() is called."""

    def __init__(self, take):
        here, there = os.pipe()
        self.process = os.fork()
        if self.process == 0:
            kept = take()
            os.write(there, b"x")
            signal.alarm(60)
            while kept:
                signal.pause()
        os.close(there)
        os.read(here, 1)
        os.close(here)

    def let_go(self):
        os.kill(self.process, signal.SIGKILL)
        os.waitpid(self.process, 0)


class LockedTest(DatabaseTest):
    def enter(self):
        super(LockedTest, self).enter()
        self.holder = None

    def leave(self):
        if self.holder is not None:
            self.holder.let_go()
        super(LockedTest, self).leave()

    def rpm_lock(self):
        lock = open(self.sandbox.root + "/var/lib/rpm/.rpm.lock", "w")
        fcntl.lockf(lock, fcntl.LOCK_EX)
        return lock

    def database_lock(self):
        connection = sqlite3.connect(self.sandbox.root + "/var/lib/rpm/rpmdb.sqlite")
        connection.execute("BEGIN EXCLUSIVE")
        return connection

    def prepare(self):
        """Collects the packages, and shortens the wait before the question to half a second. Returns the list in which
        all shown activities are recorded.
        """
        self.started()
        shown = []
        self.module("program").changeActivity = shown.append
        self.module("locks").DatabaseLock.FIRST_QUESTION = 0.5
        return shown

    def let_go(self):
        self.holder.let_go()
        self.holder = None

    def check_given_up(self, take):
        shown = self.prepare()
        self.holder = Holder(take)
        self.assert_refused("^Another program is using the package database. Nothing was changed.$",
                            removes=["almanac"], answers=[0])
        who = "%s (%d)" % (self.module("locks").nameOfProcess(self.holder.process), self.holder.process)
        # The script repeats the activity, so that the program can end the wait.
        self.assertGreater(len(shown), 1)
        self.assertEqual(set(shown), {"Waiting for %s, which uses the package database" % who})
        self.assertEqual(self.recording.printed(),
                         "Another program is using the package database: %s\nKeep waiting?\n" % who)
        self.assertEqual(self.recording.order(), ["gpgsigcheck", "userconfirm"])
        self.assertFalse(self.yumio.systemChanged)
        self.assertFalse(self.yumio.outdated)
        self.let_go()
        self.assert_history_is_complete()
        # The next transaction succeeds without a new collection of the packages.
        self.assertEqual(self.changes(self.apply, removes=["almanac"]), (set(), {ALMANAC}))

    @in_own_process
    def test_the_user_can_give_up_waiting_for_the_transaction_lock_of_rpm(self):
        self.check_given_up(self.rpm_lock)

    def check_ended_by_the_program(self, take):
        shown = self.prepare()
        self.module("locks").DatabaseLock.FIRST_QUESTION = 600
        self.holder = Holder(take)

        def end(text):
            shown.append(text)
            if len(shown) == 3:
                raise KeyboardInterrupt()
        self.module("program").changeActivity = end
        before = self.sandbox.installed()
        with self.assertRaises(KeyboardInterrupt):
            self.apply(removes=["almanac"], answers=[])
        self.assertEqual(len(shown), 3)
        self.assertFalse(self.yumio.systemChanged)
        self.assertEqual(self.sandbox.installed(), before)
        self.let_go()
        # The script has released its own locks: another process can take both locks.
        Holder(self.rpm_lock).let_go()
        Holder(self.database_lock).let_go()
        self.assertEqual([name for name in os.listdir("/proc/self/fd") if self.target(name).endswith(".rpm.lock")], [])
        self.assert_history_is_complete()
        self.assertEqual(self.changes(self.apply, removes=["almanac"]), (set(), {ALMANAC}))

    @staticmethod
    def target(name):
        try:
            return os.readlink("/proc/self/fd/" + name)
        except OSError:  # the descriptor with which listdir() read the directory
            return ""

    @in_own_process
    def test_the_wait_for_the_transaction_lock_of_rpm_ends_when_the_program_ends(self):
        self.check_ended_by_the_program(self.rpm_lock)

    @in_own_process
    def test_the_wait_for_a_locked_database_ends_when_the_program_ends(self):
        self.check_ended_by_the_program(self.database_lock)

    @in_own_process
    def test_a_lock_on_a_file_with_the_same_inode_number_on_another_device_is_not_reported(self):
        self.load()
        self.isolate()
        places = []
        for name in ("one", "other"):
            places.append(os.path.join(self.directory, name))
            os.mkdir(places[-1])
            subprocess.run(["mount", "-t", "tmpfs", "tmpfs", places[-1]], check=True)
            with open(places[-1] + "/lock", "w"):
                pass
        numbers = [os.stat(place + "/lock").st_ino for place in places]
        self.assertEqual(numbers[0], numbers[1])

        def take():
            lock = open(places[0] + "/lock", "w")
            fcntl.lockf(lock, fcntl.LOCK_EX)
            return lock
        self.holder = Holder(take)
        found = []
        for place in places:
            lock = self.module("locks").DatabaseLock("")
            lock._path = place + "/lock"
            lock._database = place + "/none"
            found.append(lock._holder())
        holder = self.holder.process
        self.assertEqual(found, ["%s (%d)" % (self.module("locks").nameOfProcess(holder), holder), ""])

    @in_own_process
    def test_the_user_can_give_up_waiting_for_a_locked_database(self):
        self.check_given_up(self.database_lock)

    def check_waits(self, take):
        """Another process takes the lock while the user sees the listing, and releases the lock while the script waits
        for it.
        """
        shown = self.prepare()

        def hold():
            self.holder = Holder(take)
            self.recording.before_answer = let_go_soon

        def let_go_soon():
            threading.Timer(1, self.let_go).start()
        self.recording.before_answer = hold
        self.assertEqual(self.changes(self.apply, removes=["almanac"], answers=[1, 1]), (set(), {ALMANAC}))
        self.assertEqual(self.recording.names().count("userconfirm"), 2)
        self.assertGreater(len(shown), 2)
        self.assertEqual(shown[-1], "Preparing to Run Transaction")
        self.assertTrue(self.yumio.systemChanged)
        self.assert_history_is_complete()

    @in_own_process
    def test_the_transaction_waits_for_the_transaction_lock_of_rpm(self):
        self.check_waits(self.rpm_lock)

    @in_own_process
    def test_the_transaction_waits_for_a_locked_database(self):
        self.check_waits(self.database_lock)

    @in_own_process
    def test_the_progress_bar_shows_the_next_step_after_the_wait_for_a_lock(self):
        shown = self.prepare()
        self.module("locks").DatabaseLock.FIRST_QUESTION = 600
        self.holder = Holder(self.rpm_lock)

        def show(text):
            shown.append(text)
            if len(shown) == 3:
                self.let_go()
        self.module("program").changeActivity = show
        self.assertEqual(self.changes(self.apply, removes=["almanac"]), (set(), {ALMANAC}))
        # Until the lock is free, the bar shows "Waiting for". Then it shows the next step.
        self.assertRegex(shown[2], "^Waiting for ")
        self.assertEqual(shown[3:], ["Resolve Dependencies"])

    @in_own_process
    def test_marks_are_refused_if_packages_change_during_the_wait_for_the_lock(self):
        self.prepare()

        def hold():
            self.holder = Holder(self.rpm_lock)
            self.recording.before_answer = change

        def change():
            self.let_go()
            self.rpm("-e", "almanac")
        self.recording.before_answer = hold
        with self.assertRaisesRegex(self.dnf.exceptions.Error, CHANGED):
            self.apply(removes=["almanac"], answers=[1, 1])
        self.check_outdated()

    @in_own_process
    def test_the_transaction_lock_of_rpm_is_already_held_when_dnf_begins_the_transaction(self):
        self.started()
        found = []
        before = self.dnf.Base.do_transaction

        def look(base, *arguments):
            reader, writer = os.pipe()
            if os.fork() == 0:
                try:
                    with open(self.sandbox.root + "/var/lib/rpm/.rpm.lock", "w") as lock:
                        fcntl.lockf(lock, fcntl.LOCK_EX | fcntl.LOCK_NB)
                    os.write(writer, b"free")
                except OSError:
                    os.write(writer, b"held")
                os._exit(0)
            found.append(os.read(reader, 4))
            return before(base, *arguments)
        self.dnf.Base.do_transaction = look
        self.apply(removes=["almanac"])
        self.assertEqual(found, [b"held"])

    @in_own_process
    def test_a_transaction_that_rpm_refuses_to_start_is_not_reported_as_interrupted(self):
        self.started()

        def refuse(base, cb):
            base.history.beg("0", [], [])
            raise self.dnf.exceptions.Error("Could not run transaction.")
        self.module("base").Base._run_transaction = refuse
        self.assert_refused("Could not run transaction", removes=["almanac"])
        self.assertFalse(self.yumio.systemChanged)
        self.assert_history_is_complete()


class HistoryTest(DatabaseTest):
    def damage(self, change):
        directory = self.sandbox.root + "/var/lib/dnf"
        for name in os.listdir(directory):
            if name.startswith("history.sqlite-"):
                os.unlink(os.path.join(directory, name))
        path = os.path.join(directory, "history.sqlite")
        with open(path, "rb") as stream:
            content = stream.read()
        with open(path, "wb") as stream:
            stream.write(change(content))
        return path

    def check_damaged(self, change):
        """Checks that packages can be collected but not changed, and that the message names the file and a remedy that
        works.
        """
        path = self.damage(change)
        self.load()
        self.yumio.lock()
        self.collect()
        self.recording.clear()
        self.assert_refused("(?s)^The transaction history is damaged: .*%s.*\nMove the file to another place. The "
                            "package manager then creates a new file.$" % path, removes=["almanac"], answers=[])
        self.assertFalse(self.yumio.systemChanged)
        os.rename(path, path + ".away")
        self.again()
        self.assertEqual(self.changes(self.apply, removes=["almanac"]), (set(), {ALMANAC}))

    @in_own_process
    def test_a_history_with_wrong_contents_is_reported(self):
        self.check_damaged(lambda content: b"nonsense" * 10000)

    @in_own_process
    def test_a_truncated_history_is_reported(self):
        self.check_damaged(lambda content: content[:len(content) // 2])

    @in_own_process
    def test_an_empty_history_is_reported(self):
        self.check_damaged(lambda content: b"")


class RestrictionTest(ScenarioTest):
    """Tests of the notice that the program shows at its start if changes are impossible or may not last."""

    def make_read_only(self, directory, wanted=True):
        subprocess.run(["mount", "-o", "remount,bind," + ("ro" if wanted else "rw"), directory], check=True)
        self.assertEqual(bool(os.statvfs(directory).f_flag & os.ST_RDONLY), wanted)

    @in_own_process
    def test_nothing_restricts_root_even_if_the_database_is_missing_or_belongs_to_another_user(self):
        yumio = self.load()
        directory = self.sandbox.root + DATABASE
        self.assertEqual(yumio.restriction(), "")
        os.chown(directory, 65534, 65534)
        os.chmod(directory, 0o700)
        self.assertEqual(yumio.restriction(), "")
        shutil.rmtree(directory)
        self.assertEqual(yumio.restriction(), "")

    @in_own_process
    def test_a_notice_names_the_database_on_a_read_only_file_system(self):
        self.started()
        self.isolate()
        directory = self.sandbox.root + DATABASE
        subprocess.run(["mount", "--bind", directory, directory], check=True)
        self.make_read_only(directory)
        self.assertEqual(self.yumio.restriction(),
                         "VYRE cannot change packages while the file system of %s is read-only" % directory)
        # The notice is true: dnf cannot change this system.
        self.assert_refused("Could not run transaction", removes=["almanac"], answers=[1])
        self.assertFalse(self.yumio.systemChanged)
        self.make_read_only(directory, False)
        self.assertEqual(self.yumio.restriction(), "")
        self.assertEqual(self.changes(self.apply, removes=["almanac"]), (set(), {ALMANAC}))

    @in_own_process
    def test_a_notice_names_the_directory_of_programs_on_a_read_only_file_system(self):
        self.started()
        self.isolate()
        directory = self.sandbox.root + "/usr"
        subprocess.run(["mount", "--bind", directory, directory], check=True)
        self.make_read_only(directory)
        self.assertEqual(self.yumio.restriction(),
                         "VYRE cannot change files below %s while their file system is read-only" % directory)
        self.assert_refused("Transaction test error", installs=["loupe"], answers=[1])
        self.make_read_only(directory, False)
        self.assertEqual(self.yumio.restriction(), "")

    @in_own_process
    def test_a_notice_says_how_an_image_restricts_changes(self):
        """Tests only the notice, because a whole operation would change the running system."""
        self.load()
        self.isolate()
        os.system("mount -t tmpfs none /run && touch /run/ostree-booted && mount --bind /usr /usr")
        self.make_read_only("/usr")
        self.assertEqual(self.yumio.restriction(), "")  # the image is not the managed root
        image = self.module("image")
        image.managedRoot = lambda: "/"
        read_only = "VYRE cannot change packages, because the programs of this system are in a read-only image"
        try:
            self.assertEqual(self.yumio.restriction(), read_only)
            self.make_read_only("/usr", False)
            discarding = "The programs of this system are in an image: the next start of the system may discard " \
                "changes to packages"
            self.assertEqual(self.yumio.restriction(), discarding)
            if hasattr(self.yumio.base.conf, "persistence"):
                self.yumio.base.conf.persistence = "persist"
                self.assertEqual(self.yumio.restriction(), read_only)
            os.unlink("/run/ostree-booted")
            self.assertEqual(self.yumio.restriction(), "")
        finally:
            image.managedRoot = self.module("paths").managedRoot

    @in_own_process
    def test_an_ordinary_user_who_is_root_inside_a_user_namespace_has_no_rights(self):
        yumio = self.load()
        os.chmod(os.path.dirname(self.sandbox.root), 0o755)
        os.setgroups([])
        os.setresgid(65534, 65534, 65534)
        os.setresuid(65534, 65534, 65534)
        library = ctypes.CDLL(None, use_errno=True)
        set_dumpable, new_user_namespace = 4, 0x10000000
        # Without this call, the files below /proc/self would still belong to root.
        library.prctl(set_dumpable, 1, 0, 0, 0)
        if library.unshare(new_user_namespace) != 0:
            self.skipTest("the kernel permits no user namespaces: " + os.strerror(ctypes.get_errno()))
        with open("/proc/self/uid_map", "w") as stream:
            stream.write("0 65534 1")
        self.assertEqual(os.geteuid(), 0)
        self.assertEqual(yumio.restriction(), "VYRE cannot change packages, because it has no right to change " +
                         self.sandbox.root + DATABASE)
