"""Marks that cannot be carried out, alone or with each other, and what goes because of a removal."""

import os
import subprocess
import tempfile

from recordingmodule import CLEAN, DEPENDENCY, INSTALL, REMOVE, USER
from scenario import ScenarioTest, in_own_process
from vyresandbox import needs_groups

NOTHING = (set(), set())
BARRIER = "nothing provides libtide.so.9()(64bit) needed by tidewatch-2.0-1.noarch"


class QuestionTest(ScenarioTest):
    def question(self):
        """What was printed for the question; it stands alone."""
        self.assertEqual(self.recording.names().count("gpgsigcheck") -
                         len([name for name in self.recording.names() if name == "downloadEnd"]), 1)
        return self.recording.printed()

    def left_out(self):
        return sorted(str(each) for each in self.yumio.leftOut)

    def resolutions(self):
        """Counts the calls of the resolver from here on."""
        counted = []
        base = self.yumio.base
        run = base._run_hawkey_goal
        base._run_hawkey_goal = lambda *arguments: counted.append(1) or run(*arguments)
        return counted


class UpdatesTest(QuestionTest):
    @in_own_process
    def test_yes_applies_the_rest(self):
        self.started()
        counted = self.resolutions()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], installs=["astrolabe"],
                               answers=[1, 1])
        self.assertEqual(changed, ({"abacus-cli-3.3.0-2.x86_64", "astrolabe-5.6-1.x86_64"},
                                   {"abacus-cli-3.2.1-1.x86_64"}))
        text = self.recording.printed()
        self.assertTrue(text.startswith("Go on without these packages?\n\ntidewatch-2.0-1.noarch\n    "), text)
        self.assertIn(BARRIER, text)
        self.assertNotIn("abacus-cli", text)
        self.assertEqual(self.left_out(), ["tidewatch-2.0-1.noarch"])
        self.assertIs(self.yumio.leftOut[0], self.package(self.updates, "tidewatch"))
        self.assertNotIn("tidewatch-2.0-1.noarch", self.recording.listed())
        self.assertEqual(self.yumio.base.args, ["vyre: install astrolabe; upgrade abacus-cli"])
        # With everything, with what is possible, and with the rest.
        self.assertEqual(len(counted), 3)

    @in_own_process
    def test_no_changes_nothing(self):
        self.started()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], answers=[0])
        self.assertEqual(changed, NOTHING)
        self.assertEqual(self.recording.order(), ["gpgsigcheck", "userconfirm"])
        self.assertEqual(self.left_out(), [])

    @in_own_process
    def test_the_listing_can_be_refused_after_the_yes(self):
        self.started()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], answers=[1, 0])
        self.assertEqual(changed, NOTHING)
        # The next transaction begins without what was left out.
        self.apply(installs=["astrolabe"])
        self.assertEqual(self.left_out(), [])

    @in_own_process
    def test_with_the_best_candidates_only_it_is_the_same(self):
        self.configure("best=1")
        self.started()
        changed = self.changes(self.apply, updates=["tidewatch", "abacus-cli"], answers=[1, 1])
        self.assertEqual(changed, ({"abacus-cli-3.3.0-2.x86_64"}, {"abacus-cli-3.2.1-1.x86_64"}))
        self.assertIn(BARRIER, self.recording.printed())

    @in_own_process
    def test_where_the_configuration_skips_what_is_broken_it_is_the_same(self):
        self.configure("skip_broken=1")
        self.started()
        changed = self.changes(self.apply, installs=["moonbridge", "astrolabe"], answers=[1, 1])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, set()))
        self.assertIn("gravity >= 6", self.recording.printed())

    @in_own_process
    def test_what_is_impossible_alone_is_refused_without_a_question(self):
        self.started()
        self.assert_refused("libtide", updates=["tidewatch"])
        self.assert_refused("libtide", updates=["tidewatch"], installs=["moonbridge"])
        self.assertEqual(self.recording.order(), [])

    @in_own_process
    def test_of_two_that_exclude_each_other_one_is_left_out(self):
        self.started()
        added, gone = self.changes(self.apply, installs=["tern-mta", "gull-mta", "astrolabe"], answers=[1, 1])
        self.assertEqual(len(added), 2)
        self.assertEqual(len(self.left_out()), 1)
        self.assertEqual(added | set(self.left_out()),
                         {"tern-mta-1.0-1.noarch", "gull-mta-1.0-1.noarch", "astrolabe-5.6-1.x86_64"})
        self.assertIn("conflicts with", self.recording.printed())

    @in_own_process
    def test_all_updates_but_the_broken_one(self):
        self.started()
        names = sorted(set(package.name for package in self.updates) - {"newpost"})
        self.assertGreater(len(names), 15)
        self.apply(updates=names, answers=[1, 1])
        self.assertEqual(self.left_out(), ["tidewatch-2.0-1.noarch"])
        self.again()
        self.assertEqual([package.name for package in self.updates if package.name != "libcairn"], ["tidewatch"])

    @in_own_process
    def test_what_the_package_manager_does_not_take_is_left_out_too(self):
        self.started()
        pair = [self.package(self.available, "almanac"), self.package(self.installed, "almanac")]
        self.recording.answers = [1, 1]
        added, gone = self.changes(self.yumio.apply, [self.package(self.available, "astrolabe")], [pair], [], [], [],
                                   [])
        self.assertEqual((added, gone), ({"astrolabe-5.6-1.x86_64"}, set()))
        self.assertIn("almanac-1.9-1.noarch is not newer", self.recording.printed())

    @in_own_process
    def test_what_goes_on_is_said(self):
        self.started()
        shown = []
        self.script["showActivity"].__globals__["changeActivity"] = shown.append
        self.apply(updates=["tidewatch", "abacus-cli"], answers=[0])
        self.assertIn("Looking for what can be applied", shown)


