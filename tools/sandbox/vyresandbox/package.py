# SPDX-License-Identifier: GPL-2.0-or-later
"""One rpm of the sandbox's distribution."""


class Package(object):
    """The description of one rpm, and its use in the sandbox.

    repo       the repository that contains it: "http", "file", "updates", "disabled" or "signed"
    state      "user" if it is installed by name, "dependency" if it is installed because another package needs it,
               "group" if it is installed with a group, None if it is only available
    files      path -> text or bytes; a path that ends in "/" is a directory, a value ("->", target) is a symbolic link
    relations  list of (tag, text): ("Requires", "libcairn >= 2")
    scripts    section -> body: {"pre": "echo hello"}
    changelog  name of one of the catalogue's change logs
    signature  for the signed repository: "trusted", "unknown" or None
    """

    def __init__(self, name, version, summary, **fields):
        self.name = name
        self.version = version
        self.summary = summary
        self.release = "1"
        self.epoch = None
        self.arch = "x86_64"
        self.description = None
        self.group = "Unspecified"
        self.license = "GPL-2.0-or-later"
        self.url = None
        self.vendor = None
        self.packager = None
        self.prefix = None
        self.repo = "http"
        self.state = None
        self.files = None
        self.relations = []
        self.scripts = {}
        self.changelog = "first"
        self.signature = None
        for field, value in fields.items():
            if not hasattr(self, field):
                raise TypeError("a package has no %s" % field)
            setattr(self, field, value)
        if self.files is None:
            self.files = self._usual_files()
        if self.description is None:
            self.description = self.summary + "."

    def _usual_files(self):
        readme = "%s %s\n%s\n" % (self.name, self.version, self.summary)
        files = {"/usr/share/doc/%s/README" % self.name: readme}
        if self.name.startswith("lib"):
            directory = "/usr/lib64" if self.arch == "x86_64" else "/usr/lib"
            files = {"%s/%s.so.%s" % (directory, self.name, self.version): readme}
        elif self.arch != "noarch":
            files["/usr/bin/" + self.name] = "#!/bin/sh\necho '%s %s'\n" % (self.name, self.version)
        return files

    @property
    def evr(self):
        epoch = "" if self.epoch is None else "%s:" % self.epoch
        return "%s%s-%s" % (epoch, self.version, self.release)

    @property
    def nevra(self):
        """Name, version and architecture in dnf's format, which contains the epoch only if it is not zero."""
        return "%s-%s.%s" % (self.name, self.evr, self.arch)

    @property
    def file_name(self):
        return "%s-%s-%s.%s.rpm" % (self.name, self.version, self.release, self.arch)
