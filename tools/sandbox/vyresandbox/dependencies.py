# SPDX-License-Identifier: GPL-2.0-or-later
"""Stand-ins for the packages of a Fedora-like system that VYRE's own rpm needs.

The stand-ins have the same names as those packages. The stand-ins for libraries provide the names that rpm's generator
finds in this machine's own libraries. After their installation, an rpm of VYRE that was built on this machine can be
installed. The stand-ins contain nothing else.
"""

import datetime
import os
import subprocess

from .build import build_packages, run
from .package import Package

# The libraries of each package, by their names in the linker's cache.
_LIBRARIES = {
    "glibc": ("libc.so.6", "libm.so.6", "ld-linux-x86-64.so.2"),
    "libgcc": ("libgcc_s.so.1",),
    "libstdc++": ("libstdc++.so.6",),
    "libasan": ("libasan.so.8",),
    "libubsan": ("libubsan.so.1",),
    "python3-libs": ("libpython3.*.so.1.0",),
    "libarchive": ("libarchive.so.13",),
    "expat": ("libexpat.so.1",),
    "lz4-libs": ("liblz4.so.1",),
    "re2": ("libre2.so.*",),
    "isa-l": ("libisal.so.2",),
    "qt5-qtbase": ("libQt5Core.so.5",),
    "qt5-qtbase-gui": ("libQt5Gui.so.5", "libQt5Widgets.so.5"),
    "qt5-qtx11extras": ("libQt5X11Extras.so.5",),
}
# Not every build of VYRE needs these libraries, so they may be missing.
_OPTIONAL = ("libasan", "libubsan", "isa-l")

_PROGRAMS = {
    "python3": ("/usr/bin/python3",),
    "polkit": ("/usr/bin/pkexec",),
    "xhost": ("/usr/bin/xhost",),
}

_NAMES_ONLY = ("hicolor-icon-theme", "python3-dnf", "python3-rpm")

_CHANGELOG = {"first": [(datetime.date(2023, 5, 2), "Larkspur Packagers <packages@larkspur.example> 1-1", "- First")]}


def _known_libraries():
    """Name -> path of this machine's libraries. If a name has several paths, the linker uses the first."""
    known = {}
    for line in run(["/sbin/ldconfig", "-p"]).splitlines()[1:]:
        name, arrow, path = line.strip().partition(" => ")
        if arrow and "x86-64" in name:
            known.setdefault(name.split()[0], path)
    return known


def _provided(path):
    generator = os.path.join(run(["rpm", "--eval", "%{_rpmconfigdir}"]).strip(), "elfdeps")
    done = subprocess.run([generator, "--provides"], input=os.path.realpath(path) + "\n", stdout=subprocess.PIPE,
                          check=True, universal_newlines=True)
    return done.stdout.split()


def _library_names(pattern, known):
    if "*" not in pattern:
        return [pattern] if pattern in known else []
    begin, end = pattern.split("*")
    return sorted(name for name in known if name.startswith(begin) and name.endswith(end))


def _packages():
    known = _known_libraries()
    for name, patterns in _LIBRARIES.items():
        provided = []
        for pattern in patterns:
            found = _library_names(pattern, known)
            if not found and name not in _OPTIONAL:
                raise RuntimeError("this machine has no %s" % pattern)
            for library in found:
                provided += _provided(known[library])
        if name == "glibc":
            provided.append("rtld(GNU_HASH)")  # Fedora's glibc provides this name itself
        yield _stand_in(name, {}, [("Provides", text) for text in provided])
    for name, paths in _PROGRAMS.items():
        yield _stand_in(name, {path: "#!/bin/sh\nexit 1\n" for path in paths}, [])
    for name in _NAMES_ONLY:
        yield _stand_in(name, {}, [])


def _stand_in(name, files, relations):
    return Package(name, "1", "Stand-in for %s" % name, files=files, relations=relations)


def build_dependencies(output):
    """Makes the rpms in the directory; returns their paths."""
    packages = list(_packages())
    build_packages(packages, _CHANGELOG, output)
    return [os.path.join(output, package.file_name) for package in packages]
