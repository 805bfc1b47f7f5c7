# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of transactions, from the marked actions to the changed system."""

import glob
import gzip
import os
import subprocess

from recordingmodule import (CLEAN, DEPENDENCY, GROUP, INSTALL, OBSOLETED, REMOVE, UPGRADE, UPGRADED, USER, WEAK)
from scenario import ScenarioTest, in_own_process

from vyresandbox import needs_groups

NOTHING = (set(), set())


class InstallTest(ScenarioTest):
    @in_own_process
    def test_dependencies_are_installed(self):
        self.started()
        changed = self.changes(self.apply, installs=["orchard"])
        listed = self.recording.listed()
        self.assertEqual(listed["orchard-3.0-1.x86_64"], (INSTALL, USER))
        for nevra in ("libbough-1.1-1.x86_64", "libtwig-1.0-1.x86_64", "orchard-lang-3.0-1.noarch"):
            self.assertEqual(listed[nevra], (INSTALL, DEPENDENCY))
        for nevra in ("orchard-plugins-3.0-1.noarch", "orchard-thumbnails-3.0-1.noarch"):
            self.assertEqual(listed[nevra], (INSTALL, WEAK))
        self.assertNotIn("orchard-samples-3.0-1.noarch", listed)
        self.assertEqual(changed, (set(listed), set()))
        self.assertEqual(set(item["from_repo"] for item in self.recording.of("listTransaction")[0]),
                         {"sandbox-http"})

    @in_own_process
    def test_an_installation_calls_the_functions_of_the_program_in_the_right_order(self):
        self.started()
        self.apply(installs=["chatterbox"])
        self.assertEqual(self.recording.order("rpmtransScriptout"), [
            "listTransaction", "reportDownloadSize", "userconfirm", "downloadRemotePayloads", "downloadStart",
            "downloadProgress", "downloadEnd", "gpgsigcheck", "rpmtransInit", "rpmtransDel", "rpmtransInit",
            "rpmtransProgress", "rpmtransDel", "postTransactionOutput"])
        self.assertEqual(self.recording.of("rpmtransInit"), [True, False])
        self.assertEqual(self.recording.of("reportDownloadSize"), [
            {"chatterbox": self.package(self.available, "chatterbox").installsize}])
        actions = [action for name, action, done in self.recording.of("rpmtransProgress")]
        self.assertIn(INSTALL, actions)
        self.assertIn(103, actions)
        self.assertEqual(self.recording.errors(), [])

    @in_own_process
    def test_the_next_collection_lists_the_newly_installed_packages(self):
        self.started()
        self.apply(installs=["chatterbox"])
        self.again()
        self.package(self.installed, "chatterbox")

    @in_own_process
    def test_the_installation_of_a_suite_installs_its_members(self):
        self.started()
        added, gone = self.changes(self.apply, installs=["vyre-office-suite"])
        self.assertEqual((added, gone), ({
            "vyre-office-suite-1.0-1.noarch", "ledger-calc-2.0-1.x86_64", "scribe-writer-2.0-1.x86_64",
            "lectern-slides-2.0-1.x86_64"}, set()))

    @in_own_process
    def test_a_package_can_be_installed_in_both_architectures(self):
        self.started()
        both = [package for package in self.available if package.name == "libmoss"]
        self.recording.answers = [1]
        self.yumio.apply(both, [], [], [], [], [])
        self.assert_no_faults()
        self.assertLessEqual({"libmoss-0.5-1.i686", "libmoss-0.5-1.x86_64"}, self.sandbox.installed())

    @in_own_process
    def test_a_package_replaces_the_installed_package_that_it_obsoletes(self):
        self.started()
        changed = self.changes(self.apply, installs=["newpost"])
        self.assertEqual(changed, ({"newpost-2.0-1.x86_64"}, {"oldpost-1.8-1.x86_64"}))
        self.assertEqual(self.recording.listed()["oldpost-1.8-1.x86_64"][0], OBSOLETED)

    @in_own_process
    def test_refusing_the_listing_changes_nothing(self):
        self.started()
        groups = [] if self.sandbox.without_groups else ["games"]
        changed = self.changes(self.apply, installs=["orchard"], removes=["almanac"], group_installs=groups,
                               answers=[0])
        self.assertEqual(changed, NOTHING)
        self.assertEqual(self.recording.names()[-1:], ["userconfirm"])
        self.assertIsNone(self.yumio.base.history.group.get("games"))
        # The next transaction does not contain the refused actions.
        changed = self.changes(self.apply, installs=["astrolabe"])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, set()))
        self.assertEqual(set(self.recording.listed()), {"astrolabe-5.6-1.x86_64"})
        self.again()
        self.assertIsNone(self.yumio.base.history.group.get("games"))

    @in_own_process
    def test_a_second_transaction_contains_no_items_of_the_first_transaction(self):
        self.started()
        self.apply(installs=["astrolabe"])
        self.again()
        changed = self.changes(self.apply, installs=["loupe"], removes=["almanac"])
        self.assertEqual(changed, ({"loupe-45.0-1.x86_64"}, {"almanac-1.9-1.noarch"}))
        self.assertEqual(set(self.recording.listed()), {"loupe-45.0-1.x86_64", "almanac-1.9-1.noarch"})
        self.assertEqual(set(name for name, action, done in self.recording.of("rpmtransProgress")),
                         {"loupe", "almanac"})


