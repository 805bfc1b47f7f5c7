# SPDX-License-Identifier: GPL-2.0-or-later
"""Runs the same operation with the script and with the dnf command, on two copies of one root, and compares the
results.

A scenario is a row of a table:

    Scenario("name_of_the_test", expect="+libmoss", install="libmoss", dnf="install libmoss")

expect   the required result of both programs. Without this requirement, the comparison would also succeed if neither
         program did anything. The result has one of these forms:
         names of packages with a prefix: "+" for installed, "-" for removed, "^" for changed to another version
         "refused" and a text: nothing changes, and both programs give this text as the reason
         "failed", a text and names of packages: both programs report the text, but change these packages
         "nothing": no error and no changes
marks    install, update, remove, group_install, group_update, group_remove: the marks that the user sets in the table,
         as names, name.arch or name-version. The update "all" means every row with an update. If the table does not
         permit a mark, the result is "refused" with "not in the table" or "not permitted"
replay   instead of marks: "undo", "rollback" or "redo", and the transaction's position in the history; 0 is the newest
dnf      the dnf command line for the same operation
config   lines of the main configuration file; {plugins} stands for the directory with the plug-ins' settings
repos    additional repositories, as names or as pairs of a name and further lines; {root} stands for the root of the
         sandbox
before   changes to the root before it is copied: dnf command lines, or functions with the root as their argument
differs  if the results intentionally differ: the name of a row of "Differences from dnf" in the manual, and the result
         of VYRE in the same form as expect
"""

import contextlib
import importlib.util
import json
import os
import re
import shutil
import sqlite3
import subprocess
import tempfile
import traceback
import unittest

import scenario
from recordingmodule import (CLEAN, DEPENDENCY, DOWNGRADE, GROUP, INSTALL, OBSOLETED, REINSTALL, REMOVE, UPGRADE,
                             WEAK)
from vyresandbox import needs_groups

_PATIENCE = 180

# The directory of dnf's installed plug-ins.
PLUGINS = os.path.join(os.path.dirname(os.path.dirname(importlib.util.find_spec("dnf").origin)), "dnf-plugins")

USUAL = ("sandbox-http", "sandbox-updates", "sandbox-file")

CONFIGURATION = """\
[main]
gpgcheck=1
installonly_limit=3
clean_requirements_on_remove=True
best=False
cachedir=/var/cache/dnf
metadata_expire=-1
plugins=0
module_platform_id=platform:larkspur9
"""

# The headings of dnf's table that have packages below them, by the action or the reason of these packages. The script
# does not write these headings, because the program makes them from the items of the transaction. The script writes all
# other headings, and the lines below them, into the listing itself.
INSTALLED_FOR = {GROUP: "Installing group/module packages", WEAK: "Installing weak dependencies",
                 DEPENDENCY: "Installing dependencies"}
REMOVED_FOR = {DEPENDENCY: "Removing dependent packages", CLEAN: "Removing unused dependencies"}
HEADINGS = {INSTALL: "Installing", DOWNGRADE: "Downgrading", UPGRADE: "Upgrading", REMOVE: "Removing",
            REINSTALL: "Reinstalling", OBSOLETED: "replacing"}
PACKAGE_HEADINGS = set(INSTALLED_FOR.values()) | set(REMOVED_FOR.values()) | set(HEADINGS.values())


class Scenario(object):
    def __init__(self, name, expect, dnf, config="", repos=(), before=(), install="", update="", remove="",
                 group_install="", group_update="", group_remove="", differs=None, groups=False,
                 replay=None):
        self.name = name
        self.expect = expect
        self.dnf = dnf
        self.config = config
        self.repos = [repo if isinstance(repo, tuple) else (repo, "") for repo in repos]
        self.before = before
        self.marks = {"install": install.split(), "update": update.split(), "remove": remove.split(),
                      "group_install": group_install.split(), "group_update": group_update.split(),
                      "group_remove": group_remove.split()}
        self.differs = differs
        self.groups = groups or bool(group_install or group_update or group_remove)
        self.replay = replay


