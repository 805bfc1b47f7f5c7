# SPDX-License-Identifier: GPL-2.0-or-later
"""Reads dnf's configuration of the managed system from its files.

A worker runs this module when VYRE starts, and again when the program resets the script, for example for a Refresh.
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
    """Read the configuration files. Return the configuration, and the repository directories that dnf uses by default.

    If a file or an option is unusable, log the reason and keep the default.
    """
    conf = dnf.conf.Conf()
    # Conf() makes rpm read its configuration again. This would undo an earlier call of useDatabaseOfRoot().
    useDatabaseOfRoot()
    conf._set_value('installroot', managedRoot(), dnf.conf.PRIO_COMMANDLINE)
    # If this option is false, dnf waits for the locks on its cache. WaitingLock lets the user end such a wait.
    conf._set_value('exit_on_lock', False, dnf.conf.PRIO_COMMANDLINE)
    # VYRE shows every question to the user.
    conf._set_value('assumeyes', False, dnf.conf.PRIO_COMMANDLINE)
    conf._set_value('assumeno', False, dnf.conf.PRIO_COMMANDLINE)
    # The program's repository editor reads the same directories.
    known = list(conf.reposdir)
    conf._set_value('reposdir', repositoryDirectories(known), dnf.conf.PRIO_DEFAULT)
    conf._set_value('persistdir', inRoot('/var/lib/dnf'), dnf.conf.PRIO_DEFAULT)
    conf._set_value('varsdir', [inRoot(path) for path in ('/etc/yum/vars', '/etc/dnf/vars')],
                    dnf.conf.PRIO_DEFAULT)
    for option, path in (('cachedir', '/var/cache/yum'), ('logdir', '/var/log')):
        # Keep the private directories that dnf has chosen for an ordinary user.
        if dnf.util.am_i_root() or (managedRoot() != '/' and canWrite(inRoot(path))):
            conf._set_value(option, inRoot(path), dnf.conf.PRIO_DEFAULT)
    preset = {option: getattr(conf, option) for option in ('cachedir', 'logdir', 'persistdir')}

    # dnf also reads repositories from the file that this option names; the default is /etc/dnf/dnf.conf.
    conf._set_value('config_file_path', readMainFile(conf), dnf.conf.PRIO_COMMANDLINE)
    # If skip_broken is set, this function of dnf changes the "strict" option.
    conf._adjust_conf_options()
    # The configuration files of a managed root name directories of this root. dnf must not read the directories of the
    # running system that have the same paths.
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
    """Read the [main] section of the main configuration file. Return the path of this file, because dnf reads its other
    sections as repositories. If the file is missing or unusable, return the path of an empty file.

    Without a main configuration file, dnf would not check package signatures. So if the file is missing or unusable,
    demand this check.
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

# dnf's own main configuration file on the running system. Tests replace this path.
RUNNING_CONFIGURATION = OWN_CONFIGURATION


def keepChecks(conf, path):
    """If VYRE and the dnf command read different main configuration files, also demand the checks that dnf's own file
    demands, and protect the packages that dnf's own file protects. path: the file that VYRE reads, or None.

    VYRE must not install or remove a package if the dnf command refuses this. If a managed root lacks dnf's own file,
    the dnf command reads the file of the running system.
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
        # The file of the running system was not written for the managed root. So its checks cause no warning, only an
        # ordinary line in the log.
        show = logging.getLogger('dnf').warning if ofRoot else logging.getLogger('dnf').info
        if path is None:
            show(tr('The main configuration file is missing. dnf uses %s instead. VYRE also makes the checks '
                    'that this file requires: %s'), own, ', '.join(added))
        else:
            show(tr("dnf's file %s requires checks that %s does not require. VYRE makes these checks too: %s"), own,
                 path, ', '.join(added))


def protect(conf, names):
    """Add these package names to the protected_packages option."""
    own = list(conf.protected_packages)
    missing = [name for name in names if name not in own]
    if missing:
        conf._set_value('protected_packages', own + missing, dnf.conf.PRIO_COMMANDLINE)


def setReleasever(conf):
    """Set $releasever, and from dnf 4.23 on also its parts: $releasever_major and $releasever_minor.

    If the configuration sets no release and the release package provides the parts, the script uses these parts.
    Otherwise dnf splits the release. From dnf 4.24 on, parts from the environment or from a variable file replace the
    parts of the split release.
    """
    given = conf.releasever is not None
    parts = {part: getattr(conf, part, None) for part in ('releasever_major', 'releasever_minor')}
    # A release from the environment or from a variable file has priority. This assignment also sets both parts of the
    # release.
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
    """The release of the managed system. If no release package is installed, the function returns the release in
    /etc/os-release. If this file does not name a release either, the function returns "1".
    """
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
