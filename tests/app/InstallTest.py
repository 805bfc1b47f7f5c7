#!/usr/bin/python3
"""What "cmake --install" lays out: the share directory has to be where the program looks for it, which ShareTest
tells.

usage: InstallTest.py CMAKE BUILD
"""
import os
import shutil
import subprocess
import sys
import tempfile
import unittest

SHARE = 'usr/share/vyre'
CMAKE, BUILD = sys.argv[1:3]


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

    def test_program_is_executable(self):
        self.assertTrue(os.access(self.place('usr/bin/vyre'), os.X_OK))

    def test_all_of_the_share_directory_but_the_drawings_is_there(self):
        source = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', '..', 'share')
        expected = set()
        for directory, _, names in os.walk(source):
            relative = os.path.relpath(directory, source)
            if 'svg' in relative.split('/') or '__pycache__' in relative:
                continue
            expected |= {os.path.normpath(os.path.join(relative, name)) for name in names}
        installed = {os.path.relpath(os.path.join(directory, name), self.place(SHARE))
                     for directory, _, names in os.walk(self.place(SHARE)) for name in names}
        self.assertEqual(installed, expected)
        self.assertIn('python/YumIO.py', installed)
        self.assertIn('icons/package.png', installed)

    def test_programs_of_the_share_directory_are_executable(self):
        for name in os.listdir(self.place(SHARE)):
            path = self.place(SHARE, name)
            if os.path.isfile(path):
                self.assertTrue(os.access(path, os.X_OK), name)


if __name__ == '__main__':
    unittest.main(argv=sys.argv[:1], verbosity=2)