class World(object):
    """A copy of the sandbox's root, with the configuration and the cached metadata that all scenarios share."""

    def __init__(self):
        self.sandbox = scenario.original()
        self.directory = tempfile.mkdtemp(dir=scenario.workspace)
        self.root = os.path.join(self.directory, "root")
        self.home = os.path.join(self.directory, "home")
        os.makedirs(self.home)
        with open(os.path.join(self.home, ".rpmmacros"), "w") as stream:
            stream.write("%_dbpath /var/lib/rpm\n")
        self.plugins = self.make_plugins()
        copy(self.sandbox.root, self.root)
        for name in os.listdir(os.path.join(self.root, "etc/yum.repos.d")):
            os.unlink(os.path.join(self.root, "etc/yum.repos.d", name))
        # The script reads dnf's own main configuration file through this link.
        os.unlink(os.path.join(self.root, "etc/yum.conf"))
        os.symlink("dnf/dnf.conf", os.path.join(self.root, "etc/yum.conf"))
        self.configure(self.root, "", [(name, "") for name in USUAL])
        done = self.dnf(self.root, "makecache")
        if done.returncode != 0:
            raise RuntimeError(done.stdout)

    def make_plugins(self):
        """Writes settings for plug-ins: only the versionlock plug-in is enabled, and it locks abacus-cli."""
        directory = os.path.join(self.directory, "plugins")
        os.makedirs(directory)
        locks = os.path.join(directory, "locks")
        with open(locks, "w") as stream:
            stream.write("abacus-cli-0:3.2.1-1.*\n")
        for name in os.listdir(PLUGINS):
            # The name of a plug-in is the name of its file, sometimes with "-" instead of "_".
            for name in {name[:-3], name[:-3].replace("_", "-")} if name.endswith(".py") else ():
                with open(os.path.join(directory, name + ".conf"), "w") as stream:
                    stream.write("[main]\nenabled=%d\nlocklist=%s\n" % (name == "versionlock", locks))
        return directory

    def environment(self):
        return dict(os.environ, HOME=self.home, LC_ALL="C.UTF-8", LANGUAGE="", COLUMNS="80")

    def configure(self, root, lines, repositories):
        os.makedirs(os.path.join(root, "etc/dnf"), exist_ok=True)
        with open(os.path.join(root, "etc/dnf/dnf.conf"), "w") as stream:
            stream.write(CONFIGURATION + lines.replace("; ", "\n").replace("{plugins}", self.plugins) + "\n")
        for name, options in repositories:
            content = "[%s]\nname=%s\nbaseurl=file://%s\nenabled=1\ngpgcheck=0\n%s\n" % (
                name, name, self.sandbox.repository(name),
                options.replace("; ", "\n").replace("{root}", self.sandbox.root))
            with open(os.path.join(root, "etc/yum.repos.d", name + ".repo"), "w") as stream:
                stream.write(content)

    def dnf(self, root, line):
        arguments = line if isinstance(line, list) else line.split()
        return subprocess.run(["/usr/bin/dnf", "-y", "--installroot=" + root] + arguments, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=self.environment(),
                              universal_newlines=True, timeout=_PATIENCE)


def copy(source, target):
    subprocess.run(["cp", "-a", "--reflink=auto", source, target], check=True)


_world = None


def world():
    """Returns the World of this test process. The first call makes this World."""
    global _world
    if _world is None:
        _world = World()
    return _world


# The states of a root ----------------------------------------------------------------------------------------------

def packages(root):
    """The packages in rpm's database; each name contains the epoch, even if it is 0."""
    return set(scenario.Sandbox(os.path.dirname(root)).rpm(
        "-qa", "--root", root, "--queryformat",
        r"%{NAME}-%|EPOCH?{%{EPOCH}}:{0}|:%{VERSION}-%{RELEASE}.%{ARCH}\n").split())


