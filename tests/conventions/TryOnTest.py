#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of tools/try-on. Stand-ins replace git and debootstrap, because the real debootstrap needs a mirror.
"""
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

TOOL = os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), 'tools', 'try-on')

DEBOOTSTRAP = '''#!/bin/sh -eu
for argument; do case $argument in /*) tree=$argument ;; esac; done
echo "$*" >>"$0.calls"
mkdir "$tree/etc"
[ ! -e "$0.fails" ] || exit 7
mkdir -p "$tree/bin" "$tree/dev" "$tree/proc" "$tree/root" "$tree/run" "$tree/sys" "$tree/etc/apt/apt.conf.d"
cp /bin/busybox "$tree/bin"
for name in cat env mkdir nproc rmdir sh stat umount unshare; do ln -s busybox "$tree/bin/$name"; done
'''
GIT = '''#!/bin/sh -eu
for argument; do directory=$argument; done
mkdir -p "$directory/.git"
'''


class TryOnTest(unittest.TestCase):

    def setUp(self):
        self.scratch = tempfile.mkdtemp(prefix='try-on-test-')
        self.addCleanup(shutil.rmtree, self.scratch)
        self.tools = os.path.join(self.scratch, 'tools')
        os.mkdir(self.tools)
        for name, text in (('debootstrap', DEBOOTSTRAP), ('git', GIT)):
            path = os.path.join(self.tools, name)
            with open(path, 'w') as stream:
                stream.write(text)
            os.chmod(path, 0o755)
        self.tree = os.path.join(self.scratch, 'tree')

    def run_tool(self, command, suite='sid', mirror='http://mirror.example/debian'):
        return subprocess.run([TOOL, '-d', self.tree, '-m', mirror, '-c', command, suite], stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, universal_newlines=True, stdin=subprocess.DEVNULL,
                              env=dict(os.environ, PATH=self.tools + ':' + os.environ['PATH']))

    def calls(self):
        with open(os.path.join(self.tools, 'debootstrap.calls')) as stream:
            return stream.read().splitlines()

    def test_a_debian_tree_is_made_once_and_its_commands_run_in_separate_name_spaces(self):
        done = self.run_tool('pwd; stat -c %a /root; cat /etc/made-by-try-on; unshare -U -r true && echo name spaces')
        self.assertEqual((done.stdout, done.returncode), ('/root/vyre\n700\nsid\nname spaces\n', 0), done.stderr)
        done = self.run_tool('exit 5')
        self.assertEqual(done.returncode, 5, done.stderr)
        self.assertEqual(self.calls(), ['--variant=minbase --include=ca-certificates sid {}.new '
                                        'http://mirror.example/debian'.format(self.tree)])
        # When the command has ended, the file systems that it used are no longer mounted in the tree.
        for name in ('proc', 'sys', 'run'):
            self.assertEqual(os.listdir(os.path.join(self.tree, name)), [])

    def test_a_debian_tree_whose_creation_failed_is_made_again(self):
        fails = os.path.join(self.tools, 'debootstrap.fails')
        with open(fails, 'w'):
            pass
        self.assertEqual(self.run_tool('true').returncode, 7)
        self.assertFalse(os.path.exists(self.tree))
        os.remove(fails)
        done = self.run_tool('true')
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(self.calls()), 2)

    def test_a_directory_is_not_changed_if_another_program_has_made_it(self):
        os.mkdir(self.tree)
        os.chmod(self.tree, 0o755)
        with open(os.path.join(self.tree, 'letter'), 'w'):
            pass
        done = self.run_tool('true')
        self.assertEqual((done.returncode, done.stderr),
                         (1, 'try-on: {} is not a complete tree of sid made by try-on\n'.format(self.tree)))
        self.assertEqual(os.listdir(self.tree), ['letter'])
        self.assertEqual(stat.S_IMODE(os.stat(self.tree).st_mode), 0o755)

    def test_a_debian_tree_of_a_different_debian_version_is_refused(self):
        self.assertEqual(self.run_tool('true').returncode, 0)
        done = self.run_tool('true', suite='trixie')
        self.assertEqual((done.returncode, done.stderr),
                         (1, 'try-on: {} is not a complete tree of trixie made by try-on\n'.format(self.tree)))

    def test_a_debian_version_that_is_not_a_lower_case_name_is_refused(self):
        for suite in ('../sid', '-x', '', 'SID'):
            done = self.run_tool('true', suite=suite)
            self.assertEqual(done.returncode, 1, suite)
            self.assertNotEqual(done.stderr, '', suite)
        self.assertFalse(os.path.exists(self.tree))


if __name__ == '__main__':
    sys.exit(unittest.main())
