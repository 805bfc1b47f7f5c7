# SPDX-License-Identifier: GPL-2.0-or-later
"""Builds the catalogue's rpms with rpmbuild and signs some of them."""

import collections
import datetime
import os
import shutil
import subprocess
import tempfile
from concurrent.futures import ThreadPoolExecutor

DBPATH = ("--define", "_dbpath /var/lib/rpm")

_DAYS = ("Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun")
_MONTHS = ("Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec")


def run(command, **options):
    """Runs a command and returns its output. If the command fails, the exception contains the output."""
    done = subprocess.run(
        command, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if done.returncode != 0:
        output = done.stdout.decode("utf-8", "replace")
        raise RuntimeError("%s failed with status %d:\n%s" % (" ".join(command), done.returncode, output))
    return done.stdout.decode("utf-8", "replace")


class _SpecFile(object):
    """The packages that one call of rpmbuild makes. All are sub-packages of one source package."""

    def __init__(self, name, target, changelog, vendor):
        self.name = name
        self.target = target
        self.changelog = changelog
        self.vendor = vendor
        self.packages = []
        self.names = set()
        self.files = {}

    def accepts(self, package):
        """Whether the package can also be built from this spec file.

        One spec file has one build root. So each path can have only one content, and each name can belong to only one
        package. In some versions of rpm, all packages of a spec file also have the same vendor.
        """
        return package.name not in self.names and all(
            self.files.get(path, content) == content for path, content in package.files.items())

    def add(self, package):
        self.packages.append(package)
        self.names.add(package.name)
        self.files.update(package.files)

    def text(self, entries):
        lines = [
            "Name: " + self.name, "Version: 9", "Release: 1", "Summary: Packages of the sandbox", "License: MIT",
            "%description", "%install", 'cp -a "%{_topdir}/tree/." "%{buildroot}/"']
        for package in self.packages:
            lines += _sections(package)
        lines.append("%changelog")
        for date, author, body in entries:
            lines.append("* %s %s %02d %d %s" % (
                _DAYS[date.weekday()], _MONTHS[date.month - 1], date.day, date.year, author))
            lines += [_escaped(line) for line in body.split("\n")] + [""]
        return "\n".join(lines) + "\n"


def _escaped(text):
    return text.replace("%", "%%")


def _sections(package):
    name = package.name
    lines = ["%package -n " + name]
    fields = (
        ("Version", package.version), ("Release", package.release), ("Epoch", package.epoch),
        ("Summary", package.summary), ("Group", package.group), ("License", package.license),
        ("URL", package.url), ("Vendor", package.vendor), ("Packager", package.packager),
        ("Prefix", package.prefix), ("BuildArch", "noarch" if package.arch == "noarch" else None),
        ("AutoReqProv", "no"))
    lines += ["%s: %s" % (tag, _escaped(str(value))) for tag, value in fields if value is not None]
    lines += ["%s: %s" % relation for relation in package.relations]
    lines += ["%description -n " + name, _escaped(package.description)]
    for section, body in sorted(package.scripts.items()):
        lines += ["%%%s -n %s" % (section, name), _escaped(body)]
    lines += ["%files -n " + name, "%defattr(-,root,root,-)"]
    for path, content in sorted(package.files.items()):
        mark = ""
        if path.endswith("/"):
            mark = "%dir "
        elif path.startswith("/etc/"):
            mark = "%config(noreplace) "
        elif path.startswith("/usr/share/doc/"):
            mark = "%doc "
        lines.append('%s"%s"' % (mark, path))
    return lines


def _spec_files(packages):
    specs = []
    counts = collections.Counter()
    for package in packages:
        target = "x86_64" if package.arch == "noarch" else package.arch
        fitting = [
            spec for spec in specs
            if spec.target == target and spec.changelog == package.changelog and spec.vendor == package.vendor
            and spec.accepts(package)]
        if not fitting:
            counts[package.changelog] += 1
            name = "larkspur-%s-%d" % (package.changelog, counts[package.changelog])
            fitting = [_SpecFile(name, target, package.changelog, package.vendor)]
            specs += fitting
        fitting[0].add(package)
    return specs


def _write_tree(top, files):
    for path, content in files.items():
        place = top + path
        if path.endswith("/"):
            os.makedirs(place, exist_ok=True)
            continue
        os.makedirs(os.path.dirname(place), exist_ok=True)
        if isinstance(content, tuple):
            os.symlink(content[1], place)
            continue
        with open(place, "wb") as stream:
            stream.write(content if isinstance(content, bytes) else content.encode("utf-8"))
        os.chmod(place, 0o755 if "/bin/" in path else 0o644)


def _build_spec(spec, entries, work, output):
    top = os.path.join(work, spec.name)
    _write_tree(os.path.join(top, "tree"), spec.files)
    path = os.path.join(top, spec.name + ".spec")
    with open(path, "w", encoding="utf-8") as stream:
        stream.write(spec.text(entries))
    newest = datetime.datetime(*entries[0][0].timetuple()[:3], tzinfo=datetime.timezone.utc)
    macros = {
        "_topdir": top,
        "_tmppath": top,
        "_rpmdir": output,
        "_rpmfilename": "%%{NAME}-%%{VERSION}-%%{RELEASE}.%%{ARCH}.rpm",
        "_binary_payload": "w1.gzdio",
        "_buildhost": "builder7.larkspur.example",
        "use_source_date_epoch_as_buildtime": "1",
        "__os_install_post": "%{nil}",
        "debug_package": "%{nil}",
        "vendor": "Larkspur Project",
        "packager": "Larkspur Packagers <packages@larkspur.example>",
    }
    command = ["rpmbuild", "-bb", "--quiet", "--target", spec.target] + list(DBPATH)
    for name, value in macros.items():
        command += ["--define", "%s %s" % (name, value)]
    seconds = str(int(newest.timestamp()) + 9 * 3600)
    run(command + [path], env=dict(os.environ, SOURCE_DATE_EPOCH=seconds, LC_ALL="C.UTF-8"))
    shutil.rmtree(top)


def build_packages(packages, changelogs, output):
    """Makes output/FILE_NAME for every package.

    changelogs: name -> list of (date, author, text), newest first.
    """
    with tempfile.TemporaryDirectory(prefix="sandbox-build-") as work, ThreadPoolExecutor(2) as pool:
        jobs = [
            pool.submit(_build_spec, spec, changelogs[spec.changelog], work, output)
            for spec in _spec_files(packages)]
        for job in jobs:
            job.result()


class KeyRing(object):
    """A temporary GnuPG home with signing keys. The end of the scope also ends the agent of GnuPG."""

    def __enter__(self):
        self._home = tempfile.mkdtemp(prefix="sandbox-gpg-")
        self._environment = dict(os.environ, GNUPGHOME=self._home)
        return self

    def __exit__(self, *exception):
        try:
            run(["gpgconf", "--kill", "all"], env=self._environment)
        finally:
            shutil.rmtree(self._home, ignore_errors=True)

    def generate(self, user):
        run(["gpg", "--batch", "--quiet", "--passphrase", "", "--quick-generate-key", user, "rsa2048", "sign",
             "never"], env=self._environment)

    def export(self, user, path):
        run(["gpg", "--batch", "--quiet", "--armor", "--output", path, "--export", "=" + user],
            env=self._environment)

    def sign(self, user, paths):
        # rpm's built-in macros may contain another path of gpg, so this function sets the real path.
        macros = {"_gpg_name": "=" + user, "_gpg_path": self._home, "__gpg": shutil.which("gpg")}
        command = ["rpmsign"] + list(DBPATH)
        for name, value in macros.items():
            command += ["--define", "%s %s" % (name, value)]
        run(command + ["--addsign"] + paths, env=self._environment)
