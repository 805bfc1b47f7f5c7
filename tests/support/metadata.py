# SPDX-License-Identifier: GPL-2.0-or-later
"""Damages the metadata of repositories, and corrects the checksums so that dnf still accepts the files. Also makes
large and signed metadata.
"""
import gzip
import hashlib
import os
import re
import subprocess


def alter(repository, kind, change, packed=False):
    """Replace a document in a repository's metadata. change: the function that computes the new bytes from the old
    bytes.

    packed: if true, change() gets the compressed bytes. kind: the type of the document in repomd.xml. "group" stands
    for the compressed group list, whose type differs between versions of createrepo_c.
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


def sign(repository, directory):
    """Sign the metadata of a repository with a new key "Metadata Key". Return the path of the public key. directory: a
    directory for the keys.
    """
    keys = os.path.join(directory, 'keys')
    os.makedirs(keys, mode=0o700)
    environment = dict(os.environ, GNUPGHOME=keys)
    document = os.path.join(repository, 'repodata', 'repomd.xml')
    key = os.path.join(directory, 'key.asc')
    try:
        for command in (
                ['--passphrase', '', '--quick-generate-key', 'Metadata Key <metadata@larkspur.example>', 'rsa2048',
                 'sign', 'never'],
                ['--armor', '--output', key, '--export'],
                ['--armor', '--detach-sign', '--output', document + '.asc', document]):
            subprocess.run(['gpg', '--batch', '--quiet', '--pinentry-mode', 'loopback'] + command, env=environment,
                           check=True)
    finally:
        subprocess.run(['gpgconf', '--kill', 'all'], env=environment)
    return key


def half(content):
    return content[:len(content) // 2]


def page(content):
    """The page that a captive portal or a badly configured server sends instead of the requested document."""
    return b'<html><body><p>Please log in</p></body></html>'


def make_large(repository, count):
    """Make a repository with this number of packages. The repository has only metadata and no package files."""
    package = ('<package type="rpm"><name>{name}</name><arch>noarch</arch><version epoch="0" ver="1" rel="1"/>'
               '<checksum type="sha256" pkgid="YES">{number:064x}</checksum><summary>Number {number}</summary>'
               '<description>The package {number} of a large repository</description><packager/><url/>'
               '<time file="1694509200" build="1694509200"/><size package="1" installed="1" archive="1"/>'
               '<location href="{name}.rpm"/><format><rpm:license>MIT</rpm:license><rpm:group/><rpm:buildhost/>'
               '<rpm:sourcerpm/><rpm:header-range start="0" end="1"/><rpm:provides>'
               '<rpm:entry name="{name}" flags="EQ" epoch="0" ver="1" rel="1"/></rpm:provides></format></package>')
    primary = ('<?xml version="1.0" encoding="UTF-8"?>\n<metadata xmlns="http://linux.duke.edu/metadata/common" '
               'xmlns:rpm="http://linux.duke.edu/metadata/rpm" packages="{}">{}</metadata>\n').format(
                   count, ''.join(package.format(name='large-{}'.format(number), number=number)
                                  for number in range(count))).encode()
    content = gzip.compress(primary, 1)
    os.makedirs(os.path.join(repository, 'repodata'))
    with open(os.path.join(repository, 'repodata', 'primary.xml.gz'), 'wb') as stream:
        stream.write(content)
    with open(os.path.join(repository, 'repodata', 'repomd.xml'), 'w') as stream:
        stream.write('<?xml version="1.0" encoding="UTF-8"?>\n<repomd xmlns="http://linux.duke.edu/metadata/repo">'
                     '<revision>1</revision><data type="primary"><location href="repodata/primary.xml.gz"/>'
                     '<checksum type="sha256">{}</checksum><open-checksum type="sha256">{}</open-checksum>'
                     '<size>{}</size><open-size>{}</open-size><timestamp>1</timestamp></data></repomd>\n'.format(
                         hashlib.sha256(content).hexdigest(), hashlib.sha256(primary).hexdigest(), len(content),
                         len(primary)))
