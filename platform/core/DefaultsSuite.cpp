#include "platform/core/DefaultsSuite.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>

#include "platform/core/FileLock.h"
#include "platform/core/Log.h"
#include "platform/core/PathRepair.h"
#include "platform/core/Paths.h"
#include "platform/core/ProcessStatus.h"
#include "platform/core/PropertyListCodec.h"

namespace platform {

namespace {

const Logger kLog("DefaultsSuite: ");

// A writer that holds the lock longer than this is stuck; we give up rather than hang.
constexpr auto kLockWait = std::chrono::seconds(5);

// The suite name as one file name: "/", "%" and control characters are %-escaped, and so is a
// leading "." (covers "." and ".."); the empty name becomes "%", which no escaped name can be.
std::string fileNameForSuite(const std::string& suiteName) {
    if (suiteName.empty())
        return "%";
    std::string out;
    for (size_t i = 0; i < suiteName.size(); ++i) {
        unsigned char c = static_cast<unsigned char>(suiteName[i]);
        if (c == '/' || c == '%' || c < 0x20 || c == 0x7f || (i == 0 && c == '.')) {
            char escaped[4];
            std::snprintf(escaped, sizeof escaped, "%%%02X", c);
            out += escaped;
        } else {
            out += static_cast<char>(c);
        }
    }
    return out;
}

std::string folder() {
    return Paths::xdgDirectory("XDG_CONFIG_HOME", ".config") + "/group-containers";
}

bool writeAll(int fd, const std::string& bytes) {
    size_t done = 0;
    while (done < bytes.size()) {
        ssize_t n = ::write(fd, bytes.data() + done, bytes.size() - done);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            return false;
        done += static_cast<size_t>(n);
    }
    return true;
}

constexpr const char* kTemporaryInfix = ".tmp-";

// Writes |bytes| to a fresh temporary beside |path|, syncs it and renames it over |path|.
// Not QSaveFile: it writes through a symbolic link at |path| (tried: the link's target was
// replaced and the link stayed, so our reader, which never follows one, found no store), and its
// temporary, when the file system makes it a named one, carries no writer a later flush could
// check. Ours is "<path>.tmp-<pid>-<n>", 0600 from the start.
bool replaceFileAtomically(const std::string& path, const std::string& bytes, std::string& error) {
    static std::atomic<unsigned> counter{0};
    std::string temporary = path + kTemporaryInfix + std::to_string(getpid()) + "-" +
                            std::to_string(counter.fetch_add(1));
    int fd = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600);
    if (fd < 0) {
        error = temporary + ": " + std::strerror(errno);
        return false;
    }
    bool ok = writeAll(fd, bytes) && ::fchmod(fd, 0600) == 0 && ::fsync(fd) == 0;
    if (!ok)
        error = temporary + ": " + std::strerror(errno);
    ::close(fd);
    if (ok && ::rename(temporary.c_str(), path.c_str()) != 0) {
        error = path + ": " + std::strerror(errno);
        ok = false;
    }
    if (!ok) {
        ::unlink(temporary.c_str());
        return false;
    }
    // The rename itself is durable only once the directory is synced.
    std::string directory = path.substr(0, path.rfind('/'));
    int dirFd = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (dirFd >= 0) {
        ::fsync(dirFd);
        ::close(dirFd);
    }
    return true;
}

}  // namespace

std::string DefaultsSuite::pathForSuite(const std::string& suiteName,
                                        const std::string& extension) {
    return folder() + "/" + fileNameForSuite(suiteName) + extension;
}

DefaultsSuite::FileStamp DefaultsSuite::stampOf(const std::string& path) {
    FileStamp stamp;
    struct stat st {};
    if (::lstat(path.c_str(), &st) != 0)
        return stamp;
    stamp.exists = true;
    stamp.regular = S_ISREG(st.st_mode);
    stamp.device = st.st_dev;
    stamp.inode = st.st_ino;
    stamp.size = static_cast<unsigned long long>(st.st_size);
    stamp.mtimeNanoseconds =
        static_cast<long long>(st.st_mtim.tv_sec) * 1000000000LL + st.st_mtim.tv_nsec;
    return stamp;
}

DefaultsSuite::DefaultsSuite(const std::string& suiteName)
    : suiteName_(suiteName), path_(pathForSuite(suiteName)) {
    if (fileNameForSuite(suiteName) != suiteName)
        kLog.write("suite name [" + suiteName + "] is not a plain file name; stored as [" + path_ +
                   "].");
    std::lock_guard<std::mutex> lock(mutex_);
    refreshIfChangedLocked();
}

struct DefaultsSuite::FileContents {
    PropertyListCodec::Dictionary dictionary;
    bool damaged = false;  // unreadable or corrupt: replaced at the next flush
    bool corrupt = false;  // kept aside before it is replaced
};

