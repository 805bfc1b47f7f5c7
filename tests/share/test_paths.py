# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the paths that the script and dnf use."""

import os
import re
import shutil
import subprocess

from scenario import ScenarioTest, in_own_process


class PathsTest(ScenarioTest):
    @in_own_process
    def test_the_directories_of_dnf_are_below_the_managed_root(self):
        shutil.rmtree(self.sandbox.root + "/var/log")
        yumio = self.load()
        conf = yumio.base.conf
        root = self.sandbox.root
        self.assertEqual(conf.installroot, root)
        self.assertEqual((conf.cachedir, conf.logdir, conf.persistdir),
                         (root + "/var/cache/yum", root + "/var/log", root + "/var/lib/dnf"))
        yumio.setupRepos()
        self.assertTrue(os.path.isfile(root + "/var/log/dnf.log"))
        self.assertIn("sandbox-http.solv", os.listdir(root + "/var/cache/yum"))

    @in_own_process
    def test_a_transaction_changes_nothing_outside_the_managed_root(self):
        self.isolate()
        places = ["/var/cache", "/var/log", "/var/lib/dnf", "/var/lib/rpm", "/usr/lib/sysimage/rpm", "/var/tmp"]
        present = [place for place in places if os.path.isdir(place)]
        self.assertIn("/var/cache", present)
        for place in present:
            subprocess.run(["mount", "-t", "tmpfs", "tmpfs", place], check=True)
        self.started()
        self.apply(installs=["loupe", "wax-tablet"], removes=["almanac"], answers=[1, 1])
        self.again()
        self.assertTrue(self.package(self.available, "tagsoup").changelogs)
        self.yumio.cleanAll()
        self.yumio.unlock()
        self.assertIn("loupe-45.0-1.x86_64", self.sandbox.installed())
        self.assertEqual({place: os.listdir(place) for place in present}, {place: [] for place in present})
        self.assertEqual([place for place in places if os.path.isdir(place)], present)
        self.assertEqual(os.listdir(self.home), [])

    @in_own_process
    def test_variables_in_configured_paths_are_replaced(self):
        place = os.path.join(self.sandbox.root, "$basearch", "$releasever")
        self.configure("cachedir=%s/cache" % place, "logdir=%s/log" % place, "persistdir=%s/state" % place)
        yumio = self.load()
        conf = yumio.base.conf
        place = os.path.join(self.sandbox.root, "x86_64", "9")
        self.assertEqual((conf.cachedir, conf.logdir, conf.persistdir),
                         (place + "/cache", place + "/log", place + "/state"))
        yumio.setupRepos()
        kept = os.listdir(place + "/cache")
        self.assertIn("sandbox-http.solv", kept)
        self.assertTrue([name for name in kept if re.match("sandbox-http-[0-9a-f]{16}$", name)], kept)
        self.assertTrue(os.path.isfile(place + "/log/dnf.log"))

    @in_own_process
    def test_configured_directories_are_looked_up_below_the_managed_root(self):
        # The configuration of the managed system names these directories, which exist in the managed system and in the
        # running system.
        outside = os.path.join(self.directory, "named")
        inside = self.sandbox.root + outside
        for top, name in ((outside, "host"), (inside, "image")):
            for kind in ("repos", "vars"):
                os.makedirs(os.path.join(top, kind))
            with open(top + "/repos/one.repo", "w") as stream:
                stream.write("[one]\nname=$place\nbaseurl=file:///nowhere\nenabled=0\n")
            with open(top + "/vars/place", "w") as stream:
                stream.write(name + "\n")
        before = sorted(os.listdir(outside))
        self.configure(*("%s=%s/%s" % (option, outside, name) for option, name in
                         (("cachedir", "cache"), ("logdir", "log"), ("persistdir", "state"), ("reposdir", "repos"),
                          ("varsdir", "vars"))))
        yumio = self.load()
        conf = yumio.base.conf
        self.assertEqual((conf.cachedir, conf.logdir, conf.persistdir),
                         (inside + "/cache", inside + "/log", inside + "/state"))
        self.assertEqual({identifier: repo.name for identifier, repo in yumio.base.repos.items()}, {"one": "image"})
        self.assertTrue(os.path.isfile(inside + "/log/dnf.log"))
        self.assertEqual(sorted(os.listdir(outside)), before)
        # If a directory is missing in the managed system, the script uses the directory of the running system.
        shutil.rmtree(inside + "/vars")
        yumio.reset()
        self.assertEqual(yumio.base.repos["one"].name, "host")

    @in_own_process
    def test_the_script_starts_even_if_the_log_directory_cannot_be_created(self):
        self.configure("logdir=/dev/null/log")
        yumio = self.load()
        self.assertIn("/dev/null/log", "\n".join(self.recording.errors()))
        self.assertIn("sandbox-http", yumio.base.repos)

    @in_own_process
    def test_paths_have_no_prefix_if_no_managed_root_is_set(self):
        for value in (None, "", "/"):
            os.environ.pop("VYREROOT")
            if value is not None:
                os.environ["VYREROOT"] = value
            self.run_without_object()
            present = set(["/etc/yum/yum.conf", "/etc/yum.conf", "/etc/dnf/dnf.conf"])
            exists = os.path.exists
            os.path.exists = lambda path: path in present
            try:
                for path in ("/etc/yum/yum.conf", "/etc/yum.conf", "/etc/dnf/dnf.conf"):
                    self.assertEqual(self.module("configfiles").configurationFile(), path)
                    present.discard(path)
                self.assertIsNone(self.module("configfiles").configurationFile())
            finally:
                os.path.exists = exists
            conf = self.configuration_without_file()
            self.assertEqual(conf.installroot, "/")
            self.assertEqual(list(conf.reposdir), ["/etc/yum.repos.d", "/etc/yum/repos.d"] + [
                path for path in ("/etc/distro.repos.d", "/usr/share/dnf5/repos.d") if os.path.isdir(path)])
            self.assertEqual((conf.cachedir, conf.logdir, conf.persistdir),
                             ("/var/cache/yum", "/var/log", "/var/lib/dnf"))
            self.assertEqual(list(conf.varsdir), ["/etc/yum/vars", "/etc/dnf/vars"])
            os.environ["VYREROOT"] = "x"

    def configuration_without_file(self):
        import dnf.rpm

        detect = dnf.rpm.detect_releasever
        dnf.rpm.detect_releasever = lambda root: "9"
        configuration = self.module("configuration")
        configuration.configurationFile = lambda: None
        try:
            return configuration.readConfiguration()[0]
        finally:
            dnf.rpm.detect_releasever = detect