class UpdateTest(ScenarioTest):
    @in_own_process
    def test_an_update_replaces_the_installed_version(self):
        self.started()
        changed = self.changes(self.apply, updates=["abacus-cli", "quillbase"])
        self.assertEqual(changed, ({"abacus-cli-3.3.0-2.x86_64", "quillbase-2:1.0-1.x86_64"},
                                   {"abacus-cli-3.2.1-1.x86_64", "quillbase-1:2.4-1.x86_64"}))
        listed = self.recording.listed()
        self.assertEqual(listed["abacus-cli-3.3.0-2.x86_64"][0], UPGRADE)
        self.assertEqual(listed["abacus-cli-3.2.1-1.x86_64"][0], UPGRADED)
        self.assertEqual(self.recording.errors(), [])

    @in_own_process
    def test_a_new_kernel_does_not_replace_installed_kernels(self):
        self.started()
        self.assertEqual(len([package for package in self.installed if package.name == "kernel"]), 2)
        changed = self.changes(self.apply, updates=["kernel"])
        self.assertEqual(changed, ({"kernel-6.1.31-1.x86_64"}, set()))
        self.assertEqual(list(self.recording.listed()), ["kernel-6.1.31-1.x86_64"])
        self.assertEqual(self.recording.listed()["kernel-6.1.31-1.x86_64"][0], INSTALL)

    @in_own_process
    def test_a_new_kernel_removes_the_oldest_kernel_if_installonly_limit_is_reached(self):
        self.configure("installonly_limit=2")
        self.started()
        changed = self.changes(self.apply, updates=["kernel"])
        self.assertEqual(changed, ({"kernel-6.1.31-1.x86_64"}, {"kernel-6.1.20-1.x86_64"}))

    @in_own_process
    def test_a_reason_that_dnf_records_again_without_a_change_is_not_listed(self):
        self.configure("installonly_limit=2")
        self.started()
        words = []
        self.recording.before_answer = lambda: words.extend(
            item.action_name for item in self.yumio.base.transaction)
        self.apply(updates=["kernel"])
        self.assertIn("Reason Change", words)
        self.assertEqual(self.recording.listed(), {"kernel-6.1.31-1.x86_64": (INSTALL, USER),
                                                   "kernel-6.1.20-1.x86_64": (REMOVE, USER)})

    @in_own_process
    def test_both_installed_architectures_of_a_package_are_updated_together(self):
        self.started()
        pairs = [[new, old] for new in self.updates for old in self.installed
                 if new.name == old.name == "libcairn" and new.arch == old.arch]
        self.assertEqual(len(pairs), 2)
        self.recording.answers = [1]
        added, gone = self.changes(self.yumio.apply, [], pairs, [], [], [], [])
        self.assertEqual(added, {"libcairn-2.2-1.x86_64", "libcairn-2.2-1.i686"})
        self.assertEqual(gone, {"libcairn-2.1-1.x86_64", "libcairn-2.1-1.i686"})

    @in_own_process
    def test_the_update_of_a_suite_installs_its_new_members(self):
        self.started()
        added, gone = self.changes(self.apply, updates=["vyre-network-suite"])
        self.assertEqual(added, {"vyre-network-suite-1.1-1.noarch", "nettle-scan-7.9-1.x86_64"})
        self.assertEqual(gone, {"vyre-network-suite-1.0-1.noarch"})

    @in_own_process
    def test_an_update_with_a_missing_library_is_refused(self):
        self.started()
        self.assert_refused("libtide", updates=["tidewatch"])
        self.assertEqual(self.recording.names().count("listTransaction"), 0)

    @in_own_process
    def test_an_update_keeps_the_recorded_reason_for_the_installation(self):
        root = self.sandbox.root
        subprocess.run(["dnf", "--assumeyes", "--quiet", "--installroot", root, "-c", root + "/etc/yum.conf",
                        "--setopt=reposdir=%s/etc/yum.repos.d" % root, "mark", "remove", "loomctl"],
                       env=self.sandbox.environment(), check=True)
        self.started()
        self.apply(updates=["loomctl", "abacus-cli"])
        self.again()
        reason = self.yumio.base.history.rpm.get_reason
        self.assertEqual(self.package(self.installed, "loomctl").version, "1.1")
        self.assertEqual(reason(self.package(self.installed, "loomctl")), DEPENDENCY)
        self.assertEqual(reason(self.package(self.installed, "abacus-cli")), USER)

    @in_own_process
    def test_an_available_package_with_the_installed_version_is_not_an_update(self):
        self.started()
        pair = [self.package(self.available, "almanac"), self.package(self.installed, "almanac")]
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "almanac-1.9-1.noarch is not newer"):
            self.yumio.apply([], [pair], [], [], [], [])


