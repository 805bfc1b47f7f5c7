#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of transactions in the sandbox, and of the signatures of its packages."""

import os
import subprocess
import time
import unittest

import dnf
import dnf.exceptions

import sandboxtest
from sandboxtest import SandboxTest, setUpModule, tearDownModule  # noqa: F401
from vyresandbox import needs_groups


class ResolveTest(SandboxTest):
    """Transactions that dnf resolves or refuses."""

    def resolve_install(self, *names):
        base = self.base(self.served())
        for name in names:
            base.install(name)
        base.resolve()
        return {str(package) for package in base.transaction.install_set}

    def assert_unresolvable(self, *names):
        with self.assertRaises(dnf.exceptions.DepsolveError):
            self.resolve_install(*names)

    def test_dependencies_of_all_kinds_are_installed(self):
        self.assertEqual(self.resolve_install("orchard"), {
            "orchard-3.0-1.x86_64", "libbough-1.1-1.x86_64", "libtwig-1.0-1.x86_64", "orchard-lang-3.0-1.noarch",
            "orchard-plugins-3.0-1.noarch", "orchard-thumbnails-3.0-1.noarch"})

    def test_a_suite_installs_its_members(self):
        self.assertEqual(self.resolve_install("vyre-office-suite"), {
            "vyre-office-suite-1.0-1.noarch", "ledger-calc-2.0-1.x86_64", "scribe-writer-2.0-1.x86_64",
            "lectern-slides-2.0-1.x86_64"})

    def test_a_package_with_a_missing_dependency_is_refused(self):
        self.assert_unresolvable("moonbridge")

    def test_conflicting_packages_are_refused(self):
        self.assert_unresolvable("tern-mta", "gull-mta")
        self.assert_unresolvable("sandstone")
        self.assertEqual(self.resolve_install("tern-mta"), {"tern-mta-1.0-1.noarch"})

    def test_a_dependency_is_removed_with_the_last_package_that_needs_it(self):
        base = self.base(self.served())
        base.remove("trellis-editor")
        base.resolve(allow_erasing=True)
        self.assertEqual(self.transaction(base), {
            ("Removed", "trellis-editor-1.2-1.x86_64"), ("Removed", "libtrellis-1.2-1.x86_64")})

    def test_an_update_of_all_packages_leaves_out_an_impossible_update(self):
        base = self.base(self.served())
        base.upgrade_all()
        base.resolve()
        done = self.transaction(base)
        self.assertIn(("Obsoleted", "oldpost-1.8-1.x86_64"), done)
        self.assertIn(("Install", "kernel-6.1.31-1.x86_64"), done)
        self.assertIn(("Install", "nettle-scan-7.9-1.x86_64"), done)
        self.assertNotIn("tidewatch-2.0-1.noarch", {name for _, name in done})

    @needs_groups
    def test_a_conditional_member_is_installed_only_if_the_package_in_its_condition_is_installed(self):
        base = self.base(self.served(), groups=True)
        base.group_install("office", ("mandatory", "default", "conditional"))
        base.resolve()
        names = {package.name for package in base.transaction.install_set}
        self.assertEqual(names, {"scribe-writer", "ledger-calc", "scribe-lexicon"})


