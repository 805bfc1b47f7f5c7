#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The user reads descriptions of packages and groups, and opens the pages of repositories."""
import glob
import os
import shutil

import editing
from editing import EditingTest
from journey import driver, wait_for
from vyresandbox import needs_groups

TITLE = 'VYRE Package Description'
MARKUP = '<b>bold</b><script>alert(1)</script> & <img src=x>'


class DescriptionTest(EditingTest):

    def select(self, window, name):
        """Filter the table so that it lists only this package or group, and select it."""
        window.set_filter('^' + name + '( |$)')
        wait_for(lambda: set(window.names()) == {name}, name + ' alone')
        window.select_first()

    def describe(self, window, name):
        self.select(window, name)
        window.click_button('Describe')
        return self.opened_description(window)

    def opened_description(self, window):
        dialog = window.program.window(TITLE)
        dialog.wait_settled()
        return dialog

    def close_description(self, window, dialog):
        dialog.click_button('Close')
        window.program.no_window(TITLE)

    def press(self, dialog, number):
        """Scroll to one of the buttons between the values, and press it. The first button has the number 0."""
        close = dialog.button('Close')
        button = [button for button in dialog.find_all(driver.pyatspi.ROLE_PUSH_BUTTON)
                  if button.name != 'Close'][number]
        x, y = driver.place(dialog.accessible)

        def reached():
            _, top, _, height = driver.rectangle(button)
            if top + height < driver.rectangle(close)[1] - 4:
                return True
            driver.click_at(x, y, button=5)
            return False
        wait_for(reached, 'the button on the screen', 20)
        driver.click(button)

    def pairs(self, dialog, begin):
        """The labels and values below this heading, as a dictionary."""
        labels = dialog.labels()
        labels = labels[labels.index(begin) + 1:]
        if 'Installed' in labels:
            labels = labels[:labels.index('Installed')]
        return dict(zip(labels[::2], labels[1::2]))

    def check_pairs(self, dialog, begin, **wanted):
        found = self.pairs(dialog, begin)
        self.assertEqual({name: found.get(name.replace('_', ' ')) for name in wanted}, wanted)


