# SPDX-License-Identifier: GPL-2.0-or-later
"""The locations of the package manager's configuration files, and the rules about the files that the script reads.

The program's editor reads the same files by the same rules. Every thread may call this module; it has no state.
"""

import codecs
import os
import re
import stat

import dnf.conf.read

from .paths import inRoot
from .program import tr, yumIOC

# The main file that the dnf command reads.
OWN_CONFIGURATION = '/etc/dnf/dnf.conf'


def configurationFile():
    """The path of the main configuration file, or None. The editor of repositories looks in the same places."""
    for path in ('/etc/yum/yum.conf', '/etc/yum.conf', OWN_CONFIGURATION):
        if os.path.exists(inRoot(path)):
            return inRoot(path)
    return None


def repositoryDirectories(known):
    """Returns the repository directories for a main configuration file that names no directory. The list includes
    directories that only dnf knows, if they exist. The editor uses the same list.
    """
    usual = ['/etc/yum.repos.d', '/etc/yum/repos.d']
    return [inRoot(path) for path in usual] + [
        inRoot(path) for path in known if path not in usual and os.path.isdir(inRoot(path))]


def tooLarge(limit):
    """The message about a file that is larger than this number of bytes."""
    return tr('it is larger than {} MB').format(limit >> 20)


def mainFileFault(path):
    """The reason why dnf must not read the main configuration file; empty if dnf can read it.

    dnf would never stop reading a pipe or an endless file. dnf itself handles all other errors of the file. If VYRE
    ignored the whole file because of another error, it would also ignore options that demand signature checks.
    """
    try:
        # The type is checked first, because opening a device may already have an effect.
        found = os.stat(path)
        if not stat.S_ISREG(found.st_mode):
            return tr('it is not a regular file')
        if found.st_size > yumIOC.repositoryFileLimit:
            return tooLarge(yumIOC.repositoryFileLimit)
        with open(path, 'rb'):
            return ''
    except OSError as e:
        return e.strerror


# The first bytes of texts in UTF-16. The program does not read such files.
TWO_BYTE_MARKS = (b'\xff\xfe', b'\xfe\xff')


def isUsable(path):
    """Whether the program's editor can read this repository file. The editor reports the files that it does not read.

    dnf would never stop reading a pipe or an endless file.
    """
    try:
        # The type is checked first, because opening a device may already have an effect.
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
    """Whether the content of a configuration file is text, by the rules of the program."""
    if b'\0' in content or content.startswith(TWO_BYTE_MARKS):
        return False
    if content.startswith(codecs.BOM_UTF8):
        content = content[len(codecs.BOM_UTF8):]
    lines = [line.rstrip(b'\r') for line in content.split(b'\n')]
    if len(lines) == 1 and b'\r' in lines[0]:
        return False
    return largestSection(b'\n'.join(lines)) <= yumIOC.repositorySectionLimit


def largestSection(content):
    """The size of the longest repository section, in bytes. The main section is ignored."""
    starts = [found.start() for found in re.finditer(b'^\\[', content, re.M)]
    first = 0
    while first < len(starts) and re.match(b'\\[main\\](\n|$)', content[starts[first]:starts[first] + 7]):
        first += 1
    ends = starts[first + 1:] + [len(content)]
    return max((end - start for start, end in zip(starts[first:], ends)), default=0)


class RepositoryReader(dnf.conf.read.RepoReader):
    """Reads only the repository files that the program's editor can read."""

    def _get_repos(self, path):
        return super(RepositoryReader, self)._get_repos(path) if isUsable(path) else iter(())
