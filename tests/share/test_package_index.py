# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests that benchmarks/make-distribution makes rpm packages with the fields of an index of Debian packages."""

import gzip
import json
import lzma
import os
import subprocess
import sys
import tempfile
import unittest

SOURCES = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

INDEX = '''Package: amber
Version: 2:1.4-rc1-3+b1
Installed-Size: 300
Maintainer: Amber Packagers <amber@packages.example>
Architecture: amd64
Source: amber-tools (2:1.4-rc1-3)
Depends: cedar:any (>= 1.0~beta1), birch-data (= 0.5) | cobalt (<< 1:2.0-1), virtual-anvil (>= 3)
Pre-Depends: basin
Recommends: delta | ember, fern (>> 1.0)
Suggests: delta
Enhances: basin
Conflicts: ember, virtual-tin (<< 1)
Breaks: basin (<< 0.1)
Replaces: basin (<< 0.1), cedar (<< 9), amber-legacy
Provides: virtual-amber, amber-plugin (= 7)
Description: Tool for résumés & letters
Homepage: https://amber.example/
Description-md5: 0123
Section: text
Priority: required
Size: 123456
SHA256: 1111111111111111111111111111111111111111111111111111111111111111

Package: basin
Version: 5
Installed-Size: 20
Architecture: all
Description: Basin of all packages
 The first line.
 .
  The last line.
Section: libs
Priority: important
Size: 20
SHA256: 2222222222222222222222222222222222222222222222222222222222222222
'''
OTHERS = ('cedar 1.0', 'birch-data 0.5-2', 'cobalt 1:1.9-7', 'delta 1.0-1', 'ember 1.0-1', 'fern 1.0-2', 'sage 1.0-1',
          'lonely 1.0-1', 'tin 1.0-1', 'amber 0.1-1')
MORE = {'sage': 'Provides: virtual-anvil (= 3.1)\n', 'lonely': 'Depends: missing\n', 'tin': 'Provides: virtual-tin\n'}
STANZA = '''
Package: {}
Version: {}
Architecture: all
Description: Small package
Section: misc
Priority: optional
Size: 10
SHA256: {:064}
{}'''
TRANSLATION = '''Package: amber
Description-md5: 0123
Description-en: Tool for résumés & letters
 It writes.
 .
 It reads.
'''
# dnf reads the repository and the database, and updates all packages. The script writes the packages and the result.
READER = '''
import json, sys
import dnf, rpm
root = sys.argv[1]
base = dnf.Base()
rpm.addMacro('_dbpath', '/var/lib/rpm')
base.conf.read(root + '/etc/yum.conf')
base.conf.installroot, base.conf.reposdir = root, [root + '/etc/yum.repos.d']
base.conf.cachedir, base.conf.logdir, base.conf.persistdir = (
    root + path for path in ('/var/cache/yum', '/var/log', '/var/lib/dnf'))
base.conf.substitutions['releasever'] = '1'
if base.conf._has_option('optional_metadata_types'):
    base.conf.optional_metadata_types = ['filelists']
base.read_all_repos()
for repo in base.repos.values():
    repo.load_metadata_other = True
base.fill_sack()
TEXTS = ('name', 'arch', 'evr', 'summary', 'description', 'url', 'group', 'packager', 'sourcerpm', 'downloadsize',
         'installsize')
LISTS = ('requires', 'requires_pre', 'recommends', 'suggests', 'enhances', 'conflicts', 'obsoletes', 'provides')
def described(package):
    found = {name: getattr(package, name) for name in TEXTS}
    found.update((name, sorted(map(str, getattr(package, name)))) for name in LISTS)
    found['files'], found['changes'] = len(package.files), len(package.changelogs)
    return found
query = base.sack.query()
found = {kind: {package.name: described(package) for package in packages}
         for kind, packages in (('available', query.available()), ('installed', query.installed()))}
base.upgrade_all()
base.resolve()
found['updated'] = {package.name: package.evr for package in base.transaction.install_set}
print(json.dumps(found))
'''


