# SPDX-License-Identifier: GPL-2.0-or-later
"""Reads indexes of Debian packages for make-distribution, and converts their fields to the fields of rpm packages."""
import collections
import gzip
import io
import lzma
import os
import random
import re
import subprocess

import rpm

ARCHITECTURES = {'amd64': 'x86_64', 'all': 'noarch'}
FLAGS = {'=': 'EQ', '>=': 'GE', '<=': 'LE', '<<': 'LT', '>>': 'GT'}
SIGNS = {'EQ': '=', 'GE': '>=', 'LE': '<=', 'LT': '<', 'GT': '>'}
# A name, the architecture, which is ignored, and the version.
RELATION = re.compile(r'\s*([^\s(:]+)(?::[\w-]+)?\s*(?:\(\s*([<>=]+)\s*([^\s)]+)\s*\))?\s*$')
PRIORITIES = ('required', 'important', 'standard')

# A flag is a key of SIGNS. If the relation names no version, the flag and all later fields are None.
Relation = collections.namedtuple('Relation', 'name flag epoch version release')


def opened(path):
    """Opens a plain or a compressed file. Python itself cannot read lz4, so the command "lz4" unpacks such a file."""
    kind = os.path.splitext(path)[1]
    if kind == '.lz4':
        done = subprocess.run(['lz4', '-dc', path], check=True, stdout=subprocess.PIPE)
        return io.TextIOWrapper(io.BytesIO(done.stdout), encoding='utf-8')
    return {'.gz': gzip.open, '.xz': lzma.open}.get(kind, open)(path, 'rt', encoding='utf-8')


def stanzas(path):
    """Yields the stanzas of a file as dictionaries."""
    found, name = {}, ''
    with opened(path) as stream:
        for line in stream:
            line = line.rstrip('\n')
            if line[:1] in (' ', '\t'):
                found[name] += '\n' + line[1:]
            elif line:
                name, _, value = line.partition(':')
                found[name] = value.strip()
            elif found:
                yield found
                found = {}
    if found:
        yield found


def split(version):
    """Returns epoch, version and release. A version of rpm has no hyphens. The release may be None."""
    epoch, colon, rest = version.partition(':')
    upstream, hyphen, revision = (rest if colon else version).rpartition('-')
    return (epoch if colon else '0', (upstream if hyphen else revision).replace('-', '_').replace(':', '_'),
            revision if hyphen else None)


def relation(name, sign, version):
    if sign is None:
        return Relation(name, None, None, None, None)
    epoch, version, release = split(version)
    if sign == '>>' and release is None:
        release = '0'  # without a release, rpm does not count 1-1 as later than 1
    return Relation(name, FLAGS[sign], epoch, version, release)


def alternatives(text):
    """Returns a list for each part of a relationship field. It has the relations of which one is sufficient."""
    found = []
    for part in text.split(','):
        if part.strip():
            found.append([])
            for choice in part.split('|'):
                found[-1].append(relation(*RELATION.match(choice).groups()))
    return found


def text_of_version(relation):
    """Returns the version in the form of rpm; it is empty if the relation names no version."""
    if relation.flag is None:
        return ''
    return (relation.epoch + ':' if relation.epoch != '0' else '') + relation.version + (
        '-' + relation.release if relation.release else '')


def written(choices):
    """Returns the relation of an rpm package. rpm writes alternatives as one name: (first or second >= 2)."""
    if len(choices) == 1:
        return choices[0]
    texts = [' '.join([each.name] + ([SIGNS[each.flag], text_of_version(each)] if each.flag else []))
             for each in choices]
    return Relation('({})'.format(' or '.join(texts)), None, None, None, None)


def matches(needed, provided):
    """Whether a provided relation matches a needed one.

    As in rpm, a relation without a version matches all versions, and releases are compared only if both have one.
    """
    if needed.flag is None or provided.flag is None:
        return True
    compared = needed.release is not None and provided.release is not None
    order = rpm.labelCompare(*((each.epoch, each.version, each.release if compared else '0')
                               for each in (provided, needed)))
    return order in {'EQ': (0,), 'GE': (0, 1), 'LE': (-1, 0), 'LT': (-1,), 'GT': (1,)}[needed.flag]


def older(relation):
    """Returns the relation with an older release of the same version."""
    return relation._replace(release=relation.release + '~1')


