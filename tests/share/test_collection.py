# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of reading repositories and collecting their packages."""

import contextlib
import datetime
import gc
import logging
import os
import re
import shutil
import sqlite3
import subprocess
import tempfile
import time

import scenario
from comparison import listing_of_dnf
from scenario import ScenarioTest, in_own_process

import attributes
from vyresandbox import catalogue, needs_groups
from vyresandbox.build import build_packages
from vyresandbox.package import Package

REPODATA = "/sandbox-http/repodata/"


class InterruptedTransactionTest(ScenarioTest):
    """Tests of the reports about an interrupted transaction."""

    def reports(self):
        return [text for text in self.recording.errors() if "last transaction" in text or
                "several installed versions" in text]

    def collect_again(self):
        self.recording.clear()
        self.yumio.reset()
        self.collect()
        self.assert_no_faults()

    @in_own_process
    def test_complete_transactions_are_not_reported_as_interrupted(self):
        self.load()
        self.yumio.lock()
        self.collect()
        # Two kernels, and a library in two architectures, cause no report.
        self.assertEqual(self.reports(), [])
        self.apply(installs=["astrolabe"])
        self.collect_again()
        self.assertEqual(self.reports(), [])
        with self.assertRaises(self.dnf.exceptions.Error):
            self.apply(installs=["brokenlatch"])
        self.collect_again()
        self.assertEqual(self.reports(), [])

    @in_own_process
    def test_a_transaction_whose_end_is_missing_in_the_history_is_reported(self):
        self.load()
        self.yumio.lock()
        self.collect()
        self.apply(installs=["astrolabe"])
        path = self.sandbox.root + "/var/lib/dnf/history.sqlite"
        with contextlib.closing(sqlite3.connect(path)) as database, database:
            database.execute("UPDATE trans SET dt_begin = 86400, dt_end = 0, state = 0 "
                             "WHERE id = (SELECT max(id) FROM trans)")
        self.collect_again()
        self.assertEqual(self.reports(), ["The history does not record the end of the last transaction, begun on "
                                          "%s.\nAll its packages are in the intended state." % time.ctime(86400)])
        # If a package of the transaction is missing, the transaction counts as interrupted.
        self.sandbox.rpm("--erase", "astrolabe")
        self.collect_again()
        self.assertEqual(self.reports(), ["The last transaction, begun on %s, was interrupted.\n"
                                          "In the History window (Ctrl+H), \"Redo\" completes it."
                                          % time.ctime(86400)])
        # After another transaction, the interrupted transaction is no longer the last one, so it is not reported.
        self.apply(installs=["astrolabe"])
        self.collect_again()
        self.assertEqual(self.reports(), [])

    @in_own_process
    def test_several_installed_versions_of_a_package_are_reported_as_the_result_of_an_interruption(self):
        for name in ("abacus-cli-3.3.0-2.x86_64.rpm", "barometer-1.1-2.x86_64.rpm"):
            path = os.path.join(self.sandbox.repository("sandbox-updates"), name)
            self.sandbox.rpm("--install", "--force", "--nosignature", path)
        self.load()
        self.yumio.lock()
        self.collect()
        self.assertEqual(self.reports(), ["An interrupted transaction has left several installed versions of "
                                          "these packages:\n"
                                          "  abacus-cli-3.2.1-1.x86_64, abacus-cli-3.3.0-2.x86_64\n"
                                          "  barometer-1.0-1.x86_64, barometer-1.1-2.x86_64\n"
                                          "\"dnf remove --duplicates\" removes the older versions."])

    @in_own_process
    def test_a_collection_does_not_create_a_missing_history(self):
        path = self.sandbox.root + "/var/lib/dnf/history.sqlite"
        for name in os.listdir(os.path.dirname(path)):
            os.unlink(os.path.join(os.path.dirname(path), name))
        self.load()
        self.yumio.lock()
        self.collect()
        self.assertEqual(self.reports(), [])
        self.assertFalse(os.path.exists(path))
        self.assert_no_faults()

    @in_own_process
    def test_packages_are_collected_even_if_the_history_is_damaged(self):
        self.write("/var/lib/dnf/history.sqlite", b"nonsense" * 1000)
        self.load()
        self.yumio.lock()
        self.collect()
        self.package(self.available, "astrolabe")
        self.assertEqual(self.reports(), [])
        self.assert_no_faults()


