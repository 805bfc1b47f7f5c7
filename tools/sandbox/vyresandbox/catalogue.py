# SPDX-License-Identifier: GPL-2.0-or-later
"""The packages, change logs and groups of the sandbox's distribution, "Larkspur Linux 9".

Names, texts and people are invented.
"""

import datetime
import os
import random
import subprocess

from .package import Package

RELEASE_VERSION = "9"
TRUSTED_KEY = "Larkspur Signing Key <keys@larkspur.example>"
UNKNOWN_KEY = "Nobody In Particular <nobody@elsewhere.example>"
TRUSTED_KEY_FILE = "/etc/pki/rpm-gpg/RPM-GPG-KEY-larkspur"

MARKUP = "<b>bold</b><script>alert(1)</script> & <img src=x>"

# name, version, newer version or "-", architecture, repository, state or "-", rpm group, licence, summary
_PLAIN = """
abacus-cli       3.2.1  3.3.0 x86_64 http user       Applications/Engineering  MIT               Exact arithmetic on the command line
almanac          1.9    -     noarch http user       Applications/Productivity CC0-1.0           Calendar of sunrise and sunset times
amberfont-sans   2.004  2.010 noarch http user       User_Interface/X          OFL-1.1           Humanist sans-serif typeface for reading on screens
amberfont-serif  2.004  -     noarch http -          User_Interface/X          OFL-1.1           Book typeface with old-style figures
anvil-make       4.1    4.2   x86_64 http user       Development/Tools         GPL-3.0-or-later  Build tool driven by dependency rules
apricot-shell    0.8    -     x86_64 http -          User_Interface/Desktops   GPL-2.0-or-later  Compact desktop shell for small screens
aquifer          1.1    -     x86_64 http -          System_Environment/Base   BSD-3-Clause      Buffers pipes that fill faster than they drain
arbor-tree       2.0    -     noarch http -          Applications/File         MIT               Draws directory trees
astrolabe        5.6    -     x86_64 http -          Applications/Engineering  GPL-2.0-or-later  Star charts for any place and date
atrium-web       2.4    2.4.1 x86_64 http user       System_Environment/Daemons Apache-2.0       Small web server for static files
badger-lint      1.3    -     noarch http -          Development/Tools         MIT               Finds doubtful constructs in shell scripts
bakery-cookies   0.4    -     noarch http -          Amusements/Games          MIT               Fortune cookies for the terminal
barometer        1.0    1.1   x86_64 http user       Applications/System       GPL-2.0-or-later  Shows load, memory and disk pressure
basalt-fs        1.7    -     x86_64 http -          System_Environment/Base   GPL-2.0-only      Tools for the basalt file system
beacon-dns       9.2    9.3   x86_64 http user       System_Environment/Daemons MPL-2.0          Caching name server
bellows-audio    0.9    -     x86_64 http -          Applications/Multimedia   GPL-2.0-or-later  Records and mixes sound
birch-log        3.0    -     x86_64 http user       Applications/System       BSD-2-Clause      Rotates and compresses logs
blotter          1.2    -     noarch http -          Applications/Editors      MIT               Notes that stay on the desktop
bookbinder       4.4    -     noarch http -          Applications/Publishing   GPL-3.0-or-later  Turns plain text into printed books
bramble-vpn      2.1    -     x86_64 http -          Applications/Internet     GPL-2.0-or-later  Private networks over untrusted links
brushwork        7.0    -     x86_64 http -          Applications/Multimedia   GPL-3.0-or-later  Paints and retouches pictures
cairn-browser    102.4  -     x86_64 http -          Applications/Internet     MPL-2.0           Web browser
calligraph       1.5    -     x86_64 http -          Applications/Publishing   GPL-2.0-or-later  Vector drawing with pressure-sensitive pens
candela          0.3    -     x86_64 http -          System_Environment/Base   MIT               Adjusts the brightness of the screen
caravan-mail     6.8    -     x86_64 http -          Applications/Internet     GPL-3.0-or-later  Mail reader
cartouche        1.0.2  -     noarch http -          Applications/Publishing   MIT               Labels and envelopes
chandlery        2.2    -     noarch http -          Applications/System       GPL-2.0-or-later  Keeps lists of ship's stores
chisel-diff      3.9    3.10  x86_64 http user       Development/Tools         GPL-3.0-or-later  Compares files and directories
cinder-backup    1.4    -     noarch http user       Applications/Archiving    GPL-3.0-or-later  Incremental copies of home directories
clapper          2.0    -     x86_64 http -          Applications/Multimedia   GPL-2.0-or-later  Plays films
clover-chat      0.12   -     x86_64 http -          Applications/Communications MIT             Talks to chat servers
compost          1.0    -     noarch http -          Applications/File         MIT               Deletes old temporary files
copperplate      1.8    -     noarch http -          User_Interface/X          OFL-1.1           Engraved script typeface
corkboard        0.7    -     noarch file -          Applications/Productivity MIT               Pins pictures and clippings
cormorant-fetch  1.21   -     x86_64 file user       Applications/Internet     MIT               Fetches files from the network
crucible-cc      12.1   -     x86_64 http -          Development/Languages     GPL-3.0-or-later  Compiler for the C language
dapple-theme     3.1    -     noarch file -          User_Interface/Desktops   LGPL-2.1-or-later Light desktop theme
delta-patch      2.7    -     x86_64 file user       Development/Tools         GPL-3.0-or-later  Applies differences to files
dovecote         2.3    -     x86_64 file -          System_Environment/Daemons MIT              Mailbox server
driftwood        1.6    -     noarch file -          Amusements/Graphics       MIT               Screen saver with floating wood
ember-db         15.2   -     x86_64 http -          Applications/Databases    BSD-2-Clause      Relational database server
escapement       1.1    -     x86_64 file user       System_Environment/Base   GPL-2.0-or-later  Keeps the clock right
falconry         0.5    -     x86_64 file -          Applications/System       GPL-2.0-or-later  Watches processes and calls them back
fathom           1.0    -     x86_64 file -          Applications/System       BSD-3-Clause      Measures the depth of directory trees
fernleaf-icons   5.0    -     noarch file user       User_Interface/Desktops   CC-BY-SA-4.0      Icons with botanical motifs
fiddlehead       0.2    -     x86_64 file -          Applications/Multimedia   GPL-2.0-or-later  Practice companion for string players
flint-ssh        8.8    -     x86_64 file user       Applications/Internet     BSD-2-Clause      Remote login with strong encryption
foundry-ld       2.40   -     x86_64 file -          Development/Tools         GPL-3.0-or-later  Linker
gazette          3.3    -     noarch file -          Applications/Internet     GPL-3.0-or-later  Reads news feeds
gimbal           1.9    -     x86_64 file -          Applications/Multimedia   GPL-2.0-or-later  Steadies shaky films
gneiss-vm        6.2    -     x86_64 file -          Applications/Emulators    GPL-2.0-or-later  Runs virtual machines
granary          2.5    -     x86_64 file -          Applications/Databases    MIT               Key-value store in one file
halyard          0.6    -     x86_64 file user       Applications/System       Apache-2.0        Runs jobs at set times
harbour-ftp      1.3    -     x86_64 file -          System_Environment/Daemons BSD-3-Clause     File transfer server
hedgerow         4.0    -     noarch file -          Amusements/Games          GPL-2.0-or-later  Find the way out of the maze
heliograph       2.8    -     x86_64 file -          Applications/Communications GPL-2.0-or-later Sends faxes
hornbeam         1.0    -     noarch file -          Development/Libraries     MIT               Template language for documents
isthmus-proxy    3.5    -     x86_64 file -          System_Environment/Daemons Apache-2.0       Forwards connections between networks
ivory-piano      0.9    -     x86_64 file -          Applications/Multimedia   GPL-3.0-or-later  Piano for the computer keyboard
jackdaw          2.1    -     noarch file -          Applications/File         MIT               Collects shiny files
kelp-crypt       1.5    -     x86_64 file -          Applications/System       GPL-2.0-or-later  Encrypts disks
lantern-view     3.0    -     x86_64 file user       Applications/Multimedia   GPL-2.0-or-later  Shows pictures
lexicon-de       2023.1 -     noarch file -          Applications/Text         GPL-2.0-or-later  German word list
lexicon-en       2023.1 -     noarch file user       Applications/Text         GPL-2.0-or-later  English word list
lexicon-pt       2023.1 -     noarch file -          Applications/Text         GPL-2.0-or-later  Portuguese word list
libgranite       1.4    1.5   x86_64 http user       System_Environment/Libraries LGPL-2.1-or-later Data structures for large files
libheather       0.9.8  -     x86_64 file user       System_Environment/Libraries MIT            Colour conversion
libkestrel       7.1    -     x86_64 file user       System_Environment/Libraries LGPL-2.1-or-later Event loop
libpumice        2.2    -     x86_64 file user       System_Environment/Libraries BSD-3-Clause   Lossless compression
libsorrel        1.0    -     x86_64 file -          System_Environment/Libraries MIT            Text shaping
libteasel        3.3    -     x86_64 file -          System_Environment/Libraries Zlib           Sound mixing
lichen-mon       1.2    -     noarch file -          Applications/System       MIT               Slow but thorough disk checks
loupe            45.0   -     x86_64 http -          Applications/System       GPL-3.0-or-later  Magnifies a part of the screen
magpie-ocr       5.3    -     x86_64 http -          Applications/Multimedia   Apache-2.0        Recognises text in scanned pages
mangrove-doc     1.0    -     noarch http -          Documentation             CC-BY-4.0         Handbook of the Larkspur system
meridian-tz      2023c  2023d noarch http user       System_Environment/Base   CC0-1.0           Time zone tables
millrace         0.11   -     x86_64 http -          System_Environment/Daemons MPL-2.0          Message queue
moth-lamp        1.0    -     noarch http -          Amusements/Graphics       MIT               Moths around the pointer
nettle-scan      7.9    -     x86_64 http -          Applications/Internet     GPL-2.0-or-later  Explores networks
nimbus-sync      2.0    -     x86_64 http -          Applications/Internet     AGPL-3.0-only     Keeps directories the same on several machines
oarlock          1.1    -     noarch http -          System_Environment/Base   MIT               Keeps two programs in step
ocarina-midi     0.8    -     x86_64 http -          Applications/Multimedia   GPL-2.0-or-later  Sequencer
orrery           3.7    -     x86_64 http -          Amusements/Games          GPL-2.0-or-later  Moving model of the planets
paddock          1.0    -     x86_64 http -          System_Environment/Base   LGPL-2.1-or-later Fences programs off from each other
pantograph       2.9    -     x86_64 http -          Applications/Publishing   GPL-2.0-or-later  Copies drawings to scale
pebble-go        1.4    -     x86_64 http -          Amusements/Games          GPL-3.0-or-later  Board game with black and white stones
pergola          6.1    -     x86_64 http -          User_Interface/Desktops   GPL-2.0-or-later  Window manager with tiles
pewter-print     2.4    -     x86_64 http user       System_Environment/Daemons Apache-2.0       Print server
plover-type      4.0    -     noarch http -          Applications/Editors      GPL-2.0-or-later  Teaches touch typing
quarry-dig       1.3    -     x86_64 http -          Applications/File         MIT               Restores deleted files
rookery          0.4    -     noarch http -          Applications/Communications MIT             Lists who is on line
saltbox-cfg      3.6    -     noarch http -          Applications/System       Apache-2.0        Configures many machines alike
sextant          1.0    -     x86_64 http -          Applications/Engineering  GPL-2.0-or-later  Finds your place on the map
sluice-fw        1.8    1.9   x86_64 http user       System_Environment/Base   GPL-2.0-only      Packet filter
starling-tts     0.6    -     x86_64 http -          Applications/Multimedia   GPL-3.0-or-later  Reads texts aloud
sundial-widget   1.2    -     noarch http -          User_Interface/Desktops   MIT               Clock with a moving shadow
tapestry-web     2.0    -     noarch http -          Development/Libraries     MIT               Framework for web pages
thimble          0.1    -     noarch http -          Applications/System       MIT               Protects fingers from needles
turnstile        5.1    -     x86_64 http -          System_Environment/Daemons GPL-2.0-or-later Access control
vellum-pdf       1.7    -     x86_64 http -          Applications/Publishing   GPL-2.0-or-later  Joins and splits page documents
wattle-theme     2.0    -     noarch http -          User_Interface/Desktops   LGPL-2.1-or-later Dark desktop theme
weir-limit       1.0    -     x86_64 http -          Applications/Internet     MIT               Limits the rate of transfers
yarrow-rng       1.2    -     x86_64 disabled -      System_Environment/Base   BSD-3-Clause      Gathers randomness
zephyr-fan       0.9    -     x86_64 disabled -      System_Environment/Base   GPL-2.0-only      Controls fans
zither           0.3    -     noarch disabled -      Amusements/Games          MIT               Plucks strings
"""