DefaultsSuite::FileContents DefaultsSuite::readFileLocked(const FileStamp& stamp) const {
    FileContents contents;
    // Another kind of entry in the file's place is set aside, and told of, by the next flush.
    if (stamp.exists && !stamp.regular)
        return contents;
    std::string bytes, reason;
    std::vector<std::string> dropped;
    switch (PropertyListCodec::readFile(path_, bytes, reason)) {
        case PropertyListCodec::ReadStatus::Missing:
            return contents;
        case PropertyListCodec::ReadStatus::Ok:
            if (auto dictionary = PropertyListCodec::parseDictionary(bytes, &dropped))
                contents.dictionary = std::move(*dictionary);
            else
                contents.damaged = contents.corrupt = true;
            break;
        default:
            contents.damaged = true;
            break;
    }
    // Every flush reads the file again; one file's faults are one report.
    if (stamp == reportedStamp_)
        return contents;
    reportedStamp_ = stamp;
    if (contents.corrupt)
        kLog.write(path_ + " is corrupt; read as empty, and kept as " + path_ +
                   ".corrupt when next written.");
    else if (contents.damaged)
        kLog.write("cannot read " + path_ + " (" + reason +
                   "); read as empty, and replaced when next written.");
    for (const auto& key : dropped)
        kLog.write(path_ + ": an entry that cannot be written back is dropped [" + key + "].");
    return contents;
}

void DefaultsSuite::refreshIfChangedLocked() const {
    FileStamp now = stampOf(path_);
    if (now == stamp_)
        return;
    stamp_ = now;
    std::map<std::string, PropertyValue> fileValues = readFileLocked(now).dictionary.values();
    // Keys written here and not yet flushed win over the file.
    for (const auto& key : unsavedKeys_) {
        auto mine = values_.find(key);
        if (mine != values_.end())
            fileValues[key] = mine->second;
        else
            fileValues.erase(key);
    }
    values_ = std::move(fileValues);
}

void DefaultsSuite::removeTemporariesOfGoneWriters() const {
    const size_t slash = path_.rfind('/');
    const std::string directory = path_.substr(0, slash);
    const std::string prefix = path_.substr(slash + 1) + kTemporaryInfix;
    DIR* listing = ::opendir(directory.c_str());
    if (!listing)
        return;
    while (const dirent* entry = ::readdir(listing)) {
        const char* name = entry->d_name;
        if (std::strncmp(name, prefix.c_str(), prefix.size()) != 0)
            continue;
        char* end = nullptr;
        const long pid = std::strtol(name + prefix.size(), &end, 10);
        // Only names this store writes: "<pid>-<n>".
        if (end == name + prefix.size() || *end != '-' || ProcessStatus::isRunning(pid))
            continue;
        if (::unlinkat(::dirfd(listing), name, 0) == 0)
            kLog.write("removed " + directory + "/" + name + ", left by a writer that is gone.");
    }
    ::closedir(listing);
}

void DefaultsSuite::setObject(const std::optional<PropertyValue>& value, const std::string& key) {
    std::lock_guard<std::mutex> lock(mutex_);
    if (value)
        values_[key] = *value;
    else
        values_.erase(key);
    unsavedKeys_.erase(std::remove(unsavedKeys_.begin(), unsavedKeys_.end(), key),
                       unsavedKeys_.end());
    unsavedKeys_.push_back(key);
}

std::optional<PropertyValue> DefaultsSuite::objectForKey(const std::string& key) const {
    std::lock_guard<std::mutex> lock(mutex_);
    refreshIfChangedLocked();
    auto found = values_.find(key);
    if (found == values_.end())
        return std::nullopt;
    return found->second;
}

bool DefaultsSuite::synchronize() {
    std::lock_guard<std::mutex> lock(mutex_);
    std::string error;
    std::string directory = path_.substr(0, path_.rfind('/'));
    if (!Paths::makeDirectories(directory, 0700, error)) {
        kLog.write("cannot create the folder for suite [" + suiteName_ + "]: " + error);
        return false;
    }
    const std::unique_ptr<FileLock> fileLock = FileLock::acquire(path_ + ".lock", kLockWait, error);
    if (!fileLock) {
        kLog.write("cannot lock suite [" + suiteName_ + "]: " + error);
        return false;
    }

    removeTemporariesOfGoneWriters();
    PathRepair::makeRoomFor(PathRepair::Kind::RegularFile, path_);

    // Start from what is on disk now, so other processes' keys survive our write.
    const FileStamp onDisk = stampOf(path_);
    FileContents contents = readFileLocked(onDisk);
    PropertyListCodec::Dictionary& dict = contents.dictionary;
    // In write order, each moved to the end: the file lists keys by their last write.
    for (const auto& key : unsavedKeys_) {
        auto mine = values_.find(key);
        if (mine != values_.end())
            dict.set(key, mine->second);
        else
            dict.remove(key);
    }

    bool ok = true;
    if (!unsavedKeys_.empty() || contents.damaged) {
        // Keep the damaged bytes for inspection instead of destroying them.
        if (contents.corrupt && ::rename(path_.c_str(), (path_ + ".corrupt").c_str()) != 0)
            kLog.write("cannot keep corrupt " + path_ + " aside: " + std::strerror(errno));
        if (replaceFileAtomically(path_, dict.toBinary(), error)) {
            unsavedKeys_.clear();
        } else {
            ok = false;
            kLog.write("cannot write suite [" + suiteName_ + "]: " + error);
        }
    }
    values_ = dict.values();
    stamp_ = stampOf(path_);
    return ok;
}

}  // namespace platform
