# SPDX-License-Identifier: GPL-2.0-or-later
"""The documents of a repository's metadata, and their errors. The worker that reads repositories runs this module."""

import bz2
import glob
import gzip
import lzma
import os
import tempfile
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
    """The path of a repository's metadata of this kind in the cache; None if the repository lacks such metadata."""
    try:
        return repo._repo.getMetadataPath(kind) or None
    except (RuntimeError, libdnf.error.Error):
        return None


# The file name endings of uncompressed documents. The script cannot unpack documents with other, unknown endings, such
# as .zck. Only dnf can read such documents.
PLAIN = ('', '.xml', '.yaml', '.yml')

COMPRESSED = {'.gz': gzip.open, '.bz2': bz2.open, '.xz': lzma.open}


def canUnpack(path):
    ending = os.path.splitext(path)[1]
    return ending in PLAIN or ending in COMPRESSED or ending == '.zst'


def metadataFault(path, element):
    """The error of a metadata document; empty if the document has no error, or if it cannot be checked. The outermost
    element of the document must be the given element.
    """
    find = program.faultOfMetadata
    return find(path, element) if find is not None and canUnpack(path) else ''


# The size of a block, in bytes. An unpacked document may be larger than the memory.
BLOCK = 1 << 20

# The largest unpacked document about modules, in bytes. The script needs the whole document in memory.
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


# The exceptions that can occur while a damaged document is unpacked.
UNPACKING_ERRORS = (RuntimeError, libdnf.error.Error, OSError, EOFError, lzma.LZMAError, zlib.error)


def modulesFault(base, path):
    """The error of a document about modules. Empty if the document has no error, or if it cannot be checked.

    If dnf itself reads a damaged document, in a repository or on the system, the process crashes.
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
    """Refuse a damaged module file in the system's own directories. dnf would crash, or not name the file."""
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
