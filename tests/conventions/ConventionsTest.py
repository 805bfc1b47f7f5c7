#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of tools/check-conventions. Each test makes a small project without findings, and breaks one convention."""
import os
import subprocess
import tempfile
import textwrap
import unittest

TOOLS = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), 'tools')
CHECKER = os.path.join(TOOLS, 'check-conventions')

GOOD = {
    'CMakeLists.txt': 'add_subdirectory(low)\nadd_subdirectory(high)\nadd_subdirectory(tests)\n',
    'low/CMakeLists.txt': 'vyre_library(vyre_low\n    SOURCES Thing.cpp\n    LINKS Qt5::Widgets)\n',
    'low/Thing.h': '''\
        // A thing.

        #ifndef LOW_THING_H
        #define LOW_THING_H

        class Thing
        {
        };

        #endif
        ''',
    'low/Thing.cpp': '''\
        #include "low/Thing.h"

        #include <QLabel>
        ''',
    'high/CMakeLists.txt': 'vyre_library(vyre_high\n    SOURCES Window.cpp\n    LINKS vyre_low)\n',
    'high/Window.h': '''\
        // A window.

        #ifndef HIGH_WINDOW_H
        #define HIGH_WINDOW_H

        #include "low/Thing.h"

        #endif
        ''',
    'high/Window.cpp': '''\
        #include "high/Window.h"

        void Window::fill(const QString& text)
        {
            // signals: and emit here mean nothing.
            QLabel* heading = new PlainLabel(tr("Heading"));
            auto* value = new PlainLabel;
            value->setWordWrap(true);
            value->setText(text);
            value->setObjectName("value");
            heading->setText(wide ? tr("A wide one") : tr("Narrow"));
            QMessageBox::critical(this, tr("Error"), tr("It failed."));
            Q_EMIT filled();
        }
        ''',
    'tests/high/CMakeLists.txt': 'vyre_test(Window LINKS vyre_high)\n',
    'tests/high/WindowTest.cpp': '#include "high/Window.h"\n',
    'tests/low/CMakeLists.txt': 'vyre_test(Thing LINKS vyre_low)\n',
    'tests/low/ThingTest.cpp': '#include "low/Thing.h"\n',
    'tests/journeys/CMakeLists.txt': 'vyre_journeys(first)\n',
    'tests/journeys/test_first.py': 'pass\n',
    'tools/go': '#!/bin/sh\ntrue\n',
}