class RemoveTest(ScenarioTest):
    @in_own_process
    def test_a_removal_calls_the_functions_of_the_program_in_the_right_order(self):
        self.started()
        changed = self.changes(self.apply, removes=["parrot"])
        self.assertEqual(changed, (set(), {"parrot-1.0-1.noarch"}))
        self.assertEqual(self.recording.order("rpmtransScriptout"), [
            "listTransaction", "reportRemoveSize", "userconfirm", "downloadRemotePayloads", "rpmtransInit",
            "rpmtransDel", "rpmtransInit", "rpmtransProgress", "rpmtransDel", "postTransactionOutput"])
        self.assertEqual(self.recording.of("downloadRemotePayloads"), [[]])
        self.assertEqual(self.recording.listed(), {"parrot-1.0-1.noarch": (REMOVE, USER)})
        self.assertEqual(self.recording.errors(), [])

    @in_own_process
    def test_a_removal_also_removes_dependent_packages(self):
        self.started()
        changed = self.changes(self.apply, removes=["flint-ssh"])
        self.assertEqual(changed, (set(), {"flint-ssh-8.8-1.x86_64", "vyre-network-suite-1.0-1.noarch"}))
        self.assertEqual(self.recording.listed(), {
            "flint-ssh-8.8-1.x86_64": (REMOVE, USER), "vyre-network-suite-1.0-1.noarch": (REMOVE, DEPENDENCY)})

    @in_own_process
    def test_a_removal_also_removes_unused_dependencies(self):
        self.started()
        changed = self.changes(self.apply, removes=["trellis-editor"])
        self.assertEqual(changed, (set(), {"trellis-editor-1.2-1.x86_64", "libtrellis-1.2-1.x86_64"}))
        self.assertEqual(self.recording.listed(), {
            "trellis-editor-1.2-1.x86_64": (REMOVE, USER), "libtrellis-1.2-1.x86_64": (REMOVE, CLEAN)})

    @in_own_process
    def test_a_removal_keeps_unused_dependencies_if_clean_requirements_on_remove_is_off(self):
        self.configure("clean_requirements_on_remove=0")
        self.started()
        changed = self.changes(self.apply, removes=["trellis-editor"])
        self.assertEqual(changed, (set(), {"trellis-editor-1.2-1.x86_64"}))

    @in_own_process
    def test_all_installed_versions_of_a_package_can_be_removed_together(self):
        self.started()
        changed = self.changes(self.apply, removes=["kernel"])
        self.assertEqual(changed, (set(), {"kernel-6.1.20-1.x86_64", "kernel-6.1.25-1.x86_64"}))

    @in_own_process
    def test_protected_packages_are_not_removed(self):
        self.configure("protected_packages=almanac")
        self.started()
        self.assert_refused("protected", removes=["almanac"])


