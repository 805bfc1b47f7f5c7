# SPDX-License-Identifier: GPL-2.0-or-later
"""Repositories that the root uses only after a call of Sandbox.use(). They have features beyond packages and groups.

extra-modules       modules: a default stream, another stream, an obsolete stream, and plain packages of the same names
extra-advisories    updates with advisories
extra-zchunk        metadata in zchunk format, and in the usual format
extra-zstd          metadata only in zstd format
extra-environments  environments, which are groups of groups
extra-deltas        an update with a delta rpm
extra-rules         packages for the package manager's rules: rich dependencies, kinds of updates
extra-rival         some packages of extra-rules, in equal or newer versions
"""

import glob
import gzip
import os
import shutil
import xml.etree.ElementTree as ElementTree

from .build import run
from .catalogue import CHANGELOGS as CATALOGUE_CHANGELOGS
from .package import Package
from .sandbox import CREATEREPO

REPOSITORIES = ("extra-modules", "extra-advisories", "extra-zchunk", "extra-zstd", "extra-environments", "extra-deltas",
                "extra-rules", "extra-rival")

PLATFORM = "platform:larkspur9"

# Packages with the same change log may be built together. Some versions of rpm then give the module label of one
# package to all of them. So the packages of modules have a separate change log.
CHANGELOGS = {"modular": CATALOGUE_CHANGELOGS["first"]}


def _module(name, stream, packages, summary, requires="", profiles=("common",), default=True):
    """The document of one stream. packages: the packages of the stream. The profiles install the first package."""
    artifacts = "".join("      - %s-0:%s-%s.%s\n" % (package.name, package.version, package.release, package.arch)
                        for package in packages)
    lists = "".join("    %s:\n      description: The usual packages\n      rpms:\n      - %s\n" % (
        profile, packages[0].name) for profile in profiles)
    return """---
document: modulemd
version: 2
data:
  name: %(name)s
  stream: "%(stream)s"
  version: 20240101
  context: c0ffee42
  arch: x86_64
  summary: %(summary)s
  description: >-
    %(summary)s.
  license:
    module:
    - MIT
    content:
    - MIT
  dependencies:
  - requires:
      platform: [larkspur9]
%(requires)s  profiles:
%(lists)s  artifacts:
    rpms:
%(artifacts)s...
""" % {"name": name, "stream": stream, "summary": summary, "requires": requires, "lists": lists,
       "artifacts": artifacts}


_DEFAULTS = """---
document: modulemd-defaults
version: 1
data:
  module: %(name)s
  stream: "%(stream)s"
  profiles:
    "%(stream)s": [common]
...
"""

_OBSOLETE = """---
document: modulemd-obsoletes
version: 1
data:
  modified: 2024-01-01T00:00Z
  module: %(name)s
  stream: "%(stream)s"
  message: "Nobody looks after this stream any more"
  obsoleted_by:
    module: %(name)s
    stream: "%(successor)s"
...
"""


def _modular(name, version, summary, module, stream, **fields):
    """A package of a module's stream."""
    relations = [("ModularityLabel", "%s:%s:20240101:c0ffee42" % (module, stream))] + fields.pop("relations", [])
    return Package(name, version, summary, repo="extra-modules", arch="noarch", relations=relations,
                   release="1.module+%s" % stream, changelog="modular", **fields)


_GROVE = {stream: [_modular("grove-cli", version, "Plants groves", "grove", stream,
                            relations=[("Requires", "grove-data = %s" % version)]),
                   _modular("grove-data", version, "Seeds of groves", "grove", stream)]
          for stream, version in (("0", "0.9"), ("1", "1.4"), ("2", "2.2"))}
# The module orangery has no default stream: its packages are available only if the stream is enabled.
_ORANGERY = [_modular("orangery", "5.0", "Keeps oranges warm", "orangery", "5")]
# The default stream of tidepool needs a stream of grove that is not grove's default stream.
_TIDEPOOL = [_modular("tidepool", "7.0", "Looks into pools", "tidepool", "7",
                      relations=[("Requires", "grove-cli >= 2")])]
