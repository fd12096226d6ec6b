#pragma once

#include <cstddef>
#include <mutex>

#include "platform/core/PropertyValue.h"

// The lists of one file export, shared by all of its per-file completions. Completions run on
// worker threads at the same time: whoever touches the lists or asks isComplete() holds |mutex|,
// so exactly one completion sees the full count. Copies run outside the lock, in parallel.
class FileExport {
  public:
    explicit FileExport(size_t attachmentCount) : attachmentCount_(attachmentCount) {}

    std::mutex mutex;
    // What killed shares left is cleared once, before the first copy.
    std::once_flag interruptedCopiesRemoved;
    // Destination path of each accepted file, in completion order.
    platform::StringArray fileUrlArr;
    // Name and size text of each refused file, at the same index.
    platform::StringArray invalidFileNameArr;
    platform::StringArray invalidFileSizeArr;

    // Every attachment accounted for. Call with |mutex| held.
    bool isComplete() const {
        return fileUrlArr.size() + invalidFileNameArr.size() == attachmentCount_;
    }
    size_t attachmentCount() const { return attachmentCount_; }

  private:
    const size_t attachmentCount_;
};