class SetupTest(ScenarioTest):
    @in_own_process
    def test_an_unreachable_repository_is_reported_and_skipped_if_its_settings_allow_this(self):
        self.load()
        self.yumio.setupRepos()
        self.assertIn("sandbox-unreachable", "\n".join(self.recording.errors()))
        self.assertTrue(self.yumio.base.sack.query().filter(name="wax-tablet"))

    @in_own_process
    def test_warnings_of_dnf_about_a_skipped_repository_are_warnings_in_the_log(self):
        warnings = []
        self.load(logWarning=lambda level, text: warnings.append((level, text)))
        self.yumio.setupRepos()
        self.assertEqual(self.recording.errors(), [])
        self.assertEqual(set(level for level, _ in warnings), {0})  # visible at each detail level
        texts = [text for _, text in warnings]
        self.assertEqual(texts[-1], "Ignoring repositories: sandbox-unreachable")
        self.assertTrue(any(text.startswith("Error: Failed to download metadata for repo 'sandbox-unreachable'")
                            for text in texts), texts)
        self.assertEqual(self.yumio.skippedRepos, ["sandbox-unreachable"])
        # The log shows the other warnings of dnf as errors.
        logging.getLogger("dnf").warning("something else")
        self.assertEqual(self.recording.errors(), ["something else"])
        self.change_repository("sandbox-unreachable", "enabled=1", "enabled=0")
        self.yumio.reset()
        self.yumio.setupRepos()
        self.assertEqual(self.yumio.skippedRepos, [])

    @in_own_process
    def test_an_unreachable_repository_causes_a_repository_error_if_its_settings_forbid_skipping(self):
        self.change_repository("sandbox-unreachable", "skip_if_unavailable=1", "skip_if_unavailable=0")
        self.load()
        with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "sandbox-unreachable"):
            self.yumio.setupRepos()
        self.change_repository("sandbox-unreachable", "enabled=1", "enabled=0")
        self.yumio.reset()
        self.collect()
        self.assert_no_faults()

    def metadata(self, kind):
        names = os.listdir(os.path.join(self.sandbox.directory, "http" + REPODATA))
        return REPODATA + next(name for name in names if name.endswith(kind))

    @in_own_process
    def test_damaged_metadata_cause_a_repository_error_until_the_server_has_correct_metadata(self):
        self.load()
        for path, kind, arguments in (
                (REPODATA + "repomd.xml", "status", (404,)),
                (REPODATA + "repomd.xml", "status", (500,)),
                (REPODATA + "repomd.xml", "truncated", (100,)),
                (REPODATA + "repomd.xml", "corrupted", ()),
                (self.metadata("primary.xml.gz"), "status", (404,)),
                (self.metadata("primary.xml.gz"), "truncated", (100,)),
                (self.metadata("primary.xml.gz"), "corrupted", ()),
                (self.metadata("other.xml.gz"), "corrupted", ())):
            self.yumio.cleanAll()
            self.server.fault(path, kind, *arguments)
            self.yumio.reset()
            with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "sandbox-http", msg=(path, kind)):
                self.yumio.setupRepos()
            self.server.fault(path, "none")
            self.yumio.reset()
            self.collect()
            self.package(self.available, "astrolabe")
        self.assert_no_faults()

    @in_own_process
    def test_an_unreachable_server_causes_a_repository_error(self):
        self.load()
        self.server.stop()
        with self.assertRaises(self.dnf.exceptions.RepoError):
            self.yumio.setupRepos()

    @in_own_process
    def test_metadata_that_have_not_expired_come_from_the_cache(self):
        self.configure("metadata_expire=3600")
        self.started()
        self.assertIn(REPODATA + "repomd.xml", self.server.paths(200))
        self.server.forget()
        self.again()
        self.assertEqual(self.server.paths(), [])
        self.package(self.available, "astrolabe")

    @in_own_process
    def test_metadata_are_downloaded_again_after_they_expire_or_are_cleaned(self):
        self.configure("metadata_expire=3600")
        self.started()
        hidden = os.path.join(self.sandbox.repository("sandbox-disabled"), "hidden-gem-1.0-1.noarch.rpm")
        added = shutil.copy(hidden, self.sandbox.repository("sandbox-http"))
        self.index("sandbox-http")
        self.again()
        self.assertNotIn("hidden-gem", [package.name for package in self.available])
        self.sandbox.expire_metadata()
        self.again()
        self.package(self.available, "hidden-gem")
        self.assertEqual(len(self.package(self.available, "tagsoup").changelogs), 3)
        os.unlink(added)
        self.index("sandbox-http")
        self.yumio.cleanMetadata()
        self.again()
        self.assertNotIn("hidden-gem", [package.name for package in self.available])
        self.assert_no_faults()

    @in_own_process
    def test_metadata_older_than_the_expiry_time_are_checked_on_the_server(self):
        self.configure("metadata_expire=3600")
        self.started()
        old = time.time() - 3700
        for directory, _, names in os.walk(self.sandbox.root + "/var/cache/yum"):
            for name in names:
                os.utime(os.path.join(directory, name), (old, old))
        self.server.forget()
        self.again()
        self.assertIn(REPODATA + "repomd.xml", self.server.paths(200))
        # Metadata that have not changed are not downloaded again.
        self.assertNotIn(self.metadata("primary.xml.gz"), self.server.paths())
        self.package(self.available, "astrolabe")

    @in_own_process
    def test_the_progress_of_metadata_downloads_is_reported(self):
        self.load()
        self.collect()
        reports = set(read[:2] for read in self.recording.of("downloadEnd"))
        self.assertIn(("MDPayload", "Sandbox, by HTTP"), reports)
        self.assert_no_faults()


