# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the four ways to clean the cache."""

import os
import re

from scenario import ScenarioTest, in_own_process

# For each kind of file in the cache, the pattern of its paths.
KINDS = {
    "packages": r"/packages/[^/]+\.rpm$",
    "solver": r"\.solvx?$",
    "metadata": r"-[0-9a-f]{16}/(repodata/.+|metalink.xml|mirrorlist|.*cachecookie|gen/groups\.xml)$",
}


class CleanTest(ScenarioTest):
    def files(self):
        """The files in the cache by their kind; files of no known kind are "other"."""
        found = {"packages": set(), "solver": set(), "metadata": set(), "other": set()}
        cache = self.sandbox.root + "/var/cache/yum"
        for directory, _, names in os.walk(cache):
            for name in names:
                path = os.path.join(directory, name)[len(cache):]
                kind = next((kind for kind, pattern in KINDS.items() if re.search(pattern, path)), "other")
                found[kind].add(path)
        return found

    def filled(self):
        """Fills the cache with files of each kind, and with files that dnf does not know. Returns all files."""
        self.configure("keepcache=1")
        self.started()
        self.apply(installs=["loupe"])
        self.package(self.available, "tagsoup").changelogs
        for place in ("notes.txt", "packages.rpm", "sandbox-http-0123456789abcdef.keep/x.rpm"):
            self.write("/var/cache/yum/" + place, "mine")
        files = self.files()
        for kind in KINDS:
            self.assertTrue(files[kind], kind)
        self.assertEqual(len(files["other"]), 3 + len([
            name for name in files["other"] if re.search(r"json$|lock", name)]), files["other"])
        return files

    def assert_cleaned(self, method, *kinds):
        before = self.filled()
        getattr(self.yumio, method)()
        after = self.files()
        for kind in before:
            self.assertEqual(after[kind], set() if kind in kinds else before[kind], kind)
        # The next collection downloads or makes the removed files again.
        self.yumio.reset()
        self.collect()
        self.package(self.available, "astrolabe")
        self.assertTrue(self.package(self.available, "tagsoup").changelogs)
        self.assert_no_faults()

    @in_own_process
    def test_cleaning_the_cached_packages_removes_only_packages(self):
        self.assert_cleaned("cleanPackages", "packages")

    @in_own_process
    def test_cleaning_metadata_removes_metadata_and_database_caches(self):
        self.assert_cleaned("cleanMetadata", "metadata", "solver")

    @in_own_process
    def test_cleaning_database_caches_removes_only_database_caches(self):
        self.assert_cleaned("cleanDbcache", "solver")

    @in_own_process
    def test_cleaning_everything_removes_all_kinds_of_files(self):
        self.assert_cleaned("cleanAll", "packages", "metadata", "solver")

    @in_own_process
    def test_an_empty_cache_can_be_cleaned(self):
        self.load()
        for method in ("cleanDbcache", "cleanPackages", "cleanMetadata", "cleanAll"):
            self.assertTrue(getattr(self.yumio, method)())

    @in_own_process
    def test_cleaning_keeps_the_packages_of_a_local_repository(self):
        self.started()
        before = sorted(os.listdir(self.sandbox.repository("sandbox-file")))
        self.yumio.cleanAll()
        self.assertEqual(sorted(os.listdir(self.sandbox.repository("sandbox-file"))), before)

    @in_own_process
    def test_packages_can_be_installed_after_everything_was_cleaned(self):
        self.started()
        self.yumio.cleanAll()
        changed = self.changes(self.apply, installs=["loupe"])
        self.assertEqual(changed, ({"loupe-45.0-1.x86_64"}, set()))

    @in_own_process
    def test_nothing_is_cleaned_while_another_process_changes_packages(self):
        # The other process may be about to install packages from the cache.
        before = self.filled()
        self.write("/var/lib/dnf/rpmdb_lock.pid", str(os.getppid()))
        for method in ("cleanDbcache", "cleanPackages", "cleanMetadata", "cleanAll"):
            with self.assertRaisesRegex(self.dnf.exceptions.LockError, "already locked by %d" % os.getppid()):
                getattr(self.yumio, method)()
        self.assertEqual(self.files(), before)
        os.unlink(self.sandbox.root + "/var/lib/dnf/rpmdb_lock.pid")
        self.yumio.lock()
        self.yumio.cleanAll()
        # Cleaning has not released VYRE's own lock.
        self.assertTrue(os.path.exists(self.sandbox.root + "/var/lib/dnf/rpmdb_lock.pid"))
        self.assertEqual(self.files()["packages"], set())