def history(root):
    """From dnf's history: the reason of each package, and the installed groups with their members."""
    connection = sqlite3.connect(os.path.join(root, "var/lib/dnf/history.sqlite"))
    try:
        reasons = {}
        for name, reason in connection.execute(
                "SELECT rpm.name || '.' || rpm.arch, trans_item.reason FROM trans_item JOIN rpm USING (item_id) "
                "JOIN trans ON trans.id = trans_item.trans_id WHERE trans.state = 1 "
                "AND trans_item.action NOT IN (3, 5, 7, 10) ORDER BY trans_item.id"):
            reasons[name] = reason
        groups = {}
        for kind, key, member in (("comps_group", "groupid", "comps_group_package"),
                                  ("comps_environment", "environmentid", "comps_environment_group")):
            link, of = ("group_id", "name") if kind == "comps_group" else ("environment_id", "groupid")
            for item, name, action in connection.execute(
                    "SELECT item_id, %s, trans_item.action FROM %s JOIN trans_item USING (item_id) "
                    "JOIN trans ON trans.id = trans_item.trans_id WHERE trans.state = 1 ORDER BY trans_item.id"
                    % (key, kind)):
                groups.pop(name, None)
                if action != REMOVE:
                    groups[name] = sorted(connection.execute(
                        "SELECT %s, installed FROM %s WHERE %s = ?" % (of, member, link), (item,)))
        return reasons, groups
    finally:
        connection.close()


def modules(root):
    """The contents of the files in which dnf stores the states of modules."""
    directory = os.path.join(root, "etc/dnf/modules.d")
    found = {}
    if os.path.isdir(directory):
        for name in sorted(os.listdir(directory)):
            with open(os.path.join(directory, name)) as stream:
                found[name] = stream.read()
    return found


_OTHER_DIRECTORIES = ("var/cache", "var/log", "var/lib/rpm", "var/lib/dnf", "root", "dev", "etc/dnf/modules.d")


def files(root):
    """The paths of all files that packages or their scripts may have made."""
    found = set()
    for directory, names, leaves in os.walk(root):
        inside = os.path.relpath(directory, root)
        names[:] = [name for name in names if os.path.normpath(os.path.join(inside, name)) not in _OTHER_DIRECTORIES]
        found.update(os.path.normpath(os.path.join(inside, name)) for name in leaves)
    return found


def state(root):
    installed = packages(root)
    reasons, groups = history(root)
    present = {re.sub(r"-[^-]+-[^-]+(\.[^.]+)$", r"\1", package) for package in installed}
    return {"packages": installed, "reasons": {name: reason for name, reason in reasons.items() if name in present},
            "groups": groups, "modules": modules(root), "files": files(root)}


# The listings ------------------------------------------------------------------------------------------------------

def listing_of_dnf(output):
    """The table that dnf shows before its question, as {heading: set of entries}. The entries lack the sizes."""
    lines = output.split("\n")
    rules = [number for number, line in enumerate(lines) if re.match("=+$", line)]
    if len(rules) < 2:
        return {}
    listing = {}
    heading = None
    tokens = []

    def finish():
        if heading is None:
            return
        entries = listing.setdefault(heading, set())
        if heading not in PACKAGE_HEADINGS:
            entries.update(" ".join(line.split()) for line in tokens)
            return
        words = " ".join(tokens).split()
        while words:
            if words[0] == "replacing":
                listing.setdefault("replacing", set()).add("%s %s" % tuple(words[1:3]))
                del words[:3]
            else:
                name, arch, evr, repository = words[:4]
                # For an installed package, dnf does not always know the repository.
                entries.add("%s.%s %s %s" % (name, arch, evr, "" if heading.startswith("Removing") else repository))
                del words[:5]
                if words and words[0] in ("k", "M", "G"):
                    del words[0]

    for line in lines[rules[1] + 1:]:
        if line.startswith("Transaction Summary") or re.match("=+$", line):
            break
        if line and not line.startswith(" "):
            finish()
            heading, tokens = line.rstrip(":"), []
        elif line.startswith("(") or not line.strip():
            continue
        else:
            tokens.append(line)
    finish()
    return {heading: entries for heading, entries in listing.items() if entries}