class PackageIndexTest(unittest.TestCase):

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.scratch = scratch.name

    def path(self, name):
        return os.path.join(self.scratch, name)

    def made(self, *arguments):
        """Makes a distribution. Returns the packages that dnf finds in it."""
        subprocess.run([os.path.join(SOURCES, 'benchmarks', 'make-distribution')] + list(arguments), check=True)
        done = subprocess.run(['/usr/bin/python3', '-c', READER, self.path('made/root')], check=True,
                              stdout=subprocess.PIPE)
        return json.loads(done.stdout.decode('utf-8').splitlines()[-1])

    def test_the_fields_are_those_of_the_index_and_the_installed_packages_fit_together(self):
        with gzip.open(self.path('main_Packages.gz'), 'wt', encoding='utf-8') as stream:
            stream.write(''.join(STANZA.format(*each.split(' '), place, MORE.get(each.split(' ')[0], ''))
                                 for place, each in enumerate(OTHERS)))
        with lzma.open(self.path('newer_Packages.xz'), 'wt', encoding='utf-8') as stream:
            stream.write(INDEX)
        with open(self.path('Translation-en'), 'w', encoding='utf-8') as stream:
            stream.write(TRANSLATION)
        found = self.made('--index', self.path('main_Packages.gz'), '--index', self.path('newer_Packages.xz'),
                          '--translation', self.path('Translation-en'), self.path('made'), '99', '99')
        available, installed = found['available'], found['installed']
        names = {each.split(' ')[0] for each in OTHERS} | {'basin'}
        self.assertEqual(set(available), names)

        amber = available['amber']
        self.assertGreater(amber.pop('files'), 0)
        self.assertGreater(amber.pop('changes'), 0)
        self.assertEqual(amber, {
            'name': 'amber', 'arch': 'x86_64', 'evr': '2:1.4_rc1-3+b1', 'summary': 'Tool for résumés & letters',
            'description': 'It writes.\n\nIt reads.', 'url': 'https://amber.example/', 'group': 'text',
            'packager': 'Amber Packagers <amber@packages.example>', 'sourcerpm': 'amber-tools-1.4_rc1-3.src.rpm',
            'downloadsize': 123456, 'installsize': 300 * 1024,
            'requires': ['(birch-data = 0.5 or cobalt < 1:2.0-1)', 'basin', 'cedar >= 1.0~beta1',
                         'virtual-anvil >= 3'],
            'requires_pre': ['basin'], 'recommends': ['(delta or ember)', 'fern > 1.0-0'], 'suggests': ['delta'],
            'enhances': ['basin'], 'conflicts': ['basin < 0.1', 'ember', 'virtual-tin < 1'],
            # amber does not obsolete cedar, because the index has both packages.
            'obsoletes': ['amber-legacy', 'basin < 0.1'],
            'provides': ['amber = 2:1.4_rc1-3+b1', 'amber-plugin = 7', 'virtual-amber']})
        basin = available['basin']
        self.assertEqual((basin['arch'], basin['evr'], basin['description']),
                         ('noarch', '5-0', 'The first line.\n\n The last line.'))
        self.assertEqual(available['fern']['description'], 'Small package')

        # amber is more important than ember and tin, and conflicts with them. The requirement of lonely is missing.
        self.assertEqual(set(installed), names - {'ember', 'lonely', 'tin'})
        old = {name for name in installed if installed[name]['evr'] != available[name]['evr']}
        self.assertEqual(len(old), 4)
        self.assertEqual(found['updated'], {name: available[name]['evr'] for name in old})
        for name in installed:
            for field in ('summary', 'requires', 'conflicts', 'obsoletes', 'recommends', 'description'):
                self.assertEqual(installed[name][field], available[name][field], (name, field))
            self.assertEqual(installed[name]['evr'],
                             available[name]['evr'] + ('~1' if name in old else ''))

    def refused(self, index):
        """Returns the message of the command, which makes nothing."""
        done = subprocess.run([os.path.join(SOURCES, 'benchmarks', 'make-distribution'), '--index', self.path(index),
                               self.path('made')], stderr=subprocess.PIPE)
        self.assertNotEqual(done.returncode, 0)
        self.assertFalse(os.path.exists(self.path('made')))
        return done.stderr.decode('utf-8', 'replace')

    def test_a_missing_or_empty_index_leaves_no_distribution_behind(self):
        self.assertIn('missing', self.refused('missing'))
        with open(self.path('empty'), 'w'):
            pass
        self.assertEqual(self.refused('empty'), 'The indexes have no packages\n')


if __name__ == '__main__':
    sys.exit(unittest.main())