class GroupQuestionTest(QuestionTest):
    def broken_member(self):
        """The update of a member of the group "weaving" needs what does not exist."""
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
    def test_the_update_of_a_group_says_what_it_leaves_out(self):
        self.broken_member()
        self.started()
        changed = self.changes(self.apply, group_updates=["weaving"], answers=[1, 1])
        self.assertEqual(changed, ({"loomctl-1.1-1.x86_64"}, {"loomctl-1.0-1.x86_64"}))
        text = self.recording.printed()
        self.assertTrue(text.startswith("Go on without these packages?\n\ntidewatch-2.0-1.noarch\n    "), text)
        self.assertIn(BARRIER, text)
        self.assertEqual(self.left_out(), ["Weaving"])
        # What is still listed has a reason the next time, too.
        self.again()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "Nothing of this can be applied:\ntidewatch-2.0.*\n"):
            self.apply(group_updates=["weaving"])

    @needs_groups
    @in_own_process
    def test_no_leaves_the_group_as_it_is(self):
        self.broken_member()
        self.started()
        self.assertEqual(self.changes(self.apply, group_updates=["weaving"], answers=[0]), NOTHING)
        self.assertEqual(self.recording.order(), ["gpgsigcheck", "userconfirm"])

    @needs_groups
    @in_own_process
    def test_with_the_best_candidates_only_it_is_the_same(self):
        self.configure("best=1")
        self.broken_member()
        self.started()
        changed = self.changes(self.apply, group_updates=["weaving"], answers=[1, 1])
        self.assertEqual(changed, ({"loomctl-1.1-1.x86_64"}, {"loomctl-1.0-1.x86_64"}))
        self.assertIn(BARRIER, self.recording.printed())
        self.assertTrue(self.yumio.base.conf.best)

    @needs_groups
    @in_own_process
    def test_the_installation_of_a_group_says_what_it_leaves_out(self):
        self.change_comps('<packagereq type="mandatory">pebble-go</packagereq>',
                          '<packagereq type="mandatory">pebble-go</packagereq>'
                          '<packagereq type="mandatory">moonbridge</packagereq>')
        self.started()
        added, gone = self.changes(self.apply, group_installs=["games"], answers=[1, 1])
        self.assertEqual((added, gone), ({"pebble-go-1.4-1.x86_64", "hedgerow-4.0-1.noarch", "orrery-3.7-1.x86_64"},
                                         set()))
        self.assertIn("moonbridge-1.0-1.noarch\n    ", self.recording.printed())
        self.assertIn("gravity >= 6", self.recording.printed())

    @needs_groups
    @in_own_process
    def test_a_group_and_a_package_can_both_have_to_be_left_out(self):
        self.broken_member()
        self.started()
        changed = self.changes(self.apply, group_updates=["weaving"], installs=["moonbridge"], answers=[1, 1])
        self.assertEqual(changed, ({"loomctl-1.1-1.x86_64"}, {"loomctl-1.0-1.x86_64"}))
        text = self.recording.printed()
        for line in ("moonbridge-1.0-1.noarch\n", "tidewatch-2.0-1.noarch\n", "gravity >= 6", BARRIER):
            self.assertIn(line, text)
        self.assertEqual(self.left_out(), ["Weaving", "moonbridge-1.0-1.noarch"])

    @needs_groups
    @in_own_process
    def test_a_member_that_is_marked_for_removal_is_not_lacking(self):
        self.started()
        changed = self.changes(self.apply, group_installs=["office"], group_updates=["weaving"], removes=["shuttle"],
                               answers=[1])
        self.assertIn("loomctl-1.1-1.x86_64", changed[0])


