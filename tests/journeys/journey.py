# SPDX-License-Identifier: GPL-2.0-or-later
"""The common parts of all journeys. Each test works on a separate copy of the sandbox, and checks that the program ends
correctly.

VYRE_BINARY is the program. VYRE_SANDBOX is the sandbox, which the journeys copy and never change. If VYRE_PICTURES
names a directory, the journeys save pictures of the screen there.
"""
import contextlib
import os
import shutil
import subprocess
import sys
import tempfile
import threading
import time
import unittest

TESTS = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path[:0] = [os.path.join(TESTS, 'support'), os.path.join(os.path.dirname(TESTS), 'tools', 'sandbox')]

import driver  # noqa: E402
from driver import wait_for  # noqa: E402
from vyresandbox import Sandbox  # noqa: E402

# The lock file for dnf's lock on the package database.
DATABASE_LOCK = 'var/lib/dnf/rpmdb_lock.pid'

DEPENDENCIES = 'Performing the following to resolve dependencies:'
# The headings of additional removals in the listing. A line belongs to a heading if it begins with this word.
DEPENDENCY_HEADINGS = {'Remove (unused):': 'Removing unused dependencies:', 'Remove:': 'Removing dependent packages:'}
ONLY_REMOVALS = 'No downloads; only removals\n'


class Gate:
    """A fault for the sandbox's server: the server answers no request until the gate is open."""

    def __init__(self):
        self._reached = threading.Event()
        self._open = threading.Event()

    def __call__(self, handler):
        self._reached.set()
        while not self._open.wait(0.05):
            if handler.server.stopping.is_set():
                return
        handler.send_file()

    def is_reached(self):
        return self._reached.is_set()

    def wait_reached(self):
        if not self._reached.wait(60):
            raise AssertionError('the server has received no request')

    def open(self):
        self._open.set()


class CacheLock:
    """A process that holds one of dnf's two locks on the cache, "metadata" or "download"."""

    _HOLD = ('import sys, dnf.lock\n'
             'with getattr(dnf.lock, "build_{}_lock".format(sys.argv[1]))(sys.argv[2], True):\n'
             '    print("held", flush=True)\n'
             '    sys.stdin.read()\n')

    def __init__(self, sandbox, kind):
        cache = os.path.join(sandbox.root, 'var/cache/yum')
        self.path = os.path.join(cache, kind + '_lock.pid')
        self._process = subprocess.Popen(['/usr/bin/python3', '-c', self._HOLD, kind, cache], stdin=subprocess.PIPE,
                                         stdout=subprocess.PIPE)
        if self._process.stdout.readline() != b'held\n':
            raise AssertionError('the process cannot get the lock')
        self.activity = 'Waiting for python3 ({}), which uses the cache of the package manager'.format(
            self._process.pid)

    def is_held(self):
        with open(self.path) as stream:
            return stream.read() == str(self._process.pid)

    def let_go(self):
        """Release the lock if it is still held."""
        if self._process.poll() is None:
            self._process.communicate()


class Waiting:
    """A package in the sandbox. Its scriptlet waits as long as a certain file exists."""

    def __init__(self, sandbox, name):
        self._path = os.path.join(sandbox.root, 'tmp', name)
        open(self._path, 'w').close()

    def is_waiting(self):
        return os.path.exists(self._path + '.waiting')

    def wait_waiting(self):
        wait_for(self.is_waiting, self._path + '.waiting')

    def let_go(self):
        """Let the scriptlet end. It may have ended already."""
        with contextlib.suppress(FileNotFoundError):
            os.unlink(self._path)


