# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the choice of the main configuration file, of the defaults if this file is missing, and of the signature
checks that dnf's own file demands.
"""

import os
import re
import subprocess

from recordingmodule import limits
from scenario import LAYOUT, SOURCES, ScenarioTest, in_own_process, repositories

# The message if the main configuration file does not say whether signatures are checked.
CHECKED = "VYRE checks package signatures, unless a repository disables this check."


class MainFileTest(ScenarioTest):
    @in_own_process
    def test_the_repository_directories_are_read_if_the_main_file_is_missing(self):
        os.unlink(os.path.join(self.sandbox.root, "etc/yum.conf"))
        yumio = self.load()
        self.assertEqual(repositories(yumio), sorted(LAYOUT))
        self.assertFalse(yumio.base.conf.config_file_path.startswith("/etc/"))
        self.assertTrue(yumio.base.conf.gpgcheck)
        self.assertIn("The main configuration file is missing. " + CHECKED,
                      [text for level, text in self.recording.of("log")])
        self.assertEqual(self.recording.errors(), [])

    @in_own_process
    def test_a_malformed_main_file_is_reported_and_the_repository_directories_are_read(self):
        self.write("/etc/yum.conf", "[main\nthis is no option\n")
        yumio = self.load()
        self.check_unused(yumio, "Parsing file")

    def check_unused(self, yumio, reason):
        """Checks that a message names the unusable main file and the reason, that signatures are checked, and that
        packages are listed.
        """
        named, checked = self.recording.errors()
        self.assertIn("Unable to use the configuration file %s/etc/yum.conf: %s" % (self.sandbox.root, reason), named)
        self.assertEqual(checked, "VYRE ignores the options in this file, such as exclude. " + CHECKED)
        self.assertTrue(yumio.base.conf.gpgcheck)
        self.assertEqual(repositories(yumio), sorted(LAYOUT))
        # The gpgcheck options in the repository files have priority over this default.
        self.assertEqual({name: yumio.base.repos[name].gpgcheck for name in LAYOUT}, self.own_checks())
        yumio.base.repos["sandbox-unreachable"].disable()
        yumio.lock()
        self.collect()
        self.assertTrue(self.package(self.available, "astrolabe"))
        self.assert_no_faults()

    def own_checks(self):
        checks = {}
        for name in LAYOUT:
            with open(self.repository_file(name)) as stream:
                found = re.search("^gpgcheck *= *([01])", stream.read(), re.M)
            checks[name] = found is None or found.group(1) == "1"
        return checks

    @in_own_process
    def test_signatures_are_checked_by_default_if_the_main_file_is_unusable(self):
        self.change_repository("sandbox-http", "gpgcheck=0\n", "")
        self.write("/etc/yum.conf", b"\x00\xff\xfe[main]\n\xe9=\xe9\n")
        yumio = self.load()
        self.check_unused(yumio, "Parsing file")
        self.assertTrue(yumio.base.repos["sandbox-http"].gpgcheck)

    @in_own_process
    def test_the_options_of_the_main_file_are_used_even_if_the_repository_editor_cannot_read_this_file(self):
        options = b"[main]\ngpgcheck=1\nexclude=astrolabe\ndebuglevel=7\n"
        odd = b"[odd]\nname=Odd\nbaseurl=file:///nowhere\n"
        large = b"#" * limits()["repositorySectionLimit"] + b"\n"
        yumio = None
        for content in (options + b"# a\0b\n" + odd, options + odd + large, odd + large + options,
                        b"# a\0b\n" + options + odd):
            self.write("/etc/yum.conf", content)
            if yumio is None:
                yumio = self.load()
                yumio.lock()
            else:
                yumio.reset()
            conf = yumio.base.conf
            self.assertTrue(conf.gpgcheck)
            self.assertEqual((list(conf.excludepkgs), conf.debuglevel), (["astrolabe"], 7))
            # A file that the repository editor cannot read defines no repositories, neither for the editor nor for the
            # script.
            self.assertEqual(repositories(yumio), sorted(LAYOUT))
            self.assertEqual(self.recording.errors(), [])
        yumio.base.repos["sandbox-unreachable"].disable()
        self.collect()
        self.assertNotIn("astrolabe", [package.name for package in self.available])
        self.assert_no_faults()

    @in_own_process
    def test_a_main_file_that_is_too_large_is_reported(self):
        os.truncate(self.write("/etc/yum.conf", "[main]\ngpgcheck=0\n"), limits()["repositoryFileLimit"] + 1)
        self.check_unused(self.load(), "it is larger than 8 MB")

    @in_own_process
    def test_a_main_file_that_is_a_directory_is_reported(self):
        main = self.sandbox.root + "/etc/yum.conf"
        os.unlink(main)
        os.mkdir(main)
        self.check_unused(self.load(), "it is not a regular file")

    @in_own_process
    def test_an_invalid_value_is_reported_and_the_other_options_are_used(self):
        self.configure("installonly_limit=many", "debuglevel=7")
        yumio = self.load()
        self.assertIn("installonly_limit", "\n".join(self.recording.errors()))
        self.assertEqual(yumio.base.conf.debuglevel, 7)

    @in_own_process
    def test_a_main_file_that_is_a_pipe_is_reported(self):
        main = self.sandbox.root + "/etc/yum.conf"
        os.unlink(main)
        os.mkfifo(main)
        self.check_unused(self.load(), "it is not a regular file")
        # After the pipe is replaced by a file, the script uses the main configuration file.
        os.unlink(main)
        self.write("/etc/yum.conf", "[main]\ndebuglevel=7\n")
        self.yumio.reset()
        self.assertEqual((self.yumio.base.conf.debuglevel, self.yumio.base.conf.gpgcheck), (7, False))

    @in_own_process
    def test_the_size_limit_of_repository_sections_does_not_apply_to_the_main_section(self):
        self.configure("#" * limits()["repositorySectionLimit"], "[in-main]", "name=x", "baseurl=file:///nowhere")
        yumio = self.load()
        self.assertEqual(repositories(yumio), sorted(LAYOUT + ("in-main",)))
        self.assertEqual(self.recording.errors(), [])

    @in_own_process
    def test_the_file_etc_yum_yum_conf_is_preferred_to_etc_yum_conf(self):
        self.write("/etc/yum/yum.conf", "[main]\ndebuglevel=5\n")
        yumio = self.load()
        self.assertEqual(yumio.base.conf.debuglevel, 5)
        self.assertEqual(yumio.base.conf.config_file_path, self.sandbox.root + "/etc/yum/yum.conf")

    @in_own_process
    def test_the_main_configuration_file_is_the_first_candidate_that_exists(self):
        self.run_without_object()
        tried = 0
        with open(os.path.join(SOURCES, "tests", "support", "main-files")) as lines:
            for line in lines:
                if line.startswith("#"):
                    continue
                names, expected = line.rstrip("\n").split("\t")
                root = os.environ["VYREROOT"] = os.path.join(self.directory, "root%d" % tried)
                os.makedirs(root + "/etc")
                for name in names.split(" "):
                    self.make_main_file(root, name)
                self.assertEqual(self.module("configfiles").configurationFile(),
                                 None if expected == "-" else os.path.join(root, expected), line)
                tried += 1
        self.assertGreater(tried, 20)

    @staticmethod
    def make_main_file(root, name):
        name, _, target = name.partition(">")
        kind = name[-1]
        path = os.path.join(root, name.rstrip("=!/"))
        if name == "-":
            return
        os.makedirs(os.path.dirname(path), exist_ok=True)
        if target:
            os.symlink(target, path)
        elif kind == "/":
            os.makedirs(path)
        else:
            with open(path, "w") as stream:
                stream.write("" if kind == "=" else "[main]\n")
            if kind == "!":
                os.chmod(path, 0)

    def use_own_file(self, content):
        """Leaves only dnf's own main file, as on the systems of most dnf users."""
        os.unlink(self.sandbox.root + "/etc/yum.conf")
        return self.write("/etc/dnf/dnf.conf", "[main]\nretries=1\ntimeout=5\n" + content)

    def run_dnf(self, *arguments):
        """Runs the dnf command on the same system; returns its exit status and its output."""
        done = subprocess.run(["dnf", "--noplugins", "--installroot", self.sandbox.root, "--disablerepo=*unreachable",
                               "-y"] + list(arguments), stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              env=dict(self.sandbox.environment(), LC_ALL="C.UTF-8"), universal_newlines=True)
        return done.returncode, done.stdout

    @in_own_process
    def test_all_options_of_dnf_conf_are_used_if_dnf_conf_is_the_main_file(self):
        path = self.use_own_file("gpgcheck=1\nexclude=astrolabe\nproxy=http://127.0.0.1:1/\nkeepcache=1\n"
                                 "install_weak_deps=0\n[in-main]\nname=Main\nbaseurl=file:///nowhere\nenabled=0\n")
        self.write("/etc/dnf/vars/place", "mine\n")
        self.write("/etc/yum.repos.d/place.repo", "[x-$place]\nname=x\nbaseurl=file:///nowhere\nenabled=0\n")
        conf = self.load().base.conf
        self.assertEqual(conf.config_file_path, path)
        self.assertEqual((conf.gpgcheck, list(conf.excludepkgs), conf.proxy, conf.keepcache, conf.install_weak_deps),
                         (True, ["astrolabe"], "http://127.0.0.1:1/", True, False))
        self.assertEqual((conf.cachedir, conf.persistdir),
                         (self.sandbox.root + "/var/cache/yum", self.sandbox.root + "/var/lib/dnf"))
        self.assertEqual(repositories(self.yumio), sorted(LAYOUT + ("in-main", "x-mine")))
        self.assertEqual(self.recording.errors(), [])

    def assert_unsigned_package_is_refused_as_by_dnf(self):
        self.change_repository("sandbox-http", "gpgcheck=0\n", "")
        before = self.sandbox.installed()
        status, output = self.run_dnf("install", "loupe")
        self.assertNotEqual(status, 0)
        self.assertRegex(output, "loupe.* is not signed|You have enabled checking of packages via GPG keys")
        self.assertEqual(self.sandbox.installed(), before)
        self.load()
        self.yumio.base.repos["sandbox-unreachable"].disable()
        self.yumio.lock()
        self.collect()
        self.assert_refused("loupe.* is not signed", installs=["loupe"])

    @in_own_process
    def test_an_unsigned_package_is_refused_as_by_dnf_if_dnf_conf_is_the_main_file(self):
        self.use_own_file("gpgcheck=1\n")
        self.assert_unsigned_package_is_refused_as_by_dnf()

    @in_own_process
    def test_signatures_are_checked_if_dnf_conf_is_unusable(self):
        path = self.use_own_file("")
        for content, reason in (("[main\n", "Parsing file"), (None, "it is not a regular file")):
            os.unlink(path)
            if content is None:
                os.mkfifo(path)
            else:
                self.write("/etc/dnf/dnf.conf", content)
            self.assertTrue(self.load().base.conf.gpgcheck)
            named, checked = self.recording.errors()
            self.assertIn("Unable to use the configuration file %s: %s" % (path, reason), named)
            self.assertIn(CHECKED, checked)

    @in_own_process
    def test_checks_required_by_dnf_conf_stay_enabled_if_the_main_file_is_unusable(self):
        own = self.write("/etc/dnf/dnf.conf", "[main]\nrepo_gpgcheck=1\n")
        main = self.write("/etc/yum.conf", "[main\n")
        yumio = self.load()
        self.assertTrue(yumio.base.conf.gpgcheck)
        self.assertTrue(yumio.base.conf.repo_gpgcheck)
        self.assertTrue(yumio.base.repos["sandbox-file"].repo_gpgcheck)
        self.assertEqual(self.recording.errors()[-1], "dnf's file %s requires checks that %s does not require. "
                         "VYRE makes these checks too: repo_gpgcheck" % (own, main))

    @in_own_process
    def test_tls_certificates_and_dns_keys_are_checked_if_dnf_conf_requires_this(self):
        self.write("/etc/dnf/dnf.conf", "[main]\nsslverifystatus=1\ngpgkey_dns_verification=1\n")
        self.write("/etc/yum.conf", "[main]\nproxy_sslverify=0\n")
        conf = self.load().base.conf
        self.assertTrue(conf.proxy_sslverify)
        self.assertTrue(conf.sslverifystatus)
        self.assertTrue(conf.gpgkey_dns_verification)
        self.assertTrue(self.yumio.base.repos["sandbox-http"].proxy_sslverify)

    @in_own_process
    def test_checks_required_by_dnf_conf_stay_enabled_even_if_the_main_file_disables_them(self):
        own = self.write("/etc/dnf/dnf.conf", "[main]\ngpgcheck=1\nrepo_gpgcheck=yes\nlocalpkg_gpgcheck=1\n"
                         "exclude=astrolabe\n")
        main = self.write("/etc/yum.conf", "[main]\ngpgcheck=0\nsslverify=0\n")
        yumio = self.load()
        said = "dnf's file %s requires checks that %s does not require. VYRE makes these checks too: " % (own, main)

        def checks():
            conf = yumio.base.conf
            return conf.gpgcheck, conf.repo_gpgcheck, conf.localpkg_gpgcheck, conf.sslverify
        self.assertEqual(checks(), (True, True, True, True))
        self.assertEqual(list(yumio.base.conf.excludepkgs), [])
        self.assertEqual(self.recording.errors(), [said + "gpgcheck, repo_gpgcheck, localpkg_gpgcheck, sslverify"])
        # If the main file does not set sslverify, TLS certificates are checked, although dnf's own file disables this.
        for content, expected, added in (
                ("", (True, False, False, True), "gpgcheck"), ("[main]\ngpgcheck=1\n", (True, False, False, True), "")):
            self.write("/etc/yum.conf", content)
            self.write("/etc/dnf/dnf.conf", "[main]\ngpgcheck=1\nsslverify=0\n")
            self.recording.clear()
            yumio.reset()
            self.assertEqual(checks(), expected)
            self.assertEqual(self.recording.errors(), [said + added] if added else [])
        # If VYRE cannot read dnf's own file, it does not know which checks the file requires, so it checks signatures.
        self.write("/etc/yum.conf", "[main]\ngpgcheck=0\n")
        self.write("/etc/dnf/dnf.conf", "[main\n")
        self.recording.clear()
        yumio.reset()
        self.assertTrue(yumio.base.conf.gpgcheck)
        fault, checked = self.recording.errors()
        self.assertIn("Unable to use the configuration file %s: Parsing file" % own, fault)
        self.assertEqual(checked, said + "gpgcheck")
        # If neither file demands signature checks, VYRE does not check signatures.
        self.write("/etc/dnf/dnf.conf", "[main]\ngpgcheck=0\n")
        self.recording.clear()
        yumio.reset()
        self.assertFalse(yumio.base.conf.gpgcheck)
        self.assertEqual(self.recording.errors(), [])

    def use_running_configuration(self, content):
        """Replaces dnf's configuration of the running system, both for this process and for the dnf command."""
        self.isolate()
        self.running_configuration = "/etc/dnf/dnf.conf"
        path = os.path.join(self.directory, "running.conf")
        with open(path, "w") as stream:
            stream.write(content)
        subprocess.run(["mount", "--bind", path, self.running_configuration], check=True)

    @in_own_process
    def test_the_signature_checks_of_the_running_system_apply_if_the_managed_root_lacks_dnf_conf(self):
        self.use_running_configuration("[main]\ngpgcheck=1\nretries=1\n")
        self.write("/etc/yum.conf", "[main]\ngpgcheck=0\nretries=1\ntimeout=5\n")
        self.assert_unsigned_package_is_refused_as_by_dnf()
        self.assertIn("dnf's file /etc/dnf/dnf.conf requires checks that %s/etc/yum.conf does not require. VYRE "
                      "makes these checks too: gpgcheck" % self.sandbox.root,
                      [text for level, text in self.recording.of("log")])

    @in_own_process
    def test_the_signature_checks_of_the_running_system_apply_if_the_managed_root_lacks_all_main_files(self):
        self.use_running_configuration("[main]\nrepo_gpgcheck=1\n")
        os.unlink(self.sandbox.root + "/etc/yum.conf")
        self.assertTrue(self.load().base.conf.repo_gpgcheck)
        self.assertEqual([text for level, text in self.recording.of("log") if "main configuration file" in text], [
            "The main configuration file is missing. " + CHECKED,
            "The main configuration file is missing. dnf uses /etc/dnf/dnf.conf instead. VYRE also makes the "
            "checks that this file requires: repo_gpgcheck"])
        self.assertEqual([text for level, text in self.recording.of("log") if os.devnull in text], [])

    @in_own_process
    def test_dnf_conf_of_the_managed_root_has_priority_over_dnf_conf_of_the_running_system(self):
        self.use_running_configuration("[main]\nrepo_gpgcheck=1\n")
        self.write("/etc/dnf/dnf.conf", "[main]\n")
        self.assertFalse(self.load().base.conf.repo_gpgcheck)

    @in_own_process
    def test_packages_protected_by_dnf_stay_protected_even_if_dnf_conf_is_not_the_main_file(self):
        self.write("/etc/dnf/dnf.conf", "[main]\nprotected_packages=almanac\n")
        self.configure("protected_packages=parrot")
        self.started()
        self.assert_refused("almanac", removes=["almanac"])
        self.assert_refused("parrot", removes=["parrot"])
