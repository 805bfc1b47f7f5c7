# SPDX-License-Identifier: GPL-2.0-or-later
"""Code that all journeys share. Each test works on its own copy of the sandbox, and checks that the program ends
correctly.

VYRE_BINARY names the program. VYRE_SANDBOX names the sandbox that the journeys copy and never change. If VYRE_PICTURES
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

# The file of dnf's lock on the package database.
DATABASE_LOCK = 'var/lib/dnf/rpmdb_lock.pid'

DEPENDENCIES = 'Performing the following to resolve dependencies:'
# Each key is the beginning of the lines about one kind of additional removals. Its value is the heading above these
# lines in the listing.
DEPENDENCY_HEADINGS = {'Remove (unused):': 'Removing unused dependencies:', 'Remove:': 'Removing dependent packages:'}
ONLY_REMOVALS = 'No downloads; only removals\n'


class Gate:
    """A fault for the sandbox's server: until the gate is open, the server does not answer a request."""

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
    """A process of dnf that holds one of the two locks on the cache: "metadata" or "download"."""

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
    """A package of the sandbox with a scriptlet that waits. The scriptlet ends when the file of this object is removed.
    """

    def __init__(self, sandbox, name):
        self._path = os.path.join(sandbox.root, 'tmp', name)
        open(self._path, 'w').close()

    def is_waiting(self):
        return os.path.exists(self._path + '.waiting')

    def wait_waiting(self):
        wait_for(self.is_waiting, self._path + '.waiting')

    def let_go(self):
        """Let the scriptlet end, unless it has already ended."""
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
        """Open the context menu of a cell, and choose the item with this number. The first item has the number 0."""
        before = window.program.popups()
        driver.click(window.visible_cell(name, column), button=3)
        wait_for(lambda: window.program.popups() > before, 'the menu of ' + name)
        driver.key(*['Down'] * (choice + 1))
        driver.key('Return')

    def tool_tip(self, window, name, column):
        """Let the pointer rest on this cell of a package, and return the text of the tool tip. Then the pointer leaves
        the cell.
        """
        x, y = driver.place(window.visible_cell(name, column))
        # The tip appears only after a movement of the pointer inside the cell.
        driver.xdotool('mousemove', x - 3, y, 'sleep', '0.1', 'mousemove', x, y)

        def look():
            return next((tip for tip in window.program.windows()
                         if tip.accessible.getRole() == driver.pyatspi.ROLE_TOOL_TIP and tip.title), None)
        tip = wait_for(look, 'the tool tip of ' + name)
        text = tip.title
        driver.xdotool('mousemove', *driver.place(window.edit()))
        window.program.no_window(text)
        return text

    def picture(self, name):
        """If VYRE_PICTURES is set, save a picture of the screen."""
        directory = os.environ.get('VYRE_PICTURES')
        if directory:
            time.sleep(0.5)  # no event shows that a window has been painted
            driver.screenshot(os.path.join(directory, name + '.png'))

    def wait_waiting(self, window, lock):
        """Wait until the log says that the program waits for this lock."""
        window.wait_settled()  # without the focus, the window would not get the key that opens the log
        wait_for(lambda: lock.activity in self.read_log(window), 'the program to wait')

    def cache_lock(self, kind):
        lock = CacheLock(self.sandbox, kind)
        self.addCleanup(lock.let_go)
        return lock

    @contextlib.contextmanager
    def program(self, *arguments, environment=None, unset=()):
        """Run the program on the sandbox. If the test fails, save a picture of the screen."""
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
        """Run the program, and return its main window with all packages listed. At the end of the scope, quit the
        program with a key.
        """
        with self.program(*arguments) as program:
            window = program.ready()
            window.show_all(groups)
            yield window
            self.quit(window)

    def choose_from_menu(self, window, menu, number):
        """Choose the item with this number in a menu. The first item has the number 0; separators do not count."""
        bar = window.find(driver.pyatspi.ROLE_MENU_BAR)
        before = window.program.popups()
        driver.click(next(item for item in driver.walk(bar) if driver.plain(item.name) == menu))
        wait_for(lambda: window.program.popups() > before, 'the menu')
        driver.key(*['Down'] * (number + 1) + ['Return'])
        wait_for(lambda: window.program.popups() <= before, 'the end of the menu')

    # Transactions

    def size_of(self, *packages):
        """The text in which the program shows the size of these packages. Each package is a pair of its repository and
        its full name.
        """
        size = sum(os.path.getsize(os.path.join(self.sandbox.repository(repository), name + '.rpm'))
                   for repository, name in packages) / 1024
        return '{:.1f}Kb'.format(size) if size < 9.95 else '{:.0f}Kb'.format(size)

    def check_listing(self, dialog, listed=(), dependencies=(), sizes=True, groups=None, remark=''):
        """Check that the confirmation dialog lists exactly these lines, in any order. The lines have no tabs.

        sizes: true if the listing ends with download sizes; false if it says that nothing is downloaded; None if it
        says neither. groups: the names of groups below each heading. remark: the text above the listing.
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
        """Confirm the transaction, and wait until it ends. If no dialog is given, press Apply first."""
        window.accept(dialog or window.apply())
        window.wait_ready()

    # The end

    def locks(self):
        return [os.path.join(directory, name) for directory, _, names in os.walk(self.sandbox.root)
                for name in names if 'lock' in name and name.endswith('.pid')]

    def check_ended(self, program, status=0):
        """Check that the program has ended by itself, with this status, and has left no locks and no processes."""
        self.assertEqual(program.wait(), status, program.stderr())
        self.assertEqual(program.complaints(), '')
        self.assertEqual(self.locks(), [])
        wait_for(lambda: program.left_over() == [], 'the end of all processes')

    def quit(self, window):
        """Quit the program with the key of its menu entry. No dialog may be open."""
        self.assertEqual(window.program.titles(), [driver.main_title()])
        window.press('ctrl+q')
        self.check_ended(window.program)

    def close(self, window):
        """Close the main window with the key of the window manager."""
        window.press('alt+F4')
        self.check_ended(window.program)

    # The installed packages

    def check_unchanged(self):
        self.assertEqual(self.sandbox.installed(), self.before)

    def check_changed(self, new=(), gone=()):
        """Check that only these packages have changed since the start of the test. New public keys do not count."""
        after = {name for name in self.sandbox.installed() if not name.startswith('gpg-pubkey-')}
        self.assertEqual((after - self.before, self.before - after), (set(new), set(gone)))

    def check_history_complete(self):
        """Check that the history records the end and the success of the last transaction."""
        # the state 1 means success
        last = subprocess.run(['/usr/bin/python3', '-c',
                               'import sqlite3, sys\n'
                               'print(*sqlite3.connect(sys.argv[1]).execute("SELECT state, dt_end >= dt_begin FROM '
                               'trans ORDER BY id DESC LIMIT 1").fetchone())',
                               self.sandbox.root + '/var/lib/dnf/history.sqlite'],
                              stdout=subprocess.PIPE, check=True).stdout.decode()
        self.assertEqual(last, '1 1\n')

    def check_consistent(self):
        """Check that the installed packages have all their dependencies, no duplicates, and unchanged files."""
        for command in (['rpm', '--root', self.sandbox.root, '-Va'],
                        ['dnf', '--installroot', self.sandbox.root, '--releasever=9', '--noplugins',
                         '--setopt=reposdir=/dev/null', '--setopt=logdir=' + self.scratch, 'check']):
            done = subprocess.run(command, env=self.sandbox.environment(), stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT)
            self.assertEqual((done.stdout.decode(), done.returncode), ('', 0), command[0])

    # Dialogs

    def read_dialog(self, program, title, *texts):
        """Wait until a dialog with this title has a text and takes input. Check that it contains these texts; return
        the dialog.
        """
        dialog = program.window(title)
        text = wait_for(dialog.text, 'the text of ' + title)
        dialog.wait_input()
        for part in texts:
            self.assertIn(part, text)
        return dialog

    def close_dialog(self, program, dialog):
        """Press the only button of a message box."""
        buttons = dialog.buttons()
        self.assertEqual(len(buttons), 1, buttons)
        title = dialog.title
        dialog.click_button(buttons[0])
        program.no_window(title)

    def check_message(self, program, title, *texts, picture=None):
        """Check that the program shows a message with these texts, and close this message. picture: a name; if given,
        save a picture of the message with this name.
        """
        dialog = self.read_dialog(program, title, *texts)
        if picture is not None:
            dialog.wait_settled()
            self.picture(picture)
        self.close_dialog(program, dialog)

    def read_log(self, window, picture=None):
        """Open the Log window, read its text, close the window, and return the text."""
        window.press('ctrl+l')
        log = window.program.window('VYRE Log')
        if picture is not None:
            log.wait_settled()
            self.picture(picture)
        # The spin box also has a text, but the text of the log is longer.
        texts = wait_for(lambda: log.find_all(driver.pyatspi.ROLE_TEXT), 'the text of the log')
        text = max((driver.text_of(accessible) for accessible in texts), key=len)
        log.click_button('Close')
        window.program.no_window('VYRE Log')
        return text

    def check_usable(self, window, name='almanac'):
        """Check that the window responds: it lists all packages, and a filter finds the package with this name."""
        window.wait_ready()
        window.show_all()
        window.set_filter('^' + name + ' ')
        window.wait_names([name])
        window.set_filter('.*')
        wait_for(lambda: window.row_count() > 100, 'all packages')


def main():
    # pyatspi's modules have set warning filters, which unittest must not replace.
    unittest.main(verbosity=2, warnings=False)