_DAY = datetime.date

CHANGELOGS = {
    "first": [
        (_DAY(2023, 9, 12), "Ada Winterbourne <ada@larkspur.example> - 9-1",
         "- Build for Larkspur 9\n- Use the system-wide compiler flags"),
        (_DAY(2023, 3, 2), "Jorge Peñalver <jorge@larkspur.example> - 8.4-2",
         "- Fix the build on i686 (#1042)\n- Drop a patch that was accepted upstream"),
        (_DAY(2022, 11, 30), "Ada Winterbourne <ada@larkspur.example> - 8.4-1", "- Initial package"),
    ],
    "update": [
        (_DAY(2024, 2, 20), "Мария Орлова <maria@larkspur.example> - 9-2",
         "- New version\n- Closes the security hole LSA-2024-017: a crafted file\n  could overwrite memory"),
        (_DAY(2023, 9, 12), "Ada Winterbourne <ada@larkspur.example> - 9-1",
         "- Build for Larkspur 9\n- Use the system-wide compiler flags"),
        (_DAY(2022, 11, 30), "Ada Winterbourne <ada@larkspur.example> - 8.4-1", "- Initial package"),
    ],
    "unusual": [
        (_DAY(2023, 12, 24), "高橋 花子 <hanako@larkspur.example> - 3-1", "- 翻訳を更新\n- " + MARKUP),
        (_DAY(2023, 10, 1), "Mallory <i>Slant</i> <mallory@larkspur.example> - 2-1",
         "- 100% of &lt;entities&gt; are kept as they are\n- A line that is much longer than the others, because "
         "its author thought that a change log is a good place to tell the whole story of a fault, from the "
         "first report over all the wrong leads to the one character that was missing"),
        (_DAY(2023, 1, 1), "Ada Winterbourne <ada@larkspur.example> - 1-1", "- Initial package"),
    ],
}


