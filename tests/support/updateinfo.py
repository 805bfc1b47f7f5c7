# SPDX-License-Identifier: GPL-2.0-or-later
"""Adds advisories to the metadata of a repository in a sandbox."""
import os
import subprocess
import tempfile
from xml.sax.saxutils import escape, quoteattr


def advisory(id, kind, packages, severity=None, cves=(), bugs=(), date='2024-02-20', title=None, description=''):
    """The XML text of an advisory.

    packages: strings "NAME VERSION-RELEASE.ARCH", with or without "EPOCH:" before the version. bugs: pairs of a number
    and a title.
    """
    references = ''.join('<reference href="https://larkspur.example/{0}" id="{0}" type="cve"/>'.format(cve)
                         for cve in cves)
    references += ''.join('<reference href="https://larkspur.example/{0}" id="{0}" title={1} type="bugzilla"/>'.format(
        number, quoteattr(text)) for number, text in bugs)
    named = ''
    for package in packages:
        name, rest = package.split(' ')
        epoch, _, rest = rest.rpartition(':')
        version, _, rest = rest.partition('-')
        release, _, arch = rest.rpartition('.')
        named += ('<package name="{}" version="{}" release="{}" epoch="{}" arch="{}"><filename>{}.rpm</filename>'
                  '</package>'.format(name, version, release, epoch or '0', arch, name))
    return ('<update from="security@larkspur.example" status="final" type="{}" version="1"><id>{}</id><title>{}</title>'
            '<issued date="{} 00:00:00"/>{}<description>{}</description><references>{}</references><pkglist>'
            '<collection short="L9"><name>Larkspur Linux 9</name>{}</collection></pkglist></update>').format(
                kind, id, escape(title if title is not None else 'The advisory ' + id), date,
                '<severity>{}</severity>'.format(severity) if severity else '', escape(description), references, named)


def add(sandbox, repository, advisories):
    """Set the advisories of a repository."""
    with tempfile.TemporaryDirectory() as work:
        path = os.path.join(work, 'updateinfo.xml')
        with open(path, 'w') as stream:
            stream.write('<?xml version="1.0" encoding="UTF-8"?>\n<updates>{}</updates>\n'.format(''.join(advisories)))
        subprocess.run(['modifyrepo_c', '--mdtype', 'updateinfo', path,
                        os.path.join(sandbox.repository(repository), 'repodata')], check=True,
                       stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
