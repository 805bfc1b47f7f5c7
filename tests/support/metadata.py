# SPDX-License-Identifier: GPL-2.0-or-later
"""Damages the metadata of repositories, and corrects the checksums so that dnf still accepts the files."""
import gzip
import hashlib
import os
import re
import subprocess


def alter(repository, kind, change, packed=False):
    """Replace a document in a repository's metadata. change: the function that computes the new bytes from the old
    bytes.

    packed: change() gets the compressed bytes. kind: "group" means the compressed group list; older versions of
    createrepo_c also make an uncompressed list.
    """
    index = os.path.join(repository, 'repodata', 'repomd.xml')
    with open(index) as stream:
        text = stream.read()
    if kind == 'group' and '<data type="group_gz">' in text:
        kind = 'group_gz'
    entry = re.search(r'<data type="{}">.*?</data>'.format(kind), text, re.S).group(0)
    path = os.path.join(repository, re.search('href="([^"]*)"', entry).group(1))
    with open(path, 'rb') as stream:
        content = stream.read()
    opened = b''
    if packed:
        content = change(content)
    else:
        opened = change(gzip.decompress(content))
        content = gzip.compress(opened)
    with open(path, 'wb') as stream:
        stream.write(content)
    changed = entry
    for prefix, data in (('', content), ('open-', opened)):
        changed = re.sub('<{}checksum type="sha256">[^<]*'.format(prefix),
                         '<{}checksum type="sha256">{}'.format(prefix, hashlib.sha256(data).hexdigest()), changed)
        changed = re.sub('<{}size>[^<]*'.format(prefix), '<{}size>{}'.format(prefix, len(data)), changed)
    with open(index, 'w') as stream:
        stream.write(text.replace(entry, changed))


def add_modules(repository, content, directory):
    """Add a document about modules to a repository. directory: a directory for a temporary file."""
    path = os.path.join(directory, 'modules.yaml')
    with open(path, 'w') as stream:
        stream.write(content)
    subprocess.run(['modifyrepo_c', '--mdtype=modules', path, os.path.join(repository, 'repodata')], check=True,
                   stdout=subprocess.DEVNULL)


def half(content):
    return content[:len(content) // 2]


def page(content):
    """The page that a captive portal or a badly configured server sends instead of the requested document."""
    return b'<html><body><p>Please log in</p></body></html>'