def _noise(name, size):
    """Random bytes that cannot be compressed. Each run has the same bytes."""
    return random.Random(name).getrandbits(8 * size).to_bytes(size, "little")


def _plain_packages():
    packages = []
    for line in _PLAIN.strip().split("\n"):
        name, version, newer, arch, repo, state, group, licence, summary = line.split(None, 8)
        fields = {
            "arch": arch, "group": group.replace("_", " "), "license": licence,
            "url": "https://larkspur.example/projects/" + name,
            "description": "%s.\n\nThis package is part of the Larkspur Linux distribution. Reports of faults and "
                           "requests go to the address given as the packager." % summary}
        packages.append(
            Package(name, version, summary, repo=repo, state=None if state == "-" else state, **fields))
        if newer != "-":
            packages.append(
                Package(name, newer, summary, repo="updates", release="2", changelog="update", **fields))
    return packages


def _base_packages(busybox):
    """The base system: directories, accounts, the release and a shell for the scriptlets."""
    applets = subprocess.run([busybox, "--list"], stdout=subprocess.PIPE, check=True).stdout.decode().split()
    with open(busybox, "rb") as stream:
        files = {"/bin/busybox": stream.read()}
    files.update(("/bin/" + applet, ("->", "busybox")) for applet in applets if applet != "busybox")
    directories = (
        "bin", "boot", "dev", "etc", "etc/pki/rpm-gpg", "etc/yum.repos.d", "home", "opt", "proc", "root", "sys",
        "tmp", "usr/bin", "usr/lib", "usr/lib64", "usr/share", "var/cache", "var/lib", "var/log", "var/tmp")
    release = (
        'NAME="Larkspur Linux"\nID=larkspur\nVERSION_ID=9\nPRETTY_NAME="Larkspur Linux 9 (Delphine)"\n'
        'HOME_URL="https://larkspur.example/"\n')
    base = "System Environment/Base"
    return [
        Package("filesystem", "3.18", "The basic directory layout", state="user", group=base,
                files={"/%s/" % name: "" for name in directories}),
        Package("setup", "2.14", "Accounts and names the system starts with", state="user", group=base,
                arch="noarch", relations=[("Requires(pre)", "filesystem")],
                files={"/etc/passwd": "root:x:0:0:root:/root:/bin/sh\nnobody:x:65534:65534:nobody:/:/bin/false\n",
                       "/etc/group": "root:x:0:\nnobody:x:65534:\n",
                       "/etc/motd": "Welcome to Larkspur Linux 9\n"}),
        Package("larkspur-release", "9", "Larkspur Linux release files", state="user", group=base, arch="noarch",
                relations=[("Provides", "system-release = 9"), ("Provides", "system-release(releasever) = 9"),
                           ("Provides", "system-release(releasever_minor) = 4")],
                files={"/etc/os-release": release, "/etc/system-release": "Larkspur Linux release 9 (Delphine)\n"}),
        Package("busybox", "1.35.0", "Many system commands in one executable", state="user", group=base,
                license="GPL-2.0-only", relations=[("Requires(pre)", "setup")], files=files),
    ]


