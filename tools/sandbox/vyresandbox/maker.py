# SPDX-License-Identifier: GPL-2.0-or-later
"""Makes a sandbox: rpms, repositories, and a root in which some of the rpms are installed."""

import os
import shutil
import stat
import tempfile
import xml.etree.ElementTree as ElementTree
from concurrent.futures import ThreadPoolExecutor

import dnf.callback

from . import catalogue, extras
from .build import KeyRing, build_packages, run
from .dnfbase import bare_base, fault_of_groups
from .sandbox import CREATEREPO, FILE_REPOSITORIES, HTTP_REPOSITORIES, Sandbox

# The plug-ins of the test machine are switched off, because one of these plug-ins copies every installed package to
# another directory.
_MAIN_CONFIGURATION = """\
[main]
gpgcheck=1
installonly_limit=3
clean_requirements_on_remove=True
best=False
metadata_expire=1
plugins=0
"""


def make(directory, busybox="/bin/busybox"):
    """Makes the sandbox and returns it. The directory must not exist, or it must be empty."""
    directory = os.path.abspath(directory)
    if os.path.isdir(directory) and os.listdir(directory):
        raise RuntimeError("%s is not empty" % directory)
    packages = catalogue.packages(busybox)
    sandbox = Sandbox(directory)
    try:
        _fill(sandbox, packages)
    except BaseException:
        sandbox.remove()
        raise
    return sandbox


def _fill(sandbox, packages):
    os.makedirs(os.path.join(sandbox.root, os.path.dirname(catalogue.TRUSTED_KEY_FILE).lstrip("/")))
    with tempfile.TemporaryDirectory(prefix="sandbox-rpms-") as work, KeyRing() as keys:
        with ThreadPoolExecutor(1) as pool:
            generating = pool.submit(_generate_keys, keys, sandbox.root)
            build_packages(packages + extras.packages(), dict(catalogue.CHANGELOGS, **extras.CHANGELOGS), work)
            generating.result()
        for user, signature in ((catalogue.TRUSTED_KEY, "trusted"), (catalogue.UNKNOWN_KEY, "unknown")):
            keys.sign(user, [
                os.path.join(work, package.file_name) for package in packages if package.signature == signature])
        _make_repositories(sandbox, packages, work)
        extras.make_repositories(sandbox, work)
    sandbox.without_groups = fault_of_groups()
    _populate_root(sandbox, packages)
    sandbox.write_repository_files()


def _generate_keys(keys, root):
    for user in (catalogue.TRUSTED_KEY, catalogue.UNKNOWN_KEY):
        keys.generate(user)
    keys.export(catalogue.TRUSTED_KEY, root + catalogue.TRUSTED_KEY_FILE)


def _make_repositories(sandbox, packages, rpms):
    names = HTTP_REPOSITORIES + FILE_REPOSITORIES
    for name in names:
        os.makedirs(sandbox.repository(name))
    for package in packages:
        target = sandbox.repository("sandbox-" + package.repo)
        shutil.move(os.path.join(rpms, package.file_name), os.path.join(target, package.file_name))
    comps = os.path.join(rpms, "comps.xml")
    _write_comps(comps)

    def create(name):
        groups = ["--groupfile", comps] if name == "sandbox-http" else []
        run(list(CREATEREPO) + groups + [sandbox.repository(name)])

    with ThreadPoolExecutor(2) as pool:
        list(pool.map(create, names))


def _write_comps(path):
    comps = ElementTree.Element("comps")

    def child(parent, tag, text, **attributes):
        ElementTree.SubElement(parent, tag, attributes).text = text

    for group in catalogue.GROUPS:
        element = ElementTree.SubElement(comps, "group")
        child(element, "id", group.identifier)
        child(element, "name", group.name)
        child(element, "description", group.description)
        child(element, "default", "false")
        child(element, "uservisible", "true" if group.visible else "false")
        members = ElementTree.SubElement(element, "packagelist")
        for kind, names in group.members.items():
            for name in names:
                if kind == "conditional":
                    child(members, "packagereq", name[0], type=kind, requires=name[1])
                else:
                    child(members, "packagereq", name, type=kind)
    ElementTree.ElementTree(comps).write(path, encoding="utf-8", xml_declaration=True)


def _populate_root(sandbox, packages):
    # These files must exist before the first package is installed: scriptlets need the devices, dnf and rpm need the
    # directories.
    for name in ("dev", "tmp", "var/cache", "var/log", "var/lib/rpm", "var/lib/dnf"):
        os.makedirs(os.path.join(sandbox.root, name))
    os.chmod(os.path.join(sandbox.root, "tmp"), 0o1777)
    for name, minor in (("null", 3), ("zero", 5), ("random", 8), ("urandom", 9)):
        path = os.path.join(sandbox.root, "dev", name)
        os.mknod(path, stat.S_IFCHR | 0o666, os.makedev(1, minor))
        os.chmod(path, 0o666)
    _redirect_default_database(sandbox.root)
    with open(os.path.join(sandbox.root, "etc", "yum.conf"), "w") as stream:
        stream.write(_MAIN_CONFIGURATION)
    os.makedirs(os.path.join(sandbox.root, "etc", "yum.repos.d"))
    _install(sandbox, packages)


def _redirect_default_database(root):
    """Makes the database available at the default location of this machine's rpm, too. In some distributions, this
    location is in the home directory, and dnf runs rpmkeys without an option for the location."""
    default = run(["rpm", "--eval", "%{_dbpath}"]).strip()
    place = os.path.join(root, default.lstrip("/"))
    if not os.path.lexists(place):
        os.makedirs(os.path.dirname(place), exist_ok=True)
        os.symlink(os.path.relpath(os.path.join(root, "var/lib/rpm"), os.path.dirname(place)), place)


class _ScriptletErrors(dnf.callback.TransactionProgress):
    def __init__(self):
        super(_ScriptletErrors, self).__init__()
        self.messages = []

    def error(self, message):
        self.messages.append(message)


def _install(sandbox, packages):
    """Installs the packages of the catalogue with dnf, so that dnf's history contains the reason for each package."""
    sources = ("sandbox-http", "sandbox-file")
    with bare_base(sandbox.root, catalogue.RELEASE_VERSION) as base:
        for name in sources:
            base.repos.add_new_repo(name, base.conf, baseurl=["file://" + sandbox.repository(name)], gpgcheck=False)
        base.fill_sack(load_system_repo=True)
        by_name = {"user"}
        if sandbox.without_groups:
            print("Making the sandbox without installed groups: " + sandbox.without_groups)
            by_name.add("group")
        else:
            base.read_comps()
            for group in catalogue.GROUPS:
                if group.installed:
                    base.group_install(group.identifier, ("mandatory", "default"))
        available = {str(found): found for found in base.sack.query().available()}
        for package in packages:
            if package.state in by_name:
                base.package_install(available[package.nevra])
        base.resolve()
        base.download_packages(list(base.transaction.install_set))
        progress = _ScriptletErrors()
        base.do_transaction(progress)
        if progress.messages:
            raise RuntimeError("installing failed: " + "\n".join(progress.messages))
    expected = {package.nevra for package in packages if package.state is not None}
    if sandbox.installed() != expected:
        raise RuntimeError("the installed packages are not the expected ones; they differ in: %s" %
                           sorted(sandbox.installed() ^ expected))
    sandbox.clear_cache()
