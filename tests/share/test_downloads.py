# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of successful, failed and unnecessary downloads."""

import ctypes
import os

from scenario import ScenarioTest, in_own_process

LOUPE = "/sandbox-http/loupe-45.0-1.x86_64.rpm"
TILES = ["tilepack-%d" % number for number in range(1, 9)]


class DownloadTest(ScenarioTest):
    def cached(self):
        found = []
        for directory, _, names in os.walk(self.sandbox.root + "/var/cache/yum"):
            found += [name for name in names if name.endswith(".rpm")]
        return sorted(found)

    @in_own_process
    def test_every_download_reports_its_start_and_its_progress_and_its_end(self):
        self.started()
        self.apply(installs=TILES)
        self.assertEqual(len(self.recording.of("downloadRemotePayloads")), 1)
        self.assertEqual(sorted(self.recording.of("downloadRemotePayloads")[0]), TILES)
        (count, size, deltas), = self.recording.of("downloadStart")
        self.assertEqual((count, deltas), (8, 0))
        self.assertEqual(size, sum(self.package(self.available, name).downloadsize for name in TILES))
        names = {name + "-1.0-1.noarch.rpm" for name in TILES}
        followed = {}
        for kind, name, whole, done in self.recording.of("downloadProgress"):
            self.assertLessEqual(followed.get(name, 0), done)
            self.assertLessEqual(done, whole)
            followed[name] = done
        self.assertEqual(followed, {
            name + "-1.0-1.noarch.rpm": self.package(self.available, name).downloadsize for name in TILES})
        ended = self.recording.of("downloadEnd")
        self.assertEqual(sorted(name for kind, name, whole, status in ended), sorted(names))
        self.assertEqual({(kind, status) for kind, name, whole, status in ended}, {("RPMPayload", None)})

    def assert_fails_until_corrected(self, text, kind, *arguments):
        self.started()
        self.server.fault(LOUPE, kind, *arguments)
        self.assert_refused(text, installs=["loupe", "astrolabe"])
        self.assertEqual([name for name in self.recording.names() if name.startswith("rpmtrans")], [])
        self.server.fault(LOUPE, "none")
        self.recording.clear()
        changed = self.changes(self.apply, installs=["loupe", "astrolabe"])
        self.assertEqual(changed, ({"loupe-45.0-1.x86_64", "astrolabe-5.6-1.x86_64"}, set()))

    @in_own_process
    def test_downloads_succeed_after_sigint_has_interrupted_an_earlier_download(self):
        self.load()
        # librepo's signal handler sets this variable after SIGINT.
        interrupted = ctypes.c_int.in_dll(ctypes.CDLL("librepo.so.0"), "lr_interrupt")
        interrupted.value = 1
        with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "[Ii]nterrupted"):
            self.yumio.base.fill_sack()
        self.yumio.lock()
        self.yumio.reset()
        interrupted.value = 1
        self.collect()
        interrupted.value = 1
        self.assertEqual(self.changes(self.apply, installs=["loupe"]), ({"loupe-45.0-1.x86_64"}, set()))

    @in_own_process
    def test_a_package_that_the_server_lacks_is_reported(self):
        self.assert_fails_until_corrected("loupe", "status", 404)

    @in_own_process
    def test_an_error_of_the_server_is_reported(self):
        self.assert_fails_until_corrected("loupe", "status", 500)

    @in_own_process
    def test_a_truncated_package_is_reported(self):
        self.assert_fails_until_corrected("loupe", "truncated", 300)

    @in_own_process
    def test_a_package_with_wrong_bytes_is_reported(self):
        self.assert_fails_until_corrected("loupe", "corrupted")

    @in_own_process
    def test_a_server_that_never_answers_is_reported(self):
        self.configure("timeout=1", "minrate=100")
        self.assert_fails_until_corrected("loupe", "hang")

    @in_own_process
    def test_a_server_that_stops_before_the_downloads_is_reported(self):
        self.started()
        self.recording.before_answer = self.server.stop
        self.assert_refused("loupe.*Cannot download", installs=["loupe"])
        self.recording.before_answer = None
        self.server.start()
        self.assertEqual(self.changes(self.apply, installs=["loupe"]), ({"loupe-45.0-1.x86_64"}, set()))

    @in_own_process
    def test_a_server_that_stops_during_a_download_is_reported(self):
        self.started()
        self.server.fault("/sandbox-http/gargantua-1.0-1.noarch.rpm", "end_after", 1 << 20)
        self.assert_refused("(gargantua|loupe).*Cannot download", installs=["gargantua", "loupe"])
        self.assertTrue(self.recording.of("downloadProgress"))
        self.server.restart()
        changed = self.changes(self.apply, installs=["gargantua", "loupe"])
        self.assertEqual(changed, ({"gargantua-1.0-1.noarch", "loupe-45.0-1.x86_64"}, set()))

    @in_own_process
    def test_the_second_mirror_is_used_without_a_report_if_the_first_mirror_fails(self):
        with open(self.repository_file("sandbox-http")) as stream:
            good = stream.read().split("baseurl=")[1].split("\n")[0]
        self.change_repository("sandbox-http", "baseurl=" + good, "baseurl=%s,%s" % (
            good, "file://" + self.sandbox.repository("sandbox-http")))
        self.started()
        self.server.fault(LOUPE, "status", 404)
        changed = self.changes(self.apply, installs=["loupe"])
        self.assertEqual(changed, ({"loupe-45.0-1.x86_64"}, set()))
        self.assertEqual([status for kind, name, whole, status in self.recording.of("downloadEnd")], [None])

    @in_own_process
    def test_cached_packages_are_not_downloaded_again(self):
        self.configure("keepcache=1")
        self.started()
        loupe = self.package(self.available, "loupe")
        self.assertFalse(self.verified(loupe))
        self.apply(installs=["loupe"])
        self.assertIn("loupe-45.0-1.x86_64.rpm", self.cached())
        self.assertTrue(self.verified(loupe))
        self.again()
        self.apply(removes=["loupe"])
        self.again()
        self.server.forget()
        self.apply(installs=["loupe", "astrolabe"])
        self.assertEqual(self.recording.of("downloadRemotePayloads"), [["astrolabe"]])
        self.assertEqual([path for path in self.server.paths() if path.endswith(".rpm")],
                         ["/sandbox-http/astrolabe-5.6-1.x86_64.rpm"])

    def verified(self, package):
        """The result of verifyLocalPkg(). FileNotFoundError and MiscError mean False, as in the program."""
        try:
            return self.yumio.verifyLocalPkg(package)
        except (FileNotFoundError, self.dnf.exceptions.MiscError):
            return False

    @in_own_process
    def test_a_damaged_package_in_the_cache_is_downloaded_again(self):
        self.configure("keepcache=1")
        self.started()
        self.apply(installs=["loupe"])
        self.again()
        self.apply(removes=["loupe"])
        self.again()
        loupe = self.package(self.available, "loupe")
        with open(loupe.localPkg(), "r+b") as stream:
            stream.write(b"damaged")
        self.assertFalse(self.verified(loupe))
        self.apply(installs=["loupe"])
        self.assertEqual(self.recording.of("downloadRemotePayloads"), [["loupe"]])
        self.assertIn("loupe-45.0-1.x86_64", self.sandbox.installed())

    @in_own_process
    def test_the_script_distinguishes_packages_in_a_local_directory_from_packages_on_a_server(self):
        self.started()
        self.assertTrue(self.yumio.isLocal(self.package(self.available, "corkboard")))
        self.assertFalse(self.yumio.isLocal(self.package(self.available, "loupe")))
        # The package list of a local repository may contain the URL of a server.
        self.index("sandbox-file", "--baseurl", "http://127.0.0.1:9/")
        self.sandbox.expire_metadata()
        self.again()
        self.assertFalse(self.yumio.isLocal(self.package(self.available, "corkboard")))

    @in_own_process
    def test_packages_of_a_local_repository_are_not_downloaded(self):
        self.started()
        self.assertTrue(self.verified(self.package(self.available, "corkboard")))
        self.assertFalse(self.verified(self.package(self.installed, "almanac")))
        self.apply(installs=["corkboard"])
        self.assertEqual(self.recording.of("downloadRemotePayloads"), [[]])
        self.assertEqual(self.recording.of("downloadStart"), [])
        self.assertIn("corkboard-0.7-1.noarch", self.sandbox.installed())

    @in_own_process
    def test_downloads_are_removed_after_a_success(self):
        self.started()
        self.apply(installs=["loupe"])
        self.assertEqual(self.cached(), [])
        self.assertTrue(os.path.exists(os.path.join(self.sandbox.repository("sandbox-file"),
                                                    "corkboard-0.7-1.noarch.rpm")))

    @in_own_process
    def test_downloads_are_kept_after_a_failure_until_the_next_success(self):
        self.started()
        self.assert_refused("palette.conf", installs=["inkwell-classic", "inkwell-modern"])
        self.assertEqual(self.cached(), ["inkwell-classic-1.0-1.noarch.rpm", "inkwell-modern-1.0-1.noarch.rpm"])
        self.recording.clear()
        self.apply(installs=["inkwell-modern"])
        self.assertEqual(self.recording.of("downloadRemotePayloads"), [[]])
        self.assertEqual(self.cached(), [])

    @in_own_process
    def test_a_transaction_removes_no_packages_from_a_local_repository(self):
        self.started()
        self.apply(installs=["corkboard", "loupe"])
        self.assertTrue(os.path.exists(os.path.join(self.sandbox.repository("sandbox-file"),
                                                    "corkboard-0.7-1.noarch.rpm")))
