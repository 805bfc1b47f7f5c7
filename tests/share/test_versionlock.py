# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of version locks: the versionlock plug-in, its list, and changes to the list by the script and by the dnf
command.
"""

import os
import re
import subprocess
import sys

from scenario import ScenarioTest, in_own_process


class VersionLocksTest(ScenarioTest):
    def enter(self):
        super(VersionLocksTest, self).enter()
        self.settings = os.path.join(self.directory, "settings")
        self.locks = os.path.join(self.settings, "locks")
        os.makedirs(self.settings)
        self.write_settings("versionlock.conf", "[main]\nenabled=1\nlocklist=%s\n" % self.locks)
        # Even for a managed root, this plug-in writes to a file of the running system.
        self.write_settings("generate_completion_cache.conf", "[main]\nenabled=0\n")
        self.write_locks()
        self.configure("plugins=1", "pluginconfpath=" + self.settings)

    def write_settings(self, name, content):
        with open(os.path.join(self.settings, name), "w") as stream:
            stream.write(content)

    def write_locks(self, *lines):
        self.write_settings("locks", "".join(line + "\n" for line in lines))

    def content(self):
        """The contents of the list, with the times in its comments removed."""
        with open(self.locks) as stream:
            return re.sub(r"(?m)(# Added lock on ).*$", r"\1...", stream.read())

    def command(self, *arguments):
        root = self.sandbox.root
        return subprocess.run(
            ["/usr/bin/dnf", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
             "--setopt=reposdir=%s/etc/yum.repos.d" % root, "versionlock"] + list(arguments), check=True,
            env=self.sandbox.environment(), stdout=subprocess.PIPE, universal_newlines=True).stdout

    def rows(self, *names):
        """The packages that the rows of the table show for these names: the update if one exists, otherwise the
        installed or the available package.
        """
        found = []
        for name in names:
            for packages in (self.updates, self.installed, self.available):
                matching = [package for package in packages if package.name == name]
                if matching:
                    found.append(matching[0])
                    break
        self.assertEqual(len(found), len(names))
        return found

    def locked(self):
        fault, lines = self.yumio.versionLocks()
        self.assertEqual(fault, "")
        return lines

    def names_of_updates(self):
        return set(package.name for package in self.updates)

    @in_own_process
    def test_no_version_locks_are_offered_if_the_plug_in_is_not_loaded(self):
        self.write_settings("versionlock.conf", "[main]\nenabled=0\nlocklist=%s\n" % self.locks)
        self.started()
        self.assertIsNone(self.yumio.versionLocks())
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "^The versionlock plug-in is not loaded.$"):
            self.yumio.lockVersions(self.rows("abacus-cli"))
        self.configure("plugins=0")
        self.again()
        self.assertIsNone(self.yumio.versionLocks())

    @in_own_process
    def test_no_version_locks_are_offered_if_the_plug_in_lacks_a_function_that_the_script_uses(self):
        self.started()
        self.assertEqual(self.locked(), {})
        del sys.modules["dnf.plugin.dynamic.versionlock"]._read_locklist
        self.assertIsNone(self.yumio.versionLocks())

    @in_own_process
    def test_the_script_and_dnf_write_the_same_lines_to_the_lock_list(self):
        names = ("abacus-cli", "libcairn", "quillbase", "astrolabe")
        self.started()
        # libcairn is installed in two architectures, which need only one line.
        self.assertEqual(len([package for package in self.installed if package.name == "libcairn"]), 2)
        self.yumio.lockVersions(self.rows(*names))
        self.assert_no_faults()
        own = self.content()
        self.assertEqual(sorted(line for line in own.splitlines() if line and line[0] != "#"), [
            "abacus-cli-0:3.2.1-1.*", "astrolabe-0:5.6-1.*", "libcairn-0:2.1-1.*", "quillbase-1:2.4-1.*"])
        self.assertIn("Adding versionlock on: abacus-cli-0:3.2.1-1.*", self.recording.printed())
        self.write_locks()
        for name in sorted(names):
            self.command("add", name)
        self.assertEqual(own, self.content())
        # unlockVersions() and "versionlock delete" also remove the comment above a line.
        self.command("delete", "abacus-cli")
        theirs = self.content()
        with open(self.locks, "w") as stream:
            stream.write(own)
        self.yumio.unlockVersions(self.rows("abacus-cli"))
        self.assertEqual(self.content(), theirs)
        self.assertEqual(os.stat(self.locks).st_mode & 0o777, 0o644)

    @in_own_process
    def test_a_locked_package_has_no_update_until_it_is_unlocked(self):
        self.started()
        before = self.names_of_updates()
        self.assertLessEqual({"abacus-cli", "quillbase"}, before)
        self.yumio.lockVersions(self.rows("abacus-cli", "quillbase"))
        # The new locks take effect in the next collection; a reset is not necessary.
        self.collect()
        self.assertEqual(before - self.names_of_updates(), {"abacus-cli", "quillbase"})
        self.assertEqual(self.locked()["abacus-cli"], "abacus-cli-0:3.2.1-1.*")
        self.assertEqual(set(self.locked()), {"abacus-cli", "quillbase"})
        # Locking a locked package again has no effect.
        content = self.content()
        self.yumio.lockVersions(self.rows("abacus-cli"))
        self.assertEqual(self.content(), content)
        self.yumio.unlockVersions(self.rows("abacus-cli", "astrolabe"))
        self.collect()
        self.assertEqual(before - self.names_of_updates(), {"quillbase"})
        self.assertEqual(set(self.locked()), {"quillbase"})

    def updated(self, *names):
        """Updates these packages; returns the number of the transaction."""
        self.started()
        pairs = [[new, old] for new in self.updates for old in self.installed if new.name in names
                 and old.name == new.name]
        self.recording.answers = [1]
        self.yumio.apply([], pairs, [], [], [], [])
        return self.yumio.transactions()[0][0]

    def assert_undo_fails(self, number, reason):
        self.again()
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.yumio.replay("undo", number)
        self.assertEqual(str(caught.exception), "The transaction is impossible:\n  %s\nNothing was changed. VYRE keeps "
                         "all marks." % reason)
        self.assertEqual(self.recording.of("userconfirm"), [])

    @in_own_process
    def test_if_a_version_lock_prevents_an_undo_the_message_names_the_lock(self):
        excluded = "abacus-cli-3.2.1-1.x86_64: the configuration or a plug-in excludes this version"
        number = self.updated("abacus-cli")
        self.write_locks("abacus-cli-0:3.3.0-2.*")
        self.assert_undo_fails(number, "abacus-cli-3.2.1-1.x86_64: the version of abacus-cli is locked by "
                               "abacus-cli-0:3.3.0-2.*")
        self.write_locks("!abacus-cli-0:3.2.1-1.*")
        self.assert_undo_fails(number, excluded)
        self.write_locks()
        self.configure("exclude=abacus-cli-3.2.1-1")
        self.assert_undo_fails(number, excluded)

    @in_own_process
    def test_the_question_about_an_undo_names_the_version_lock_that_prevents_a_change(self):
        number = self.updated("abacus-cli", "barometer")
        self.write_locks("abacus-cli-0:3.3.0-2.*")
        self.again()
        self.recording.answers = [0]
        self.yumio.replay("undo", number)
        self.assertIn("These changes are impossible:\n  abacus-cli-3.2.1-1.x86_64: the version of abacus-cli is locked "
                      "by abacus-cli-0:3.3.0-2.*\n\nGo on without them?", self.recording.printed())
        self.recording.clear()
        self.recording.answers = [1, 1]
        self.assertEqual(self.changes(self.yumio.replay, "undo", number),
                         ({"barometer-1.0-1.x86_64"}, {"barometer-1.1-2.x86_64"}))

    @in_own_process
    def test_locking_an_available_package_locks_the_available_version(self):
        self.started()
        row, = self.rows("astrolabe")
        self.yumio.lockVersions([row])
        self.assertEqual(self.content(), "\n# Added lock on ...\nastrolabe-0:5.6-1.*\n")

    @in_own_process
    def test_locking_and_unlocking_keep_the_lines_that_exclude_versions(self):
        self.write_locks("!abacus-cli-0:3.3.0-2.*")
        self.started()
        self.assertEqual(self.locked(), {})
        self.yumio.lockVersions(self.rows("abacus-cli"))
        self.assertEqual(self.locked(), {"abacus-cli": "abacus-cli-0:3.2.1-1.*"})
        self.yumio.unlockVersions(self.rows("abacus-cli"))
        self.assertEqual(self.content(), "!abacus-cli-0:3.3.0-2.*\n")

    @in_own_process
    def test_unlocking_a_package_keeps_the_lines_that_exclude_its_versions(self):
        self.write_locks("abacus-cli", "!abacus-cli-0:3.3.0-2.*")
        self.started()
        self.assertEqual(self.locked(), {"abacus-cli": "abacus-cli"})
        self.yumio.unlockVersions(self.rows("abacus-cli"))
        self.assertEqual(self.content(), "!abacus-cli-0:3.3.0-2.*\n")

    @in_own_process
    def test_a_line_with_a_pattern_locks_all_matching_packages(self):
        self.write_locks("amberfont-*", "quillbase")
        self.started()
        locked = self.locked()
        self.assertEqual(locked["amberfont-sans"], "amberfont-*")
        self.assertEqual(set(locked), {"amberfont-sans", "amberfont-serif", "quillbase"})
        # A line that also locks another package is kept.
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.yumio.unlockVersions(self.rows("amberfont-sans", "quillbase"))
        self.assertEqual(str(caught.exception), "These packages are still locked: amberfont-sans\nVYRE keeps these "
                         "lines of %s, because they lock other packages too:\namberfont-*" % self.locks)
        self.assertEqual(self.content(), "amberfont-*\n")
        self.yumio.unlockVersions(self.rows("amberfont-sans", "amberfont-serif"))
        self.assertEqual(self.content(), "")

    @in_own_process
    def test_no_package_is_locked_and_the_reason_is_given_if_the_lock_list_cannot_be_decoded(self):
        self.started()
        with open(self.locks, "wb") as stream:
            stream.write(b"abacus-cli\xff\n")
        fault, locked = self.yumio.versionLocks()
        self.assertIn("can't decode byte 0xff", fault)
        self.assertEqual(locked, {})
        self.yumio.collectAdvisories()

    @in_own_process
    def test_the_reason_is_given_if_the_user_cannot_write_the_lock_list(self):
        self.started()
        self.assertEqual(self.locked(), {})
        require = self.module("versionlock").requireWritable
        missing = os.path.join(self.settings, "missing")
        require(missing)
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "list of locks " + missing):
            require(missing + "/list")
        for directory in (os.path.dirname(self.directory), self.directory):
            os.chmod(directory, 0o755)
        os.setuid(65534)
        reason = "You are not allowed to change the list of locks " + self.locks
        self.assertEqual(self.yumio.versionLocks()[0], reason)
        for change in (self.yumio.lockVersions, self.yumio.unlockVersions):
            with self.assertRaises(self.dnf.exceptions.Error) as caught:
                change(self.rows("abacus-cli"))
            self.assertEqual(str(caught.exception), reason)

    @in_own_process
    def test_the_message_gives_the_error_of_the_system_if_the_lock_list_cannot_be_changed(self):
        self.started()
        os.unlink(self.locks)
        os.mkdir(self.locks)
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "Is a directory"):
            self.yumio.lockVersions(self.rows("abacus-cli"))
        fault, lines = self.yumio.versionLocks()
        self.assertIn("Is a directory", fault)
        self.assertEqual(lines, {})