def _kernels():
    """A kernel in three versions: two versions are installed, and a third version is available."""
    return [
        Package("kernel", version, "The Linux kernel", group="System Environment/Kernel", license="GPL-2.0-only",
                state=state, repo=repo, changelog=changelog, relations=[("Provides", "installonlypkg(kernel)")],
                files={"/boot/vmlinuz-%s" % version: "kernel %s\n" % version,
                       "/lib/modules/%s/modules.order" % version: "kernel/fs/basalt.ko\n"})
        for version, state, repo, changelog in (
            ("6.1.20", "user", "http", "first"), ("6.1.25", "user", "http", "first"),
            ("6.1.31", None, "updates", "update"))]


def _architectures():
    """Names that exist for two architectures."""
    packages = []
    for arch in ("x86_64", "i686"):
        library = {"arch": arch, "group": "System Environment/Libraries", "license": "LGPL-2.1-or-later"}
        packages += [
            # Installed for both architectures, with updates for both.
            Package("libcairn", "2.1", "Routines for stacking things", state="user", **library),
            Package("libcairn", "2.2", "Routines for stacking things", repo="updates", changelog="update",
                    **library),
            # Available for both architectures, but not installed.
            Package("libmoss", "0.5", "Soft data structures", **library),
            # Installed for x86_64 only.
            Package("libslate", "4.0", "Writes and wipes", state="user" if arch == "x86_64" else None, **library),
        ]
    return packages


