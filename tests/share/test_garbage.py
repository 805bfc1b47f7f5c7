# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the collections of unreachable objects, which Python makes while the script works."""

import gc
import unittest
import weakref

from scenario import ScenarioTest, in_own_process


class Part:
    """An object that can refer to itself."""


@unittest.skipUnless(hasattr(gc, "freeze"), "Python 3.6 cannot exempt objects")
class GarbageTest(ScenarioTest):
    def examined(self, action):
        """The numbers of objects that the full collections examine during an action."""
        numbers = []

        def note(phase, details):
            if phase == "start" and details["generation"] == 2:
                numbers.append(len(gc.get_objects()))

        gc.callbacks.append(note)
        try:
            action()
        finally:
            gc.callbacks.remove(note)
        return numbers

    @in_own_process
    def test_collections_while_packages_are_read_skip_the_objects_of_the_start(self):
        self.load()
        everything = gc.get_freeze_count()
        self.assertGreater(everything, 10000)
        self.yumio.lock()
        gc.collect()
        found = self.examined(self.yumio.setupRepos)
        self.assertGreater(len(found), 0)
        self.assertLess(max(found), everything / 4)

    @in_own_process
    def test_after_a_reset_all_objects_are_examined_once(self):
        self.started()
        self.updates = self.installed = self.available = self.groups = None
        gc.unfreeze()  # the program does this at the end of a collection of packages
        everything = len(gc.get_objects())
        found = self.examined(self.yumio.reset)
        self.assertLess(max(found), everything / 4)
        found = self.examined(self.yumio.setupRepos)
        self.assertEqual(len([number for number in found if number > everything / 4]), 1, (found, everything))

    @in_own_process
    def test_unreachable_objects_are_released_after_a_reset_even_if_they_were_exempt(self):
        self.started()
        part = Part()
        part.itself = part
        reference = weakref.ref(part)
        gc.freeze()
        del part
        gc.collect()
        self.assertIsNotNone(reference())
        self.yumio.reset()
        self.yumio.setupRepos()
        self.assertIsNone(reference())
