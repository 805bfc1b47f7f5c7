# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of groups on a system whose dnf cannot read groups."""

import types

from scenario import ScenarioTest, in_own_process

from vyresandbox import dnfbase


class WithoutGroupsTest(ScenarioTest):
    def enter(self):
        super(WithoutGroupsTest, self).enter()
        self.load()

    def break_groups(self):
        """Makes groups unreadable, if dnf can read them here. Every call of libcomps that reads groups then fails the
        test.
        """
        if not self.sandbox.without_groups:
            self.module("groups").groupsCanBeRead = lambda: False
            import dnf.comps

            def crash(*arguments):
                raise AssertionError("the process would have ended here")
            dnf.comps.Comps._add_from_xml_filename = crash
            dnf.comps.Comps.groups_iter = crash

    @in_own_process
    def test_groups_that_would_crash_dnf_are_detected_without_a_crash(self):
        self.assertEqual(self.module("groups").groupsCanBeRead(), not dnfbase.fault_of_groups())

    @in_own_process
    def test_groups_are_readable_only_if_calling_iter_for_an_iterator_returns_this_iterator(self):
        names = vars(self.module("groups"))
        check = self.module("groups").groupsCanBeRead.__wrapped__

        class Twice(object):
            """A probe that behaves as in Python 3.13, where a loop asks for an iterator twice."""
            asked = 2

            def __iter__(self):
                return iter(())
        names["GeneratorProbe"] = Twice

        class Right(object):
            def __init__(self, *ignored):
                pass

            def __iter__(self):
                return self

            def __next__(self):
                raise StopIteration

        class Other(Right):
            def __iter__(self):
                return Other()

        class None_(Right):
            __iter__ = None

        class List(list):
            def __iter__(self):
                return List.kind()
        for kind, expected in ((Right, True), (Other, False), (None_, False)):
            List.kind = kind
            names["libcomps"] = types.SimpleNamespace(
                Group=types.SimpleNamespace, Comps=lambda: types.SimpleNamespace(groups=List()))
            self.assertIs(check(), expected, kind)

    @in_own_process
    def test_packages_are_usable_if_groups_are_unreadable(self):
        self.break_groups()
        self.yumio.lock()
        self.collect()
        self.assertEqual(self.groups, {})
        self.assertEqual(self.recording.without_groups(), [2])
        self.assertEqual(self.yumio.remarks, [])
        comps = self.yumio.base.comps
        self.assertEqual((len(comps), comps.groups, comps.environments, comps.categories), (0, [], [], []))
        self.assertEqual((comps.group_by_pattern("arts"), comps.environment_by_pattern("*")), (None, None))
        self.recording.clear()

        changed = self.changes(self.apply, installs=["orchard"], updates=["abacus-cli"], removes=["almanac"])
        self.assertIn("orchard-3.0-1.x86_64", changed[0])
        self.assertIn("almanac-1.9-1.noarch", changed[1])
        # The next collection does not report unreadable groups again.
        self.yumio.reset()
        self.collect()
        self.assertEqual(self.groups, {})
        self.assertEqual(self.recording.without_groups(), [])
        self.package(self.installed, "orchard")
        self.assert_no_faults()

    @in_own_process
    def test_nothing_is_reported_if_repositories_have_no_groups(self):
        self.index("sandbox-http")
        self.break_groups()
        self.yumio.lock()
        self.collect()
        self.assertEqual((self.groups, self.recording.without_groups()), ({}, []))
        # Reading the empty list of groups must not crash the process either.
        self.assertEqual(self.yumio.base.comps.groups, [])
