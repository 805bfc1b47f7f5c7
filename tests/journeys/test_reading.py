#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""While the program reads a large repository, the progress bars name the current step and move."""
import os

import journey
import metadata
from journey import driver, wait_for
from trouble import StartTest


class ReadingTest(StartTest):

    def test_the_progress_bars_name_the_repository_and_move_while_its_packages_are_read(self):
        large = os.path.join(self.scratch, 'large')
        metadata.make_large(large, 60000)
        self.write('etc/yum.repos.d/large.repo',
                   '[large]\nname=Large Collection\nenabled=1\ngpgcheck=0\nbaseurl=file://{}\n'.format(large))
        with self.program() as program:
            window = program.main()
            bars = wait_for(lambda: window.find_all(driver.pyatspi.ROLE_PROGRESS_BAR), 'the progress bars')
            self.assertEqual([bar.name for bar in bars], ['Whole operation', 'Current step'])
            step = bars[1]

            def is_reading():
                return step.description == 'Reading the packages of Large Collection'
            wait_for(is_reading, 'the name of the repository')
            # While the number of packages is unknown, the bar shows that the program is busy.
            value = step.queryValue()
            self.assertEqual((value.minimumValue, value.maximumValue), (0, 0))
            self.picture('reading-packages')
            pictures = set()

            def moves():
                pictures.add(driver.pixels(*driver.rectangle(step)))
                return len(pictures) > 1
            wait_for(moves, 'a movement of the bar')
            # The bar has moved, but its text is the same.
            self.assertTrue(is_reading())
            window.wait_ready()
            window.set_filter('^large-59999 ')
            window.show_all()
            window.wait_names(['large-59999'])
            self.quit(window)


if __name__ == '__main__':
    journey.main()
