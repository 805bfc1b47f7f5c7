# SPDX-License-Identifier: GPL-2.0-or-later
"""The dnf of this system, configured for the root of a sandbox."""

import contextlib
import os
import signal
import subprocess
import sys
import tempfile

import dnf
import dnf.rpm
import rpm


def use_sandbox_database():
    """Makes rpm in this process use the database's location in a sandbox, instead of the default location."""
    rpm.addMacro("_dbpath", "/var/lib/rpm")


def _move_to_root(conf, root, releasever):
    conf.installroot = root
    conf.substitutions["releasever"] = releasever
    for option in ("cachedir", "logdir", "persistdir"):
        conf.prepend_installroot(option)


# A program that ends with status 0 if dnf finds the only group of a file.
_FIND_A_GROUP = """\
import sys
import dnf.comps
comps = dnf.comps.Comps()
comps._add_from_xml_filename(sys.argv[1])
found = [(group.id, [package.name for package in group.packages_iter()]) for group in comps.groups]
sys.exit(found != [(sys.argv[2], [sys.argv[3]])])
"""

_COMPS = """\
<?xml version="1.0" encoding="UTF-8"?>
<comps><group><id>%s</id><name>A group</name>
<packagelist><packagereq type="mandatory">%s</packagereq></packagelist></group></comps>
"""


def fault_of_groups():
    """The reason why the dnf of this system cannot use groups; empty if dnf can use groups.

    With the libcomps of Debian 13, a process that reads groups finds no groups or crashes. The result is random. So
    this function tries to read a group in a separate process.
    """
    with tempfile.NamedTemporaryFile("w", suffix=".xml") as stream:
        stream.write(_COMPS % ("some-group", "some-package"))
        stream.flush()
        status = subprocess.run([sys.executable, "-c", _FIND_A_GROUP, stream.name, "some-group", "some-package"],
                                stderr=subprocess.DEVNULL).returncode
    if status == 0:
        return ""
    return "dnf cannot read groups on this system: libcomps %s" % (
        "finds none" if status > 0 else "ends the process with %s" % signal.Signals(-status).name)


@contextlib.contextmanager
def bare_base(root, releasever):
    """Returns a dnf.Base for the root, without repositories and without the root's configuration."""
    use_sandbox_database()
    with dnf.Base() as base:
        conf = base.conf
        _move_to_root(conf, root, releasever)
        yield base


@contextlib.contextmanager
def configured_base(root):
    """Returns a dnf.Base that has read the root's configuration and repository files, but no metadata."""
    use_sandbox_database()
    with dnf.Base() as base:
        conf = base.conf
        conf.read(os.path.join(root, "etc/yum.conf"))
        _move_to_root(conf, root, dnf.rpm.detect_releasever(root))
        conf.reposdir = [os.path.join(root, "etc/yum.repos.d")]
        base.read_all_repos()
        yield base
