# SPDX-License-Identifier: GPL-2.0-or-later
"""Package attributes that dnf does not offer, or offers too slowly: headers, change logs, build hosts.

A search reads these attributes for all packages, on a worker. The description of one package reads its attributes on
the graphical thread. The functions of this module must not change the system.
"""

import datetime
import logging

import dnf.exceptions
import dnf.lock
import dnf.package
import dnf.sack
import hawkey
import rpm

from . import program
from .program import tr


class HeaderMemo:
    """Keeps the header of the last package. A search reads several header values of one installed package before it
    reads the next package. Without a HeaderMemo, rpm would search its database for each value.
    """

    def __init__(self):
        self.clear()

    def clear(self):
        self._package = None
        self._header = None

    def header(self, package):
        if self._package is not package:
            self._header = package.get_header()
            self._package = package
        return self._header


def headerOf(package):
    """The header of an installed package. For any other package, raises AttributeError, as dnf does."""
    if not package._from_system:
        raise AttributeError('hdr')
    return package.base.headers.header(package)


def changelogsOf(package):
    """A list of dictionaries with timestamp (datetime.datetime), author and text. The newest entry is the first."""
    if package._from_system:
        header = package.base.headers.header(package)
        entries = zip(header[rpm.RPMTAG_CHANGELOGTIME], header[rpm.RPMTAG_CHANGELOGNAME],
                      header[rpm.RPMTAG_CHANGELOGTEXT])
        return [{'timestamp': dateTime(time), 'author': decoded(author), 'text': decoded(text)}
                for time, author, text in entries]
    return package.base.otherData.changelogs(package)


def dateTime(seconds):
    return datetime.datetime.fromtimestamp(seconds, datetime.timezone.utc).replace(tzinfo=None)


def universalDay(day):
    """The day of a change log entry in universal time (UTC). day: the local day that dnf returns for the entry.

    rpm stores noon UTC as the time of an entry. At noon UTC, the next day has already begun in the time zones farthest
    in the east.
    """
    noon = datetime.datetime.combine(day, datetime.time(12, tzinfo=datetime.timezone.utc))
    ahead = datetime.date.fromtimestamp(noon.timestamp()) - day
    return datetime.datetime.combine(day - ahead, datetime.time())


def buildHostOf(package):
    """The host that built an installed package; None for an available package, whose build host dnf does not know."""
    if not package._from_system:
        return None
    return decoded(package.base.headers.header(package)[rpm.RPMTAG_BUILDHOST])


def decoded(value):
    return value.decode('utf-8', 'replace') if isinstance(value, bytes) else value


class OtherData:
    """The change logs of available packages. dnf downloads change logs together with the package list. This class reads
    the change logs of a repository when a caller first needs one of them.
    """

    def __init__(self):
        self._packages = {}

    def clear(self):
        self._packages = {}

    def changelogs(self, package):
        try:
            packages = self._load(package.base, package.repo)
        except (dnf.exceptions.Error, hawkey.Exception, OSError) as e:
            # One possible cause: the cache was cleaned after dnf read the repository. A search calls this function for
            # every package, so the log gets the failure only once, unless another process holds the metadata lock.
            logging.getLogger('dnf').warning(tr('The change logs of %s cannot be read: %s'), package.reponame, e)
            if not isinstance(e, dnf.exceptions.LockError):
                self._packages[package.reponame] = {}
            return []
        twin = packages.get(str(package))
        if twin is None:
            return []
        return [dict(entry, timestamp=universalDay(entry['timestamp']))
                for entry in super(dnf.package.Package, twin).changelogs]

    def loadAll(self, base):
        for repo in base.repos.iter_enabled():
            self._load(base, repo)

    def _load(self, base, repo):
        """The packages of one repository, by name, version and architecture. Each repository has a separate sack,
        because equal packages of several repositories may have different change logs.

        A search reads the change log of every package. A query for each package instead of this dictionary would take
        quadratic time.
        """
        if repo.id not in self._packages:
            sack = dnf.sack._build_sack(base)
            # load_repo() writes to the cache, so dnf's own code also holds this lock when it calls load_repo().
            with dnf.lock.build_metadata_lock(base.conf.cachedir, False):
                sack.load_repo(repo._repo, build_cache=True, load_other=True)
            self._packages[repo.id] = {str(package): package for package in sack.query().available()}
        return self._packages[repo.id]


program.replace(dnf.package.Package, 'hdr', property(headerOf))
program.replace(dnf.package.Package, 'changelogs', property(changelogsOf))
program.replace(dnf.package.Package, 'buildhost', property(buildHostOf))