class RemovalTest(QuestionTest):
    @in_own_process
    def test_an_installation_takes_nothing_along_although_something_is_removed(self):
        self.started()
        self.assert_refused_of("sandstone-1.0-1.noarch", installs=["sandstone"], removes=["almanac"])

    def assert_refused_of(self, name, **actions):
        """The installation is left out, the removal is carried out."""
        added, gone = self.changes(self.apply, answers=[1, 1], **actions)
        self.assertEqual(added, set())
        self.assertNotIn("libgranite", " ".join(gone))
        self.assertEqual(self.left_out(), [name])
        self.assertIn("conflicts with libgranite", self.recording.printed())

    @in_own_process
    def test_what_needs_a_removed_package_goes_along_with_an_installation(self):
        self.started()
        changed = self.changes(self.apply, installs=["astrolabe"], removes=["flint-ssh"])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"},
                                   {"flint-ssh-8.8-1.x86_64", "vyre-network-suite-1.0-1.noarch"}))
        self.assertEqual(self.recording.listed(), {
            "astrolabe-5.6-1.x86_64": (INSTALL, USER), "flint-ssh-8.8-1.x86_64": (REMOVE, USER),
            "vyre-network-suite-1.0-1.noarch": (REMOVE, DEPENDENCY)})

    @in_own_process
    def test_the_dependents_of_the_removed_go_and_the_conflicting_installation_is_left_out(self):
        self.started()
        added, gone = self.changes(self.apply, installs=["sandstone", "astrolabe"], removes=["flint-ssh"],
                                   answers=[1, 1])
        self.assertEqual((added, gone), ({"astrolabe-5.6-1.x86_64"},
                                         {"flint-ssh-8.8-1.x86_64", "vyre-network-suite-1.0-1.noarch"}))
        self.assertEqual(self.recording.listed()["vyre-network-suite-1.0-1.noarch"], (REMOVE, DEPENDENCY))
        self.assertEqual(self.left_out(), ["sandstone-1.0-1.noarch"])

    @in_own_process
    def test_unused_dependencies_go_along_with_an_installation(self):
        self.started()
        self.apply(installs=["astrolabe"], removes=["trellis-editor"])
        self.assertEqual(self.recording.listed()["libtrellis-1.2-1.x86_64"], (REMOVE, CLEAN))

    @in_own_process
    def test_a_protected_package_prevents_only_its_own_removal(self):
        self.configure("protected_packages=almanac,vyre-network-suite")
        self.started()
        changed = self.changes(self.apply, removes=["almanac", "flint-ssh", "parrot", "birch-log"], answers=[1, 1])
        self.assertEqual(changed, (set(), {"parrot-1.0-1.noarch", "birch-log-3.0-1.x86_64"}))
        self.assertEqual(self.left_out(), ["almanac-1.9-1.noarch", "flint-ssh-8.8-1.x86_64"])
        self.assertIn("protected packages", self.recording.printed())

    @in_own_process
    def test_a_protected_package_stays_whatever_else_is_marked(self):
        self.configure("protected_packages=vyre-network-suite")
        self.started()
        changed = self.changes(self.apply, installs=["astrolabe"], removes=["flint-ssh"], answers=[1, 1])
        self.assertEqual(changed, ({"astrolabe-5.6-1.x86_64"}, set()))
        self.assertEqual(self.left_out(), ["flint-ssh-8.8-1.x86_64"])

    @in_own_process
    def test_many_impossible_removals_are_refused(self):
        names = "almanac,anvil-make,parrot,birch-log,barometer,beacon-dns,cinder-backup,abacus-cli,atrium-web,elaia," \
                "halyard,lantern-view,chisel-diff,delta-patch,fernleaf-icons,escapement,pewter-print,sluice-fw," \
                "libheather,libkestrel,libpumice,lexicon-en,meridian-tz"
        self.configure("protected_packages=" + names)
        self.started()
        counted = self.resolutions()
        self.assert_refused("protected", removes=names.split(",") + ["gallivant"])
        self.assertLess(len(counted), 50)

    @in_own_process
    def test_what_is_available_takes_the_place_of_nothing_that_is_removed(self):
        """As with the package manager's own command, a package goes that another provider could keep."""
        self.package_of_two_providers()
        self.started()
        changed = self.changes(self.apply, removes=["tern-mta"])
        self.assertEqual(changed, (set(), {"tern-mta-1.0-1.noarch", "lighthouse-1.0-1.noarch"}))
        self.assertEqual(self.recording.listed(), {"tern-mta-1.0-1.noarch": (REMOVE, USER),
                                                   "lighthouse-1.0-1.noarch": (REMOVE, DEPENDENCY)})
        # What there is to install is to be had afterwards.
        self.again()
        self.assertIn("gull-mta", [package.name for package in self.available])

    @in_own_process
    def test_another_provider_that_is_marked_keeps_what_needs_it(self):
        self.package_of_two_providers()
        self.started()
        changed = self.changes(self.apply, removes=["tern-mta"], installs=["gull-mta"])
        self.assertEqual(changed, ({"gull-mta-1.0-1.noarch"}, {"tern-mta-1.0-1.noarch"}))

    def package_of_two_providers(self):
        """Installs a mail transport and what needs one."""
        self.build("lighthouse", "Requires: mail-transport")
        subprocess.run(["dnf", "--noplugins", "--assumeyes", "--quiet", "--installroot", self.sandbox.root, "-c",
                        self.sandbox.root + "/etc/yum.conf",
                        "--setopt=reposdir=%s/etc/yum.repos.d" % self.sandbox.root, "install", "tern-mta",
                        "lighthouse"], env=self.sandbox.environment(), check=True)

    def build(self, name, *lines):
        """Adds a package to a repository."""
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
    def test_hostile_reasons_are_passed_on_as_they_are(self):
        self.build("markup", "Requires: libmarkup(<b>&amp;%%1</b>)")
        self.started()
        self.apply(installs=["markup", "astrolabe"], answers=[0])
        self.assertIn("nothing provides libmarkup(<b>&amp;%1</b>) needed by markup-1.0-1.noarch",
                      self.recording.printed())
