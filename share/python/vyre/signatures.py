# SPDX-License-Identifier: GPL-2.0-or-later
"""The signatures of packages and metadata, and the questions about signing keys. A worker runs this module."""

import sys

import dnf.callback
import dnf.exceptions

from .program import tr, yumIOC
from .progress import DownloadProgress
from .stopping import endIfStopped


class KeyImport(dnf.callback.KeyImport):
    """Asks the user before dnf trusts a key that signs a repository's metadata."""

    def __init__(self, repoid):
        super(KeyImport, self).__init__()
        self._repoid = repoid

    def _confirm(self, id, userid, fingerprint, url, timestamp):
        return askForKey(tr('Import the signing key 0x{}?\n\n'
                            'Metadata of:\t{}\n'
                            'User id:\t{}\n'
                            'Fingerprint:\t{}\n'
                            'From:\t{}\n').format(id, self._repoid, userid, inFours(fingerprint), source(url)))


def inFours(fingerprint):
    """The fingerprint in groups of four characters, the usual form in other programs and on web pages."""
    return ' '.join(fingerprint[i:i + 4] for i in range(0, len(fingerprint), 4))


def source(url):
    return url.replace('file://', '')


def askForKey(question):
    """Show a signing key to the user; return whether to import it."""
    yumIOC.gpgsigcheck()
    sys.stdout.write(question)
    return yumIOC.userconfirm() == 1


def checkSignatures(base, packages):
    """Raise an exception if a package has a wrong signature, or lacks a signature that the configuration requires."""
    def ask(key):
        accepted = askForPackageKey(key)
        # dnf imports an accepted key at once. The key remains even if the transaction then ends without changes.
        base.outcome.keysImported = base.outcome.keysImported or accepted
        return accepted

    for package in sorted(packages):
        endIfStopped()
        yumIOC.gpgsigcheck()
        result, text = base.package_signature_check(package)
        if result == 1:
            # Switch off the progress reports while dnf downloads a key: the program has no bar for this download.
            package.repo.set_progress_bar(dnf.callback.NullDownloadProgress())
            try:
                base.package_import_key(package, fullaskcb=ask)
            except (ValueError, OSError) as e:
                endIfStopped()  # the stop may have interrupted the download of the key
                raise dnf.exceptions.Error(str(e))
            finally:
                package.repo.set_progress_bar(DownloadProgress())
                # dnf asks about the keys of a repository only once in each run, and keeps a set of the repositories
                # about which it has asked. Remove the repository from this set, so that the user can change the answer
                # in the next transaction.
                base._repo_set_imported_gpg_keys.discard(package.repoid)
        elif result != 0:
            raise dnf.exceptions.Error(text)


def askForPackageKey(key):
    """Ask the user about a key that signs packages; return whether to import it."""
    package = key['po']
    return askForKey(tr('Import the signing key 0x{}?\n\n'
                        'Package:\t{}\n'
                        'Repository:\t{}\n'
                        'User id:\t{}\n'
                        'Fingerprint:\t{}\n'
                        'From:\t{}\n').format(key['hexkeyid'], package, package.repoid, key['userid'],
                                              inFours(key['fingerprint']), source(key['keyurl'])))
