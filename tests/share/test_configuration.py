# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the script's start: repositories, the release, and messages to the program."""

import os
import re
import shutil
import subprocess
import sys

from recordingmodule import limits
from scenario import LAYOUT, ScenarioTest, in_own_process, repositories


class ConfigurationTest(ScenarioTest):
    @in_own_process
    def test_an_empty_root_has_no_repositories_and_no_packages(self):
        root = os.environ["VYREROOT"] = os.path.join(self.directory, "empty")
        os.makedirs(root)
        yumio = self.load()
        self.assertEqual(repositories(yumio), [])
        self.assertIsInstance(yumio.base.repos, dict)
        self.assertIsInstance(yumio.base.conf.releasever, str)
        self.assertEqual(yumio.base.conf.basearch, "x86_64")
        yumio.lock()
        self.collect()
        self.assertEqual((self.updates, self.installed, self.available, self.groups), ([], [], [], {}))
        self.assertIsNone(yumio.base.history.group.get("arts"))
        yumio.unlock()
        self.assert_no_faults()

    @in_own_process
    def test_a_malformed_repository_file_is_reported_and_the_other_files_are_used(self):
        self.write("/etc/yum.repos.d/broken.repo", "[broken\nname=x\n")
        self.write("/etc/yum.repos.d/illegal.repo", "[not a name!]\nname=x\nbaseurl=file:///\n")
        yumio = self.load()
        # The script reads repository files when they are first needed, not when it is loaded on the graphical thread.
        self.assertEqual(self.recording.errors(), [])
        self.assertIn("sandbox-file", yumio.base.repos)
        errors = "\n".join(self.recording.errors())
        self.assertIn("broken.repo", errors)
        self.assertIn("not a name!", errors)
        self.assertEqual(repositories(yumio), sorted(LAYOUT))

    @in_own_process
    def test_repository_files_are_read_again_if_sigint_interrupted_the_first_reading(self):
        yumio = self.load()
        kind = self.module("configfiles").RepositoryReader
        read = kind._get_repos

        def interrupted(reader, path):
            if path.endswith("sandbox-signed.repo"):
                raise KeyboardInterrupt()
            return read(reader, path)
        kind._get_repos = interrupted
        for attempt in range(2):
            with self.assertRaises(KeyboardInterrupt):
                len(yumio.base.repos)
        kind._get_repos = read
        self.assertEqual(repositories(yumio), sorted(LAYOUT))
        self.assertEqual(self.recording.errors(), [])

    @in_own_process
    def test_the_script_ignores_the_same_repository_files_as_the_editor_of_the_program(self):
        place = self.sandbox.root + "/etc/yum.repos.d/"
        odd = "[odd]\nname=Odd\nbaseurl=file:///nowhere\n"
        section = limits()["repositorySectionLimit"]
        whole = limits()["repositoryFileLimit"]
        os.mkfifo(place + "pipe.repo")
        for name, target in (("mask", "/dev/null"), ("endless", "/dev/zero"), ("dangling", "/nowhere"),
                             ("loop", "loop.repo"), ("long", "pipe.repo")):
            os.symlink(target, place + name + ".repo")
        for name, content in (("utf16", odd.encode("utf-16")), ("utf16le", odd.encode("utf-16-le")),
                              ("null", odd.encode() + b"proxy=a\0b\n"), ("returns", odd.replace("\n", "\r").encode()),
                              ("line", odd.encode() + b"#" * section + b"\n"),
                              ("returnsonly", b"\r" * whole + b"x"),
                              ("lines", odd.encode() + b"#\n" * section),
                              ("large", odd.encode() + b"[x]\n" * (whole // 4))):
            self.write("/etc/yum.repos.d/" + name + ".repo", content)
        os.truncate(place + "large.repo", 50000000)
        yumio = self.load()
        self.assertEqual(repositories(yumio), sorted(LAYOUT))
        # The script itself is silent, because the program reports these files.
        self.assertEqual(self.recording.errors(), [])
        self.assert_no_faults()

    @in_own_process
    def test_byte_order_marks_and_carriage_returns_in_configuration_files_are_accepted(self):
        section = "[{0}]\nname={0}\nbaseurl=file:///nowhere\nenabled=0\n"
        self.write("/etc/yum.repos.d/mark.repo", b"\xef\xbb\xbf" + section.format("mark").encode())
        self.write("/etc/yum.repos.d/both.repo",
                   b"\xef\xbb\xbf" + section.format("both").replace("\n", "\r\n").encode())
        self.write("/etc/yum.repos.d/returns.repo", section.format("returns").replace("\n", "\r\n"))
        self.write("/etc/yum.repos.d/latin.repo", section.format("latin").encode() + b"# \xe9\n")
        yumio = self.load()
        added = ("mark", "both", "returns", "latin")
        self.assertEqual(repositories(yumio), sorted(LAYOUT + added))
        self.assertEqual([yumio.base.repos[name].enabled for name in added], [0, 0, 0, 0])
        self.assertEqual(self.recording.errors(), [])

    @in_own_process
    def test_every_existing_default_repository_directory_of_dnf_is_read(self):
        import dnf.conf

        conf = dnf.conf.Conf()
        known = list(conf.reposdir)
        known_by_dnf = list(known)
        for number, directory in enumerate(known):
            self.write("%s/added%d.repo" % (directory, number),
                       "[added%d]\nname=x\nbaseurl=file:///nowhere\nenabled=0\n" % number)
        added = tuple("added%d" % number for number in range(len(known)))
        yumio = self.load()
        self.assertEqual(repositories(yumio), sorted(LAYOUT + added))
        self.assertEqual(list(yumio.base.conf.reposdir), [self.sandbox.root + directory for directory in known])
        # The program gets the same directories, for the repository editor.
        self.assertEqual(yumio.knownDirectories, known_by_dnf)
        shutil.rmtree(self.sandbox.root + "/etc/distro.repos.d")
        yumio.reset()
        self.assertEqual(list(yumio.base.conf.reposdir), [self.sandbox.root + directory for directory in known
                                                          if directory != "/etc/distro.repos.d"])

    @in_own_process
    def test_repositories_come_from_the_main_configuration_file_and_both_default_directories(self):
        self.configure("[in-main]", "name=Main", "baseurl=file:///nowhere")
        self.write("/etc/yum/repos.d/second.repo", "[second]\nname=Second\nbaseurl=file:///nowhere\n")
        yumio = self.load()
        self.assertEqual(repositories(yumio), sorted(LAYOUT + ("in-main", "second")))

    @in_own_process
    def test_releasever_major_and_releasever_minor_are_the_same_as_in_dnf(self):
        self.write("/etc/yum.repos.d/parts.repo",
                   "[parts]\nname=Parts\nbaseurl=file:///$releasever/$releasever_major.$releasever_minor\n")
        yumio = self.load()
        address = yumio.base.repos["parts"].baseurl[0].rstrip("/")
        if not hasattr(self.dnf.rpm, "detect_releasevers"):
            self.assertEqual(address, "file:///9/$releasever_major.$releasever_minor")
            return
        self.assertEqual(address, "file:///9/9.4")
        self.assertEqual(self.address_used_by_dnf(), address)

    def address_used_by_dnf(self):
        """The URL of the "parts" repository in dnf's message about the failed download."""
        command = ["/usr/bin/dnf", "--installroot", self.sandbox.root, "--noplugins", "repolist", "--verbose",
                   "--setopt=reposdir=%s/etc/yum.repos.d" % self.sandbox.root, "--disablerepo=*", "--enablerepo=parts"]
        shown = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, universal_newlines=True,
                               env=dict(self.sandbox.environment(), LC_ALL="C.UTF-8")).stdout
        found = re.search(r" for (file:\S*?)/+repodata/repomd\.xml ", shown)
        return found.group(1) if found else shown

    @in_own_process
    def test_given_values_of_releasever_major_and_releasever_minor_are_used_as_in_dnf(self):
        """Each row sets the release, or parts of the release, in variable files or in environment variables."""
        self.write("/etc/yum.repos.d/parts.repo",
                   "[parts]\nname=Parts\nbaseurl=file:///$releasever/$releasever_major.$releasever_minor/\n")
        self.load()
        own, others = {}, {}
        for files, environment in (({"releasever_major": "8"}, {}), ({"releasever_minor": "7"}, {}),
                                   ({}, {"DNF_VAR_releasever_major": "6"}),
                                   ({"releasever": "43.2"}, {}),
                                   ({}, {"DNF_VAR_releasever": "43.2", "DNF_VAR_releasever_minor": "5"}),
                                   ({"releasever_minor": "1"}, {"DNF_VAR_releasever": "43.2"}),
                                   ({"releasever_minor": "1"}, {"DNF_VAR_releasever": ""})):
            for name, value in files.items():
                self.write("/etc/dnf/vars/" + name, value + "\n")
            os.environ.update(environment)
            self.yumio.reset()
            row = "%s %s" % (files, environment)
            own[row] = self.yumio.base.repos["parts"].baseurl[0].rstrip("/")
            others[row] = self.address_used_by_dnf()
            for name in files:
                os.unlink(self.sandbox.root + "/etc/dnf/vars/" + name)
            for name in environment:
                del os.environ[name]
        self.assertEqual(own, others)

    @in_own_process
    def test_the_reposdir_option_replaces_the_default_directories(self):
        place = os.path.join(self.directory, "elsewhere")
        self.configure("reposdir=" + place)
        os.makedirs(place)
        with open(os.path.join(place, "one.repo"), "w") as stream:
            stream.write("[one]\nname=One\nbaseurl=file:///nowhere\nenabled=0\n")
        yumio = self.load()
        self.assertEqual(list(yumio.base.repos), ["one"])
        self.assertEqual(yumio.base.repos["one"].enabled, 0)

    @in_own_process
    def test_releasever_is_the_version_of_the_release_package(self):
        self.write("/etc/os-release", 'VERSION_ID="7"\n')
        self.assertEqual(self.load().base.conf.releasever, "9")

    @in_own_process
    def test_releasever_comes_from_the_release_file_if_the_release_package_is_missing(self):
        self.sandbox.rpm("-e", "--justdb", "--nodeps", "larkspur-release")
        self.write("/etc/os-release", 'NAME=x\nVERSION_ID="7.2"\n')
        self.write("/etc/yum.repos.d/more.repo", "[more-$releasever]\nname=x\nbaseurl=file:///$releasever\n")
        yumio = self.load()
        self.assertEqual(yumio.base.conf.releasever, "7.2")
        self.assertIn("more-7.2", yumio.base.repos)

    @in_own_process
    def test_releasever_comes_from_the_release_file_even_if_the_file_has_invalid_utf_8(self):
        self.sandbox.rpm("-e", "--justdb", "--nodeps", "larkspur-release")
        self.write("/etc/os-release", b'NAME="caf\xe9 \xff"\nPRETTY_NAME="caf\xc3\xa9"\nVERSION_ID=7.3\n')
        self.assertEqual(self.load().base.conf.releasever, "7.3")
        self.assert_no_faults()

    @in_own_process
    def test_repositories_are_read_even_if_releasever_is_unknown(self):
        self.sandbox.rpm("-e", "--justdb", "--nodeps", "larkspur-release")
        os.unlink(self.sandbox.root + "/etc/os-release")
        yumio = self.load()
        self.assertTrue(yumio.base.conf.releasever)
        self.assertEqual(repositories(yumio), sorted(LAYOUT))

    @in_own_process
    def test_a_reset_reads_the_configuration_again_into_the_same_dnf_base(self):
        self.started()
        base = self.yumio.base
        self.assertFalse(base.conf.best)
        self.configure("best=1")
        os.unlink(self.repository_file("sandbox-updates"))
        self.write("/etc/yum.repos.d/new.repo", "[new]\nname=x\nbaseurl=file:///nowhere\nenabled=0\n")
        self.yumio.reset()
        self.assertIs(self.yumio.base, base)
        self.assertTrue(base.conf.best)
        self.assertIn("new", base.repos)
        self.assertNotIn("sandbox-updates", base.repos)
        self.collect()
        self.assertEqual(self.updates, [])
        self.assertEqual({str(package) for package in self.installed}, self.sandbox.installed())
        self.assert_no_faults()

    @in_own_process
    def test_the_collection_after_a_reset_finds_the_changed_packages(self):
        self.started()
        self.sandbox.rpm("-e", "--justdb", "--nodeps", "almanac")
        self.again()
        self.assertNotIn("almanac", [package.name for package in self.installed])

    @in_own_process
    def test_repositories_can_be_enabled_and_disabled(self):
        yumio = self.load()
        repos = yumio.base.repos
        self.assertIsInstance(repos["sandbox-disabled"].enabled, int)
        self.assertEqual((repos["sandbox-disabled"].enabled, repos["sandbox-updates"].enabled), (0, 1))
        yumio.enableRepo("sandbox-disabled")
        yumio.disableRepo("sandbox-updates")
        self.assertEqual((repos["sandbox-disabled"].enabled, repos["sandbox-updates"].enabled), (1, 0))
        self.collect()
        self.assertIn("hidden-gem", [package.name for package in self.available])
        self.assertEqual([package.repoid for package in self.updates], ["sandbox-disabled"])

    @in_own_process
    def test_the_script_offers_all_classes_that_the_program_uses(self):
        self.load()
        for name in ("bdb.BdbQuit", "dnf.exceptions.Error", "dnf.exceptions.MiscError", "dnf.exceptions.RepoError",
                     "dnf.exceptions.LockError"):
            self.assertTrue(issubclass(eval(name, self.script), Exception), name)
        for name in ("dnf.drpm.DeltaPayload", "dnf.repo.MDPayload", "dnf.repo.RPMPayload"):
            self.assertIsInstance(eval(name, self.script), type, name)
        self.assertRegex(eval("dnf.__version__", self.script), r"^\d+\.\d+")

    @in_own_process
    def test_an_unknown_repository_causes_a_repository_error(self):
        yumio = self.load()
        for method in (yumio.enableRepo, yumio.disableRepo):
            with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "no-such-repo"):
                method("no-such-repo")

    @in_own_process
    def test_the_script_calls_no_function_of_the_program_after_the_program_has_ended(self):
        self.started()
        sys.stdout = sys.__stdout__
        sys.stderr = sys.__stderr__
        self.recording.clear()
        self.dnf.logging.logging.getLogger("dnf").error("too late")
        self.yumio.base.close()
        self.assertEqual(self.recording.calls, [])

    @in_own_process
    def test_python_output_reaches_the_program_with_all_its_characters(self):
        self.load()
        self.recording.clear()
        print("plain", end="")
        sys.stderr.write("name \udce9 and \0\n")
        self.dnf.logging.logging.getLogger("dnf").warning("%s \udce9 \0", "w")
        self.assertEqual(self.recording.calls, [
            ("stdoutWrite", ("plain",)), ("stderrWrite", ("name \\udce9 and \\0\n",)),
            ("errorlog", (2, "w \\udce9 \\0"))])
        self.assert_no_faults()

    @in_own_process
    def test_log_records_of_dnf_are_passed_on_with_their_levels(self):
        self.load()
        logger = self.dnf.logging.logging.getLogger("dnf")
        self.recording.clear()
        logger.critical("a")
        logger.error("b")
        logger.info("c")
        logger.debug("d")
        logger.log(self.dnf.logging.TRACE, "e")
        self.assertEqual(self.recording.calls, [
            ("errorlog", (0, "a")), ("errorlog", (1, "b")), ("log", (2, "c")), ("log", (3, "d")), ("log", (9, "e"))])
