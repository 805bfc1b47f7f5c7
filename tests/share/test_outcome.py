# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the outcome of a transaction: the numbers of changes, the failures, and whether a restart is needed."""

import os
import subprocess
import sys

import libdnf.transaction

from recordingmodule import DEPENDENCY
from scenario import ScenarioTest, in_own_process

from vyresandbox import catalogue, needs_groups
from vyresandbox.build import build_packages
from vyresandbox.package import Package

PLUG_IN = "dnf.plugin.dynamic.needs_restarting"


class OutcomeTest(ScenarioTest):
    def outcome(self):
        """The outcome of the last transaction, without numbers that are 0."""
        found = dict(self.yumio.outcome)
        self.assertEqual(set(found), {
            "installed", "updated", "downgraded", "reinstalled", "removed", "failed", "groupsInstalled",
            "groupsUpdated", "groupsRemoved", "modules", "reasonsChanged", "failedScriptlets", "restartNeeded",
            "keysImported"})
        return {name: value for name, value in found.items() if value}

    def fails(self, **actions):
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.apply(**actions)
        return str(caught.exception)


class NumbersTest(OutcomeTest):
    @in_own_process
    def test_installed_updated_and_removed_packages_are_counted_separately(self):
        self.started()
        self.assertIsNone(self.yumio.outcome)
        self.apply(installs=["astrolabe", "libbough"], updates=["abacus-cli", "quillbase"], removes=["almanac"])
        # The third installed package is libtwig, which libbough needs.
        self.assertEqual(self.outcome(), {"installed": 3, "updated": 2, "removed": 1})

    @in_own_process
    def test_an_obsoleted_package_counts_as_removed(self):
        self.started()
        self.apply(installs=["newpost"])
        self.assertEqual(self.outcome(), {"installed": 1, "removed": 1})

    @in_own_process
    def test_a_transaction_has_no_outcome_if_the_user_refuses_the_listing(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        self.apply(installs=["loupe"], answers=[0])
        self.assertIsNone(self.yumio.outcome)
        self.fails(installs=["moonbridge"])  # This transaction fails before its listing.
        self.assertIsNone(self.yumio.outcome)

    @in_own_process
    def test_the_undo_of_a_transaction_has_an_outcome(self):
        self.started()
        self.apply(installs=["astrolabe"], updates=["abacus-cli"])
        self.again()
        self.recording.answers = [1]
        self.yumio.replay("undo", self.yumio.transactions()[0][0])
        self.assertEqual(self.outcome(), {"downgraded": 1, "removed": 1})
        self.again()
        self.recording.answers = [1]
        self.yumio.replay("redo", self.yumio.transactions()[1][0])
        self.assertEqual(self.outcome(), {"installed": 1, "updated": 1})

    @needs_groups
    @in_own_process
    def test_groups_are_counted(self):
        self.started()
        self.apply(group_installs=["office"])
        self.assertEqual(self.outcome(), {"installed": 3, "groupsInstalled": 1})
        self.again()
        self.apply(removes=["easel", "palette-knife"])
        self.again()
        # The group's packages are already removed, so only the group is left to remove.
        self.apply(group_removes=["arts"])
        self.assertEqual(self.outcome(), {"groupsRemoved": 1})

    @in_own_process
    def test_a_transaction_counts_no_changes_if_tsflags_contains_test(self):
        self.configure("tsflags=test")
        self.started()
        self.assertIs(self.apply(installs=["astrolabe"], updates=["kernel"]), False)
        self.assertEqual(self.outcome(), {})

    @in_own_process
    def test_a_failure_before_the_first_change_counts_no_packages(self):
        self.started()
        self.fails(installs=["inkwell-classic", "inkwell-modern"])  # both contain the same file
        self.assertEqual(self.outcome(), {})


class ReasonsTest(OutcomeTest):
    def command(self, *arguments):
        root = self.sandbox.root
        subprocess.run(["/usr/bin/dnf", "--assumeyes", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
                        "--setopt=reposdir=%s/etc/yum.repos.d" % root] + list(arguments), check=True,
                       env=self.sandbox.environment(), stdout=subprocess.DEVNULL)

    def reason(self, name):
        """The installation reason of this package, as dnf reads it from the history."""
        self.again()
        return self.package(self.installed, name).reason

    def replay(self, kind, row):
        """Undoes or repeats the transaction in this row of the list. The newest transaction is in row 0."""
        self.recording.answers = [1]
        self.yumio.replay(kind, self.yumio.transactions()[row][0])

    @in_own_process
    def test_changed_reasons_are_counted(self):
        self.command("install", "libbough")
        self.command("mark", "install", "libtwig")
        self.started()
        self.replay("undo", 0)
        change = libdnf.transaction.TransactionItemAction_REASON_CHANGE
        self.assertEqual(self.recording.listed(), {"libtwig-1.0-1.x86_64": (change, DEPENDENCY)})
        self.assertEqual(self.outcome(), {"reasonsChanged": 1})
        self.assertEqual(self.reason("libtwig"), "dependency")

    @in_own_process
    def test_changed_reasons_and_changed_packages_are_counted_separately(self):
        self.command("install", "libbough")
        self.command("mark", "install", "libtwig")
        self.command("install", "astrolabe")
        self.started()
        self.replay("rollback", 2)
        self.assertEqual(self.outcome(), {"removed": 1, "reasonsChanged": 1})
        self.assertEqual(self.reason("libtwig"), "dependency")

    @in_own_process
    def test_the_changed_reason_of_an_updated_package_is_not_counted(self):
        self.started()
        resolve = self.dnf.Base.resolve

        def changesReasons(base, *arguments, **named):
            result = resolve(base, *arguments, **named)
            for package in base.sack.query().installed().filter(name=["abacus-cli", "almanac"]):
                base.history.set_reason(package, libdnf.transaction.TransactionItemReason_DEPENDENCY)
            return result
        self.dnf.Base.resolve = changesReasons
        self.apply(updates=["abacus-cli"])
        self.assertEqual(self.outcome(), {"updated": 1, "reasonsChanged": 1})
        self.assertEqual(self.reason("almanac"), "dependency")

    @in_own_process
    def test_a_reason_that_is_recorded_again_without_a_change_is_not_counted(self):
        self.configure("installonly_limit=2")
        self.started()
        words = []
        self.recording.before_answer = lambda: words.extend(
            item.action_name for item in self.yumio.base.transaction)
        self.apply(updates=["kernel"])
        self.assertIn("Reason Change", words)
        self.assertEqual(self.outcome(), {"installed": 1, "removed": 1, "restartNeeded": True})

    @in_own_process
    def test_no_changed_reasons_are_counted_if_the_history_is_not_written(self):
        self.command("install", "libbough")
        self.command("mark", "install", "libtwig")
        self.configure("history_record=0")
        self.started()
        self.replay("undo", 0)
        self.assertEqual(self.outcome(), {})
        self.assertEqual(self.reason("libtwig"), "user")

    @in_own_process
    def test_no_changed_reasons_are_counted_if_the_history_lacks_the_end_of_the_transaction(self):
        self.command("install", "libbough")
        self.command("mark", "install", "libtwig")
        self.started()

        def fails(base, callback=None):
            raise OSError("no space")
        self.dnf.Base._verify_transaction = fails
        self.replay("undo", 0)
        self.assertEqual(self.outcome(), {})
        self.assertEqual(self.reason("libtwig"), "user")

    @in_own_process
    def test_no_changed_reasons_are_counted_if_the_transaction_is_only_a_test(self):
        self.command("install", "libbough")
        self.command("mark", "install", "libtwig")
        self.configure("tsflags=test")
        self.started()
        self.replay("undo", 0)
        self.assertEqual(self.outcome(), {})
        self.assertEqual(self.reason("libtwig"), "user")

    @in_own_process
    def test_no_changed_reasons_are_counted_if_a_package_has_failed(self):
        self.command("install", "libbough")
        self.command("install", "--setopt=tsflags=noscripts", "brokenlatch")
        self.command("remove", "brokenlatch")
        self.command("mark", "install", "libtwig")
        self.started()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "brokenlatch"):
            self.replay("rollback", 2)
        self.assertEqual(self.outcome(), {"failed": 1, "failedScriptlets": ["brokenlatch"]})
        self.assertEqual(self.reason("libtwig"), "user")