def listing_of_script(items, added):
    listing = {}
    for item in items:
        action, reason = item["action"], item["reason"]
        heading = HEADINGS.get(action)
        if action == INSTALL:
            heading = INSTALLED_FOR.get(reason, heading)
        elif action == REMOVE:
            heading = REMOVED_FOR.get(reason, heading)
        if heading is None:
            continue
        evr = "%s%s-%s" % ("%d:" % item["epoch"] if item["epoch"] else "", item["version"], item["release"])
        entry = "%s.%s %s" % (item["name"], item["arch"], evr)
        if action != OBSOLETED:
            entry += " " + ("" if action == REMOVE else item["from_repo"])
        listing.setdefault(heading, set()).add(entry)
    heading = None
    for line in added.split("\n"):
        if line.startswith("\t"):
            listing.setdefault(heading, set()).add(" ".join(line.split()))
        elif line:
            heading = line.rstrip(":")
    return listing


# The script --------------------------------------------------------------------------------------------------------

# The states of rows, like Package::State in the program.
UPDATABLE, AVAILABLE, INSTALLED = "updatable", "available", "installed"


class Row(object):
    """A row of the table, like Package::Entry in the program: a package of one bi-arch class, or a group.

    versions: the installed versions, as pairs of a package and a truth value: whether the configuration excludes this
    package.
    """

    def __init__(self, state, shown):
        self.state = state
        self.shown = shown
        self.versions = []

    def removable(self):
        """The installed versions that a removal of this row removes."""
        return [package for package, excluded in self.versions if not excluded]

    def permits(self, action):
        """Whether the table permits this action; the rules are those of Package::Entry::permits."""
        if action == "update":
            return self.state == UPDATABLE
        if action == "install":
            return self.state == AVAILABLE
        return self.state != AVAILABLE and (not self.versions or bool(self.removable()))


class Refused(Exception):
    """The table does not permit a mark of the scenario."""


