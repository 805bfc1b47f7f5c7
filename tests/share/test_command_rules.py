# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of rules of the dnf command that are not in dnf's library. The script follows these rules too."""

import glob
import json
import os
import shutil
import stat
import subprocess
import types

from scenario import ScenarioTest, in_own_process


class CommandRulesTest(ScenarioTest):
    def cached(self, name):
        return os.path.join(self.sandbox.root, "var/cache/yum", name)

    def asked(self):
        """The repositories whose metadata the server was asked for."""
        return sorted(set(path.split("/")[1] for path in self.server.paths(200) if path.endswith("repomd.xml")))

    @in_own_process
    def test_releasever_in_the_environment_has_priority_over_the_release_package(self):
        self.write("/etc/yum.repos.d/more.repo", "[more-$releasever]\nname=x\nbaseurl=file:///$releasever\n")
        os.environ["DNF_VAR_releasever"] = "42"
        os.environ["DNF3"] = "three"
        yumio = self.load()
        self.assertEqual(yumio.base.conf.releasever, "42")
        self.assertEqual(yumio.base.conf.substitutions["DNF3"], "three")
        self.assertIn("more-42", yumio.base.repos)

    @in_own_process
    def test_releasever_in_a_variable_file_is_used_in_directory_names(self):
        self.write("/etc/dnf/vars/releasever", "43\n")
        self.configure("cachedir=/var/cache/of-$releasever")
        conf = self.load().base.conf
        self.assertEqual((conf.releasever, conf.cachedir), ("43", self.sandbox.root + "/var/cache/of-43"))

    @in_own_process
    def test_package_signatures_are_checked_if_the_rpm_configuration_demands_this(self):
        self.load()
        import rpm

        rpm.addMacro("_pkgverify_level", "all")
        self.yumio.lock()
        self.collect()
        self.assertEqual([repo.id for repo in self.yumio.base.repos.values() if not repo.gpgcheck], [])
        self.assertEqual(len([text for text in self.recording.errors() if "Enforcing GPG signature check" in text]), 1)
        self.assert_refused("astrolabe.*is not signed", installs=["astrolabe"])

    @in_own_process
    def test_repository_files_can_switch_signature_checks_off_if_rpm_demands_no_checks(self):
        self.started()
        self.assertTrue([repo.id for repo in self.yumio.base.repos.values() if not repo.gpgcheck])

    @in_own_process
    def test_the_server_is_not_contacted_if_cacheonly_is_set(self):
        self.started()
        self.assertTrue(self.asked())
        self.sandbox.expire_metadata()
        self.server.forget()
        self.configure("cacheonly=1")
        self.again()
        self.assertEqual(self.asked(), [])
        self.package(self.available, "astrolabe")

    @in_own_process
    def test_packages_are_downloaded_to_the_directory_in_destdir(self):
        self.configure("destdir=/srv/packages", "keepcache=1")
        self.started()
        self.apply(installs=["astrolabe"])
        self.assertEqual(os.listdir(self.sandbox.root + "/srv/packages"), ["astrolabe-5.6-1.x86_64.rpm"])
        self.assertEqual(glob.glob(self.cached("*/packages/*.rpm")), [])

    @in_own_process
    def test_metadata_that_an_earlier_run_has_marked_as_expired_are_downloaded_again(self):
        self.configure("metadata_expire=never")
        self.started()
        self.yumio.unlock()
        with open(self.cached("expired_repos.json")) as stream:
            self.assertNotIn("sandbox-http", json.load(stream))
        self.server.forget()
        self.started()
        self.assertEqual(self.asked(), [])
        self.yumio.unlock()
        with open(self.cached("expired_repos.json"), "w") as stream:
            json.dump(["sandbox-http", "gone"], stream)
        self.started()
        self.assertEqual(self.asked(), ["sandbox-http"])

    @in_own_process
    def test_metadata_marked_as_expired_are_recorded_for_the_next_run(self):
        self.configure("metadata_expire=never")
        self.started()
        self.yumio.base.repos["sandbox-http"]._repo.expire()
        self.yumio.reset()
        with open(self.cached("expired_repos.json")) as stream:
            self.assertIn("sandbox-http", json.load(stream))

    @in_own_process
    def test_a_marked_package_replaces_obsoleted_packages_even_if_the_obsoletes_option_is_off(self):
        self.configure("obsoletes=0")
        twin = self.sandbox.copy(os.path.join(self.directory, "twin"))
        for name in os.listdir(os.path.join(self.sandbox.root, "etc/yum.repos.d")):
            shutil.copy(self.repository_file(name[:-5]), os.path.join(twin.root, "etc/yum.repos.d", name))
        subprocess.run(["/usr/bin/dnf", "--assumeyes", "--quiet", "--installroot", twin.root, "-c",
                        twin.root + "/etc/yum.conf", "--setopt=reposdir=%s/etc/yum.repos.d" % twin.root, "install",
                        "newpost-2.0-1"], env=twin.environment(), check=True, stdout=subprocess.DEVNULL)
        self.started()
        self.apply(installs=["newpost"])
        self.assertEqual(self.sandbox.installed(), twin.installed())
        self.assertNotIn("oldpost-1.8-1.x86_64", twin.installed())

    @in_own_process
    def test_an_image_based_system_is_not_changed(self):
        """Tests only the check for image-based systems, because a whole operation would change the running system."""
        self.started()
        image = self.module("image")

        def check():
            image.checkPersistence(self.yumio.base)

        check()
        self.isolate()
        os.system("mount -t tmpfs none /run && touch /run/ostree-booted && mount --bind /usr /usr && "
                  "mount -o remount,bind,ro /usr")
        self.assertTrue(os.statvfs("/usr").f_flag & os.ST_RDONLY)
        check()  # the image is that of the running system, not of the managed root
        image.managedRoot = lambda: "/"
        try:
            self.assertRaisesRegex(self.dnf.exceptions.Error,
                                   "^The programs of this system are in a read-only image", check)
            os.system("mount -o remount,bind,rw /usr")
            check()
            os.unlink("/run/ostree-booted")
            check()
        finally:
            image.managedRoot = self.module("paths").managedRoot

    @in_own_process
    def test_a_changed_installation_reason_does_not_prevent_the_check_of_protected_files(self):
        """A stand-in replaces the option for protected paths, which not all versions of dnf have."""
        self.configure("installonly_limit=2")
        self.started()
        base = self.yumio.base
        kernel = self.package(self.updates, "kernel")
        base.package_install(kernel)
        base.resolve()
        self.assertIn("Reason Change", [item.action_name for item in base.items()])
        check = self.module("image").checkDrift

        def with_paths(*paths):
            return types.SimpleNamespace(conf=types.SimpleNamespace(usr_drift_protected_paths=paths), items=base.items)

        check(with_paths("/nowhere/*"))
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "%s\n  %s" % (kernel, sorted(kernel.files)[0])):
            check(with_paths("/*"))

    @in_own_process
    def test_protected_files_of_an_image_are_not_changed(self):
        """Only some versions of dnf have the option for protected paths. In the other versions, no path is protected.
        """
        self.configure("usr_drift_protected_paths=/nowhere/*,/usr/share/doc/astrolabe*")
        self.started()
        base = self.yumio.base
        files = [path for path in sorted(self.package(self.available, "astrolabe").files)
                 if path.startswith("/usr/share/doc/astrolabe")]
        self.assertTrue(files)
        image = self.module("image")
        image.managedRoot = lambda: "/"

        def check():
            image.checkPersistence(base)

        self.isolate()
        known = hasattr(base.conf, "usr_drift_protected_paths")
        for name, refused in (("inkwell-modern", False), ("astrolabe", known)):
            base.reset(goal=True)
            base.package_install(self.package(self.available, name))
            base.resolve()
            os.system("mount -t tmpfs none /run")
            check()  # the running system is not based on an image
            os.system("touch /run/ostree-booted")
            if not refused:
                check()
                continue
            with self.assertRaises(self.dnf.exceptions.Error) as caught:
                check()
            first, *others = str(caught.exception).split("\n")
            self.assertTrue(first.startswith("This operation would modify the following paths"), first)
            self.assertEqual(others, ["astrolabe-5.6-1.x86_64"] + ["  " + path for path in files])

    @in_own_process
    def test_the_script_keeps_the_umask(self):
        """If the script keeps the umask, its files get the same modes as dnf's files."""
        os.umask(0o027)
        self.load()
        self.assertEqual(os.umask(0o022), 0o027)
        self.assertTrue(stat.S_ISDIR(os.stat(self.sandbox.root).st_mode))
