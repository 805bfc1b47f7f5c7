# SPDX-License-Identifier: GPL-2.0-or-later
"""Opens things in the programs that the user's desktop has for them; what webbrowser and mimeviewer share.

VYRE itself usually runs as root, started by a user through pkexec or sudo. Nothing that shows documents from elsewhere
runs as root here: it runs as that user and with that user's surroundings, or not at all.

Works with Python 3.6 and later, and needs nothing but its standard library.
"""
import html
import os
import pwd
import re
import signal
import stat
import subprocess
import sys

# The variables of the caller that a desktop's programs need, besides those that are made for the user.
KEPT = ('DISPLAY', 'WAYLAND_DISPLAY', 'PATH', 'TERM', 'TZ', 'LANG', 'LANGUAGE', 'BROWSER', 'XDG_CURRENT_DESKTOP',
        'XDG_SESSION_DESKTOP', 'XDG_SESSION_TYPE', 'XDG_DATA_DIRS', 'DESKTOP_SESSION', 'GNOME_DESKTOP_SESSION_ID',
        'KDE_FULL_SESSION', 'KDE_SESSION_VERSION', 'DBUS_SESSION_BUS_ADDRESS')

RUNTIME_DIRECTORIES = '/run/user'


def shown(text):
    """The text for a message, on one line."""
    return '"' + ''.join(c if c.isprintable() else '?' for c in text) + '"'


class Refusal(Exception):
    """Nothing was opened; the text tells why."""


def caller(what):
    """The user, as an entry of the user database, whom root works for; None when this does not run as root."""
    if os.geteuid() != 0:
        return None
    for variable in ('PKEXEC_UID', 'SUDO_UID'):
        value = os.environ.get(variable, '')
        # When it is root itself, the other one may tell of somebody who had become root before.
        if re.match(r'[0-9]+\Z', value) and int(value) != 0:
            try:
                return pwd.getpwuid(int(value))
            except (KeyError, OverflowError):
                raise Refusal('the user {} of {} does not exist'.format(value, variable))
    raise Refusal('{} is not opened as root: neither pkexec nor sudo names another user'.format(what))


def become(user):
    """Give up everything that root may do, for good."""
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
    """What the user's programs are to find in their environment; to be called as that user."""
    made = {name: value for name, value in given.items() if name in KEPT or name.startswith('LC_')}
    made.update(HOME=user.pw_dir, USER=user.pw_name, LOGNAME=user.pw_name, SHELL=user.pw_shell or '/bin/sh')

    # sudo may have taken over root's, or VYRE have made one for itself.
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
    """The full path of a program, as a shell finds it; None when there is none."""
    for directory in path.split(os.pathsep):
        candidate = os.path.join(directory or '.', program)
        if os.path.isfile(candidate) and os.access(candidate, os.X_OK):
            return candidate
    return None


def start(what, commands):
    """Become the first of these commands whose program is installed, as the user; what is for messages."""
    user = caller(what)
    given = dict(os.environ)
    if user is not None:
        become(user)
        given = environment(user, given)
        try:
            os.chdir(user.pw_dir)
        except OSError:
            os.chdir('/')
    # The interpreter ignores these for itself, and a started program would go on doing so.
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
    """Show a message on the display, in what there is for that: a desktop shows nobody what programs write."""
    given = dict(os.environ)
    # Both zenity and kdialog replace a backslash and the letter after it. kdialog also guesses whether a text is rich
    # text: it gets rich text, in which the text itself is escaped.
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
    """Run main on the arguments; end with one message and status 1 when it refuses."""
    try:
        main(sys.argv[1:])
    except Refusal as e:
        message = '{}: {}\n'.format(os.path.basename(sys.argv[0]), e)
        sys.stderr.buffer.write(message.encode('utf-8', 'backslashreplace'))
        sys.stderr.flush()
        if os.environ.get('DISPLAY') and not sys.stderr.isatty():
            show(message.rstrip())
        sys.exit(1)
