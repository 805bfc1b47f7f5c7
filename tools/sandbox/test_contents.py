#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the packages and repositories of the sandbox, with the real rpm and the real dnf."""

import os
import re
import unittest

import dnf
import dnf.const
import hawkey
import libdnf.transaction
import rpm

import sandboxtest
from sandboxtest import OwnProcess, SandboxTest, copy_original, setUpModule, tearDownModule  # noqa: F401
from vyresandbox import extras, needs_groups
from vyresandbox.dnfbase import configured_base


class QueryTest(unittest.TestCase):
    """Tests of an unchanged sandbox that dnf reads."""

    @classmethod
    def setUpClass(cls):
        cls.sandbox = copy_original()
        cls.process = OwnProcess(cls.sandbox)
        cls.context = configured_base(cls.sandbox.root)
        cls.base = cls.context.__enter__()
        cls.base.fill_sack()
        if not cls.sandbox.without_groups:
            cls.base.read_comps()

    @classmethod
    def tearDownClass(cls):
        cls.context.__exit__(None, None, None)
        cls.process.stop()
        cls.sandbox.remove()

    def query(self, **filters):
        return self.base.sack.query().filter(**filters)

    def installed(self, name):
        return {str(package) for package in self.query(name=name).installed()}

    def available(self, name):
        return {str(package) for package in self.query(name=name).available()}

    def upgrades(self):
        return {str(package) for package in self.base.sack.query().upgrades()}

    def group(self, identifier):
        return next(group for group in self.base.comps.groups if group.id == identifier)

    def test_the_release_version_is_found_in_the_root(self):
        self.assertEqual(dnf.rpm.detect_releasever(self.sandbox.root), "9")

    def test_rpm_and_dnf_agree_on_the_installed_packages(self):
        seen = {str(package) for package in self.base.sack.query().installed()}
        self.assertEqual(self.sandbox.installed(), seen)
        self.assertGreater(len(seen), 40)

    def test_the_distribution_has_at_least_120_package_names(self):
        names = {package.name for package in self.base.sack.query()}
        self.assertGreaterEqual(len(names), 120)

    def test_repositories_have_the_expected_flags(self):
        flags = {
            repo.id: (repo.enabled, repo.gpgcheck, repo.baseurl[0].split(":")[0])
            for repo in self.base.repos.all()}
        # When dnf cannot reach a repository with skip_if_unavailable, dnf disables the repository.
        self.assertEqual(flags, {
            "sandbox-http": (True, False, "http"), "sandbox-file": (True, False, "file"),
            "sandbox-updates": (True, False, "http"), "sandbox-disabled": (False, False, "file"),
            "sandbox-unreachable": (False, False, "http"), "sandbox-signed": (True, True, "http")})
        with open(os.path.join(self.sandbox.root, "etc/yum.repos.d/sandbox-unreachable.repo")) as stream:
            self.assertIn("enabled=1\n", stream.read())
        carrying = {package.reponame for package in self.base.sack.query().available()}
        self.assertEqual(carrying, {"sandbox-http", "sandbox-file", "sandbox-updates", "sandbox-signed"})

    def test_packages_of_the_disabled_repository_are_not_available(self):
        self.assertEqual(self.available("hidden-gem"), set())
        names = os.listdir(self.sandbox.repository("sandbox-disabled"))
        self.assertIn("hidden-gem-1.0-1.noarch.rpm", names)

    def test_two_kernels_are_installed_and_a_third_is_available(self):
        self.assertEqual(self.installed("kernel"), {"kernel-6.1.20-1.x86_64", "kernel-6.1.25-1.x86_64"})
        self.assertIn("kernel-6.1.31-1.x86_64", self.available("kernel"))
        self.assertIn("kernel", self.base.conf.installonlypkgs)

    def test_packages_newer_than_the_installed_packages_are_upgrades(self):
        self.assertLessEqual({
            "abacus-cli-3.3.0-2.x86_64", "atrium-web-2.4.1-2.x86_64", "meridian-tz-2023d-2.noarch",
            "libcairn-2.2-1.x86_64", "libcairn-2.2-1.i686", "parrot-1.1-1.noarch"}, self.upgrades())

    def test_some_names_have_packages_of_two_architectures(self):
        self.assertEqual(self.installed("libcairn"), {"libcairn-2.1-1.x86_64", "libcairn-2.1-1.i686"})
        self.assertEqual(self.installed("libmoss"), set())
        self.assertEqual(self.available("libmoss"), {"libmoss-0.5-1.x86_64", "libmoss-0.5-1.i686"})
        self.assertEqual(self.installed("libslate"), {"libslate-4.0-1.x86_64"})
        self.assertIn("libslate-4.0-1.i686", self.available("libslate"))

    def test_some_packages_have_epochs(self):
        self.assertEqual(self.installed("quillbase"), {"quillbase-1:2.4-1.x86_64"})
        self.assertIn("quillbase-2:1.0-1.x86_64", self.upgrades())
        self.assertEqual(self.available("epochal"), {"epochal-3:0.1-1.noarch"})

    def test_some_packages_have_weak_dependencies(self):
        def relations(name, kind):
            return [str(relation) for relation in getattr(next(iter(self.query(name=name).available())), kind)]

        self.assertEqual(relations("orchard", "recommends"), ["orchard-plugins"])
        self.assertEqual(relations("orchard", "suggests"), ["orchard-samples"])
        self.assertEqual(relations("orchard-thumbnails", "supplements"), ["orchard"])
        self.assertEqual(relations("orchard-plugins", "enhances"), ["orchard"])
        self.assertEqual(relations("orchard", "requires_pre"), ["setup"])
        self.assertIn("(orchard-lang if lexicon-en)", relations("orchard", "requires"))

    def test_suites_are_in_the_rpm_group_suite(self):
        groups = {name: {package.group for package in self.query(name=name)} for name in (
            "vyre-office-suite", "vyre-network-suite", "vyre-games-suite", "ledger-calc")}
        self.assertEqual(groups, {
            "vyre-office-suite": {"Suite"}, "vyre-network-suite": {"Suite"}, "vyre-games-suite": {"Suite"},
            "ledger-calc": {"Applications/Productivity"}})
        self.assertEqual(self.installed("vyre-network-suite"), {"vyre-network-suite-1.0-1.noarch"})
        self.assertIn("vyre-network-suite-1.1-1.noarch", self.upgrades())

    def test_some_packages_are_large(self):
        large = next(iter(self.query(name="gargantua").available()))
        self.assertGreater(large.downloadsize, 4 << 20)
        tiles = self.query(name__glob="tilepack-*").available()
        self.assertGreaterEqual(len(tiles), 6)
        for package in [large] + list(tiles):
            self.assertEqual(package.reponame, "sandbox-http")
            self.assertGreater(package.downloadsize, 200000)

    def test_texts_use_many_writing_systems(self):
        for name, script in (
                ("ryabina", "[\u0400-\u04ff]"), ("sakura-ime", "[\u3040-\u30ff]"), ("hanzi-fonts", "[\u4e00-\u9fff]"),
                ("hangul-type", "[\uac00-\ud7af]"), ("qamus", "[\u0600-\u06ff]"), ("elaia", "[\u0370-\u03ff]"),
                ("rimon", "[\u0590-\u05ff]")):
            package = next(iter(self.query(name=name)))
            self.assertTrue(re.search(script, package.summary), name)
            self.assertTrue(re.search(script, package.description), name)

    def test_some_texts_contain_markup(self):
        package = next(iter(self.query(name="tagsoup").available()))
        markup = "<b>bold</b><script>alert(1)</script> & <img src=x>"
        self.assertIn(markup, package.summary)
        self.assertIn(markup, package.description)
        self.assertEqual(package.url, "https://larkspur.example/?a=<b>1</b>&c=\"2\"")
        self.assertEqual(package.packager, "<script>alert(2)</script> <tags@larkspur.example>")
        installed = next(iter(self.query(name="tagsoup-installed").installed()))
        self.assertIn("<u>underlined</u> &", installed.summary)

    def test_one_description_is_very_long(self):
        package = next(iter(self.query(name="longwinded").available()))
        self.assertGreater(len(package.description), 50000)

    def test_an_installed_package_has_a_change_log(self):
        header = next(self.base._ts.dbMatch("name", "tagsoup-installed"))
        texts = header[rpm.RPMTAG_CHANGELOGTEXT]
        self.assertEqual(len(texts), 3)
        self.assertIn("<script>alert(1)</script>", texts[0])

    @needs_groups
    def test_a_group_has_members_of_all_kinds(self):
        self.assertEqual({group.id for group in self.base.comps.groups if not group.uservisible}, {"core"})
        office = self.group("office")
        for kind, names in (
                ("mandatory", ["scribe-writer"]), ("default", ["almanac", "ledger-calc"]),
                ("optional", ["corkboard", "lectern-slides"]),
                ("conditional", ["scribe-fonts", "scribe-lexicon"])):
            members = getattr(office, kind + "_packages")
            self.assertEqual(sorted(member.name for member in members), names)
        self.assertIn("<b>", office.ui_name)

    @needs_groups
    def test_one_group_is_installed_according_to_the_history(self):
        known = {group.id for group in self.base.comps.groups if self.base.history.group.get(group.id)}
        self.assertEqual(known, {"arts"})

    @needs_groups
    def test_a_group_is_partly_installed(self):
        members = {member.name: bool(self.installed(member.name)) for member in self.group("network-tools").packages}
        self.assertEqual(members, {
            "cormorant-fetch": True, "nettle-scan": False, "flint-ssh": True, "weir-limit": False})

    @needs_groups
    def test_a_mandatory_member_of_a_group_has_an_update(self):
        self.assertEqual([member.name for member in self.group("weaving").mandatory_packages], ["loomctl"])
        self.assertIn("loomctl-1.1-1.x86_64", self.upgrades())

    def test_the_history_has_the_reasons_of_installed_packages(self):
        def reason(name):
            return libdnf.transaction.TransactionItemReasonToString(
                self.base.history.rpm.get_reason(next(iter(self.query(name=name).installed()))))

        self.assertEqual(reason("trellis-editor"), "user")
        self.assertEqual(reason("libtrellis"), "dependency")
        self.assertEqual(reason("easel"), "user" if self.sandbox.without_groups else "group")

    def test_databases_are_at_the_locations_that_dnf_and_rpm_expect(self):
        self.assertTrue(os.path.isfile(os.path.join(self.sandbox.root, "var/lib/rpm/rpmdb.sqlite")))
        self.assertTrue(os.listdir(os.path.join(self.sandbox.root, "var/lib/dnf")))