class CollectionTest(ScenarioTest):
    def setUp(self):
        super(CollectionTest, self).setUp()
        self.catalogue = catalogue.packages()

    @in_own_process
    def test_updates_are_newer_versions_of_installed_packages(self):
        self.started()
        installed = {(package.name, package.arch) for package in self.catalogue if package.state}
        expected = sorted(package.nevra for package in self.catalogue
                          if package.repo == "updates" and (package.name, package.arch) in installed)
        self.assertEqual(sorted(map(str, self.updates)), expected)
        for nevra in ("libcairn-2.2-1.x86_64", "libcairn-2.2-1.i686", "kernel-6.1.31-1.x86_64",
                      "quillbase-2:1.0-1.x86_64", "loomctl-1.1-1.x86_64"):
            self.assertIn(nevra, expected)
        self.assertFalse([name for name in expected if name.startswith("newpost")])

    @in_own_process
    def test_installed_and_available_packages_are_collected(self):
        self.started()
        self.assertEqual({str(package) for package in self.installed}, self.sandbox.installed())
        # The newest version comes first, because the program shows the first version in its row.
        self.assertEqual([package.version for package in self.installed if package.name == "kernel"],
                         ["6.1.25", "6.1.20"])
        available = [str(package) for package in self.available]
        self.assertEqual(len(available), len(set(available)))
        enabled = [package for package in self.catalogue if package.repo != "disabled"]
        self.assertEqual({(package.name, package.arch) for package in self.available},
                         {(package.name, package.arch) for package in enabled})
        for nevra in ("quillbase-2:1.0-1.x86_64", "newpost-2.0-1.x86_64", "epochal-3:0.1-1.noarch",
                      "libmoss-0.5-1.i686", "libmoss-0.5-1.x86_64", "libcairn-2.2-1.i686"):
            self.assertIn(nevra, available)
        self.assertNotIn("quillbase-1:2.4-1.x86_64", available)

    @in_own_process
    def test_a_repository_with_higher_priority_hides_newer_packages_in_other_repositories(self):
        with open(self.repository_file("sandbox-http"), "a") as stream:
            stream.write("priority=10\n")
        self.started()
        self.assertEqual([str(package) for package in self.updates if package.name == "abacus-cli"], [])
        self.assertEqual(self.package(self.available, "abacus-cli").version, "3.2.1")
        self.package(self.available, "newpost")

    @in_own_process
    def test_excluded_packages_are_not_collected(self):
        self.configure("exclude=astrolabe almanac loomctl")
        self.started()
        self.assertEqual([package.name for package in self.available + self.updates
                          if package.name in ("astrolabe", "loomctl")], [])

    @needs_groups
    @in_own_process
    def test_groups_are_collected(self):
        self.started()
        self.assertEqual(set(self.groups), {group.identifier for group in catalogue.GROUPS})
        self.assertFalse(self.groups["core"].uservisible)
        office = self.groups["office"]
        self.assertTrue(office.uservisible)
        # libcomps removes blanks next to a character that the XML file writes as an entity.
        self.assertEqual((office.id, office.name.replace(" ", "")), ("office", "Office&<b>Productivity</b>"))
        self.assertEqual(self.groups["international"].name, "Международные программы")
        for kind, names in (("mandatory", ["scribe-writer"]), ("default", ["almanac", "ledger-calc"]),
                            ("optional", ["corkboard", "lectern-slides"]),
                            ("conditional", ["scribe-fonts", "scribe-lexicon"])):
            members = getattr(office, kind + "_packages")
            self.assertIsInstance(members, list)
            self.assertEqual(sorted(member.name for member in members), names)
            self.assertEqual(sorted(member.__str__() for member in members), names)
        history = self.yumio.base.history.group
        self.assertIsNotNone(history.get("arts"))
        self.assertIsNone(history.get("office"))

    @in_own_process
    def test_architectures_that_replace_each_other_have_the_same_bi_arch_class(self):
        biArch = self.load().getBiArch
        self.assertEqual(biArch("x86_64"), "x86_64")
        self.assertEqual(biArch("noarch"), "x86_64")
        self.assertEqual(biArch("i686"), biArch("i586"))
        self.assertNotEqual(biArch("i686"), "x86_64")
        self.assertEqual(biArch("architecture-of-tomorrow"), "architecture-of-tomorrow")

    @in_own_process
    def test_the_better_of_two_packages_has_the_system_architecture_or_is_newer(self):
        self.started()
        better = self.yumio.isBetterThan
        wide = self.package(self.available, "libcairn", "x86_64")
        narrow = self.package(self.available, "libcairn", "i686")
        old = self.package(self.installed, "libcairn", "i686")
        self.assertIs(better(wide, narrow), True)
        self.assertIs(better(narrow, wide), False)
        self.assertIs(better(narrow, old), True)
        self.assertIs(better(old, narrow), False)
        epochs = self.package(self.available, "quillbase"), self.package(self.installed, "quillbase")
        self.assertIs(better(*epochs), True)

    @in_own_process
    def test_every_package_has_all_attributes_that_the_program_reads(self):
        self.started()
        for package in self.installed + self.available + self.updates:
            for attribute in ("name", "arch", "repoid", "summary", "group", "description", "version", "release"):
                self.assertTrue(getattr(package, attribute), "%s of %s" % (attribute, package))
            for kinds, names in (((str, int, type(None)), attributes.of_records()),
                                 ((str, type(None)), attributes.of_fields("Text")),
                                 ((int, type(None)), attributes.of_fields("Time"))):
                for attribute in names:
                    self.assertIsInstance(getattr(package, attribute), kinds, "%s of %s" % (attribute, package))
            for attribute in attributes.of_fields("Dependencies"):
                self.assertIsInstance(list(getattr(package, attribute)), list, "%s of %s" % (attribute, package))
        import rpm
        for tag in attributes.of_fields("Header"):
            self.assertIsInstance(getattr(rpm, "RPMTAG_" + tag), int)
        for group in self.groups.values():
            for attribute in attributes.of_fields("Members"):
                self.assertIsInstance(list(getattr(group, attribute)), list, "%s of %s" % (attribute, group))
        for package in self.installed:
            self.assertIsInstance(package.installtime, int)
            self.assertGreater(package.installtime, 0)
            self.assertEqual(package.buildhost, "builder7.larkspur.example")

    @in_own_process
    def test_installed_and_available_packages_have_the_expected_texts(self):
        self.started()
        suite = self.package(self.installed, "vyre-network-suite")
        self.assertEqual(suite.group, "Suite")
        gallivant = self.package(self.installed, "gallivant")
        soup = self.package(self.available, "tagsoup")
        self.assertEqual((gallivant.vendor, gallivant.packager, gallivant.license, gallivant.url), (
            "Wander Works", "Gil Vant <gil@larkspur.example>", "Artistic-2.0", "https://larkspur.example/gallivant"))
        self.assertEqual((soup.vendor, soup.license, soup.group), (
            "Angle <b>Brackets</b> & Sons", "MIT & <i>others</i>", "<u>Under</u>/Lined"))
        self.assertEqual(soup.relativepath, "tagsoup-1.0-1.noarch.rpm")

    @in_own_process
    def test_installed_and_available_packages_have_their_files(self):
        self.started()
        self.assertTrue(self.yumio.collectFileLists())
        self.assertEqual(list(self.package(self.installed, "gallivant").files), ["/opt/gallivant/bin/gallivant"])
        self.assertEqual(len(self.package(self.available, "manyfiles").files), 2000)
        self.assertEqual(list(self.package(self.available, "corkboard").files), ["/usr/share/doc/corkboard/README"])

    @in_own_process
    def test_installed_and_available_packages_have_their_change_logs(self):
        self.started()
        self.assert_change_logs()

    @in_own_process
    def test_days_of_change_logs_are_the_same_in_every_time_zone(self):
        self.started()
        for zone in ("Pacific/Kiritimati", "Pacific/Auckland", "UTC", "Pacific/Pago_Pago", "Etc/GMT+12"):
            os.environ["TZ"] = zone
            time.tzset()
            self.assert_change_logs()

    def assert_change_logs(self):
        for package, name in ((self.package(self.installed, "tagsoup-installed"), "unusual"),
                              (self.package(self.available, "tagsoup"), "unusual"),
                              (self.package(self.installed, "almanac"), "first"),
                              (self.package(self.updates, "loomctl"), "update"),
                              (self.package(self.available, "corkboard"), "first"),
                              (self.package(self.available, "wax-blank"), "first")):
            entries = package.changelogs
            self.assertEqual([(entry["timestamp"].date(), entry["author"], entry["text"]) for entry in entries],
                             catalogue.CHANGELOGS[name], str(package))
            for entry in entries:
                self.assertIs(type(entry["timestamp"]), datetime.datetime)

    @in_own_process
    def test_loaded_change_logs_are_readable_without_their_cached_files(self):
        self.started()
        self.assertTrue(self.yumio.collectOtherData())
        self.yumio.cleanAll()
        self.assertEqual(len(self.package(self.available, "tagsoup").changelogs), 3)

    @in_own_process
    def test_change_logs_are_empty_if_their_metadata_are_missing(self):
        self.started()
        self.yumio.cleanAll()
        self.assertEqual(self.package(self.available, "tagsoup").changelogs, [])
        self.assertIn("sandbox-http", "\n".join(self.recording.errors()))
        self.assertEqual(len(self.package(self.available, "manyfiles").files), 2000)
        # The first change log has caused a message in the log. Other change logs of this repository must not cause
        # further messages.
        count = len(self.recording.errors())
        self.assertEqual(self.package(self.available, "tagsoup").changelogs, [])
        self.assertEqual(self.package(self.available, "manyfiles").changelogs, [])
        self.assertEqual(len(self.recording.errors()), count)
        self.again()
        self.assertEqual(len(self.package(self.available, "tagsoup").changelogs), 3)

    @in_own_process
    def test_change_logs_can_be_read_again_after_another_collection(self):
        self.started()
        self.again()
        self.assertEqual(len(self.package(self.available, "tagsoup").changelogs), 3)

    @in_own_process
    def test_only_installed_packages_have_an_rpm_header(self):
        self.started()
        import rpm

        gallivant = self.package(self.installed, "gallivant")
        self.assertEqual(list(gallivant.hdr[rpm.RPMTAG_PREFIXES]), ["/opt/gallivant"])
        self.assertFalse(hasattr(self.package(self.available, "astrolabe"), "hdr"))

    @in_own_process
    def test_the_rpm_header_of_a_package_is_read_once_for_all_its_values(self):
        self.started()
        import rpm

        looked_up = []
        genuine = self.dnf.package.Package.get_header

        def get_header(package):
            looked_up.append(package.name)
            return genuine(package)
        self.dnf.package.Package.get_header = get_header
        gallivant = self.package(self.installed, "gallivant")
        almanac = self.package(self.installed, "almanac")
        for package in (gallivant, almanac, gallivant):
            for _ in range(3):
                header = package.hdr
                self.assertIn(header[rpm.RPMTAG_NAME], (package.name, package.name.encode()))
                self.assertEqual(package.buildhost, "builder7.larkspur.example")
                self.assertGreater(len(package.changelogs), 0)
        self.assertEqual(looked_up, ["gallivant", "almanac", "gallivant"])
        # After a transaction, the script looks up the header of the package again.
        del looked_up[:]
        self.apply(installs=["chatterbox"], answers=[0])
        self.assertEqual(gallivant.buildhost, "builder7.larkspur.example")
        self.assertEqual(looked_up, ["gallivant"])
        self.again()
        gallivant = self.package(self.installed, "gallivant")
        self.assertEqual(gallivant.buildhost, "builder7.larkspur.example")
        self.assertEqual(looked_up, ["gallivant", "gallivant"])
        self.assertEqual(len(self.package(self.available, "tagsoup").changelogs), 3)
        self.assertIsNone(self.package(self.available, "tagsoup").buildhost)
        self.assertEqual(len(looked_up), 2)

    @in_own_process
    def test_installed_and_available_packages_have_their_dependencies(self):
        self.started()
        orchard = self.package(self.available, "orchard")
        self.assertEqual({str(relation) for relation in orchard.requires} - {"setup"},
                         {"libbough >= 1.1", "(orchard-lang if lexicon-en)"})
        self.assertEqual([relation.__str__() for relation in orchard.requires_pre], ["setup"])
        for package, attribute, texts in (
                (orchard, "recommends", ["orchard-plugins"]), (orchard, "suggests", ["orchard-samples"]),
                (self.package(self.available, "orchard-thumbnails"), "supplements", ["orchard"]),
                (self.package(self.available, "orchard-plugins"), "enhances", ["orchard"]),
                (self.package(self.available, "gull-mta"), "conflicts", ["tern-mta"]),
                (self.package(self.available, "newpost"), "obsoletes", ["oldpost < 2"]),
                (self.package(self.installed, "trellis-editor"), "requires", ["libtrellis >= 1"])):
            found = [relation.__str__() for relation in getattr(package, attribute)]
            self.assertEqual([text for text in found if not text.startswith("rpmlib(")], texts)
        self.assertIn("installonlypkg(kernel)", [
            str(relation) for relation in self.package(self.installed, "kernel", version="6.1.20").provides])


