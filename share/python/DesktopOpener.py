# SPDX-License-Identifier: GPL-2.0-or-later
"""Opens files and pages in the programs of the user's desktop. The webbrowser and mimeviewer programs share this code.

VYRE itself usually runs as root, because a user starts it through pkexec or sudo. This module never runs a program as
root. It runs the program as that user and with the user's own environment, or not at all.

This module needs Python 3.6 or later, and only its standard library.
"""
import html
import os
import pwd
import re
import signal
import stat
import subprocess
import sys

# The caller's variables that the programs of a desktop need. environment() adds the variables that depend on the user.
KEPT = ('DISPLAY', 'WAYLAND_DISPLAY', 'PATH', 'TERM', 'TZ', 'LANG', 'LANGUAGE', 'BROWSER', 'XDG_CURRENT_DESKTOP',
        'XDG_SESSION_DESKTOP', 'XDG_SESSION_TYPE', 'XDG_DATA_DIRS', 'DESKTOP_SESSION', 'GNOME_DESKTOP_SESSION_ID',
        'KDE_FULL_SESSION', 'KDE_SESSION_VERSION', 'DBUS_SESSION_BUS_ADDRESS')

RUNTIME_DIRECTORIES = '/run/user'


def shown(text):
    """Returns the text for a message: on one line, in quotation marks."""
    return '"' + ''.join(c if c.isprintable() else '?' for c in text) + '"'


class Refusal(Exception):
    """Raised if nothing was opened. The text of the exception gives the reason."""


def caller(what):
    """The entry in the user database for the user who has become root; None if this process does not run as root."""
    if os.geteuid() != 0:
        return None
    for variable in ('PKEXEC_UID', 'SUDO_UID'):
        value = os.environ.get(variable, '')
        # If one variable names root, the other variable may name the user who became root first.
        if re.match(r'[0-9]+\Z', value) and int(value) != 0:
            try:
                return pwd.getpwuid(int(value))
            except (KeyError, OverflowError):
                raise Refusal('the user {} of {} does not exist'.format(value, variable))
    raise Refusal('{} is not opened as root, and neither pkexec nor sudo names the user who started VYRE'.format(what))


def become(user):
    """Become this user. The process can never get root's rights again."""
    try:
        os.initgroups(user.pw_name, user.pw_gid)
        os.setresgid(user.pw_gid, user.pw_gid, user.pw_gid)
        os.setresuid(user.pw_uid, user.pw_uid, user.pw_uid)
    except OSError as e:
        raise Refusal('cannot become the user {}: {}'.format(user.pw_name, e.strerror))


def is_own_directory(path, uid):
    try:
        status = os.stat(path)
    except OSError:
        return False
    return stat.S_ISDIR(status.st_mode) and status.st_uid == uid


def environment(user, given):
    """Returns the environment for the user's programs. The process must already run as this user."""
    made = {name: value for name, value in given.items() if name in KEPT or name.startswith('LC_')}
    made.update(HOME=user.pw_dir, USER=user.pw_name, LOGNAME=user.pw_name, SHELL=user.pw_shell or '/bin/sh')

    # The given runtime directory may belong to root, or VYRE may have made it for itself.
    for directory in (given.get('XDG_RUNTIME_DIR'), os.path.join(RUNTIME_DIRECTORIES, str(user.pw_uid))):
        if directory and is_own_directory(directory, user.pw_uid):
            made['XDG_RUNTIME_DIR'] = directory
            bus = os.path.join(directory, 'bus')
            if 'DBUS_SESSION_BUS_ADDRESS' not in made and os.path.exists(bus):
                made['DBUS_SESSION_BUS_ADDRESS'] = 'unix:path=' + bus
            break

    for cookies in (given.get('XAUTHORITY'), os.path.join(user.pw_dir, '.Xauthority')):
        if cookies and os.access(cookies, os.R_OK):
            made['XAUTHORITY'] = cookies
            break
    return made


def find(program, path):
    """The full path of a program, searched for as a shell does; None if the program is missing."""
    for directory in path.split(os.pathsep):
        candidate = os.path.join(directory or '.', program)
        if os.path.isfile(candidate) and os.access(candidate, os.X_OK):
            return candidate
    return None


def start(what, commands):
    """Replace this process by the first command whose program is installed. The program runs as the user.

    what: the name of the opened file or page in messages.
    """
    user = caller(what)
    given = dict(os.environ)
    if user is not None:
        become(user)
        given = environment(user, given)
        try:
            os.chdir(user.pw_dir)
        except OSError:
            os.chdir('/')
    # The interpreter ignores these signals. A started program would inherit this setting.
    for number in (signal.SIGPIPE, signal.SIGXFSZ):
        signal.signal(number, signal.SIG_DFL)
    for command in commands:
        program = find(command[0], given.get('PATH', os.defpath))
        if program is not None:
            try:
                os.execve(program, command, given)
            except OSError as e:
                raise Refusal('cannot start {}: {}'.format(program, e.strerror))
    raise Refusal('{} is not opened: none of {} is installed'.format(
        what, ', '.join(command[0] for command in commands)))


def show(text):
    """Show a message in a window of an available program, because a desktop does not show the output of programs."""
    given = dict(os.environ)
    # zenity and kdialog both replace a backslash and the letter after it. kdialog also guesses whether a text is rich
    # text. So kdialog gets rich text that contains the escaped text.
    escaped = text.replace('\\', '\\\\')
    rich = '<qt><p style="white-space: pre-wrap">' + html.escape(text).replace('\\', '&#92;') + '</p></qt>'
    for command in (['zenity', '--error', '--no-markup', '--title=VYRE', '--text=' + escaped],
                    ['kdialog', '--title', 'VYRE', '--error', rich],
                    ['xmessage', '-center', '-title', 'VYRE', text]):
        program = find(command[0], given.get('PATH', os.defpath))
        if program is not None:
            subprocess.run([program] + command[1:], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                           stderr=subprocess.DEVNULL)
            return


def run(main):
    """Run main with the arguments. If main refuses them, end with one message and status 1."""
    try:
        main(sys.argv[1:])
    except Refusal as e:
        message = '{}: {}\n'.format(os.path.basename(sys.argv[0]), e)
        sys.stderr.buffer.write(message.encode('utf-8', 'backslashreplace'))
        sys.stderr.flush()
        if os.environ.get('DISPLAY') and not sys.stderr.isatty():
            show(message.rstrip())
        sys.exit(1)
