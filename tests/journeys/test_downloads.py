#!/usr/bin/python3
# SPDX-License-Identifier: GPL-2.0-or-later
"""The program downloads packages, uses packages in the cache, and reports failed downloads."""
import os

import journey
from journey import Gate, JourneyTest, driver, wait_for
from vyresandbox import server

PERGOLA = '/sandbox-http/pergola-6.1-1.x86_64.rpm'


class DownloadTest(JourneyTest):

    def test_a_cached_package_is_not_downloaded_again(self):
        with open(os.path.join(self.sandbox.root, 'etc/yum.conf'), 'a') as configuration:
            configuration.write('keepcache=1\n')
        size = '{:.1f}Kb'.format(os.path.getsize(self.sandbox.directory + '/http' + PERGOLA) / 1024)
        with self.opened() as window:
            window.mark_listed('pergola')
            dialog = window.apply()
            self.assertIn('Cached size: 0b\nTotal download size: {}\n'.format(size), dialog.text())
            self.carry_out(window, dialog)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_unchanged()
            window.mark_listed('pergola')
            dialog = window.apply()
            self.assertIn('Cached size: {}\nTotal download size: 0b\n'.format(size), dialog.text())
            self.carry_out(window, dialog)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.assertEqual(self.sandbox.server.paths().count(PERGOLA), 1)

    def test_packages_in_a_local_repository_are_not_downloaded(self):
        with self.opened() as window:
            window.mark_listed('hedgerow')
            dialog = window.apply()
            self.assertIn('Total download size: 0b\n', dialog.text())
            self.carry_out(window, dialog)
            self.check_changed(new=['hedgerow-4.0-1.noarch'])

    def test_each_of_several_simultaneous_downloads_has_its_own_progress_bar(self):
        names = ['tilepack-{}'.format(number) for number in range(1, 9)]
        held = [Gate() for _ in names]
        for name, gate in zip(names, held):
            self.sandbox.server.faults['/sandbox-http/{}-1.0-1.noarch.rpm'.format(name)] = gate
        with self.opened() as window:
            window.set_filter('^tilepack-')
            window.wait_names(names)
            window.select_first()
            driver.key('ctrl+a')
            window.wait_selected(len(names))
            window.click_button('Set Install/Update of Selected')
            window.wait_action('install', names[-1])
            window.accept(window.apply())
            wait_for(lambda: sum(gate.is_reached() for gate in held) == 3, 'three downloads at once')
            bar = window.find_all(driver.pyatspi.ROLE_PROGRESS_BAR)[1]
            driver.xdotool('mousemove', *driver.place(bar))
            tip = window.program.window('')
            texts = wait_for(tip.labels, 'the text of the tool tip')
            names_shown = [text for text in texts if text.startswith('Downloading ')]
            self.assertEqual(len(names_shown), 3, texts)
            for name in names_shown:
                self.assertRegex(name, '^Downloading tilepack-[1-8]-1[.]0-1[.]noarch[.]rpm$')
                self.assertRegex(texts[texts.index(name) + 1], r'^\d+ / \d{6} \(\d+[.]\d%\)$')
            self.assertEqual(texts[-2:], ['5 downloads', 'Not Started Yet'])
            self.picture('downloads')
            for gate in held:
                gate.open()
            window.wait_ready()
            # When the pointer leaves the bar, the tip disappears.
            driver.xdotool('mousemove', *driver.place(window.table()))
            window.program.no_window('')
            self.check_changed(new=[name + '-1.0-1.noarch' for name in names])


class FailureTest(JourneyTest):

    def check_refused(self, fault, *texts, package='pergola-6.1-1.x86_64', picture=None):
        path = '/sandbox-http/{}.rpm'.format(package)
        name = package.rsplit('-', 2)[0]
        self.sandbox.server.faults[path] = fault
        with self.opened() as window:
            window.mark_listed(name)
            window.accept(window.apply())
            dialog = self.read_dialog(window.program, 'VYRE Yum Error', 'Unable to apply changes', name, *texts)
            # dnf tries several times, but the message has each line only once.
            lines = dialog.text().splitlines()
            self.assertEqual(len(lines), len(set(lines)), lines)
            if picture is not None:
                dialog.wait_settled()
                self.picture(picture)
            self.close_dialog(window.program, dialog)
            self.check_usable(window)
            self.check_unchanged()
            # After the fault is removed, the mark can be applied.
            del self.sandbox.server.faults[path]
            window.set_filter('^{} '.format(name))
            window.wait_names([name])
            window.wait_action('install', name)
            self.carry_out(window)
            self.check_changed(new=[package])

    def test_package_that_the_server_lacks_is_reported(self):
        self.check_refused(server.status(404), '404', picture='not-on-the-server')

    def test_an_error_of_the_server_is_reported(self):
        self.check_refused(server.status(500), '500')

    def test_closed_connection_during_a_download_is_reported(self):
        self.check_refused(server.truncated(100000), 'partial file', package='gargantua-1.0-1.noarch',
                           picture='truncated-download')

    def test_package_with_a_wrong_checksum_is_reported(self):
        self.check_refused(server.corrupted(), 'checksum', picture='wrong-bytes')

    def test_a_dependency_that_the_server_lacks_is_reported(self):
        self.sandbox.server.faults['/sandbox-http/libtwig-1.0-1.x86_64.rpm'] = server.status(404)
        with self.opened() as window:
            window.mark_listed('libbough')
            window.accept(window.apply())
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', 'libtwig', '404')
            self.check_usable(window)
            self.check_unchanged()

    def test_failure_is_reported_if_the_server_stops_before_the_download(self):
        with self.opened() as window:
            window.mark_listed('pergola')
            dialog = window.apply()
            self.sandbox.stop()
            window.accept(dialog)
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', 'pergola',
                               'Curl error (7)', picture='server-gone')
            self.check_usable(window)
            self.check_unchanged()
            self.sandbox.start()
            window.set_filter('^pergola ')
            window.wait_names(['pergola'])
            window.wait_action('install', 'pergola')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])

    def test_a_failure_is_reported_if_the_server_stops_during_the_download(self):
        gate = Gate()
        self.sandbox.server.faults[PERGOLA] = gate
        with self.opened() as window:
            window.mark_listed('pergola')
            window.accept(window.apply())
            gate.wait_reached()
            self.assertFalse(window.is_ready())
            self.sandbox.stop()
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', 'pergola')
            self.check_usable(window)
            self.check_unchanged()


if __name__ == '__main__':
    journey.main()