_PLAIN_MODULES = [
    # This package has the newest version. An active stream with a package of the same name hides it.
    Package("grove-cli", "3.0", "Plants groves, without a module", repo="extra-modules", arch="noarch"),
    # This package coexists with the packages of the streams.
    Package("grove-map", "1.0", "Shows groves", repo="extra-modules", arch="noarch",
            relations=[("Requires", "grove-cli")]),
    # This package conflicts with the packages of the default stream.
    Package("grove-axe", "1.0", "Fells groves", repo="extra-modules", arch="noarch",
            relations=[("Conflicts", "grove-data < 2")]),
]


def modules():
    """The document about all modules of extra-modules."""
    return "".join([_module("grove", stream, packages, "Groves of stream %s" % stream)
                    for stream, packages in _GROVE.items()] + [
        _module("orangery", "5", _ORANGERY, "Oranges"),
        _module("tidepool", "7", _TIDEPOOL, "Pools", requires='      grove: ["2"]\n'),
        _DEFAULTS % {"name": "grove", "stream": "1"},
        _DEFAULTS % {"name": "tidepool", "stream": "7"},
        _OBSOLETE % {"name": "grove", "stream": "0", "successor": "1"}])


def _rule(name, version, *relations, **fields):
    fields.setdefault("arch", "noarch")
    fields.setdefault("repo", "extra-rules")
    return Package(name, version, "Shows a rule of the package manager", relations=[
        relation if isinstance(relation, tuple) else ("Requires", relation) for relation in relations], **fields)


def _rules():
    packages = [
        # Rich dependencies. lexicon-en is installed, lexicon-de is not.
        _rule("rich-or", "1", "(rich-left or rich-right)"),
        _rule("rich-left", "1"),
        _rule("rich-right", "1"),
        _rule("rich-if", "1", "(rich-english if lexicon-en)", "(rich-german if lexicon-de)"),
        _rule("rich-english", "1"),
        _rule("rich-german", "1"),
        _rule("rich-else", "1", "(rich-german if lexicon-de else rich-english)"),
        _rule("rich-with", "1", "(rich-api >= 1 with rich-api < 2)"),
        _rule("rich-api", "1.5"),
        _rule("rich-api", "2.5"),
        _rule("rich-weak", "1", ("Recommends", "(rich-english if lexicon-en)"), ("Suggests", "rich-german")),
        _rule("rich-unless", "1", ("Conflicts", "(rich-left unless lexicon-de)")),
        # Kinds of updates.
        _rule("steady", "1"),
        _rule("steady", "2"),
        _rule("lagging", "1"),
        _rule("lagging", "2", "no-such-thing"),
        _rule("leading", "1"),
        _rule("leading", "2", "leading-part = 2"),
        _rule("leading-part", "1"),
        _rule("leading-part", "2"),
        _rule("stuck-user", "1", "stuck-part = 1"),
        _rule("stuck-part", "1"),
        _rule("stuck-part", "2"),
        _rule("wants-old", "1", "steady < 2"),
        _rule("obsolete-one", "1"),
        _rule("obsolete-two", "1"),
        _rule("obsoleter", "1", ("Obsoletes", "obsolete-one < 2"), ("Obsoletes", "obsolete-two < 2"),
              ("Provides", "obsolete-one = 2")),
        _rule("stacked", "1", ("Provides", "installonlypkg(stacked)"), files={"/usr/share/stacked/1": "1\n"}),
        _rule("stacked", "2", ("Provides", "installonlypkg(stacked)"), files={"/usr/share/stacked/2": "2\n"}),
        _rule("stacked", "3", ("Provides", "installonlypkg(stacked)"), files={"/usr/share/stacked/3": "3\n"}),
        # Dependencies that are installed with the packages that need them, and removed with these packages.
        _rule("user-of-part", "1", "part-of-two"),
        _rule("other-user-of-part", "1", "part-of-two"),
        _rule("part-of-two", "1"),
        _rule("weakling", "1", ("Recommends", "weak-friend")),
        _rule("weak-friend", "1"),
        # Files.
        _rule("handbook", "1",
              files={"/usr/share/doc/handbook/README": "Read me\n", "/usr/share/handbook/part": "I\n"}),
        _rule("stamper", "1", scripts={"post": ": > /usr/share/stamped"}, files={"/usr/share/stamper": "ink\n"}),
        _rule("confetti", "1", files={"/etc/confetti.conf": "paper=white\n"}),
        _rule("confetti", "2", files={"/etc/confetti.conf": "paper=red\n"}),
        _rule("stubborn", "1", scripts={"preun": "exit 1"}),
        # Providers of one name.
        _rule("needs-provider", "1", "provided-thing"),
        _rule("provider-a", "1", ("Provides", "provided-thing")),
        _rule("provider-b", "1", ("Provides", "provided-thing")),
        _rule("vendor-kept", "1", vendor="One"),
        _rule("vendor-kept", "2", vendor="Other"),
    ]
    for arch in ("x86_64", "i686"):
        packages += [
            _rule("twin", "1", arch=arch, files={"/usr/share/twin-%s" % arch: "1\n"}),
            _rule("twin", "2", arch=arch, files={"/usr/share/twin-%s" % arch: "2\n"}),
        ]
    packages += [
        _rule("pair-user", "1", "twin(x86-32)", arch="i686"),
        # Versions for a single architecture, and a version that is "noarch".
        _rule("unsettled", "1", arch="i686", files={"/usr/share/unsettled-i686": "1\n"}),
        _rule("unsettled", "2", arch="x86_64", files={"/usr/share/unsettled-x86_64": "2\n"}),
        _rule("unsettled", "2", files={"/usr/share/unsettled": "2\n"}),
        # Versions that another repository also has.
        _rule("shared", "1"),
        _rule("shared", "2", repo="extra-rival"),
        _rule("shared-later", "1"),
        _rule("shared-later", "2", repo="extra-rival"),
    ]
    # Make it possible that other packages require the package "twin" for a certain architecture.
    for package in packages:
        if package.name == "twin":
            package.relations.append(("Provides", "twin(%s) = %s" % (
                "x86-32" if package.arch == "i686" else "x86-64", package.version)))
    return packages