class HeaderTest(SandboxTest):
    """Tags of package files."""

    def test_a_change_log_has_the_newest_entry_first(self):
        header = self.header("sandbox-updates", "parrot-1.1-1.noarch.rpm")
        self.assertEqual(len(header[rpm.RPMTAG_CHANGELOGTEXT]), 3)
        self.assertIn("LSA-2024-017: a crafted file\n  could", header[rpm.RPMTAG_CHANGELOGTEXT][0])
        self.assertEqual(
            header[rpm.RPMTAG_CHANGELOGNAME][0], "Мария Орлова <maria@larkspur.example> - 9-2")
        times = header[rpm.RPMTAG_CHANGELOGTIME]
        self.assertEqual(times, sorted(times, reverse=True))

    def test_descriptive_tags_have_the_expected_values(self):
        header = self.header("sandbox-http", "tagsoup-1.0-1.noarch.rpm")
        self.assertEqual(header[rpm.RPMTAG_VENDOR], "Angle <b>Brackets</b> & Sons")
        self.assertEqual(header[rpm.RPMTAG_LICENSE], "MIT & <i>others</i>")
        header = self.header("sandbox-http", "gallivant-1.0-1.noarch.rpm")
        self.assertEqual(header[rpm.RPMTAG_VENDOR], "Wander Works")
        self.assertEqual(header[rpm.RPMTAG_PREFIXES], ["/opt/gallivant"])
        self.assertEqual(self.header("sandbox-http", "almanac-1.9-1.noarch.rpm")[rpm.RPMTAG_VENDOR],
                         "Larkspur Project")

    def test_a_prerequisite_differs_from_other_requirements(self):
        header = self.header("sandbox-http", "orchard-3.0-1.x86_64.rpm")
        flags = dict(zip(header[rpm.RPMTAG_REQUIRENAME], header[rpm.RPMTAG_REQUIREFLAGS]))
        self.assertTrue(flags["setup"] & rpm.RPMSENSE_SCRIPT_PRE)
        self.assertFalse(flags["libbough"] & rpm.RPMSENSE_SCRIPT_PRE)

    def test_one_package_has_2000_files(self):
        header = self.header("sandbox-http", "manyfiles-1.0-1.noarch.rpm")
        self.assertEqual(len(header[rpm.RPMTAG_BASENAMES]), 2000)


