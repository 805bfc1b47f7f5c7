# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the record of a transaction in the history, and of the downloaded packages after a transaction."""

import glob
import json
import os
import sqlite3
import subprocess

from scenario import ScenarioTest, in_own_process

from vyresandbox import needs_groups


class OutcomeTest(ScenarioTest):
    def enter(self):
        super(OutcomeTest, self).enter()
        self.configure("cachedir=/var/cache/yum")

    def transactions(self, root=None):
        """For each transaction: the command line, the user, the state, whether its end is recorded, and the comment."""
        with sqlite3.connect(os.path.join(root or self.sandbox.root, "var/lib/dnf/history.sqlite")) as connection:
            return connection.execute("select cmdline, user_id, state, dt_end is not null, comment from trans "
                                      "order by id").fetchall()

    def command(self, sandbox, *arguments):
        """Runs the dnf command on this copy, with the cache directory that the script uses. Returns the exit status."""
        root = sandbox.root
        return subprocess.run(
            ["/usr/bin/dnf", "--assumeyes", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
             "--setopt=reposdir=%s/etc/yum.repos.d" % root] + list(arguments),
            env=sandbox.environment(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode

    def twin(self):
        """A second copy of the sandbox, for the dnf command."""
        twin = self.sandbox.copy(os.path.join(self.directory, "twin"))
        for name in os.listdir(os.path.join(self.sandbox.root, "etc/yum.repos.d")):
            with open(self.repository_file(name[:-5])) as stream:
                content = stream.read()
            with open(os.path.join(twin.root, "etc/yum.repos.d", name), "w") as stream:
                stream.write(content)
        return twin

    def downloaded(self, root=None):
        return sorted(os.path.basename(path) for path in glob.glob(
            os.path.join(root or self.sandbox.root, "var/cache/yum/*/packages/*.rpm")))

    def recorded(self, root=None):
        path = os.path.join(root or self.sandbox.root, "var/cache/yum/tempfiles.json")
        if not os.path.exists(path):
            return []
        with open(path) as stream:
            return sorted(os.path.basename(name) for name in json.load(stream))


class HistoryTest(OutcomeTest):
    @needs_groups
    @in_own_process
    def test_a_recorded_transaction_has_a_command_line_a_user_and_a_return_code(self):
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "astrolabe"), 0)
        expected = self.transactions(twin.root)[-1]
        self.started()
        self.apply(installs=["astrolabe", "loupe"], updates=["abacus-cli"], removes=["almanac"],
                   group_installs=["games"])
        line, *rest = self.transactions()[-1]
        self.assertEqual(line, "vyre: install astrolabe loupe; upgrade abacus-cli; remove almanac; group install games")
        self.assertEqual(rest, list(expected[1:]))
        root = self.sandbox.root
        info = subprocess.run(["/usr/bin/dnf", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
                               "history", "info", "last"], env=self.sandbox.environment(), stdout=subprocess.PIPE,
                              universal_newlines=True, check=True).stdout
        self.assertRegex(info, r"Return-Code +: Success")
        self.assertRegex(info, r"Command Line +: vyre: install astrolabe loupe; ")

    @in_own_process
    def test_a_failed_transaction_is_recorded_with_the_same_return_code_as_by_dnf(self):
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "brokenlatch"), 1)
        expected = self.transactions(twin.root)[-1]
        self.started()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "brokenlatch"):
            self.apply(installs=["brokenlatch"])
        line, *rest = self.transactions()[-1]
        self.assertEqual((line, rest), ("vyre: install brokenlatch", list(expected[1:])))

    @needs_groups
    @in_own_process
    def test_a_transaction_that_changes_only_groups_is_recorded_in_the_history(self):
        twin = self.twin()
        for arguments in (("install", "pebble-go", "hedgerow", "orrery"), ("group", "install", "games")):
            self.assertEqual(self.command(twin, *arguments), 0)
        expected = self.transactions(twin.root)[-1]
        self.started()
        self.apply(installs=["pebble-go", "hedgerow", "orrery"])
        self.again()
        self.assertEqual(self.changes(self.apply, group_installs=["games"]), (set(), set()))
        line, *rest = self.transactions()[-1]
        self.assertEqual((line, rest), ("vyre: group install games", list(expected[1:])))

    @in_own_process
    def test_the_comment_option_and_the_history_record_option_affect_the_history(self):
        self.configure("comment=why not")
        self.started()
        before = len(self.transactions())
        self.apply(installs=["astrolabe"])
        self.assertEqual(self.transactions()[-1][4], "why not")
        self.configure("history_record=0")
        self.again()
        self.apply(installs=["loupe"])
        self.assertEqual(len(self.transactions()), before + 1)

    @in_own_process
    def test_recorded_command_lines_are_shortened_and_have_no_control_characters(self):
        self.load()
        line = self.module("history").commandLine
        self.assertEqual(line(("install", ["b", "a", "b"]), ("remove", [])), "vyre: install a b")
        self.assertEqual(line(("install", ["a\n\x1b[2J\udce9\0\u202ex", "\u00e4"])), "vyre: install a??[2J???x \u00e4")
        many = line(("install", ["package-%04d" % i for i in range(5000)]))
        self.assertEqual(len(many), 1000)
        self.assertTrue(many.startswith("vyre: install package-0000 package-0001 ") and many.endswith("..."))


