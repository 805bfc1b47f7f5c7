# SPDX-License-Identifier: GPL-2.0-or-later
"""The metadata documents of repositories, and the search for errors in them. The worker that reads repositories runs
this module.
"""

import bz2
import glob
import gzip
import lzma
import os
import tempfile
import threading
import zlib

import dnf.exceptions
import libdnf.conf
import libdnf.error
import libdnf.module
import libdnf.utils

from . import program
from .configfiles import tooLarge
from .paths import inRoot
from .program import tr


def documentPath(repo, kind):
    """The path of a metadata document in the cache; None if the repository lacks the document. kind: for example
    "primary".
    """
    try:
        return repo._repo.getMetadataPath(kind) or None
    except (RuntimeError, libdnf.error.Error):
        return None


# The file name endings of uncompressed documents. The script can also unpack documents with the endings in COMPRESSED,
# and with .zst. Only dnf can read documents with other endings, such as .zck.
PLAIN = ('', '.xml', '.yaml', '.yml')

COMPRESSED = {'.gz': gzip.open, '.bz2': bz2.open, '.xz': lzma.open}


def canUnpack(path):
    ending = os.path.splitext(path)[1]
    return ending in PLAIN or ending in COMPRESSED or ending == '.zst'


def metadataFault(path, element):
    """The error in a metadata document; empty if the document has no error, or if the script cannot check it. element:
    the name that the outermost XML element must have.
    """
    find = program.faultOfMetadata
    return find(path, element) if find is not None and canUnpack(path) else ''


# For each kind of document that DocumentChecks checks: the name of the outermost XML element.
ELEMENTS = {'primary': 'metadata', 'filelists': 'filelists', 'other': 'otherdata'}


class DocumentChecks:
    """Checks documents of a repository on a thread of its own. Most of the check does not need the interpreter's lock,
    so dnf can read the same documents during the check. kinds: some keys of ELEMENTS, in the order of the checks.
    """

    def __init__(self, repo, kinds):
        self._faults = {}
        self._failure = None
        self._thread = None
        # The thread must not use the repository, which dnf is reading.
        paths = [(kind, documentPath(repo, kind)) for kind in kinds]
        if paths:
            self._thread = threading.Thread(target=self._run, args=(paths,))
            self._thread.start()

    def _run(self, paths):
        try:
            for kind, path in paths:
                self._faults[kind] = metadataFault(path, ELEMENTS[kind]) if path is not None else ''
        except Exception as e:
            self._failure = e

    def wait(self):
        """Wait for the checks; return a dictionary from the kind of each document to its error. If a document has no
        error, the text is empty. If a check was impossible, raise its exception.
        """
        if self._thread is not None:
            self._thread.join()
        if self._failure is not None:
            raise self._failure
        return self._faults


# The size in bytes of the blocks that unpacked() returns. A whole unpacked document may be larger than the memory.
BLOCK = 1 << 20

# The largest size of an unpacked document about modules, in bytes. The script needs this whole document in memory.
MODULES_LIMIT = 64 << 20


def unpacked(path):
    """The content of a metadata document, block by block."""
    ending = os.path.splitext(path)[1]
    if ending == '.zst':
        with tempfile.NamedTemporaryFile() as plain:
            libdnf.utils.decompress(path, plain.name, 0o600)
            with open(plain.name, 'rb') as stream:
                yield from iter(lambda: stream.read(BLOCK), b'')
    else:
        with COMPRESSED.get(ending, open)(path, 'rb') as stream:
            yield from iter(lambda: stream.read(BLOCK), b'')


# The exceptions that unpacked() can raise for a damaged document.
UNPACKING_ERRORS = (RuntimeError, libdnf.error.Error, OSError, EOFError, lzma.LZMAError, zlib.error)


def modulesFault(base, path):
    """The error in a document about modules; empty if the document has no error, or if the script cannot check it.

    Without this check, dnf would read a damaged document, and the process would crash.
    """
    if not canUnpack(path):
        return ''
    try:
        content = bytearray()
        for block in unpacked(path):
            content += block
            if len(content) > MODULES_LIMIT:
                return tooLarge(MODULES_LIMIT)
        text = content.decode('utf-8')
        container = libdnf.module.ModulePackageContainer(False, base.conf.installroot, base.conf.substitutions['arch'],
                                                         base.conf.persistdir)
        container.add(text, 'tried')
    except UNPACKING_ERRORS + (ValueError,) as e:
        return str(e) or type(e).__name__
    return ''


def checkModuleFiles(base):
    """Raise an exception if a module file below /etc is damaged. Without this check, dnf would crash, or report an
    error without the file's name.
    """
    faults = {path: modulesFault(base, path)
              for path in sorted(glob.glob(inRoot('/etc/dnf/modules.defaults.d') + '/*.yaml'))}
    for path in sorted(glob.glob(inRoot('/etc/dnf/modules.d') + '/*.module')):
        try:
            libdnf.conf.ConfigParser().read(path)
        except (RuntimeError, libdnf.error.Error) as e:
            faults[path] = str(e)
    for path, fault in faults.items():
        if fault:
            raise dnf.exceptions.RepoError(tr('The file {} is damaged: {}').format(path, fault))
