"""Drives the built program from outside, as a user does: X events through xdotool, reading through AT-SPI.

Needs a display with an accessibility bus: run under "with-display --accessible".
"""
import os
import signal
import subprocess
import time

import pyatspi

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

ACTION, STATE, KIND, NAME, VERSION, REPOSITORY, ARCHITECTURE, SIZE, BUILD_TIME = range(9)


class NotThere(AssertionError):
    """What was waited for did not come."""


def wait_for(condition, what, seconds=60):
    """Return the first true value of the condition; accessibility errors count as not yet."""
    end = time.monotonic() + seconds
    problem = ''
    while True:
        try:
            value = condition()
            if value:
                return value
        except NotThere:
            raise
        except Exception as e:  # pyatspi raises what D-Bus says, of many types, while a window changes
            problem = ' ({})'.format(e)
        if time.monotonic() > end:
            raise NotThere('{} did not come within {} s{}'.format(what, seconds, problem))
        time.sleep(0.05)


def walk(accessible):
    yield accessible
    # Tables and menus are read by their own calls: a table has a child for every cell.
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


def checked(accessible):
    return accessible.getState().contains(pyatspi.STATE_CHECKED)


class Window:
    """One window or dialog of the program."""

    def __init__(self, accessible):
        self.accessible = accessible

    @property
    def title(self):
        return self.accessible.name

    def find(self, role, name=None, seconds=60):
        """The first showing widget of the role, with the name (without the mark of its mnemonic) if one is given."""
        def look():
            for accessible in walk(self.accessible):
                if accessible.getRole() == role and shown(accessible) and \
                        (name is None or accessible.name.replace('&', '') == name):
                    return accessible
            return None
        return wait_for(lambda: look() or None, 'widget {} {}'.format(role, name), seconds)

    def find_all(self, role):
        return [accessible for accessible in walk(self.accessible)
                if accessible.getRole() == role and shown(accessible)]

    def button(self, name):
        return self.find(pyatspi.ROLE_PUSH_BUTTON, name)

    def click_button(self, name):
        button = self.button(name)
        wait_for(lambda: enabled(button), 'the button ' + name)
        click(button)

    def labels(self):
        """The texts of all labels, in the order of the window."""
        return [accessible.name for accessible in self.find_all(pyatspi.ROLE_LABEL)]

    def text(self):
        return '\n'.join(self.labels())


def place(accessible):
    extents = accessible.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
    return extents.x + extents.width // 2, extents.y + extents.height // 2


def xdotool(*arguments):
    subprocess.run(['xdotool'] + [str(argument) for argument in arguments], check=True,
                   stdout=subprocess.DEVNULL)


def click(accessible, button=1):
    click_at(*place(accessible), button=button)


def click_at(x, y, button=1):
    xdotool('mousemove', '--sync', x, y, 'click', button)


def key(*names):
    xdotool('key', '--clearmodifiers', *names)


def type_text(text):
    xdotool('type', '--clearmodifiers', '--delay', '5', text)


def screenshot(path):
    os.makedirs(os.path.dirname(os.path.abspath(path)), exist_ok=True)
    subprocess.run(['import', '-window', 'root', path], check=True)


class Program:
    """A run of the built program. Its output is kept in the two files below the scratch directory."""

    def __init__(self, binary, scratch, arguments=(), environment=None):
        self.stdout_path = os.path.join(scratch, 'stdout')
        self.stderr_path = os.path.join(scratch, 'stderr')
        variables = dict(os.environ, VYRESHARE=os.path.join(ROOT, 'share'))
        variables.update(environment or {})
        with open(self.stdout_path, 'wb') as out, open(self.stderr_path, 'wb') as err:
            self.process = subprocess.Popen([binary] + list(arguments), env=variables, stdout=out, stderr=err,
                                            stdin=subprocess.DEVNULL)

    def stderr(self):
        with open(self.stderr_path, errors='replace') as err:
            return err.read()

    def stdout(self):
        with open(self.stdout_path, errors='replace') as out:
            return out.read()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGKILL)
            self.process.wait()

    def wait(self, seconds=60):
        """The exit status, once the program has ended by itself."""
        return self.process.wait(seconds)

    def application(self):
        desktop = pyatspi.Registry.getDesktop(0)
        for i in range(desktop.childCount):
            application = desktop.getChildAtIndex(i)
            if application is not None and application.get_process_id() == self.process.pid:
                return application
        return None

    def windows(self):
        application = self.application()
        if application is None:
            return []
        found = []
        for i in range(application.childCount):
            child = application.getChildAtIndex(i)
            if child is not None and shown(child):
                found.append(Window(child))
        return found

    def window(self, title, seconds=60):
        """The showing window with this title."""
        def look():
            if self.process.poll() is not None:
                raise NotThere('the program ended with status {} before its window {!r} came: {}'.format(
                    self.process.returncode, title, self.stderr()))
            return next((window for window in self.windows() if window.title == title), None)
        return wait_for(look, 'window ' + repr(title), seconds)

    def no_window(self, title, seconds=60):
        wait_for(lambda: all(window.title != title for window in self.windows()),
                 'the end of window ' + repr(title), seconds)

    def main(self, seconds=60):
        return MainWindow(self.window('VYRE - ' + os.uname().nodename, seconds).accessible, self)

    def ready(self, seconds=120):
        """The main window, once its controls can be used."""
        main = self.main(seconds)
        main.wait_ready(seconds)
        return main


