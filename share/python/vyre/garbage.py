# SPDX-License-Identifier: GPL-2.0-or-later
"""Python's collector of unreachable cycles of objects.

dnf runs a full collection whenever it closes or fills the sack. A full collection examines all objects, and takes
0.01 s for the objects of dnf's modules alone. So the script exempts existing objects while it reads the packages. When
the program has collected the packages, it ends the exemption; see GarbageCollectorPause. If it cannot collect them, the
exemption lasts until the next collection of packages. A worker runs this module.
"""

import gc


def exemptObjects():
    """Exempt all present objects from the next collections. Python 3.6 cannot do this; there, do nothing."""
    if hasattr(gc, 'freeze'):
        gc.freeze()


def collectObjects():
    """End the exemption, and release all unreachable objects."""
    if hasattr(gc, 'unfreeze'):
        gc.unfreeze()
    gc.collect()
