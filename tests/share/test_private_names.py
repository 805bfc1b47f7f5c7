"""The private names of the package manager that the script uses."""

import ast
import os
import sys
import unittest

from scenario import SCRIPT, ScenarioTest, in_own_process


class MissingNamesTest(ScenarioTest):
    def refusal(self, place, name):
        """Starts the script without this name, in a child process; returns the message, or "" if it starts."""
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
    def test_the_start_is_refused_if_any_private_name_is_missing(self):
        from recordingmodule import Recording
        import runpy

        sys.modules["yumIOC"] = Recording().module
        # Loading replaces classes of dnf. They are restored, because the child processes need dnf's own classes.
        import dnf
        import dnf.conf.read
        import dnf.plugin
        import dnf.yum.rpmtrans

        originals = dnf.plugin.Plugins, dnf.yum.rpmtrans.RPMTransaction
        names = runpy.run_path(SCRIPT, run_name="__main__")["PRIVATE_NAMES"]
        dnf.plugin.Plugins, dnf.yum.rpmtrans.RPMTransaction = originals
        self.assertGreater(len(names), 20)
        self.assertEqual(
            {name: self.refusal(place, name) for place, name, text in names},
            {name: text.format(dnf.const.VERSION, place.__name__ + "." + name) for place, name, text in names})

    @in_own_process
    def test_private_names_that_our_classes_override_are_listed(self):
        self.load()
        listed = {name for place, name, text in self.script["PRIVATE_NAMES"]} | set(self.script["NEW_NAMES"])
        replaced = set()
        for name, found in self.script.items():
            if not isinstance(found, type) or found.__module__ != "__main__":
                continue
            own = set(vars(found))
            if issubclass(found, self.dnf.Base):
                with open(SCRIPT) as stream:
                    own |= {target.attr for node in ast.walk(ast.parse(stream.read())) if isinstance(node, ast.Assign)
                            for target in node.targets if isinstance(target, ast.Attribute)}
            # The names that the package manager's class or its objects also have.
            others = {each for place in found.__mro__ if place.__module__.startswith("dnf.") for each in vars(place)}
            if issubclass(found, self.dnf.Base):
                others |= set(vars(self.dnf.Base()))
            replaced |= {each for each in own & others if each.startswith("_") and not each.startswith("__")}
        self.assertGreater(len(replaced), 10)
        self.assertEqual(replaced - listed, set())

    @in_own_process
    def test_names_for_checking_signatures_can_be_missing(self):
        import dnf.rpm.miscutils as miscutils

        own = miscutils._verifyPackageUsingRpmkeys
        del miscutils._find_rpmkeys_binary
        self.load()
        self.assertIs(miscutils._verifyPackageUsingRpmkeys, own)


class UsedNamesTest(unittest.TestCase):
    def test_all_used_private_names_are_listed(self):
        with open(SCRIPT) as stream:
            tree = ast.parse(stream.read())
        own = {"_"}  # a public function of dnf.i18n
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
                if getattr(target, "id", "") in ("NEW_NAMES", "PRIVATE_NAMES", "RPMKEYS_NAMES"):
                    listed |= {each.value for each in ast.walk(node.value) if isinstance(each, ast.Constant)}
                if getattr(target, "id", "").startswith("_"):
                    own.add(target.id)
        unlisted = set()
        for node in ast.walk(tree):
            if not isinstance(node, ast.Attribute) or not node.attr.startswith("_") or node.attr.startswith("__"):
                continue
            place = getattr(node.value, "id", "")
            # Our classes define these names, or override them without calling the package manager's method.
            if node.attr in own and (place in classes or place == "" and not isinstance(node.value, ast.Call)):
                continue
            if node.attr not in listed:
                unlisted.add("%s (line %d)" % (node.attr, node.lineno))
        self.assertEqual(unlisted, set())
