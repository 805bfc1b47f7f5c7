# SPDX-License-Identifier: GPL-2.0-or-later
"""The functions and values that the program offers the script, and the list of dnf's names that the script replaces.

The program registers the yumIOC module, and sets the names in OFFERED as globals of YumIO.py before it runs that file.
YumIO.py passes these globals on to this module, and all other modules take them from this module. A thread that calls
these functions must hold the interpreter's lock. If the program does not set a function, the script works without it.
"""

import yumIOC  # noqa: F401  (the other modules import it from here)

# VYRE's own texts, and their translations.
translations = {}

# Adds lines before the listing that the user is going to confirm.
addBeforeListing = None
# Adds lines to the end of the listing.
addToListing = None
# Shows a text about the present activity on the progress bar of the current step.
changeActivity = None
# Returns the error in a metadata document.
faultOfMetadata = None
# Asks the user whether to go on without a repository that cannot be read.
goOnWithout = None
# Hides the passwords in a text.
hideSecrets = None
# Adds a warning to the log. If the program does not set this function, the script logs warnings as errors.
logWarning = None
# Shows a text about the present activity for a repository on the progress bar.
showReading = None
# Returns whether the user has asked VYRE to stop the operation. If the argument is True and the user has not asked,
# VYRE refuses all requests to stop from now on.
stopWanted = None
# Shows that the script waits for a lock; returns False if the user ends the wait.
waitForLock = None

OFFERED = ('translations', 'addBeforeListing', 'addToListing', 'changeActivity', 'faultOfMetadata', 'goOnWithout',
           'hideSecrets', 'logWarning', 'showReading', 'stopWanted', 'waitForLock')


def receive(offered):
    """Set the names in OFFERED from a dictionary, which may also contain other names."""
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

# For each replaced name, in the order of the replacements: the class or module, the name, and the former value.
replaced = []


def replace(place, name, value):
    """Replace the value of a name in one of dnf's classes or modules, until restore()."""
    replaced.append((place, name, vars(place).get(name, MISSING)))
    setattr(place, name, value)


def restore():
    """Restore the values of all replaced names, so that the next run of the script finds dnf's own classes."""
    while replaced:
        place, name, value = replaced.pop()
        if value is not MISSING:
            setattr(place, name, value)
        elif name in vars(place):
            delattr(place, name)
