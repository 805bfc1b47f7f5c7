# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the advisories in repositories, compared with the list of "dnf updateinfo"."""

import os
import re
import subprocess

import updateinfo
from scenario import ScenarioTest, in_own_process

ADVISORIES = [
    # libcairn 2.1 is installed in both architectures.
    updateinfo.advisory("LSA-1", "security", ["abacus-cli 3.3.0-2.x86_64", "libcairn 2.2-1.x86_64",
                                              "libcairn 2.2-1.i686"],
                        "Important", cves=["CVE-2024-7", "CVE-2024-5"], bugs=[("17", "Wrong sums"), ("9", "")],
                        title="Wrong sums & more"),
    # The next two advisories name an older version and the installed version.
    updateinfo.advisory("LBA-2", "bugfix", ["abacus-cli 3.2.0-1.x86_64"], date="2023-01-02"),
    updateinfo.advisory("LEA-3", "enhancement", ["abacus-cli 3.2.1-1.x86_64", "almanac 1.9-1.noarch"],
                        date="2023-06-01"),
    # The next advisory names a newer version than the update in the repositories.
    updateinfo.advisory("LSA-4", "security", ["barometer 1.2-1.x86_64"], "Critical", date="2024-05-01"),
    # No repository has the update of almanac that the next advisory names.
    updateinfo.advisory("LSA-5", "security", ["almanac 2.0-1.noarch"]),
    updateinfo.advisory("LNA-6", "newpackage", ["anvil-make 1:4.1-1.x86_64", "astrolabe 5.6-1.x86_64"]),
    # The next two advisories name no installed package.
    updateinfo.advisory("LSA-7", "security", ["astrolabe 5.6-1.x86_64"], "Low"),
    updateinfo.advisory("LSA-8", "security", ["abacus-cli 3.3.0-2.i686"], "Moderate"),
    # Several versions of the kernel are installed.
    updateinfo.advisory("LSA-9", "security", ["kernel 6.1.25-1.x86_64", "kernel 6.1.31-1.x86_64"], "Moderate"),
    updateinfo.advisory("LSA-10", "security", ["chisel-diff 3.10-2.x86_64"], "Strange"),
]


