# SPDX-License-Identifier: GPL-2.0-or-later
"""Code for the journeys in which the program has problems when it starts or ends."""
import os
import unittest.mock

from journey import JourneyTest, driver, wait_for

YUM_ERROR = 'VYRE Yum Error'
REPOMD = '/sandbox-http/repodata/repomd.xml'


class StartTest(JourneyTest):

    def path(self, *names):
        """The path of a file in the sandbox's root. Creates the directory of this file."""
        path = os.path.join(self.sandbox.root, *names)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        return path

    def write(self, name, content):
        path = self.path(name)
        with open(path, 'w') as stream:
            stream.write(content)
        return path

    def message(self, program, title, *texts, picture=None):
        """Wait for a message with these texts, read it, and close it. Another message with the same title may follow.
        """
        def look():
            if not program.running():
                raise driver.Ended('the program ended with status {}: {}'.format(
                    program.process.returncode, program.stderr()))
            for dialog in program.windows():
                if dialog.title == title and dialog.text():
                    missing = [text for text in texts if text not in dialog.text()]
                    if missing:
                        raise driver.NotThere('{} in {!r}'.format(missing, dialog.text()))
                    return dialog
            return None
        dialog = wait_for(look, title, 30)
        text = dialog.text()
        buttons = dialog.buttons()
        self.assertEqual(len(buttons), 1, buttons)
        if picture is not None:
            dialog.wait_settled()
            self.picture(picture)
        dialog.click_button(buttons[0])
        wait_for(lambda: not program.running() or
                 all(window.title != title or window.text() != text for window in program.windows()),
                 'the end of ' + title, 30)
        return text

    def question_about_repository(self, program, name, *texts):
        """Wait for the question whether to go on without this repository, and return it.

        name: the repository; empty if the name of the repository does not matter.
        """
        def look():
            return next((dialog for dialog in program.windows() if dialog.title == 'Repositories' and
                         dialog.text().startswith('The repository ' + name)), None)
        dialog = wait_for(look, 'the question about ' + name)
        for text in texts:
            self.assertIn(text, dialog.text())
        return dialog

    def refuse_without(self, program, name, *texts):
        """Answer No to the question whether to go on without this repository."""
        self.question_about_repository(program, name, *texts).click_button('No')

    def check_nothing_listed(self, window):
        window.wait_ready(30)
        self.assertEqual(window.program.titles(), [driver.main_title()])
        self.assertEqual(window.row_count(), 0)

    def check_refresh_helps(self, window):
        """After a fault is removed, check that a refresh lists all packages."""
        window.click_button('Refresh')
        self.check_usable(window)

    def wrapped(self, commands):
        """A context manager. Inside it, each run of the program has its own mounts, and first executes these shell
        commands.
        """
        path = os.path.join(self.scratch, 'wrapper')
        with open(path, 'w') as stream:
            stream.write('#!/bin/sh\nexec unshare --mount sh -ec \'{}; exec "{}" "$@"\' sh "$@"\n'.format(
                commands, os.environ['VYRE_BINARY']))
        os.chmod(path, 0o755)
        return unittest.mock.patch.dict(os.environ, VYRE_BINARY=path)

    def unprivileged(self):
        """A context manager. Inside it, the program runs as root, but file permissions apply to it."""
        path = os.path.join(self.scratch, 'wrapper')
        with open(path, 'w') as stream:
            stream.write('#!/bin/sh\nexec setpriv --bounding-set=-dac_override,-dac_read_search "{}" "$@"\n'.format(
                os.environ['VYRE_BINARY']))
        os.chmod(path, 0o755)
        return unittest.mock.patch.dict(os.environ, VYRE_BINARY=path)
