"""The dnf of this system, pointed at the root of a sandbox."""

import contextlib
import os

import dnf
import dnf.conf
import rpm


def use_sandbox_database():
    """Makes this process look for rpm's database where the sandboxes keep it, whatever this system's default."""
    rpm.addMacro("_dbpath", "/var/lib/rpm")


@contextlib.contextmanager
def bare_base(root, releasever):
    """A dnf.Base for the root without repositories and without the root's own configuration."""
    use_sandbox_database()
    with dnf.Base() as base:
        conf = base.conf
        conf.installroot = root
        for option in ("cachedir", "logdir", "persistdir"):
            conf.prepend_installroot(option)
        conf.substitutions["releasever"] = releasever
        yield base


@contextlib.contextmanager
def configured_base(root):
    """A dnf.Base that has read the root's configuration and its repositories, but not loaded them."""
    use_sandbox_database()
    with dnf.Base() as base:
        conf = base.conf
        conf.read(os.path.join(root, "etc/yum.conf"))
        conf.installroot = root
        for option in ("cachedir", "logdir", "persistdir"):
            conf.prepend_installroot(option)
        conf.reposdir = [os.path.join(root, "etc/yum.repos.d")]
        conf.substitutions["releasever"] = dnf.rpm.detect_releasever(root)
        base.read_all_repos()
        yield base