class FailureTest(OutcomeTest):
    @in_own_process
    def test_the_package_of_a_failed_scriptlet_is_named(self):
        self.started()
        self.apply(installs=["limpgate", "astrolabe"])
        self.assertEqual(self.outcome(), {"installed": 2, "failedScriptlets": ["limpgate"]})
        self.assertIn("The scriptlet of limpgate-1.0-1.noarch failed.", self.recording.errors())
        self.again()
        self.apply(removes=["astrolabe"])
        self.assertEqual(self.outcome(), {"removed": 1})

    @in_own_process
    def test_failed_and_changed_packages_are_counted_separately(self):
        self.started()
        text = self.fails(installs=["brokenlatch", "astrolabe", "loupe"], removes=["stickyburr"])
        self.assertIn("The transaction failed for:\nbrokenlatch-1.0-1.noarch\nstickyburr-1.0-1.noarch", text)
        found = self.outcome()
        self.assertEqual(sorted(found.pop("failedScriptlets")), ["brokenlatch", "stickyburr"])
        self.assertEqual(found, {"installed": 2, "failed": 2})
        self.assertIn("The scriptlet of brokenlatch-1.0-1.noarch failed.", self.recording.errors())

    @in_own_process
    def test_changes_are_counted_even_if_the_transaction_raises_an_exception(self):
        self.started()

        def breaksOff(base, callback):
            base._ts.run(callback.callback, "")
            raise RuntimeError("broken off")
        self.dnf.Base._run_transaction = breaksOff
        with self.assertRaisesRegex(RuntimeError, "broken off"):
            self.apply(installs=["astrolabe"], removes=["stickyburr"])
        self.assertEqual(self.outcome(), {"installed": 1, "failed": 1, "failedScriptlets": ["stickyburr"]})

    @in_own_process
    def test_the_package_that_contains_a_failed_trigger_is_named(self):
        """The failed scriptlet belongs to "alarm", but dnf names the package that has caused the trigger."""
        # The package builder writes "%" and the key as the heading of a section. It cannot write the arguments of a
        # trigger section. So the key contains the whole trigger section, and the name of the next section.
        scripts = {"triggerin -n alarm -- loupe\nexit 7\n%post": "true"}
        build_packages([Package("alarm", "1.0", "Fails if a loupe comes", arch="noarch", scripts=scripts)],
                       catalogue.CHANGELOGS, self.sandbox.repository("sandbox-file"))
        self.index("sandbox-file")
        self.started()
        self.apply(installs=["alarm"])
        self.again()
        self.apply(installs=["loupe"])
        self.assertEqual(self.outcome(), {"installed": 1, "failedScriptlets": ["alarm"]})
        self.assertIn("The scriptlet of alarm-1.0-1.noarch failed.", self.recording.errors())


