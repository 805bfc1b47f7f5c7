# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of marks that cannot be applied, alone or together, and of removals that other removals cause."""

import gettext
import os
import re
import subprocess
import tempfile

from recordingmodule import CLEAN, DEPENDENCY, INSTALL, REMOVE, USER
from scenario import ScenarioTest, german, in_own_process
from vyresandbox import needs_groups

NOTHING = (set(), set())
BARRIER = "nothing provides libtide.so.9()(64bit) needed by tidewatch-2.0-1.noarch"


def question(rest):
    """The beginning of the question, before the packages and their reasons. rest: the remaining marks."""
    return ('Go on without these packages?\n\n"Yes" goes on with the remaining marks: %s.\n'
            'VYRE keeps the marks that cannot be applied.\n'
            '"No" changes nothing. VYRE keeps all marks.' % rest)


class QuestionTest(ScenarioTest):
    def question(self):
        """The text of the question; exactly one question must have been shown. The script calls gpgsigcheck() for each
        downloaded package and before each question."""
        self.assertEqual(self.recording.names().count("gpgsigcheck") -
                         len([name for name in self.recording.names() if name == "downloadEnd"]), 1)
        return self.recording.printed()

    def left_out(self):
        return sorted(str(each) for each in self.yumio.leftOut)

    def count_resolutions(self):
        """Returns a list that gets one element for each run of dnf's resolver from now on."""
        counted = []
        base = self.yumio.base
        run = base._run_hawkey_goal
        base._run_hawkey_goal = lambda *arguments: counted.append(1) or run(*arguments)
        return counted


