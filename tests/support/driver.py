# SPDX-License-Identifier: GPL-2.0-or-later
"""Drives the built program from outside, as a user does. It sends X events with xdotool, and reads the windows through
AT-SPI.

It needs a display with an accessibility bus, so tests must run it under "with-display --accessible".

Events and AT-SPI use different connections. A test that reads a window directly after a key or a click may still find
the state before this input. Therefore most methods of MainWindow wait until the effect of their input is visible. After
any other input, the test itself must wait.
"""
import contextlib
import glob
import os
import re
import signal
import subprocess
import time
import warnings

import pyatspi

# pyatspi calls obsolete functions of its own library.
warnings.filterwarnings('ignore', message='Atspi[.]', category=DeprecationWarning)

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SHARE = os.path.join(ROOT, 'share')

# The columns of the package table, in the order of the program; "_" takes the unused numbers.
ACTION, STATE, KIND, NAME, VERSION, REPOSITORY, ARCHITECTURE, SIZE, BUILD_TIME, *_ = range(100)


class NotThere(AssertionError):
    """The expected state did not occur in time."""


class Ended(NotThere):
    """The program ended while a test waited for a state."""


def wait_for(condition, what, seconds=60):
    """Wait until the condition has a true value, and return this value. An accessibility error counts as a false value.
    """
    end = time.monotonic() + seconds
    problem = ''
    while True:
        try:
            value = condition()
            if value:
                return value
        except Ended:
            raise
        except Exception as e:  # pyatspi raises D-Bus errors of many types while a window changes
            problem = ' ({})'.format(e)
        if time.monotonic() > end:
            raise NotThere('{} did not come within {} s{}'.format(what, seconds, problem))
        time.sleep(0.03)


def repeat_input(send, condition, what, seconds):
    """Send input, and wait until the condition has a true value. The program may ignore input while it is busy. So if
    the condition has no true value after some seconds, send the input again, at most twice.
    """
    for last in (False, False, True):
        send()
        try:
            return wait_for(condition, what, seconds=60 if last else seconds)
        except Ended:
            raise
        except NotThere:
            if last:
                raise


# Reading ---------------------------------------------------------------------------------------------------

def walk(accessible):
    yield accessible
    # Skip the cells of a table, which would be its children. Other functions read the cells.
    if accessible.getRole() in (pyatspi.ROLE_TABLE, pyatspi.ROLE_TREE_TABLE):
        return
    for i in range(accessible.childCount):
        child = accessible.getChildAtIndex(i)
        if child is not None:
            yield from walk(child)


def shown(accessible):
    return accessible.getState().contains(pyatspi.STATE_SHOWING)


def enabled(accessible):
    return accessible.getState().contains(pyatspi.STATE_ENABLED)


def focused(window):
    """The name of the widget that has the focus in this window. Qt does not report the focus of a table: if the table
    has the focus, the result is None.
    """
    return next((plain(accessible.name) for accessible in walk(window.accessible)
                 if accessible.getState().contains(pyatspi.STATE_FOCUSED)), None)


def checked(accessible):
    return accessible.getState().contains(pyatspi.STATE_CHECKED)


def text_of(accessible):
    try:
        return accessible.queryText().getText(0, -1)
    except NotImplementedError:
        # pyatspi's cache may not know yet that this widget has a text.
        accessible.clear_cache()
        return accessible.queryText().getText(0, -1)


def plain(name):
    """The name without the "&" that marks its mnemonic."""
    return re.sub('&(.)', r'\1', name)


def rectangle(accessible):
    """Left, top, width and height in pixels of the screen."""
    extents = accessible.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    return extents.x, extents.y, extents.width, extents.height


def screenshot(path):
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    subprocess.run(['import', '-window', 'root', path], check=True)


def pixels(x, y, width, height):
    """The pixels of this part of the screen. Each pixel has three bytes."""
    return subprocess.run(['import', '-silent', '-window', 'root', '-crop', '{}x{}+{}+{}'.format(width, height, x, y),
                           '-depth', '8', 'rgb:-'], check=True, stdout=subprocess.PIPE).stdout


