"""What the script uses of the package manager although it is not meant for others."""

import ast
import os
import sys
import unittest

from scenario import SCRIPT, ScenarioTest, in_own_process


class MissingNamesTest(ScenarioTest):
    def refusal(self, place, name):
        """What a start says when the name is missing, in a process of its own; empty when it starts."""
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
    def test_the_start_is_refused_without_each_of_them(self):
        from recordingmodule import Recording
        import runpy

        sys.modules["yumIOC"] = Recording().module
        # Loaded by another name: nothing of the package manager is replaced by ours in the process that is copied.
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
    def test_what_our_classes_replace_is_looked_for(self):
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
            # What the package manager's class, or an object of it, has as well.
            others = {each for place in found.__mro__ if place.__module__.startswith("dnf.") for each in vars(place)}
            if issubclass(found, self.dnf.Base):
                others |= set(vars(self.dnf.Base()))
            replaced |= {each for each in own & others if each.startswith("_") and not each.startswith("__")}
        self.assertGreater(len(replaced), 10)
        self.assertEqual(replaced - listed, set())

    @in_own_process
    def test_names_of_what_checks_signatures_may_be_missing(self):
        import dnf.rpm.miscutils as miscutils

        own = miscutils._verifyPackageUsingRpmkeys
        del miscutils._find_rpmkeys_binary
        self.load()
        self.assertIs(miscutils._verifyPackageUsingRpmkeys, own)


class UsedNamesTest(unittest.TestCase):
    def test_all_that_are_used_are_looked_for(self):
        with open(SCRIPT) as stream:
            tree = ast.parse(stream.read())
        own = {"_"}  # a function of dnf.i18n for all
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
            # What a class of ours gives its own objects, or overrides without calling that of the package manager.
            if node.attr in own and (place in classes or place == "" and not isinstance(node.value, ast.Call)):
                continue
            if node.attr not in listed:
                unlisted.add("%s (line %d)" % (node.attr, node.lineno))
        self.assertEqual(unlisted, set())