class RestartTest(OutcomeTest):
    def without_plug_in(self):
        sys.modules.pop(PLUG_IN, None)

    @in_own_process
    def test_a_new_kernel_needs_a_restart(self):
        self.started()
        self.without_plug_in()
        self.apply(updates=["kernel"])
        self.assertEqual(self.outcome(), {"installed": 1, "restartNeeded": True})
        self.again()
        self.without_plug_in()
        self.apply(removes=["kernel"])
        self.assertEqual(self.outcome(), {"removed": 3})

    @in_own_process
    def test_the_package_list_of_the_needs_restarting_plug_in_decides_whether_a_restart_is_needed(self):
        self.started()
        sys.modules[PLUG_IN] = type(sys)(PLUG_IN)
        sys.modules[PLUG_IN].NEED_REBOOT = ["astrolabe"]
        self.apply(installs=["astrolabe"])
        self.assertTrue(self.yumio.outcome["restartNeeded"])
        self.again()
        sys.modules[PLUG_IN] = type(sys)(PLUG_IN)
        sys.modules[PLUG_IN].NEED_REBOOT = ["astrolabe"]
        self.apply(updates=["kernel"])
        self.assertFalse(self.yumio.outcome["restartNeeded"])

    @in_own_process
    def test_files_in_the_settings_of_the_needs_restarting_plug_in_add_packages_to_the_list(self):
        self.write("/etc/dnf/plugins/needs-restarting.d/ours.conf", "astrolabe\n\n( no name\n")
        self.write("/etc/dnf/plugins/needs-restarting.d/ours.txt", "loupe\n")
        self.started()
        self.apply(installs=["loupe"])
        self.assertFalse(self.yumio.outcome["restartNeeded"])
        self.again()
        self.apply(installs=["astrolabe"])
        self.assertTrue(self.yumio.outcome["restartNeeded"])

    @in_own_process
    def test_a_package_that_provides_a_listed_name_needs_a_restart(self):
        self.write("/etc/dnf/plugins/needs-restarting.d/ours.conf", "installonlypkg(kernel)\n")
        self.started()
        sys.modules[PLUG_IN] = type(sys)(PLUG_IN)
        sys.modules[PLUG_IN].NEED_REBOOT = []
        self.apply(updates=["kernel"])
        self.assertTrue(self.yumio.outcome["restartNeeded"])

    @in_own_process
    def test_the_package_list_of_vyre_has_all_names_in_the_list_of_the_needs_restarting_plug_in(self):
        """The test reads the file of the plug-in, because the modules that the plug-in imports may be missing."""
        self.started()
        path = os.path.join(os.path.dirname(os.path.dirname(self.dnf.__file__)), "dnf-plugins", "needs_restarting.py")
        if not os.path.exists(path):
            self.skipTest("the plug-in is not installed")
        with open(path) as stream:
            text = stream.read()
        begin = text.index("NEED_REBOOT = [")
        values = {}
        exec(text[begin:text.index("]", begin) + 1], values)
        self.assertLessEqual(set(values["NEED_REBOOT"]), set(self.module("outcome").NEED_REBOOT))