class GroupTest(ScenarioTest):
    def group(self, name):
        return self.yumio.base.history.group.get(name)

    @needs_groups
    @in_own_process
    def test_a_group_is_installed_with_its_mandatory_and_default_packages(self):
        self.started()
        changed = self.changes(self.apply, group_installs=["office"])
        self.assertEqual(changed, ({"scribe-writer-2.0-1.x86_64", "ledger-calc-2.0-1.x86_64",
                                    "scribe-lexicon-1.0-1.noarch"}, set()))
        self.assertEqual(self.recording.listed()["ledger-calc-2.0-1.x86_64"], (INSTALL, GROUP))
        self.again()
        self.assertIsNotNone(self.group("office"))

    @needs_groups
    @in_own_process
    def test_the_records_of_installed_groups_are_read_once_and_are_read_again_after_a_transaction(self):
        self.started()
        persistor, reads = type(self.yumio.base.history.group), []
        read = persistor.search_by_pattern
        persistor.search_by_pattern = lambda group, pattern: reads.append(pattern) or read(group, pattern)
        self.yumio.base.reset(goal=True)
        self.assertEqual([self.group(name) is not None for name in ("arts", "office", "games", "no-such-group")],
                         [True, False, False, False])
        self.assertEqual(reads, ["%"])
        self.changes(self.apply, group_installs=["office"], group_removes=["arts"])
        del reads[:]
        self.assertEqual([self.group(name) is not None for name in ("arts", "office", "games")], [False, True, False])
        self.assertEqual(reads, ["%"])

    @needs_groups
    @in_own_process
    def test_a_group_with_a_missing_member_is_installed_without_this_member(self):
        self.started()
        self.assertEqual(self.changes(self.apply, group_installs=["ghosts"]), NOTHING)
        self.assertIn("no-such-package", "\n".join(self.recording.errors()))
        # The transaction has no package to download, install or remove.
        self.assertEqual(self.recording.order(), ["listTransaction", "userconfirm", "downloadRemotePayloads",
                                                  "postTransactionOutput"])
        self.again()
        self.assertIsNotNone(self.group("ghosts"))

    def introductions(self):
        """Returns an empty list. From now on, this list gets each text that the script adds before a listing."""
        texts = []
        self.module("program").addBeforeListing = texts.append
        return texts

    def change_comps(self, old, new):
        place, = glob.glob(self.sandbox.repository("sandbox-http") + "/repodata/*comps.xml.gz")
        with gzip.open(place, "rt", encoding="utf-8") as stream:
            content = stream.read()
        self.assertIn(old, content)
        self.index("sandbox-http", "--groupfile", self.write("/tmp/comps.xml", content.replace(old, new)))

    @needs_groups
    @in_own_process
    def test_a_sentence_before_the_listing_says_that_a_group_has_no_packages(self):
        self.change_comps('<packagereq type="mandatory">lantern-view</packagereq>', "")
        self.started()
        texts = self.introductions()
        self.assertEqual(self.changes(self.apply, group_installs=["ghosts"]), NOTHING)
        self.assertEqual(texts, ["The group Ghosts has no packages that can be installed; "
                                 "it is only recorded as installed.\n\n"])
        self.again()
        self.assertIsNotNone(self.group("ghosts"))
        texts = self.introductions()
        self.assertEqual(self.changes(self.apply, group_removes=["ghosts"]), NOTHING)
        self.assertEqual(texts, ["The group Ghosts has no packages that can be removed; "
                                 "only its record is removed.\n\n"])
        self.again()
        self.assertIsNone(self.group("ghosts"))

    @needs_groups
    @in_own_process
    def test_a_sentence_before_the_listing_says_that_all_packages_of_a_group_are_installed(self):
        self.started()
        texts = self.introductions()
        self.assertEqual(self.changes(self.apply, group_installs=["ghosts"], installs=["orrery"]),
                         ({"orrery-3.7-1.x86_64"}, set()))
        self.assertEqual(texts, ["The group Ghosts has no further packages that can be installed; "
                                 "it is only recorded as installed.\n\n"])

    @needs_groups
    @in_own_process
    def test_the_listing_has_a_sentence_for_each_group_without_packages(self):
        self.change_comps('<packagereq type="default">shuttle</packagereq>', "")
        self.started()
        texts = self.introductions()
        self.apply(group_installs=["weaving", "games", "ghosts"])
        self.assertEqual([line.partition(" has ")[0] for line in texts[0].splitlines()],
                         ["The group Ghosts", "The group Weaving", ""])
        self.assertEqual(len(texts), 1)

    @needs_groups
    @in_own_process
    def test_the_listing_has_no_sentence_about_a_group_if_another_package_replaces_its_member(self):
        self.change_comps('<packagereq type="mandatory">lantern-view</packagereq>',
                          '<packagereq type="mandatory">oldpost</packagereq>')
        self.started()
        self.apply(removes=["oldpost"])
        self.again()
        texts = self.introductions()
        self.assertEqual(self.changes(self.apply, group_installs=["ghosts"])[0], {"newpost-2.0-1.x86_64"})
        self.assertEqual(texts, [])

    @needs_groups
    @in_own_process
    def test_the_listing_has_no_sentence_about_a_group_that_changes_packages(self):
        self.started()
        texts = self.introductions()
        self.apply(group_installs=["games"], group_removes=["arts"])
        self.assertEqual(texts, [])

    @needs_groups
    @in_own_process
    def test_the_removal_of_a_group_removes_the_packages_that_were_installed_with_it(self):
        self.started()
        changed = self.changes(self.apply, group_removes=["arts"])
        self.assertEqual(changed, (set(), {"easel-1.1-1.noarch", "palette-knife-1.0-1.noarch"}))
        self.assertIn("reportRemoveSize", self.recording.names())
        self.again()
        self.assertIsNone(self.group("arts"))

    @needs_groups
    @in_own_process
    def test_the_update_of_an_uninstalled_group_updates_only_installed_members(self):
        self.started()
        introduced = []
        self.module("program").addBeforeListing = introduced.append
        changed = self.changes(self.apply, group_updates=["weaving"])
        self.assertEqual(changed, ({"loomctl-1.1-1.x86_64"}, {"loomctl-1.0-1.x86_64"}))
        self.assertEqual(introduced, ["The group Weaving is not installed: only its installed packages are updated. To "
                                      "install the whole group, mark it for Install after this transaction.\n\n"])
        self.again()
        self.assertIsNone(self.group("weaving"))
        # If the user marks the group as the listing advises, the group is installed. The new listing does not repeat
        # the advice.
        changed = self.changes(self.apply, group_installs=["weaving"])
        self.assertEqual(changed, ({"shuttle-1.0-1.x86_64"}, set()))
        self.again()
        self.assertIsNotNone(self.group("weaving"))
        self.assertEqual(len(introduced), 1)

    @needs_groups
    @in_own_process
    def test_the_update_of_an_installed_group_installs_new_members(self):
        member = '<packagereq type="mandatory">easel</packagereq>'
        self.change_comps(member, member + member.replace("easel", "orrery"))
        self.started()
        changed = self.changes(self.apply, group_updates=["arts"])
        self.assertEqual({name.split("-")[0] for name in changed[0]}, {"orrery"})
        self.assertEqual(changed[1], set())
        self.again()
        self.assertIsNotNone(self.group("arts"))
        self.apply(group_removes=["arts"])
        self.again()
        self.assertNotIn("orrery", [package.name for package in self.installed])

    @needs_groups
    @in_own_process
    def test_a_group_update_without_changes_is_refused(self):
        self.started()
        self.assert_refused("nothing to do", group_updates=["seafaring"])
        self.assertNotIn("userconfirm", self.recording.names())


