#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/core/CopyEnds.h"

namespace platform {

class StallWatch;

// Copies one item (a regular file, a folder whole, a symbolic link) from one copy end to the
// other. One object per copy attempt; not thread-safe.
//
// - A file is copied as one whole version: a copy that sees its source change meanwhile (size,
//   modification or change time, a short read) starts again, a few times at most. Holes stay
//   holes. Data moves by kernel copy in slices, each reported to the watch.
// - A link is copied as a link whose target names what the link named at its source
//   (LinkTarget).
// - A folder is copied with every entry that can be read; an entry that cannot be (unreadable,
//   never holding still, a pipe, socket or device) is left out, logged, as is any folder in
//   Settings::leftOut. A failure to write fails the whole copy.
class ItemCopier {
  public:
    struct Settings {
        // A regular file at the top larger than this when opened is not copied (-1: no limit).
        int64_t maxFileBytes = -1;
        // Told of every step; once it has given up, the copy stops.
        std::shared_ptr<StallWatch> watch;
        // Folders never copied, wherever the copied tree holds them.
        std::vector<FileIdentity> leftOut;
        // The folder that holds the item copied, as the source path names it.
        std::string sourceFolder;
    };
    explicit ItemCopier(Settings settings);
    // Adds a folder to Settings::leftOut.
    void leaveOut(const FileIdentity& folder) { settings_.leftOut.push_back(folder); }

    // Copies |ends.source| to |ends.destination|, where nothing may lie yet. A link at the top is
    // made in its place at once, after the watch settles.
    bool copyEntry(const CopyEnds& ends);
    // Copies the regular file |source|, seen by lstat as |seen|, into |destination|: an open,
    // empty file made with modeFor(seen), shown as |destinationShown|.
    bool copyFileInto(const CopyEnd& source,
                      const struct stat& seen,
                      int destination,
                      const std::string& destinationShown);

    // The mode a copy of a file of |source|'s status gets: its own, less set-user and set-group.
    static mode_t modeFor(const struct stat& source);

    // Why the copy failed, for people.
    const std::string& error() const { return error_; }
    // The file at the top was larger than Settings::maxFileBytes.
    bool tooLarge() const { return tooLarge_; }
    // A write found the file system full.
    bool noSpace() const { return noSpace_; }

  private:
    enum class Data { Whole, ShortRead, SourceFailed, DestinationFailed, TooLarge, GaveUp };
    enum class Method { CopyFileRange, Sendfile, ReadWrite };

    bool copyEntryAt(const CopyEnds& ends, int depth, const std::string& insideTop);
    bool copyFile(const CopyEnds& ends, const struct stat& seen, int depth, int openDestination);
    bool copyLink(const CopyEnds& ends, int depth, const std::string& insideTop);
    bool copyFolder(const CopyEnds& ends,
                    const struct stat& seen,
                    int depth,
                    const std::string& insideTop);

    // One whole version of |source|'s data into |destination|, as often as it takes to get one.
    // |opened| is the source's status when it was opened, |createdWith| the mode |destination|
    // was made with.
    Data copyData(int source,
                  const struct stat& opened,
                  mode_t createdWith,
                  int destination,
                  const CopyEnds& ends,
                  int64_t limit);
    Data transfer(int source, int destination, const struct stat& status, const CopyEnds& ends);
    Data copyRange(int source, int destination, off_t from, off_t to, const CopyEnds& ends);

    // A failure to read |source|: at the top it fails the copy; inside a folder the entry is
    // left out (logged) and the copy goes on, so this returns true.
    bool unreadable(const CopyEnd& source, const std::string& why, int depth);
    bool fail(const std::string& shown, int code);
    Data cannotWrite(const std::string& shown, int code);
    // Reports progress; false once the watch has given up.
    bool carryOn();
    bool settle();
    std::string physicalFolder(const std::string& insideTop);

    Settings settings_;
    std::string error_;
    bool tooLarge_ = false;
    bool noSpace_ = false;
    Method method_ = Method::CopyFileRange;
    std::vector<char> buffer_;
    std::string physicalSourceFolder_;
};

}  // namespace platform