class TestOnlyTest(OutcomeTest):
    @in_own_process
    def test_a_test_transaction_changes_nothing_and_succeeds(self):
        self.configure("tsflags=test")
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "astrolabe"), 0)
        self.started()
        before = self.transactions()
        announced = []
        self.module("program").addBeforeListing = lambda text: announced.append(
            (text, list(self.recording.answers)))
        self.assertIs(self.apply(installs=["astrolabe"], removes=["almanac"]), False)
        # This text was added to the listing before the user answered the question.
        self.assertEqual(announced, [(
            "This is only a test, because the tsflags option contains test. dnf downloads and checks the "
            "packages;\n"
            "it installs, updates and removes nothing.\n\n", [1])])
        self.assertEqual(self.yumio.remarks, [
            "The transaction was only tested, because the tsflags option contains test. Nothing was changed."])
        self.assertEqual(self.transactions(), before)
        self.assertFalse(self.yumio.systemChanged)
        self.assertNotIn("astrolabe-5.6-1.x86_64", self.sandbox.installed())
        self.assertIn("almanac-1.9-1.noarch", self.sandbox.installed())
        self.assertTrue([text for level, text in self.recording.of("log") if "check the transaction" in text])
        # The script records the downloaded packages for their later removal, as dnf does.
        self.assertEqual((self.downloaded(), self.recorded()),
                         (self.downloaded(twin.root), self.recorded(twin.root)))
        self.assertEqual(self.recorded(), ["astrolabe-5.6-1.x86_64.rpm"])

    @needs_groups
    @in_own_process
    def test_a_change_to_groups_alone_is_carried_out_even_if_tsflags_contains_test(self):
        self.started()
        self.apply(removes=["easel", "palette-knife"])
        self.configure("tsflags=test")
        self.again()
        announced = []
        self.module("program").addBeforeListing = announced.append
        before = self.transactions()
        self.assertIs(self.apply(group_removes=["arts"]), True)
        self.assertEqual(len(self.transactions()), len(before) + 1)
        # The text before the listing does not mention a test.
        self.assertEqual((announced, self.yumio.remarks), (
            ["The group Arts has no packages that can be removed; only its record is removed.\n\n"], []))

    @in_own_process
    def test_an_impossible_transaction_is_refused_even_if_tsflags_contains_test(self):
        self.configure("tsflags=test")
        self.started()
        self.assert_refused("libtide", updates=["tidewatch"])

    @in_own_process
    def test_the_listing_of_an_ordinary_transaction_has_no_text_about_tests(self):
        self.started()
        announced = []
        self.module("program").addBeforeListing = announced.append
        self.apply(installs=["astrolabe"])
        self.assertEqual(announced, [])

    @in_own_process
    def test_the_downloadonly_option_in_the_configuration_has_no_effect(self):
        self.configure("downloadonly=1")
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "astrolabe"), 0)
        self.assertIn("astrolabe-5.6-1.x86_64", twin.installed())
        self.started()
        self.apply(installs=["astrolabe"])
        self.assertIn("astrolabe-5.6-1.x86_64", self.sandbox.installed())


