#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests that the built program uses the language that the environment names, and works in this language.

The environment variable VYRE_BINARY names the program, and VYRE_SANDBOX the sandbox.
"""
import os
import subprocess
import sys
import xml.etree.ElementTree

sys.path[:0] = [os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), 'journeys')]

import journey  # noqa: E402
from historywindow import NUMBER, RESULT, HistoryJourneyTest, HistoryWindow  # noqa: E402
from journey import driver, wait_for  # noqa: E402

GERMAN = ['Programm', 'Fenster', 'Paketquellen', 'Cache', 'Hilfe']
ENGLISH = ['Program', 'Windows', 'Repositories', 'Cache', 'Help']
CATALOGUE = os.path.join(driver.ROOT, 'translations', 'vyre_de.ts')
VARIABLES = ('LANGUAGE', 'LC_ALL', 'LC_MESSAGES', 'LANG')


def catalogue():
    """All German texts: a dictionary from contexts and English texts to the translations. The texts contain no "&"."""
    found = {}
    for context in xml.etree.ElementTree.parse(CATALOGUE).iter('context'):
        for message in context.iter('message'):
            found[context.findtext('name'), driver.plain(message.findtext('source'))] = \
                driver.plain(message.findtext('translation'))
    return found


def menus(window):
    bar = window.find(driver.pyatspi.ROLE_MENU_BAR)
    return [driver.plain(bar.getChildAtIndex(i).name) for i in range(bar.childCount)]


class ProgramLanguageTest(HistoryJourneyTest):

    def check(self, expected, **environment):
        """Runs the program with only these language variables in its environment, and checks the names of the menus."""
        unset = [name for name in VARIABLES if name not in environment]
        with self.subTest(environment=environment), self.program(environment=environment, unset=unset) as program:
            self.assertEqual(menus(program.main()), expected)
            # The program has started completely, so killing it loses nothing.
            program.process.kill()
            program.wait()

    def test_the_locale_variables_of_the_environment_select_the_language(self):
        self.check(GERMAN, LANG='de_DE.UTF-8')
        self.check(GERMAN, LANG='C.UTF-8', LANGUAGE='de')
        self.check(GERMAN, LANG='en_US.UTF-8', LC_MESSAGES='de_AT.UTF-8')
        self.check(GERMAN, LANG='en_US.UTF-8', LC_ALL='de_DE.UTF-8')
        self.check(GERMAN, LANGUAGE='xx:de:en', LANG='en_US.UTF-8')

    def test_the_default_language_is_english(self):
        self.check(ENGLISH)
        self.check(ENGLISH, LANG='C.UTF-8')
        self.check(ENGLISH, LANG='de_DE.UTF-8', LC_ALL='C', LANGUAGE='de')
        self.check(ENGLISH, LANG='de_DE.UTF-8', LANGUAGE='en:de')
        self.check(ENGLISH, LANG='de_DE.UTF-8', LC_ALL='en_GB.UTF-8')

    def test_english_is_used_if_the_selected_language_has_no_catalogue(self):
        self.check(ENGLISH, LANG='fr_FR.UTF-8')

    def check_undo(self, window, texts):
        """Undo the last transaction in the history window. texts: the result of catalogue()."""
        def dialog_text(english):
            return texts['HistoryDialog', english]
        window.press('ctrl+h')
        history = HistoryWindow(window.program.window(dialog_text('VYRE History')).accessible, window.program)
        history.wait_details('anvil-make-4.2-2.x86_64', 'pergola-6.1-1.x86_64')
        table = history.table().queryTable()
        titles = ('Number', 'Time', 'User', 'Command Line', 'Changes', 'Result', 'Output')
        self.assertEqual([table.getColumnDescription(column) for column in range(table.nColumns)],
                         [texts['HistoryModel', title] for title in titles])
        self.assertEqual(history.cells(RESULT)[0], texts['HistoryModel', 'Succeeded'])
        self.assertEqual(history.buttons(), [dialog_text(english) for english in ('Undo This', 'Undo All Since', 'Redo',
                                                                                  'Close')])
        number = history.cells(NUMBER)[0]
        self.picture('german-history')
        history.click_button(dialog_text('Undo This'))
        dialog = window.program.window('Anwenden')
        heading = texts['YumIO', 'Transaction to be performed:\n']
        listing = wait_for(lambda: next(label for label in dialog.labels() if heading in label), 'the listing')
        self.assertEqual(listing.splitlines()[:5], [
            texts['YumIO', 'This undoes transaction {}.'].format(number), '', heading.strip(),
            '\tHerabstufen: anvil-make 4.1-1 (x86_64) [sandbox-http]', '\tEntfernen: pergola 6.1-1 (x86_64)'])
        dialog.click_button('OK')
        window.program.no_window('Anwenden')
        wait_for(lambda: driver.enabled(window.button('Neu laden')), 'the packages')
        self.check_unchanged()
        self.check_outcome(window, texts, ('%1 downgraded', 1), ('%1 removed', 1))
        # The history has the same words as the listing.
        window.press('ctrl+h')
        history = HistoryWindow(window.program.window(dialog_text('VYRE History')).accessible, window.program)
        history.wait_details('Herabstufen\tanvil-make-4.1-1.x86_64', 'Entfernen\tpergola-6.1-1.x86_64')
        history.click_button(dialog_text('Close'))
        window.program.no_window(history.title)

    def check_outcome(self, window, texts, *counts):
        line = ', '.join(texts['TransactionOutcome', english].replace('%1', str(count)) for english, count in counts)
        wait_for(lambda: line in window.labels(), 'the outcome ' + line)
        self.assertIn(texts['OutcomeLine', 'Show in Log'], window.buttons())

    def test_a_transaction_can_be_applied_and_undone_in_german(self):
        # This locale writes numbers with a decimal comma. The program must still read and write decimal points.
        locales = os.path.join(self.scratch, 'locales')
        os.mkdir(locales)
        subprocess.run(['localedef', '-i', 'de_DE', '-f', 'UTF-8', os.path.join(locales, 'de_DE.UTF-8')], check=True)
        with open(os.path.join(self.sandbox.root, 'etc', 'yum.conf'), 'a') as stream:
            stream.write('bandwidth=8.5M\nthrottle=90.5%\n')
        environment = {'LC_ALL': 'de_DE.UTF-8', 'LOCPATH': locales}
        comma = subprocess.run(['printf', '%.1f', '1,5'], env=dict(os.environ, **environment), check=True,
                               stdout=subprocess.PIPE).stdout
        self.assertEqual(comma, b'1,5')
        with self.program('--state=all', '--groups', environment=environment, unset=['LANGUAGE']) as program:
            window = program.main()
            wait_for(lambda: driver.enabled(window.button('Neu laden')), 'the packages')
            self.assertEqual(menus(window), GERMAN)
            self.picture('german-main-window')
            for name in ('pergola', 'anvil-make'):
                window.set_filter('^' + name + ' ')
                wait_for(lambda: window.names() == [name], name + ' alone')
                size = window.cell(0, driver.SIZE).name
                self.assertRegex(size, r'^(\d\.\d|\d+)(b|Kb)$')
                x, y = driver.place(window.visible_cell(name, driver.ACTION))
                driver.click_at(x, y)
                wait_for(lambda: window.cell(0, driver.ACTION).name in ('Installieren', 'Aktualisieren'), 'the mark')
            window.click_button('Aktionen anwenden')
            dialog = program.window('Anwenden')
            self.picture('german-confirmation')
            lines = dialog.text().splitlines()
            self.assertEqual(lines[0], 'Die Transaktion umfasst:')
            self.assertIn('\tInstallieren: pergola 6.1-1 (x86_64) [sandbox-http]', lines)
            self.assertIn('\tAktualisieren: anvil-make 4.2-2 (x86_64) [sandbox-updates]', lines)
            self.assertRegex(lines[-1], r' {4}Größe nach der Installation: (\d\.\d|\d+)(b|Kb)$')
            dialog.click_button('OK')
            wait_for(lambda: any(package.startswith('pergola-6.1-1') for package in self.sandbox.installed()),
                     'the package')
            # After the transaction, the program reads the packages again.
            wait_for(lambda: window.cell(0, driver.REPOSITORY).name == '@System', 'the updated package')
            wait_for(lambda: driver.enabled(window.button('Neu laden')), 'the packages')
            texts = catalogue()
            self.check_outcome(window, texts, ('%1 installed', 1), ('%1 updated', 1))
            # Ctrl+L opens the log in every language.
            driver.key('ctrl+l')
            log = program.window('VYRE – Protokoll')
            log.wait_settled()

            def logged():
                # Two widgets have text: the log, and a spin box with a shorter text.
                text = max(map(driver.text_of, log.find_all(driver.pyatspi.ROLE_TEXT)), key=len)
                return 'Initialisierung' in text and text
            text = wait_for(logged, 'the text of the log')
            for line in ('Initialisierung', 'Aktionen werden angewendet', 'Anwenden: OK'):
                self.assertIn(line, text.splitlines())
            # An unreachable repository causes the only warning. If dnf expected a decimal comma in its configuration,
            # the log would also name its options "bandwidth" and "throttle".
            self.assertNotIn('Fehler', text)
            self.assertNotIn('bandwidth', text)
            self.assertNotIn('throttle', text)
            self.picture('german-log')
            log.click_button('Schließen')
            program.no_window(log.title)
            self.check_undo(window, texts)
            driver.key('ctrl+q')
            self.assertEqual(program.wait(), 0)
            self.assertEqual(program.complaints(), '')


journey.main()