class ContentTest(DescriptionTest):

    def test_available_package_is_described(self):
        with self.opened() as window:
            self.assertFalse(driver.enabled(window.button('Describe')))
            dialog = self.describe(window, 'orchard')
            self.picture('description')
            self.assertEqual(dialog.labels()[:2], ['orchard', 'Available for installation'])
            self.check_pairs(dialog, 'Available for installation', Kind='Ordinary package', Version='3.0-1',
                             Repository='sandbox-http', Architecture='x86_64', Summary='Photo collection',
                             Recommends='orchard-plugins', Suggests='orchard-samples',
                             Requires='(orchard-lang if lexicon-en)\nlibbough >= 1.1\nsetup')
            self.assertEqual(dialog.buttons(), ['Close', 'Details', 'Show', 'Show'])
            # A field with an empty value has no row.
            for label in ('Install Time', 'Relocations', 'Conflicts', 'Obsoletes', 'URL'):
                self.assertNotIn(label, dialog.labels())
            dialog.click_button('Details')
            details = window.program.window('VYRE Repository Description')
            self.assertEqual(details.labels(), ['sandbox-http', 'Name', 'Sandbox, by HTTP', 'URLs',
                                                self.sandbox.server.url + '/sandbox-http/'])
            details.click_button('Close')
            window.program.no_window(details.title)
            self.press(dialog, 1)
            files = window.program.window('orchard 3.0-1 File List')
            files.wait_settled()
            self.picture('file-list')
            text = driver.text_of(files.find(driver.pyatspi.ROLE_TEXT))
            self.assertEqual(text.split(), ['/usr/bin/orchard', '/usr/share/doc/orchard/README'])
            files.click_button('Close')
            window.program.no_window(files.title)
            self.close_description(window, dialog)

    def test_keys_find_a_file_in_a_long_file_list(self):
        with self.opened() as window:
            dialog = self.describe(window, 'manyfiles')
            self.press(dialog, 1)
            files = window.program.window('manyfiles 1.0-1 File List')
            shown = files.find(driver.pyatspi.ROLE_TEXT)
            text = wait_for(lambda: driver.text_of(shown), 'the files')

            def wait_found(name):
                """Wait until the beginning of this file name is selected and visible."""
                def look():
                    matches = shown.queryText()
                    start, end = matches.getSelection(0)
                    _, y, _, height = matches.getCharacterExtents(start, driver.pyatspi.DESKTOP_COORDS)
                    _, top, _, whole = driver.rectangle(shown)
                    return text[start:].split('\n')[0] == name and text[start:end] == 'leaf 19' and \
                        top <= y <= top + whole - height
                wait_for(look, 'the match ' + name)

            files.press('ctrl+f')
            driver.type_text('LEAF 19')
            wait_found('leaf 1900.txt')
            driver.key('F3')
            wait_found('leaf 1901.txt')
            driver.key('shift+F3', 'shift+F3')
            wait_found('leaf 1999.txt')
            driver.type_text('x')
            wait_for(lambda: 'Not found' in files.labels(), 'the message')
            # The first Escape closes the bar, the second one closes the window.
            driver.key('Escape')
            wait_for(lambda: 'Not found' not in files.labels(), 'the end of the bar')
            self.assertIn(files.title, window.program.titles())
            files.press('Escape')
            window.program.no_window(files.title)
            self.close_description(window, dialog)

    def test_the_cell_menu_describes_each_installed_version_of_a_package(self):
        with self.opened() as window:
            window.set_filter('^kernel ')
            window.wait_names(['kernel'])
            self.choose_from_cell_menu(window, 'kernel', driver.NAME, 0)
            dialog = self.opened_description(window)
            labels = dialog.labels()
            self.check_pairs(dialog, 'Available for update', Version='6.1.31-1', Repository='sandbox-updates')
            short = {'Architecture': 'x86_64', 'Size': '34b', 'Build Time': 'Tue Sep 12 09:00:00 2023',
                     'Packager': 'Larkspur Packagers <packages@larkspur.example>'}
            first = labels.index('Installed')
            expected = []
            for version in ('6.1.25-1', '6.1.20-1'):
                expected += ['Installed', 'Version', version] + [text for pair in short.items() for text in pair]
            self.assertEqual(labels[first:], expected)
            self.close_description(window, dialog)

    def test_an_installed_package_is_described(self):
        with self.opened() as window:
            dialog = self.describe(window, 'gallivant')
            self.check_pairs(dialog, 'Installed', Repository='@System', Relocations='/opt/gallivant',
                             URL='https://larkspur.example/gallivant', Vendor='Wander Works')
            self.assertIn('Install Time', dialog.labels())
            # The repository of an installed package is the local database, so its field has no Details button.
            self.assertEqual(dialog.buttons(), ['Close', 'Show', 'Show'])
            self.press(dialog, 1)
            log = window.program.window('gallivant 1.0-1 Change Log')
            text = driver.text_of(log.find(driver.pyatspi.ROLE_TEXT))
            for part in ('Ada Winterbourne', 'Jorge Peñalver', '- Initial package'):
                self.assertIn(part, text)
            log.click_button('Close')
            window.program.no_window(log.title)
            self.close_description(window, dialog)

    @needs_groups
    def test_a_group_is_described(self):
        with self.opened(groups=True) as window:
            dialog = self.describe(window, 'Arts')
            self.assertEqual(dialog.labels(), [
                'Arts', 'Installed', 'Kind', 'Group of packages', 'Mandatory Packages', 'easel', 'Default Packages',
                'palette-knife', 'Optional Packages', 'brushwork\nvarnish-coat'])
            self.assertEqual(dialog.buttons(), ['Close'])
            self.close_description(window, dialog)

    def test_a_suite_is_described(self):
        with self.opened() as window:
            dialog = self.describe(window, 'vyre-games-suite')
            self.check_pairs(dialog, 'Available for installation', Kind='Suite of packages',
                             Requires='hedgerow\norrery\npebble-go')
            self.close_description(window, dialog)

    def test_markup_in_package_texts_is_shown_as_plain_text(self):
        with self.opened() as window:
            dialog = self.describe(window, 'tagsoup')
            self.check_pairs(
                dialog, 'Available for installation', Summary='Shows ' + MARKUP,
                Description='Literal markup: {}\n\n<h1>Not a heading</h1> &amp; not an ampersand'.format(MARKUP),
                Group='<u>Under</u>/Lined', License='MIT & <i>others</i>', Vendor='Angle <b>Brackets</b> & Sons',
                Packager='<script>alert(2)</script> <tags@larkspur.example>')
            self.press(dialog, 2)
            log = window.program.window('tagsoup 1.0-1 Change Log')
            text = driver.text_of(log.find(driver.pyatspi.ROLE_TEXT))
            self.assertIn(MARKUP, text)
            self.assertIn('100% of &lt;entities&gt; are kept as they are', text)
            log.click_button('Close')
            window.program.no_window(log.title)
            # A label that interpreted the markup would give a shorter text to copy.
            label = next(label for label in dialog.find_all(driver.pyatspi.ROLE_LABEL)
                         if label.name == 'Shows ' + MARKUP)
            self.copy(label)
            self.close_description(window, dialog)
            self.check_pasted(window, 'Shows ' + MARKUP)

    # Copying

    def copy(self, label):
        """Click a value to give it the focus, select all of it, and copy it by keys."""
        x, y, _, _ = driver.rectangle(label)
        driver.click_at(x + 10, y + 8)
        driver.key('ctrl+a')
        driver.key('ctrl+c')

    def check_pasted(self, window, text):
        edit = window.edit()
        driver.click(edit)
        driver.key('ctrl+a')
        driver.key('ctrl+v')

        def look():
            found = driver.text_of(edit)
            if found != text:
                raise AssertionError(found)
            return True
        wait_for(look, 'the copied text', 20)

    def test_a_long_field_value_can_be_selected_and_copied(self):
        with self.opened() as window:
            dialog = self.describe(window, 'longwinded')
            label = next(label for label in dialog.find_all(driver.pyatspi.ROLE_LABEL)
                         if label.name.startswith('Paragraph 1.'))
            text = label.name
            self.assertIn('Paragraph 400.', text)
            self.assertEqual(text, self.sandbox_description('longwinded'))
            # The value is much higher than the window, which still fits on the screen.
            self.assertGreater(driver.rectangle(label)[3], 4000)
            self.assertLess(driver.rectangle(dialog.accessible)[3], 900)
            self.copy(label)
            self.close_description(window, dialog)
            # The expression edit takes the copied text, but replaces each line feed by another character.
            edit = window.edit()
            driver.click(edit)
            driver.key('ctrl+a')
            driver.key('ctrl+v')
            wait_for(lambda: driver.text_of(edit).startswith('Paragraph 1. Whoever'), 'the copied text', 20)
            pasted = driver.text_of(edit)
            self.assertGreater(len(pasted), 30000)
            self.assertEqual(pasted.replace('\u2028', ' ').split()[:5000],
                             text.split()[:5000])

    def sandbox_description(self, name):
        path = glob.glob(os.path.join(self.sandbox.repository('sandbox-http'), name + '-*.rpm'))[0]
        return self.sandbox.rpm('-qp', '--nosignature', '--queryformat', '%{DESCRIPTION}', path)

    # Closing

    def test_the_close_button_and_keys_and_the_window_manager_can_close_the_description(self):
        with self.opened() as window:
            for name, close in (('orchard', lambda dialog: dialog.click_button('Close')),
                                ('gallivant', lambda dialog: dialog.press('Escape')),
                                ('parrot', lambda dialog: dialog.press('Return')),
                                ('kernel', lambda dialog: dialog.press('alt+F4')),
                                ('orchard', lambda dialog: dialog.click_button('Close'))):
                dialog = self.describe(window, name)
                self.assertEqual(dialog.labels()[0], name)
                # The dialog is modal, so the main window must ignore this key.
                dialog.press('ctrl+q')
                close(dialog)
                window.program.no_window(TITLE)
                self.assertEqual(window.program.titles(), [driver.main_title()])
            self.check_usable(window)