class JourneyTest(unittest.TestCase):

    def setUp(self):
        self.scratch = tempfile.mkdtemp(prefix='journey.')
        self.failed = False
        self.addCleanup(self._clean)
        self.sandbox = Sandbox.made(os.environ['VYRE_SANDBOX']).copy(os.path.join(self.scratch, 'sandbox'))
        self.addCleanup(self.sandbox.stop)
        self.sandbox.start()
        self.before = self.sandbox.installed()

    def _clean(self):
        if not self.failed:
            shutil.rmtree(self.scratch)

    def waiting(self, name):
        waiting = Waiting(self.sandbox, name)
        self.addCleanup(waiting.let_go)
        return waiting

    def choose_from_cell_menu(self, window, name, column, choice):
        """Open the menu of a cell and choose an item by its number, from 0."""
        before = window.program.popups()
        driver.click(window.visible_cell(name, column), button=3)
        wait_for(lambda: window.program.popups() > before, 'the menu of ' + name)
        driver.key(*['Down'] * (choice + 1))
        driver.key('Return')

    def picture(self, name):
        """Save a picture of the screen if VYRE_PICTURES is set."""
        directory = os.environ.get('VYRE_PICTURES')
        if directory:
            time.sleep(0.5)  # no event shows that a window has been painted
            driver.screenshot(os.path.join(directory, name + '.png'))

    def wait_waiting(self, window, lock):
        """Return when the program waits for this lock."""
        window.wait_settled()  # an unsettled window does not receive the key that opens the log
        wait_for(lambda: lock.activity in self.read_log(window), 'the program to wait')

    def cache_lock(self, kind):
        lock = CacheLock(self.sandbox, kind)
        self.addCleanup(lock.let_go)
        return lock

    @contextlib.contextmanager
    def program(self, *arguments, environment=None, unset=()):
        """A run of the program on the sandbox. If the test fails, this function saves a picture of the screen."""
        number = 1
        while os.path.exists(os.path.join(self.scratch, 'run{}'.format(number))):
            number += 1
        directory = os.path.join(self.scratch, 'run{}'.format(number))
        os.mkdir(directory)
        variables = self.sandbox.environment()
        variables.update(environment or {})
        with driver.Program(os.environ['VYRE_BINARY'], directory, arguments, variables, unset) as program:
            try:
                yield program
            except BaseException:
                self.failed = True
                picture = os.path.join(directory, 'screen.png')
                with contextlib.suppress(subprocess.CalledProcessError):  # the display may have ended
                    driver.screenshot(picture)
                    print('{}: the screen is in {}'.format(self.id(), picture), file=sys.stderr)
                if program.running():
                    with contextlib.suppress(Exception):  # the accessibility bus may have ended
                        print('windows: {}'.format(program.titles()), file=sys.stderr)
                        print(program.accessibility(), file=sys.stderr)
                print(program.stderr(), file=sys.stderr, flush=True)
                raise

    @contextlib.contextmanager
    def opened(self, *arguments, groups=False):
        """The main window of a new run. It lists all packages. At the end of the scope, a key quits the program."""
        with self.program(*arguments) as program:
            window = program.ready()
            window.show_all(groups)
            yield window
            self.quit(window)

    def choose_from_menu(self, window, menu, number):
        """Choose an item of a menu by its number, from 0; separators do not count."""
        bar = window.find(driver.pyatspi.ROLE_MENU_BAR)
        before = window.program.popups()
        driver.click(next(item for item in driver.walk(bar) if driver.plain(item.name) == menu))
        wait_for(lambda: window.program.popups() > before, 'the menu')
        driver.key(*['Down'] * (number + 1) + ['Return'])
        wait_for(lambda: window.program.popups() <= before, 'the end of the menu')

    # Transactions

    def check_listing(self, dialog, listed=(), dependencies=(), sizes=True, groups=None, remark=''):
        """The confirmation dialog lists these lines, in any order. The lines are given without tabs.

        sizes: whether the transaction downloads packages; None if the dialog does not mention downloads. groups: the
        names of groups below each heading. remark: the line above the list.
        """
        text = dialog.listing()
        if remark:
            found, _, text = text.partition('\n\n')
            self.assertEqual(found, remark)
        text, _, sized = text.partition('\n\n')
        if sizes is None:
            self.assertEqual(sized, '')
        elif not sizes:
            self.assertEqual(sized, '')
            self.assertTrue(text.endswith(ONLY_REMOVALS), text)
            text = text[:-len(ONLY_REMOVALS)]
        else:
            self.assertEqual([line.partition(':')[0] for line in sized.splitlines()],
                             ['Cached size', 'Total download size', 'Installed size'])
        found = {}
        for line in text.splitlines():
            if not line.startswith('\t'):
                heading = line
            found.setdefault(heading, []).append(line[1:])
        expected = {'Transaction to be performed:': listed}
        expected.update({heading + ':': names for heading, names in (groups or {}).items()})
        for line in dependencies:
            heading = next((heading for start, heading in DEPENDENCY_HEADINGS.items() if line.startswith(start)),
                           DEPENDENCIES)
            expected[heading] = expected.get(heading, []) + [line]
        self.assertEqual({heading: sorted(lines[1:]) for heading, lines in found.items()},
                         {heading: sorted(lines) for heading, lines in expected.items()})
        self.assertEqual(dialog.buttons(), ['OK', 'Cancel'])

    def carry_out(self, window, dialog=None):
        """Confirm the transaction and wait for its end. If no dialog is given, press Apply first."""
        window.accept(dialog or window.apply())
        window.wait_ready()

    # The end

    def locks(self):
        return [os.path.join(directory, name) for directory, _, names in os.walk(self.sandbox.root)
                for name in names if 'lock' in name and name.endswith('.pid')]

    def check_ended(self, program, status=0):
        """The program has ended with this status, and no signal has ended it. It has left no locks and no processes."""
        self.assertEqual(program.wait(), status, program.stderr())
        self.assertEqual(program.complaints(), '')
        self.assertEqual(self.locks(), [])
        wait_for(lambda: program.left_over() == [], 'the end of all processes')

    def quit(self, window):
        """Quit the program by the key of the menu entry. No dialog may be open."""
        self.assertEqual(window.program.titles(), [driver.main_title()])
        window.press('ctrl+q')
        self.check_ended(window.program)

    def close(self, window):
        """Close the main window by the window manager."""
        window.press('alt+F4')
        self.check_ended(window.program)

    # The installed packages

    def check_unchanged(self):
        self.assertEqual(self.sandbox.installed(), self.before)

    def check_changed(self, new=(), gone=()):
        """Only these packages have changed since the start of the test. The check ignores imported public keys."""
        after = {name for name in self.sandbox.installed() if not name.startswith('gpg-pubkey-')}
        self.assertEqual((after - self.before, self.before - after), (set(new), set(gone)))

    def check_history_complete(self):
        """The last transaction in the history is complete."""
        # 1 is the state of a complete transaction.
        last = subprocess.run(['/usr/bin/python3', '-c',
                               'import sqlite3, sys\n'
                               'print(*sqlite3.connect(sys.argv[1]).execute("SELECT state, dt_end >= dt_begin FROM '
                               'trans ORDER BY id DESC LIMIT 1").fetchone())',
                               self.sandbox.root + '/var/lib/dnf/history.sqlite'],
                              stdout=subprocess.PIPE, check=True).stdout.decode()
        self.assertEqual(last, '1 1\n')

    def check_consistent(self):
        """The installed packages have all their dependencies, no duplicates, and unchanged files."""
        for command in (['rpm', '--root', self.sandbox.root, '-Va'],
                        ['dnf', '--installroot', self.sandbox.root, '--releasever=9', '--noplugins',
                         '--setopt=reposdir=/dev/null', '--setopt=logdir=' + self.scratch, 'check']):
            done = subprocess.run(command, env=self.sandbox.environment(), stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT)
            self.assertEqual((done.stdout.decode(), done.returncode), ('', 0), command[0])

    # Dialogs

    def read_dialog(self, program, title, *texts):
        """Wait until a dialog with this title contains these texts and takes input. Return the dialog."""
        dialog = program.window(title)
        text = wait_for(dialog.text, 'the text of ' + title)
        dialog.wait_input()
        for part in texts:
            self.assertIn(part, text)
        return dialog

    def close_dialog(self, program, dialog):
        """Press the only button of a message."""
        buttons = dialog.buttons()
        self.assertEqual(len(buttons), 1, buttons)
        title = dialog.title
        dialog.click_button(buttons[0])
        program.no_window(title)

    def check_message(self, program, title, *texts, picture=None):
        """Check that the program shows this message, and close it. picture: the name of the message's picture."""
        dialog = self.read_dialog(program, title, *texts)
        if picture is not None:
            dialog.wait_settled()
            self.picture(picture)
        self.close_dialog(program, dialog)

    def read_log(self, window, picture=None):
        """Open the Log window, close it again, and return its text."""
        window.press('ctrl+l')
        log = window.program.window('VYRE Log')
        if picture is not None:
            log.wait_settled()
            self.picture(picture)
        # The spin box also has text, but the log's text is longer.
        texts = wait_for(lambda: log.find_all(driver.pyatspi.ROLE_TEXT), 'the text of the log')
        text = max((driver.text_of(accessible) for accessible in texts), key=len)
        log.click_button('Close')
        window.program.no_window('VYRE Log')
        return text

    def check_usable(self, window, name='almanac'):
        """The window responds: it lists all packages and finds this one."""
        window.wait_ready()
        window.show_all()
        window.set_filter('^' + name + ' ')
        window.wait_names([name])
        window.set_filter('.*')
        wait_for(lambda: window.row_count() > 100, 'all packages')


def main():
    # The imported modules have set warning filters. unittest must not replace these filters.
    unittest.main(verbosity=2, warnings=False)