def _versions():
    """Epochs, and updates with complications."""
    return [
        Package("quillbase", "2.4", "Data base of pens", epoch=1, state="user", license="MIT"),
        Package("quillbase", "1.0", "Data base of pens", epoch=2, repo="updates", changelog="update", license="MIT"),
        Package("epochal", "0.1", "Counts the ages", epoch=3, arch="noarch"),
        # The update of tidewatch needs a library that no package provides.
        Package("tidewatch", "1.0", "Tide tables", state="user", arch="noarch"),
        Package("tidewatch", "2.0", "Tide tables", repo="updates", changelog="update", arch="noarch",
                relations=[("Requires", "libtide.so.9()(64bit)")]),
        Package("moonbridge", "1.0", "Crosses to the dark side", arch="noarch",
                relations=[("Requires", "libtide.so.9()(64bit)"), ("Requires", "gravity >= 6")]),
        # The newer of these two packages replaces the older package.
        Package("oldpost", "1.8", "Mail transport", state="user", group="System Environment/Daemons"),
        Package("newpost", "2.0", "Mail transport, rewritten", repo="updates", changelog="update",
                group="System Environment/Daemons",
                relations=[("Obsoletes", "oldpost < 2"), ("Provides", "oldpost = 2.0")]),
    ]


def _relations():
    """Dependencies of all kinds."""
    return [
        # libtrellis is installed only for trellis-editor and is removed with it.
        Package("trellis-editor", "1.2", "Text editor", state="user", group="Applications/Editors",
                relations=[("Requires", "libtrellis >= 1")]),
        Package("libtrellis", "1.2", "Text buffers", state="dependency", group="System Environment/Libraries"),
        Package("orchard", "3.0", "Photo collection", group="Applications/Multimedia",
                relations=[("Requires", "libbough >= 1.1"), ("Requires(pre)", "setup"),
                           ("Requires", "(orchard-lang if lexicon-en)"), ("Recommends", "orchard-plugins"),
                           ("Suggests", "orchard-samples")]),
        Package("libbough", "1.1", "Branching storage", relations=[("Requires", "libtwig")],
                group="System Environment/Libraries"),
        Package("libtwig", "1.0", "Small parts of branching storage", group="System Environment/Libraries"),
        Package("orchard-plugins", "3.0", "Filters for orchard", arch="noarch",
                relations=[("Enhances", "orchard")]),
        Package("orchard-samples", "3.0", "Pictures to play with", arch="noarch"),
        Package("orchard-lang", "3.0", "Translations of orchard", arch="noarch"),
        Package("orchard-thumbnails", "3.0", "Previews of orchard's pictures in file lists", arch="noarch",
                relations=[("Supplements", "orchard"), ("Requires", "libtwig")]),
        Package("tern-mta", "1.0", "Mail transport for the seashore", arch="noarch",
                relations=[("Conflicts", "gull-mta"), ("Provides", "mail-transport")]),
        Package("gull-mta", "1.0", "Mail transport for cliffs", arch="noarch",
                relations=[("Conflicts", "tern-mta"), ("Provides", "mail-transport")]),
        # This package conflicts with an installed package.
        Package("sandstone", "1.0", "Soft replacement of granite", arch="noarch",
                relations=[("Conflicts", "libgranite")]),
    ]


def _talk(name, section):
    return "echo '%s: %s to standard output'\necho '%s: %s to standard error' >&2" % (
        name, section, name, section)


def _flood(stream, redirection):
    """Exactly 300,000 bytes: 6000 lines of 50 bytes."""
    program = r'BEGIN { for (i = 1; i <= 6000; i++) printf "loudhailer: %s line %%05d of 06000 %s\n", i }' % (
        stream, "." * (49 - len("loudhailer: %s line 00000 of 06000 " % stream)))
    return "awk '%s'%s" % (program, redirection)


