# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of damaged repository metadata, and of damaged files about modules."""

import gzip
import os
import resource
import shutil
import time
import xml.parsers.expat

import metadata
from scenario import ScenarioTest, in_own_process

from vyresandbox import needs_groups

ROWAN = """---
document: modulemd
version: 2
data:
  name: rowan
  stream: "1"
  version: 1
  context: c0ffee42
  arch: x86_64
  summary: A tree
  description: A tree
  license:
    module: [MIT]
...
"""
NO_FAULTS_OF_MODULES = "Detection of Platform Module failed: No valid Platform ID detected"


def fault_of_metadata(path, element):
    """A stand-in for the program's function. Unlike the real function, it does not check the number of packages."""
    roots = []
    parser = xml.parsers.expat.ParserCreate()
    parser.StartElementHandler = lambda name, attributes: roots.append(name)
    try:
        with gzip.open(path) as stream:
            parser.ParseFile(stream)
    except (xml.parsers.expat.ExpatError, OSError, EOFError) as e:
        return "not parsed: %s" % e
    return "" if roots[0] == element else "it is %s" % roots[0]


class MetadataTest(ScenarioTest):
    def load(self):
        super(MetadataTest, self).load()
        self.module("program").faultOfMetadata = fault_of_metadata
        self.yumio.base.repos["sandbox-unreachable"].disable()

    def damage(self, kind, change, packed=False):
        metadata.alter(self.sandbox.repository("sandbox-file"), kind, change, packed)

    def begin(self):
        self.load()
        self.yumio.lock()

    def names(self, repository):
        return [package.name for package in self.available if package.reponame == repository]

    def remarks(self):
        """Returns the remarks, and clears them as the program does."""
        found = list(self.yumio.remarks)
        del self.yumio.remarks[:]
        return found

    def check_remark(self, kind):
        """Checks that packages are collected, and that one remark describes the damage."""
        self.begin()
        self.collect()
        self.assertIn("corkboard", self.names("sandbox-file"))
        remark, = self.remarks()
        self.assertRegex(remark, "(?s)^The %s metadata of the repository sandbox-file are damaged: .+\n"
                         "Searches and descriptions lack some file lists or change logs of its packages.$" % kind)
        self.assertEqual(self.recording.errors(), [])
        # In one run, the program shows the remark only once. But each collection logs it, because the metadata are
        # still damaged.
        self.yumio.reset()
        self.yumio.base.repos["sandbox-unreachable"].disable()
        self.collect()
        self.assertEqual(self.remarks(), [])
        self.assertEqual(self.recording.errors(), [remark])
        self.assert_no_faults()

    @in_own_process
    def test_truncated_file_lists_are_reported(self):
        self.damage("filelists", metadata.half)
        self.check_remark("filelists")

    @in_own_process
    def test_truncated_compressed_file_lists_are_reported(self):
        self.damage("filelists", metadata.half, packed=True)
        self.check_remark("filelists")

    @in_own_process
    def test_file_lists_with_wrong_contents_are_reported(self):
        self.damage("filelists", metadata.page)
        self.check_remark("filelists")

    @in_own_process
    def test_truncated_change_logs_are_reported(self):
        self.damage("other", metadata.half)
        self.check_remark("other")

    @in_own_process
    def test_undamaged_metadata_are_checked_only_once(self):
        self.configure("metadata_expire=never")  # on a busy machine, the sandbox's limit of one second is too short
        self.begin()
        asked = []
        self.module("program").faultOfMetadata = lambda path, element: asked.append(element) or ""
        self.collect()
        self.assertEqual(sorted(set(asked)), ["filelists", "metadata", "otherdata"])
        self.assertEqual(len(asked), 3 * 4)
        self.again()
        self.assertEqual(len(asked), 3 * 4)
        # After a download, only the downloaded metadata are checked.
        self.index("sandbox-file")
        self.yumio.cleanAll()
        self.again()
        self.assertEqual(len(asked), 6 * 4)
        self.assertEqual(self.remarks(), [])

    @in_own_process
    def test_a_package_list_that_is_newer_than_its_solv_cache_is_checked_only_once(self):
        self.configure("metadata_expire=never")  # on a busy machine, the sandbox's limit of one second is too short
        self.begin()
        self.collect()
        path = self.module("metadata").documentPath(self.yumio.base.repos["sandbox-file"], "primary")
        before = os.stat(path)
        time.sleep(0.01)  # the file system may store coarse times
        os.utime(path, ns=(before.st_atime_ns, before.st_mtime_ns))
        asked = []
        self.module("program").faultOfMetadata = lambda path, element: asked.append(element) or ""
        self.again()
        self.assertEqual(asked, ["metadata"])
        self.again()
        self.assertEqual(asked, ["metadata"])
        self.assertIn("corkboard", self.names("sandbox-file"))

    def check_refused(self, reason):
        """Checks that each attempt to read the repository is refused while the damage exists."""
        self.begin()
        for number in range(2):
            with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
                self.yumio.setupRepos()
            self.assertRegex(str(caught.exception), "(?s)^" + reason)
            self.yumio.reset()
            self.yumio.base.repos["sandbox-unreachable"].disable()
        # After the damaged repository is disabled, the other repositories can be read.
        self.yumio.disableRepo("sandbox-file")
        self.collect()
        self.assertIn("astrolabe", self.names("sandbox-http"))

    @in_own_process
    def test_truncated_package_lists_are_refused(self):
        self.damage("primary", metadata.half)
        self.check_refused("The primary metadata of the repository sandbox-file are damaged: not parsed: "
                           "no element found")

    @in_own_process
    def test_package_lists_with_wrong_contents_are_refused(self):
        self.damage("primary", metadata.page)
        self.check_refused("The primary metadata of the repository sandbox-file are damaged: it is html$")

    @in_own_process
    def test_a_repository_with_damaged_metadata_is_left_out_if_its_settings_allow_this(self):
        self.damage("primary", metadata.page)
        with open(self.repository_file("sandbox-file"), "a") as stream:
            stream.write("skip_if_unavailable=1\n")
        self.begin()
        self.collect()
        self.assertEqual(self.names("sandbox-file"), [])
        self.assertIn("astrolabe", self.names("sandbox-http"))
        self.assertEqual(self.recording.errors(), [
            "Error: The primary metadata of the repository sandbox-file are damaged: it is html",
            "Ignoring repositories: sandbox-file"])

    @in_own_process
    def test_packages_of_a_repository_with_damaged_metadata_are_not_listed(self):
        """Without the script's check, dnf would list the packages that precede the damaged part of the document."""
        with open(self.repository_file("sandbox-file"), "a") as stream:
            stream.write("skip_if_unavailable=1\n")
        self.begin()
        self.module("program").faultOfMetadata = lambda path, element: (
            "too few" if element == "metadata" and "/sandbox-file-" in path else "")
        for attempt in range(2):
            self.recording.clear()
            self.collect()
            self.assertEqual(self.names("sandbox-file"), [])
            self.assertIn("astrolabe", self.names("sandbox-http"))
            self.assertEqual(self.recording.errors(), [
                "Error: The primary metadata of the repository sandbox-file are damaged: too few",
                "Ignoring repositories: sandbox-file"])
            self.yumio.reset()
            self.yumio.base.repos["sandbox-unreachable"].disable()
        self.module("program").faultOfMetadata = lambda path, element: ""
        self.collect()
        self.assertIn("corkboard", self.names("sandbox-file"))

    def lists_too_few(self, path, element):
        return "too few" if element == "metadata" and "/sandbox-file-" in path else ""

    @in_own_process
    def test_the_user_can_go_on_without_a_repository_whose_package_list_is_damaged(self):
        self.begin()
        self.module("program").faultOfMetadata = self.lists_too_few
        asked = []
        self.module("program").goOnWithout = lambda *arguments: asked.append(arguments) or True
        used = []
        plugins = self.module("plugins").PlugIns
        original = plugins._caller
        plugins._caller = lambda of, method: used.append(method) or original(of, method)
        self.collect()
        self.assertEqual(asked, [("sandbox-file", "The primary metadata of the repository sandbox-file are damaged: "
                                  "too few", 0)])
        self.assertEqual(self.names("sandbox-file"), [])
        self.assertIn("astrolabe", self.names("sandbox-http"))
        self.assertEqual(used.count("sack"), 1)  # plug-ins use only the sack without the damaged packages

    @in_own_process
    def test_a_repository_with_a_damaged_package_list_in_the_cache_is_left_out_after_a_stop(self):
        self.begin()
        self.module("program").faultOfMetadata = self.lists_too_few
        self.module("program").goOnWithout = lambda *arguments: True
        self.yumio.setupRepos()
        self.yumio.setupCachedRepos()
        found = self.yumio.collectAll()
        self.assertEqual([each.name for each in found.available if each.reponame == "sandbox-file"], [])
        self.assertIn("astrolabe", [each.name for each in found.available if each.reponame == "sandbox-http"])

    @in_own_process
    def test_a_package_list_is_checked_again_if_the_first_check_had_no_effect(self):
        self.configure("metadata_expire=never")  # on a busy machine, the sandbox's limit of one second is too short
        self.begin()
        self.module("program").faultOfMetadata = self.lists_too_few
        for failure in (OSError, SystemError):
            original = self.dnf.Base._add_repo_to_sack

            def fail(base, repo):
                original(base, repo)
                if repo.id == "sandbox-file":
                    raise failure("interrupted")

            # dnf has written its cache of the damaged list, but the operation ends before the list is refused.
            self.dnf.Base._add_repo_to_sack = fail
            try:
                with self.assertRaises((failure, self.dnf.exceptions.RepoError)):
                    self.yumio.setupRepos()
            finally:
                self.dnf.Base._add_repo_to_sack = original
            self.assertTrue(os.path.exists(self.yumio.base._caches(self.yumio.base.repos["sandbox-file"])[-1]))
            with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
                self.yumio.setupRepos()
            self.assertIn("sandbox-file are damaged: too few", str(caught.exception))
        self.module("program").faultOfMetadata = lambda path, element: ""
        self.collect()
        self.assertIn("corkboard", self.names("sandbox-file"))
        self.assertEqual([name for name in os.listdir(self.yumio.base.conf.cachedir) if "unchecked" in name], [])

    @in_own_process
    def test_a_failing_check_of_a_package_list_ends_the_operation(self):
        self.begin()

        def fail(path, element):
            raise OSError("no memory for the check")

        self.module("program").faultOfMetadata = fail
        with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
            self.yumio.setupRepos()
        self.assertIn("no memory for the check", str(caught.exception))

    @in_own_process
    def test_a_package_list_is_checked_before_dnf_reads_it_if_the_check_cannot_be_noted(self):
        self.begin()
        self.module("program").faultOfMetadata = self.lists_too_few
        self.yumio.base._noteUnchecked = lambda repo: False
        with self.assertRaises(self.dnf.exceptions.RepoError):
            self.yumio.setupRepos()
        self.assertFalse(os.path.exists(self.yumio.base._caches(self.yumio.base.repos["sandbox-file"])[-1]))

    @in_own_process
    def test_several_repositories_with_damaged_metadata_are_left_out(self):
        for name in ("sandbox-file", "sandbox-http"):
            with open(self.repository_file(name), "a") as stream:
                stream.write("skip_if_unavailable=1\n")
        self.begin()
        self.module("program").faultOfMetadata = lambda path, element: (
            "too few" if element == "metadata" and ("/sandbox-file-" in path or "/sandbox-http-" in path) else "")
        filled = []
        original = self.dnf.Base.fill_sack
        self.dnf.Base.fill_sack = lambda *arguments: filled.append(1) or original(*arguments)
        self.collect()
        found = {package.reponame for package in self.available}
        self.assertIn("sandbox-signed", found)
        self.assertFalse(found & {"sandbox-file", "sandbox-http"})
        # Only one further sack is necessary.
        self.assertEqual(len(filled), 2)

    @in_own_process
    def test_metadata_with_an_unknown_compression_are_not_checked(self):
        self.load()
        asked = []
        self.module("program").faultOfMetadata = lambda path, element: asked.append(path) or "bad"
        path = os.path.join(self.directory, "document.zck")
        with open(path, "wb") as stream:
            stream.write(b"\0ZCK1" + bytes(100))
        self.assertEqual(self.module("metadata").metadataFault(path, "metadata"), "")
        self.assertEqual(asked, [])
        self.assertEqual(self.module("metadata").modulesFault(self.yumio.base, path), "")
        self.assertEqual(self.module("metadata").metadataFault(path + ".xml", "metadata"), "bad")

        class Repository(object):
            enablegroups = metadata = True
            id = "packed"

            class _repo(object):
                getCompsFn = staticmethod(lambda: path)
        self.module("groups").checkGroups(self.yumio.base, Repository)
        self.assertTrue(Repository.enablegroups)
        self.assertEqual(self.remarks(), [])

    # Groups

    @in_own_process
    def test_checking_large_compressed_groups_does_not_unpack_them_into_memory(self):
        self.load()
        path = os.path.join(self.directory, "comps.xml.gz")
        with gzip.open(path, "wb", 1) as stream:
            for _ in range(256):
                stream.write(bytes(1 << 20))

        class Repository(object):
            enablegroups = metadata = True

            class _repo(object):
                getCompsFn = staticmethod(lambda: path)
        resource.setrlimit(resource.RLIMIT_DATA, (self.data_size() + (128 << 20),) * 2)
        self.module("groups").checkGroups(self.yumio.base, Repository)
        self.assertTrue(Repository.enablegroups)

    @staticmethod
    def data_size():
        with open("/proc/self/status") as status:
            return next(int(line.split()[1]) << 10 for line in status if line.startswith("VmData:"))

    @needs_groups
    @in_own_process
    def test_groups_are_left_out_if_their_compressed_file_is_truncated(self):
        metadata.alter(self.sandbox.repository("sandbox-http"), "group", metadata.half, packed=True)
        self.begin()
        self.collect()
        remark, = self.remarks()
        self.assertRegex(remark, "^The group metadata of the repository sandbox-http are damaged: .+\nVYRE does "
                         "not list the groups of this repository.$")
        self.assertEqual(self.groups, {})
        self.assertIn("astrolabe", self.names("sandbox-http"))

    # Modules

    @in_own_process
    def test_a_repository_with_damaged_modules_metadata_is_refused(self):
        """If dnf read damaged modules metadata, the process would crash."""
        original = self.sandbox.repository("sandbox-file")
        shutil.copytree(original, original + ".away")
        for content in ("nonsense\n" * 100, "<html>\n<body>: no: [}</body></html>\n",
                        ROWAN + ROWAN.replace("...\n", "nonsense"), "\xff\xfe"):
            shutil.rmtree(original)
            shutil.copytree(original + ".away", original)
            metadata.add_modules(original, content, self.directory)
            if not hasattr(self, "yumio"):
                self.begin()
            else:
                self.yumio.cleanAll()
                self.yumio.reset()
                self.yumio.base.repos["sandbox-unreachable"].disable()
            # The second attempt reads the cache.
            for number in range(2):
                with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
                    self.yumio.setupRepos()
                self.assertRegex(str(caught.exception),
                                 "(?s)^The modules metadata of the repository sandbox-file are damaged: .", content)
                self.yumio.reset()
                self.yumio.base.repos["sandbox-unreachable"].disable()
            self.yumio.disableRepo("sandbox-file")
            self.collect()
            self.assertIn("astrolabe", self.names("sandbox-http"))
        self.assert_no_faults()

    @in_own_process
    def test_a_repository_with_damaged_modules_metadata_is_left_out_if_its_settings_allow_this(self):
        metadata.add_modules(self.sandbox.repository("sandbox-file"), "nonsense: [\n", self.directory)
        with open(self.repository_file("sandbox-file"), "a") as stream:
            stream.write("skip_if_unavailable=1\n")
        self.begin()
        asked = []
        self.module("program").goOnWithout = lambda *arguments: asked.append(arguments)
        self.collect()
        self.assertEqual(asked, [])
        self.assertEqual(self.names("sandbox-file"), [])
        self.assertIn("astrolabe", self.names("sandbox-http"))
        damage, ignoring = self.recording.errors()
        self.assertRegex(damage, "(?s)^Error: The modules metadata of the repository sandbox-file are damaged: .")
        self.assertEqual(ignoring, "Ignoring repositories: sandbox-file")
        self.assertEqual(self.yumio.skippedRepos, ["sandbox-file"])

    @in_own_process
    def test_module_metadata_that_are_too_large_when_unpacked_are_refused(self):
        self.load()
        path = os.path.join(self.directory, "modules.yaml.gz")
        with gzip.open(path, "wb", 1) as stream:
            stream.write(ROWAN.encode())
            for _ in range(64):
                stream.write(b"#" * ((1 << 20) - 1) + b"\n")
        self.assertEqual(self.module("metadata").modulesFault(self.yumio.base, path), "it is larger than 64 MB")

    @in_own_process
    def test_undamaged_module_metadata_are_accepted(self):
        metadata.add_modules(self.sandbox.repository("sandbox-file"), ROWAN, self.directory)
        self.begin()
        self.collect()
        self.assertIn("corkboard", self.names("sandbox-file"))
        self.assertEqual(self.remarks(), [])
        self.assertEqual(self.recording.errors(), [NO_FAULTS_OF_MODULES])

    @in_own_process
    def test_module_metadata_are_read_in_every_supported_compression(self):
        plain = os.path.join(self.directory, "document")
        with open(plain, "w") as stream:
            stream.write(ROWAN)
        import bz2
        import lzma
        for ending, module in ((".gz", gzip), (".bz2", bz2), (".xz", lzma)):
            with module.open(plain + ending, "wb") as stream:
                stream.write(ROWAN.encode())
        self.load()
        for ending in ("", ".gz", ".bz2", ".xz"):
            self.assertEqual(self.module("metadata").modulesFault(self.yumio.base, plain + ending), "")
            if ending:
                with open(plain + ending, "r+b") as stream:
                    stream.truncate(20)
                self.assertNotEqual(self.module("metadata").modulesFault(self.yumio.base, plain + ending), "")

    def check_file(self, path, content):
        path = self.write(path, content)
        self.begin()
        with self.assertRaises(self.dnf.exceptions.RepoError) as caught:
            self.yumio.setupRepos()
        self.assertRegex(str(caught.exception), "^The file %s is damaged: ." % path)
        os.unlink(path)
        self.again()
        self.assertIn("corkboard", self.names("sandbox-file"))

    @in_own_process
    def test_damaged_files_with_module_defaults_are_refused(self):
        self.check_file("/etc/dnf/modules.defaults.d/rowan.yaml", "nonsense: [\n")

    @in_own_process
    def test_a_damaged_state_file_of_a_module_is_refused(self):
        self.check_file("/etc/dnf/modules.d/rowan.module", "nonsense\n")
