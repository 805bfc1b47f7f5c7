# SPDX-License-Identifier: GPL-2.0-or-later
"""The program's functions and values for the script, and the names of dnf that the script replaces.

The program registers the yumIOC module, and sets further names in the globals of YumIO.py before it runs that file.
YumIO.py passes these names on to this module, and the other modules use them only from here. Call the functions on the
thread that holds the interpreter's lock. If the program leaves out a function, the script works without it.
"""

import yumIOC  # noqa: F401  (the other modules import it from here)

# VYRE's own texts, and their translations.
translations = {}

# Adds lines before the listing that the user is going to confirm.
addBeforeListing = None
# Adds lines to the end of that listing.
addToListing = None
# Shows the present activity on the bar of the current step.
changeActivity = None
# Finds the error of a metadata document.
faultOfMetadata = None
# Asks whether to go on without a failing repository.
goOnWithout = None
# Hides the passwords in a text.
hideSecrets = None
# Shows what happens with a repository.
showReading = None
# Whether the user has asked the operation to stop. If the argument is True, later requests are refused.
stopWanted = None
# Shows that the script waits for a lock; returns whether to wait longer.
waitForLock = None

OFFERED = ('translations', 'addBeforeListing', 'addToListing', 'changeActivity', 'faultOfMetadata', 'goOnWithout',
           'hideSecrets', 'showReading', 'stopWanted', 'waitForLock')


def receive(offered):
    """Take over the program's functions and values from a dictionary. It may also contain other names."""
    for name in OFFERED:
        if name in offered:
            globals()[name] = offered[name]


def tr(text):
    """Returns the translation of one of VYRE's own texts."""
    return translations.get(text, text)


def withoutSecrets(text):
    """The text with its passwords hidden."""
    return text if hideSecrets is None else hideSecrets(text)


# Replacements in dnf ----------------------------------------------------------------------------------------

MISSING = object()

# The replaced names, in the order of their replacement: the class or module, the name, and the former value.
replaced = []


def replace(place, name, value):
    """Replace the value of a name in one of dnf's classes or modules, until restore()."""
    replaced.append((place, name, vars(place).get(name, MISSING)))
    setattr(place, name, value)


def restore():
    """Restore the replaced names, so that the next run of the script starts with dnf's own classes."""
    while replaced:
        place, name, value = replaced.pop()
        if value is not MISSING:
            setattr(place, name, value)
        elif name in vars(place):
            delattr(place, name)