class Icon:
    """An icon of the share directory. Tests look for it on the screen."""

    known = {}

    @classmethod
    def named(cls, name):
        if name not in cls.known:
            cls.known[name] = cls(os.path.join(SHARE, 'icons', name + '.png'))
        return cls.known[name]

    def __init__(self, path):
        size = subprocess.run(['identify', '-format', '%w %h', path], check=True, stdout=subprocess.PIPE).stdout
        self.width, self.height = map(int, size.split())
        content = subprocess.run(['convert', path, '-depth', '8', 'rgba:-'], check=True,
                                 stdout=subprocess.PIPE).stdout
        self.opaque = [(i % self.width, i // self.width, content[4 * i:4 * i + 3])
                       for i in range(self.width * self.height) if content[4 * i + 3] > 250]

    def difference(self, picture, width, height, enough):
        """Compare the icon with each place in the picture, and return the smallest difference per pixel. If no
        difference is below `enough`, return `enough`.
        """
        best = enough
        for top in range(height - self.height + 1):
            for left in range(width - self.width + 1):
                total, bound = 0, best * len(self.opaque)
                for x, y, colour in self.opaque:
                    at = 3 * ((top + y) * width + left + x)
                    total += sum(abs(a - b) for a, b in zip(picture[at:at + 3], colour))
                    if total > bound:
                        break
                else:
                    best = total / len(self.opaque)
        return best


# Acting ----------------------------------------------------------------------------------------------------

def xdotool(*arguments):
    return subprocess.run(['xdotool'] + [str(argument) for argument in arguments], check=True,
                          stdout=subprocess.PIPE).stdout.decode()


def place(accessible):
    x, y, width, height = rectangle(accessible)
    return x + width // 2, y + height // 2


def click(accessible, button=1):
    click_at(*place(accessible), button=button)


def click_at(x, y, button=1):
    # The pointer first moves to a neighbouring place. Without a movement, `mousemove --sync` would wait for 15 s.
    xdotool('mousemove', x + 1, y, 'mousemove', '--sync', x, y, 'click', button)


def key(*names):
    # With some keyboard layouts, xdotool also presses Alt if it gets a function key by name. So it gets the key code.
    codes = [re.sub(r'\bF([1-9]|10)$', lambda found: str(66 + int(found.group(1))), name) for name in names]
    xdotool('key', '--clearmodifiers', *codes)


def key_in_new_window(title, *names):
    """Wait until a window with this title is on the screen, and press these keys at once. This imitates a user who
    expects a different window.
    """
    def look():
        return subprocess.run(['xdotool', 'search', '--onlyvisible', '--name', '^' + title + '$'],
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    wait_for(look, 'window ' + repr(title))
    key(*names)


def kill_display():
    """Kill the X server of this display, and so end all its connections."""
    os.kill(int(os.environ['X_SERVER_PID']), signal.SIGKILL)


def kill_window(program, title):
    """Make the X server close the connection of the program that has a window with this title."""
    window = xdotool('search', '--onlyvisible', '--pid', program.process.pid, '--name', '^' + title + '$').split()[0]
    xdotool('windowkill', window)


def type_text(text):
    xdotool('type', '--clearmodifiers', '--delay', '5', text)


class Program:
    """A run of the built program in a session of its own. Two files in the scratch directory store its output."""

    def __init__(self, binary, scratch, arguments=(), environment=None, unset=()):
        self.stdout_path = os.path.join(scratch, 'stdout')
        self.stderr_path = os.path.join(scratch, 'stderr')
        # The tests look for English texts, even if the user who runs the tests has set another language.
        variables = dict(os.environ, VYRESHARE=SHARE, LANGUAGE='en')
        variables.update(environment or {})
        for name in unset:
            variables.pop(name, None)
        with open(self.stdout_path, 'wb') as out, open(self.stderr_path, 'wb') as err:
            self.process = subprocess.Popen([binary] + list(arguments), env=variables, stdout=out, stderr=err,
                                            stdin=subprocess.DEVNULL, start_new_session=True)

    def stderr(self):
        with open(self.stderr_path, encoding='utf-8', errors='replace') as err:
            return err.read()

    def complaints(self):
        """The program's standard error, without empty lines and without one known message. Qt prints this message if it
        looks for the window under the pointer while the window manager removes the frame of a closed dialog.
        """
        harmless = re.compile(
            r'vyre: QXcbConnection: XCB error: 3 \(BadWindow\), .*\(TranslateCoords\), minor code: 0$')
        return '\n'.join(line for line in self.stderr().splitlines() if line and not harmless.match(line))

    def stdout(self):
        with open(self.stdout_path, encoding='utf-8', errors='replace') as out:
            return out.read()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.running():
            self.process.send_signal(signal.SIGKILL)
            self.process.wait()
        for number in self.left_over():
            try:
                os.kill(number, signal.SIGKILL)
            except ProcessLookupError:
                pass

    def running(self):
        return self.process.poll() is None

    def wait(self, seconds=60):
        """Wait until the program ends; return its exit status."""
        return self.process.wait(seconds)

    def left_over(self):
        """The process numbers of the program's descendants that still run in its session."""
        found = []
        for path in glob.glob('/proc/[0-9]*/stat'):
            try:
                with open(path) as stat:
                    # The command name is in parentheses, and may contain spaces and parentheses.
                    fields = stat.read().rpartition(')')[2].split()
            except OSError:
                continue
            number = int(path.split('/')[2])
            if int(fields[3]) == self.process.pid and number != self.process.pid:
                found.append(number)
        return found

    def application(self):
        """The program's accessible application; None if the bus does not list it."""
        desktop = pyatspi.Registry.getDesktop(0)
        application = self._application_of(desktop)
        if application is None:
            # If pyatspi has missed an event, its cached list may lack the application.
            desktop.clear_cache()
            application = self._application_of(desktop)
        return application

    def _application_of(self, desktop):
        for i in range(desktop.childCount):
            application = desktop.getChildAtIndex(i)
            # If the application has just ended, any access to it raises an error. The list may also contain a closed
            # connection of the same process. The number of children of a closed connection cannot be read.
            with contextlib.suppress(Exception):
                if application is not None and application.get_process_id() == self.process.pid and \
                        application.childCount >= 0:
                    return application
        return None

    def accessibility(self):
        """Text for a failed test: the applications on the accessibility bus, and the number of the program's windows
        that the X server shows.
        """
        desktop = pyatspi.Registry.getDesktop(0)
        lines = ['applications on the desktop: {}'.format(desktop.childCount)]
        for i in range(desktop.childCount):
            try:
                application = desktop.getChildAtIndex(i)
                lines.append('{}: {}'.format(i, application and (application.name, application.get_process_id())))
            except Exception as e:
                lines.append('{}: {}'.format(i, e))
        lines.append('windows of the program: {}'.format(len(self.popups())))
        return '\n'.join(lines)

    def windows(self):
        """The visible windows and dialogs."""
        application = self.application()
        found = []
        for i in range(application.childCount if application is not None else 0):
            child = application.getChildAtIndex(i)
            if child is not None and shown(child):
                found.append(Window(child))
        return found

    def titles(self):
        return [window.title for window in self.windows()]

    def _check_running(self, what):
        if not self.running():
            raise Ended('the program ended with status {} before {} came: {}'.format(
                self.process.returncode, what, self.stderr()))

    def window(self, title, seconds=60):
        """The visible window with this title."""
        what = 'window ' + repr(title)

        def look():
            self._check_running(what)
            return next((window for window in self.windows() if window.title == title), None)
        return wait_for(look, what, seconds)

    def no_window(self, title, seconds=60):
        wait_for(lambda: all(window.title != title for window in self.windows()),
                 'the end of window ' + repr(title), seconds)

    def popups(self):
        """The X numbers of all windows of the program on the screen. They include context menus, which AT-SPI omits."""
        found = subprocess.run(['xdotool', 'search', '--onlyvisible', '--pid', str(self.process.pid)],
                               stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout.split()
        return frozenset(found)

    def main(self, seconds=60):
        return MainWindow(self.window(main_title(), seconds).accessible, self)

    def ready(self, seconds=120):
        """Wait until the controls of the main window can be used; return the main window."""
        main = self.main(seconds)
        main.wait_ready(seconds)
        return main


def main_title():
    return 'VYRE - ' + os.uname().nodename


class Window:
    """One window or dialog of the program."""

    def __init__(self, accessible):
        self.accessible = accessible

    @property
    def title(self):
        return self.accessible.name

    def wait_settled(self):
        """Wait until the window manager has placed the window and given it the focus."""
        wait_for(lambda: self.accessible.getState().contains(pyatspi.STATE_ACTIVE), 'the focus of ' + self.title)
        known = []

        def unmoved():
            known.append(rectangle(self.accessible))
            return len(known) > 1 and known[-1] == known[-2]
        wait_for(unmoved, 'the place of ' + self.title)

    def wait_input(self):
        """Wait until a question takes input: at first, its buttons are disabled and it ignores keys."""
        wait_for(lambda: any(enabled(button) for button in self.find_all(pyatspi.ROLE_PUSH_BUTTON)),
                 'input for ' + self.title)

    def find(self, role, name=None, seconds=60):
        """The first visible widget with this role and, if given, this name. name: without the "&" of the mnemonic."""
        def look():
            for accessible in walk(self.accessible):
                if accessible.getRole() == role and shown(accessible) and \
                        (name is None or plain(accessible.name) == name):
                    return accessible
            return None
        return wait_for(look, 'widget {} {}'.format(role, name), seconds)

    def find_all(self, role):
        return [accessible for accessible in walk(self.accessible)
                if accessible.getRole() == role and shown(accessible)]

    def button(self, name):
        return self.find(pyatspi.ROLE_PUSH_BUTTON, name)

    def buttons(self):
        """The texts of all buttons, in the order of the window."""
        return [plain(accessible.name) for accessible in self.find_all(pyatspi.ROLE_PUSH_BUTTON)]

    def click_button(self, name):
        button = self.button(name)
        wait_for(lambda: enabled(button), 'the button ' + name)
        self.wait_settled()
        click(button)

    def press(self, name):
        """Wait until the window has the focus, and then press a key. Without this wait, another window could receive
        the key.
        """
        self.wait_settled()
        key(name)

    def labels(self):
        """The texts of all labels, in the order of the window."""
        return [accessible.name for accessible in self.find_all(pyatspi.ROLE_LABEL) if accessible.name]

    def text(self):
        return '\n'.join(self.labels())

    def listing(self):
        """The text of the listing, without the texts above and below it."""
        return next(label for label in self.labels() if 'Transaction to be performed:' in label)


class MainWindow(Window):

    # Maps each recognised picture of an Action cell to its action.
    actions_seen = {}

    def __init__(self, accessible, program):
        super().__init__(accessible)
        self.program = program

    # Reading

    def is_ready(self):
        return enabled(self.button('Refresh'))

    def wait_ready(self, seconds=120):
        # While the program works, the window sometimes does not answer at all. In this case, wait_for() tries again.
        wait_for(self.is_ready, 'a usable main window', seconds)

    def table(self):
        for accessible in walk(self.accessible):
            if accessible.getRole() in (pyatspi.ROLE_TABLE, pyatspi.ROLE_TREE_TABLE):
                return accessible
        raise NotThere('there is no table')

    def rows(self):
        """The texts of name, version, repository, architecture and size of each listed row."""
        table = self.table().queryTable()
        return [tuple(table.getAccessibleAt(row, column).name for column in
                      (NAME, VERSION, REPOSITORY, ARCHITECTURE, SIZE)) for row in range(table.nRows)]

    def row_count(self):
        return self.table().queryTable().nRows

    def names(self):
        """The names of the listed rows, in the order of the table."""
        table = self.table().queryTable()
        return [table.getAccessibleAt(row, NAME).name for row in range(table.nRows)]

    def wait_names(self, names, seconds=60):
        """Wait until exactly these names are listed, in any order."""
        wanted = sorted(names)

        def look():
            listed = sorted(self.names())
            if listed != wanted:
                raise NotThere('listed: {}'.format(listed))
            return True
        wait_for(look, 'the list {}'.format(wanted), seconds)

    def row_of(self, name, arch=None):
        table = self.table().queryTable()
        for row in range(table.nRows):
            if table.getAccessibleAt(row, NAME).name == name and \
                    (arch is None or table.getAccessibleAt(row, ARCHITECTURE).name == arch):
                return row
        raise NotThere('{} is not listed'.format(name))

    def cell(self, row, column):
        return self.table().queryTable().getAccessibleAt(row, column)

    def visible_cell(self, name, column, arch=None):
        """Wait until a cell of a package is completely visible on the screen; return the cell."""
        def look():
            cell = self.cell(self.row_of(name, arch), column)
            _, y, width, height = rectangle(cell)
            _, top, _, all_height = rectangle(self.table())
            # The cell must be below the header, and above the horizontal scroll bar if the table has one.
            return cell if width > 0 and top + height // 2 < y < top + all_height - 2 * height else None
        return wait_for(look, 'the row of {} on the screen'.format(name))

    def action(self, name, arch=None):
        """The action that the row's icon shows: "none", "install", "update" or "remove"."""
        x, y, width, height = rectangle(self.visible_cell(name, ACTION, arch))
        picture = pixels(x, y, width, height)
        if picture not in self.actions_seen:
            icons = ('none', 'install', 'update', 'remove')
            differences = {icon: Icon.named(icon + 'Box').difference(picture, width, height, 765)
                           for icon in icons}
            self.actions_seen[picture] = min(differences, key=differences.get)
        return self.actions_seen[picture]

    def wait_action(self, action, name, arch=None):
        def look():
            found = self.action(name, arch)
            if found != action:
                raise NotThere(found)
            return True
        wait_for(look, 'the action {} of {}'.format(action, name), 20)

    def warning(self):
        """The warning about marked packages that are not listed; empty if the warning is hidden."""
        return ''.join(text for text in self.labels() if text == 'Unlisted Actions')

    def edit(self):
        return self.find(pyatspi.ROLE_TEXT)

    def combo(self, number):
        """One of the two boxes in the filter row. number: 0 for the mode, 1 for the state."""
        def boxes():
            return self.find_all(pyatspi.ROLE_COMBO_BOX)
        return wait_for(lambda: len(boxes()) == 2 and boxes(), 'the boxes')[number]

    def check_box(self, name):
        return self.find(pyatspi.ROLE_CHECK_BOX, name)

    # Acting

    def barrier(self):
        """Wait until the program has handled all earlier input. The expression edit must have the focus."""
        edit = self.edit()

        def move_caret(pressed, position):
            # While a search compares the packages, the edit is disabled and ignores keys.
            repeat_input(lambda: key(pressed), lambda: edit.queryText().caretOffset == position,
                         'the caret after the key ' + pressed, 5)
        move_caret('Home', 0)
        move_caret('End', len(text_of(edit)))

    def type_expression(self, expression):
        edit = self.edit()
        click(edit)
        key('ctrl+a')
        if expression:
            type_text(expression)
        else:
            key('BackSpace')
        wait_for(lambda: text_of(edit) == expression, 'the typed expression')

    def set_filter(self, expression):
        """Type an expression into the filter row and press Enter."""
        self.type_expression(expression)
        key('Return')
        if expression:
            self.barrier()

    def choose(self, box, item):
        """Choose an item of one of the two boxes in the filter row. box: 0 for the mode, 1 for the state."""
        combo = self.combo(box)
        if combo.name == item:
            return

        def choose_with_keys():
            # While an operation begins, the program ignores a click.
            self.wait_ready()
            click(combo)
            # Use the keyboard: the opened list covers the box, and a click would choose the item under the pointer.
            key('Home')
            for _ in range(8):
                if selected_item(combo) == item:
                    break
                key('Down')
            key('Return')
        repeat_input(choose_with_keys, lambda: combo.name == item, 'the choice of ' + item, 10)
        self.wait_ready()

    def set_checked(self, name, wanted):
        box = self.check_box(name)
        if checked(box) != wanted:
            click(box)
            wait_for(lambda: checked(box) == wanted, 'the new state of ' + name)

    def show_all(self, groups=False):
        self.choose(1, 'View All')
        if groups:
            self.set_checked('Include Groups', True)

    def mark(self, name, arch=None, clicks=1):
        """Click the Action cell of a package. clicks: the number of clicks."""
        for _ in range(clicks):
            before = self.action(name, arch)
            click(self.visible_cell(name, ACTION, arch))
            wait_for(lambda: self.action(name, arch) != before, 'another action of ' + name, 20)

    def mark_listed(self, name, arch=None, clicks=1):
        """Filter the table so that it lists only this package or group, and click its Action cell."""
        # The text of a group ends with its name, because its other columns are empty.
        self.set_filter('^' + name + '( |$)')
        wait_for(lambda: set(self.names()) == {name}, name + ' alone')
        self.mark(name, arch, clicks)

    def select(self, *names):
        """Select only the rows of the packages with these names."""
        for number, name in enumerate(names):
            cell = self.visible_cell(name, NAME)
            x, y, _, height = rectangle(cell)
            if number:
                xdotool('keydown', 'ctrl')
            try:
                click_at(x + 20, y + height // 2)
            finally:
                if number:
                    xdotool('keyup', 'ctrl')

            def is_selected(row=self.row_of(name)):
                return self.table().queryTable().isRowSelected(row)
            wait_for(is_selected, 'the selection of ' + name)

    def select_first(self):
        """Select only the first row, and move the focus to the table."""
        x, y, _, height = wait_for(lambda: rectangle(self.cell(0, NAME)), 'the first row')
        click_at(x + 20, y + height // 2)
        self.wait_selected(1)

    def wait_selected(self, count):
        def look():
            table = self.table().queryTable()
            return sum(table.isRowSelected(row) for row in range(table.nRows)) == count
        wait_for(look, 'the selection of {} rows'.format(count))

    def action_menu(self, name):
        """Open the context menu of a package's Action cell."""
        before = self.program.popups()
        click(self.visible_cell(name, ACTION), button=3)
        wait_for(lambda: self.program.popups() > before, 'the menu of ' + name)

    def press_in_menu(self, name):
        """Press a key in the open menu, and wait until the menu is closed."""
        before = self.program.popups()
        key(name)
        wait_for(lambda: self.program.popups() < before, 'the end of the menu')

    def apply(self):
        """Press Apply, wait until the dialog with the listing takes input, and return this dialog."""
        self.click_button('Apply Actions')
        dialog = self.program.window('Apply')
        dialog.wait_input()
        return dialog

    def accept(self, dialog):
        """Press OK in the dialog with the listing."""
        dialog.click_button('OK')
        self.program.no_window('Apply')

    def quit(self):
        """Quit the program with the key of its menu entry; return the exit status."""
        self.press('ctrl+q')
        return self.program.wait()


def selected_item(combo):
    time.sleep(0.1)
    selection = [accessible for accessible in walk(combo)
                 if accessible.getState().contains(pyatspi.STATE_SELECTED)]
    return selection[0].name if selection else combo.name
