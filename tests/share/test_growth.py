# SPDX-License-Identifier: GPL-2.0-or-later
"""Tests that the work of the script grows no faster than the number of packages."""

import json
import os
import runpy
import shutil
import subprocess
import sys
import tempfile
import traceback
import unittest

SOURCES = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))

# The test compares the work for this number of packages with the work for four times this number. Half of the packages
# are installed, and two of five installed packages have an update.
FEW = 400

# Four times the packages need at most about four times the work. A quadratic loop needs sixteen times the work.
MOST_GROWTH = 5


class Work:
    """Counts executed lines and called functions. These numbers do not depend on the speed of the machine. A call of a
    query counts once for each package, because libdnf goes through all packages.
    """

    def __init__(self, packages):
        self.packages = packages
        self.counts = {}

    def of(self, name, function):
        """Call the function, and store its work."""
        import hawkey
        count = 0

        def traced(frame, event, argument):
            nonlocal count
            count += 1
            return traced

        def profiled(frame, event, argument):
            nonlocal count
            if event == 'c_call':
                owner = getattr(argument, '__self__', None)
                count += self.packages if isinstance(owner, hawkey.Query) else 1

        sys.settrace(traced)
        sys.setprofile(profiled)
        try:
            return function()
        finally:
            sys.setprofile(None)
            sys.settrace(None)
            self.counts[name] = count


def measure(root, packages):
    """Collect the packages of a root, search them and mark all updates. Return the work of each step."""
    from recordingmodule import Recording
    os.environ['VYREROOT'] = root
    recording = Recording()
    sys.modules['yumIOC'] = recording.module
    yumio = runpy.run_path(os.path.join(SOURCES, 'share', 'python', 'YumIO.py'), run_name='__main__')['YumIO']()
    yumio.lock()
    assert len(yumio.base.repos) > 0
    yumio.setupRepos()  # writes dnf's cache
    work = Work(packages)
    work.of('reset', yumio.reset)
    assert len(yumio.base.repos) > 0
    work.of('setupRepos', yumio.setupRepos)
    updates = work.of('collectUpdates', yumio.collectUpdates)
    found = work.of('collectAll', yumio.collectAll)
    work.of('collectGroups', yumio.collectGroups)
    work.of('collectDone', yumio.collectDone)
    work.of('collectAdvisories', yumio.collectAdvisories)
    work.of('versionLocks', yumio.versionLocks)
    assert len(found.available) == packages and len(updates) == packages // 5, (len(found.available), len(updates))
    yumio.loadAdvisories()
    work.of('advisories of each package', lambda: [package.advisories for package in found.available])
    yumio.forgetAdvisories()
    installed = {package.name: package for package in found.installed}
    recording.answers = [False]
    pairs = [(package, installed[package.name]) for package in updates]
    work.of('listing of the updates', lambda: yumio.apply([], pairs, [], [], [], []))
    yumio.unlock()
    return work.counts


class GrowthTest(unittest.TestCase):

    def counted(self, packages):
        with tempfile.TemporaryDirectory() as work:
            made = os.path.join(work, 'distribution')
            subprocess.run([os.path.join(SOURCES, 'benchmarks', 'make-distribution'), made, str(packages)], check=True)
            done = subprocess.run(['/usr/bin/python3', __file__, os.path.join(made, 'root'), str(packages)],
                                  stdout=subprocess.PIPE, stderr=subprocess.PIPE)
            shutil.rmtree(made)
            self.assertEqual(done.returncode, 0, done.stderr.decode('utf-8', 'replace'))
            return json.loads(done.stdout.decode('utf-8').splitlines()[-1])

    def test_the_work_grows_no_faster_than_the_number_of_packages(self):
        few, many = self.counted(FEW), self.counted(4 * FEW)
        growth = {name: round(many[name] / few[name], 2) for name in few}
        self.assertEqual({name: each for name, each in growth.items() if each > MOST_GROWTH}, {})


if __name__ == '__main__':
    sys.dont_write_bytecode = True
    sys.path[:0] = [os.path.dirname(os.path.abspath(__file__))]
    try:
        counts = measure(sys.argv[1], int(sys.argv[2]))
    except BaseException:
        traceback.print_exc(file=sys.__stderr__)  # the script has replaced the standard streams
        raise
    sys.__stdout__.write('\n' + json.dumps(counts) + '\n')
