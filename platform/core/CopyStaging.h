#pragma once

#include <memory>
#include <string>

#include "platform/core/CopyEnds.h"

namespace platform {

// Where a copy is built before it takes its final name, out of the namespace of the folder it
// lands in, so that an interrupted copy never leaves anything under a name people see or choose.
//
// A regular file is built as an unnamed file (O_TMPFILE) in the destination folder and linked in
// when whole: a killed copy leaves nothing at all. Anything else (a folder, or a file where the
// file system has no unnamed files) is built in a private entry of the work folder beside the
// destination folder (<parent>/.copies-in-progress/<entry>/), on the same file system, and
// renamed into place. Each entry is flock()ed for as long as its copy runs; an entry nobody
// holds was left by a copy that was killed (InterruptedCopySweep removes it).
class CopyStaging {
  public:
    static constexpr const char* kWorkFolderName = ".copies-in-progress";

    // The work folder that serves copies into |destinationFolder|.
    static std::string workFolderFor(const std::string& destinationFolder);

    // An unnamed regular file in |folder| (an open folder), open for writing, made with |mode|;
    // -1 when the file system cannot make one.
    static int openUnnamedFile(int folder, unsigned mode);
    // Gives the unnamed file |file| the name |name| in |folder|; fails (errno) when anything lies
    // there already.
    static bool linkUnnamedFile(int file, int folder, const std::string& name);

    // A private entry of the work folder for the copy into |destinationFolder| (open as
    // |destination|), held until destroyed; removed with whatever is left in it then.
    // nullptr with |error| set when none can be made there or it lies on another file system.
    static std::unique_ptr<CopyStaging> enter(const std::string& destinationFolder,
                                              int destination,
                                              std::string& error);
    ~CopyStaging();
    CopyStaging(const CopyStaging&) = delete;
    CopyStaging& operator=(const CopyStaging&) = delete;

    // The open entry in which the copy is built.
    int folder() const { return entry_; }
    // The work folder, which a copy of a folder that holds it leaves out.
    const FileIdentity& workFolder() const { return workFolder_; }
    // Moves |name| from the entry to |name| in |destination| unless something lies there by then;
    // otherwise |error| says why.
    bool moveIntoPlace(const std::string& name, int destination, std::string& error);

  private:
    CopyStaging(std::string entryPath, int entry, FileIdentity workFolder);
    const std::string entryPath_;
    const int entry_;
    const FileIdentity workFolder_;
};

}  // namespace platform