def _scriptlets():
    sections = ("pre", "post", "preun", "postun")
    talk = {section: _talk("chatterbox", section) for section in sections}
    return [
        # chatterbox is not installed; parrot is installed and has an update. When these packages are installed,
        # updated and removed, their scriptlets print texts.
        Package("chatterbox", "1.0", "Tells what it is doing", arch="noarch", scripts=talk),
        Package("parrot", "1.0", "Repeats what it is doing", arch="noarch", state="user",
                scripts={section: _talk("parrot-1.0", section) for section in sections}),
        Package("parrot", "1.1", "Repeats what it is doing", arch="noarch", repo="updates", changelog="update",
                scripts={section: _talk("parrot-1.1", section) for section in sections}),
        Package("brokenlatch", "1.0", "Cannot be installed: its %pre fails", arch="noarch",
                scripts={"pre": "echo 'brokenlatch: the latch is stuck' >&2\nexit 1"}),
        Package("limpgate", "1.0", "Is installed although its %post fails", arch="noarch",
                scripts={"post": "echo 'limpgate: the hinge is gone' >&2\nexit 3"}),
        Package("stickyburr", "1.0", "Cannot be removed: its %preun fails", arch="noarch", state="user",
                scripts={"preun": "echo 'stickyburr: it does not come off' >&2\nexit 1"}),
        Package("loudhailer", "1.0", "Says 300,000 bytes to each stream", arch="noarch",
                scripts={"post": _flood("stdout", "") + "\n" + _flood("stderr", " >&2")}),
        Package("halfline", "1.0", "Speaks without a line feed at the end", arch="noarch",
                scripts={"post": "printf 'halfline: first line\\nhalfline: no line feed after this'",
                         "preun": "printf 'halfline: nor after this' >&2"}),
        Package("slowpoke", "1.0", "Takes three seconds to install", arch="noarch",
                scripts={"post": "for i in 1 2 3; do echo \"slowpoke: step $i\"; sleep 1; done"}),
        # If the file of _wait_while() is missing, the scriptlet continues at once.
        Package("doorkeeper", "1.0", "Lets nobody in", arch="noarch", state="user",
                scripts={"postun": "echo 'doorkeeper-1.0: gone'"}),
        Package("doorkeeper", "1.1", "Installs for as long as there is /tmp/doorkeeper", arch="noarch",
                repo="updates", changelog="update", scripts={"post": _wait_while("doorkeeper")}),
        Package("lastword", "1.0", "Waits after the transaction for as long as there is /tmp/lastword", arch="noarch",
                scripts={"posttrans": _wait_while("lastword")}),
        Package("nightwatch", "1.0", "Leaves a process behind for as long as there is /tmp/nightwatch",
                arch="noarch", scripts={"post": "(%s) &" % _wait_while("nightwatch")}),
        Package("glutton", "1.0", "Takes two megabytes after it has waited as long as there is /tmp/glutton",
                arch="noarch", scripts={"pre": _wait_while("glutton")},
                files={"/usr/share/glutton/noise.bin": _noise("glutton", 2 << 20)}),
    ]


def _wait_while(name):
    """Shell commands that wait while /tmp/NAME exists, for a limited time. During the wait /tmp/NAME.waiting exists."""
    return ("echo '%(name)s: begin'\n"
            "i=0\n"
            "while [ -e /tmp/%(name)s ] && [ $i -lt 1200 ]; do\n"
            "    : > /tmp/%(name)s.waiting\n"
            "    sleep 0.1\n"
            "    i=$((i + 1))\n"
            "done\n"
            "rm -f /tmp/%(name)s.waiting\n"
            "echo '%(name)s: end'" % {"name": name})


def _conflicting_files():
    def palette(name):
        return {"/usr/share/inkwell/palette.conf": "palette of %s\n" % name, "/usr/bin/" + name: "#!/bin/sh\n"}

    return [
        Package("inkwell-classic", "1.0", "Writing program with the colours of old", arch="noarch",
                files=palette("inkwell-classic")),
        Package("inkwell-modern", "1.0", "Writing program with fresh colours", arch="noarch",
                files=palette("inkwell-modern")),
        # This package conflicts with a file of the installed package busybox.
        Package("vanity-shell", "1.0", "A shell that wants to be the only one", arch="noarch",
                files={"/bin/sh": "#!/bin/busybox\n"}),
    ]