class ExceptionTextTest(ScenarioTest):
    """The program shows the "value" attribute of an exception, so this attribute must be a complete message."""

    def check(self, method, raising, arguments=()):
        exceptions = self.dnf.exceptions
        for exception, value in (
                (exceptions.MarkingError("No match", "loupe"), "No match: loupe"),
                (exceptions.PackageNotFoundError("No match", "loupe"), "No match: loupe"),
                (exceptions.PackagesNotInstalledError("Not there", "loupe"), "Not there: loupe"),
                (exceptions.DownloadError({"loupe.rpm": ["gone", "away"]}), "loupe.rpm: gone\nloupe.rpm: away"),
                (exceptions.DownloadError({}), "DownloadError"),
                (exceptions.Error(), "Error"),
                (exceptions.DepsolveError("as it is"), "as it is")):
            raising(exception)
            with self.assertRaises(exceptions.Error) as caught:
                method(*arguments)
            self.assertEqual(caught.exception.value, value)
        # An exception that already has a complete message is not changed.
        raising(exceptions.RepoError("the repository"))
        with self.assertRaises(exceptions.RepoError) as caught:
            method(*arguments)
        self.assertEqual(caught.exception.value, "the repository")
        raising(KeyError("another kind"))
        with self.assertRaises(KeyError):
            method(*arguments)

    def raiser(self, owner, name):
        def raising(exception):
            def fail(*args, **kwargs):
                raise exception
            setattr(owner, name, fail)
        return raising

    @in_own_process
    def test_exceptions_of_dnf_during_a_transaction_have_a_complete_text(self):
        self.started()
        self.check(self.yumio.apply, self.raiser(self.yumio, "_checkCurrent"), ([],) * 6)

    @in_own_process
    def test_exceptions_of_dnf_during_a_collection_have_a_complete_text(self):
        self.started()
        base = self.yumio.base
        self.check(self.yumio.collectGroups, self.raiser(base, "read_comps"))
        self.check(self.yumio.collectOtherData, self.raiser(base.otherData, "loadAll"))

        class Sack(object):
            pass
        base._sack = Sack()
        for method in (self.yumio.collectUpdates, self.yumio.collectAll):
            self.check(method, self.raiser(base._sack, "query"))


