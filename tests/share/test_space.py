"""File systems without space left."""

import os

from scenario import ScenarioTest, in_own_process

PLENTY = 100 << 10  # kilobytes
GARGANTUA = "gargantua-1.0-1.noarch"


class SpaceTest(ScenarioTest):
    def enter(self):
        self.isolate()
        super(SpaceTest, self).enter()

    @in_own_process
    def test_no_space_for_metadata_is_a_repository_error_that_tells_it(self):
        self.mount_small("/var/cache", 40)
        self.load()
        self.yumio.lock()
        for size in (0, 100):
            self.resize("/var/cache", size)
            with self.assertRaisesRegex(self.dnf.exceptions.RepoError,
                                        r"(?s)\nThere are only \d+ kB left for %s/var/cache/yum$" % self.sandbox.root):
                self.yumio.setupRepos()
            self.yumio.reset()
        self.resize("/var/cache", PLENTY)
        self.yumio.reset()
        self.collect()
        self.package(self.available, "astrolabe")
        self.package(self.installed, "almanac")
        self.assert_no_faults()

    @in_own_process
    def test_no_space_for_a_download_is_told_and_changes_nothing(self):
        self.mount_small("/var/cache", PLENTY)
        self.started()
        self.resize("/var/cache", 300)
        self.assert_refused(r"(?s)gargantua.*\nThere are only \d+ kB left for .*/var/cache/yum$",
                            installs=["gargantua"])
        self.assertNotIn("rpmtransInit", self.recording.names())
        self.resize("/var/cache", PLENTY)
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))

    @in_own_process
    def test_other_failures_do_not_speak_of_space(self):
        self.started()
        self.server.fault("/sandbox-http/loupe-45.0-1.x86_64.rpm", "status", 404)
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.apply(installs=["loupe"])
        self.assertNotIn("left for", str(caught.exception))
        self.server.stop()
        self.yumio.cleanAll()
        self.yumio.reset()
        with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
            self.yumio.setupRepos()
        self.assertNotIn("left for", str(caught.exception))

    @in_own_process
    def test_no_space_for_the_files_of_a_package_is_found_before_anything_changes(self):
        self.mount_small("/usr/share", PLENTY)
        self.started()
        self.resize("/usr/share", 8)
        self.assert_refused(r"needed on the /usr/share filesystem", installs=["gargantua"])
        self.assertEqual(self.recording.of("rpmtransInit"), [True])
        self.resize("/usr/share", PLENTY)
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))

    @in_own_process
    def test_a_removal_that_the_database_does_not_have_is_a_failure(self):
        self.mount_small("/var/lib/rpm", PLENTY)
        self.started()
        self.resize("/var/lib/rpm", 0)
        self.assert_refused("^The database of packages does not have what was done to:\nbirch-log-3.0-1.x86_64\n"
                            "There are only 0 kB left for %s/var/lib/rpm$" % self.sandbox.root, removes=["birch-log"])
        self.resize("/var/lib/rpm", PLENTY)
        self.again()
        self.assertEqual(self.changes(self.apply, removes=["birch-log"]), (set(), {"birch-log-3.0-1.x86_64"}))

    @in_own_process
    def test_no_space_for_the_history_changes_nothing(self):
        self.mount_small("/var/lib/dnf", PLENTY)
        self.started()
        self.resize("/var/lib/dnf", 0)
        self.assert_refused("disk is full", installs=["gargantua"])
        self.assertEqual(self.recording.names().count("rpmtransInit"), self.recording.names().count("rpmtransDel"))
        self.resize("/var/lib/dnf", PLENTY)
        self.again()
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))

    @in_own_process
    def test_no_space_for_the_lock_is_a_lock_error(self):
        self.mount_small("/var/lib/dnf", PLENTY)
        self.load()
        self.fill("/var/lib/dnf")
        with self.assertRaisesRegex(self.dnf.exceptions.LockError, "No space left on device"):
            self.yumio.lock()
        os.unlink(self.sandbox.root + "/var/lib/dnf/filling")
        self.yumio.lock()
        self.yumio.unlock()

    def fill(self, path):
        self.resize(path, 64)
        with open(self.sandbox.root + path + "/filling", "wb", buffering=0) as stream:
            try:
                while True:
                    stream.write(b"x" * 4096)
            except OSError:
                pass

    @in_own_process
    def test_no_space_for_log_files_disturbs_nothing(self):
        self.mount_small("/var/log", 64)
        self.fill("/var/log")
        self.started()
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))