class UpdatesTest(QuestionTest):
    @in_own_process
    def test_the_possible_marks_are_applied_if_the_user_accepts_the_question(self):
        self.started()
        counted = self.count_resolutions()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], installs=["astrolabe"],
                               answers=[1, 1])
        self.assertEqual(changed, ({"abacus-cli-3.3.0-2.x86_64", "astrolabe-5.6-1.x86_64"},
                                   {"abacus-cli-3.2.1-1.x86_64"}))
        text = self.recording.printed()
        head, _, reasons = text.partition("\n\ntidewatch-2.0-1.noarch\n    ")
        self.assertEqual(head, question("abacus-cli, astrolabe"))
        # The reason that names the package comes first, and the unspecific reason "conflicting requests" is omitted.
        self.assertTrue(reasons.startswith(BARRIER), text)
        self.assertNotIn("conflicting requests", text)
        self.assertNotIn("abacus-cli", reasons)
        self.assertEqual(self.left_out(), ["tidewatch-2.0-1.noarch"])
        self.assertIs(self.yumio.leftOut[0], self.package(self.updates, "tidewatch"))
        self.assertNotIn("tidewatch-2.0-1.noarch", self.recording.listed())
        self.assertEqual(self.yumio.base.args, ["vyre: install astrolabe; upgrade abacus-cli"])
        # The resolver runs three times: with all marks, then to find the possible marks, then with these marks.
        self.assertEqual(len(counted), 3)

    @in_own_process
    def test_nothing_changes_if_the_user_declines_the_question(self):
        self.started()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], answers=[0])
        self.assertEqual(changed, NOTHING)
        self.assertEqual(self.recording.order(), ["gpgsigcheck", "userconfirm"])
        self.assertEqual(self.left_out(), [])

    @in_own_process
    def test_the_listing_can_be_refused_after_the_user_has_accepted_the_question(self):
        self.started()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], answers=[1, 0])
        self.assertEqual(changed, NOTHING)
        # In the next transaction, the list of left-out packages is empty.
        self.apply(installs=["astrolabe"])
        self.assertEqual(self.left_out(), [])

    @in_own_process
    def test_the_possible_marks_are_applied_even_if_the_best_option_is_set(self):
        self.configure("best=1")
        self.started()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], answers=[1, 1])
        self.assertEqual(changed, ({"abacus-cli-3.3.0-2.x86_64"}, {"abacus-cli-3.2.1-1.x86_64"}))
        self.assertIn(BARRIER, self.recording.printed())

    @in_own_process
    def test_the_skip_broken_option_does_not_prevent_the_question(self):
        self.configure("skip_broken=1")
        self.started()
        # In VYRE, skip_broken has the same effect as in dnf: group members become optional.
        self.assertFalse(self.yumio.base.conf.strict)
        changed = self.changes(self.apply, installs=["moonbridge", "astrolabe"], answers=[1, 1])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, set()))
        self.assertIn("gravity >= 6", self.recording.printed())

    @in_own_process
    def test_impossible_marks_alone_are_refused_without_a_question(self):
        self.started()
        self.assert_refused("libtide", updates=["tidewatch"])
        self.assert_refused("libtide", updates=["tidewatch"], installs=["moonbridge"])
        self.assertEqual(self.recording.order(), [])

    @in_own_process
    def test_the_message_about_a_refused_mark_contains_the_mark_with_its_reason_and_the_result(self):
        self.started()
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.apply(updates=["tidewatch"])
        # Some versions of dnf name the repository at the end of a reason.
        self.assertEqual(str(caught.exception).replace(" from sandbox-updates", ""),
                         "The marks cannot be applied:\ntidewatch-2.0-1.noarch\n    " + BARRIER +
                         "\nNothing was changed. VYRE keeps all marks.")
        self.assertEqual(self.left_out(), [])

    @in_own_process
    def test_an_update_is_refused_if_it_is_not_newer_than_the_installed_version(self):
        self.started()
        pair = [self.package(self.available, "almanac"), self.package(self.installed, "almanac")]
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.yumio.apply([], [pair], [], [], [], [])
        self.assertEqual(str(caught.exception),
                         "The marks cannot be applied:\nalmanac-1.9-1.noarch\n"
                         "    almanac-1.9-1.noarch is not newer than the installed version.\n"
                         "Nothing was changed. VYRE keeps all marks.")

    def refusal_of(self, **actions):
        """The message with which the actions are refused; nothing may have changed. The result lacks the names of
        repositories, which only some versions of dnf add.
        """
        before = self.sandbox.installed()
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.apply(**actions)
        self.assertEqual(self.sandbox.installed(), before)
        self.assertEqual(self.recording.order(), [])
        return re.sub(" from sandbox-[a-z]+", "", str(caught.exception))

    @in_own_process
    def test_one_message_gives_all_reasons_if_the_second_resolution_fails(self):
        self.started()
        # In this test, the search for impossible marks finds only one of two impossible marks.
        self.module("resolving").impossibleMarks = lambda base, marks: [
            package for package in marks.newVersions() if package.name == "tidewatch"]
        text = self.refusal_of(updates=["tidewatch"], installs=["moonbridge", "astrolabe"])
        self.assertTrue(text.startswith("The marks cannot be applied:\ntidewatch-2.0-1.noarch\n    " + BARRIER + "\n"),
                        text)
        self.assertTrue(text.endswith("\nNothing was changed. VYRE keeps all marks."), text)
        for line in (BARRIER, "nothing provides gravity >= 6 needed by moonbridge-1.0-1.noarch"):
            self.assertEqual(text.count(line), 1, text)
        # The message does not contain the headings of dnf's list of problems on a terminal.
        self.assertNotIn("Problem", text)
        self.assertNotIn("conflicting requests", text)

    @in_own_process
    def test_one_message_gives_all_reasons_if_dnf_refuses_another_mark_in_the_second_attempt(self):
        self.started()
        resolving = self.module("resolving")
        mark = resolving.markAll

        def refuse(base, marks, strict=True):
            mark(base, marks, strict)
            raise self.dnf.exceptions.MarkingError("No match for argument", "loom")
        pair = [self.package(self.available, "almanac"), self.package(self.installed, "almanac")]
        resolving.markAll = refuse
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.yumio.apply([self.package(self.available, "astrolabe")], [pair], [], [], [], [])
        self.assertEqual(str(caught.exception),
                         "The marks cannot be applied:\nalmanac-1.9-1.noarch\n"
                         "    almanac-1.9-1.noarch is not newer than the installed version.\n"
                         "No match for argument: loom\nNothing was changed. VYRE keeps all marks.")

    @in_own_process
    def test_the_message_names_the_marks_if_dnf_gives_no_reasons(self):
        self.started()
        self.yumio.base.problems = lambda: []
        resolve = self.yumio.base.resolve

        def fail(*arguments, **named):
            with self.assertRaises(self.dnf.exceptions.DepsolveError):
                resolve(*arguments, **named)
            raise self.dnf.exceptions.DepsolveError("")
        self.yumio.base.resolve = fail
        self.assertEqual(self.refusal_of(updates=["tidewatch"], installs=["moonbridge"]),
                         "The marks cannot be applied:\nmoonbridge-1.0-1.noarch\ntidewatch-2.0-1.noarch\n"
                         "Nothing was changed. VYRE keeps all marks.")

    @in_own_process
    def test_the_question_names_five_of_many_remaining_marks_and_counts_the_other_marks(self):
        self.started()
        names = sorted(set(package.name for package in self.updates) - {"newpost", "tidewatch"})
        self.apply(updates=names + ["tidewatch"], answers=[0])
        head = self.recording.printed().partition("\n\ntidewatch")[0]
        self.assertEqual(head, question("%s and %d more" % (", ".join(names[:5]), len(names) - 5)))

    @in_own_process
    def test_the_reasons_for_left_out_packages_are_available_after_the_confirmation(self):
        self.started()
        self.apply(updates=["tidewatch", "abacus-cli"], answers=[1, 0])
        self.assertEqual(self.yumio.leftOutReasons, "")
        self.apply(updates=["tidewatch", "abacus-cli"], answers=[1, 1])
        self.assertEqual(self.yumio.leftOutReasons.replace(" from sandbox-updates", ""),
                         "tidewatch-2.0-1.noarch\n    " + BARRIER)
        # The next transaction clears the reasons.
        self.again()
        self.apply(installs=["astrolabe"])
        self.assertEqual(self.yumio.leftOutReasons, "")

    @in_own_process
    def test_reasons_with_package_names_precede_all_other_reasons(self):
        self.load()
        clearest = self.module("reasons").clearest
        named = "nothing provides x needed by y-1-1.noarch"
        best = "cannot install the best candidate for the job"
        self.assertEqual(clearest(["conflicting requests", best, named]), [named, best])
        # An unspecific reason is kept if it is the only reason.
        self.assertEqual(clearest(["conflicting requests"]), ["conflicting requests"])
        self.assertEqual(clearest(["b", "a"]), ["b", "a"])
        self.assertEqual(clearest([]), [])

    @in_own_process
    def test_the_reason_about_conflicting_requests_is_left_out_in_every_language(self):
        os.environ["LANGUAGE"] = "de"
        os.environ["LC_ALL"] = "de_DE.UTF-8"
        self.load()
        text = gettext.translation("libdnf", fallback=True).gettext("conflicting requests")
        if text == "conflicting requests":
            self.skipTest("libdnf has no German texts here")
        named = "y-1-1.noarch"
        self.assertEqual(self.module("reasons").clearest([text, named]), [named])

    @in_own_process
    def test_the_question_is_german_with_the_reasons_of_dnf_in_german(self):
        os.environ["LANGUAGE"] = "de"
        reason = gettext.translation("libdnf", fallback=True).gettext("nothing provides %s needed by %s")
        if reason == "nothing provides %s needed by %s":
            self.skipTest("libdnf has no German texts here")
        self.load(translations=german())
        self.yumio.lock()
        self.collect()
        self.recording.clear()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], answers=[0])
        self.assertEqual(changed, NOTHING)
        head, _, reasons = self.recording.printed().partition("\n\ntidewatch-2.0-1.noarch\n    ")
        # The buttons are "Yes" and "No" in all languages.
        self.assertEqual(head, "Ohne diese Pakete fortfahren?\n\n„Yes“ fährt mit den übrigen Vormerkungen fort: "
                         "abacus-cli.\nVYRE behält die nicht ausführbaren Vormerkungen.\n„No“ ändert nichts. "
                         "VYRE behält alle Vormerkungen.")
        words = reason % ("libtide.so.9()(64bit)", "tidewatch-2.0-1.noarch")
        self.assertEqual(reasons.replace(" from sandbox-updates", "").splitlines()[0], words)
        self.assertNotIn("nothing provides", reasons)

    @in_own_process
    def test_one_of_two_conflicting_packages_is_left_out(self):
        self.started()
        added, gone = self.changes(self.apply, installs=["tern-mta", "gull-mta", "astrolabe"], answers=[1, 1])
        self.assertEqual(len(added), 2)
        self.assertEqual(len(self.left_out()), 1)
        self.assertEqual(added | set(self.left_out()),
                         {"tern-mta-1.0-1.noarch", "gull-mta-1.0-1.noarch", "astrolabe-5.6-1.x86_64"})
        self.assertIn("conflicts with", self.recording.printed())

    @in_own_process
    def test_all_updates_except_the_impossible_update_are_applied(self):
        self.started()
        names = sorted(set(package.name for package in self.updates) - {"newpost"})
        self.assertGreater(len(names), 15)
        self.apply(updates=names, answers=[1, 1])
        self.assertEqual(self.left_out(), ["tidewatch-2.0-1.noarch"])
        self.again()
        self.assertEqual([package.name for package in self.updates if package.name != "libcairn"], ["tidewatch"])

    @in_own_process
    def test_marks_refused_by_the_package_manager_are_left_out(self):
        self.started()
        pair = [self.package(self.available, "almanac"), self.package(self.installed, "almanac")]
        self.recording.answers = [1, 1]
        added, gone = self.changes(self.yumio.apply, [self.package(self.available, "astrolabe")], [pair], [], [], [],
                                   [])
        self.assertEqual((added, gone), ({"astrolabe-5.6-1.x86_64"}, set()))
        self.assertIn("almanac-1.9-1.noarch is not newer", self.recording.printed())

    @in_own_process
    def test_the_progress_bar_shows_that_the_script_looks_for_possible_marks(self):
        self.started()
        shown = []
        self.module("program").changeActivity = shown.append
        self.apply(updates=["tidewatch", "abacus-cli"], answers=[0])
        self.assertIn("Finding the marks that can be applied", shown)