class RefusalTest(ScenarioTest):
    @in_own_process
    def test_a_transaction_without_changes_is_refused(self):
        self.started()
        self.assert_refused("nothing to do")
        self.assertEqual(self.recording.order(), [])

    @in_own_process
    def test_a_package_that_conflicts_with_an_installed_package_is_refused(self):
        self.started()
        self.assert_refused("libgranite", installs=["sandstone"])

    @in_own_process
    def test_a_package_is_refused_if_no_repository_has_its_dependency(self):
        self.started()
        self.assert_refused("libtide", installs=["moonbridge"])
        # The failure does not affect the next transaction.
        changed = self.changes(self.apply, installs=["astrolabe"])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, set()))

    @in_own_process
    def test_two_marked_packages_with_different_versions_of_one_file_are_refused(self):
        self.started()
        self.assert_refused("palette.conf", installs=["inkwell-classic", "inkwell-modern"])
        self.assertEqual(self.recording.of("rpmtransInit"), [True])
        self.assertEqual(self.recording.names().count("rpmtransDel"), 1)
        self.recording.clear()
        changed = self.changes(self.apply, installs=["inkwell-modern"])
        self.assertEqual(changed, ({"inkwell-modern-1.0-1.noarch"}, set()))
        self.assertEqual(self.recording.of("rpmtransInit"), [True, False])
        self.assertEqual(self.recording.names().count("rpmtransDel"), 2)

    @in_own_process
    def test_a_package_is_refused_if_an_installed_package_has_another_version_of_its_file(self):
        self.started()
        self.assert_refused("/bin/sh", installs=["vanity-shell"])

    @in_own_process
    def test_an_exception_that_outlives_a_failed_transaction_does_not_disturb_the_next_transaction(self):
        self.started()
        kept = []
        try:
            self.apply(installs=["inkwell-classic", "inkwell-modern"])
        except self.dnf.exceptions.Error as e:
            kept.append(e)
        self.assertEqual(len(kept), 1)
        self.assertEqual(self.recording.names().count("rpmtransDel"), 1)
        self.recording.clear()
        self.recording.before_answer = kept.clear
        self.apply(installs=["halfline"])
        self.assertEqual(self.recording.names().count("rpmtransDel"), 2)
        self.assertIn("no line feed after this", self.recording.output())

    @in_own_process
    def test_a_damaged_package_file_in_a_local_repository_is_refused(self):
        self.started()
        place = os.path.join(self.sandbox.repository("sandbox-file"), "corkboard-0.7-1.noarch.rpm")
        with open(place, "r+b") as stream:
            stream.seek(2000)
            stream.write(b"\xff" * 100)
        self.assert_refused("checksum", installs=["corkboard"])