class AdvisoriesTest(ScenarioTest):
    maxDiff = None

    def enter(self):
        super(AdvisoriesTest, self).enter()
        updateinfo.add(self.sandbox, "sandbox-updates", ADVISORIES)
        # A second repository also has the first advisory.
        updateinfo.add(self.sandbox, "sandbox-file", ADVISORIES[:1] + [
            updateinfo.advisory("LBA-20", "bugfix", ["tidewatch 1.5-1.noarch"])])

    def by_id(self):
        found = {each[0]: each for each in self.yumio.collectAdvisories()}
        self.assert_no_faults()
        return found

    def listed_by_dnf(self, *arguments):
        """The advisories that dnf lists, as (installed, identifier, label, package)."""
        root = self.sandbox.root
        done = subprocess.run(
            ["/usr/bin/dnf", "--quiet", "--noplugins", "--installroot", root, "-c", root + "/etc/yum.conf",
             "--setopt=reposdir=%s/etc/yum.repos.d" % root, "updateinfo", "list"] + list(arguments), check=True,
            env=self.sandbox.environment(), stdout=subprocess.PIPE, universal_newlines=True)
        found = set()
        for line in done.stdout.splitlines():
            words = re.match(r"(i )?\s*(\S+)\s+(\S+)\s+(\S+)$", line)
            self.assertIsNotNone(words, line)
            found.add((bool(words.group(1)),) + words.group(2, 3, 4))
        return found

    def listed(self):
        return set((obstacle == 1, id, severity or kind, "%s-%s.%s" % (name, evr, arch))
                   for id, kind, security, severity, rank, date, title, description, cves, bugs, packages
                   in self.yumio.collectAdvisories() for name, arch, evr, obstacle, offered in packages)

    @in_own_process
    def test_the_script_and_dnf_list_the_same_advisories(self):
        self.started()
        listed = self.listed()
        self.assertEqual(listed, self.listed_by_dnf("--all"))
        self.assertEqual(set(id for _, id, _, _ in listed), {
            "LSA-1", "LBA-2", "LEA-3", "LSA-4", "LSA-5", "LNA-6", "LSA-9", "LSA-10", "LBA-20"})
        self.assertEqual(set(row[1:] for row in listed if row[0]),
                         set(row[1:] for row in self.listed_by_dnf("--installed")))
        self.assertEqual(set(row[1:] for row in listed if not row[0]),
                         set(row[1:] for row in self.listed_by_dnf("--available")))

    @in_own_process
    def test_an_advisory_has_all_its_details(self):
        self.started()
        id, kind, security, severity, rank, date, title, description, cves, bugs, packages = self.by_id()["LSA-1"]
        self.assertEqual((kind, security, severity, rank, date, title), (
            "security", True, "Important/Sec.", 4, "2024-02-20", "Wrong sums & more"))
        self.assertEqual(cves, ["CVE-2024-5", "CVE-2024-7"])
        self.assertEqual(bugs, ["17 - Wrong sums", "9"])
        self.assertEqual(packages, [("abacus-cli", "x86_64", "3.3.0-2", 0, "3.3.0-2"),
                                    ("libcairn", "i686", "2.2-1", 0, "2.2-1"),
                                    ("libcairn", "x86_64", "2.2-1", 0, "2.2-1")])
        self.assertEqual(self.by_id()["LSA-10"][1:5], ("security", True, "Unknown/Sec.", 1))
        self.assertEqual(self.by_id()["LBA-2"][1:5], ("bugfix", False, "", 0))
        # The newest advisory comes first.
        self.assertEqual([each[0] for each in self.yumio.collectAdvisories()][0], "LSA-4")

    @in_own_process
    def test_each_package_of_an_advisory_has_the_reason_that_prevents_its_update(self):
        self.started()
        found = self.by_id()
        self.assertEqual(found["LBA-2"][-1], [("abacus-cli", "x86_64", "3.2.0-1", 1, "")])
        self.assertEqual(found["LSA-4"][-1], [("barometer", "x86_64", "1.2-1", 3, "1.1-2")])
        self.assertEqual(found["LSA-5"][-1], [("almanac", "noarch", "2.0-1", 2, "")])
        self.assertEqual(found["LSA-9"][-1], [("kernel", "x86_64", "6.1.25-1", 1, ""),
                                              ("kernel", "x86_64", "6.1.31-1", 0, "6.1.31-1")])
        # The versionlock plug-in hides all versions of a locked package except the locked version, and the
        # configuration hides excluded versions.
        settings = os.path.join(self.directory, "settings")
        os.makedirs(settings)
        for name, content in (("versionlock.conf", "[main]\nenabled=1\nlocklist=%s/locks\n" % settings),
                              ("locks", "abacus-cli\n"), ("generate_completion_cache.conf", "[main]\nenabled=0\n")):
            with open(os.path.join(settings, name), "w") as stream:
                stream.write(content.replace("abacus-cli", "abacus-cli-0:3.2.1-1.*"))
        self.configure("plugins=1", "pluginconfpath=" + settings, "exclude=libcairn-2.2*")
        self.again()
        self.assertEqual(self.by_id()["LSA-1"][-1], [("abacus-cli", "x86_64", "3.3.0-2", 4, ""),
                                                     ("libcairn", "i686", "2.2-1", 5, ""),
                                                     ("libcairn", "x86_64", "2.2-1", 5, "")])
        # If the excluded name has no version, the configuration also hides the installed packages, but not their
        # advisories.
        self.configure("exclude=libcairn")
        self.again()
        self.assertEqual(self.by_id()["LSA-1"][-1][1:], [("libcairn", "i686", "2.2-1", 5, ""),
                                                         ("libcairn", "x86_64", "2.2-1", 5, "")])

    @in_own_process
    def test_an_update_has_the_advisories_of_all_versions_newer_than_the_installed_version(self):
        self.started()
        found = {"%s.%s" % (update.name, update.arch): ids for update, ids in self.yumio.updateAdvisories}
        self.assertEqual(found, {
            "abacus-cli.x86_64": ["LSA-1"], "libcairn.x86_64": ["LSA-1"], "libcairn.i686": ["LSA-1"],
            "kernel.x86_64": ["LSA-9"], "chisel-diff.x86_64": ["LSA-10"], "tidewatch.noarch": ["LBA-20"]})
        self.yumio.reset()
        self.assertEqual(self.yumio.updateAdvisories, [])

    @in_own_process
    def test_each_package_has_a_text_that_lists_its_advisories(self):
        self.started()
        update = self.package(self.updates, "abacus-cli")
        text = "LSA-1 (Important/Sec., CVE-2024-5, CVE-2024-7): Wrong sums & more"
        expected = {
            # This advisory names an older version than the update in the repositories.
            self.package(self.updates, "tidewatch"): "LBA-20 (bugfix): The advisory LBA-20",
            update: text,
            self.package(self.installed, "abacus-cli"): "LEA-3 (enhancement): The advisory LEA-3",
            self.package(self.updates, "barometer"): "",
            self.package(self.available, "astrolabe"): "LNA-6 (newpackage): The advisory LNA-6",
            self.package(self.available, "pergola"): "",
        }
        astrolabe = self.package(self.available, "astrolabe")
        expected[astrolabe] = "LSA-7 (Low/Sec.): The advisory LSA-7\n" + expected[astrolabe]
        alone = {package: package.advisories for package in expected}
        self.assertEqual(alone, expected)
        # loadAdvisories() makes an index for searches. With this index, each package must have the same advisories as
        # without it.
        everything = self.updates + self.installed + self.available
        alone = [package.advisories for package in everything]
        self.yumio.loadAdvisories()
        self.assertEqual([package.advisories for package in everything], alone)
        self.assertEqual(set(package.name for package in everything if package.advisories), {
            "abacus-cli", "almanac", "astrolabe", "chisel-diff", "kernel", "libcairn", "tidewatch"})
        self.yumio.forgetAdvisories()
        self.assertEqual(update.advisories, text)

    @in_own_process
    def test_the_text_of_an_update_lists_all_its_advisories_even_if_there_are_many(self):
        versions = ["3.2.5-1", "3.3.0-2"]
        updateinfo.add(self.sandbox, "sandbox-updates", [
            updateinfo.advisory("LSA-%d" % number, "security", ["abacus-cli %s.x86_64" % versions[number % 2]],
                                date="2024-03-%02d" % (number - 100)) for number in range(101, 121)])
        updateinfo.add(self.sandbox, "sandbox-file", [])
        self.started()
        newest = ["LSA-%d" % number for number in range(120, 100, -1)]
        update = self.package(self.updates, "abacus-cli")
        self.assertEqual([line.split(" ")[0] for line in update.advisories.split("\n")], newest)
        # The tool tip in the State column names the first of these advisories, and the number of the others.
        self.assertEqual({package.name: ids for package, ids in self.yumio.updateAdvisories}, {"abacus-cli": newest})

    @in_own_process
    def test_all_advisory_lists_are_empty_if_no_repository_has_advisories(self):
        for name in ("sandbox-updates", "sandbox-file"):
            subprocess.run(["modifyrepo_c", "--remove", "updateinfo",
                            os.path.join(self.sandbox.repository(name), "repodata")], check=True,
                           stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.started()
        self.module("advisories").words = None
        self.assertEqual(self.yumio.collectAdvisories(), [])
        self.assertEqual(self.yumio.updateAdvisories, [])
        self.yumio.loadAdvisories()
        self.assertEqual(self.package(self.updates, "abacus-cli").advisories, "")