class GroupQuestionTest(QuestionTest):
    def add_impossible_member(self):
        """Adds a package with an impossible update to the members of the "weaving" group."""
        self.change_comps('<packagereq type="mandatory">loomctl</packagereq>',
                          '<packagereq type="mandatory">loomctl</packagereq>'
                          '<packagereq type="mandatory">tidewatch</packagereq>')

    def change_comps(self, old, new):
        import glob
        import gzip

        place, = glob.glob(self.sandbox.repository("sandbox-http") + "/repodata/*comps.xml.gz")
        with gzip.open(place, "rt", encoding="utf-8") as stream:
            content = stream.read()
        self.assertIn(old, content)
        self.index("sandbox-http", "--groupfile", self.write("/tmp/comps.xml", content.replace(old, new)))

    @needs_groups
    @in_own_process
    def test_the_question_about_a_group_update_names_the_left_out_packages(self):
        self.add_impossible_member()
        self.started()
        changed = self.changes(self.apply, group_updates=["weaving"], answers=[1, 1])
        self.assertEqual(changed, ({"loomctl-1.1-1.x86_64"}, {"loomctl-1.0-1.x86_64"}))
        text = self.recording.printed()
        self.assertTrue(text.startswith(question("Weaving") + "\n\ntidewatch-2.0-1.noarch\n    "), text)
        self.assertIn(BARRIER, text)
        self.assertEqual(self.left_out(), ["Weaving"])
        # If the user applies the same marks again, the message gives the same reason.
        self.again()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "The marks cannot be applied:\ntidewatch-2.0.*\n"):
            self.apply(group_updates=["weaving"])

    @needs_groups
    @in_own_process
    def test_the_group_is_not_changed_if_the_user_declines_the_question(self):
        self.add_impossible_member()
        self.started()
        self.assertEqual(self.changes(self.apply, group_updates=["weaving"], answers=[0]), NOTHING)
        self.assertEqual(self.recording.order(), ["gpgsigcheck", "userconfirm"])

    @needs_groups
    @in_own_process
    def test_the_update_of_a_group_leaves_packages_out_even_if_the_best_option_is_set(self):
        self.configure("best=1")
        self.add_impossible_member()
        self.started()
        changed = self.changes(self.apply, group_updates=["weaving"], answers=[1, 1])
        self.assertEqual(changed, ({"loomctl-1.1-1.x86_64"}, {"loomctl-1.0-1.x86_64"}))
        self.assertIn(BARRIER, self.recording.printed())
        self.assertTrue(self.yumio.base.conf.best)

    @needs_groups
    @in_own_process
    def test_the_question_about_a_group_installation_names_the_left_out_packages(self):
        self.change_comps('<packagereq type="mandatory">pebble-go</packagereq>',
                          '<packagereq type="mandatory">pebble-go</packagereq>'
                          '<packagereq type="mandatory">moonbridge</packagereq>')
        self.started()
        added, gone = self.changes(self.apply, group_installs=["games"], answers=[1, 1])
        self.assertEqual((added, gone), ({"pebble-go-1.4-1.x86_64", "hedgerow-4.0-1.noarch", "orrery-3.7-1.x86_64"},
                                         set()))
        self.assertIn("moonbridge-1.0-1.noarch\n    ", self.recording.printed())
        self.assertIn("gravity >= 6", self.recording.printed())

    def check_optional_members(self, option):
        """Sets this option, which makes the members of groups optional. Checks that the question names the member that
        is left out, and the reason.
        """
        self.configure(option)
        self.change_comps('<packagereq type="mandatory">pebble-go</packagereq>',
                          '<packagereq type="mandatory">pebble-go</packagereq>'
                          '<packagereq type="mandatory">moonbridge</packagereq>')
        self.started()
        counted = self.count_resolutions()
        added, gone = self.changes(self.apply, group_installs=["games"], answers=[1, 1])
        self.assertEqual((added, gone), ({"pebble-go-1.4-1.x86_64", "hedgerow-4.0-1.noarch", "orrery-3.7-1.x86_64"},
                                         set()))
        self.assertIn("moonbridge-1.0-1.noarch\n    ", self.recording.printed())
        self.assertIn("gravity >= 6", self.recording.printed())
        self.assertEqual(len(counted), 1)

    @needs_groups
    @in_own_process
    def test_the_question_gives_the_reasons_for_left_out_members_if_the_strict_option_is_off(self):
        self.check_optional_members("strict=0")

    @needs_groups
    @in_own_process
    def test_the_question_gives_the_reasons_for_left_out_members_if_the_skip_broken_option_is_on(self):
        self.check_optional_members("skip_broken=1")

    @needs_groups
    @in_own_process
    def test_the_question_names_each_marked_package_that_the_resolution_leaves_out(self):
        self.started()
        # The search for impossible marks finds nothing here, but the resolution leaves a package out.
        self.module("resolving").impossibleMarks = lambda base, marks: []
        added, gone = self.changes(self.apply, group_installs=["games"], installs=["moonbridge", "astrolabe"],
                                   answers=[1, 1])
        self.assertEqual((added, gone), ({"pebble-go-1.4-1.x86_64", "hedgerow-4.0-1.noarch", "orrery-3.7-1.x86_64",
                                          "astrolabe-5.6-1.x86_64"}, set()))
        text = self.recording.printed()
        self.assertTrue(text.startswith(question("astrolabe, Games") + "\n\nmoonbridge-1.0-1.noarch\n    "), text)
        self.assertIn("gravity >= 6", text)
        self.assertEqual(self.left_out(), ["moonbridge-1.0-1.noarch"])

    @needs_groups
    @in_own_process
    def test_a_group_and_a_package_can_both_be_left_out(self):
        self.add_impossible_member()
        self.started()
        changed = self.changes(self.apply, group_updates=["weaving"], installs=["moonbridge"], answers=[1, 1])
        self.assertEqual(changed, ({"loomctl-1.1-1.x86_64"}, {"loomctl-1.0-1.x86_64"}))
        text = self.recording.printed()
        for line in ("moonbridge-1.0-1.noarch\n", "tidewatch-2.0-1.noarch\n", "gravity >= 6", BARRIER):
            self.assertIn(line, text)
        self.assertEqual(self.left_out(), ["Weaving", "moonbridge-1.0-1.noarch"])

    @needs_groups
    @in_own_process
    def test_a_group_member_that_is_marked_for_removal_is_not_reported_as_left_out(self):
        self.started()
        changed = self.changes(self.apply, group_installs=["office"], group_updates=["weaving"], removes=["shuttle"],
                               answers=[1])
        self.assertIn("loomctl-1.1-1.x86_64", changed[0])