def _others():
    def one(name, version, repo, summary, **fields):
        return Package(name, version, summary, repo="extra-" + repo, arch="noarch", **fields)

    long = {"/usr/share/delta/tides.txt": "".join("The tide of hour %d\n" % hour for hour in range(20000))}
    return [
        one("adviser", "1.0", "advisories", "Has an advisory"),
        one("adviser", "1.1", "advisories", "Has an advisory"),
        one("adviser", "1.2", "advisories", "Has an advisory"),
        one("unadvised", "1.0", "advisories", "Has no advisory"),
        one("unadvised", "1.1", "advisories", "Has no advisory"),
        one("chunky", "1.0", "zchunk", "Is listed in chunks"),
        one("zesty", "1.0", "zstd", "Is listed in zstd"),
        one("habitat-sea", "1.0", "environments", "Member of a group of an environment"),
        one("habitat-shore", "1.0", "environments", "Member of a group of an environment"),
        one("habitat-cave", "1.0", "environments", "Member of an optional group of an environment"),
        one("delta-tides", "1.0", "deltas", "Has a delta", files=dict(long)),
        one("delta-tides", "1.1", "deltas", "Has a delta",
            files=dict(long, **{"/usr/share/delta/note.txt": "A word about tides\n"})),
    ]


def packages():
    """All packages of these repositories; none of them is installed."""
    return sum(_GROVE.values(), []) + _ORANGERY + _TIDEPOOL + _PLAIN_MODULES + _rules() + _others()


# The metadata ----------------------------------------------------------------------------------------------------

ENVIRONMENT = "habitats"
ENVIRONMENT_GROUPS = {"habitat-waters": ["habitat-sea", "habitat-shore"], "habitat-rocks": ["habitat-cave"]}

_ADVISORY = """<?xml version="1.0" encoding="UTF-8"?>
<updates>
  <update from="security@larkspur.example" status="final" type="security" version="1">
    <id>LSA-2024-021</id>
    <title>adviser: gives wrong advice</title>
    <issued date="2024-02-20 00:00:00"/>
    <severity>Important</severity>
    <description>A crafted question is answered.</description>
    <references>
      <reference href="https://larkspur.example/LSA-2024-021" id="CVE-2024-0021" type="cve"/>
    </references>
    <pkglist>
      <collection short="L9">
        <name>Larkspur Linux 9</name>
        <package name="adviser" version="1.1" release="1" epoch="0" arch="noarch">
          <filename>adviser-1.1-1.noarch.rpm</filename>
        </package>
      </collection>
    </pkglist>
  </update>
</updates>
"""


