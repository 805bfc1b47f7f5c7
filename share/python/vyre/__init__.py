"""The parts of YumIO.py, the script of the program: it imports them, and keeps only what the program calls.

Nothing else imports this package. A module imports only modules that do not import it in turn. All of it runs on one
thread at a time: the graphical one at the start, a worker thread for every long operation.
"""
