#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Reads the windows of the built program through the accessibility bus, as assistive programs do.

usage: AccessibilityTest.py VYRE SCRIPT [options of unittest...]

VYRE is the built program. SCRIPT is a stand-in for the program's script, and needs no package manager. The caller
provides a display with an accessibility bus.
"""
import json
import os
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), 'support'))

import driver  # noqa: E402
import pyatspi  # noqa: E402
from driver import wait_for  # noqa: E402

VYRE, SCRIPT = map(os.path.abspath, (sys.argv.pop(1), sys.argv.pop(1)))

# The roles of the controls that a user operates.
CONTROLS = (pyatspi.ROLE_PUSH_BUTTON, pyatspi.ROLE_CHECK_BOX, pyatspi.ROLE_COMBO_BOX, pyatspi.ROLE_TEXT,
            pyatspi.ROLE_PASSWORD_TEXT, pyatspi.ROLE_SPIN_BUTTON, pyatspi.ROLE_TABLE, pyatspi.ROLE_PROGRESS_BAR)


class AccessibilityTest(unittest.TestCase):

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix='accessibility.')
        self.addCleanup(scratch.cleanup)
        share, root = os.path.join(scratch.name, 'share'), os.path.join(scratch.name, 'root')
        os.makedirs(os.path.join(share, 'python'))
        os.makedirs(os.path.join(root, 'etc/yum.repos.d'))
        for name in ('icons', 'pixmaps'):
            os.symlink(os.path.join(driver.SHARE, name), os.path.join(share, name))
        os.symlink(SCRIPT, os.path.join(share, 'python', 'YumIO.py'))
        with open(os.path.join(root, 'etc/yum.conf'), 'w') as stream:
            stream.write('[main]\ncachedir=/var/cache/standin\n')
        with open(os.path.join(root, 'etc/yum.repos.d/standin.repo'), 'w') as stream:
            stream.write('[base]\nname=The base\nbaseurl=http://h/base\nenabled=1\n'
                         '[extras]\nname=Extras\nbaseurl=http://h/extras\nenabled=0\n')
        old = {'name': 'tool', 'version': '1', 'repoid': '@System'}
        with open(os.path.join(share, 'packages.json'), 'w') as stream:
            json.dump({'updates': [{'name': 'tool', 'version': '2', 'repoid': 'updates'}],
                       'installed': [old, dict(old, name='shell')], 'available': [{'name': 'editor'}],
                       'groups': [{'name': 'Games'}]}, stream)
        with open(os.path.join(share, 'advisories.json'), 'w') as stream:
            json.dump([['LSA-1', 'security', True, 'Important/Sec.', 4, '2024-02-20', 'About LSA-1', 'A long text', [],
                        [], [['tool', 'x86_64', '2-1', 0, '2-1']]]], stream)
        self.program = driver.Program(VYRE, scratch.name, environment={
            'VYRESHARE': share, 'VYREROOT': root, 'XDG_CONFIG_HOME': os.path.join(scratch.name, 'config')})
        self.addCleanup(self.program.__exit__)
        self.main = self.program.ready()

    def controls(self, window):
        return [accessible for accessible in driver.walk(window.accessible)
                if accessible.getRole() in CONTROLS and driver.shown(accessible)]

    def check_names(self, window, at_least):
        controls = self.controls(window)
        self.assertGreaterEqual(len(controls), at_least)
        unnamed = [accessible.getRoleName() for accessible in controls if not accessible.name]
        self.assertEqual(unnamed, [])

    def field(self, window, name):
        """The role of the control with this accessible name."""
        return {accessible.name: accessible.getRole() for accessible in self.controls(window)}.get(name)

    def test_controls_of_the_main_window_have_accessible_names_and_roles(self):
        self.check_names(self.main, 15)
        self.assertEqual(self.field(self.main, 'Regular expression'), pyatspi.ROLE_TEXT)
        self.assertEqual(self.field(self.main, 'Packages'), pyatspi.ROLE_TABLE)
        self.assertEqual(self.field(self.main, 'Whole operation'), pyatspi.ROLE_PROGRESS_BAR)
        self.assertEqual(self.field(self.main, 'Current step'), pyatspi.ROLE_PROGRESS_BAR)
        self.assertEqual(self.field(self.main, 'View Updatable'), pyatspi.ROLE_COMBO_BOX)
        for number, words in ((0, 'Specify the method'), (1, 'Filter for those packages')):
            self.assertIn(words, self.main.combo(number).description)

    def test_table_cells_that_show_only_an_icon_have_accessible_names(self):
        self.main.show_all(groups=True)
        self.main.wait_names(['tool', 'shell', 'editor', 'Games'])
        self.main.mark('editor')

        def row(name):
            return [self.main.cell(self.main.row_of(name), column).name for column in range(driver.NAME)]
        self.assertEqual(row('tool'), ['No Action', 'Out-of-date', 'Package'])
        self.assertEqual(row('shell'), ['No Action', 'Up-to-date', 'Package'])
        self.assertEqual(row('editor'), ['Install', 'Not Installed', 'Package'])
        self.assertEqual(row('Games')[2], 'Group')

    def test_controls_of_the_log_window_have_accessible_names_and_roles(self):
        driver.key('ctrl+l')
        log = self.program.window('VYRE Log')
        log.wait_settled()
        self.check_names(log, 3)
        self.assertEqual(self.field(log, 'VYRE Log'), pyatspi.ROLE_TEXT)
        self.assertEqual(self.field(log, 'Detail level'), pyatspi.ROLE_SPIN_BUTTON)
        self.assertEqual(self.field(log, 'Close'), pyatspi.ROLE_PUSH_BUTTON)

    def test_controls_of_the_history_window_have_accessible_names_and_roles(self):
        driver.key('ctrl+h')
        history = self.program.window('VYRE History')
        history.wait_settled()
        self.check_names(history, 7)
        self.assertEqual(self.field(history, 'Regular expression'), pyatspi.ROLE_TEXT)
        self.assertEqual(self.field(history, 'Transactions'), pyatspi.ROLE_TABLE)
        self.assertEqual(self.field(history, 'Details of the transaction'), pyatspi.ROLE_TEXT)
        table = history.find(pyatspi.ROLE_TABLE).queryTable()
        wait_for(lambda: table.nRows == 3, 'the transactions')
        self.assertEqual([table.getAccessibleAt(0, column).name for column in (0, 3, 5)],
                         ['3', 'vyre: install editor', 'Interrupted'])
        self.assertTrue(table.isRowSelected(0))

    def test_controls_of_the_advisories_window_have_accessible_names_and_roles(self):
        driver.key('ctrl+d')
        advisories = self.program.window('VYRE Advisories')
        advisories.wait_settled()
        self.check_names(advisories, 6)
        self.assertEqual(self.field(advisories, 'Regular expression'), pyatspi.ROLE_TEXT)
        self.assertEqual(self.field(advisories, 'Advisories'), pyatspi.ROLE_TABLE)
        self.assertEqual(self.field(advisories, 'Details of the advisory'), pyatspi.ROLE_TEXT)
        table = advisories.find(pyatspi.ROLE_TABLE).queryTable()
        self.assertEqual([table.getAccessibleAt(0, column).name for column in (0, 1, 4)],
                         ['LSA-1', 'security', 'Not Installed'])

    def test_the_repository_editor_and_its_form_are_usable_with_a_keyboard_and_a_screen_reader(self):
        driver.key('ctrl+e')
        editor = self.program.window('VYRE Repository Configuration Editor')
        editor.wait_settled()
        self.check_names(editor, 10)
        table = editor.find(pyatspi.ROLE_TABLE).queryTable()
        self.assertEqual([[table.getAccessibleAt(row, column).name for column in range(4)] for row in range(2)],
                         [['Yes', 'Yes', 'base', 'The base'], ['No', 'No', 'extras', 'Extras']])
        driver.key('Down', 'Home', 'space')
        wait_for(lambda: table.getAccessibleAt(0, 0).name != 'Yes' or table.getAccessibleAt(1, 0).name != 'No',
                 'the ticked box')
        # No repository is current, so the buttons for the current repository are disabled.
        driver.key('Tab', 'Tab', 'space')
        form = self.program.window('VYRE Repository Configuration')
        form.wait_settled()
        self.check_names(form, 10)
        for name, role in (('Identifier', pyatspi.ROLE_TEXT), ('Other Options:', pyatspi.ROLE_TEXT),
                           ('Sort Position', pyatspi.ROLE_SPIN_BUTTON), ('File', pyatspi.ROLE_TEXT)):
            self.assertEqual(self.field(form, name), role, name)
        labelled = {target.name for box in self.controls(form) if box.getRole() == pyatspi.ROLE_COMBO_BOX
                    for relation in box.getRelationSet()
                    if relation.getRelationType() == pyatspi.RELATION_LABELLED_BY
                    for target in (relation.getTarget(0),)}
        self.assertEqual(labelled, {'Enabled', 'Check GPG Keys'})


unittest.main()