def make_repositories(sandbox, work):
    """Moves the rpms from work into the directories, and makes the metadata."""
    for name in REPOSITORIES:
        os.makedirs(sandbox.repository(name))
    for package in packages():
        shutil.move(os.path.join(work, package.file_name), sandbox.repository(package.repo))
    # This package is in both repositories, extra-rules and extra-rival.
    shutil.copy(os.path.join(sandbox.repository("extra-rules"), "steady-2-1.noarch.rpm"),
                sandbox.repository("extra-rival"))
    for name in REPOSITORIES:
        _index(sandbox.repository(name), _OPTIONS.get(name, ()), work)
    _add(sandbox.repository("extra-modules"), "modules", "modules.yaml", modules(), work)
    _add(sandbox.repository("extra-advisories"), "updateinfo", "updateinfo.xml", _ADVISORY, work)
    if not _CREATEREPO_PACKS_WITH_ZSTD:
        _pack_with_zstd(os.path.join(sandbox.repository("extra-zstd"), "repodata"))


# Some versions of createrepo_c cannot pack with zstd. Only for these versions, _pack_with_zstd() packs the files. With
# all other versions, modifyrepo_c would unpack the files again.
_CREATEREPO_PACKS_WITH_ZSTD = "zstd" in run([CREATEREPO[0], "--help"])

_OPTIONS = {
    "extra-zchunk": ("--zck",),
    "extra-zstd": ("--general-compress-type", "zstd") if _CREATEREPO_PACKS_WITH_ZSTD else (),
    "extra-deltas": ("--deltas",),
    "extra-environments": ("--groupfile", "environments.xml"),
}


def _index(directory, options, work):
    options = list(options)
    if "--groupfile" in options:
        options[-1] = os.path.join(work, options[-1])
        _write_environments(options[-1])
    if "--deltas" in options:
        options += ["--oldpackagedirs", directory]
    run(list(CREATEREPO) + options + [directory])


def _add(directory, kind, name, content, work):
    path = os.path.join(work, name)
    with open(path, "w") as stream:
        stream.write(content)
    run(["modifyrepo_c", "--mdtype", kind, path, os.path.join(directory, "repodata")])


def _pack_with_zstd(directory):
    for kind in ("primary", "filelists", "other"):
        path, = glob.glob(os.path.join(directory, "*-%s.xml.gz" % kind))
        plain = os.path.join(directory, kind + ".xml")
        with gzip.open(path) as packed, open(plain, "wb") as stream:
            shutil.copyfileobj(packed, stream)
        run(["modifyrepo_c", "--remove", kind, directory])
        run(["zstd", "--quiet", "--rm", plain])
        run(["modifyrepo_c", "--no-compress", "--mdtype", kind, plain + ".zst", directory])


def _write_environments(path):
    comps = ElementTree.Element("comps")

    def add(parent, tag, text=None, **attributes):
        element = ElementTree.SubElement(parent, tag, attributes)
        element.text = text
        return element

    for identifier, members in ENVIRONMENT_GROUPS.items():
        group = add(comps, "group")
        add(group, "id", identifier)
        add(group, "name", identifier.replace("habitat-", "Habitat: "))
        add(group, "description", "Part of an environment")
        add(group, "default", "false")
        add(group, "uservisible", "true")
        names = add(group, "packagelist")
        for member in members:
            add(names, "packagereq", member, type="mandatory")
    environment = add(comps, "environment")
    add(environment, "id", ENVIRONMENT)
    add(environment, "name", "Habitats")
    add(environment, "description", "Places to live")
    add(environment, "display_order", "1")
    add(add(environment, "grouplist"), "groupid", "habitat-waters")
    add(add(environment, "optionlist"), "groupid", "habitat-rocks")
    ElementTree.ElementTree(comps).write(path, encoding="utf-8", xml_declaration=True)
