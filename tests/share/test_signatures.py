# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of signatures of packages and metadata, and of their keys."""

import os
import re
import shutil

from scenario import ScenarioTest, in_own_process

import metadata

KEY_FILE = "/etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur"
TABLET = "wax-tablet-1.0-1.noarch"
CANDLE = "wax-candle-1.0-1.noarch"


class SignatureTest(ScenarioTest):
    def keys(self):
        return {name for name in self.sandbox.installed() if name.startswith("gpg-pubkey")}

    def questions(self):
        return self.recording.names().count("userconfirm")

    @in_own_process
    def test_an_accepted_key_is_imported_and_causes_no_second_question(self):
        self.started()
        self.apply(installs=["wax-tablet"], answers=[1, 1])
        self.assertIn(TABLET, self.sandbox.installed())
        self.assertEqual(len(self.keys()), 1)
        question = self.recording.printed()
        self.assertIn("Larkspur Signing Key <keys@larkspur.example>", question)
        self.assertIn(KEY_FILE, question)
        self.assertIn("\nPackage:\t%s\nRepository:\tsandbox-signed\n" % TABLET, question)
        self.assertRegex(question, "\nFingerprint:\t[0-9A-F]{4}( [0-9A-F]{4}){9,}\n")
        self.assertTrue(question.endswith("\n"))
        names = self.recording.order("rpmtransScriptout", "rpmtransProgress", "downloadProgress")
        self.assertEqual(names, [
            "listTransaction", "reportDownloadSize", "userconfirm", "downloadRemotePayloads", "downloadStart",
            "downloadEnd", "gpgsigcheck", "userconfirm", "rpmtransInit", "rpmtransDel", "rpmtransInit",
            "rpmtransDel", "postTransactionOutput"])
        self.again()
        self.apply(installs=["wax-candle"], answers=[1])
        self.assertIn(CANDLE, self.sandbox.installed())

    @in_own_process
    def test_captured_output_is_cleared_before_the_question_about_a_key(self):
        self.started()
        self.apply(installs=["wax-tablet"], answers=[1, 1])
        names = [name for name in self.recording.names() if name not in ("log", "errorlog")]
        last = len(names) - 1 - names[::-1].index("userconfirm")
        self.assertEqual(names[last - 2:last], ["gpgsigcheck", "stdoutWrite"])

    @in_own_process
    def test_several_packages_signed_with_the_same_key_cause_one_question(self):
        self.started()
        self.apply(installs=["wax-tablet", "wax-candle", "wax-polish"], answers=[1, 1])
        self.assertLessEqual({TABLET, CANDLE, "wax-polish-2.0-1.x86_64"}, self.sandbox.installed())

    @in_own_process
    def test_a_declined_key_stops_the_transaction_and_the_next_transaction_asks_about_the_key_again(self):
        self.started()
        self.assert_refused("key", installs=["wax-tablet", "astrolabe"], answers=[1, 0])
        self.assertEqual(self.questions(), 2)
        self.recording.clear()
        self.assert_refused("key", installs=["wax-tablet"], answers=[1, 0])
        self.assertEqual(self.questions(), 2)
        # While dnf downloads a key, the script switches the progress reports off. Afterwards they are on again.
        self.assertIsInstance(self.yumio.base.repos["sandbox-signed"]._md_pload.progress,
                              self.module("progress").DownloadProgress)
        self.apply(installs=["wax-tablet"], answers=[1, 1])
        self.assertIn(TABLET, self.sandbox.installed())

    @in_own_process
    def test_the_outcome_says_whether_keys_were_imported_before_the_user_stopped_the_transaction(self):
        self.load(stopWanted=lambda last: self.questions() == 2)
        self.yumio.lock()
        self.collect()
        self.assertEqual(self.keys(), set())
        self.assert_refused("key", installs=["wax-tablet", "wax-candle"], answers=[1, 0])
        self.assertFalse(self.yumio.outcome["keysImported"])
        self.recording.clear()
        before = self.sandbox.installed()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "^Stopped[.]"):
            self.apply(installs=["wax-tablet", "wax-candle"], answers=[1, 1])
        self.assertEqual(len(self.keys()), 1)
        self.assertEqual(self.sandbox.installed() - before, self.keys())
        self.assertFalse(self.yumio.systemChanged)
        self.assertTrue(self.yumio.outcome["keysImported"])
        # The next transaction needs no key.
        self.recording.clear()
        self.apply(installs=["wax-tablet"], answers=[1])
        self.assertFalse(self.yumio.outcome["keysImported"])

    @in_own_process
    def test_a_package_signed_with_an_unknown_key_is_refused(self):
        self.started()
        before = self.sandbox.installed()
        with self.assertRaisesRegex(self.dnf.exceptions.Error, "wax-forged"):
            self.apply(installs=["wax-forged"], answers=[1, 1])
        self.assertEqual(self.sandbox.installed() - before, self.keys())
        self.assertNotIn("rpmtransInit", self.recording.names())
        # dnf knows the repository's key now, so the only question is about the listing. But some versions of rpm give
        # the key a name with more than eight digits. dnf does not find such a key, so the question about the key
        # appears again.
        known = any(re.match("gpg-pubkey-[0-9a-f]{8}-", key) for key in self.keys())
        self.assert_refused("wax-forged", installs=["wax-forged"], answers=[1] if known else [1, 1])
        self.assertEqual(len(self.keys()), 1)

    @in_own_process
    def test_a_package_without_a_signature_is_refused(self):
        self.started()
        self.assert_refused("not signed", installs=["wax-blank", "astrolabe"], answers=[1])
        self.assertNotIn("rpmtransInit", self.recording.names())

    @in_own_process
    def test_a_package_that_was_changed_after_it_was_signed_is_refused(self):
        """The metadata contain the digest of the changed file, so only the signature of the package is wrong."""
        path = os.path.join(self.sandbox.repository("sandbox-signed"), TABLET + ".rpm")
        with open(path, "r+b") as stream:
            content = bytearray(stream.read())
            content[-20] ^= 0xff
            stream.seek(0)
            stream.write(content)
        self.index("sandbox-signed")
        self.started()
        self.assert_refused("wax-tablet", installs=["wax-tablet"], answers=[1, 1])

    @in_own_process
    def test_a_package_is_refused_if_its_repository_has_no_key(self):
        self.change_repository("sandbox-signed", "gpgkey=", "#gpgkey=")
        self.started()
        self.assert_refused("not installed", installs=["wax-tablet"], answers=[1])

    @in_own_process
    def test_a_key_file_that_is_missing_or_contains_no_key_is_reported(self):
        self.started()
        os.rename(self.sandbox.root + KEY_FILE, self.sandbox.root + KEY_FILE + ".away")
        # The message depends on the version of the library that reads the file.
        self.assert_refused("Could(n't| not) open file.*" + KEY_FILE, installs=["wax-tablet"], answers=[1])
        self.write(KEY_FILE, "no key at all\n")
        self.assert_refused("already installed but they are not correct", installs=["wax-tablet"], answers=[1])
        os.rename(self.sandbox.root + KEY_FILE + ".away", self.sandbox.root + KEY_FILE)
        self.apply(installs=["wax-tablet"], answers=[1, 1])
        self.assertIn(TABLET, self.sandbox.installed())

    @in_own_process
    def test_no_question_about_keys_is_asked_if_signatures_are_not_checked(self):
        self.change_repository("sandbox-signed", "gpgcheck=1", "gpgcheck=0")
        self.started()
        self.apply(installs=["wax-tablet", "wax-blank", "wax-forged"], answers=[1])
        self.assertLessEqual({TABLET, "wax-blank-1.0-1.noarch", "wax-forged-1.0-1.noarch"}, self.sandbox.installed())

    @in_own_process
    def test_the_user_is_asked_about_a_key_even_if_assumeyes_or_assumeno_is_set(self):
        self.configure("assumeyes=1")
        self.started()
        self.assert_refused("key", installs=["wax-tablet"], answers=[1, 0])
        self.configure("assumeyes=0", "assumeno=1")
        self.yumio.reset()
        self.collect()
        self.apply(installs=["wax-tablet"], answers=[1, 1])
        self.assertIn(TABLET, self.sandbox.installed())

    @in_own_process
    def test_signatures_are_checked_with_the_keys_of_the_managed_system(self):
        """Only the script itself sets the path of rpm's database: neither the home directory nor the managed root has
        a file that sets this path.
        """
        shutil.rmtree(self.sandbox.root + "/root")
        self.started()
        self.apply(installs=["wax-tablet"], answers=[1, 1])
        self.assertIn(TABLET, self.sandbox.installed())
        self.again()
        self.assert_refused("not signed", installs=["wax-blank"], answers=[1])
        self.assertFalse(os.path.exists(self.home + "/.rpmdb"))
        self.assertFalse(os.path.exists(self.sandbox.root + self.home))