class TransactionTest(SandboxTest):
    """Transactions that dnf or rpm runs."""

    def test_dnf_updates_everything(self):
        sandbox = self.served()
        base = self.base(sandbox)
        base.upgrade_all()
        base.resolve()
        self.apply(base)
        installed = sandbox.installed()
        self.assertLessEqual({
            "kernel-6.1.20-1.x86_64", "kernel-6.1.25-1.x86_64", "kernel-6.1.31-1.x86_64",
            "quillbase-2:1.0-1.x86_64", "newpost-2.0-1.x86_64", "libcairn-2.2-1.i686", "tidewatch-1.0-1.noarch"},
            installed)
        self.assertNotIn("quillbase-1:2.4-1.x86_64", installed)

    def test_a_file_conflict_makes_the_transaction_fail(self):
        sandbox = self.served()
        for names, path in (
                (("inkwell-classic", "inkwell-modern"), "/usr/share/inkwell/palette.conf"),
                (("vanity-shell",), "/bin/sh")):
            base = self.base(sandbox)
            for name in names:
                base.install(name)
            base.resolve()
            with self.assertRaises(dnf.exceptions.Error) as caught:
                self.apply(base)
            self.assertIn(path, str(caught.exception))
            self.assertFalse([name for name in sandbox.installed() if name.startswith(names)])

    def install(self, sandbox, name, *options):
        return self.rpm(sandbox, "-i", *(options + (self.file(sandbox, "sandbox-http", name),)))

    def test_scriptlets_print_on_both_streams(self):
        sandbox = self.copied()
        installing = self.install(sandbox, "chatterbox-1.0-1.noarch.rpm")
        erasing = self.rpm(sandbox, "-e", "chatterbox")
        for outcome, sections in ((installing, ("pre", "post")), (erasing, ("preun", "postun"))):
            self.assertEqual(outcome.status, 0)
            self.assertEqual(outcome.output.splitlines(), [
                "chatterbox: %s to standard output" % section for section in sections])
            self.assertEqual(outcome.errors.splitlines(), [
                "chatterbox: %s to standard error" % section for section in sections])

    def test_an_update_runs_the_scriptlets_of_both_versions(self):
        sandbox = self.copied()
        outcome = self.rpm(sandbox, "-U", self.file(sandbox, "sandbox-updates", "parrot-1.1-1.noarch.rpm"))
        self.assertEqual(outcome.output.splitlines(), [
            "parrot-%s to standard output" % part for part in ("1.1: pre", "1.1: post", "1.0: preun", "1.0: postun")])

    def test_failing_pre_and_preun_scriptlets_prevent_the_change(self):
        sandbox = self.copied()
        outcome = self.install(sandbox, "brokenlatch-1.0-1.noarch.rpm")
        self.assertNotEqual(outcome.status, 0)
        self.assertNotIn("brokenlatch-1.0-1.noarch", sandbox.installed())
        self.assertIn("exit status 1", outcome.errors)
        outcome = self.install(sandbox, "limpgate-1.0-1.noarch.rpm")
        self.assertIn("limpgate-1.0-1.noarch", sandbox.installed())
        self.assertIn("exit status 3", outcome.errors)
        outcome = self.rpm(sandbox, "-e", "stickyburr")
        self.assertNotEqual(outcome.status, 0)
        self.assertIn("stickyburr-1.0-1.noarch", sandbox.installed())

    def test_a_scriptlet_prints_300000_bytes_to_each_stream(self):
        outcome = self.install(self.copied(), "loudhailer-1.0-1.noarch.rpm")
        self.assertEqual((len(outcome.output), len(outcome.errors)), (300000, 300000))
        self.assertTrue(outcome.output.startswith("loudhailer: stdout line 00001 of 06000 "))
        self.assertEqual(len(set(outcome.errors.splitlines())), 6000)

    def test_a_scriptlet_prints_text_without_a_final_line_feed(self):
        sandbox = self.copied()
        outcome = self.install(sandbox, "halfline-1.0-1.noarch.rpm")
        self.assertEqual(outcome.output, "halfline: first line\nhalfline: no line feed after this")
        self.assertEqual(self.rpm(sandbox, "-e", "halfline").errors, "halfline: nor after this")

    def test_a_slow_scriptlet_prints_its_steps(self):
        outcome = self.install(self.copied(), "slowpoke-1.0-1.noarch.rpm")
        self.assertEqual(outcome.output, "slowpoke: step 1\nslowpoke: step 2\nslowpoke: step 3\n")

    def test_scriptlets_wait_for_the_removal_of_a_file(self):
        sandbox = self.copied()
        outcome = self.rpm(sandbox, "-U", self.file(sandbox, "sandbox-updates", "doorkeeper-1.1-1.noarch.rpm"))
        self.assertEqual(outcome.output, "doorkeeper: begin\ndoorkeeper: end\ndoorkeeper-1.0: gone\n")
        for name in ("nightwatch", "glutton"):
            path = os.path.join(sandbox.root, "tmp", name)
            self.assertIn("%s: begin\n" % name, self.install(sandbox, name + "-1.0-1.noarch.rpm").output)
            self.rpm(sandbox, "-e", name)
            open(path, "w").close()
            package = self.file(sandbox, "sandbox-http", name + "-1.0-1.noarch.rpm")
            with subprocess.Popen(["rpm", "--root", sandbox.root, "--define", "_dbpath /var/lib/rpm", "-i", package],
                                  stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as installing:
                while not os.path.exists(path + ".waiting"):
                    time.sleep(0.01)
                if name == "nightwatch":
                    self.assertEqual(installing.wait(), 0)
                    self.assertIn("nightwatch-1.0-1.noarch", sandbox.installed())
                else:
                    self.assertIsNone(installing.poll())
                os.unlink(path)
                self.assertEqual(installing.wait(), 0)
            while os.path.exists(path + ".waiting"):
                time.sleep(0.01)

    def test_a_package_can_be_relocated(self):
        sandbox = self.copied()
        self.assertEqual(self.rpm(sandbox, "-e", "gallivant").status, 0)
        outcome = self.install(sandbox, "gallivant-1.0-1.noarch.rpm", "--prefix", "/usr/elsewhere")
        self.assertEqual(outcome.status, 0, outcome.errors)
        self.assertTrue(os.path.exists(os.path.join(sandbox.root, "usr/elsewhere/bin/gallivant")))

    def test_installed_programs_run_in_the_root(self):
        done = subprocess.run(
            ["chroot", sandboxtest.original.root, "/usr/bin/abacus-cli"], stdout=subprocess.PIPE, check=True)
        self.assertEqual(done.stdout, b"abacus-cli 3.2.1\n")


class SignatureTest(SandboxTest):
    def downloaded(self, base, names):
        packages = {name: next(iter(base.sack.query().available().filter(name=name))) for name in names}
        base.download_packages(list(packages.values()))
        return packages

    def test_no_key_is_imported(self):
        self.assertNotEqual(self.rpm(sandboxtest.original, "-q", "gpg-pubkey").status, 0)

    def test_dnf_asks_for_the_key_and_then_accepts_only_packages_that_the_key_signed(self):
        sandbox = self.served()
        names = ("wax-tablet", "wax-candle", "wax-polish", "wax-forged", "wax-blank", "abacus-cli")
        base = self.base(sandbox)
        packages = self.downloaded(base, names)
        verdicts = {name: base.package_signature_check(package) for name, package in packages.items()}
        self.assertEqual({name: verdict[0] for name, verdict in verdicts.items()}, {
            "wax-tablet": 1, "wax-candle": 1, "wax-polish": 1, "wax-forged": 1, "wax-blank": 2, "abacus-cli": 0})
        self.assertIn("is not signed", verdicts["wax-blank"][1])
        asked = []
        with self.assertRaises(dnf.exceptions.Error):
            base.package_import_key(packages["wax-tablet"], lambda *key: asked.append(key) or False)
        self.assertEqual(len(asked), 1)
        self.assertEqual(base.package_signature_check(packages["wax-tablet"])[0], 1)

        # A dnf base asks only once for the keys of a repository.
        base = self.base(sandbox)
        packages = self.downloaded(base, names)
        base.package_import_key(packages["wax-tablet"], lambda *key: True)
        self.assertEqual(len([name for name in sandbox.installed() if name.startswith("gpg-pubkey-")]), 1)
        accepted = {name for name, package in packages.items() if base.package_signature_check(package)[0] == 0}
        self.assertEqual(accepted, {"wax-tablet", "wax-candle", "wax-polish", "abacus-cli"})
        with self.assertRaises(dnf.exceptions.Error):
            base.package_import_key(packages["wax-forged"], lambda *key: True)


if __name__ == "__main__":
    unittest.main()
