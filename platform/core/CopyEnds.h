#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include <string>

namespace platform {

// One end of a copy: an entry named relative to an open folder, and its path as people read it.
// Work is done relative to the folder so that nothing is followed through a link swapped in
// meanwhile.
struct CopyEnd {
    int folder = AT_FDCWD;
    std::string name;
    std::string shown;

    // The entry |childName| inside this one, which is open as |openFolder|.
    CopyEnd child(int openFolder, const std::string& childName) const {
        return {openFolder, childName, shown + "/" + childName};
    }
};

// The two ends of a copy: what is read and where its copy is made.
struct CopyEnds {
    CopyEnd source;
    CopyEnd destination;
};

// A file system entry's identity, to recognise a folder wherever it is reached from.
struct FileIdentity {
    dev_t device = 0;
    ino_t inode = 0;
    bool operator==(const FileIdentity& other) const {
        return device == other.device && inode == other.inode;
    }
};

}  // namespace platform