class DownloadedPackagesTest(OutcomeTest):
    @in_own_process
    def test_downloaded_packages_are_removed_after_a_success(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.assertEqual((self.downloaded(), self.recorded()), ([], []))
        self.yumio.unlock()
        self.assertEqual((self.downloaded(), self.recorded()), ([], []))

    @in_own_process
    def test_downloaded_packages_are_kept_if_keepcache_is_set(self):
        self.configure("keepcache=1")
        self.started()
        self.apply(installs=["astrolabe"])
        self.yumio.unlock()
        self.assertEqual((self.downloaded(), self.recorded()), (["astrolabe-5.6-1.x86_64.rpm"], []))

    @in_own_process
    def test_after_a_failure_the_log_says_how_to_remove_downloaded_packages(self):
        self.started()
        self.run_failing_transaction()
        texts = [text for level, text in self.recording.of("log") if "cache" in text.lower()]
        self.assertIn("You can remove the downloaded packages with Clean Packages in the Cache menu.", texts)
        self.assertEqual([text for text in texts if "dnf clean" in text], [])

    def run_failing_transaction(self):
        """Runs a transaction that fails after its downloads."""
        def no(*unused):
            raise self.dnf.exceptions.Error("no")

        signatures = self.module("signatures")
        signatures.checkSignatures, kept = no, signatures.checkSignatures
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "^no$"):
            self.apply(installs=["astrolabe"])
        signatures.checkSignatures = kept

    @in_own_process
    def test_downloaded_packages_stay_recorded_after_a_failure_until_the_next_success(self):
        self.started()
        self.run_failing_transaction()
        self.assertEqual((self.downloaded(), self.recorded()), (["astrolabe-5.6-1.x86_64.rpm"],) * 2)
        self.again()
        self.assertEqual((self.downloaded(), self.recorded()), (["astrolabe-5.6-1.x86_64.rpm"],) * 2)
        self.apply(installs=["loupe"])
        self.assertEqual((self.downloaded(), self.recorded()), ([], []))
        self.yumio.unlock()
        self.assertEqual((self.downloaded(), self.recorded()), ([], []))

    @in_own_process
    def test_vyre_and_dnf_each_remove_the_packages_that_the_other_program_has_downloaded(self):
        self.started()
        self.run_failing_transaction()
        self.yumio.unlock()
        self.assertEqual(self.command(self.sandbox, "install", "loupe"), 0)
        self.assertEqual((self.downloaded(), self.recorded()), ([], []))
        self.assertEqual(self.command(self.sandbox, "install", "--downloadonly", "astrolabe"), 0)
        self.assertEqual(self.recorded(), ["astrolabe-5.6-1.x86_64.rpm"])
        self.started()
        self.apply(installs=["chatterbox"])
        self.assertEqual((self.downloaded(), self.recorded()), ([], []))

    @in_own_process
    def test_vyre_and_dnf_keep_the_same_downloads_after_a_package_has_failed(self):
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "brokenlatch"), 1)
        self.started()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "brokenlatch"):
            self.apply(installs=["brokenlatch"])
        self.assertEqual((self.downloaded(), self.recorded()),
                         (self.downloaded(twin.root), self.recorded(twin.root)))

    @in_own_process
    def test_unlocking_closes_the_dnf_base(self):
        self.started()
        base = self.yumio.base
        self.yumio.unlock()
        self.assertTrue(base._closed)
        self.yumio.unlock()  # a second call has no effect