class _Driver(scenario.ScenarioTest):
    """Calls the script in the same order as the program does."""

    def runTest(self):
        pass

    def run_script(self, root, marks, groups, replay):
        os.environ["VYREROOT"] = root
        self.added = []
        self.load(addToListing=self.added.append)
        self.yumio.lock()
        yumio = self.yumio
        yumio.setupRepos()
        self.assert_host_is_left_alone()
        self.rows = self.package_rows(list(yumio.collectUpdates()), yumio.collectAll())
        self.group_rows = self.rows_of_groups(yumio.collectGroups()) if groups else []
        yumio.collectDone()
        outcome = {"refused": None, "applied": None}
        try:
            lists = self.lists(marks)
        except Refused as e:
            return dict(outcome, refused=str(e), items=[], added="")
        self.recording.answers = [1] * 9
        try:
            if replay is not None:
                outcome["applied"] = bool(yumio.replay(replay[0], yumio.transactions()[replay[1]][0]))
            else:
                outcome["applied"] = bool(yumio.apply(*lists))
        except self.dnf.exceptions.Error as e:
            outcome["refused"] = str(e)
        if self.recording.faults:
            raise AssertionError(self.recording.faults)
        listings = self.recording.of("listTransaction")
        return dict(outcome, items=listings[-1] if listings else [], added="".join(self.added),
                    log=[text for level, text in self.recording.of("errorlog")])

    # The table, by the rules of YumIO::collectReal

    def package_rows(self, updates, everything):
        rows = {}

        def key(package):
            return package.name, self.yumio.getBiArch(package.arch)

        for new in updates:
            rows.setdefault(key(new), Row(UPDATABLE, new))
        for new, old in self.yumio.counterparts:
            rows.setdefault(key(old), rows[key(new)])
        for excluded, packages in ((False, everything.installed), (True, everything.excluded)):
            for old in packages:
                rows.setdefault(key(old), Row(INSTALLED, old)).versions.append((old, excluded))
        for new in everything.available:
            rows.setdefault(key(new), Row(AVAILABLE, new))
        # A row can have two keys, but the table lists it only once.
        return list({id(row): row for row in rows.values()}.values())

    def rows_of_groups(self, groups):
        rows = {}
        for group in groups:
            if group.uservisible and group.name not in rows:
                state = AVAILABLE
                if self.yumio.base.history.group.get(group.id) is not None:
                    state = INSTALLED
                elif any(self.is_updatable(name) for name in group.names("mandatory", "default")):
                    state = UPDATABLE
                rows[group.name] = Row(state, group)
        return list(rows.values())

    def is_updatable(self, name):
        """Whether the program would update this member of a group. If the member has several rows, only the
        row of the system's architecture counts.
        """
        found = [row for row in self.rows if row.shown.name == name]
        native = [row for row in found if self.yumio.getBiArch(row.shown.arch) == self.yumio.base.conf.basearch]
        return any(row.state == UPDATABLE for row in (native or found)[:1])

    # The marks of the user

    @staticmethod
    def matches(mark, package):
        return mark in (package.name, "%s.%s" % (package.name, package.arch), "%s-%s" % (package.name, package.version),
                        "%s-%s.%s" % (package.name, package.version, package.arch))

    def marked(self, action, mark):
        """The rows that a mark names and whose state permits the action. At least one such row must exist."""
        found = [row for row in self.rows if self.matches(mark, row.shown)
                 or any(self.matches(mark, version) for version, excluded in row.versions)]
        return self.permitted(action, mark, found)

    @staticmethod
    def permitted(action, mark, found):
        if not found:
            raise Refused("not in the table: %s" % mark)
        permitting = [row for row in found if row.permits(action)]
        if not permitting:
            raise Refused("not permitted: %s of %s, which is %s" % (action, mark, found[0].state))
        return permitting

    def best(self, mark):
        """The package that a mark installs. If the package exists in several architectures, the table prefers the
        system's architecture.
        """
        found = [row.shown for row in self.marked("install", mark)]
        for package in found[1:]:
            if not self.yumio.isBetterThan(found[0], package):
                found[0] = package
        return found[0]

    def all_updates(self):
        """The rows that the "Set Update of Listed" button marks: all rows with an update, except packages that another
        package replaces.
        """
        replaced = set(str(old) for old, other in self.yumio.replacements)
        return [row for row in self.rows if row.permits("update")
                and not any(str(version) in replaced for version, excluded in row.versions)]

    def lists(self, marks):
        """The lists that the program passes to the script's apply(), as YumIO::applyReal makes them."""
        installs = [self.best(mark) for mark in marks["install"]]
        updated = self.all_updates() if marks["update"] == ["all"] else [
            row for mark in marks["update"] for row in self.marked("update", mark)]
        pairs = [[row.shown, old] for row in updated for old, excluded in row.versions]
        removes = [old for mark in marks["remove"] for row in self.marked("remove", mark) for old in row.removable()]
        groups = [[row.shown for mark in marks["group_" + action]
                   for row in self.permitted(action, mark, [row for row in self.group_rows if row.shown.id == mark])]
                  for action in ("install", "update", "remove")]
        return [installs, pairs, removes] + groups


def _in_child(function, *arguments):
    """Starts a function in a child process. Returns a second function, which waits for the child and returns the
    result.
    """
    def in_child(writer):
        try:
            answer = {"result": function(*arguments)}
        except BaseException:
            answer = {"failure": traceback.format_exc()}
        with os.fdopen(writer, "w") as stream:
            json.dump(answer, stream)
        return 0

    child, reader = scenario.start_child(in_child)

    def wait():
        with os.fdopen(reader) as stream:
            text = stream.read()
        os.waitpid(child, 0)
        answer = json.loads(text) if text else {"failure": "the script's process ended"}
        if "failure" in answer:
            raise AssertionError(answer["failure"])
        return answer["result"]

    return wait


# The tests ---------------------------------------------------------------------------------------------------------

class ComparisonTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.sandbox = scenario.original()

    def compare(self, row):
        directory = tempfile.mkdtemp(dir=scenario.workspace)
        self.addCleanup(shutil.rmtree, directory)
        own, other = os.path.join(directory, "vyre"), os.path.join(directory, "dnf")
        with self.prepared(row, own):
            before = state(own)
            copy(own, other)
            # The script and dnf must use the same rpm macros, which are in this home directory.
            os.environ["HOME"] = world().home
            wait = _in_child(_Driver().run_script, own, row.marks, row.groups, row.replay)
            done = world().dnf(other, self.command(row.dnf, directory))
            outcome = wait()
            mine, theirs = state(own), state(other)
        details = "dnf (%d):\n%s\nscript: %s" % (done.returncode, done.stdout, json.dumps(outcome, indent=1))
        self.check_outcome(row.expect, before, theirs, done.returncode == 0, done.stdout, details)
        refusal = outcome["refused"]
        if row.differs is not None:
            self.check_difference(row.differs[0])
            self.check_outcome(row.differs[1], before, mine, refusal is None, refusal, details)
            return
        self.check_outcome(row.expect, before, mine, refusal is None, refusal, details)
        for part in mine:
            self.assertEqual(mine[part], theirs[part], "%s\n%s" % (part, details))
        if outcome["refused"] is None:
            # dnf's listing names the skipped packages; the script names them in a question before the listing.
            self.assertEqual(listing_of_script(outcome["items"], outcome["added"]),
                             {heading: lines for heading, lines in listing_of_dnf(done.stdout).items()
                              if not heading.startswith("Skipping packages")}, details)

    @staticmethod
    def command(line, directory):
        """The arguments for dnf. Several commands after "shell" become a file of commands for dnf's shell."""
        if not line.startswith("shell "):
            return line
        path = os.path.join(directory, "commands")
        with open(path, "w") as stream:
            stream.write(line[6:].replace("; ", "\n") + "\nrun\n")
        return ["shell", path]

    @contextlib.contextmanager
    def prepared(self, row, root):
        copy(world().root, root)
        world().configure(root, "", row.repos)
        for step in row.before:
            if callable(step):
                step(root)
            else:
                done = world().dnf(root, step)
                self.assertEqual(done.returncode, 0, done.stdout)
        world().configure(root, row.config, row.repos)
        yield

    def check_difference(self, name):
        """Checks that the manual lists this intended difference."""
        with open(os.path.join(scenario.SOURCES, "manual", "manual.adoc")) as stream:
            table = stream.read().partition("[#differences]")[2].partition("[#troubleshooting]")[0]
        self.assertIn("\n|%s\n" % name, table)

    def check_outcome(self, expect, before, after, done, text, details):
        if expect.startswith("refused") or expect == "nothing":
            changes = {part for part in after if after[part] != before[part]}
            self.assertEqual(changes, set(), details)
            if expect.startswith("refused"):
                self.assertFalse(done, details)
                self.assertRegex(" ".join(text.split()), expect.partition(" ")[2], details)
            else:
                # Neither operation may fail. But in VYRE, the row to mark may be missing, or may not permit the action.
                self.assertTrue(done or re.match("not in the table: |not permitted: |There is nothing to do", text),
                                details)
            return
        expected = expect.split()
        if expected[:1] == ["failed"]:
            self.assertFalse(done, details)
            self.assertRegex(text, expected[1], details)
            del expected[:2]
        else:
            self.assertTrue(done, details)
        self.assertEqual(changes_between(before["packages"], after["packages"]), set(expected), details)


def changes_between(before, after):
    """The changes between two sets of packages, in the format of a scenario's "expect". The name of an i686 package
    includes the architecture.
    """
    def names(found):
        counted = {}
        for package in found:
            name, version = re.match(r"(.+)-([^-]+-[^-]+)\.[^.]+$", package).groups()
            counted.setdefault(name + (".i686" if package.endswith(".i686") else ""), set()).add(version)
        return counted

    old, new = names(before), names(after)
    changes = set()
    for name in set(old) | set(new):
        gone, come = old.get(name, set()) - new.get(name, set()), new.get(name, set()) - old.get(name, set())
        if gone and come:
            changes.add("^" + name)
        elif come:
            changes.add("+" + name)
        elif gone:
            changes.add("-" + name)
    return changes


def _test(row):
    def compare(self):
        self.compare(row)
    return needs_groups(compare) if row.groups else compare


def tests(scenarios):
    """Makes a test class that has one test for each scenario."""
    methods = {}
    for row in scenarios:
        if "test_" + row.name in methods:
            raise ValueError("two scenarios are %s" % row.name)
        methods["test_" + row.name] = _test(row)
    return type("SameAsDnfTest", (ComparisonTest,), methods)
