# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of installed packages that the configuration excludes, and of the kinds of items in a transaction."""

import subprocess

from recordingmodule import OBSOLETED
from scenario import ScenarioTest, in_own_process
from vyresandbox import needs_groups


def names(packages):
    return [package.name for package in packages]


class ExcludedTest(ScenarioTest):
    def started_without(self, *lines):
        self.configure(*lines)
        self.started()
        self.excluded = list(self.yumio.collectAll().excluded)

    def command(self, *arguments):
        """The output of a dnf command that answers its question with "no"."""
        root = self.sandbox.root
        done = subprocess.run(
            ["dnf", "--noplugins", "--assumeno", "--installroot", root, "-c", root + "/etc/yum.conf",
             "--setopt=reposdir=%s/etc/yum.repos.d" % root] + list(arguments),
            env=dict(self.sandbox.environment(), LC_ALL="C.UTF-8"), stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.stdout.decode()

    @in_own_process
    def test_excluded_packages_are_collected_separately(self):
        self.started_without("exclude=oldpost,anvil-make")
        self.assertEqual(sorted(names(self.excluded)), ["anvil-make", "oldpost"])
        for packages in (self.installed, self.available, self.updates):
            self.assertNotIn("anvil-make", names(packages))

    @in_own_process
    def test_no_package_is_excluded_by_default(self):
        self.started_without()
        self.assertEqual(self.excluded, [])

    @in_own_process
    def test_exclusions_have_no_effect_if_disable_excludes_is_set(self):
        self.started_without("exclude=oldpost", "disable_excludes=all")
        self.assertEqual(self.excluded, [])
        self.assertEqual(self.changes(self.apply, removes=["oldpost"]), (set(), {"oldpost-1.8-1.x86_64"}))

    @in_own_process
    def test_an_excluded_installed_version_has_no_update(self):
        self.started_without("exclude=anvil-make-4.1*")
        self.assertEqual(names(self.excluded), ["anvil-make"])
        self.assertNotIn("anvil-make", names(self.updates))
        self.assertIn("barometer", names(self.updates))
        self.assertIn("No packages marked for upgrade", self.command("upgrade", "anvil-make"))

    @in_own_process
    def test_one_of_several_versions_can_be_excluded(self):
        self.started_without("exclude=kernel-6.1.20*")
        self.assertEqual([str(package) for package in self.excluded], ["kernel-6.1.20-1.x86_64"])
        self.assertIn("kernel", names(self.updates))
        self.assertEqual(self.changes(self.apply, removes=["kernel"]), (set(), {"kernel-6.1.25-1.x86_64"}))

    @in_own_process
    def test_another_package_can_replace_an_excluded_package(self):
        self.started_without("exclude=oldpost")
        self.assertIn("replacing  oldpost", self.command("install", "newpost"))
        changed = self.changes(self.apply, installs=["newpost"])
        self.assertEqual(changed, ({"newpost-2.0-1.x86_64"}, {"oldpost-1.8-1.x86_64"}))
        self.assertEqual(self.recording.listed()["oldpost-1.8-1.x86_64"][0], OBSOLETED)

    @in_own_process
    def test_a_removal_is_refused_if_an_excluded_package_needs_the_removed_package(self):
        self.started_without("exclude=vyre-network-suite")
        self.assertIn("problem with installed package vyre-network-suite", self.command("remove", "flint-ssh"))
        self.assert_refused("problem with installed package vyre-network-suite", removes=["flint-ssh"])

    @in_own_process
    def test_an_excluded_unused_dependency_is_kept(self):
        self.started_without("exclude=libtrellis")
        self.assertEqual(self.changes(self.apply, removes=["trellis-editor"]),
                         (set(), {"trellis-editor-1.2-1.x86_64"}))

    @needs_groups
    @in_own_process
    def test_an_excluded_member_of_a_removed_group_is_kept(self):
        self.started_without("exclude=easel")
        self.assertEqual(self.changes(self.apply, group_removes=["arts"]), (set(), {"palette-knife-1.0-1.noarch"}))


class ItemsTest(ScenarioTest):
    @in_own_process
    def test_the_change_of_an_installation_reason_is_an_item_of_the_transaction(self):
        self.configure("installonly_limit=2")
        self.started()
        words = []
        self.recording.before_answer = lambda: words.extend(
            item.action_name for item in self.yumio.base.transaction if item.action == 11)
        self.apply(updates=["kernel"])
        self.assertEqual(words, ["Reason Change"])
