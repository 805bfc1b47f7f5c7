# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests that privatenames.py lists all private names of dnf that the script uses."""

import ast
import glob
import os
import sys
import unittest

from scenario import SCRIPT, ScenarioTest, in_own_process


# The names of all lists in privatenames.py.
LISTS = ("NEW_NAMES", "PRIVATE_NAMES", "REPLAY_NAMES", "RPMKEYS_NAMES", "VERSIONLOCK_NAMES")


def trees():
    """The syntax trees of the script and of all its modules, as one tree."""
    body = []
    for path in [SCRIPT] + glob.glob(os.path.join(os.path.dirname(SCRIPT), "vyre", "*.py")):
        with open(path) as stream:
            body += ast.parse(stream.read()).body
    return ast.Module(body, [])


class MissingNamesTest(ScenarioTest):
    def refusal(self, place, name):
        """Starts the script in a child process in which the module or class "place" lacks the name. Returns the message
        of the refusal, or "" if the script starts.
        """
        reader, writer = os.pipe()
        child = os.fork()
        if child == 0:
            text = "nothing came back"
            try:
                if hasattr(place, name):
                    delattr(place, name)
                else:
                    initialize = place.__init__

                    def without(made, *arguments, **named):
                        initialize(made, *arguments, **named)
                        delattr(made, name)

                    place.__init__ = without
                try:
                    self.load()
                    text = ""
                except SystemExit as e:
                    text = str(e)
            except BaseException as e:
                text = repr(e)
            os.write(writer, text.encode("utf-8"))
            os._exit(0)
        os.close(writer)
        with os.fdopen(reader, "rb") as stream:
            text = stream.read().decode("utf-8")
        os.waitpid(child, 0)
        return text

    @in_own_process
    def test_the_script_refuses_to_start_if_a_private_name_that_it_uses_is_missing_in_dnf(self):
        from recordingmodule import Recording
        import runpy

        sys.modules["yumIOC"] = Recording().module
        runpy.run_path(SCRIPT, run_name="__main__")
        names = self.module("privatenames").PRIVATE_NAMES
        import dnf

        self.assertGreater(len(names), 20)
        self.assertEqual(
            {name: self.refusal(place, name) for place, name, text in names},
            {name: text.format(dnf.const.VERSION, place.__name__ + "." + name) for place, name, text in names})

    @in_own_process
    def test_private_names_of_dnf_that_our_classes_override_are_listed(self):
        self.load()
        names = self.module("privatenames")
        listed = {name for place, name, text in names.PRIVATE_NAMES} | set(names.NEW_NAMES)
        replaced = set()
        modules = [vars(module) for name, module in sys.modules.items() if name.startswith("vyre.")]
        for found in {value for names in modules + [self.script] for value in names.values()
                      if isinstance(value, type) and value.__module__.partition(".")[0] in ("vyre", "__main__")}:
            own = set(vars(found))
            if issubclass(found, self.dnf.Base):
                own |= {target.attr for node in ast.walk(trees()) if isinstance(node, ast.Assign)
                        for target in node.targets if isinstance(target, ast.Attribute)}
            # The names that also exist in dnf's own classes or in their objects.
            others = {each for place in found.__mro__ if place.__module__.startswith("dnf.") for each in vars(place)}
            if issubclass(found, self.dnf.Base):
                others |= set(vars(self.dnf.Base()))
            replaced |= {each for each in own & others if each.startswith("_") and not each.startswith("__")}
        self.assertGreater(len(replaced), 10)
        self.assertEqual(replaced - listed, set())

    @in_own_process
    def test_the_script_starts_even_if_dnf_lacks_the_private_names_for_signature_checks(self):
        import dnf.rpm.miscutils as miscutils

        own = miscutils._verifyPackageUsingRpmkeys
        del miscutils._find_rpmkeys_binary
        self.load()
        self.assertIs(miscutils._verifyPackageUsingRpmkeys, own)


class UsedNamesTest(unittest.TestCase):
    def test_all_private_names_of_dnf_that_the_script_uses_are_listed(self):
        tree = trees()
        own = {"_"}  # "_" is a public function of dnf.i18n
        classes = {"self", "cls"}
        listed = set()
        for node in ast.walk(tree):
            if isinstance(node, ast.ClassDef):
                classes.add(node.name)
                own |= {each.name for each in ast.walk(node) if isinstance(each, ast.FunctionDef)}
            targets = node.targets if isinstance(node, ast.Assign) else []
            for target in targets:
                for each in ast.walk(target):
                    if isinstance(each, ast.Attribute) and getattr(each.value, "id", "") in classes:
                        own.add(each.attr)
                if getattr(target, "id", "") in LISTS:
                    listed |= {each.value for each in ast.walk(node.value) if isinstance(each, ast.Constant)}
                if getattr(target, "id", "").startswith("_"):
                    own.add(target.id)
        unlisted = set()
        for node in ast.walk(tree):
            if isinstance(node, ast.FunctionDef):
                unlisted |= self.names_in_texts(node) - listed
            if not isinstance(node, ast.Attribute) or not node.attr.startswith("_") or node.attr.startswith("__"):
                continue
            place = getattr(node.value, "id", "")
            # Our own classes define this name, and the code does not call dnf's method of the same name.
            if node.attr in own and (place in classes or place == "" and not isinstance(node.value, ast.Call)):
                continue
            if node.attr not in listed:
                unlisted.add("%s (%s)" % (node.attr, ast.unparse(node)))
        self.assertEqual(unlisted, set())

    @staticmethod
    def names_in_texts(function):
        """The private names that a function passes as strings to getattr and similar functions, directly or from a
        list.
        """
        calls = [node for node in ast.walk(function) if isinstance(node, ast.Call) and
                 getattr(node.func, "id", "") in ("getattr", "hasattr", "setattr")]
        found = [node.args[1] for node in calls]
        if any(isinstance(name, ast.Name) for name in found):
            found += [each for node in ast.walk(function) if isinstance(node, (ast.Tuple, ast.List))
                      for each in node.elts]
        return {name.value for name in found if isinstance(name, ast.Constant) and isinstance(name.value, str) and
                name.value.startswith("_") and not name.value.startswith("__")}

    def test_the_check_finds_private_names_in_string_literals(self):
        for code in ("getattr(a, '_b', 0)", "[hasattr(a, name) for name in ('_b', 'c')]",
                     "for name in ['_b']:\n  setattr(a, name, 1)"):
            function, = ast.parse("def f():\n " + code).body
            self.assertEqual(self.names_in_texts(function), {"_b"}, code)
