#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the sandbox's properties, with the real rpm and the real dnf."""

import collections
import logging
import os
import re
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import time
import unittest
import urllib.error
import urllib.request

DIRECTORY = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, DIRECTORY)

import dnf
import dnf.const
import dnf.exceptions
import hawkey
import libdnf.transaction
import rpm

import vyresandbox
from vyresandbox import Sandbox, extras, needs_groups, server
from vyresandbox.dnfbase import configured_base, use_sandbox_database

EXECUTABLE = os.path.join(DIRECTORY, "sandbox")

Outcome = collections.namedtuple("Outcome", "status output errors")

workspace = None
original = None


def setUpModule():
    global workspace, original
    logging.getLogger("dnf").addHandler(logging.NullHandler())
    use_sandbox_database()
    workspace = tempfile.mkdtemp(prefix="sandbox-test-")
    subprocess.run([EXECUTABLE, "make", os.path.join(workspace, "original")], check=True)
    original = Sandbox.made(os.path.join(workspace, "original"))


def tearDownModule():
    shutil.rmtree(workspace)


def copy_original():
    return original.copy(os.path.join(tempfile.mkdtemp(dir=workspace), "copy"))


class OwnProcess(object):
    """Runs the server of a sandbox in a separate process. If the server were a thread of the test's process, dnf would
    block the server, because dnf holds the interpreter lock while it downloads.
    """

    def __init__(self, sandbox):
        self.process = subprocess.Popen(
            [EXECUTABLE, "run", sandbox.directory, "--", "sh", "-c", "echo started; read line"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self.process.stdout.readline()

    def stop(self):
        self.process.communicate()


class SandboxTest(unittest.TestCase):
    @property
    def sandbox(self):
        return original

    def copied(self):
        """A copy of the sandbox for this test."""
        sandbox = copy_original()
        self.addCleanup(sandbox.remove)
        return sandbox

    def served(self):
        """A copy with a running server."""
        sandbox = self.copied()
        self.addCleanup(OwnProcess(sandbox).stop)
        return sandbox

    def base(self, sandbox, groups=False):
        """Returns a dnf base with all packages. The base is valid until the test ends."""
        context = configured_base(sandbox.root)
        base = context.__enter__()
        self.addCleanup(context.__exit__, None, None, None)
        base.fill_sack()
        if groups:
            base.read_comps()
        return base

    def transaction(self, base):
        """The steps of the resolved transaction, as pairs of action and package."""
        return {(item.action_name, str(item.pkg)) for item in base.transaction}

    def apply(self, base):
        base.download_packages(list(base.transaction.install_set))
        base.do_transaction()

    def rpm(self, sandbox, *arguments):
        command = ["rpm", "--root", sandbox.root, "--define", "_dbpath /var/lib/rpm"] + list(arguments)
        done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE)
        # On a system with another package manager, rpm first prints advice. Some versions of rpm warn that scriptlets
        # of another root see the real /tmp.
        errors = re.sub(r"(?m)^(rpm: .*|warning: private mounts in chroot not implemented)\n", "", done.stderr.decode())
        return Outcome(done.returncode, done.stdout.decode(), errors)

    def file(self, sandbox, repository, name):
        return os.path.join(sandbox.repository(repository), name)

    def header(self, repository, name):
        """The header of a package file."""
        reader = rpm.ts()
        reader.setVSFlags(-1)
        with open(self.file(original, repository, name), "rb") as stream:
            return reader.hdrFromFdno(stream.fileno())


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
        with open(os.path.join(original.repository(name), "repodata/repomd.xml")) as stream:
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
        files = os.listdir(os.path.join(original.repository("extra-zstd"), "repodata"))
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
        self.assertTrue(os.path.isfile(os.path.join(original.repository("extra-deltas"), delta.location)))

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


class ResolveTest(SandboxTest):
    """Transactions that dnf resolves or refuses."""

    def resolve_install(self, *names):
        base = self.base(self.served())
        for name in names:
            base.install(name)
        base.resolve()
        return {str(package) for package in base.transaction.install_set}

    def assert_unresolvable(self, *names):
        with self.assertRaises(dnf.exceptions.DepsolveError):
            self.resolve_install(*names)

    def test_dependencies_of_all_kinds_are_installed(self):
        self.assertEqual(self.resolve_install("orchard"), {
            "orchard-3.0-1.x86_64", "libbough-1.1-1.x86_64", "libtwig-1.0-1.x86_64", "orchard-lang-3.0-1.noarch",
            "orchard-plugins-3.0-1.noarch", "orchard-thumbnails-3.0-1.noarch"})

    def test_a_suite_installs_its_members(self):
        self.assertEqual(self.resolve_install("vyre-office-suite"), {
            "vyre-office-suite-1.0-1.noarch", "ledger-calc-2.0-1.x86_64", "scribe-writer-2.0-1.x86_64",
            "lectern-slides-2.0-1.x86_64"})

    def test_a_package_with_a_missing_dependency_is_refused(self):
        self.assert_unresolvable("moonbridge")

    def test_conflicting_packages_are_refused(self):
        self.assert_unresolvable("tern-mta", "gull-mta")
        self.assert_unresolvable("sandstone")
        self.assertEqual(self.resolve_install("tern-mta"), {"tern-mta-1.0-1.noarch"})

    def test_a_dependency_is_removed_with_the_last_package_that_needs_it(self):
        base = self.base(self.served())
        base.remove("trellis-editor")
        base.resolve(allow_erasing=True)
        self.assertEqual(self.transaction(base), {
            ("Removed", "trellis-editor-1.2-1.x86_64"), ("Removed", "libtrellis-1.2-1.x86_64")})

    def test_an_update_of_all_packages_leaves_out_an_impossible_update(self):
        base = self.base(self.served())
        base.upgrade_all()
        base.resolve()
        done = self.transaction(base)
        self.assertIn(("Obsoleted", "oldpost-1.8-1.x86_64"), done)
        self.assertIn(("Install", "kernel-6.1.31-1.x86_64"), done)
        self.assertIn(("Install", "nettle-scan-7.9-1.x86_64"), done)
        self.assertNotIn("tidewatch-2.0-1.noarch", {name for _, name in done})

    @needs_groups
    def test_a_conditional_member_is_installed_only_if_the_package_in_its_condition_is_installed(self):
        base = self.base(self.served(), groups=True)
        base.group_install("office", ("mandatory", "default", "conditional"))
        base.resolve()
        names = {package.name for package in base.transaction.install_set}
        self.assertEqual(names, {"scribe-writer", "ledger-calc", "scribe-lexicon"})


class TransactionTest(SandboxTest):
    """Transactions that dnf or rpm runs."""

    def test_dnf_updates_everything(self):
        sandbox = self.served()
        base = self.base(sandbox)
        base.upgrade_all()
        base.resolve()
        self.apply(base)
        installed = sandbox.installed()
        self.assertLessEqual({
            "kernel-6.1.20-1.x86_64", "kernel-6.1.25-1.x86_64", "kernel-6.1.31-1.x86_64",
            "quillbase-2:1.0-1.x86_64", "newpost-2.0-1.x86_64", "libcairn-2.2-1.i686", "tidewatch-1.0-1.noarch"},
            installed)
        self.assertNotIn("quillbase-1:2.4-1.x86_64", installed)

    def test_a_file_conflict_makes_the_transaction_fail(self):
        sandbox = self.served()
        for names, path in (
                (("inkwell-classic", "inkwell-modern"), "/usr/share/inkwell/palette.conf"),
                (("vanity-shell",), "/bin/sh")):
            base = self.base(sandbox)
            for name in names:
                base.install(name)
            base.resolve()
            with self.assertRaises(dnf.exceptions.Error) as caught:
                self.apply(base)
            self.assertIn(path, str(caught.exception))
            self.assertFalse([name for name in sandbox.installed() if name.startswith(names)])

    def install(self, sandbox, name, *options):
        return self.rpm(sandbox, "-i", *(options + (self.file(sandbox, "sandbox-http", name),)))

    def test_scriptlets_print_on_both_streams(self):
        sandbox = self.copied()
        installing = self.install(sandbox, "chatterbox-1.0-1.noarch.rpm")
        erasing = self.rpm(sandbox, "-e", "chatterbox")
        for outcome, sections in ((installing, ("pre", "post")), (erasing, ("preun", "postun"))):
            self.assertEqual(outcome.status, 0)
            self.assertEqual(outcome.output.splitlines(), [
                "chatterbox: %s to standard output" % section for section in sections])
            self.assertEqual(outcome.errors.splitlines(), [
                "chatterbox: %s to standard error" % section for section in sections])

    def test_an_update_runs_the_scriptlets_of_both_versions(self):
        sandbox = self.copied()
        outcome = self.rpm(sandbox, "-U", self.file(sandbox, "sandbox-updates", "parrot-1.1-1.noarch.rpm"))
        self.assertEqual(outcome.output.splitlines(), [
            "parrot-%s to standard output" % part for part in ("1.1: pre", "1.1: post", "1.0: preun", "1.0: postun")])

    def test_failing_pre_and_preun_scriptlets_prevent_the_change(self):
        sandbox = self.copied()
        outcome = self.install(sandbox, "brokenlatch-1.0-1.noarch.rpm")
        self.assertNotEqual(outcome.status, 0)
        self.assertNotIn("brokenlatch-1.0-1.noarch", sandbox.installed())
        self.assertIn("exit status 1", outcome.errors)
        outcome = self.install(sandbox, "limpgate-1.0-1.noarch.rpm")
        self.assertIn("limpgate-1.0-1.noarch", sandbox.installed())
        self.assertIn("exit status 3", outcome.errors)
        outcome = self.rpm(sandbox, "-e", "stickyburr")
        self.assertNotEqual(outcome.status, 0)
        self.assertIn("stickyburr-1.0-1.noarch", sandbox.installed())

    def test_a_scriptlet_prints_300000_bytes_to_each_stream(self):
        outcome = self.install(self.copied(), "loudhailer-1.0-1.noarch.rpm")
        self.assertEqual((len(outcome.output), len(outcome.errors)), (300000, 300000))
        self.assertTrue(outcome.output.startswith("loudhailer: stdout line 00001 of 06000 "))
        self.assertEqual(len(set(outcome.errors.splitlines())), 6000)

    def test_a_scriptlet_prints_text_without_a_final_line_feed(self):
        sandbox = self.copied()
        outcome = self.install(sandbox, "halfline-1.0-1.noarch.rpm")
        self.assertEqual(outcome.output, "halfline: first line\nhalfline: no line feed after this")
        self.assertEqual(self.rpm(sandbox, "-e", "halfline").errors, "halfline: nor after this")

    def test_a_slow_scriptlet_prints_its_steps(self):
        outcome = self.install(self.copied(), "slowpoke-1.0-1.noarch.rpm")
        self.assertEqual(outcome.output, "slowpoke: step 1\nslowpoke: step 2\nslowpoke: step 3\n")

    def test_scriptlets_wait_for_the_removal_of_a_file(self):
        sandbox = self.copied()
        outcome = self.rpm(sandbox, "-U", self.file(sandbox, "sandbox-updates", "doorkeeper-1.1-1.noarch.rpm"))
        self.assertEqual(outcome.output, "doorkeeper: begin\ndoorkeeper: end\ndoorkeeper-1.0: gone\n")
        for name in ("nightwatch", "glutton"):
            path = os.path.join(sandbox.root, "tmp", name)
            self.assertIn("%s: begin\n" % name, self.install(sandbox, name + "-1.0-1.noarch.rpm").output)
            self.rpm(sandbox, "-e", name)
            open(path, "w").close()
            package = self.file(sandbox, "sandbox-http", name + "-1.0-1.noarch.rpm")
            with subprocess.Popen(["rpm", "--root", sandbox.root, "--define", "_dbpath /var/lib/rpm", "-i", package],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as installing:
                while not os.path.exists(path + ".waiting"):
                    time.sleep(0.01)
                if name == "nightwatch":
                    self.assertEqual(installing.wait(), 0)
                    self.assertIn("nightwatch-1.0-1.noarch", sandbox.installed())
                else:
                    self.assertIsNone(installing.poll())
                os.unlink(path)
                self.assertEqual(installing.wait(), 0)
            while os.path.exists(path + ".waiting"):
                time.sleep(0.01)

    def test_a_package_can_be_relocated(self):
        sandbox = self.copied()
        self.assertEqual(self.rpm(sandbox, "-e", "gallivant").status, 0)
        outcome = self.install(sandbox, "gallivant-1.0-1.noarch.rpm", "--prefix", "/usr/elsewhere")
        self.assertEqual(outcome.status, 0, outcome.errors)
        self.assertTrue(os.path.exists(os.path.join(sandbox.root, "usr/elsewhere/bin/gallivant")))

    def test_installed_programs_run_in_the_root(self):
        done = subprocess.run(
            ["chroot", original.root, "/usr/bin/abacus-cli"], stdout=subprocess.PIPE, check=True)
        self.assertEqual(done.stdout, b"abacus-cli 3.2.1\n")


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


class SignatureTest(SandboxTest):
    def downloaded(self, base, names):
        packages = {name: next(iter(base.sack.query().available().filter(name=name))) for name in names}
        base.download_packages(list(packages.values()))
        return packages

    def test_no_key_is_imported(self):
        self.assertNotEqual(self.rpm(original, "-q", "gpg-pubkey").status, 0)

    def test_dnf_asks_for_the_key_and_then_accepts_only_packages_that_the_key_signed(self):
        sandbox = self.served()
        names = ("wax-tablet", "wax-candle", "wax-polish", "wax-forged", "wax-blank", "abacus-cli")
        base = self.base(sandbox)
        packages = self.downloaded(base, names)
        verdicts = {name: base.package_signature_check(package) for name, package in packages.items()}
        self.assertEqual({name: verdict[0] for name, verdict in verdicts.items()}, {
            "wax-tablet": 1, "wax-candle": 1, "wax-polish": 1, "wax-forged": 1, "wax-blank": 2, "abacus-cli": 0})
        self.assertIn("is not signed", verdicts["wax-blank"][1])
        asked = []
        with self.assertRaises(dnf.exceptions.Error):
            base.package_import_key(packages["wax-tablet"], lambda *key: asked.append(key) or False)
        self.assertEqual(len(asked), 1)
        self.assertEqual(base.package_signature_check(packages["wax-tablet"])[0], 1)

        # A dnf base asks only once for the keys of a repository.
        base = self.base(sandbox)
        packages = self.downloaded(base, names)
        base.package_import_key(packages["wax-tablet"], lambda *key: True)
        self.assertEqual(len([name for name in sandbox.installed() if name.startswith("gpg-pubkey-")]), 1)
        accepted = {name for name, package in packages.items() if base.package_signature_check(package)[0] == 0}
        self.assertEqual(accepted, {"wax-tablet", "wax-candle", "wax-polish", "abacus-cli"})
        with self.assertRaises(dnf.exceptions.Error):
            base.package_import_key(packages["wax-forged"], lambda *key: True)


class CopyTest(SandboxTest):
    def test_changes_to_a_copy_do_not_change_the_original(self):
        before = original.installed()
        sandbox = self.copied()
        sandbox.rpm("-e", "almanac")
        self.assertEqual(before - sandbox.installed(), {"almanac-1.9-1.noarch"})
        package = self.file(sandbox, "sandbox-http", "almanac-1.9-1.noarch.rpm")
        with open(package, "r+b") as stream:
            stream.truncate(10)
        os.unlink(self.file(sandbox, "sandbox-file", "repodata/repomd.xml"))
        self.assertEqual(original.installed(), before)
        self.assertGreater(os.path.getsize(self.file(original, "sandbox-http", os.path.basename(package))), 1000)
        self.assertTrue(os.path.exists(self.file(original, "sandbox-file", "repodata/repomd.xml")))

    def test_the_repository_files_of_a_copy_refer_only_to_the_copy(self):
        sandbox = self.copied()
        for name in ("sandbox-file", "sandbox-disabled", "sandbox-signed"):
            with open(os.path.join(sandbox.root, "etc/yum.repos.d", name + ".repo")) as stream:
                text = stream.read()
            self.assertIn(sandbox.directory + "/", text)
            self.assertNotIn(original.directory + "/", text)

    def test_existing_directories_are_refused(self):
        with self.assertRaises(RuntimeError):
            original.copy(workspace)
        with self.assertRaises(RuntimeError):
            vyresandbox.make(workspace)
        with self.assertRaises(RuntimeError):
            Sandbox.made(tempfile.mkdtemp(dir=workspace))

    def test_the_make_command_leaves_nothing_behind_if_it_fails(self):
        target = os.path.join(workspace, "failed")
        with tempfile.TemporaryDirectory() as empty:
            done = subprocess.run(
                [sys.executable, EXECUTABLE, "make", target], env=dict(os.environ, PATH=empty, TMPDIR=empty),
                stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            self.assertEqual(os.listdir(empty), [])
        self.assertNotEqual(done.returncode, 0)
        self.assertFalse(os.path.exists(target))


class ServerTest(SandboxTest):
    index = "/sandbox-http/repodata/repomd.xml"

    def copied(self):
        sandbox = super(ServerTest, self).copied()
        sandbox.start()
        return sandbox

    def dnf(self, sandbox, *arguments):
        """Runs the command dnf. Returns its status and its output."""
        command = ["dnf", "--assumeyes", "--installroot", sandbox.root, "-c", sandbox.root + "/etc/yum.conf",
                   "--setopt=reposdir=%s/etc/yum.repos.d" % sandbox.root]
        done = subprocess.run(
            command + list(arguments), env=sandbox.environment(), stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        return done.returncode, done.stdout.decode()

    def fetch(self, sandbox, path, **headers):
        request = urllib.request.Request(sandbox.server.url + path, headers=headers)
        with urllib.request.urlopen(request, timeout=30) as answer:
            return answer.status, answer.read()

    def content(self, sandbox):
        with open(self.file(sandbox, "sandbox-http", "repodata/repomd.xml"), "rb") as stream:
            return stream.read()

    def test_the_server_sends_files_and_ranges_and_logs_requests(self):
        sandbox = self.copied()
        content = self.content(sandbox)
        self.assertEqual(self.fetch(sandbox, self.index), (200, content))
        self.assertEqual(self.fetch(sandbox, self.index, Range="bytes=100-"), (206, content[100:]))
        for path in ("/sandbox-http/nothing", "/../root/etc/yum.conf", "/%2e%2e/root/etc/yum.conf", "/"):
            with self.assertRaises(urllib.error.HTTPError) as caught:
                self.fetch(sandbox, path)
            self.assertEqual(caught.exception.code, 404)
        self.assertEqual(sandbox.server.paths()[:2], [self.index, self.index])
        self.assertEqual(sandbox.server.paths(206), [self.index])
        self.assertEqual(len(sandbox.server.paths(404)), 4)

    def test_faults_change_the_answers_of_the_server(self):
        sandbox = self.copied()
        content = self.content(sandbox)
        faults = sandbox.server.faults
        faults[self.index] = server.status(503)
        with self.assertRaises(urllib.error.HTTPError) as caught:
            self.fetch(sandbox, self.index)
        self.assertEqual(caught.exception.code, 503)
        faults[self.index] = server.truncated(20)
        with self.assertRaises(Exception) as caught:
            self.fetch(sandbox, self.index)
        self.assertEqual(getattr(caught.exception, "partial", None), content[:20])
        faults[self.index] = server.corrupted()
        status, received = self.fetch(sandbox, self.index)
        self.assertEqual((status, len(received)), (200, len(content)))
        self.assertNotEqual(received, content)
        faults[self.index] = server.paced(20 * len(content))
        self.assertEqual(self.fetch(sandbox, self.index), (200, content))
        del faults[self.index]
        self.assertEqual(self.fetch(sandbox, self.index), (200, content))

    def test_dnf_fails_if_a_fault_removes_a_package_from_the_server(self):
        sandbox = self.copied()
        package = "/sandbox-http/gargantua-1.0-1.noarch.rpm"
        sandbox.server.faults[package] = server.status(404)
        status, output = self.dnf(sandbox, "install", "gargantua")
        self.assertEqual(status, 1, output)
        self.assertIn(package, sandbox.server.paths(404))
        del sandbox.server.faults[package]
        status, output = self.dnf(sandbox, "install", "gargantua")
        self.assertEqual(status, 0, output)
        self.assertIn("gargantua-1.0-1.noarch", sandbox.installed())

    def test_packages_are_downloaded_by_http(self):
        sandbox = self.copied()
        status, output = self.dnf(sandbox, "install", "tilepack-*")
        self.assertEqual(status, 0, output)
        self.assertEqual(len([path for path in sandbox.server.paths(200) if "/tilepack-" in path]), 8)

    def test_a_hanging_request_does_not_delay_the_stop_of_the_server(self):
        sandbox = self.copied()
        sandbox.server.faults[self.index] = server.hang()
        connection = socket.create_connection(("127.0.0.1", sandbox.server.port))
        self.addCleanup(connection.close)
        connection.sendall(b"GET %s HTTP/1.0\r\n\r\n" % self.index.encode())
        deadline = time.monotonic() + 30
        while not sandbox.server.paths() and time.monotonic() < deadline:
            time.sleep(0.01)
        self.assertEqual(sandbox.server.paths(), [self.index])
        connection.settimeout(30)
        sandbox.stop()
        self.assertEqual(connection.recv(1), b"")

    def test_a_second_start_of_the_server_keeps_the_port_and_expires_the_metadata(self):
        sandbox = self.copied()
        port = sandbox.server.port
        self.make_caches(sandbox)
        sandbox.stop()
        with self.assertRaises(ConnectionRefusedError):
            socket.create_connection(("127.0.0.1", port))
        sandbox.start()
        self.assertEqual(sandbox.server.port, port)
        self.assertEqual(sandbox.server.paths(), [])
        self.make_caches(sandbox)
        self.assertEqual(sandbox.server.paths(200).count(self.index), 2)

    def make_caches(self, sandbox):
        """Fills the caches of the command dnf and of VYRE, unless they are fresh."""
        for place in ("/var/cache/dnf", "/var/cache/yum"):
            with open(sandbox.root + "/etc/yum.conf", "w") as stream:
                stream.write("[main]\nmetadata_expire=86400\ncachedir=%s\n" % place)
            # Unlike a query, an update does not use expired metadata.
            output = self.dnf(sandbox, "--assumeno", "update", "abacus-cli")[1]
            self.assertIn("3.3.0-2", output)
            self.assertIn("sandbox-http.solv", os.listdir(sandbox.root + place))

    def test_the_sandbox_can_expire_and_clear_the_caches_of_dnf_and_vyre(self):
        sandbox = self.copied()
        self.make_caches(sandbox)
        fetched = sandbox.server.paths(200).count(self.index)
        self.make_caches(sandbox)
        self.assertEqual((fetched, sandbox.server.paths(200).count(self.index)), (2, 2))
        sandbox.expire_metadata()
        self.make_caches(sandbox)
        self.assertEqual(sandbox.server.paths(200).count(self.index), 4)
        sandbox.clear_cache()
        for place in ("/var/cache/dnf", "/var/cache/yum"):
            self.assertFalse(os.path.exists(sandbox.root + place))


class CommandLineTest(SandboxTest):
    def run_sandbox(self, *arguments):
        done = subprocess.run(
            [EXECUTABLE] + list(arguments), stdout=subprocess.PIPE, stderr=subprocess.PIPE, universal_newlines=True)
        return Outcome(done.returncode, done.stdout, done.stderr)

    def port(self, sandbox):
        with open(os.path.join(sandbox.root, "etc/yum.repos.d/sandbox-http.repo")) as stream:
            return int(re.search(r":(\d+)/", stream.read()).group(1))

    def test_the_copy_command_makes_a_sandbox_and_the_list_command_prints_its_packages(self):
        target = os.path.join(tempfile.mkdtemp(dir=workspace), "copy")
        self.assertEqual(self.run_sandbox("copy", original.directory, target).status, 0)
        self.addCleanup(shutil.rmtree, target)
        outcome = self.run_sandbox("list", target)
        self.assertEqual(outcome.output.splitlines(), sorted(original.rpm("-qa").splitlines()))
        self.assertIn("kernel-6.1.25-1.x86_64\n", outcome.output)

    def test_the_run_command_serves_the_repositories_to_its_program(self):
        sandbox = self.copied()
        script = (
            'import os, re, urllib.request\n'
            'text = open(os.environ["VYREROOT"] + "/etc/yum.repos.d/sandbox-http.repo").read()\n'
            'url = re.search("baseurl=(.*)", text).group(1)\n'
            'print(urllib.request.urlopen(url + "repodata/repomd.xml").status)\n')
        outcome = self.run_sandbox("run", sandbox.directory, "--", sys.executable, "-c", script)
        self.assertEqual(outcome, (0, "200\n", ""))
        with self.assertRaises(ConnectionRefusedError):
            socket.create_connection(("127.0.0.1", self.port(sandbox)))

    def test_the_run_command_sets_the_environment_of_its_program(self):
        sandbox = self.copied()
        outcome = self.run_sandbox("run", sandbox.directory, "sh", "-c", 'echo "$VYREROOT"; rpm --eval %_dbpath')
        self.assertEqual(outcome.output.splitlines(), [sandbox.root, "/var/lib/rpm"])

    def test_the_run_command_returns_the_status_of_its_program(self):
        directory = self.copied().directory
        self.assertEqual(self.run_sandbox("run", directory, "sh", "-c", "exit 7").status, 7)
        self.assertEqual(self.run_sandbox("run", directory, "sh", "-c", "kill -9 $$").status, 128 + 9)
        self.assertEqual(self.run_sandbox("run", directory, "/no/such/command").status, 127)
        self.assertEqual(self.run_sandbox("run", directory).status, 2)

    def test_a_signal_to_the_run_command_ends_its_program_and_the_server(self):
        for number in (signal.SIGTERM, signal.SIGHUP):
            sandbox = self.copied()
            process = subprocess.Popen(
                [EXECUTABLE, "run", sandbox.directory, "--", "sh", "-c", "echo $$; exec sleep 600"],
                stdout=subprocess.PIPE)
            command = int(process.stdout.readline())
            process.send_signal(number)
            self.assertEqual(process.wait(), 128 + number)
            process.stdout.close()
            with self.assertRaises(ProcessLookupError):
                os.kill(command, 0)
            with self.assertRaises(ConnectionRefusedError):
                socket.create_connection(("127.0.0.1", self.port(sandbox)))

    def test_a_directory_without_a_sandbox_is_reported(self):
        outcome = self.run_sandbox("list", workspace)
        self.assertEqual((outcome.status, outcome.output), (1, ""))
        self.assertIn("does not contain a sandbox", outcome.errors)


if __name__ == "__main__":
    unittest.main()
