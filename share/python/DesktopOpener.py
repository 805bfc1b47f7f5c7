# SPDX-License-Identifier: GPL-2.0-or-later
"""Opens files and web pages in programs of the user's desktop. The webbrowser and mimeviewer programs share this code.

VYRE usually runs as root, because a user starts it through pkexec or sudo. This module never runs a desktop program as
root. It runs the program as the user who started VYRE, with this user's environment, or not at all.

This module needs only Python 3.6 or later and Python's standard library.
"""
import html
import os
import pwd
import re
import signal
import stat
import subprocess
import sys

# The environment variables that environment() keeps, because desktop programs need them. environment() also adds
# variables that depend on the user, such as HOME.
KEPT = ('DISPLAY', 'WAYLAND_DISPLAY', 'PATH', 'TERM', 'TZ', 'LANG', 'LANGUAGE', 'BROWSER', 'XDG_CURRENT_DESKTOP',
        'XDG_SESSION_DESKTOP', 'XDG_SESSION_TYPE', 'XDG_DATA_DIRS', 'DESKTOP_SESSION', 'GNOME_DESKTOP_SESSION_ID',
        'KDE_FULL_SESSION', 'KDE_SESSION_VERSION', 'DBUS_SESSION_BUS_ADDRESS')

RUNTIME_DIRECTORIES = '/run/user'


def shown(text):
    """The text in one line and in quotation marks, for a message. "?" replaces each unprintable character."""
    return '"' + ''.join(c if c.isprintable() else '?' for c in text) + '"'


class Refusal(Exception):
    """Raised if nothing was opened. The text of the exception gives the reason."""


def caller(what):
    """The user database's entry for the user who started VYRE as root; None if this process does not run as root. what:
    the name of the file or page, for messages.
    """
    if os.geteuid() != 0:
        return None
    for variable in ('PKEXEC_UID', 'SUDO_UID'):
        value = os.environ.get(variable, '')
        # If one of these two variables names root, root has used pkexec or sudo. In this case, the other variable may
        # name the user.
        if re.match(r'[0-9]+\Z', value) and int(value) != 0:
            try:
                return pwd.getpwuid(int(value))
            except (KeyError, OverflowError):
                raise Refusal('the user {} of {} does not exist'.format(value, variable))
    raise Refusal('{} is not opened as root, and neither pkexec nor sudo names the user who started VYRE'.format(what))


def become(user):
    """Make this process run as the user. The process can never get root's rights again."""
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
    """The environment for a program of the user. given: VYRE's environment. The process must already run as the user.
    """
    made = {name: value for name, value in given.items() if name in KEPT or name.startswith('LC_')}
    made.update(HOME=user.pw_dir, USER=user.pw_name, LOGNAME=user.pw_name, SHELL=user.pw_shell or '/bin/sh')

    # XDG_RUNTIME_DIR may name a directory of root, or a directory that VYRE has created. Use only a directory of the
    # user.
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
    """The full path of a program in one of the directories of "path", as a shell finds it; None if it is missing."""
    for directory in path.split(os.pathsep):
        candidate = os.path.join(directory or '.', program)
        if os.path.isfile(candidate) and os.access(candidate, os.X_OK):
            return candidate
    return None


def start(what, commands):
    """Replace this process with the first of these commands whose program is installed. The program runs as the user.

    what: the name of the file or page, for messages.
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
    # Python ignores the following signals, and the desktop program would inherit this setting.
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
    """Show a message in a window of zenity, kdialog or xmessage, because a desktop does not show standard error."""
    given = dict(os.environ)
    # zenity and kdialog replace a backslash and the letter after it, so backslashes must be escaped. kdialog also
    # guesses whether a text is rich text, so kdialog always gets rich text.
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
    """Call main() with the command-line arguments. If main() raises Refusal, show its text, and end with status 1."""
    try:
        main(sys.argv[1:])
    except Refusal as e:
        message = '{}: {}\n'.format(os.path.basename(sys.argv[0]), e)
        sys.stderr.buffer.write(message.encode('utf-8', 'backslashreplace'))
        sys.stderr.flush()
        if os.environ.get('DISPLAY') and not sys.stderr.isatty():
            show(message.rstrip())
        sys.exit(1)