class ScriptletTest(ScenarioTest):
    @in_own_process
    def test_the_output_of_all_scriptlets_is_reported(self):
        self.started()
        self.apply(updates=["parrot"])
        output = self.recording.output()
        for text in ("parrot-1.1: pre to standard output", "parrot-1.1: pre to standard error",
                     "parrot-1.1: post to standard output", "parrot-1.0: preun to standard output",
                     "parrot-1.0: postun to standard error"):
            self.assertIn(text, output)

    @in_own_process
    def test_long_scriptlet_output_is_reported_completely(self):
        self.started()
        self.apply(installs=["loudhailer"])
        lines = self.recording.output().split("\n")
        for stream in ("stdout", "stderr"):
            numbers = [line.split()[3] for line in lines if line.startswith("loudhailer: %s line" % stream)]
            self.assertEqual(numbers, ["%05d" % number for number in range(1, 6001)])

    @in_own_process
    def test_a_final_line_feed_of_scriptlet_output_is_optional_and_makes_no_empty_line(self):
        self.started()
        self.apply(installs=["halfline", "chatterbox"])
        texts = [text for text in self.recording.of("rpmtransScriptout") if text]
        self.assertIn("halfline: first line\nhalfline: no line feed after this", texts)
        self.assertIn("chatterbox: post to standard output\nchatterbox: post to standard error", texts)
        self.again()
        self.apply(removes=["halfline"])
        self.assertIn("halfline: nor after this", self.recording.output())

    @in_own_process
    def test_a_failed_pre_scriptlet_fails_the_transaction(self):
        self.started()
        self.assert_refused("brokenlatch", installs=["brokenlatch"])
        self.assertIn("the latch is stuck", self.recording.output())
        # The message about the failure also contains the output of the scriptlet.
        self.assertIn("Error in PREIN scriptlet in rpm package brokenlatch\nbrokenlatch: the latch is stuck\n",
                      "\n".join(self.recording.errors()))
        changed = self.changes(self.apply, installs=["astrolabe"])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, set()))

    @in_own_process
    def test_a_failed_scriptlet_is_reported_with_the_last_lines_of_its_long_output(self):
        self.started()
        text = b"".join(b"line %d\n" % number for number in range(1, 26))
        # No package in the sandbox prints so many lines before it fails.
        self.module("progress").RPMTransaction.__base__._scriptOutput = lambda transaction: text
        self.assert_refused("brokenlatch", installs=["brokenlatch"])
        self.assertIn(text.decode()[:-1], self.recording.of("rpmtransScriptout"))
        errors = "\n".join(self.recording.errors()).split("\n")
        begin = errors.index("Error in PREIN scriptlet in rpm package brokenlatch") + 1
        self.assertEqual(errors[begin:begin + 10], ["line %d" % number for number in range(16, 26)])
        self.assertNotIn("line 15", errors)

    @in_own_process
    def test_the_report_names_only_the_failed_package_of_several_packages(self):
        self.started()
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.apply(installs=["brokenlatch", "astrolabe"])
        self.assertIn("brokenlatch", str(caught.exception))
        self.assertNotIn("astrolabe", str(caught.exception))
        self.assertIn("astrolabe-5.6-1.x86_64", self.sandbox.installed())
        self.assertNotIn("brokenlatch-1.0-1.noarch", self.sandbox.installed())

    @in_own_process
    def test_a_package_whose_post_scriptlet_fails_is_installed_and_the_failure_is_logged(self):
        self.started()
        changed = self.changes(self.apply, installs=["limpgate"])
        self.assertEqual(changed, ({"limpgate-1.0-1.noarch"}, set()))
        self.assertIn("the hinge is gone", self.recording.output())
        self.assertEqual(self.recording.errors(), ["Error in POSTIN scriptlet in rpm package limpgate",
                                                   "The scriptlet of limpgate-1.0-1.noarch failed."])
        # If the history lacked the end of the transaction, the next collection would report this.
        self.recording.clear()
        self.again()
        self.assertEqual([text for text in self.recording.errors() if "history" in text or "end" in text], [])

    @in_own_process
    def test_a_package_that_cannot_be_removed_fails_the_transaction(self):
        self.started()
        self.assert_refused("stickyburr", removes=["stickyburr"])
        self.assertIn("it does not come off", self.recording.output())
        self.assertIn("it does not come off", "\n".join(self.recording.errors()))
