# SPDX-License-Identifier: GPL-2.0-or-later
"""The paths of the package manager's configuration files, and the rules that decide which files the script reads.

The program's repository editor follows the same rules. Every thread may call this module; it has no state.
"""

import codecs
import os
import re
import stat

import dnf.conf.read

from .paths import inRoot
from .program import tr, yumIOC

# The main configuration file that the dnf command reads.
OWN_CONFIGURATION = '/etc/dnf/dnf.conf'


def configurationFile():
    """The path of the main configuration file; None if no such file exists. The repository editor uses the same file.
    """
    for path in ('/etc/yum/yum.conf', '/etc/yum.conf', OWN_CONFIGURATION):
        if os.path.exists(inRoot(path)):
            return inRoot(path)
    return None


def repositoryDirectories(known):
    """The repository directories to use if the main configuration file does not set reposdir. known: the directories
    that dnf uses by default; the result contains the existing directories of this list. The repository editor uses the
    same list.
    """
    usual = ['/etc/yum.repos.d', '/etc/yum/repos.d']
    return [inRoot(path) for path in usual] + [
        inRoot(path) for path in known if path not in usual and os.path.isdir(inRoot(path))]


def tooLarge(limit):
    """The message about a file that is larger than the limit. limit: a number of bytes."""
    return tr('it is larger than {} MB').format(limit >> 20)


def mainFileFault(path):
    """The reason why VYRE must not pass the main configuration file to dnf; empty if VYRE can pass the file.

    The function refuses pipes and endless files, because dnf would never stop reading them. The function accepts a file
    with errors in its text, because dnf handles these errors. If VYRE refused this file, VYRE would also ignore its
    options that demand signature checks.
    """
    try:
        # Check the file type before opening the file: a device may already act when it is opened.
        found = os.stat(path)
        if not stat.S_ISREG(found.st_mode):
            return tr('it is not a regular file')
        if found.st_size > yumIOC.repositoryFileLimit:
            return tooLarge(yumIOC.repositoryFileLimit)
        with open(path, 'rb'):
            return ''
    except OSError as e:
        return e.strerror


# The first bytes of a file in UTF-16. The repository editor cannot read such a file.
TWO_BYTE_MARKS = (b'\xff\xfe', b'\xfe\xff')


def isUsable(path):
    """Whether the script reads this repository file. The script reads only files that the repository editor can read,
    too. The editor reports all other files.

    The function also refuses pipes and endless files, because dnf would never stop reading them.
    """
    try:
        # Check the file type before opening the file: a device may already act when it is opened.
        if not stat.S_ISREG(os.stat(path).st_mode):
            return False
        descriptor = os.open(path, os.O_RDONLY | os.O_CLOEXEC | os.O_NOCTTY | os.O_NONBLOCK)
    except FileNotFoundError:
        return False
    except OSError:
        return True  # dnf reports the reason
    try:
        if not stat.S_ISREG(os.fstat(descriptor).st_mode):
            return False
        content = b''
        while len(content) <= yumIOC.repositoryFileLimit:
            block = os.read(descriptor, 1 << 20)
            if not block:
                return isText(content)
            content += block
        return False
    except BlockingIOError:
        return False
    except OSError:
        return True
    finally:
        os.close(descriptor)


def isText(content):
    """Whether the repository editor treats the content of a file as text, and each repository section is short enough
    for the editor.
    """
    if b'\0' in content or content.startswith(TWO_BYTE_MARKS):
        return False
    if content.startswith(codecs.BOM_UTF8):
        content = content[len(codecs.BOM_UTF8):]
    lines = [line.rstrip(b'\r') for line in content.split(b'\n')]
    if len(lines) == 1 and b'\r' in lines[0]:
        return False
    return largestSection(b'\n'.join(lines)) <= yumIOC.repositorySectionLimit


def largestSection(content):
    """The size of the longest section, in bytes. [main] sections at the beginning of the file do not count."""
    starts = [found.start() for found in re.finditer(b'^\\[', content, re.M)]
    first = 0
    while first < len(starts) and re.match(b'\\[main\\](\n|$)', content[starts[first]:starts[first] + 7]):
        first += 1
    ends = starts[first + 1:] + [len(content)]
    return max((end - start for start, end in zip(starts[first:], ends)), default=0)


class RepositoryReader(dnf.conf.read.RepoReader):
    """dnf's reader of repository files, restricted to the files that the repository editor can read, too."""

    def _get_repos(self, path):
        return super(RepositoryReader, self)._get_repos(path) if isUsable(path) else iter(())
