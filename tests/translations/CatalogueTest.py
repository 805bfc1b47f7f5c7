#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Checks that the catalogues translate every text of the sources, and that each translation has the same placeholders,
outer blanks and HTML tags as its text.

usage: CatalogueTest.py [options of unittest...]

The environment variables LUPDATE and LRELEASE name Qt's programs. If they are unset, PATH is searched.
"""
import glob
import itertools
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

TOP = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.insert(0, os.path.join(TOP, 'tests', 'manual'))

import sources  # noqa: E402

UPDATE = os.path.join(TOP, 'translations', 'update')
CATALOGUES = sorted(glob.glob(os.path.join(TOP, 'translations', '*.ts')))
LRELEASE = os.environ.get('LRELEASE') or shutil.which('lrelease') or shutil.which('lrelease-qt5')

# Each row is a pair: a context and some of its texts. The Alt keys of these texts are usable at the same time, so these
# keys must differ.
TOGETHER = (
    ('MainWindow', ('&Program', '&Windows', '&Repositories', '&Cache', '&Help', '&Describe', 'Re&size', 'Re&fresh',
                    'Set &Install/Update of Selected', 'Set &Update of Listed', '&Clear Actions', '&Apply Actions')),
    # The main window also has this button.
    ('OutcomeLine', ('Show in &Log',)),
    ('MainWindow', ('&Quit',)), ('MainWindow', ('&Log', '&History', '&Advisories')),
    ('MainWindow', ('&Edit Configuration',)),
    ('MainWindow', ('&About',)),
    # This button is enabled only while the other buttons of the main window are disabled.
    ('StopButton', ('&Stop',)),
    ('YumIO', ('Yes to &All',)),
    ('PackageTable::ActionContextMenu', ('&Update', '&Install', '&Remove', '&No Action',
                                         '&Lock Version')),
    # "Lock Version" and "Unlock Version" may have the same Alt key: the menu contains both entries only if the
    # selection contains locked and unlocked rows.
    ('PackageTable::ActionContextMenu', ('&Update', '&Install', '&Remove', '&No Action', 'Un&lock Version')),
    ('PackageTable::OtherContextMenu', ('&Describe',)),
    # The FindBar is a part of the log window and of text dialogs.
    ('Log::Window', ('&Close', '&Times', '&Find...', '&Save...')), ('Log::Window', ('&Replace',)),
    ('TextDialog', ('&Find...',)), ('FindBar', ('&Next', '&Previous')),
    ('AdvisoryDialog', ('&Mark Updates', 'Mark All &Security Updates', '&Close')),
    ('FilteredList', ('&Filter',)),
    ('HistoryDialog', ('&Undo This', 'Undo All &Since', '&Redo', '&Close')),
    # The standard buttons and the context menus of Qt.
    ('QPlatformTheme', ('&Yes', 'Yes to &All', '&No', 'N&o to All')),
    ('QLineEdit', ('&Undo', '&Redo', 'Cu&t', '&Copy', '&Paste')),
    ('QWidgetTextControl', ('&Undo', '&Redo', 'Cu&t', '&Copy', 'Copy &Link Location', '&Paste')),
    ('QAbstractSpinBox', ('&Select All', '&Step up', 'Step &down')),
)
# Each pair names two rows of TOGETHER whose texts appear in the same window: in the main window with its outcome line,
# or in a window with a Find bar or a filter. No pair names the row of the Stop button: while this button is enabled,
# the other buttons of the main window are disabled.
WINDOWS = (
    ('MainWindow &Program', 'OutcomeLine Show in &Log'),
    ('Log::Window &Close', 'FindBar &Next'), ('TextDialog &Find...', 'FindBar &Next'),
    ('AdvisoryDialog &Mark Updates', 'FilteredList &Filter'), ('HistoryDialog &Undo This', 'FilteredList &Filter'),
)
# The HTML around log entries. It contains no words that need a translation.
NO_WORDS = re.compile(r'</?(font|h2)')


def messages(path):
    """A dictionary of the texts of a catalogue: (context, source) -> translation, or None if it is unfinished."""
    found = {}
    for context in ElementTree.parse(path).getroot().iter('context'):
        for message in context.iter('message'):
            translation = message.find('translation')
            key = context.findtext('name'), message.findtext('source')
            assert key not in found, key
            found[key] = None if translation.get('type') else translation.text
    return found


def mnemonic(text):
    found = re.search('&([^& ])', text)
    return found.group(1).lower() if found else None


def classes(path):
    """The full names of the classes that a header declares, except for nested classes, which are indented."""
    found, spaces = set(), []
    with open(path, encoding='utf-8') as stream:
        for line in stream:
            begin = re.match(r'namespace (\w+) \{', line)
            declared = re.match(r'class (\w+)[^;]*$', line)
            if declared:
                found.add('::'.join([space for space in spaces if space] + [declared.group(1)]))
            if begin:
                spaces.append(begin.group(1))
            elif line[0] == '}':
                spaces.pop()
            elif line[0] == '{' or not line[0].isspace() and line.endswith('{\n'):
                spaces.append('')
    return found


class CatalogueTest(unittest.TestCase):

    def setUp(self):
        self.scratch = tempfile.mkdtemp(prefix='catalogue-test.')
        self.addCleanup(shutil.rmtree, self.scratch)

    def updated(self, path):
        """Updates a copy of a catalogue from the sources. Returns the path of the copy, and the tool's output."""
        copy = os.path.join(self.scratch, os.path.basename(path))
        shutil.copyfile(path, copy)
        done = subprocess.run([UPDATE, copy], stdout=subprocess.PIPE, stderr=subprocess.PIPE, universal_newlines=True,
                              cwd='/')
        self.assertEqual((done.returncode, done.stderr), (0, ''))
        return copy, done.stdout

    def each(self):
        """Yields the context, the source and the translation of each text in each catalogue."""
        for path in CATALOGUES:
            for (context, source), translation in messages(path).items():
                with self.subTest(catalogue=os.path.basename(path), context=context, source=source):
                    self.assertIsNotNone(translation)
                    yield context, source, translation

    def test_the_german_catalogue_is_built(self):
        self.assertIn('vyre_de.ts', map(os.path.basename, CATALOGUES))
        with open(os.path.join(TOP, 'translations', 'CMakeLists.txt')) as stream:
            built = set(re.findall(r'\bvyre_\w+\.ts\b', stream.read().partition('set(catalogues')[2].partition(')')[0]))
        self.assertEqual(built, set(map(os.path.basename, CATALOGUES)))

    def test_the_catalogues_contain_exactly_the_texts_of_the_sources(self):
        for path in CATALOGUES:
            copy, _ = self.updated(path)
            before, now = messages(path), messages(copy)
            self.assertEqual(sorted(set(now) - set(before)), [], 'new texts: run translations/update ' + path)
            self.assertEqual(sorted(set(before) - set(now)), [], 'removed texts: run translations/update ' + path)
            self.assertEqual(before, now)

    def test_updating_a_catalogue_adds_new_texts_and_removes_old_texts(self):
        copy, _ = self.updated(CATALOGUES[0])
        with open(copy, encoding='utf-8') as stream:
            text = stream.read()
        with open(copy, 'w', encoding='utf-8') as stream:
            stream.write(text.replace('<source>&amp;Quit</source>', '<source>&amp;Go</source>'))
        before = messages(copy)
        subprocess.run([UPDATE, copy], check=True, stdout=subprocess.DEVNULL)
        now = messages(copy)
        self.assertEqual(set(now) - set(before), {('MainWindow', '&Quit')})
        self.assertEqual(set(before) - set(now), {('MainWindow', '&Go')})
        self.assertIsNone(now['MainWindow', '&Quit'])

    def test_every_text_has_a_translation(self):
        for path in CATALOGUES:
            done = subprocess.run([LRELEASE, path, '-qm', os.path.join(self.scratch, 'made.qm')], check=True,
                                  stdout=subprocess.PIPE, stderr=subprocess.STDOUT, universal_newlines=True)
            finished, unfinished = re.search(r'\((\d+) finished and (\d+) unfinished\)', done.stdout).groups()
            self.assertEqual((int(finished), int(unfinished)), (len(messages(path)), 0), done.stdout)
            self.assertNotRegex(done.stdout, '(?i)ignored|warning|error')
        self.assertGreater(len(list(self.each())), 400 * len(CATALOGUES))

    def test_the_catalogues_contain_every_text_that_the_sources_mark_as_translatable(self):
        """lupdate overlooks some texts, for example in a class that it does not know."""
        for path in CATALOGUES:
            known = {source for _, source in messages(path)}
            found = 0
            for text in sources.all_cpp_texts():
                inner = text.calls[-1] if text.calls else ('', 0)
                if sources.is_translated(text) or inner in (('translate', 1), ('QT_TRANSLATE_NOOP', 1)):
                    self.assertTrue(text.value in known, text)
                    found += 1
            self.assertGreater(found, 400)

    def test_the_program_lists_all_texts_of_the_script_for_translation(self):
        listed = [text.value for text in sources.all_cpp_texts()
                  if text.place.startswith('yumio/YumIO.cpp') and text.calls[-1:] == [('QT_TRANSLATE_NOOP', 1)]]
        translated = [text for parts in sources.script_files() for text in sources.python_translated(*parts)]
        self.assertEqual(sorted(listed), sorted(translated))
        said = {text.value for parts in sources.script_files() for text in sources.python_messages(*parts)}
        self.assertEqual(said - set(listed), set())

    def test_the_history_has_the_same_words_for_actions_as_the_listing_of_a_transaction(self):
        for path in CATALOGUES:
            translated = messages(path)
            for recorded, listed in (('Install', 'Install'), ('Upgrade', 'Upgrade'), ('Downgrade', 'Downgrade'),
                                     ('Reinstall', 'Reinstall'), ('Removed', 'Remove'), ('Obsoleted', 'Obsoleting')):
                word = translated['YumIO', recorded]
                self.assertEqual(translated['YumIO', '\t{}: %1\n'.format(listed)], '\t{}: %1\n'.format(word))
                self.assertEqual(translated['YumIO', listed + ': %1'], word + ': %1')
            for recorded, marked in (('Install', 'Install'), ('Upgrade', 'Update'), ('Removed', 'Remove')):
                self.assertEqual(translated['Words', marked], translated['YumIO', recorded])

    def test_the_contexts_of_the_catalogues_are_full_class_names(self):
        """When the program runs, it looks for a text under the full name of its class."""
        declared = set()
        for folder in sources.FOLDERS:
            for path in glob.glob(os.path.join(TOP, folder, '*.h')):
                declared |= classes(path)
        for path in CATALOGUES:
            contexts = {context for context, _ in messages(path)}
            self.assertIn('PackageTable::Describe::Instance::Area', contexts)
            # Functions outside classes use the contexts Colors and Metadata. The other contexts are classes of Qt.
            self.assertEqual(contexts - declared, {
                'Colors', 'Metadata', 'QAbstractSpinBox', 'QDialogButtonBox', 'QLineEdit', 'QPlatformTheme',
                'QScrollBar', 'QWidgetTextControl'})

    def test_translations_have_all_placeholders(self):
        for _, source, translation in self.each():
            places = [sorted(re.findall(r'%(?:L?\d{1,2}|n|s)|\{\}', text)) for text in (source, translation)]
            self.assertEqual(places[0], places[1])

    def test_translations_have_the_same_outer_blanks_and_as_many_lines_as_their_texts(self):
        for _, source, translation in self.each():
            self.assertEqual(re.match(r'\s*', translation).group(), re.match(r'\s*', source).group())
            self.assertEqual(re.search(r'\s*$', translation).group(), re.search(r'\s*$', source).group())
            self.assertEqual(translation.count('\n'), source.count('\n'))
            self.assertEqual(translation.count('\t'), source.count('\t'))

    def test_translations_have_the_same_html_tags_as_their_texts(self):
        for _, source, translation in self.each():
            self.assertEqual(re.findall('<[^>]*>', translation), re.findall('<[^>]*>', source))

    def test_names_of_colours_fonts_and_keys_are_not_translated(self):
        for context, source, translation in self.each():
            if context in ('Colors', 'Fonts') or source.startswith('Ctrl+') or NO_WORDS.match(source):
                self.assertEqual(translation, source)

    def test_all_translations_of_internal_errors_begin_with_the_same_words(self):
        for path in CATALOGUES:
            heads = {translation.partition(':')[0] for (_, source), translation in messages(path).items()
                     if source.startswith('Internal error: ')}
            self.assertEqual(len(heads), 1, heads)

    def test_a_translation_has_a_mnemonic_if_the_english_text_has_a_mnemonic(self):
        for context, source, translation in self.each():
            if context == 'MainWindow' or '<' not in source:
                self.assertEqual(mnemonic(translation) is None, mnemonic(source) is None)
                self.assertLessEqual(translation.count('&'), 1)

    def test_mnemonics_in_one_window_are_different(self):
        everywhere = set(itertools.chain.from_iterable(
            [(context, text) for text in texts] for context, texts in TOGETHER))
        for path in CATALOGUES:
            found = messages(path)
            self.assertEqual({key for key in found if mnemonic(key[1])}, everywhere)
            for context, texts in TOGETHER:
                letters = [mnemonic(found[context, text]) for text in texts]
                self.assertEqual(sorted(letters), sorted(set(letters)))

    def test_mnemonics_of_all_parts_of_a_window_are_different(self):
        rows = {'{} {}'.format(context, texts[0]): (context, texts) for context, texts in TOGETHER}
        for path in CATALOGUES:
            found = messages(path)
            for parts in WINDOWS:
                keys = [(rows[part][0], text) for part in parts for text in rows[part][1]]
                for language, shown in (('English', [text for _, text in keys]),
                                        ('German', [found[key] for key in keys])):
                    letters = {}
                    for text in shown:
                        letters.setdefault(mnemonic(text), []).append(text)
                    doubled = [texts for texts in letters.values() if len(texts) > 1]
                    # The English texts "&Cache" and "&Clear Actions" must not change. A second press of their common
                    # key reaches the second of them.
                    if language == 'English' and parts[0] == 'MainWindow &Program':
                        doubled.remove(['&Cache', '&Clear Actions'])
                    self.assertEqual(doubled, [], language)

    def test_german_translations_differ_from_the_english_texts(self):
        """A German text of several words that equals the English text was not translated."""
        found = messages(os.path.join(TOP, 'translations', 'vyre_de.ts'))
        same = {source for (context, source), translation in found.items()
                if source == translation and re.search('[A-Za-z]{2,} [A-Za-z]{2,}', source)
                and context != 'Fonts' and not NO_WORDS.match(source)}
        self.assertEqual(same, set())

    def test_german_quotation_marks_come_in_pairs(self):
        for (_, source), translation in messages(os.path.join(TOP, 'translations', 'vyre_de.ts')).items():
            self.assertEqual(re.sub('[^„“]', '', translation), '„“' * translation.count('„'), translation)
            if '<' not in source:
                self.assertNotIn('"', translation)


if __name__ == '__main__':
    unittest.main(verbosity=2)
