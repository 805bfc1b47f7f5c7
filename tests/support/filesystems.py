# SPDX-License-Identifier: GPL-2.0-or-later
"""Small file systems for tests of full disks. Only this process sees them."""
import ctypes
import os
import shutil
import subprocess
import tempfile
import unittest

_CLONE_NEWNS = 0x00020000  # from linux/sched.h


def rootIsMountPoint():
    with open('/proc/self/mountinfo') as mounts:
        return any(line.split()[4] == '/' for line in mounts)


def isolate():
    """Give this process and its children a mount name space of their own. Other processes do not see the mounts in this
    name space. The mounts disappear when this process and its children end.
    """
    if not rootIsMountPoint():
        raise unittest.SkipTest('"/" is no mount point here, as in a bare chroot: other processes would see the mounts')
    library = ctypes.CDLL(None, use_errno=True)
    if library.unshare(_CLONE_NEWNS) != 0:
        raise OSError(ctypes.get_errno(), 'the process gets no separate mount name space')
    subprocess.run(['mount', '--make-rprivate', '/'], check=True)


def mount_small(path, kilobytes):
    """Mount a file system of this size on a directory, and copy the directory's contents to it. Make the directory if
    it is missing.
    """
    os.makedirs(path, exist_ok=True)
    saved = tempfile.mkdtemp()
    try:
        subprocess.run(['cp', '-a', path + '/.', saved], check=True)
        subprocess.run(['mount', '-t', 'tmpfs', '-o', 'mode=755,size={}k'.format(kilobytes), 'tmpfs', path], check=True)
        subprocess.run(['cp', '-a', saved + '/.', path], check=True)
    finally:
        shutil.rmtree(saved)


def resize(path, kilobytes):
    """Resize a file system of mount_small() to its used space plus this number of kilobytes."""
    found = os.statvfs(path)
    used = (found.f_blocks - found.f_bfree) * found.f_frsize // 1024
    # The size 0 would mean "no limit".
    subprocess.run(['mount', '-o', 'remount,size={}k'.format(max(used + kilobytes, 4)), path], check=True)


def unmount(path):
    subprocess.run(['umount', '--lazy', path], check=True)
