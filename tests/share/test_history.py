"""What a transaction leaves beside the packages: its entry in the history, and what was downloaded for it."""

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
        """Command line, user and state of each."""
        with sqlite3.connect(os.path.join(root or self.sandbox.root, "var/lib/dnf/history.sqlite")) as connection:
            return connection.execute("select cmdline, user_id, state, dt_end is not null, comment from trans "
                                      "order by id").fetchall()

    def command(self, sandbox, *arguments):
        """Runs the package manager's own command with the same cache; returns its status."""
        root = sandbox.root
        return subprocess.run(
            ["/usr/bin/dnf", "--assumeyes", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
             "--setopt=reposdir=%s/etc/yum.repos.d" % root] + list(arguments),
            env=sandbox.environment(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).returncode

    def twin(self):
        """Another copy of the system, for the package manager's own command."""
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

    def remembered(self, root=None):
        path = os.path.join(root or self.sandbox.root, "var/cache/yum/tempfiles.json")
        if not os.path.exists(path):
            return []
        with open(path) as stream:
            return sorted(os.path.basename(name) for name in json.load(stream))


class HistoryTest(OutcomeTest):
    @needs_groups
    @in_own_process
    def test_a_transaction_has_a_command_line_a_user_and_a_return_code(self):
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
    def test_a_failed_one_has_the_return_code_that_the_command_gives_it(self):
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
    def test_groups_alone_are_in_the_history(self):
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
    def test_a_comment_and_no_record_at_all(self):
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
    def test_command_lines_are_short_and_harmless(self):
        self.load()
        line = self.script["commandLine"]
        self.assertEqual(line(("install", ["b", "a", "b"]), ("remove", [])), "vyre: install a b")
        self.assertEqual(line(("install", ["a\n\x1b[2J\udce9\0\u202ex", "\u00e4"])), "vyre: install a??[2J???x \u00e4")
        many = line(("install", ["package-%04d" % i for i in range(5000)]))
        self.assertEqual(len(many), 1000)
        self.assertTrue(many.startswith("vyre: install package-0000 package-0001 ") and many.endswith("..."))


class TestOnlyTest(OutcomeTest):
    @in_own_process
    def test_a_test_transaction_changes_nothing_and_is_no_failure(self):
        self.configure("tsflags=test")
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "astrolabe"), 0)
        self.started()
        before = self.transactions()
        self.assertIs(self.apply(installs=["astrolabe"], removes=["almanac"]), False)
        self.assertEqual(self.yumio.remarks, [
            "The transaction was only tested, because tsflags has test. Nothing was changed."])
        self.assertEqual(self.transactions(), before)
        self.assertFalse(self.yumio.systemChanged)
        self.assertNotIn("astrolabe-5.6-1.x86_64", self.sandbox.installed())
        self.assertIn("almanac-1.9-1.noarch", self.sandbox.installed())
        self.assertTrue([text for level, text in self.recording.of("log") if "check the transaction" in text])
        # What was downloaded is remembered, as with the command.
        self.assertEqual((self.downloaded(), self.remembered()),
                         (self.downloaded(twin.root), self.remembered(twin.root)))
        self.assertEqual(self.remembered(), ["astrolabe-5.6-1.x86_64.rpm"])

    @in_own_process
    def test_one_that_cannot_run_is_a_failure(self):
        self.configure("tsflags=test")
        self.started()
        self.assert_refused("libtide", updates=["tidewatch"])

    @in_own_process
    def test_an_option_that_counts_on_the_command_line_only(self):
        self.configure("downloadonly=1")
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "astrolabe"), 0)
        self.assertIn("astrolabe-5.6-1.x86_64", twin.installed())
        self.started()
        self.apply(installs=["astrolabe"])
        self.assertIn("astrolabe-5.6-1.x86_64", self.sandbox.installed())


class DownloadedPackagesTest(OutcomeTest):
    @in_own_process
    def test_they_are_removed_after_a_success(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.assertEqual((self.downloaded(), self.remembered()), ([], []))
        self.yumio.unlock()
        self.assertEqual((self.downloaded(), self.remembered()), ([], []))

    @in_own_process
    def test_they_are_kept_when_the_configuration_says_so(self):
        self.configure("keepcache=1")
        self.started()
        self.apply(installs=["astrolabe"])
        self.yumio.unlock()
        self.assertEqual((self.downloaded(), self.remembered()), (["astrolabe-5.6-1.x86_64.rpm"], []))

    def refused(self):
        """A transaction that fails after its packages were downloaded."""
        def no(*unused):
            raise self.dnf.exceptions.Error("no")

        self.yumio._checkSignatures, kept = no, self.yumio._checkSignatures
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "^no$"):
            self.apply(installs=["astrolabe"])
        self.yumio._checkSignatures = kept

    @in_own_process
    def test_after_a_failure_they_are_remembered_until_a_success(self):
        self.started()
        self.refused()
        self.assertEqual((self.downloaded(), self.remembered()), (["astrolabe-5.6-1.x86_64.rpm"],) * 2)
        self.again()
        self.assertEqual((self.downloaded(), self.remembered()), (["astrolabe-5.6-1.x86_64.rpm"],) * 2)
        self.apply(installs=["loupe"])
        self.assertEqual((self.downloaded(), self.remembered()), ([], []))
        self.yumio.unlock()
        self.assertEqual((self.downloaded(), self.remembered()), ([], []))

    @in_own_process
    def test_the_command_removes_what_we_have_left_and_we_what_it_has_left(self):
        self.started()
        self.refused()
        self.yumio.unlock()
        self.assertEqual(self.command(self.sandbox, "install", "loupe"), 0)
        self.assertEqual((self.downloaded(), self.remembered()), ([], []))
        self.assertEqual(self.command(self.sandbox, "install", "--downloadonly", "astrolabe"), 0)
        self.assertEqual(self.remembered(), ["astrolabe-5.6-1.x86_64.rpm"])
        self.started()
        self.apply(installs=["chatterbox"])
        self.assertEqual((self.downloaded(), self.remembered()), ([], []))

    @in_own_process
    def test_after_a_package_that_failed_they_are_as_the_command_leaves_them(self):
        twin = self.twin()
        self.assertEqual(self.command(twin, "install", "brokenlatch"), 1)
        self.started()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "brokenlatch"):
            self.apply(installs=["brokenlatch"])
        self.assertEqual((self.downloaded(), self.remembered()),
                         (self.downloaded(twin.root), self.remembered(twin.root)))

    @in_own_process
    def test_the_end_of_the_program_closes_everything(self):
        self.started()
        base = self.yumio.base
        self.yumio.unlock()
        self.assertTrue(base._closed)
        self.yumio.unlock()  # once is enough
