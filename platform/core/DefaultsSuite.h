#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/core/PropertyValue.h"

namespace platform {

// A defaults suite shared by an application group: a binary property-list file at
// ${XDG_CONFIG_HOME:-$HOME/.config}/group-containers/<suite>.plist, mode 0600.
//
// Safe to use from any thread. Writes stay in memory until synchronize(), which takes a
// cross-process lock (FileLock on "<file>.lock", waiting 5 s at most), merges what other processes
// wrote to keys this object has not changed, and replaces the file atomically (write to a
// temporary, fsync, rename). The file lists its keys in the order they were last written: the keys
// this flush writes come last, in the order of their setObject calls. A flush also removes the
// temporaries
// ("<file>.tmp-<pid>-<n>") that writers killed mid-flush left behind.
// A corrupt or unreadable file is logged once and read as empty; it is replaced at the next flush
// (a corrupt one is first kept beside it as "<file>.corrupt"). Another kind of entry at the
// file's place or the lock's (a folder, a symbolic link, which is never followed, a FIFO) is read
// as empty, and the flush sets it aside (PathRepair, one log line) and writes as usual.
// objectForKey sees this object's own writes at once, and picks up what other processes flushed
// when the file has changed.
class DefaultsSuite {
  public:
    // initWithSuiteName: opens (does not create) the suite's file and reads it.
    explicit DefaultsSuite(const std::string& suiteName);

    // setObject:forKey:; nullopt removes the key.
    void setObject(const std::optional<PropertyValue>& value, const std::string& key);
    // objectForKey:
    std::optional<PropertyValue> objectForKey(const std::string& key) const;
    // synchronize: reads what others wrote and writes this object's changes. False when they
    // could not be written (logged here; callers need not log it again).
    bool synchronize();

    const std::string& suiteName() const { return suiteName_; }
    // The file backing this suite.
    const std::string& path() const { return path_; }

    // Where the suite |suiteName| is stored for the current user; with another |extension|, a
    // file of the same group beside it.
    // A name that is empty, "." or "..", or holds "/" or control characters is stored under an
    // escaped file name inside the folder (logged), never outside it.
    static std::string pathForSuite(const std::string& suiteName,
                                    const std::string& extension = ".plist");

  private:
    // Identity of the file as last read, to notice another process's replacement cheaply.
    struct FileStamp {
        bool exists = false;
        bool regular = false;
        unsigned long long device = 0, inode = 0, size = 0;
        long long mtimeNanoseconds = 0;
        bool operator==(const FileStamp& o) const {
            return exists == o.exists && device == o.device && inode == o.inode && size == o.size &&
                   mtimeNanoseconds == o.mtimeNanoseconds;
        }
    };
    static FileStamp stampOf(const std::string& path);
    // The file as it is now, read as empty when damaged. Damage and dropped entries are logged
    // once per file (by its stamp), however often it is read. Caller holds mutex_.
    struct FileContents;
    FileContents readFileLocked(const FileStamp& stamp) const;
    // Re-reads the file when it changed since the last read; keeps this object's unsaved keys.
    // Caller holds mutex_.
    void refreshIfChangedLocked() const;
    // Removes the temporaries of this suite's file whose writer process is gone. Caller holds
    // the file lock.
    void removeTemporariesOfGoneWriters() const;

    mutable std::mutex mutex_;
    std::string suiteName_;
    std::string path_;
    mutable std::map<std::string, PropertyValue> values_;
    // Keys written here and not yet flushed, each once, in the order of their last write.
    std::vector<std::string> unsavedKeys_;
    mutable FileStamp stamp_;
    // The last file whose damage or dropped entries were logged.
    mutable FileStamp reportedStamp_;
};

}  // namespace platform
