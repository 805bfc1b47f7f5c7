# SPDX-License-Identifier: GPL-2.0-or-later
"""Code that all journeys about repository configurations share."""
import os

import pyatspi

import journey
from journey import JourneyTest, driver, wait_for

SESSION, PERMANENT, IDENTIFIER, NAME = range(4)

UNAPPLIED = 'Unapplied Configuration Changes'


class Editor(driver.Window):
    """The window of the repository editor, which lists all repositories."""

    TITLE = 'VYRE Repository Configuration Editor'

    def __init__(self, program):
        super().__init__(program.window(self.TITLE).accessible)
        self.program = program
        self.wait_settled()
        self._clicks = 0

    def table(self):
        return self.find(pyatspi.ROLE_TABLE).queryTable()

    def column(self, column):
        table = self.table()
        return [table.getAccessibleAt(row, column).name for row in range(table.nRows)]

    def identifiers(self):
        return self.column(IDENTIFIER)

    def names(self):
        return dict(zip(self.identifiers(), self.column(NAME)))

    def cell(self, identifier, column):
        return self.table().getAccessibleAt(self.identifiers().index(identifier), column)

    def is_on(self, identifier, column):
        """Whether the repository's box in this column is checked."""
        x, y, width, height = driver.rectangle(self.cell(identifier, column))
        picture = driver.pixels(x, y, width, height)
        differences = {on: driver.Icon.named(icon).difference(picture, width, height, 765)
                       for icon, on in (('checkBox', True), ('noneBox', False))}
        return min(differences, key=differences.get)

    def wait_on(self, on, identifier, column):
        wait_for(lambda: self.is_on(identifier, column) == on,
                 'the box {} of {} being {}'.format(column, identifier, on), 20)

    def toggle(self, identifier, column):
        before = self.is_on(identifier, column)
        x, y = driver.place(self.cell(identifier, column))
        # Successive clicks go to different places, because the program would take two quick clicks at one place for a
        # double click.
        self._clicks += 1
        driver.click_at(x + (-8, 8)[self._clicks % 2], y)
        self.wait_on(not before, identifier, column)

    def select(self, *identifiers):
        """Select only the rows of these repositories."""
        for number, identifier in enumerate(identifiers):
            if number:
                driver.xdotool('keydown', 'ctrl')
            try:
                driver.click(self.cell(identifier, IDENTIFIER))
            finally:
                if number:
                    driver.xdotool('keyup', 'ctrl')
            row = self.identifiers().index(identifier)
            wait_for(lambda: self.table().isRowSelected(row), 'the selection of ' + identifier)

    def status(self):
        return self.text()

    def wait_status(self, text):
        wait_for(lambda: self.status() == text, 'the status ' + repr(text), 20)

    def form(self, button, *selected):
        """Press Edit, Add or Copy. Return the form that opens."""
        if selected:
            self.select(*selected)
        self.click_button(button)
        return Form(self.program)

    def close(self, button):
        self.click_button(button)
        self.program.no_window(self.TITLE)


class Form(driver.Window):
    """The form: the window with the fields of one repository."""

    TITLE = 'VYRE Repository Configuration'

    def __init__(self, program):
        super().__init__(program.window(self.TITLE).accessible)
        self.program = program
        self.wait_settled()

    def field(self, name):
        """The visible text field with this label."""
        def look():
            return next((accessible for accessible in driver.walk(self.accessible)
                         if accessible.name == name and driver.shown(accessible) and
                         accessible.getRole() in (pyatspi.ROLE_TEXT, pyatspi.ROLE_PASSWORD_TEXT)), None)
        return wait_for(look, 'the field ' + name)

    def value(self, name):
        return driver.text_of(self.field(name))

    def set(self, name, text):
        """Replace the text of a field by typing."""
        field = self.field(name)
        driver.click(field)
        driver.key('ctrl+a')
        driver.type_text(text)
        # Assistive programs cannot read the text of a password field.
        if field.getRole() != pyatspi.ROLE_PASSWORD_TEXT:
            wait_for(lambda: driver.text_of(field) == text, 'the text of ' + name, 20)

    def choose(self, number, item):
        """Choose an item of one of the form's boxes. number: 0 for the Enabled box, 1 for the Check GPG Keys box."""
        combo = self.find_all(pyatspi.ROLE_COMBO_BOX)[number]
        driver.click(combo)
        driver.key('Home')
        for _ in range(3):
            if driver.selected_item(combo) == item:
                break
            driver.key('Down')
        driver.key('Return')
        wait_for(lambda: combo.name == item, 'the choice of ' + item, 20)

    def status(self):
        """The text next to the buttons of the form; empty if the form shows none."""
        return self.labels()[-1] if self.labels()[-1] != 'Sort Position' else ''

    def close(self, button):
        self.click_button(button)
        self.program.no_window(self.TITLE)


class EditingTest(JourneyTest):

    def repo_path(self, name):
        return os.path.join(self.sandbox.root, 'etc/yum.repos.d', name)

    def write_repo(self, name, text):
        with open(self.repo_path(name), 'w') as stream:
            stream.write(text)

    def read_repo(self, name):
        with open(self.repo_path(name)) as stream:
            return stream.read()

    def files(self):
        """The contents of the main configuration file and of all repository files, by path."""
        directory = os.path.join(self.sandbox.root, 'etc/yum.repos.d')
        found = {}
        for path in [os.path.join(directory, name) for name in os.listdir(directory)] + [
                os.path.join(self.sandbox.root, 'etc/yum.conf')]:
            with open(path, 'rb') as stream:
                found[path] = stream.read()
        return found

    def requests_from_now(self):
        """Return the number of requests that the server has received. The function also lets the metadata expire,
        because otherwise a collection could use metadata that are less than a second old. So each later collection that
        reads the repositories increases the number.
        """
        self.sandbox.expire_metadata()
        return len(self.sandbox.server.paths())

    def edit(self, window):
        window.press('ctrl+e')
        return Editor(window.program)

    def check_listed(self, window, names, expression='^(abacus-cli|hedgerow|hidden-gem|pergola) '):
        """Check the list of packages. By default, look only for the packages in USUAL and for "hidden-gem"."""
        window.wait_ready()
        window.set_filter(expression)
        window.wait_names(names)


def readable_texts(program):
    """All texts that assistive programs can read, including the texts of invisible widgets."""
    for accessible in driver.walk(program.application()):
        yield accessible.name
        yield accessible.description
        try:
            yield driver.text_of(accessible)
        except NotImplementedError:
            pass


main = journey.main