class BrowsingTest(DescriptionTest):
    """The user opens the page of a repository in a browser."""

    def setUp(self):
        super().setUp()
        share = os.path.join(self.scratch, 'share')
        shutil.copytree(driver.SHARE, share)
        self.record = os.path.join(self.scratch, 'opened')
        self.browser = os.path.join(share, 'webbrowser')
        with open(self.browser, 'w') as stream:
            stream.write('#!/bin/sh\nfor argument; do echo "$argument"; done >"{0}.new"\nmv "{0}.new" "{0}"\n'.format(
                self.record))
        os.chmod(self.browser, 0o755)
        self.environment = {'VYRESHARE': share}

    def check_browsed(self, program, url):
        """Check that the browser was called once, with only this URL, and that it leaves no process behind."""
        wait_for(lambda: os.path.exists(self.record), 'the call of the browser', 20)
        with open(self.record) as stream:
            self.assertEqual(stream.read(), url + '\n')
        os.unlink(self.record)
        wait_for(lambda: self.children(program) == [], 'the end of the browser', 10)

    def children(self, program):
        """The child processes of the program, including ended processes for which it has not waited."""
        found = []
        for path in glob.glob('/proc/[0-9]*/stat'):
            try:
                with open(path) as stat:
                    fields = stat.read().rpartition(')')[2].split()
            except OSError:
                continue
            if int(fields[1]) == program.process.pid:
                found.append(path)
        return found

    def test_the_table_and_the_description_open_the_url_of_a_repository_in_the_browser(self):
        url = self.sandbox.server.url + '/sandbox-http/'
        with self.program(environment=self.environment) as program:
            window = program.ready()
            window.show_all()
            window.set_filter('^orchard ')
            window.wait_names(['orchard'])
            self.choose_from_cell_menu(window, 'orchard', driver.REPOSITORY, 1)
            self.check_browsed(program, url)
            dialog = self.describe(window, 'orchard')
            dialog.click_button('Details')
            details = program.window('VYRE Repository Description')
            for _ in range(3):
                details.click_button('Browse Repository')
                self.check_browsed(program, url)
            details.click_button('Close')
            program.no_window(details.title)
            self.close_description(window, dialog)
            self.quit(window)

    def test_the_repository_editor_opens_the_url_of_a_repository_in_the_browser(self):
        self.write_repo('pages.repo',
                        '[a-several]\nbaseurl=http://127.0.0.1:9/$releasever/$basearch/$arch/\n  http://127.0.0.1:9/b\n'
                        'enabled=0\n\n[b-mirrors]\nmirrorlist=http://127.0.0.1:9/list?a=b&c=d\nenabled=0\n\n'
                        '[c-nothing]\nname=No URL\nenabled=0\n')
        with self.program(environment=self.environment) as program:
            window = program.ready()
            editor = self.edit(window)
            for identifier, url in (('a-several', 'http://127.0.0.1:9/9/x86_64/x86_64/'),
                                    ('b-mirrors', 'http://127.0.0.1:9/list?a=b&c=d')):
                editor.select(identifier)
                editor.click_button('Browse Repository')
                self.check_browsed(program, url)
            editor.select('c-nothing')
            editor.click_button('Browse Repository')
            self.check_message(program, 'Error', 'Repository configuration has no URL')
            # The context menu of a row also opens the page.
            before = program.popups()
            driver.click(editor.cell('a-several', editing.NAME), button=3)
            wait_for(lambda: program.popups() > before, 'the menu')
            driver.key('Down', 'Down', 'Return')
            self.check_browsed(program, 'http://127.0.0.1:9/9/x86_64/x86_64/')
            editor.close('OK')
            self.quit(window)

    def test_a_missing_browser_is_reported(self):
        os.unlink(self.browser)
        with self.program(environment=self.environment) as program:
            window = program.ready()
            window.show_all()
            window.set_filter('^orchard ')
            window.wait_names(['orchard'])
            self.choose_from_cell_menu(window, 'orchard', driver.REPOSITORY, 1)
            wait_for(program.stderr, 'the message', 20)
            self.assertEqual(program.stderr(),
                             'execv("{}", ...) failed; errno = 2 (No such file or directory)\n'.format(self.browser))
            wait_for(lambda: self.children(program) == [], 'the end of the browser', 10)
            self.assertFalse(os.path.exists(self.record))
            self.check_usable(window)
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)


if __name__ == '__main__':
    editing.main()
