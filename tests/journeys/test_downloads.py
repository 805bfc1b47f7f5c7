#!/usr/bin/python3
"""Packages are downloaded, or are there already; downloads go wrong."""
import os

import journey
from journey import Gate, JourneyTest
from vyresandbox import server

PERGOLA = '/sandbox-http/pergola-6.1-1.x86_64.rpm'


class DownloadTest(JourneyTest):

    def test_package_in_the_cache_is_not_downloaded_again(self):
        with open(os.path.join(self.sandbox.root, 'etc/yum.conf'), 'a') as configuration:
            configuration.write('keepcache=1\n')
        with self.opened() as window:
            window.mark_listed('pergola')
            dialog = window.apply()
            self.assertIn('Cached size: 0b\nTotal download size: 6.9Kb\n', dialog.text())
            self.carry_out(window, dialog)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            window.mark_listed('pergola')
            self.carry_out(window)
            self.check_unchanged()
            window.mark_listed('pergola')
            dialog = window.apply()
            self.assertIn('Cached size: 6.9Kb\nTotal download size: 0b\n', dialog.text())
            self.carry_out(window, dialog)
            self.check_changed(new=['pergola-6.1-1.x86_64'])
            self.assertEqual(self.sandbox.server.paths().count(PERGOLA), 1)

    def test_packages_of_a_local_repository_need_no_download(self):
        with self.opened() as window:
            window.mark_listed('hedgerow')
            dialog = window.apply()
            self.assertIn('Total download size: 0b\n', dialog.text())
            self.carry_out(window, dialog)
            self.check_changed(new=['hedgerow-4.0-1.noarch'])

    def test_several_downloads_at_once(self):
        names = ['tilepack-{}'.format(number) for number in range(1, 9)]
        with self.opened() as window:
            window.set_filter('^tilepack-')
            window.wait_names(names)
            window.select_first()
            journey.driver.key('ctrl+a')
            window.wait_selected(len(names))
            window.click_button('Set Install/Update of Selected')
            window.wait_action('install', names[-1])
            self.carry_out(window)
            self.check_changed(new=[name + '-1.0-1.noarch' for name in names])


class FailureTest(JourneyTest):

    def check_refused(self, fault, *texts, package='pergola-6.1-1.x86_64'):
        path = '/sandbox-http/{}.rpm'.format(package)
        name = package.rsplit('-', 2)[0]
        self.sandbox.server.faults[path] = fault
        with self.opened() as window:
            window.mark_listed(name)
            window.accept(window.apply())
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', name, *texts)
            self.check_usable(window)
            self.check_unchanged()
            # Once the server works again, so does the program.
            del self.sandbox.server.faults[path]
            window.set_filter('^{} '.format(name))
            window.wait_names([name])
            window.wait_action('install', name)
            self.carry_out(window)
            self.check_changed(new=[package])

    def test_package_is_not_on_the_server(self):
        self.check_refused(server.status(404), '404')

    def test_server_reports_an_error(self):
        self.check_refused(server.status(500), '500')

    def test_server_hangs_up_in_the_middle(self):
        self.check_refused(server.truncated(100000), 'partial file', package='gargantua-1.0-1.noarch')

    def test_package_is_not_what_the_repository_tells(self):
        self.check_refused(server.corrupted(), 'checksum')

    def test_second_package_is_not_on_the_server(self):
        self.sandbox.server.faults['/sandbox-http/libtwig-1.0-1.x86_64.rpm'] = server.status(404)
        with self.opened() as window:
            window.mark_listed('libbough')
            window.accept(window.apply())
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', 'libtwig', '404')
            self.check_usable(window)
            self.check_unchanged()

    def test_server_is_gone_before_the_download(self):
        with self.opened() as window:
            window.mark_listed('pergola')
            dialog = window.apply()
            self.sandbox.stop()
            window.accept(dialog)
            self.check_message(window.program, 'VYRE Yum Error', 'Unable to apply changes', 'pergola',
                               "Couldn't connect")
            self.check_usable(window)
            self.check_unchanged()
            self.sandbox.start()
            window.set_filter('^pergola ')
            window.wait_names(['pergola'])
            window.wait_action('install', 'pergola')
            self.carry_out(window)
            self.check_changed(new=['pergola-6.1-1.x86_64'])

    def test_server_goes_in_the_middle_of_the_download(self):
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
