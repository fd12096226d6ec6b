#pragma once

#include <chrono>
#include <memory>
#include <string>

namespace platform {

// An exclusive lock shared by processes (and by objects within one): an flock on a lock file,
// held while the object lives. The kernel drops an flock the moment its holder dies, so a killed
// holder never leaves it taken.
//
// Not QLockFile: its lock is a file that outlives a killed holder, judged stale by PID and age,
// and a waiter polls it about every 100 ms (tried: a lock released after 20 ms was taken at
// 130-180 ms). A waiter here polls from 1 ms, backing off to 10 ms.
class FileLock {
  public:
    // Takes the lock on the file at |path| (made 0600, in a folder made 0700, when missing),
    // waiting up to |wait| while another holder has it. Anything but a regular file at |path| (a
    // folder, a symbolic link, a FIFO) is set aside first (PathRepair), never followed or opened
    // for the lock. nullptr when the lock was not taken; |error| then says why.
    static std::unique_ptr<FileLock> acquire(const std::string& path,
                                             std::chrono::milliseconds wait,
                                             std::string& error);

    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

  private:
    explicit FileLock(int fd) : fd_(fd) {}
    int fd_;
};

}  // namespace platform
