# A FUSE file system for the tests: it answers every question about its files, but a read of
# stuck.bin never returns (a network mount whose server went away), and album/locked.txt cannot
# be opened. Runs in the foreground until unmounted and killed:
#   python3 unanswering_mount.py MOUNTPOINT
import errno
import stat
import sys
import threading

import fusepy as fuse

FILES = {'/stuck.bin': b'x' * 4096, '/album/ok.txt': b'readable', '/album/locked.txt': b'secret'}
FOLDERS = {'/': ['stuck.bin', 'album'], '/album': ['ok.txt', 'locked.txt']}


class UnansweringMount(fuse.Operations):
    def getattr(self, path, fh=None):
        if path in FOLDERS:
            return dict(st_mode=stat.S_IFDIR | 0o755, st_nlink=2)
        if path in FILES:
            return dict(st_mode=stat.S_IFREG | 0o644, st_nlink=1, st_size=len(FILES[path]))
        raise fuse.FuseOSError(errno.ENOENT)

    def readdir(self, path, fh):
        return ['.', '..'] + FOLDERS[path]

    def open(self, path, flags):
        if path == '/album/locked.txt':
            raise fuse.FuseOSError(errno.EACCES)
        return 0

    def read(self, path, size, offset, fh):
        if path == '/stuck.bin':
            threading.Event().wait(600)  # bounded, so that a forgotten mount still ends
            raise fuse.FuseOSError(errno.EIO)
        return FILES[path][offset:offset + size]


if __name__ == '__main__':
    fuse.FUSE(UnansweringMount(), sys.argv[1], foreground=True, direct_io=True)
