#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Compares the manual and the man page with the sources of the program, and builds the manual.

usage: ManualTest.py VYRE [options of unittest...]

VYRE is the path of the built program. The test runs VYRE --help on the caller's display.
"""
import glob
import html.parser
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

import sources
from sources import TOP

sys.path.insert(0, os.path.join(TOP, 'tests', 'support'))

import attributes  # noqa: E402

VYRE = os.path.abspath(sys.argv.pop(1))
BOOK = ('manual.adoc', 'listing.adoc', 'editor-status.adoc', 'form-status.adoc', 'messages.adoc')

# Each pair is a function and the number of one of its arguments. This argument is a title, or the text of a button with
# several words. The manual must mention these texts, but needs no rows for them.
TITLED = {('warning', 4), ('critical', 1), ('scrollable', 0), ('confirm', 0), ('QMessageBox', 1), ('HMessageBox', 1),
          ('showCritical', 1), ('showBox', 1)}
# Arguments that name an operation, for example "collect groups". Other messages contain these texts.
COMPLETING = {('commExceptRaised', 1), ('collected', 1), ('collectExtra', 4), ('cleanType', 0)}
# Functions that show or log their arguments as messages, in progress bars or in empty tables.
REPORTING = {'error', 'warning', 'internalError', 'pythonException', 'pythonExceptionV', 'payloadError',
             'badArguments', 'badPhase', 'critical', 'showCritical', 'QMessageBox', 'HMessageBox', 'append',
             'addObject', 'showBox', 'leaveAlone', 'setEmptyText', 'setRefusal', 'log', 'showNotice',
             'showTextAboutLog', 'warnAndNotice', 'report',
             'startTotal', 'startItem', 'startItemAct', 'startItemActThread', 'setupItemActsThreads',
             'collectExtra'}
# Functions that use their arguments as texts in menus and windows.
SHOWN = {'addMenu', 'addAction', 'add', 'addItem', 'addItems', 'QCheckBox', 'QPushButton', 'addButton',
         'setWindowTitle', 'PlainLabel', 'HGroupBox', 'addLine', 'addPair', 'addPairButton', 'addField', 'addRow',
         'makeLabel', 'setText', 'fill'}
# Sources that have texts, for example headings and tool tips, but no messages.
WITHOUT_MESSAGES = ('advisories/AdvisoryModel.cpp', 'app/StopButton.cpp', 'history/HistoryModel.cpp',
                    'packagetable/Columns.cpp', 'repo/RepoEditorModel.cpp', 'app/base/Fonts.cpp',
                    'yumio/TransactionOutcome.cpp', 'yumio/Words.cpp')
# Texts that the manual need not contain: composed tool tips, the text of About, and texts without words.
OTHER = re.compile(r'Specify the method|%1 \(Must load extra|Any other yum options|<|Clean RPM|'
                   r'(%\d|[ /(){}:%\[\]-])*$')


def squeezed(text):
    return ' '.join(text.split())


def without_mnemonic(text):
    return re.sub(r'&(.)', r'\1', text)


def pattern(text):
    """A regular expression for a message in the manual, where words in capitals replace the variable parts."""
    text = re.sub(r'%\.?\d*[a-z]|%\d|\{\}', '\0', squeezed(text))
    return re.escape(text).replace('\0', '[A-Z][A-Z ]*')


class Book:
    """The text of the manual, and the rows of its tables of messages."""

    def __init__(self):
        self.text = '\n'.join(sources.read('manual', name) for name in BOOK)
        self.lines = self.text.splitlines()
        # Each key is the first cell of a row, if this cell is a literal text. Its value is the text of the next cell.
        self.rows = {}
        for cells in re.findall(r'^\|((?:`\+.*?\+`(?: \+\n)?)+)\n\|([^|]*)', self.text, re.M):
            # Within a table, "\\|" is the character "|".
            message = ' '.join(re.findall(r'`\+(.*?)\+`', cells[0])).replace('\\|', '|')
            self.rows.setdefault(squeezed(message), squeezed(cells[1]))

    def words(self):
        """The text without the markup of AsciiDoc."""
        plain = re.sub(r'(?:btn|kbd):\[(.*?)\]', r'\1', self.text)
        plain = re.sub(r'menu:(\w+)\[(.*?)\]', r'\1 \2', plain)
        return squeezed(re.sub(r'\*|`\+?|\+`', '', plain))


def cpp_messages():
    """Two lists: the texts that need a row of their own in the manual, and the texts that must occur anywhere in it."""
    rows, mentioned = [], []
    for text in sources.all_cpp_texts():
        last = text.calls[-1] if text.calls else ('', 0)
        if text.place.startswith('yumio/Fields.cpp') and last == ('QT_TRANSLATE_NOOP', 1):
            mentioned.append(text)
            continue
        if not sources.is_translated(text):
            if last[0] in ('fprintf', 'report', 'error', 'internalError') and re.search('[a-z]{3}|%s', text.value):
                rows.append(text)
            continue
        calls = text.calls[:-1]
        call = calls[-1] if calls else ('', 0)
        words = len(text.value.split())
        if OTHER.match(text.value) or call[0] == 'setToolTip' or text.place.startswith(WITHOUT_MESSAGES):
            continue
        titled = call in (('critical', 0), ('warning', 0)) and text.place.startswith('yumio/') and words < 4
        if titled or any(each in TITLED | COMPLETING for each in calls) or call[0] in ('confirm', 'QKeySequence'):
            mentioned.append(text)
        elif call[0] == 'collectExtra' and call[1] == 1 or call == ('setText', 0) and words < 2:
            mentioned.append(text)
        elif call[0] in REPORTING and (words > 1 or text.value[-1] == '?') or call == ('setText', 0):
            rows.append(text)
        elif call[0] in ('', 'addRow') and (words > 3 or '%' in text.value or text.value[-1] == '\n'):
            rows.append(text)
        elif call[0] in SHOWN and not is_tool_tip(text):
            mentioned.append(text)
    return rows, mentioned


def is_tool_tip(text):
    """Whether a text is the tool tip in a call that makes a button or a field. Except for one, all other texts in these
    calls have at most three words.
    """
    return text.calls[-2][0] in ('addButton', 'addField') and text.calls[-2][1] > 0 and \
        len(text.value.split()) > 3 and text.value != 'Apply to All with this Host'


def script_messages():
    found = []
    for parts in sources.script_files() + [('share', 'python', 'DesktopOpener.py'), ('share', 'webbrowser'),
                                           ('share', 'mimeviewer'), ('desktop', 'vyre-admin')]:
        found += sources.python_messages(*parts)
    return found


class SourcesTest(unittest.TestCase):
    """Tests that the module "sources" finds the texts of the program. All other tests depend on this module."""

    def test_the_source_parser_finds_each_text_and_the_functions_that_receive_it(self):
        code = 'void f() { // error(tr("no"))\n' \
            '  error(tr("one \\"two\\" "\n "three").arg(x, "y"), b[1, 2], tr("four"));' \
               '\n/* tr("no") */ QMessageBox box(QMessageBox::Critical, tr("five"), \'"\', parent); }'
        texts = [text for text in sources.cpp_texts(code, 'x') if sources.is_translated(text)]
        self.assertEqual([(text.value, text.calls) for text in texts], [
            ('one "two" three', [('f', 0), ('error', 0), ('tr', 0)][1:]),
            ('four', [('error', 2), ('tr', 0)]),
            ('five', [('QMessageBox', 1), ('tr', 0)])])
        self.assertEqual(texts[0].place, 'x:2')

    def test_the_source_parser_finds_messages_that_are_known_to_exist(self):
        rows, mentioned = cpp_messages()
        values = [text.value for text in rows]
        for value in ('Must be run as root to apply changes', 'Unable to read yum configuration file %1',
                      'No package matches.', 'A repository has no Identifier', 'No Identifier specified',
                      '\tInstall (weak): %1\n', 'Completing upgrade of %1', '  Proceed?', 'Applying: OK',
                      'Internal error: method %s not found\n', '%s: unrecogized option: %s\n'):
            self.assertIn(value, values)
        self.assertTrue(any(value.startswith('Package %1 is included in group') for value in values))
        values = [text.value for text in mentioned]
        for value in ('VYRE Yum Error', 'Query', '&Apply Actions', 'Browse Repository', 'View Removable',
                      'Sort Position', 'Requires (pre)',
                      'Ctrl+L', 'collect groups', 'VYRE Log', 'Apply to All with this Host', 'Other Options:'):
            self.assertIn(value, values)
        values = [text.value for text in script_messages()]
        for value in ('There is nothing to do.', 'there is no X display: DISPLAY is not set', 'there is no file {}',
                      'The change logs of %s cannot be read: %s', '{} is not newer than the installed version.'):
            self.assertIn(value, values)


class ManualTest(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.book = Book()

    # Messages

    def test_every_message_of_the_program_has_a_row_in_the_manual(self):
        missing = [text for text in cpp_messages()[0] + script_messages()
                   if not any(re.fullmatch(pattern(text.value), row) for row in self.book.rows)]
        self.assertEqual(missing, [])

    def test_every_row_of_the_message_tables_is_a_message_of_the_program(self):
        patterns = [pattern(text.value) for text in cpp_messages()[0] + script_messages()]
        patterns.append('Initialization|Applying|Preparing')
        strange = [row for row in self.book.rows if not any(re.fullmatch(each, row) for each in patterns)]
        self.assertEqual(strange, [])

    def test_every_row_of_the_message_tables_explains_its_message(self):
        self.assertGreater(len(self.book.rows), 200)
        for message, meaning in self.book.rows.items():
            with self.subTest(message):
                self.assertRegex(meaning, r'^[A-Z`<"].+\.$')

    def test_the_manual_mentions_every_text_of_the_windows(self):
        words = self.book.words()
        missing = []
        for text in cpp_messages()[1]:
            value = squeezed(without_mnemonic(text.value))
            if not re.search(r'(?<!\w)' + pattern(value) + r'(?!\w)', words):
                missing.append(text)
        self.assertEqual(missing, [])

    # Menus

    def test_the_manual_lists_the_columns_of_the_table(self):
        headings = [text.value for text in sources.cpp_texts(sources.read('packagetable', 'Columns.cpp'), 'Columns.cpp')
                    if text.calls and text.calls[-1] == ('QT_TRANSLATE_NOOP', 1)][::2]
        self.assertIn('Repository', headings)
        table = self.book.text.split('|Column |Contents\n', 1)[1].split('|===', 1)[0]
        self.assertEqual(re.findall(r'^\|(.*?) \|', table, re.M), headings)
        # The journeys find the cells of each column by its name in driver.py.
        names = re.search(r'^(ACTION, .*), \*_ = range', sources.read('tests', 'support', 'driver.py'), re.M).group(1)
        self.assertEqual(names.split(', '), [heading.upper().replace(' ', '_') for heading in headings])

    def test_the_manual_lists_the_fields_of_a_description(self):
        fields = [field for field in attributes.fields() if field.label]
        for owner, expected in (
                ('package or a suite', [field.label for field in fields if 'ForGroups' not in field.uses]),
                ('group', [field.label for field in fields if 'Groups' in field.uses])):
            listed = re.search('^For a {} you see:\n(.*?)\\.\n\n'.format(owner), self.book.text, re.M | re.S).group(1)
            self.assertEqual(squeezed(listed).split(', '), expected)

    def test_the_manual_has_a_row_with_the_key_of_every_menu_entry(self):
        code = sources.read('app', 'MainWindowWidgets.cpp')
        code = code[code.index('void MainWindow::createMenuBar()'):]
        code = code[:code.index('\n}')]
        titles = dict(re.findall(r'(\w+) = addMenu\(tr\("(.*?)"\)', code))
        entries = re.findall(r'(\w+)->addAction\(\s*tr\("(.*?)"\)(.*?)\);', code, re.S)
        self.assertEqual(len(entries), code.count('addAction('))
        self.assertGreater(len(entries), 9)
        for menu, entry, rest in entries:
            name = 'menu:{}[{}]'.format(without_mnemonic(titles[menu]), without_mnemonic(entry))
            key = re.search(r'QKeySequence\((?:tr\("(.*?)"\)|Qt::Key_(\w+))\)', rest)
            expected = 'kbd:[{}]'.format(key.group(1) or key.group(2)) if key else ''
            with self.subTest(name):
                row = [line for line in self.book.lines if line.startswith('|' + name)]
                self.assertEqual(len(row), 1)
                self.assertEqual(row[0].split('|')[2].strip(), expected)

    def test_the_manual_is_installed_in_the_directory_that_the_help_menu_opens(self):
        place = re.search(r'directory = QStringLiteral\("(.*?)"\)', sources.read('app', 'Manuals.h')).group(1)
        with open(os.path.join(os.path.dirname(VYRE), 'manual', 'cmake_install.cmake')) as stream:
            script = stream.read()
        prefix = re.search(r'set\(CMAKE_INSTALL_PREFIX "(.*?)"\)', script).group(1)
        self.assertEqual(set(re.findall(r'DESTINATION "\$\{CMAKE_INSTALL_PREFIX\}(/share/doc\S*)"', script)),
                         {'/share/doc/vyre'})
        if prefix == '/usr':
            self.assertEqual(place, prefix + '/share/doc/vyre')
        for name in ('html', 'manual.pdf'):
            self.assertRegex(script, r'/manual/{}"'.format(name))
            self.assertIn('%1/{}'.format(name), sources.read('app', 'Manuals.cpp'))

    # Differences from dnf

    def test_the_manual_and_the_developer_page_list_the_same_differences_from_dnf(self):
        table = self.book.text.split('\n[#differences]\n', 1)[1].split('\n|===\n', 2)[1]
        points = re.findall(r'(?m)^\n\|(.+)\n\|', table)
        self.assertGreater(len(points), 15)
        self.assertEqual(len(points), len(set(points)))
        # The first row has the headings. Each of the other rows has three cells, which begin with "|".
        self.assertEqual(len(re.findall(r'(?m)^\|', table)), 1 + 3 * len(points))
        text = sources.read('docs', 'dnf.md')
        named = re.findall(r'\*Different\* \[([^]]+)\]: ', text)
        # Besides the differences, the page contains "*Different*" once, where it explains this word.
        self.assertEqual(text.count('*Different*'), 1 + len(named))
        self.assertEqual(sorted(set(named) - set(points)), [], 'differences in docs/dnf.md that the manual lacks')
        self.assertEqual(sorted(set(points) - set(named)), [], 'differences in the manual that docs/dnf.md lacks')

    # Links and pictures

    def test_every_cross_reference_in_the_manual_has_its_anchor(self):
        places = set(re.findall(r'^\[(?:glossary)?#([\w-]+)\]', self.book.text, re.M))
        self.assertEqual({name for name in re.findall(r'<<([\w-]+)>>', self.book.text)} - places, set())

    def test_every_picture_and_icon_that_the_manual_names_exists(self):
        named = set(re.findall(r'image::?(\S+?)\[', self.book.text))
        pictures = {name for name in named if name.startswith('pictures/')}
        script = sources.read('manual', 'make-pictures')
        made = set(re.findall(r"pictures\.(?:take|window)\('([\w-]+)'", script))
        self.assertEqual(pictures, {'pictures/{}.png'.format(name) for name in made})
        self.assertGreater(len(pictures), 10)
        for name in named - pictures:
            self.assertTrue(os.path.isfile(os.path.join(TOP, 'share', name)), name)

    def test_the_manual_can_be_built_without_its_pictures(self):
        blocks = re.findall(r'(?ms)^ifdef::pictures\[\]\n(.*?)^endif::\[\]\n', self.book.text)
        self.assertEqual([len(re.findall('image::pictures/', block)) for block in blocks], [1] * len(blocks))
        self.assertEqual(self.book.text.count('image::pictures/'), len(blocks))

    # Options

    def test_the_manual_lists_the_options_of_the_program(self):
        answer = subprocess.run([VYRE, '--help'], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, timeout=60)
        usage = answer.stdout.decode()
        self.assertIn('options:', usage)
        # The usage text mentions -d only in an explanation. This option does not exist.
        options = set(re.findall(r'(?<![\w-])(-[A-Za-z](?= |,)|--[a-z-]+)', usage)) - {'-d'}
        self.assertGreater(len(options), 15)
        self.assertIn('--enablerepo', options)
        chapter = self.book.text[self.book.text.index('[#options]'):]
        chapter = chapter[:chapter.index('\n[#')]
        page = sources.read('manual', 'vyre.8').replace('\\-', '-').replace('\\', '')
        accepted = set(re.findall(r'\{"([a-z-]+)", (?:no|required)_argument', sources.read('app', 'CommandLine.cpp')))
        self.assertEqual({option[2:] for option in options if option.startswith('--')}, accepted)
        for option in sorted(options):
            with self.subTest(option):
                self.assertRegex(chapter, r'`' + option + r'[ =`]')
                self.assertRegex(page, r'(?m)^(\.BR? .*|\.TP.*|\.BI .*)' + option + r'\b')
        for name in re.findall(r'(?m)^\.B[IR]? .*?(--[a-z-]+)', page):
            self.assertIn(name, options)
        for name in re.findall(r'`(--[a-z-]+)', chapter):
            self.assertIn(name, options)

    def test_the_man_page_describes_every_environment_variable_that_the_program_reads(self):
        page = sources.read('manual', 'vyre.8')
        # The program reads these variables with nonEmptyVariable(), which the expression below does not find.
        names = {'XDG_RUNTIME_DIR', 'TMPDIR'}
        for folder in sources.FOLDERS + ('share/python', 'share/python/vyre'):
            for path in glob.glob(os.path.join(TOP, folder, '*.*')):
                with open(path, encoding='utf-8') as stream:
                    names |= set(re.findall(r'''(?:getenv|environmentVariable\w+|environ\.get)\(["']([A-Z_]+)''',
                                            stream.read()))
        names -= {'PKEXEC_UID', 'SUDO_UID'}  # these variables come from pkexec and sudo, not from the user
        self.assertGreater(len(names), 3)
        for name in names:
            with self.subTest(name):
                self.assertIn('`{}`'.format(name), self.book.text)
                self.assertIn(name, page)

    def test_the_man_page_is_valid(self):
        path = os.path.join(TOP, 'manual', 'vyre.8')
        answer = subprocess.run(['mandoc', '-T', 'lint', '-W', 'warning', path], stdout=subprocess.PIPE)
        self.assertEqual(answer.stdout.decode(), '')
        answer = subprocess.run(['mandoc', '-T', 'ascii', path], stdout=subprocess.PIPE, check=True)
        text = re.sub('.\b', '', answer.stdout.decode())
        for heading in ('NAME', 'SYNOPSIS', 'DESCRIPTION', 'OPTIONS', 'EXIT STATUS', 'ENVIRONMENT', 'FILES',
                        'SEE ALSO'):
            self.assertRegex(text, '(?m)^{}$'.format(heading))


class Page(html.parser.HTMLParser):
    """The anchors of a page, its references to anchors, and its references to files."""

    def __init__(self, text):
        super().__init__()
        self.places, self.references, self.files = set(), [], []
        self.feed(text)

    def handle_starttag(self, tag, attributes):
        attributes = dict(attributes)
        if 'id' in attributes:
            self.places.add(attributes['id'])
        for name in ('href', 'src'):
            value = attributes.get(name)
            if value is not None:
                (self.references if value.startswith('#') else self.files).append(value)


class BuildTest(unittest.TestCase):
    """Tests of the built manual. An icon stands in for each picture."""

    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.mkdtemp(prefix='manual-test-')
        pictures = os.path.join(cls.folder, 'pictures')
        os.mkdir(pictures)
        for name in re.findall(r'image::pictures/(\S+?)\[', Book().text):
            shutil.copy(os.path.join(TOP, 'share', 'icons', 'package.png'), os.path.join(pictures, name))
        cls.built = os.path.join(cls.folder, 'built')
        answer = subprocess.run([os.path.join(TOP, 'manual', 'build-manual'), '9.8.7', cls.built, pictures],
                                stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        cls.status, cls.output = answer.returncode, answer.stdout.decode()

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.folder)

    def test_building_the_manual_prints_no_messages(self):
        self.assertEqual((self.status, self.output), (0, ''))

    def test_the_html_page_refers_only_to_existing_files_and_anchors(self):
        with open(os.path.join(self.built, 'html', 'index.html'), encoding='utf-8') as stream:
            text = re.sub(r'(?s)/\*.*?\*/', '', stream.read())
        page = Page(text)
        self.assertGreater(len(page.references), 50)
        for reference in page.references:
            self.assertIn(reference[1:], page.places)
        for name in page.files:
            # All files are local, because the reader may have no network.
            self.assertTrue(os.path.isfile(os.path.join(self.built, 'html', name)), name)
        self.assertIn('pictures/main-window.png', page.files)
        self.assertIn('icons/updateBox.png', page.files)
        self.assertNotRegex(text, r'url\(|@import|<script')
        self.assertIn('9.8.7', text)
        self.assertNotRegex(text, r'&lt;&lt;|\{[a-z-]+\}')

    def test_the_printed_manual_is_a_pdf_file(self):
        with open(os.path.join(self.built, 'manual.pdf'), 'rb') as stream:
            content = stream.read()
        self.assertEqual(content[:5], b'%PDF-')
        self.assertGreater(len(content), 100000)


if __name__ == '__main__':
    unittest.main(verbosity=2)
