#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""VYRE as a package. The test builds and installs a package of VYRE. Then the installed VYRE describes, updates and
removes this package.

VYRE_BUILD names the build folder.
"""
import os
import subprocess
from unittest import mock

import journey
from journey import JourneyTest, driver, wait_for
from vyresandbox.dependencies import build_dependencies

TOOL = os.path.join(driver.ROOT, 'tools', 'build-rpm')
DESCRIPTION = 'VYRE Package Description'


class ItselfTest(JourneyTest):

    def setUp(self):
        super().setUp()
        rpms = os.path.join(self.scratch, 'rpms')
        os.mkdir(rpms)
        needed = build_dependencies(rpms)
        older = self.build('1', rpms)
        repository = os.path.join(self.scratch, 'itself')
        newer = self.build('2', repository)
        self.assertEqual(os.path.basename(older).replace('-1.x86_64.', '-2.x86_64.'), os.path.basename(newer))
        subprocess.run(['createrepo_c', '--quiet', repository], check=True)
        with open(os.path.join(self.sandbox.root, 'etc/yum.repos.d/itself.repo'), 'w') as stream:
            stream.write('[itself]\nname=VYRE itself\nbaseurl=file://{}\nenabled=1\ngpgcheck=0\n'.format(repository))
        # rpm installs VYRE only if these packages provide all its dependencies.
        self.sandbox.rpm('--install', '--nosignature', *needed)
        self.sandbox.rpm('--install', '--nosignature', older)
        self.before = self.sandbox.installed()
        # From here on, the tests run the installed program.
        patch = mock.patch.dict(os.environ, VYRE_BINARY=os.path.join(self.sandbox.root, 'usr/bin/vyre'))
        patch.start()
        self.addCleanup(patch.stop)
        self.share = os.path.join(self.sandbox.root, 'usr/share/vyre')

    def build(self, release, directory):
        """Make an rpm package of the build; return its path."""
        done = subprocess.run([TOOL, '-B', os.environ['VYRE_BUILD'], '-r', release, directory], check=True,
                              stdout=subprocess.PIPE, universal_newlines=True)
        path, = done.stdout.splitlines()
        return path

    def describe(self, window):
        window.select_first()
        window.click_button('Describe')
        dialog = window.program.window(DESCRIPTION)
        dialog.wait_settled()
        labels = dialog.labels()
        dialog.click_button('Close')
        window.program.no_window(DESCRIPTION)
        return labels

    def find_row(self, window):
        window.set_filter('^vyre ')
        wait_for(lambda: window.names() == ['vyre'], 'a list with only vyre')
        return window.rows()[0]

    def test_vyre_can_update_and_remove_its_own_package(self):
        version = self.sandbox.rpm('-q', '--queryformat', '%{VERSION}', 'vyre')
        names = ['vyre-{}-{}.x86_64'.format(version, release) for release in (1, 2)]
        with self.program(environment={'VYRESHARE': self.share}) as program:
            window = program.ready()
            # When VYRE starts, the table lists the available updates.
            row = self.find_row(window)
            self.assertEqual((row[1].split()[0], row[2:4]), (version + '-2', ('itself', 'x86_64')))
            labels = self.describe(window)
            for text in ('vyre', 'Graphical manager of rpm packages', 'GPL-2.0-or-later', 'https://vyre.example/'):
                self.assertIn(text, labels)

            window.mark('vyre')
            dialog = window.apply()
            self.check_listing(dialog, ['Upgrade: vyre {}-2 (x86_64) [itself]'.format(version)])
            self.carry_out(window, dialog)
            self.check_changed(new=names[1:], gone=names[:1])
            self.assertEqual(self.sandbox.rpm('-V', '--nodigest', '--nosignature', 'vyre'), '')
            # The running program still works, although the update has replaced its files.
            window.show_all()
            row = self.find_row(window)
            self.assertEqual((row[1].split()[0], row[2]), (version + '-2', '@System'))
            self.quit(window)

        with self.program(environment={'VYRESHARE': self.share}) as program:
            window = program.ready()
            window.show_all()
            self.find_row(window)
            window.mark('vyre')
            window.wait_action('remove', 'vyre')
            dialog = window.apply()
            self.check_listing(dialog, ['Remove: vyre {}-2 (x86_64)'.format(version)], sizes=False)
            self.carry_out(window, dialog)
            self.check_changed(gone=names[:1])
            for path in ('usr/bin/vyre', 'usr/share/vyre', 'usr/share/doc/vyre', 'usr/share/licenses/vyre'):
                self.assertFalse(os.path.exists(os.path.join(self.sandbox.root, path)), path)
            self.quit(window)


if __name__ == '__main__':
    journey.main()
