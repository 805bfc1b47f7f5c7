#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user locks packages at their versions with the versionlock plug-in, and unlocks them."""
import os
import re

import journey
from journey import driver
from trouble import YUM_ERROR, StartTest


class VersionLocksTest(StartTest):

    def setUp(self):
        super(VersionLocksTest, self).setUp()
        self.settings = os.path.join(self.scratch, 'settings')
        os.mkdir(self.settings)
        for name, lines in (('versionlock.conf', '[main]\nenabled=1\nlocklist={}/locks\n'.format(self.settings)),
                            # even for a managed root, this plug-in writes to the running system
                            ('generate_completion_cache.conf', '[main]\nenabled=0\n'), ('locks', '')):
            with open(os.path.join(self.settings, name), 'w') as stream:
                stream.write(lines)

    def use_plug_in(self):
        with open(os.path.join(self.sandbox.root, 'etc/yum.conf'), 'a') as configuration:
            configuration.write('plugins=1\npluginconfpath={}\n'.format(self.settings))

    def locked(self):
        """The lines of the plug-in's list, without comments."""
        with open(os.path.join(self.settings, 'locks')) as stream:
            return re.findall('(?m)^[^#\n].*$', stream.read())

    def version(self, window, name):
        return next(row[1] for row in window.rows() if row[0] == name)

    def test_a_locked_package_is_not_updated(self):
        self.use_plug_in()
        with self.opened() as window:
            window.set_filter('^(abacus-cli|barometer|quillbase) ')
            window.wait_names(['abacus-cli', 'barometer', 'quillbase'])
            self.assertEqual(self.version(window, 'abacus-cli'), '3.3.0-2')
            window.mark('quillbase')
            window.wait_action('update', 'quillbase')
            window.action_menu('abacus-cli')
            self.picture('version-lock')
            window.press_in_menu('l')
            driver.wait_for(lambda: self.version(window, 'abacus-cli') == '3.2.1-1', 'the locked version')
            window.wait_ready()
            self.assertEqual(self.locked(), ['abacus-cli-0:3.2.1-1.*'])
            # The program has kept the mark of the package that the user did not lock.
            window.wait_action('update', 'quillbase')
            # The line below the table shows the number of locks, even if the table does not list the locked package.
            line = window.find(driver.pyatspi.ROLE_STATUS_BAR, 'Rows and marks').getChildAtIndex(0)
            self.assertTrue(line.name.endswith('   Locked: 1 (1 selected)'), line.name)
            self.assertEqual(self.tool_tip(window, 'abacus-cli', driver.STATE).splitlines()[-1],
                             'The version is locked: abacus-cli-0:3.2.1-1.*')
            self.picture('locked-package')
            self.assertIn('Adding versionlock on: abacus-cli-0:3.2.1-1.*', self.read_log(window))
            window.click_button('Set Update of Listed')
            self.carry_out(window)
            self.check_changed(new=['quillbase-2:1.0-1.x86_64', 'barometer-1.1-2.x86_64'],
                               gone=['quillbase-1:2.4-1.x86_64', 'barometer-1.0-1.x86_64'])

    def test_a_package_that_was_unlocked_with_the_keyboard_has_its_update_again(self):
        self.use_plug_in()
        with open(os.path.join(self.settings, 'locks'), 'w') as stream:
            stream.write('abacus-cli-0:3.2.1-1.*\nbarometer-0:1.0-1.*\n')
        with self.opened() as window:
            window.set_filter('^abacus-cli ')
            window.wait_names(['abacus-cli'])
            self.assertEqual(self.version(window, 'abacus-cli'), '3.2.1-1')
            window.select_first()
            driver.key('Home')
            before = window.program.popups()
            driver.key('shift+F10')
            driver.wait_for(lambda: window.program.popups() > before, 'the menu')
            window.press_in_menu('l')
            driver.wait_for(lambda: self.version(window, 'abacus-cli') == '3.3.0-2', 'the update')
            window.wait_ready()
            self.assertEqual(self.locked(), ['barometer-0:1.0-1.*'])
            # The row of "abacus-cli" is still the current row, so the space key marks it.
            driver.key('space')
            window.wait_action('update', 'abacus-cli')
        self.check_unchanged()

    def test_one_message_gives_the_reason_why_the_list_of_locks_cannot_be_written(self):
        self.use_plug_in()
        path = os.path.join(self.settings, 'locks')
        with self.unprivileged(), self.opened() as window:
            window.set_filter('^abacus-cli ')
            window.wait_names(['abacus-cli'])
            os.chmod(path, 0o444)
            window.action_menu('abacus-cli')
            driver.key('l')
            dialog = self.read_dialog(window.program, YUM_ERROR)
            self.assertEqual(dialog.text(), 'You are not allowed to change the list of locks {}\n'
                                            'Unable to lock versions'.format(path))
            self.close_dialog(window.program, dialog)
            window.wait_ready()
            self.assertEqual(window.program.titles(), [driver.main_title()])
            self.assertEqual(self.version(window, 'abacus-cli'), '3.3.0-2')
            line = window.find(driver.pyatspi.ROLE_STATUS_BAR, 'Rows and marks').getChildAtIndex(0)
            self.assertNotIn('Locked', line.name)
            # The entry of the menu is now disabled, until a refresh finds that the list can be written again.
            window.action_menu('abacus-cli')
            self.picture('no-version-lock')
            shown = window.program.popups()
            driver.key('l')
            window.press_in_menu('Escape')
            self.assertEqual(len(shown - window.program.popups()), 1)
            self.assertEqual(self.locked(), [])
            os.chmod(path, 0o644)
            window.click_button('Refresh')
            window.wait_ready()
            window.wait_names(['abacus-cli'])
            window.action_menu('abacus-cli')
            window.press_in_menu('l')
            driver.wait_for(lambda: self.version(window, 'abacus-cli') == '3.2.1-1', 'the locked version')
            window.wait_ready()
            self.assertEqual(self.locked(), ['abacus-cli-0:3.2.1-1.*'])
        self.check_unchanged()

    def test_the_cell_menu_has_no_lock_entries_if_the_versionlock_plug_in_is_missing(self):
        with self.opened() as window:
            window.set_filter('^abacus-cli ')
            window.wait_names(['abacus-cli'])
            window.action_menu('abacus-cli')
            shown = window.program.popups()
            driver.key('l')
            # No entry of the menu has this letter, so the menu is still open.
            window.press_in_menu('Escape')
            self.assertEqual(len(shown - window.program.popups()), 1)
            self.assertEqual(self.version(window, 'abacus-cli'), '3.3.0-2')
        self.assertEqual(self.locked(), [])
        self.check_unchanged()


if __name__ == '__main__':
    journey.main()