class MainWindow(Window):

    def __init__(self, accessible, program):
        super().__init__(accessible)
        self.program = program

    def wait_ready(self, seconds=120):
        refresh = self.button('Refresh')
        wait_for(lambda: enabled(refresh), 'a usable main window', seconds)

    def table(self):
        for accessible in walk(self.accessible):
            if accessible.getRole() in (pyatspi.ROLE_TABLE, pyatspi.ROLE_TREE_TABLE):
                return accessible
        raise NotThere('there is no table')

    def rows(self):
        """For each listed row the texts of name, version, repository, architecture and size."""
        table = self.table().queryTable()
        return [tuple(table.getAccessibleAt(row, column).name for column in
                      (NAME, VERSION, REPOSITORY, ARCHITECTURE, SIZE)) for row in range(table.nRows)]

    def row_count(self):
        return self.table().queryTable().nRows

    def row_of(self, name, arch=None):
        table = self.table().queryTable()
        for row in range(table.nRows):
            if table.getAccessibleAt(row, NAME).name == name and \
                    (arch is None or table.getAccessibleAt(row, ARCHITECTURE).name == arch):
                return row
        raise NotThere('{} is not listed'.format(name))

    def cell(self, row, column):
        return self.table().queryTable().getAccessibleAt(row, column)

    def set_filter(self, expression):
        """Type an expression into the filter row and press Enter."""
        edit = self.find(pyatspi.ROLE_TEXT)
        click(edit)
        key('ctrl+a')
        type_text(expression)
        wait_for(lambda: edit.queryText().getText(0, -1) == expression, 'the typed expression')
        key('Return')

    def choose(self, box, item):
        """Choose an item of one of the two boxes of the filter row: 0 is the mode, 1 the state."""
        def boxes():
            return self.find_all(pyatspi.ROLE_COMBO_BOX)
        combo = wait_for(lambda: len(boxes()) == 2 and boxes(), 'the boxes')[box]
        if combo.name == item:
            return
        click(combo)
        # By keyboard: the list that pops up covers the box, so that its current item is under the pointer.
        key('Home')
        for _ in range(8):
            if wait_current(combo) == item:
                break
            key('Down')
        key('Return')
        wait_for(lambda: combo.name == item, 'the choice of ' + item)

    def show_all(self, groups=False):
        self.choose(1, 'View All')
        if groups:
            box = self.find(pyatspi.ROLE_CHECK_BOX, 'Include Groups')
            if not checked(box):
                click(box)
                wait_for(lambda: checked(box), 'the groups')

    def mark(self, name, arch=None, clicks=1):
        """Click so many times on the Action cell of a package."""
        for _ in range(clicks):
            def visible():
                row = self.row_of(name, arch)
                cell = self.cell(row, ACTION)
                extents = cell.queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
                area = self.table().queryComponent().getExtents(pyatspi.DESKTOP_COORDS)
                # Below the header, and above a horizontal scroll bar that there may be.
                inside = area.y + extents.height // 2 < extents.y < area.y + area.height - 2 * extents.height
                return cell if extents.width > 0 and inside else None
            click(wait_for(visible, 'the row of {} on the screen'.format(name)))
            time.sleep(0.3)  # two clicks in quick succession are a double click

    def apply(self):
        """Press Apply; return the dialog with the listing."""
        self.click_button('Apply Actions')
        return self.program.window('Apply')

    def quit(self):
        key('ctrl+q')
        return self.program.wait()


def wait_current(combo):
    time.sleep(0.1)
    selection = [accessible for accessible in walk(combo)
                 if accessible.getState().contains(pyatspi.STATE_SELECTED)]
    return selection[0].name if selection else combo.name