class ExtrasTest(SandboxTest):
    """Tests of the repositories that the root uses only after a call of use()."""

    def extra(self, name, groups=False):
        """A base with only this repository."""
        sandbox = self.copied()
        directory = os.path.join(sandbox.root, "etc/yum.repos.d")
        for file in os.listdir(directory):
            os.unlink(os.path.join(directory, file))
        sandbox.use(name)
        with open(os.path.join(sandbox.root, "etc/yum.conf"), "a") as stream:
            stream.write("module_platform_id=%s\ndeltarpm=1\n" % extras.PLATFORM)
        return self.base(sandbox, groups)

    def available(self, base):
        return {str(package) for package in base.sack.query().available()}

    def documents(self, name):
        with open(os.path.join(sandboxtest.original.repository(name), "repodata/repomd.xml")) as stream:
            return re.findall('<data type="([^"]+)">', stream.read())

    def test_the_root_does_not_use_the_extra_repositories_by_default(self):
        sandbox = self.copied()
        names = os.listdir(os.path.join(sandbox.root, "etc/yum.repos.d"))
        self.assertEqual([name for name in names if name.startswith("extra-")], [])
        self.assertEqual(sorted(os.listdir(os.path.join(sandbox.directory, "more"))), sorted(extras.REPOSITORIES))

    def test_only_packages_of_default_streams_are_available(self):
        base = self.extra("extra-modules")
        container = base._moduleContainer
        self.assertEqual({(module.getName(), module.getStream()) for module in container.getModulePackages()},
                         {("grove", "0"), ("grove", "1"), ("grove", "2"), ("orangery", "5"), ("tidepool", "7")})
        self.assertEqual(container.getDefaultStream("grove"), "1")
        # The packages of other streams and the newer package without a module are not available.
        self.assertEqual(self.available(base), {
            "grove-cli-1.4-1.module+1.noarch", "grove-data-1.4-1.module+1.noarch", "grove-map-1.0-1.noarch",
            "grove-axe-1.0-1.noarch"})

    def test_an_update_has_an_advisory(self):
        base = self.extra("extra-advisories")
        packages = base.sack.query().available().filterm(name="adviser", version="1.1")
        self.assertEqual([advisory.id for package in packages
                          for advisory in package.get_advisories(hawkey.EQ)], ["LSA-2024-021"])

    def test_metadata_are_available_in_zchunk_and_in_the_usual_format(self):
        self.assertLessEqual({"primary", "primary_zck", "filelists_zck", "other_zck"},
                             set(self.documents("extra-zchunk")))
        self.assertEqual(self.available(self.extra("extra-zchunk")), {"chunky-1.0-1.noarch"})

    def test_all_metadata_are_compressed_with_zstd(self):
        files = os.listdir(os.path.join(sandboxtest.original.repository("extra-zstd"), "repodata"))
        self.assertEqual([name for name in files if name != "repomd.xml" and not name.endswith(".zst")], [])
        self.assertEqual(len(files), 4)
        self.assertEqual(self.available(self.extra("extra-zstd")), {"zesty-1.0-1.noarch"})

    def test_an_update_has_a_delta_that_is_smaller_than_the_package(self):
        self.assertIn("prestodelta", self.documents("extra-deltas"))
        base = self.extra("extra-deltas")
        new, = base.sack.query().available().filterm(name="delta-tides", version="1.1")
        delta = new.get_delta_from_evr("1.0-1")
        if delta is None and [int(part) for part in dnf.const.VERSION.split(".")] >= [4, 24]:
            self.skipTest("dnf %s finds no deltas in the metadata" % dnf.const.VERSION)
        self.assertLess(delta.downloadsize, new.downloadsize / 2)
        self.assertTrue(os.path.isfile(os.path.join(sandboxtest.original.repository("extra-deltas"), delta.location)))

    @needs_groups
    def test_an_environment_consists_of_groups(self):
        base = self.extra("extra-environments", groups=True)
        environment, = base.comps.environments
        self.assertEqual(environment.id, extras.ENVIRONMENT)
        self.assertEqual([group.name for group in environment.group_ids], ["habitat-waters"])
        self.assertEqual([group.name for group in environment.option_ids], ["habitat-rocks"])

    def test_a_package_has_a_rich_dependency(self):
        base = self.extra("extra-rules")
        package, = base.sack.query().available().filterm(name="rich-or")
        self.assertEqual([str(relation) for relation in package.requires], ["(rich-left or rich-right)"])


if __name__ == "__main__":
    unittest.main()
