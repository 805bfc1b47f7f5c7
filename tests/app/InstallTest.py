#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the files that "cmake --install" installs.

The share directory must be in the place that ShareTest names. The files for desktops, polkit and man must be valid, and
must be in the places where these programs look for them.

usage: InstallTest.py CMAKE BUILD
"""
import configparser
import os
import re
import shlex
import shutil
import stat
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree as ElementTree

SHARE = 'usr/share/vyre'
DOC = 'usr/share/doc/vyre'
MAN = 'usr/share/man/man8'
DESKTOP = 'usr/share/applications/example.vyre.Vyre.desktop'
METAINFO = 'usr/share/metainfo/example.vyre.Vyre.metainfo.xml'
POLICY = 'usr/share/polkit-1/actions/example.vyre.Vyre.policy'
LICENSE = 'usr/share/licenses/vyre/LICENSE'
POLICY_DTD = '/usr/share/polkit-1/policyconfig-1.dtd'
ICON_SIZES = (16, 22, 24, 32, 48, 64, 128, 256)
SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
CMAKE, BUILD = sys.argv[1:3]


def icon(size):
    return 'usr/share/icons/hicolor/{0}x{0}/apps/vyre.png'.format(size)


class InstallTest(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.top = tempfile.mkdtemp(prefix='install-test-')
        subprocess.run([CMAKE, '--install', BUILD, '--prefix', '/usr'], check=True, stdout=subprocess.DEVNULL,
                       env=dict(os.environ, DESTDIR=cls.top))

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.top)

    def place(self, *parts):
        return os.path.join(self.top, *parts)

    def read(self, *parts):
        with open(self.place(*parts), encoding='utf-8') as stream:
            return stream.read()

    def files(self, top):
        """The paths of all files below this directory, relative to the directory."""
        return {os.path.relpath(os.path.join(directory, name), self.place(top))
                for directory, _, names in os.walk(self.place(top)) for name in names}

    def check_silent(self, *command):
        """Run a validator, and check that it prints nothing."""
        done = subprocess.run(command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT,
                              universal_newlines=True, env=dict(os.environ, LC_ALL='C.UTF-8', MANROFFSEQ=''))
        self.assertEqual((done.stdout, done.returncode), ('', 0))

    # The places of the files

    def test_the_program_is_executable(self):
        self.assertTrue(os.access(self.place('usr/bin/vyre'), os.X_OK))

    def test_the_share_directory_is_installed_without_the_source_drawings_of_its_icons(self):
        source = os.path.join(SOURCE, 'share')
        expected = set()
        for directory, _, names in os.walk(source):
            relative = os.path.relpath(directory, source)
            if 'svg' in relative.split('/') or '__pycache__' in relative:
                continue
            expected |= {os.path.normpath(os.path.join(relative, name)) for name in names}
        # The build turns each .ts file into a .qm file.
        expected |= {'translations/' + re.sub(r'ts$', 'qm', name)
                     for name in os.listdir(os.path.join(SOURCE, 'translations')) if name.endswith('.ts')}
        installed = {path for path in self.files(SHARE) if '/__pycache__/' not in path}
        self.assertEqual(installed, expected)
        self.assertLessEqual({'python/YumIO.py', 'python/vyre/__init__.py', 'python/vyre/program.py'}, installed)
        self.assertIn('icons/package.png', installed)
        self.assertIn('translations/vyre_de.qm', installed)

    def test_each_module_is_installed_in_compiled_form_too(self):
        modules = self.files(SHARE + '/python/vyre')
        sources = {path for path in modules if path.endswith('.py')}
        compiled = modules - sources
        tags = {path.rsplit('.', 2)[1] for path in compiled}
        self.assertEqual(len(tags), 1, tags)
        self.assertEqual(compiled, {'__pycache__/{}.{}.pyc'.format(path[:-len('.py')], *tags) for path in sources})

    def test_compiled_modules_do_not_contain_the_temporary_path_of_the_installation(self):
        compiled = self.place(SHARE, 'python/vyre/__pycache__')
        for name in os.listdir(compiled):
            with open(os.path.join(compiled, name), 'rb') as stream:
                content = stream.read()
            self.assertNotIn(self.top.encode(), content)
            self.assertIn('/{}/python/vyre/{}.py'.format(SHARE, name.split('.')[0]).encode(), content)

    def test_the_interpreter_uses_compiled_modules_even_if_the_time_of_the_source_differs(self):
        directory = self.place(SHARE, 'python')
        source = os.path.join(directory, 'vyre', '__init__.py')
        before = os.stat(source)
        os.utime(source, (1, 1))
        try:
            found = subprocess.run(
                ['/usr/bin/python3', '-B', '-v', '-c', 'import sys; sys.path.insert(0, sys.argv[1]); import vyre',
                 directory], check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, universal_newlines=True)
        finally:
            os.utime(source, ns=(before.st_atime_ns, before.st_mtime_ns))
        self.assertRegex(found.stderr, r'code object from .*vyre/__pycache__/__init__\.')

    def test_programs_of_the_share_directory_are_executable(self):
        for name in os.listdir(self.place(SHARE)):
            path = self.place(SHARE, name)
            if os.path.isfile(path):
                self.assertTrue(os.access(path, os.X_OK), name)

    def test_files_outside_the_share_and_documentation_directories_have_the_usual_paths(self):
        installed = {path for path in self.files('.')
                     if not path.startswith((SHARE + '/', DOC + '/'))}
        self.assertEqual(installed, {
            'usr/bin/vyre', 'usr/bin/vyre-admin', DESKTOP, METAINFO, POLICY, LICENSE, MAN + '/vyre.8',
            MAN + '/vyre-admin.8',
            'usr/share/icons/hicolor/scalable/apps/vyre.svg'} | {icon(size) for size in ICON_SIZES})
        self.assertLessEqual({'README.md', 'CHANGELOG.md'}, self.files(DOC))

    def test_everybody_can_read_all_files_and_only_programs_are_executable(self):
        for path in self.files('.'):
            mode = stat.S_IMODE(os.stat(self.place(path)).st_mode)
            program = path.startswith('usr/bin/') or path in (SHARE + '/webbrowser', SHARE + '/mimeviewer')
            self.assertEqual(oct(mode & 0o7555), oct(0o555 if program else 0o444), path)
            self.assertEqual(mode & 0o022, 0, path)

    # The contents of the files

    def test_each_icon_has_the_size_in_the_name_of_its_directory(self):
        for size in ICON_SIZES:
            with open(self.place(icon(size)), 'rb') as stream:
                head = stream.read(24)
            self.assertEqual(head[:8], b'\x89PNG\r\n\x1a\n')
            self.assertEqual(struct.unpack('>II', head[16:]), (size, size))
        drawing = ElementTree.parse(self.place('usr/share/icons/hicolor/scalable/apps/vyre.svg')).getroot()
        self.assertEqual(drawing.tag, '{http://www.w3.org/2000/svg}svg')

    def test_the_desktop_entry_is_valid(self):
        self.check_silent('desktop-file-validate', '--no-hints', self.place(DESKTOP))

    def test_the_commands_and_the_icon_of_the_desktop_entry_are_installed(self):
        entry = configparser.ConfigParser(interpolation=None)
        entry.optionxform = str
        entry.read(self.place(DESKTOP))
        commands = [section['Exec'] for section in map(entry.__getitem__, entry.sections())]
        self.assertEqual(commands, ['vyre-admin', 'vyre'])
        for command in commands + [entry['Desktop Entry']['TryExec']]:
            self.assertTrue(os.access(self.place('usr/bin', shlex.split(command)[0]), os.X_OK), command)
        name = entry['Desktop Entry']['Icon']
        self.assertTrue(os.path.exists(self.place('usr/share/icons/hicolor/48x48/apps', name + '.png')))

    def test_the_metainfo_is_valid(self):
        done = subprocess.run(['appstreamcli', 'validate', '--no-net', '--no-color', self.place(METAINFO)],
                              stdout=subprocess.PIPE, universal_newlines=True)
        self.assertEqual(done.returncode, 0, done.stdout)
        # The validator also prints hints that do not matter: it does not know the domain of the identifier, and some
        # versions expect the developer's name in an element that other versions do not know.
        found = re.findall('^[EWI]: [^ \n]+ ([^ \n]+)', done.stdout, re.MULTILINE)
        self.assertIn('cid-maybe-not-rdns', found, done.stdout)
        self.assertLessEqual(set(found), {'cid-maybe-not-rdns', 'developer-name-tag-deprecated',
                                          'developer-info-missing'}, done.stdout)

    def test_the_metainfo_refers_to_files_that_are_installed(self):
        component = ElementTree.parse(self.place(METAINFO)).getroot()
        self.assertEqual(component.findtext('launchable'), os.path.basename(DESKTOP))
        self.assertEqual(component.findtext('id') + '.desktop', os.path.basename(DESKTOP))
        for binary in component.iter('binary'):
            self.assertTrue(os.access(self.place('usr/bin', binary.text), os.X_OK), binary.text)

    def test_the_policy_is_valid(self):
        self.check_silent('xmllint', '--noout', '--nonet', '--dtdvalid', POLICY_DTD, self.place(POLICY))

    def test_the_policy_demands_an_administrator_password_for_vyre_admin_and_passes_the_display_on(self):
        action, = ElementTree.parse(self.place(POLICY)).getroot().findall('action')
        notes = {note.get('key'): note.text for note in action.findall('annotate')}
        path = notes['org.freedesktop.policykit.exec.path']
        self.assertEqual(path, '/usr/bin/vyre-admin')
        self.assertTrue(os.access(self.place(path[1:]), os.X_OK))
        self.assertTrue(notes['org.freedesktop.policykit.exec.allow_gui'])
        self.assertEqual({entry.text for entry in action.find('defaults')}, {'auth_admin'})

    def test_manual_pages_have_no_warnings(self):
        for name in os.listdir(self.place(MAN)):
            done = subprocess.run(['man', '--warnings=all', '--encoding=UTF-8', '--local-file', self.place(MAN, name)],
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE, universal_newlines=True,
                                  env=dict(os.environ, LC_ALL='C.UTF-8', MANWIDTH='80', PAGER='cat'))
            self.assertEqual((done.returncode, done.stderr), (0, ''), name)
            self.assertIn(name[:-2].upper() + '(8)', done.stdout)

    def test_the_licence_file_and_the_metainfo_and_the_readme_contain_the_same_licence(self):
        self.assertTrue(self.read(LICENSE).lstrip().startswith('GNU GENERAL PUBLIC LICENSE'))
        self.assertIn('Version 2, June 1991', self.read(LICENSE))
        self.assertIn('either version 2 of the License, or', self.read(LICENSE))
        self.assertIn('<project_license>GPL-2.0-or-later</project_license>', self.read(METAINFO))
        self.assertIn('GPL-2.0-or-later', self.read(DOC, 'README.md'))

    def test_the_metainfo_and_the_change_log_contain_the_version_of_the_build(self):
        with open(os.path.join(SOURCE, 'CMakeLists.txt')) as stream:
            version = re.search(r'^project\(vyre VERSION (\S+)', stream.read(), re.MULTILINE).group(1)
        change, date = re.search(r'^## (\S+) - (\S+)$', self.read(DOC, 'CHANGELOG.md'), re.MULTILINE).groups()
        release = ElementTree.parse(self.place(METAINFO)).getroot().find('releases/release')
        self.assertEqual((change, release.get('version')), (version, version))
        self.assertEqual(release.get('date'), date)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1], verbosity=2)
