"""The dnf of this system, pointed at the root of a sandbox."""

import contextlib
import os

import dnf
import dnf.rpm
import rpm


def use_sandbox_database():
    """Makes this process look for rpm's database where the sandboxes keep it, whatever this system's default."""
    rpm.addMacro("_dbpath", "/var/lib/rpm")


def _move_to_root(conf, root, releasever):
    conf.installroot = root
    conf.substitutions["releasever"] = releasever
    for option in ("cachedir", "logdir", "persistdir"):
        conf.prepend_installroot(option)


@contextlib.contextmanager
def bare_base(root, releasever):
    """A dnf.Base for the root without repositories and without the root's own configuration."""
    use_sandbox_database()
    with dnf.Base() as base:
        conf = base.conf
        _move_to_root(conf, root, releasever)
        yield base


@contextlib.contextmanager
def configured_base(root):
    """A dnf.Base that has read the root's configuration and its repositories, but not loaded them."""
    use_sandbox_database()
    with dnf.Base() as base:
        conf = base.conf
        conf.read(os.path.join(root, "etc/yum.conf"))
        _move_to_root(conf, root, dnf.rpm.detect_releasever(root))
        conf.reposdir = [os.path.join(root, "etc/yum.repos.d")]
        base.read_all_repos()
        yield base
