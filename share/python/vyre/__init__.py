# SPDX-License-Identifier: GPL-2.0-or-later
"""The modules of the script. YumIO.py has only the class whose methods the program calls.

Only YumIO.py imports this package. A module imports only modules that do not import it, also indirectly. One thread at
a time runs the script: the graphical one at the start, at a reset and at the end, a worker for every long operation.
"""
