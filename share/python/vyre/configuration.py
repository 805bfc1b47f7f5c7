# SPDX-License-Identifier: GPL-2.0-or-later
"""Reads dnf's configuration of the managed system from its files.

The graphical thread does this when VYRE starts, and again before each new collection.
"""

import logging
import os
import re

import dnf.conf
import dnf.conf.config
import dnf.const
import dnf.exceptions
import dnf.rpm
import dnf.util
import libdnf.conf
import libdnf.error

from .configfiles import OWN_CONFIGURATION, configurationFile, mainFileFault, repositoryDirectories
from .database import useDatabaseOfRoot
from .paths import canWrite, inRoot, managedRoot, namedDirectory, namedDirectoryOfFiles
from .program import tr


def readConfiguration():
    """Read the configuration files. Returns the configuration, and the repository directories that dnf knows.

    The log reports each unreadable part. An unreadable part keeps its default.
    """
    conf = dnf.conf.Conf()
    # This call must follow Conf(): Conf() detects the architecture, and makes rpm read its own configuration again.
    useDatabaseOfRoot()
    conf._set_value('installroot', managedRoot(), dnf.conf.PRIO_COMMANDLINE)
    # dnf waits for locks on the cache. WaitingLock lets the user end such a wait.
    conf._set_value('exit_on_lock', False, dnf.conf.PRIO_COMMANDLINE)
    # The user answers every question.
    conf._set_value('assumeyes', False, dnf.conf.PRIO_COMMANDLINE)
    conf._set_value('assumeno', False, dnf.conf.PRIO_COMMANDLINE)
    # The program's editor of repositories reads the same directories.
    known = list(conf.reposdir)
    conf._set_value('reposdir', repositoryDirectories(known), dnf.conf.PRIO_DEFAULT)
    conf._set_value('persistdir', inRoot('/var/lib/dnf'), dnf.conf.PRIO_DEFAULT)
    conf._set_value('varsdir', [inRoot(path) for path in ('/etc/yum/vars', '/etc/dnf/vars')],
                    dnf.conf.PRIO_DEFAULT)
    for option, path in (('cachedir', '/var/cache/yum'), ('logdir', '/var/log')):
        # For an ordinary user, dnf has chosen private directories already.
        if dnf.util.am_i_root() or (managedRoot() != '/' and canWrite(inRoot(path))):
            conf._set_value(option, inRoot(path), dnf.conf.PRIO_DEFAULT)
    preset = {option: getattr(conf, option) for option in ('cachedir', 'logdir', 'persistdir')}

    # dnf also looks for repositories in its main file. Without this option, it would look in its usual main file.
    conf._set_value('config_file_path', readMainFile(conf), dnf.conf.PRIO_COMMANDLINE)
    # The skip_broken option changes other options.
    conf._adjust_conf_options()
    # The files of a managed root name directories of that root. Directories of the running system must not replace
    # them.
    for option in ('reposdir', 'varsdir'):
        conf._set_value(option, [namedDirectoryOfFiles(directory) for directory in getattr(conf, option)],
                        dnf.conf.PRIO_COMMANDLINE)
    conf.substitutions.update_from_etc('/', varsdir=conf.varsdir)
    setReleasever(conf)
    for option in preset:
        directory = getattr(conf, option)
        if directory != preset[option]:
            directory = namedDirectory(directory)
        conf._set_value(option, libdnf.conf.ConfigParser.substitute(directory, conf.substitutions),
                        dnf.conf.PRIO_COMMANDLINE)
    try:
        # dnf cannot read packages without this directory.
        dnf.util.ensure_dir(conf.logdir)
    except OSError as e:
        logging.getLogger('dnf').error('%s', e)
    if conf._has_option('optional_metadata_types') and 'filelists' not in conf.optional_metadata_types:
        conf.optional_metadata_types = list(conf.optional_metadata_types) + ['filelists']
    return conf, known


def readMainFile(conf):
    """Read the options of the main configuration file. Returns the file in which dnf looks for repositories.

    If the main configuration file is missing, dnf would not check signatures, so this function demands the check.
    """
    path = configurationFile()
    if path is None:
        logging.getLogger('dnf').info('%s', tr('The main configuration file is missing. VYRE checks package '
                                               'signatures, unless a repository disables this check.'))
    else:
        fault = mainFileFault(path)
        if not fault:
            try:
                conf.read(path)
                keepChecks(conf, path)
                return path
            except (dnf.exceptions.Error, OSError, ValueError) as e:
                fault = str(e)
        reportUnused(path, fault)
        logging.getLogger('dnf').error(tr('VYRE ignores the options in this file, such as exclude. VYRE checks '
                                          'package signatures, unless a repository disables this check.'))
    conf._set_value('gpgcheck', True, dnf.conf.PRIO_COMMANDLINE)
    keepChecks(conf, path)
    return os.devnull