class MetadataSignatureTest(ScenarioTest):
    def sign(self):
        key = metadata.sign(self.sandbox.repository("sandbox-http"), self.directory)
        with open(self.repository_file("sandbox-http"), "a") as stream:
            stream.write("repo_gpgcheck=1\ngpgkey=file://%s\n" % key)

    @in_own_process
    def test_the_user_is_asked_only_once_about_the_key_of_signed_metadata(self):
        self.sign()
        self.load()
        self.recording.answers = [0]
        with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "sandbox-http"):
            self.yumio.setupRepos()
        question = self.recording.printed()
        self.assertIn("Metadata Key <metadata@larkspur.example>", question)
        self.assertIn("\nMetadata of:\tsandbox-http\n", question)
        self.assertRegex(question, "\nFingerprint:\t[0-9A-F]{4}( [0-9A-F]{4}){9,}\n")
        self.recording.answers = [1]
        self.again()
        self.package(self.available, "astrolabe")
        self.yumio.cleanAll()
        self.again()
        self.assert_no_faults()

    @in_own_process
    def test_metadata_without_a_signature_are_refused(self):
        self.sign()
        os.unlink(os.path.join(self.sandbox.repository("sandbox-http"), "repodata", "repomd.xml.asc"))
        self.load()
        self.recording.answers = [1]
        with self.assertRaisesRegex(self.dnf.exceptions.RepoError, "sandbox-http"):
            self.yumio.setupRepos()