class ConventionsTest(unittest.TestCase):

    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = directory.name
        for path, text in GOOD.items():
            self.write(path, textwrap.dedent(text))
        os.chmod(os.path.join(self.root, 'tools/go'), 0o755)

    def write(self, path, text):
        full = os.path.join(self.root, path)
        os.makedirs(os.path.dirname(full), exist_ok=True)
        with open(full, 'w', encoding='utf-8', newline='') as file:
            file.write(text)

    def read(self, path):
        with open(os.path.join(self.root, path), encoding='utf-8') as file:
            return file.read()

    def change(self, path, before, after):
        text = self.read(path)
        self.assertIn(before, text)
        self.write(path, text.replace(before, after))

    def found(self, *files, status=1):
        """Runs the checker on these files, or on the whole project, and returns the lines that it prints."""
        done = subprocess.run([CHECKER, '--root', self.root] + [os.path.join(self.root, path) for path in files],
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.assertEqual((done.returncode, done.stderr), (status, ''))
        return done.stdout.splitlines()

    def test_nothing_is_reported_in_a_project_that_follows_all_rules(self):
        self.assertEqual(self.found(status=0), [])

    def test_an_include_guard_with_a_wrong_name_is_reported(self):
        self.write('low/Thing.h', self.read('low/Thing.h').replace('LOW_THING_H', 'THING_H'))
        self.assertEqual(self.found(), ['low/Thing.h:3: the include guard is not LOW_THING_H'])

    def test_a_missing_include_guard_is_reported(self):
        self.write('low/Thing.h', '// A thing.\n')
        self.assertEqual(self.found(), ['low/Thing.h:1: the include guard LOW_THING_H is missing'])

    def test_a_header_without_a_comment_is_reported(self):
        self.change('low/Thing.h', '// A thing.\n\n', '')
        self.assertEqual(self.found(), ['low/Thing.h:1: the header does not begin with a comment about its purpose'])

    def test_sources_without_a_licence_line_are_reported_and_corrected_on_request(self):
        self.write('LICENSE', 'Do what you like.\n')
        self.write('high/thing.desktop', '[Desktop Entry]\n')
        self.write('high/thing.svg', '<svg xmlns="http://www.w3.org/2000/svg">\n</svg>\n')
        found = [line.split(':', 1)[0] for line in self.found()]
        self.assertEqual(found, sorted(list(GOOD) + ['high/thing.desktop', 'high/thing.svg']))
        self.assertIn('low/Thing.h:1: the line "// SPDX-License-Identifier: GPL-2.0-or-later" is missing', self.found())
        self.assertIn('tools/go:2: the line "# SPDX-License-Identifier: GPL-2.0-or-later" is missing', self.found())
        before = self.read('low/Thing.h')
        for _ in range(2):
            subprocess.run([CHECKER, '--root', self.root, '--add-licence'], check=True)
            self.assertEqual(self.found(status=0), [])
            self.assertEqual(self.read('low/Thing.h'), '// SPDX-License-Identifier: GPL-2.0-or-later\n\n' + before)
            self.assertEqual(self.read('high/thing.desktop'),
                             '# SPDX-License-Identifier: GPL-2.0-or-later\n[Desktop Entry]\n')
            self.assertEqual(self.read('high/thing.svg'),
                             '<svg xmlns="http://www.w3.org/2000/svg">\n'
                             '  <!-- SPDX-License-Identifier: GPL-2.0-or-later -->\n</svg>\n')
        # The line that names the licence does not count as a comment about the purpose.
        self.write('low/Thing.h', '// SPDX-License-Identifier: GPL-2.0-or-later\n\n' + before.split('\n\n', 1)[1])
        self.assertEqual(self.found(), ['low/Thing.h:1: the header does not begin with a comment about its purpose'])

    def test_keywords_of_qt_are_reported(self):
        for written, word in (('emit filled();', 'emit'), ('public slots:', 'slots'), ('signals:', 'signals'),
                              ('forever {', 'forever'), ('foreach (int i, list) {', 'foreach')):
            with self.subTest(word):
                self.write('low/Thing.cpp', '#include "low/Thing.h"\n\n' + written + '\n')
                found = self.found()
                self.assertEqual(len(found), 1, found)
                self.assertTrue(found[0].startswith('low/Thing.cpp:3: Qt\'s keyword "{}"'.format(word)), found)

    def test_an_include_of_a_header_in_a_higher_folder_is_reported(self):
        self.change('low/Thing.cpp', '#include <QLabel>', '#include "high/Window.h"')
        self.assertEqual(self.found(), ['low/Thing.cpp:3: a circular include: high/Window -> low/Thing -> high/Window',
                                        'low/Thing.cpp:3: low does not link the folder of "high/Window.h"'])

    def test_an_include_of_a_header_of_the_tests_is_reported(self):
        self.write('tests/low/Made.h', '// Made.\n\n#ifndef TESTS_LOW_MADE_H\n#define TESTS_LOW_MADE_H\n#endif\n')
        self.change('low/Thing.cpp', '#include <QLabel>', '#include "tests/low/Made.h"')
        self.assertEqual(self.found(), ['low/Thing.cpp:3: low does not link the folder of "tests/low/Made.h"'])

    def test_a_link_to_a_higher_folder_is_reported(self):
        self.change('low/CMakeLists.txt', 'Qt5::Widgets', 'vyre_high')
        self.assertEqual(self.found(), ['low/CMakeLists.txt:1: low links high, which is above it'])

    def test_an_include_of_a_header_in_a_folder_that_is_not_linked_is_reported(self):
        self.change('high/CMakeLists.txt', 'LINKS vyre_low', 'LINKS Qt5::Widgets')
        self.assertEqual(self.found(), ['high/Window.h:6: high does not link the folder of "low/Thing.h"'])

    def test_an_include_path_that_does_not_begin_at_the_project_root_is_reported(self):
        self.change('low/Thing.cpp', '#include <QLabel>', '#include "Thing.h"')
        self.assertEqual(self.found(), ['low/Thing.cpp:3: includes are named from the root: "Thing.h"'])

    def test_an_include_of_a_missing_header_is_reported(self):
        self.change('low/Thing.cpp', '#include <QLabel>', '#include "low/Gone.h"')
        self.assertEqual(self.found(), ['low/Thing.cpp:3: "low/Gone.h" does not exist'])

    def test_headers_that_include_each_other_are_reported(self):
        self.write('low/Other.h', '// Another.\n\n#ifndef LOW_OTHER_H\n#define LOW_OTHER_H\n'
                                  '#include "low/Thing.h"\n#endif\n')
        self.write('tests/low/OtherTest.cpp', '#include "low/Other.h"\n')
        self.write('tests/low/CMakeLists.txt', 'vyre_test(Thing LINKS vyre_low)\nvyre_test(Other LINKS vyre_low)\n')
        self.change('low/Thing.h', 'class Thing', '#include "low/Other.h"\n\nclass Thing')
        self.assertEqual(self.found(), ['low/Other.h:5: a circular include: low/Thing -> low/Other -> low/Thing'])

    def test_classes_that_include_each_other_are_reported(self):
        self.write('low/Other.h', '// Another.\n\n#ifndef LOW_OTHER_H\n#define LOW_OTHER_H\n#endif\n')
        self.write('low/Other.cpp', '#include "low/Other.h"\n\n#include "low/Thing.h"\n')
        self.write('tests/low/OtherTest.cpp', '#include "low/Other.h"\n')
        self.write('tests/low/CMakeLists.txt', 'vyre_test(Thing LINKS vyre_low)\nvyre_test(Other LINKS vyre_low)\n')
        self.change('low/CMakeLists.txt', 'Thing.cpp', 'Thing.cpp Other.cpp')
        self.assertEqual(self.found(status=0), [])
        finding = ['low/Other.cpp:3: a circular include: low/Thing -> low/Other -> low/Thing']
        self.change('low/Thing.cpp', '#include <QLabel>', '#include "low/Other.h"')
        self.assertEqual(self.found(), finding)
        self.change('low/Thing.cpp', '#include "low/Other.h"', '#include <QLabel>')
        self.change('low/Thing.h', 'class Thing', '#include "low/Other.h"\n\nclass Thing')
        self.assertEqual(self.found(), finding)

    def test_a_window_class_that_includes_a_python_header_is_reported(self):
        self.change('high/Window.cpp', '#include "high/Window.h"\n',
                    '#include "high/Window.h"\n\n#include <Python.h>\n')
        self.assertEqual(self.found(), ['high/Window.cpp:3: <Python.h> is for python and yumio only'])

    def test_a_window_class_that_includes_a_python_header_indirectly_is_reported(self):
        for folder, links in (('python', 'Python'), ('yumio', 'vyre_python')):
            self.write(folder + '/CMakeLists.txt',
                       'vyre_library(vyre_{}\n    SOURCES\n    LINKS {})\n'.format(folder, links))
            self.write('tests/{0}/CMakeLists.txt'.format(folder), 'vyre_test({} LINKS vyre_{})\n'.format(
                folder.capitalize(), folder))
            self.write('tests/{}/{}Test.cpp'.format(folder, folder.capitalize()), '')
        self.write('python/Python.h',
                   '// It.\n\n#ifndef PYTHON_PYTHON_H\n#define PYTHON_PYTHON_H\n#include <Python.h>\n#endif\n')
        self.write('yumio/Yumio.h', '// It.\n\n#ifndef YUMIO_YUMIO_H\n#define YUMIO_YUMIO_H\n'
                                    '#include "python/Python.h"\n#endif\n')
        self.change('CMakeLists.txt', 'add_subdirectory(low)\n',
                    'add_subdirectory(low)\nadd_subdirectory(python)\nadd_subdirectory(yumio)\n')
        self.assertEqual(self.found(status=0), [])
        self.change('high/CMakeLists.txt', 'vyre_low', 'vyre_low vyre_yumio')
        self.change('high/Window.cpp', '#include "high/Window.h"\n',
                    '#include "high/Window.h"\n\n#include "yumio/Yumio.h"\n')
        self.assertEqual(self.found(), ['high/Window.cpp:3: "yumio/Yumio.h" includes <Python.h>, '
                                        'which is for python and yumio only'])

    def test_a_source_file_that_does_not_include_its_own_header_first_is_reported(self):
        self.write('low/Thing.cpp', '#include <QLabel>\n\n#include "low/Thing.h"\n')
        self.assertEqual(self.found(), ['low/Thing.cpp:1: the first include is not "low/Thing.h"'])

    def test_a_folder_diagram_that_differs_from_the_linked_folders_is_reported(self):
        self.write('docs/architecture.md', 'The links:\n\n```mermaid\nflowchart TD\n    high --> low\n```\n')
        self.assertEqual(self.found(status=0), [])
        differ = 'docs/architecture.md:3: the diagram and the build file differ: '
        self.change('docs/architecture.md', 'high --> low', 'low --> high')
        self.assertEqual(self.found(), [differ + 'high --> low', differ + 'low --> high'])
        self.write('docs/architecture.md', 'No links.\n')
        self.assertEqual(self.found(), ['docs/architecture.md:1: the diagram of the folders is missing'])

    def test_a_const_that_follows_its_type_is_reported(self):
        self.change('high/Window.cpp', 'const QString& text', 'QList<QString> const& text')
        self.assertEqual(self.found(), ['high/Window.cpp:3: "const" is behind its type: write "const X&"'])

    def test_a_number_conversion_without_static_cast_is_reported(self):
        self.change('high/Window.cpp', 'Q_EMIT filled();', 'Q_EMIT filled(int(sizeof text));')
        self.assertEqual(self.found(), ['high/Window.cpp:13: write static_cast<int>(...)'])

    def test_a_source_file_that_no_target_builds_is_reported(self):
        self.change('low/CMakeLists.txt', 'Thing.cpp', '# Thing.cpp')
        self.assertEqual(self.found(), ['low/Thing.cpp:1: low/CMakeLists.txt does not name it'])

    def test_an_unregistered_test_source_is_reported(self):
        self.write('tests/low/CMakeLists.txt', '# vyre_test(Thing LINKS vyre_low)\n')
        self.assertEqual(self.found(), ['tests/low/ThingTest.cpp:1: tests/low/CMakeLists.txt does not name it'])

    def test_an_unregistered_journey_is_reported(self):
        self.write('tests/journeys/test_second.py', 'pass\n')
        self.assertEqual(self.found(),
                         ['tests/journeys/test_second.py:1: tests/journeys/CMakeLists.txt does not name it'])

    def test_a_class_without_a_test_is_reported(self):
        os.remove(os.path.join(self.root, 'tests/low/ThingTest.cpp'))
        self.assertEqual(self.found(), ['low/Thing.h:1: tests/low/ThingTest.cpp is missing'])

    def test_a_class_is_accepted_if_each_of_several_tests_covers_one_of_its_subjects(self):
        os.rename(os.path.join(self.root, 'tests/low/ThingTest.cpp'),
                  os.path.join(self.root, 'tests/low/ThingColourTest.cpp'))
        self.write('tests/low/CMakeLists.txt', 'vyre_test(ThingColour LINKS vyre_low)\n')
        self.assertEqual(self.found(status=0), [])
        # If ThingColour is also a class, ThingColourTest belongs to this class, and Thing has no test.
        self.write('low/CMakeLists.txt', 'vyre_library(vyre_low SOURCES Thing.cpp ThingColour.h)\n')
        self.write('low/ThingColour.h',
                   '// A colour.\n\n#ifndef LOW_THINGCOLOUR_H\n#define LOW_THINGCOLOUR_H\n\n#endif\n')
        self.assertEqual(self.found(), ['low/Thing.h:1: tests/low/ThingTest.cpp is missing'])

    def test_a_test_source_for_a_missing_class_is_reported(self):
        self.write('tests/low/GoneTest.cpp', '#include <QtTest>\n')
        self.write('tests/low/CMakeLists.txt', 'vyre_test(Thing LINKS vyre_low)\nvyre_test(Gone LINKS vyre_low)\n')
        self.assertEqual(self.found(), ['tests/low/GoneTest.cpp:1: the class that it tests is missing'])

    def test_a_text_without_tr_is_reported(self):
        for before, after, text in (('new PlainLabel(tr("Heading"))', 'new PlainLabel("Heading")', '"Heading"'),
                                    (': tr("Narrow")', ': QStringLiteral("Narrow")', '"Narrow"'),
                                    ('setObjectName("value")', 'setToolTip(QStringLiteral("A value"))', '"A value"')):
            with self.subTest(text):
                self.setUp()
                self.change('high/Window.cpp', before, after)
                found = [line for line in self.found() if 'Literal' not in line]
                self.assertEqual(len(found), 1, found)
                self.assertTrue(found[0].endswith(': a text that a user reads does not go through tr(): ' + text),
                                found)

    def test_a_label_class_that_interprets_markup_is_reported(self):
        for before, after, line in (('new PlainLabel(tr("Heading"))', 'new QLabel(tr("Heading"))', 6),
                                    ('auto* value = new PlainLabel;', 'QLabel value(text);', 7),
                                    ('auto* value = new PlainLabel;', 'auto value = std::make_unique<QLabel>();', 7),
                                    ('auto* value = new PlainLabel;', 'class Value : public QLabel {};', 7),
                                    ('value->setWordWrap(true)', 'value->setTextFormat(Qt::RichText)', 8)):
            with self.subTest(after):
                self.setUp()
                self.change('high/Window.cpp', before, after)
                self.assertEqual(self.found(), ['high/Window.cpp:{}: a label that may show its text as markup: use '
                                                'PlainLabel'.format(line)])
        self.setUp()
        self.change('high/Window.h', '#endif', 'class QLabel;\nvoid fill(const QList<QLabel*>& labels);\n\n#endif')
        self.assertEqual(self.found(status=0), [])

    def test_a_message_box_class_that_interprets_markup_is_reported(self):
        message = 'a message box that may show a foreign text as markup: use HMessageBox'
        self.change('high/Window.cpp', 'tr("It failed.")', 'tr("%1 failed.").arg(text)')
        self.assertEqual(self.found(), ['high/Window.cpp:12: ' + message])
        self.setUp()
        box = '    QMessageBox box(QMessageBox::Critical, tr("Error"), text);\n'
        self.change('high/Window.cpp', '    Q_EMIT', box + '    Q_EMIT')
        self.assertEqual(self.found(), ['high/Window.cpp:13: ' + message])
        self.change('high/Window.cpp', box, '    HMessageBox box(QMessageBox::Critical, tr("Error"), text);\n')
        self.assertEqual(self.found(status=0), [])

    def test_a_tool_tip_or_title_that_is_set_without_the_literal_class_is_reported(self):
        for call, wrapped in (('value->setToolTip(text);', 'value->setToolTip(Literal::toolTip(text));'),
                              ('setToolTip(tr("In %1").arg(text));', 'setToolTip(tr("Here"));'),
                              ('box.setWindowTitle(text);', 'box.setWindowTitle(Literal::title(text));'),
                              ('setWindowTitle(Literal::toolTip(text));', 'setWindowTitle(QString());'),
                              ('QToolTip::showText(place, text);',
                               'QToolTip::showText(place, Literal::toolTip(text));'),
                              ('value->setToolTip(wide ? text : tr("Here"));',
                               'value->setToolTip(wide ? tr("There") : tr("Here"));'),
                              ('tip->setToolTip(text);', 'cleanAction->setToolTip(text);')):
            with self.subTest(call):
                self.setUp()
                name = next(name for name in ('setToolTip', 'setWindowTitle', 'showText') if name in call)
                self.change('high/Window.cpp', '    Q_EMIT', '    ' + call + '\n    Q_EMIT')
                self.assertEqual(self.found(), ['high/Window.cpp:13: a foreign text that Qt may interpret: use a '
                                                'function of Literal in ' + name])
                self.change('high/Window.cpp', call, wrapped)
                self.assertEqual(self.found(status=0), [])

    def test_a_comment_about_unfinished_code_is_reported(self):
        word = 'TO' + 'DO'
        self.change('low/Thing.h', '// A thing.', '// A thing. ' + word)
        self.assertEqual(self.found(), ['low/Thing.h:1: a note of something unfinished: ' + word])

    def test_a_non_executable_script_is_reported(self):
        os.chmod(os.path.join(self.root, 'tools/go'), 0o644)
        self.assertEqual(self.found(), ['tools/go:1: it has a first line "#!" and is not executable'])

    def test_an_executable_file_without_an_interpreter_line_is_reported(self):
        self.write('tools/go', 'true\n')
        self.assertEqual(self.found(), ['tools/go:1: it is executable and has no first line "#!"'])

    def test_trailing_white_space_and_long_lines_are_reported(self):
        for text, finding in (('pass \n', '1: the line ends in white space'),
                              ('pass\r\n', '1: the line ends in white space'),
                              ('pass', '1: the last line has no end'),
                              ('if True:\n\tpass\n', '2: a tabulator'),
                              ('a = 1' + '+1' * 60 + '\n', '1: the line has 125 characters; 120 are agreed on')):
            with self.subTest(finding):
                self.write('tests/journeys/test_first.py', text)
                self.assertEqual(self.found(), ['tests/journeys/test_first.py:' + finding])

    def test_a_long_line_of_cpp_is_reported(self):
        self.change('low/Thing.cpp', '#include <QLabel>', '// ' + 'x' * 108)
        self.assertEqual(self.found(), ['low/Thing.cpp:3: the line has 111 characters; 110 are agreed on'])

    def test_a_file_of_tests_with_more_than_800_lines_is_reported(self):
        for path in ('tests/low/ThingTest.cpp', 'tests/journeys/test_first.py', 'tools/box/test_box.py'):
            with self.subTest(path):
                self.setUp()
                self.write(path, '\n' * 800)
                self.assertEqual(self.found(status=0), [])
                self.write(path, '\n' * 801)
                self.assertEqual(self.found(), [path + ':801: the file has 801 lines; 800 are agreed on: divide its '
                                                       'tests by subject'])
        # The limit does not apply to other files.
        self.setUp()
        self.write('low/Thing.cpp', '#include "low/Thing.h"\n' + '\n' * 801)
        self.write('tests/low/answers.txt', '\n' * 801)
        self.assertEqual(self.found(status=0), [])

    def test_an_exception_to_a_rule_is_accepted_only_with_a_reason(self):
        self.change('high/Window.cpp', 'new PlainLabel(tr("Heading"));',
                    'new QLabel(tr("%1").arg(2)); // convention: a number is no markup')
        self.assertEqual(self.found(status=0), [])
        self.change('high/Window.cpp', 'convention: a number is no markup', 'convention:')
        self.assertEqual(len(self.found()), 1)

    def test_only_the_files_on_the_command_line_are_checked(self):
        self.write('tests/journeys/test_first.py', 'pass \n')
        self.change('low/Thing.h', '// A thing.\n\n', '')
        self.assertEqual(self.found('tests/journeys/test_first.py'),
                         ['tests/journeys/test_first.py:1: the line ends in white space'])
        self.assertEqual(self.found('high/Window.cpp', status=0), [])

    def test_generated_files_are_ignored(self):
        self.write('build-any/Thing.h', 'no guard \n')
        self.write('low/__pycache__/Thing.h', 'no guard \n')
        self.assertEqual(self.found(status=0), [])

    def test_the_list_option_prints_the_kind_of_each_file(self):
        done = subprocess.run([CHECKER, '--root', self.root, '--list'], stdout=subprocess.PIPE, text=True, check=True)
        self.assertEqual([line for line in done.stdout.splitlines() if line.split()[1] in
                          ('low/Thing.h', 'tools/go', 'CMakeLists.txt', 'tests/journeys/test_first.py')],
                         ['text CMakeLists.txt', 'c++ low/Thing.h', 'python tests/journeys/test_first.py',
                          'shell tools/go'])


if __name__ == '__main__':
    unittest.main()
