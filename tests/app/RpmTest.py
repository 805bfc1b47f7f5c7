#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of the rpm package that tools/build-rpm makes from the build folder.

usage: RpmTest.py CMAKE BUILD
"""
import os
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

SOURCE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
TOOL = os.path.join(SOURCE, 'tools', 'build-rpm')
SPEC = os.path.join(SOURCE, 'packaging', 'vyre.spec')
CMAKE, BUILD = sys.argv[1:3]


def run(*command, **options):
    return subprocess.run(command, check=True, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          universal_newlines=True, **options).stdout


class RpmTest(unittest.TestCase):

    @classmethod
    def setUpClass(cls):
        cls.top = tempfile.mkdtemp(prefix='rpm-test-')
        cls.addClassCleanup(shutil.rmtree, cls.top)
        cls.directory = os.path.join(cls.top, 'made for it')
        cls.told = run(TOOL, '-B', BUILD, cls.directory).splitlines()
        cls.rpm = os.path.join(cls.directory, os.listdir(cls.directory)[0])
        cls.stage = os.path.join(cls.top, 'stage')
        run(CMAKE, '--install', BUILD, '--prefix', '/usr', env=dict(os.environ, DESTDIR=cls.stage))

    def query(self, *arguments):
        return run('rpm', '--query', '--package', *arguments, self.rpm).splitlines()

    def requirements(self):
        return {line for line in self.query('--requires') if not line.startswith('rpmlib(')}

    def test_the_build_rpm_script_makes_one_package_and_prints_its_path(self):
        with open(os.path.join(SOURCE, 'CMakeLists.txt')) as stream:
            version = re.search(r'^project\(vyre VERSION (\S+)', stream.read(), re.MULTILINE).group(1)
        architecture = run('rpm', '--eval', '%_target_cpu').strip()
        self.assertEqual(os.listdir(self.directory), ['vyre-{}-1.{}.rpm'.format(version, architecture)])
        self.assertEqual(self.told, [self.rpm])
        self.assertEqual(self.query('--queryformat', '%{NAME} %{VERSION} %{RELEASE} %{LICENSE} %{URL}'),
                         ['vyre {} 1 GPL-2.0-or-later https://vyre.example/'.format(version)])

    def test_the_package_contains_the_files_that_cmake_installs(self):
        installed = {'/' + os.path.relpath(os.path.join(directory, name), self.stage)
                     for directory, _, names in os.walk(self.stage) for name in names}
        # rpmbuild compresses the manual pages, and adds a link for the build identifier of each program.
        packed = {line.split()[-1] for line in self.query('--queryformat', '[%{FILEMODES:perms} %{FILENAMES}\n]')
                  if line.startswith('-')}
        packed = {re.sub(r'(/man8/.*)\.gz$', r'\1', path) for path in packed if '/.build-id/' not in path}
        self.assertEqual(packed, installed)

    def test_all_packaged_files_belong_to_root_and_no_file_is_setuid_or_setgid(self):
        owners = set(self.query('--queryformat', '[%{FILEUSERNAME}:%{FILEGROUPNAME}\n]'))
        self.assertEqual(owners, {'root:root'})
        for line in self.query('--queryformat', '[%{FILEMODES:octal} %{FILENAMES}\n]'):
            mode, path = line.split(' ', 1)
            if not mode.startswith('12'):  # rpm reports all permissions for a link, but they have no effect
                self.assertEqual(int(mode, 8) & 0o6022, 0, line)

    def test_rpm_lists_the_licence_and_documentation_files_of_the_package(self):
        self.assertEqual(self.query('--licensefiles'), ['/usr/share/licenses/vyre/LICENSE'])
        self.assertLessEqual({'/usr/share/doc/vyre/README.md', '/usr/share/doc/vyre/CHANGELOG.md',
                              '/usr/share/man/man8/vyre-admin.8.gz'}, set(self.query('--docfiles')))

    def test_the_package_requires_the_programs_and_modules_that_rpm_does_not_detect(self):
        named = {line for line in self.requirements() if '.so' not in line and not line.startswith('rtld(')}
        self.assertEqual(named, {'/usr/bin/python3', '/usr/bin/xhost', 'hicolor-icon-theme', 'polkit', 'python3-dnf',
                                 'python3-rpm'})
        self.assertEqual(sorted(self.query('--recommends')), ['qt5-qttranslations', 'xdg-utils'])

    def test_the_package_requires_the_libraries_that_the_program_links(self):
        linked = set(re.findall(r'NEEDED +(\S+)', run('objdump', '-p', os.path.join(self.stage, 'usr/bin/vyre'))))
        self.assertLessEqual({'libQt5Widgets.so.5', 'libarchive.so.13', 'libexpat.so.1', 'liblz4.so.1'}, linked)
        self.assertTrue(any(name.startswith('libre2.so.') for name in linked), linked)
        needed = {line.split('(')[0] for line in self.requirements() if '.so' in line}
        self.assertEqual(needed, linked)

    def test_the_package_provides_its_desktop_entry_and_metainfo(self):
        provided = self.query('--provides')
        for text in ('application(example.vyre.Vyre.desktop)', 'metainfo(example.vyre.Vyre.metainfo.xml)'):
            self.assertIn(text, provided)

    def test_the_program_has_no_debugging_data(self):
        out = os.path.join(self.top, 'unpacked')
        os.mkdir(out)
        run('sh', '-c', 'rpm2cpio "$0" | cpio --extract --quiet --make-directories ./usr/bin/vyre', self.rpm, cwd=out)
        sections = run('objdump', '-h', os.path.join(out, 'usr/bin/vyre'))
        self.assertIn('.text', sections)
        self.assertNotIn('.debug_', sections)
        self.assertNotIn('.symtab', sections)

    def test_rpmlint_finds_no_errors(self):
        configuration = os.path.join(SOURCE, 'packaging', 'rpmlint.toml')
        done = subprocess.run(['rpmlint', '--config', configuration, SPEC, self.rpm],
                              stdout=subprocess.PIPE, universal_newlines=True)
        self.assertEqual(done.returncode, 0, done.stdout)
        self.assertRegex(done.stdout, r'1 packages and 1 specfiles checked; 0 errors')
        self.assertEqual([line for line in done.stdout.splitlines() if ': W: ' in line], [])

    def test_the_build_rpm_script_refuses_invalid_arguments(self):
        for arguments in (['-r', '1 2'], ['-r', ''], ['-r', '%(touch x)'], ['-B', '/nowhere'], ['-x'], ['a', 'b']):
            done = subprocess.run([TOOL] + arguments, stdout=subprocess.PIPE, stderr=subprocess.PIPE, cwd=self.top)
            self.assertNotEqual(done.returncode, 0, arguments)
            self.assertNotEqual(done.stderr, b'', arguments)
            self.assertEqual(done.stdout, b'', arguments)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1], verbosity=2)
