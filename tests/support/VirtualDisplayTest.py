#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests of display.py: virtual displays do not disturb each other."""
import subprocess
import unittest

from display import VirtualDisplay


def property_of(environment):
    """What xprop prints about the property that names the accessibility bus."""
    return subprocess.run(['xprop', '-root', 'AT_SPI_BUS'], env=environment, check=True, stdout=subprocess.PIPE,
                          universal_newlines=True).stdout


class VirtualDisplayTest(unittest.TestCase):

    def test_the_end_of_an_accessibility_launcher_does_not_change_a_display(self):
        """If a test kills its server, another server may use the same display number while the launcher ends."""
        display = VirtualDisplay(accessible=True)
        with display as environment:
            before = property_of(environment)
            self.assertRegex(before, '= "unix:')
            launcher = display.started[-1]
            self.assertIn('at-spi-bus-launcher', launcher.args[0])
            launcher.terminate()
            launcher.wait(60)
            self.assertEqual(property_of(environment), before)


if __name__ == '__main__':
    unittest.main(verbosity=2)