def _texts():
    """Texts that are difficult to display."""
    paragraph = (
        "Paragraph %d. Whoever reads this far will find that a description may be as long as its author likes, that "
        "no one has ever asked for it to be shorter, and that a window which shows it needs a scroll bar.")
    return [
        Package("ryabina", "1.0", "Графический редактор для художников", arch="noarch", changelog="unusual",
                description="Рябина — простой редактор растровых изображений.\n\nПоддерживает слои и кисти."),
        Package("sakura-ime", "2.1", "日本語入力システム", changelog="unusual",
                description="桜は日本語の入力方法です。\n\nかな漢字変換と予測入力に対応しています。"),
        Package("hanzi-fonts", "1.4", "中文字体集合", arch="noarch", description="包含宋体、黑体和楷体。"),
        Package("hangul-type", "0.9", "한글 타자 연습", arch="noarch", description="한글 자판을 익히는 프로그램입니다."),
        Package("qamus", "1.0", "قاموس عربي للطرفية", arch="noarch",
                description="برنامج قاموس يعمل دون اتصال بالشبكة (offline) مع 20000 كلمة."),
        Package("elaia", "3.0", "Λεξικό της ελληνικής γλώσσας", arch="noarch", state="user",
                description="Ένα λεξικό για το τερματικό.\n\nΠεριλαμβάνει συνώνυμα."),
        Package("rimon", "1.1", "לוח שנה עברי", arch="noarch", description="לוח שנה עם חגים ומועדים (version 1.1)."),
        Package("emoji-rain", "1.0", "Rain of 🌧️ and 🌈 over the desktop", arch="noarch"),
        Package("tagsoup", "1.0", "Shows " + MARKUP, arch="noarch", changelog="unusual",
                description="Literal markup: %s\n\n<h1>Not a heading</h1> &amp; not an ampersand" % MARKUP,
                url="https://larkspur.example/?a=<b>1</b>&c=\"2\"", vendor="Angle <b>Brackets</b> & Sons",
                packager="<script>alert(2)</script> <tags@larkspur.example>", license="MIT & <i>others</i>",
                group="<u>Under</u>/Lined"),
        Package("tagsoup-installed", "1.0", "Shows <u>underlined</u> & installed", arch="noarch", state="user",
                changelog="unusual", description="Literal markup: " + MARKUP),
        Package("longwinded", "1.0", "Has a very long description", arch="noarch",
                description="\n\n".join(paragraph % number for number in range(1, 401))),
        Package("longest-name-that-a-patient-packager-could-come-up-with-on-a-rainy-afternoon-in-november", "1.0",
                "Has a very long name, and a summary that does not want to end either, so that columns have "
                "something to cut off or to wrap", arch="noarch"),
        Package("gallivant", "1.0", "May be installed anywhere", arch="noarch", prefix="/opt/gallivant",
                vendor="Wander Works", packager="Gil Vant <gil@larkspur.example>",
                url="https://larkspur.example/gallivant", license="Artistic-2.0", state="user",
                files={"/opt/gallivant/bin/gallivant": "#!/bin/sh\necho \"I am at $0\"\n"}),
        Package("manyfiles", "1.0", "Owns two thousand files", arch="noarch",
                files={"/usr/share/manyfiles/%02d/leaf %04d.txt" % (number // 100, number): "%d\n" % number
                       for number in range(2000)}),
    ]


def _downloads():
    """Packages with a long download: one large package, and eight packages of several hundred KB."""
    packages = [
        Package("gargantua", "1.0", "Six megabytes of noise", arch="noarch",
                files={"/usr/share/gargantua/noise.bin": _noise("gargantua", 6 << 20)})]
    for number in range(1, 9):
        name = "tilepack-%d" % number
        size = 200000 + 40000 * number
        packages.append(
            Package(name, "1.0", "Map tiles, sheet %d of 8" % number, arch="noarch",
                    files={"/usr/share/tiles/sheet-%d.bin" % number: _noise(name, size)}))
    return packages


def _suites():
    """A suite is a package of the rpm group "Suite" that requires its members."""
    def suite(name, version, summary, members, **fields):
        return Package(name, version, summary, arch="noarch", group="Suite", files={},
                       relations=[("Requires", member) for member in members], **fields)

    office = ("ledger-calc", "scribe-writer", "lectern-slides")
    return [
        suite("vyre-office-suite", "1.0", "Everything for the desk", office),
        suite("vyre-network-suite", "1.0", "Tools of the network", ("cormorant-fetch", "flint-ssh"), state="user"),
        suite("vyre-network-suite", "1.1", "Tools of the network", ("cormorant-fetch", "flint-ssh", "nettle-scan"),
              repo="updates", changelog="update"),
        suite("vyre-games-suite", "2.0", "Games for the evening", ("pebble-go", "hedgerow", "orrery")),
        Package("ledger-calc", "2.0", "Spreadsheet", group="Applications/Productivity"),
        Package("scribe-writer", "2.0", "Word processor", group="Applications/Productivity"),
        Package("lectern-slides", "2.0", "Presentations", group="Applications/Productivity"),
    ]


def _group_members():
    """Packages that exist only because the groups in GROUPS need members."""
    return [
        # Members of the group that is installed according to the history.
        Package("easel", "1.1", "Holds canvases", arch="noarch", state="group"),
        Package("palette-knife", "1.0", "Mixes colours", arch="noarch", state="group"),
        Package("varnish-coat", "1.0", "Finishes pictures", arch="noarch"),
        # Mandatory member of a group that is not installed. The package is installed and has an update.
        Package("loomctl", "1.0", "Controls looms", state="user"),
        Package("loomctl", "1.1", "Controls looms", repo="updates", changelog="update"),
        Package("shuttle", "1.0", "Carries threads"),
        # Conditional members of a group: dnf installs each of them with the group only if another package is installed,
        # which the group's definition names as the condition.
        Package("scribe-lexicon", "1.0", "Word lists for scribe-writer", arch="noarch"),
        Package("scribe-fonts", "1.0", "Typefaces for scribe-writer", arch="noarch"),
    ]


def _other_repositories():
    return [
        Package("hidden-gem", "1.0", "Found only by those who enable its repository", repo="disabled",
                arch="noarch"),
        Package("abacus-cli", "4.0", "Exact arithmetic on the command line", repo="disabled", release="0.beta"),
        Package("wax-tablet", "1.0", "Signed with the key of its repository", repo="signed", arch="noarch",
                signature="trusted"),
        Package("wax-candle", "1.0", "Also signed with the key of its repository", repo="signed", arch="noarch",
                signature="trusted"),
        Package("wax-polish", "2.0", "Signed, for x86_64", repo="signed", signature="trusted"),
        Package("wax-forged", "1.0", "Signed with a key no one knows", repo="signed", arch="noarch",
                signature="unknown"),
        Package("wax-blank", "1.0", "Not signed at all", repo="signed", arch="noarch"),
    ]


def packages(busybox="/bin/busybox"):
    """All packages. busybox: the path of a statically linked busybox on this system."""
    if not os.path.exists(busybox):
        raise RuntimeError("%s does not exist: is the package busybox-static installed?" % busybox)
    return (
        _base_packages(busybox) + _kernels() + _architectures() + _versions() + _relations() + _scriptlets()
        + _conflicting_files() + _texts() + _downloads() + _suites() + _group_members() + _other_repositories()
        + _plain_packages())


class Group(object):
    """A comps group. members: kind -> names; a conditional member is a pair of name and condition."""

    def __init__(self, identifier, name, description, members, visible=True, installed=False):
        self.identifier = identifier
        self.name = name
        self.description = description
        self.members = members
        self.visible = visible
        self.installed = installed


GROUPS = [
    Group("core", "Core", "The smallest system that works", {
        "mandatory": ["filesystem", "setup", "busybox", "larkspur-release"]}, visible=False),
    Group("office", "Office & <b>Productivity</b>", "Letters, sheets & slides", {
        "mandatory": ["scribe-writer"],
        "default": ["ledger-calc", "almanac"],
        "optional": ["lectern-slides", "corkboard"],
        "conditional": [("scribe-lexicon", "lexicon-en"), ("scribe-fonts", "amberfont-serif")]}),
    # Some members are installed, but the group is not.
    Group("network-tools", "Network Tools", "Programs that look at networks", {
        "mandatory": ["cormorant-fetch", "nettle-scan"],
        "default": ["flint-ssh", "weir-limit"]}),
    Group("arts", "Arts", "Painting and drawing", {
        "mandatory": ["easel"], "default": ["palette-knife"], "optional": ["varnish-coat", "brushwork"]},
          installed=True),
    Group("weaving", "Weaving", "Textile crafts", {"mandatory": ["loomctl"], "default": ["shuttle"]}),
    Group("games", "Games", "Time well spent", {"mandatory": ["pebble-go"], "default": ["hedgerow", "orrery"]}),
    Group("seafaring", "Seafaring", "For those at sea", {
        "mandatory": ["sextant"], "default": ["halyard", "oarlock"], "optional": ["chandlery", "tern-mta"]}),
    Group("international", "Международные программы", "Programs in many scripts", {
        "mandatory": ["ryabina", "sakura-ime"], "optional": ["qamus", "elaia", "rimon", "hanzi-fonts"]}),
    # One member does not exist in any repository.
    Group("ghosts", "Ghosts", "Not all of them are there", {
        "mandatory": ["lantern-view", "no-such-package"]}),
]
