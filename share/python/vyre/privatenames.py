# SPDX-License-Identifier: GPL-2.0-or-later
"""The private names of dnf that the script uses, and the check whether the installed version of dnf has these names.

A worker runs the check once, when VYRE starts.
"""

import importlib
import logging

import dnf
import dnf.callback
import dnf.conf
import dnf.conf.config
import dnf.conf.read
import dnf.const
import dnf.db.group
import dnf.db.history
import dnf.lock
import dnf.package
import dnf.plugin
import dnf.repo
import dnf.sack
import dnf.yum.rpmtrans
import rpm

from .program import tr

# Triples: a class or module of dnf, a private name in it, and the message if the installed dnf lacks the name. VYRE
# looks for all names when it starts: otherwise a missing name could end a transaction half way.
PRIVATE_NAMES = tuple((place, name, text) for text, found in (
    (tr('VYRE does not support version {} of dnf. It cannot read the configuration, because dnf lacks {}.'), (
        (dnf.conf.config.BaseConfig, ('_has_option', '_populate', '_set_value')),
        (dnf.conf.config.MainConf, ('_adjust_conf_options',)),
    )),
    (tr('VYRE does not support version {} of dnf. It cannot read repositories and packages, because dnf lacks {}.'), (
        (dnf.Base, ('_activate_persistor', '_add_repo_to_sack', '_comps', '_getHistory', '_get_installonly_query',
                    '_history', '_plugins', '_repo_persistor', '_repos')),
        (dnf.callback.KeyImport, ('_confirm',)),
        (dnf.conf.read.RepoReader, ('_get_repos',)),
        (dnf.db.history.SwdbInterface, ('_group',)),
        (dnf.lock.ProcessLock, ('_lock_thread', '_try_lock', '_unlock_thread')),
        (dnf.package.Package, ('_from_system', '_is_local_pkg')),
        (dnf.repo.Repo, ('_repo', '_set_key_import')),
        (dnf.sack, ('_build_sack', '_rpmdb_sack')),
    )),
    (tr('VYRE does not support version {} of dnf. It cannot use plug-ins, because dnf lacks {}.'), (
        (dnf.plugin.Plugins, ('_caller', '_load', '_run_init')),
    )),
    (tr('VYRE does not support version {} of dnf. It cannot carry out transactions, because dnf lacks {}.'), (
        (dnf.Base, ('_download_remote_payloads', '_finalize_base', '_goal2transaction', '_moduleContainer',
                    '_repo_set_imported_gpg_keys',
                    '_run_transaction', '_trans_install_set', '_trans_success', '_trans_tempfiles', '_ts',
                    '_verify_transaction')),
        (dnf.db.group.PersistorBase, ('_installed', '_removed', '_upgraded')),
        (dnf.yum.rpmtrans.RPMTransaction, ('_cpioError', '_extract_cbkey', '_scriptError', '_scriptOutput',
                                           '_shutdownOutputLogging', '_unpackError')),
        (rpm, ('_RPMVSF_NODIGESTS', '_RPMVSF_NOSIGNATURES')),
    )),
) for place, names in found for name in names)

# The names in PRIVATE_NAMES that only objects have, because dnf sets them in __init__(), not in the class.
NAMES_OF_OBJECTS = ('_comps', '_group', '_history', '_installed', '_plugins', '_removed', '_repo', '_repo_persistor',
                    '_repo_set_imported_gpg_keys', '_repos', '_trans_install_set', '_trans_success',
                    '_trans_tempfiles', '_upgraded')

# Private names that the script sets, and that dnf 4.14 lacks.
NEW_NAMES = ('_persistence',)

# Private names that the script needs to replace dnf's signature check; see useDatabaseOfRoot(). If dnf lacks one of
# them, the script does not replace the check.
RPMKEYS_NAMES = ('_find_rpmkeys_binary', '_process_rpm_output', '_verifyPackageUsingRpmkeys')

# The names in the versionlock plug-in that the script uses. If the plug-in lacks one of these names, the program offers
# no version locks.
VERSIONLOCK_NAMES = ('VersionLockCommand', '_match', '_read_locklist', 'locklist_fn')

# The names in dnf's history command, and in its module, that the script needs to undo or repeat a recorded transaction.
# dnf before version 4.4 lacks them.
REPLAY_NAMES = ('_hcmd_redo', '_hcmd_rollback', '_hcmd_undo', 'serialize_transaction')


def lacksReplay():
    """The reason why the script cannot undo or repeat recorded transactions; empty if the script can do both."""
    try:
        importlib.import_module('dnf.transaction_sr')
        module = importlib.import_module('dnf.cli.commands.history')
        missing = [name for name in REPLAY_NAMES if not (hasattr(module, name) or hasattr(module.HistoryCommand, name))]
    except ImportError as e:
        missing = [str(e)]
    if not missing:
        return ''
    return tr('VYRE does not support version {} of dnf. It cannot undo transactions, because dnf lacks {}.').format(
        dnf.const.VERSION, missing[0])


def requirePrivateNames(*objects):
    """Refuse to start if dnf lacks one of PRIVATE_NAMES. objects: objects of the classes that have NAMES_OF_OBJECTS.
    If no objects are given, the function does not check NAMES_OF_OBJECTS.
    """
    for place, name, text in PRIVATE_NAMES:
        made = [each for each in objects if isinstance(place, type) and isinstance(each, place)]
        if hasattr(place, name) or not made and name in NAMES_OF_OBJECTS:
            continue
        if not any(name in vars(each) for each in made):
            fault = text.format(dnf.const.VERSION, place.__name__ + '.' + name)
            # Log the reason: if VYRE cannot start, it shows the log.
            logging.getLogger('dnf').error('%s', fault)
            raise SystemExit(fault)
