# SPDX-License-Identifier: GPL-2.0-or-later
"""Cleans dnf's cache. A worker runs this module."""

import logging
import os
import re

import dnf.lock
import dnf.repo


def cleanCache(conf, *types):
    """Remove the files of these types from dnf's cache. types: keys of dnf.repo.CACHE_FILES."""
    cache = conf.cachedir
    patterns = [re.compile(dnf.repo.CACHE_FILES[type]) for type in types]
    count = 0
    # Another process that installs packages from the cache holds the first of these locks during its transaction.
    with dnf.lock.build_rpmdb_lock(conf.persistdir, True), \
            dnf.lock.build_metadata_lock(cache, False), dnf.lock.build_download_lock(cache, False):
        for directory, _, names in os.walk(cache):
            for name in names:
                path = os.path.join(directory, name)
                if any(pattern.match(os.path.relpath(path, cache)) for pattern in patterns):
                    os.unlink(path)
                    count += 1
    logging.getLogger('dnf').info('%d files removed', count)
    return True