class RemovalTest(QuestionTest):
    @in_own_process
    def test_an_installation_removes_no_conflicting_package_even_if_removals_are_marked(self):
        self.started()
        self.assert_installation_is_left_out("sandstone-1.0-1.noarch", installs=["sandstone"], removes=["almanac"])

    def assert_installation_is_left_out(self, name, **actions):
        """Checks that the installation is left out, and that the removal is applied."""
        added, gone = self.changes(self.apply, answers=[1, 1], **actions)
        self.assertEqual(added, set())
        self.assertNotIn("libgranite", " ".join(gone))
        self.assertEqual(self.left_out(), [name])
        self.assertIn("conflicts with libgranite", self.recording.printed())

    @in_own_process
    def test_a_removal_removes_dependent_packages_even_if_an_installation_is_marked(self):
        self.started()
        changed = self.changes(self.apply, installs=["astrolabe"], removes=["flint-ssh"])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"},
                                   {"flint-ssh-8.8-1.x86_64", "vyre-network-suite-1.0-1.noarch"}))
        self.assertEqual(self.recording.listed(), {
            "astrolabe-5.6-1.x86_64": (INSTALL, USER), "flint-ssh-8.8-1.x86_64": (REMOVE, USER),
            "vyre-network-suite-1.0-1.noarch": (REMOVE, DEPENDENCY)})

    @in_own_process
    def test_dependent_packages_are_removed_even_if_a_conflicting_installation_is_left_out(self):
        self.started()
        added, gone = self.changes(self.apply, installs=["sandstone", "astrolabe"], removes=["flint-ssh"],
                                   answers=[1, 1])
        self.assertEqual((added, gone), ({"astrolabe-5.6-1.x86_64"},
                                         {"flint-ssh-8.8-1.x86_64", "vyre-network-suite-1.0-1.noarch"}))
        self.assertEqual(self.recording.listed()["vyre-network-suite-1.0-1.noarch"], (REMOVE, DEPENDENCY))
        self.assertEqual(self.left_out(), ["sandstone-1.0-1.noarch"])

    @in_own_process
    def test_a_removal_removes_unused_dependencies_even_if_an_installation_is_marked(self):
        self.started()
        self.apply(installs=["astrolabe"], removes=["trellis-editor"])
        self.assertEqual(self.recording.listed()["libtrellis-1.2-1.x86_64"], (REMOVE, CLEAN))

    @in_own_process
    def test_a_protected_package_does_not_prevent_other_removals(self):
        self.configure("protected_packages=almanac,vyre-network-suite")
        self.started()
        changed = self.changes(self.apply, removes=["almanac", "flint-ssh", "parrot", "birch-log"], answers=[1, 1])
        self.assertEqual(changed, (set(), {"parrot-1.0-1.noarch", "birch-log-3.0-1.x86_64"}))
        self.assertEqual(self.left_out(), ["almanac-1.9-1.noarch", "flint-ssh-8.8-1.x86_64"])
        self.assertIn("protected packages", self.recording.printed())

    @in_own_process
    def test_a_protected_package_is_kept_even_if_an_installation_is_marked(self):
        self.configure("protected_packages=vyre-network-suite")
        self.started()
        changed = self.changes(self.apply, installs=["astrolabe"], removes=["flint-ssh"], answers=[1, 1])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, set()))
        self.assertEqual(self.left_out(), ["flint-ssh-8.8-1.x86_64"])

    @in_own_process
    def test_many_impossible_removals_are_left_out(self):
        names = "almanac,anvil-make,parrot,birch-log,barometer,beacon-dns,cinder-backup,abacus-cli,atrium-web,elaia," \
                "halyard,lantern-view,chisel-diff,delta-patch,fernleaf-icons,escapement,pewter-print,sluice-fw," \
                "libheather,libkestrel,libpumice,lexicon-en,meridian-tz"
        self.configure("protected_packages=" + names)
        self.started()
        counted = self.count_resolutions()
        added, gone = self.changes(self.apply, removes=names.split(",") + ["gallivant"], answers=[1, 1])
        self.assertEqual((added, [name.partition("-")[0] for name in gone]), (set(), ["gallivant"]))
        self.assertEqual(len(self.left_out()), 23)
        self.assertLess(len(counted), 50)

    @in_own_process
    def test_removals_that_are_undecided_after_the_last_attempt_are_left_out(self):
        self.configure("protected_packages=birch-log")
        self.started()
        self.module("resolving").ATTEMPTS = 3
        added, gone = self.changes(self.apply, removes=["almanac", "barometer", "birch-log", "parrot"], answers=[1, 1])
        self.assertEqual((added, sorted(name.partition("-")[0] for name in gone)), (set(), ["almanac", "barometer"]))
        self.assertEqual(self.left_out(), ["birch-log-3.0-1.x86_64", "parrot-1.0-1.noarch"])

    def install_protected_package_with_two_providers(self):
        """Installs a protected package, and two packages that both satisfy its requirement. Either of these two
        packages can be removed, but not both.
        """
        self.build("oil-a", "Provides: lamp-oil")
        self.build("oil-b", "Provides: lamp-oil")
        self.build("keeper", "Requires: lamp-oil")
        self.install("oil-a", "oil-b", "keeper")
        self.configure("protected_packages=keeper")

    @in_own_process
    def test_one_of_two_removals_that_are_impossible_together_is_left_out(self):
        self.install_protected_package_with_two_providers()
        self.started()
        changed = self.changes(self.apply, removes=["oil-a", "oil-b", "parrot"], answers=[1, 1])
        self.assertEqual(changed, (set(), {"oil-a-1.0-1.noarch", "parrot-1.0-1.noarch"}))
        self.assertEqual(self.left_out(), ["oil-b-1.0-1.noarch"])
        self.assertIn("protected packages", self.recording.printed())

    @in_own_process
    def test_one_of_two_removals_that_are_impossible_together_is_left_out_even_if_an_installation_is_marked(self):
        self.install_protected_package_with_two_providers()
        self.started()
        changed = self.changes(self.apply, removes=["oil-a", "oil-b"], installs=["astrolabe"], answers=[1, 1])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, {"oil-a-1.0-1.noarch"}))
        self.assertEqual(self.left_out(), ["oil-b-1.0-1.noarch"])

    @in_own_process
    def test_a_removal_removes_dependent_packages_even_if_an_available_package_could_provide_the_dependency(self):
        """Like dnf, the script removes a dependent package even if an available package could replace the removed
        provider.
        """
        self.install_package_with_two_providers()
        self.started()
        changed = self.changes(self.apply, removes=["tern-mta"])
        self.assertEqual(changed, (set(), {"tern-mta-1.0-1.noarch", "lighthouse-1.0-1.noarch"}))
        self.assertEqual(self.recording.listed(), {"tern-mta-1.0-1.noarch": (REMOVE, USER),
                                                   "lighthouse-1.0-1.noarch": (REMOVE, DEPENDENCY)})
        # The script hides the available packages only during the transaction.
        self.again()
        self.assertIn("gull-mta", [package.name for package in self.available])

    @in_own_process
    def test_a_removal_keeps_dependent_packages_if_a_marked_package_provides_the_dependency(self):
        self.install_package_with_two_providers()
        self.started()
        changed = self.changes(self.apply, removes=["tern-mta"], installs=["gull-mta"])
        self.assertEqual(changed, ({"gull-mta-1.0-1.noarch"}, {"tern-mta-1.0-1.noarch"}))

    def install_package_with_two_providers(self):
        """Installs a mail transport, and a package that requires this or another mail transport."""
        self.build("lighthouse", "Requires: mail-transport")
        self.install("tern-mta", "lighthouse")

    def install(self, *names):
        """Installs packages with the dnf command."""
        subprocess.run(["dnf", "--noplugins", "--assumeyes", "--quiet", "--installroot", self.sandbox.root, "-c",
                        self.sandbox.root + "/etc/yum.conf",
                        "--setopt=reposdir=%s/etc/yum.repos.d" % self.sandbox.root, "install"] +
                       list(names), env=self.sandbox.environment(), check=True)

    def build(self, name, *lines):
        """Builds a package and adds it to a repository."""
        with tempfile.TemporaryDirectory() as work:
            spec = os.path.join(work, "it.spec")
            with open(spec, "w") as stream:
                stream.write("\n".join(["Name: " + name, "Version: 1.0", "Release: 1", "Summary: It", "License: MIT",
                                        "BuildArch: noarch"] + list(lines) +
                                       ["%description", "It.", "%files", ""]))
            subprocess.run(["rpmbuild", "-bb", "--quiet", "--define", "_topdir " + work, "--define", "_rpmdir " +
                            self.sandbox.repository("sandbox-file"), "--define", "_build_name_fmt %%{NAME}.rpm", spec],
                           check=True, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.index("sandbox-file")

    @in_own_process
    def test_markup_in_reasons_is_passed_on_unchanged(self):
        self.build("markup", "Requires: libmarkup(<b>&amp;%%1</b>)")
        self.started()
        self.apply(installs=["markup", "astrolabe"], answers=[0])
        self.assertIn("nothing provides libmarkup(<b>&amp;%1</b>) needed by markup-1.0-1.noarch",
                      self.recording.printed())