class ReplacementTest(ScenarioTest):
    """Tests of installed packages that another package is going to replace."""

    OLD = "oldpost-1.8-1.x86_64"
    NEW = "newpost-2.0-1.x86_64"

    def replacements(self):
        return [(str(old), str(new)) for old, new in self.yumio.replacements]

    def upgraded(self):
        """The packages that "dnf upgrade" would replace by other packages, as "name.architecture"."""
        root = self.sandbox.root
        done = subprocess.run(
            ["dnf", "--installroot", root, "--config", root + "/etc/yum.conf", "--assumeno", "--releasever=9",
             "--disablerepo=sandbox-unreachable", "--setopt=reposdir=%s/etc/yum.repos.d" % root,
             "--setopt=cachedir=" + tempfile.mkdtemp(dir=self.directory), "upgrade"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=dict(self.sandbox.environment(), LC_ALL="C.UTF-8"),
            universal_newlines=True)
        self.assertIn("Transaction Summary", done.stdout)
        return re.findall(r"^ +replacing +(\S+) ", done.stdout, re.M)

    @in_own_process
    def test_the_script_and_dnf_find_the_same_obsoleting_packages(self):
        self.started()
        self.assertEqual(self.upgraded(), ["oldpost.x86_64"])
        self.assertEqual(self.replacements(), [(self.OLD, self.NEW)])
        self.assertEqual(self.changes(self.apply, installs=["newpost"]), ({self.NEW}, {self.OLD}))
        self.again()
        self.assertEqual(self.upgraded(), [])
        self.assertEqual(self.replacements(), [])

    @in_own_process
    def test_the_search_for_obsoleting_packages_treats_weak_dependencies_as_dnf_does(self):
        import dnf.goal

        given = []

        class Recorded(dnf.goal.Goal):
            def run(self, **arguments):
                given.append(set(arguments))
                weak.append(arguments.get("ignore_weak_deps"))
                return super(Recorded, self).run(**arguments)

        weak = []
        dnf.goal.Goal = Recorded
        self.configure("install_weak_deps=0")
        self.started()
        found = len(given)
        self.assertGreater(found, 0)
        self.apply(installs=["astrolabe"], answers=[0])
        self.assertGreater(len(given), found)
        self.assertEqual(set(weak), {True})
        self.assertFalse([names for names in given if "ignore_weak" in names])

    @in_own_process
    def test_the_obsoletes_and_exclude_options_can_prevent_replacements(self):
        for line in ("obsoletes=0", "exclude=newpost", "exclude=oldpost"):
            self.configure(line)
            if line == "obsoletes=0":
                self.started()
            else:
                self.configure("obsoletes=1")
                self.again()
            # If no package is named, "dnf upgrade" of dnf 4.14 ignores the obsoletes option.
            if line != "obsoletes=0":
                self.assertEqual(self.upgraded(), [], line)
            self.assertEqual(self.replacements(), [], line)

    @in_own_process
    def test_a_collection_first_frees_the_packages_of_the_previous_collection(self):
        self.started()
        self.assertEqual(self.replacements(), [(self.OLD, self.NEW)])
        self.apply(updates=["tidewatch", "abacus-cli"], answers=(1, 1))
        self.assertEqual([package.name for package in self.yumio.leftOut], ["tidewatch"])
        # The test releases its own references to the packages, as the program does before it collects again.
        self.updates = self.installed = self.available = None
        self.recording.clear()
        self.yumio.setupRepos()
        gc.collect()
        self.assertEqual([found for found in gc.get_objects() if isinstance(found, self.dnf.sack.Sack)],
                         [self.yumio.base.sack])

    @in_own_process
    def test_the_search_for_obsoleting_packages_adds_nothing_to_the_goal_of_dnf(self):
        self.started()
        self.assertEqual(self.replacements(), [(self.OLD, self.NEW)])
        self.assertEqual(self.changes(self.apply, removes=["almanac"])[0], set())


class ArchitectureTest(ScenarioTest):
    """Tests of updates with which a package changes to or from "noarch", or keeps its architecture, on a system with
    two architectures.
    """

    REPOSITORY = "extra-crossings"

    # For each package, the installed versions and the available versions.
    CASES = {
        "none-to-both": ("1.noarch", "2.x86_64 2.i686"),
        "none-to-native": ("1.noarch", "2.x86_64"),
        "none-to-foreign": ("1.noarch", "2.i686"),
        "none-to-newer-foreign": ("1.noarch", "2.x86_64 3.i686"),
        "none-stays": ("1.noarch", "2.noarch"),
        "none-beside-both": ("1.noarch", "2.noarch 2.x86_64 2.i686"),
        "none-beside-native": ("1.noarch", "2.noarch 2.x86_64"),
        "none-beside-foreign": ("1.noarch", "2.noarch 2.i686"),
        "none-beside-newer-native": ("1.noarch", "2.noarch 3.x86_64"),
        "none-beside-newer-foreign": ("1.noarch", "2.noarch 3.i686"),
        "none-beside-older-both": ("1.noarch", "3.noarch 2.x86_64 3.i686"),
        "native-to-none": ("1.x86_64", "2.noarch"),
        "native-to-either": ("1.x86_64", "2.noarch 2.x86_64"),
        "native-to-newer-none": ("1.x86_64", "3.noarch 2.x86_64"),
        "native-stays": ("1.x86_64", "2.noarch 3.x86_64"),
        "native-to-none-or-foreign": ("1.x86_64", "2.noarch 2.i686"),
        "native-to-foreign": ("1.x86_64", "2.i686"),
        "foreign-to-none": ("1.i686", "2.noarch"),
        "foreign-to-either": ("1.i686", "2.noarch 2.i686"),
        "foreign-to-newer-none": ("1.i686", "3.noarch 2.i686"),
        "foreign-stays": ("1.i686", "2.noarch 3.i686"),
        "foreign-to-native": ("1.i686", "2.x86_64"),
        "both-to-none": ("1.x86_64 1.i686", "2.noarch"),
        "both-to-all": ("1.x86_64 1.i686", "2.noarch 2.x86_64 2.i686"),
        "both-to-none-or-native": ("1.x86_64 1.i686", "2.noarch 2.x86_64"),
        "both-to-none-or-foreign": ("1.x86_64 1.i686", "2.noarch 2.i686"),
        "both-to-none-or-newer-native": ("1.x86_64 1.i686", "2.noarch 3.x86_64"),
        "both-to-none-or-newer-foreign": ("1.x86_64 1.i686", "2.noarch 3.i686"),
        "both-to-newer-none": ("1.x86_64 1.i686", "3.noarch 2.x86_64 2.i686"),
        "both-of-two-versions": ("2.x86_64 1.i686", "3.noarch"),
        "foreign-is-newer": ("1.x86_64 2.i686", "2.noarch"),
        "none-and-foreign-to-both": ("1.noarch 1.i686", "2.x86_64 2.i686"),
        "none-and-foreign-to-foreign": ("1.noarch 1.i686", "2.i686"),
        "none-and-foreign-to-none": ("1.noarch 1.i686", "2.noarch"),
    }

    @classmethod
    def setUpClass(cls):
        cls.built = tempfile.mkdtemp(dir=scenario.workspace)
        build_packages([
            Package(name, version, "Changes its architecture", arch=arch,
                    files={"/usr/share/%s-%s/version" % (name, arch): version + "\n"})
            for name, states in cls.CASES.items()
            for version, arch in sorted(set(tuple(each.split(".")) for each in " ".join(states).split()))],
            catalogue.CHANGELOGS, cls.built)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.built)

    def files(self, which):
        return [os.path.join(self.built, "%s-%s-1.%s.rpm" % ((name,) + tuple(each.split("."))))
                for name, states in self.CASES.items() for each in states[which].split()]

    def enter(self):
        super(ArchitectureTest, self).enter()
        self.sandbox.rpm("-i", "--nodeps", "--ignorearch", *self.files(0))
        os.makedirs(self.sandbox.repository(self.REPOSITORY))
        for path in self.files(1):
            shutil.copy(path, self.sandbox.repository(self.REPOSITORY))
        self.index(self.REPOSITORY)
        self.sandbox.use(self.REPOSITORY)

    def command(self, *options):
        """The output of "dnf upgrade" with the names of all these packages."""
        root = self.sandbox.root
        return subprocess.run(
            ["dnf", "--installroot", root, "--config", root + "/etc/yum.conf", "--releasever=9", "--disablerepo=*",
             "--enablerepo=" + self.REPOSITORY, "--setopt=reposdir=%s/etc/yum.repos.d" % root,
             "--setopt=cachedir=" + tempfile.mkdtemp(dir=self.directory)] + list(options) +
            ["upgrade"] + sorted(self.CASES),
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
            env=dict(self.sandbox.environment(), LC_ALL="C.UTF-8"), universal_newlines=True).stdout

    def ours(self, packages):
        return [package for package in packages if package.name in self.CASES]

    def chain(self, new):
        """The installed packages that the program chains to the record of this update."""
        biArch = self.yumio.getBiArch
        key = (new.name, biArch(new.arch))
        moved = {(old.name, biArch(old.arch)): (each.name, biArch(each.arch))
                 for each, old in self.yumio.counterparts}
        keys = set((each.name, biArch(each.arch)) for each in self.updates)
        return [old for old in self.installed for place in [(old.name, biArch(old.arch))]
                if place == key or (place not in keys and moved.get(place) == key)]

    @in_own_process
    def test_the_script_and_dnf_find_the_same_updates(self):
        for policy in ("best", "all"):
            expected = listing_of_dnf(self.command("--assumeno", "--setopt=multilib_policy=" + policy))["Upgrading"]
            self.configure("multilib_policy=" + policy)
            if policy == "best":
                self.started()
            else:
                self.again()
            self.assertEqual({"%s.%s %s %s" % (package.name, package.arch, package.evr, package.repoid)
                              for package in self.ours(self.updates)}, expected)

    @in_own_process
    def test_each_update_lists_the_installed_packages_that_it_replaces(self):
        other = os.path.join(self.directory, "other")
        subprocess.run(["cp", "-a", self.sandbox.root, other], check=True)
        self.started()
        updates = self.ours(self.updates)
        chains = {new: self.chain(new) for new in updates}
        self.assertEqual([new for new, olds in chains.items() if not olds], [])
        before = self.sandbox.installed()
        self.recording.answers = [1]
        self.yumio.apply([], [[new, old] for new, olds in chains.items() for old in olds], [], [], [], [])
        self.assert_no_faults()
        after = self.sandbox.installed()
        self.assertEqual({str(new) for new in updates}, after - before)
        self.assertEqual({str(old) for olds in chains.values() for old in olds}, before - after)
        shutil.rmtree(self.sandbox.root)
        os.rename(other, self.sandbox.root)
        output = self.command("-y")
        self.assertEqual(self.sandbox.installed(), after, output)

    @in_own_process
    def test_packages_without_an_installed_package_of_the_same_class_are_listed_as_available(self):
        self.started()
        biArch = self.yumio.getBiArch
        taken = {(package.name, biArch(package.arch)) for package in self.updates + self.installed}
        self.assertEqual(
            {str(package) for package in self.ours(self.available)
             if (package.name, biArch(package.arch)) not in taken},
            {"none-to-both-2-1.i686", "none-to-newer-foreign-3-1.i686", "none-beside-both-2-1.i686",
             "none-beside-older-both-3-1.i686", "native-to-none-or-foreign-2-1.i686", "native-to-foreign-2-1.i686",
             "foreign-to-native-2-1.x86_64", "foreign-to-either-2-1.noarch", "foreign-stays-2-1.noarch"})