class Package:
    """The fields of a stanza, as fields of an rpm package."""

    def __init__(self, stanza, description):
        self.stanza = stanza
        self.name = stanza['Package']
        self.arch = ARCHITECTURES[stanza['Architecture']]
        self.epoch, self.version, self.release = split(stanza['Version'])
        self.release = self.release or '0'  # rpm requires a release
        self.summary, _, rest = stanza['Description'].partition('\n')
        lines = (description.partition('\n')[2] or rest or self.summary).split('\n')
        self.description = '\n'.join('' if line == '.' else line for line in lines)
        self.own = Relation(self.name, 'EQ', self.epoch, self.version, self.release)
        self.provides = [self.own] + [each for each, in alternatives(stanza.get('Provides', ''))]
        self.requires = self.field('Pre-Depends') + self.field('Depends')
        self.conflicts = [each for each, in self.field('Conflicts') + self.field('Breaks')]
        self.obsoletes = [each for each, in self.field('Replaces')]

    def field(self, name):
        return alternatives(self.stanza.get(name, ''))

    def describe(self, pkg):
        """Sets all fields that the index has."""
        get = self.stanza.get
        for name in ('name', 'arch', 'epoch', 'version', 'release', 'summary', 'description'):
            setattr(pkg, name, getattr(self, name))
        pkg.url = get('Homepage', '')
        pkg.rpm_group = get('Section', 'Unspecified')
        pkg.rpm_vendor = 'Debian'
        pkg.rpm_packager = get('Maintainer', '')
        source, _, version = get('Source', self.name).partition(' ')
        pkg.rpm_sourcerpm = '{}-{}-{}.src.rpm'.format(
            source, *[each or '0' for each in split(version.strip('()') or get('Version'))[1:]])
        pkg.size_package = int(get('Size'))
        pkg.size_installed = int(get('Installed-Size', '0')) * 1024
        pkg.size_archive = pkg.size_installed
        pkg.pkgId = get('SHA256')
        before = len(self.field('Pre-Depends'))
        pkg.requires = [written(each) + (place < before,) for place, each in enumerate(self.requires)]
        for name, relations in (
                ('provides', self.provides), ('conflicts', self.conflicts), ('obsoletes', self.obsoletes),
                ('recommends', map(written, self.field('Recommends'))),
                ('suggests', map(written, self.field('Suggests'))),
                ('enhances', map(written, self.field('Enhances')))):
            setattr(pkg, name, [each + (False,) for each in relations])


def read(indexes, translations):
    """Returns the packages of all indexes. If several stanzas have the same name, the last stanza counts.

    An index has the summaries, and perhaps the descriptions. Otherwise, the translations have the descriptions.
    """
    descriptions = {}
    for path in translations:
        for stanza in stanzas(path):
            descriptions[stanza['Description-md5']] = stanza['Description-en']
    found = {stanza['Package']: stanza for path in indexes for stanza in stanzas(path)}
    packages = [Package(each, descriptions.get(each.get('Description-md5'), '')) for each in found.values()]
    known = {package.name: package.own for package in packages}
    for package in packages:
        # A Debian package can replace some files of another package. An rpm package would replace the whole package.
        package.obsoletes = [
            each for each in package.obsoletes if each.name not in known or not any(
                matches(each, own) for own in (known[each.name], older(known[each.name])))]
    return packages


class Installation:
    """Packages that a system can have at the same time: each requirement is met, and no package conflicts."""

    def __init__(self, packages):
        self.packages = packages
        self.providers = collections.defaultdict(list)
        for number, package in enumerate(packages):
            for provided in package.provides:
                self.providers[provided.name].append((number, provided))
        self.chosen = set()
        self.refused = collections.defaultdict(list)  # what the chosen packages conflict with

    def found(self, needed):
        return [number for number, provided in self.providers.get(needed.name, ()) if matches(needed, provided)]

    def closure(self, seed):
        """Returns a package, and all packages that must be installed with it. Returns None if one is missing."""
        added, waiting = set(), [seed]
        while waiting:
            number = waiting.pop()
            if number in self.chosen or number in added:
                continue
            added.add(number)
            for choices in self.packages[number].requires:
                found = [each for needed in choices for each in self.found(needed)]
                if not found:
                    return None
                if not any(each in self.chosen or each in added for each in found):
                    waiting.append(found[0])
        return added

    def collides(self, added):
        for number in added:
            package = self.packages[number]
            for needed in package.conflicts + package.obsoletes:
                if any(each != number and (each in self.chosen or each in added) for each in self.found(needed)):
                    return True
            if any(matches(needed, provided) for provided in package.provides
                   for needed in self.refused.get(provided.name, ())):
                return True
        return False

    def fill(self, count):
        """Chooses at most this number of packages: first the most important packages, then others by chance."""
        numbers = list(range(len(self.packages)))
        random.Random(23).shuffle(numbers)
        numbers.sort(key=lambda number: self.packages[number].stanza.get('Priority') not in PRIORITIES)
        for number in numbers:
            if len(self.chosen) == count:
                break
            added = self.closure(number)
            if added and len(self.chosen) + len(added) <= count and not self.collides(added):
                self.chosen |= added
                for each in added:
                    for needed in self.packages[each].conflicts + self.packages[each].obsoletes:
                        self.refused[needed.name].append(needed)
        return sorted(self.chosen)
