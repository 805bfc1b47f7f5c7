# SPDX-License-Identifier: GPL-2.0-or-later
"""The modules of the script. YumIO.py has only the class whose methods the program calls.

Only YumIO.py imports this package. No two modules import each other, neither directly nor indirectly. Only one thread
at a time runs the script. During a long operation, such as the start, this is a worker. Between long operations, and
when VYRE ends, it is the graphical thread.
"""