def reportUnused(path, fault):
    logging.getLogger('dnf').error(tr('Unable to use the configuration file %s: %s'), path, fault)


# The options that switch on checks of packages, metadata or servers.
CHECKS = ('gpgcheck', 'repo_gpgcheck', 'localpkg_gpgcheck', 'gpgkey_dns_verification', 'sslverify',
          'sslverifystatus', 'proxy_sslverify')

# dnf's own file of the running system.
RUNNING_CONFIGURATION = OWN_CONFIGURATION


def keepChecks(conf, path):
    """If VYRE does not read dnf's own main file, demand the checks of dnf's own file too. Also protect the packages
    that this file protects. path: the file that VYRE reads, or None.

    The dnf command reads only its own file. VYRE must not install or remove a package if dnf refuses this. If a managed
    root lacks dnf's own file, dnf reads the file of the running system.
    """
    own = inRoot(OWN_CONFIGURATION)
    ofRoot = os.path.exists(own)
    if not ofRoot:
        own = RUNNING_CONFIGURATION
    if path == own or not os.path.exists(own):
        return
    demanded = dnf.conf.config.BaseConfig(libdnf.conf.ConfigMain())
    fault = mainFileFault(own)
    if not fault:
        try:
            parser = libdnf.conf.ConfigParser()
            parser.read(own)
            demanded._populate(parser, 'main', own, dnf.conf.PRIO_MAINCONFIG)
        except (dnf.exceptions.Error, libdnf.error.Error, RuntimeError, OSError, ValueError) as e:
            fault = str(e)
    if fault:
        reportUnused(own, fault)
        demanded._set_value('gpgcheck', True, dnf.conf.PRIO_COMMANDLINE)
    added = [check for check in CHECKS
             if conf._has_option(check) and getattr(demanded, check) and not getattr(conf, check)]
    for check in added:
        conf._set_value(check, True, dnf.conf.PRIO_COMMANDLINE)
    protect(conf, demanded.protected_packages)
    if added:
        # Nobody wrote the file of the running system for the managed root. So the log mentions its checks without a
        # warning.
        show = logging.getLogger('dnf').warning if ofRoot else logging.getLogger('dnf').info
        if path is None:
            show(tr('The main configuration file is missing. dnf uses %s instead. VYRE also makes the checks '
                    'that this file requires: %s'), own, ', '.join(added))
        else:
            show(tr("dnf's file %s requires checks that %s does not require. VYRE makes these checks too: %s"), own,
                 path, ', '.join(added))


def protect(conf, names):
    """Add these names to the list of protected packages."""
    own = list(conf.protected_packages)
    missing = [name for name in names if name not in own]
    if missing:
        conf._set_value('protected_packages', own + missing, dnf.conf.PRIO_COMMANDLINE)


def setReleasever(conf):
    """Set the release and its parts. Newer versions of dnf know $releasever_major and $releasever_minor.

    The parts come from the release package if it provides them, and otherwise from the release. From dnf 4.24 on, parts
    from the environment or from a file of variables replace the parts from the release.
    """
    given = conf.releasever is not None
    parts = {part: getattr(conf, part, None) for part in ('releasever_major', 'releasever_minor')}
    # A release from the environment or from a file of variables has precedence. Setting it also sets its parts.
    conf.releasever = conf.releasever if given else detectedRelease()
    if not hasattr(dnf.rpm, 'detect_releasevers'):
        return
    provided = {}
    if not given:
        try:
            provided = dict(zip(parts, dnf.rpm.detect_releasevers(managedRoot())[1:]))
        except dnf.exceptions.Error as e:
            logging.getLogger('dnf').debug('The parts of the release are not known: %s', e)
    keepsParts = [int(number) for number in re.findall('[0-9]+', dnf.const.VERSION)[:2]] >= [4, 24]
    for part, value in parts.items():
        if provided.get(part) is not None:
            setattr(conf, part, provided[part])
        elif keepsParts and value is not None:
            setattr(conf, part, value)


def detectedRelease():
    """The release of the managed system. Without a release package, it is the release in /etc/os-release, or "1"."""
    try:
        detected = dnf.rpm.detect_releasever(managedRoot())
    except dnf.exceptions.Error as e:
        logging.getLogger('dnf').debug('The release is not known: %s', e)
        detected = None
    if detected:
        return detected
    try:
        with open(inRoot('/etc/os-release'), encoding='utf-8', errors='replace') as release:
            found = re.search(r'^VERSION_ID="?([^"\n]+)"?$', release.read(), re.M)
    except OSError:
        found = None
    return found.group(1) if found else '1'
