# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of file systems without free space."""

import os

from scenario import ScenarioTest, in_own_process

PLENTY = 100 << 10  # in kilobytes
GARGANTUA = "gargantua-1.0-1.noarch"


class SpaceTest(ScenarioTest):
    def enter(self):
        self.isolate()
        super(SpaceTest, self).enter()

    @in_own_process
    def test_the_repository_error_states_the_free_space_if_metadata_do_not_fit_on_the_disk(self):
        self.mount_small("/var/cache", 40)
        self.load()
        self.yumio.lock()
        for size in (0, 100):
            self.resize("/var/cache", size)
            with self.assertRaisesRegex(self.dnf.exceptions.RepoError,
                                        r"(?s)\nOnly \d+ kB are free in %s/var/cache/yum$" % self.sandbox.root):
                self.yumio.setupRepos()
            self.yumio.reset()
        self.resize("/var/cache", PLENTY)
        self.yumio.reset()
        self.collect()
        self.package(self.available, "astrolabe")
        self.package(self.installed, "almanac")
        self.assert_no_faults()

    @in_own_process
    def test_a_download_that_does_not_fit_on_the_disk_is_reported_and_changes_nothing(self):
        self.mount_small("/var/cache", PLENTY)
        self.started()
        self.resize("/var/cache", 300)
        self.assert_refused(r"(?s)gargantua.*\nOnly \d+ kB are free in .*/var/cache/yum$",
                            installs=["gargantua"])
        self.assertNotIn("rpmtransInit", self.recording.names())
        self.resize("/var/cache", PLENTY)
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))

    @in_own_process
    def test_messages_about_other_failures_do_not_mention_free_space(self):
        self.started()
        self.server.fault("/sandbox-http/loupe-45.0-1.x86_64.rpm", "status", 404)
        with self.assertRaises(self.dnf.exceptions.Error) as caught:
            self.apply(installs=["loupe"])
        self.assertNotIn("kB are free", str(caught.exception))
        self.server.stop()
        self.yumio.cleanAll()
        self.yumio.reset()
        with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
            self.yumio.setupRepos()
        self.assertNotIn("kB are free", str(caught.exception))

    @in_own_process
    def test_package_files_that_do_not_fit_on_the_disk_are_reported_before_anything_changes(self):
        self.mount_small("/usr/share", PLENTY)
        self.started()
        self.resize("/usr/share", 8)
        self.assert_refused(r"needed on the /usr/share filesystem", installs=["gargantua"])
        self.assertEqual(self.recording.of("rpmtransInit"), [True])
        self.resize("/usr/share", PLENTY)
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))

    @in_own_process
    def test_a_removal_that_the_full_package_database_does_not_record_is_reported(self):
        self.mount_small("/var/lib/rpm", PLENTY)
        self.started()
        self.resize("/var/lib/rpm", 0)
        self.assert_refused("^The package database does not record these changes:\nbirch-log-3.0-1.x86_64\n"
                            "Only 0 kB are free in %s/var/lib/rpm$" % self.sandbox.root, removes=["birch-log"])
        self.resize("/var/lib/rpm", PLENTY)
        self.again()
        self.assertEqual(self.changes(self.apply, removes=["birch-log"]), (set(), {"birch-log-3.0-1.x86_64"}))

    @in_own_process
    def test_nothing_is_changed_if_the_history_has_no_space_before_the_transaction(self):
        self.mount_small("/var/lib/dnf", PLENTY)
        self.started()
        self.resize("/var/lib/dnf", 0)
        self.assert_refused("disk is full", installs=["gargantua"])
        self.assertEqual(self.recording.names().count("rpmtransInit"), self.recording.names().count("rpmtransDel"))
        self.resize("/var/lib/dnf", PLENTY)
        self.again()
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))

    def at_first_progress(self, act):
        """When rpm first reports progress, a helper process calls act(). The test process cannot call act() itself,
        because it sees only the managed root at that time.
        """
        waked, wake = os.pipe()
        done, finished = os.pipe()
        if os.fork() == 0:
            os.close(wake)
            os.close(done)
            if os.read(waked, 1):
                act()
                os.write(finished, b"x")
            os._exit(0)
        os.close(waked)
        os.close(finished)
        module = self.recording.module
        progress = module.rpmtransProgress

        def first_progress(*arguments):
            module.rpmtransProgress = progress
            os.write(wake, b"x")
            self.assertEqual(os.read(done, 1), b"x")
            return progress(*arguments)
        module.rpmtransProgress = first_progress

    @in_own_process
    def test_a_full_history_disk_is_reported_after_the_packages_were_changed(self):
        self.mount_small("/var/lib/dnf", PLENTY)
        self.started()
        self.at_first_progress(lambda: self.resize("/var/lib/dnf", 0))
        changed = self.changes(self.apply, installs=["chatterbox"], removes=["almanac"])
        self.assertEqual(changed, ({"chatterbox-1.0-1.noarch"}, {"almanac-1.9-1.noarch"}))
        self.assertTrue(self.yumio.systemChanged)
        remark, = self.yumio.remarks
        self.assertRegex(remark, r"(?s)^The packages were changed, but VYRE could not write the transaction "
                         r"history:\n.*database or disk is full\nOnly 0 kB are free in %s/var/lib/dnf$" %
                         self.sandbox.root)
        # The history lacks only the end of the transaction: a later run reports this, but no interrupted transaction.
        self.resize("/var/lib/dnf", PLENTY)
        self.yumio.unlock()
        self.load()
        self.yumio.lock()
        self.collect()
        errors = "\n".join(self.recording.errors())
        self.assertIn("The history does not record the end of the last transaction, begun on ", errors)
        self.assertIn("\nAll its packages are in the intended state.", errors)
        self.assertNotIn("The last transaction, begun on", errors)
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))
        self.assertEqual(self.yumio.remarks, [])
        self.yumio.reset()
        self.recording.clear()
        self.collect()
        self.assertNotIn("The transaction history", "\n".join(self.recording.errors()))

    @in_own_process
    def test_a_question_appears_if_the_disk_has_no_space_for_package_scripts(self):
        self.mount_small("/var/tmp", PLENTY)
        self.started()
        self.resize("/var/tmp", 0)
        self.assert_refused("^The disk has too little space for package scripts. Nothing was changed.$",
                            installs=["chatterbox"], answers=[1, 0])
        self.assertRegex(self.recording.printed(), "(?s)^The disk has too little space for package scripts. They "
                         "may not run.\nOnly [0-9]+ kB are free in %s/var/tmp\nApply anyway\\?\n$" %
                         self.sandbox.root)
        self.assertNotIn("rpmtransInit", self.recording.names())
        # The almanac package has no scripts, so a lack of space for scripts causes no remark.
        self.assertEqual(self.changes(self.apply, removes=["almanac"], answers=[1, 1]),
                         (set(), {"almanac-1.9-1.noarch"}))
        self.assertEqual(self.yumio.remarks, [])

    @in_own_process
    def test_packages_whose_scripts_could_not_be_written_to_the_full_disk_are_reported(self):
        self.mount_small("/var/tmp", PLENTY)
        self.started()
        self.resize("/var/tmp", 4)
        self.apply(installs=["limpgate", "gargantua"], answers=[1, 1])
        remark, = self.yumio.remarks
        self.assertRegex(remark, "(?s)^The disk was full, so the scripts of these packages may not have run:\n"
                         "limpgate-1.0-1.noarch\nOnly [0-9]+ kB are free in %s/var/tmp$" % self.sandbox.root)
        # If the disk has enough space, the script of the same package runs.
        self.resize("/var/tmp", PLENTY)
        self.again()
        self.apply(removes=["limpgate"])
        self.assertEqual(self.yumio.remarks, [])

    @in_own_process
    def test_a_lock_directory_on_a_full_disk_causes_a_lock_error(self):
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
    def test_transactions_succeed_even_if_the_disk_has_no_space_for_log_files(self):
        self.mount_small("/var/log", 64)
        self.fill("/var/log")
        self.started()
        self.assertEqual(self.changes(self.apply, installs=["gargantua"]), ({GARGANTUA}, set()))
