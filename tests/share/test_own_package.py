# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests that the script imports its own package, leaves no compiled files, and can run again in the same interpreter.
"""

import ast
import glob
import os
import shutil
import sys
import unittest

from scenario import SCRIPT, ScenarioTest, in_own_process


class OwnPackageTest(ScenarioTest):
    def copy(self):
        """Copies the script and its package; returns the path of the copied script."""
        directory = os.path.join(self.directory, "python")
        shutil.copytree(os.path.dirname(SCRIPT), directory, ignore=shutil.ignore_patterns("__pycache__"))
        return os.path.join(directory, "YumIO.py")

    def change(self, script, module, line):
        with open(os.path.join(os.path.dirname(script), "vyre", module + ".py"), "a") as stream:
            stream.write(line + "\n")

    def files(self, script):
        return {os.path.join(directory, name) for directory, _, names in os.walk(os.path.dirname(script))
                for name in names}

    @in_own_process
    def test_modules_are_imported_from_the_directory_of_the_script(self):
        elsewhere = os.path.join(self.directory, "elsewhere")
        for name in ("__init__", "paths", "program"):
            os.makedirs(os.path.join(elsewhere, "vyre"), exist_ok=True)
            with open(os.path.join(elsewhere, "vyre", name + ".py"), "w") as stream:
                stream.write("raise ValueError('from elsewhere')\n")
        os.chdir(elsewhere)
        sys.path[:0] = ["", elsewhere]
        self.load()
        modules = [module for name, module in sys.modules.items() if name.partition(".")[0] == "vyre"]
        self.assertGreater(len(modules), 2)
        self.assertEqual({os.path.dirname(module.__file__) for module in modules},
                         {os.path.join(os.path.dirname(SCRIPT), "vyre")})

    @in_own_process
    def test_another_package_named_vyre_is_not_used_even_if_it_is_already_imported(self):
        elsewhere = os.path.join(self.directory, "elsewhere")
        os.makedirs(os.path.join(elsewhere, "vyre"))
        for name in ("__init__", "paths"):
            with open(os.path.join(elsewhere, "vyre", name + ".py"), "w"):
                pass
        sys.path.insert(0, elsewhere)
        import vyre.paths

        self.assertTrue(vyre.paths.__file__.startswith(elsewhere))
        self.load()
        self.assertEqual(self.module("paths").inRoot("/x"), self.sandbox.root + "/x")

    @in_own_process
    def test_running_the_script_writes_no_compiled_files(self):
        script = self.copy()
        before = self.files(script)
        sys.dont_write_bytecode = False
        self.load(script)
        self.assertEqual(self.files(script), before)
        self.assertFalse(sys.dont_write_bytecode)
        # Show that the check above can fail: an ordinary import writes compiled files.
        sys.path.insert(0, os.path.dirname(script))
        for name in [name for name in sys.modules if name.partition(".")[0] == "vyre"]:
            del sys.modules[name]
        import vyre.paths  # noqa: F401

        self.assertNotEqual(self.files(script), before)

    @in_own_process
    def test_a_second_run_of_the_script_reads_all_modules_again(self):
        script = self.copy()
        self.load(script, translations={"one": "eins"})
        first = {name: module for name, module in sys.modules.items() if name.partition(".")[0] == "vyre"}
        self.assertEqual(self.module("program").tr("one"), "eins")
        for name in first:
            self.change(script, name.partition(".")[2] or "__init__", "changed = True")
        self.load(script)
        self.assertEqual(self.module("program").tr("one"), "one")
        for name, module in first.items():
            self.assertIsNot(sys.modules[name], module)
            self.assertTrue(sys.modules[name].changed, name)
        # A repeated remark is logged only once.
        self.yumio.base.remark("a remark")
        self.yumio.base.remark("a remark")
        self.assertEqual(self.recording.errors(), ["a remark"])

    @in_own_process
    def test_a_second_run_of_the_script_replaces_the_same_classes_of_dnf_again(self):
        import dnf.lock
        import dnf.package
        import dnf.plugin
        import dnf.yum.rpmtrans

        def places():
            return [dnf.plugin.Plugins, dnf.yum.rpmtrans.RPMTransaction, dnf.lock.build_rpmdb_lock,
                    dnf.lock.build_metadata_lock, dnf.lock.build_download_lock, vars(dnf.package.Package).get("hdr")]

        own = places()
        self.load()
        first = places()
        self.assertEqual([one for one, other in zip(own, first) if one is other], [])
        self.load()
        second = places()
        self.assertEqual([one for one, other in zip(first, second) if one is other], [])
        for found in second[:2]:
            self.assertEqual(len([each for each in found.__mro__ if not each.__module__.startswith("dnf.")]), 2, found)
        self.module("program").restore()
        self.assertEqual(places(), own)

    @in_own_process
    def test_the_script_can_run_again_after_a_module_has_failed(self):
        import dnf.plugin

        own = dnf.plugin.Plugins
        script = self.copy()
        self.load(script)
        last = [module for name, module in sys.modules.items() if name.startswith("vyre.")][-1].__file__
        with open(last) as stream:
            content = stream.read()
        for text in ("raise ValueError('too early')\n", "broken(:\n", content + "raise ValueError('too late')\n"):
            with open(last, "w") as stream:
                stream.write(text)
            with self.assertRaises((ValueError, SyntaxError)):
                self.load(script)
        with open(last, "w") as stream:
            stream.write(content)
        self.load(script)
        self.assertEqual(dnf.plugin.Plugins.__mro__[1], own)
        self.collect()
        self.assert_no_faults()

    @in_own_process
    def test_a_traceback_names_the_file_of_the_module(self):
        script = self.copy()
        self.change(script, "paths", "raise ValueError('wrong')")
        try:
            self.load(script)
        except ValueError as e:
            place = e.__traceback__
            while place.tb_next is not None:
                place = place.tb_next
            self.assertEqual(place.tb_frame.f_code.co_filename, os.path.join(os.path.dirname(script), "vyre/paths.py"))
        else:
            self.fail("the module has not failed")


class ModulesTest(unittest.TestCase):
    def test_no_two_modules_import_each_other(self):
        imports = {}
        for path in glob.glob(os.path.join(os.path.dirname(SCRIPT), "vyre", "*.py")):
            with open(path) as stream:
                tree = ast.parse(stream.read())
            imports[os.path.basename(path)[:-len(".py")]] = {
                name for node in ast.walk(tree) if isinstance(node, ast.ImportFrom) and node.level
                for name in ([node.module] if node.module else [each.name for each in node.names])}
        self.assertIn("program", imports["output"])
        while imports:
            lowest = {name for name, others in imports.items() if not others & set(imports)}
            self.assertTrue(lowest, imports)
            imports = {name: others for name, others in imports.items() if name not in lowest}

    def test_every_module_describes_its_purpose(self):
        for path in glob.glob(os.path.join(os.path.dirname(SCRIPT), "vyre", "*.py")):
            with open(path) as stream:
                self.assertTrue(ast.get_docstring(ast.parse(stream.read())), path)
