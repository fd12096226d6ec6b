#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace platform {

class StallWatch;

// The copies this process is writing. Several copies of one share run at once, so one may find
// the disk full only because another's partial item holds the space, which goes when that copy
// fails. A copy that ran out of space therefore tries once more when no other is writing, one
// such retry at a time, if it fits in what is free by then. Thread-safe.
class DiskFullRetry {
  public:
    static DiskFullRetry& shared();

    // A copy writing for as long as the object lives. A copy whose |watch| has given up no longer
    // counts: its space is not freed by waiting.
    class Writing {
      public:
        ~Writing();
        Writing(const Writing&) = delete;
        Writing& operator=(const Writing&) = delete;

      private:
        friend class DiskFullRetry;
        explicit Writing(std::shared_ptr<StallWatch> watch);
        std::shared_ptr<StallWatch> watch_;
    };
    std::unique_ptr<Writing> beginWriting(std::shared_ptr<StallWatch> watch);

    // The turn to retry, held for the retry's length while the object lives.
    class RetryTurn {
      public:
        ~RetryTurn();
        RetryTurn(const RetryTurn&) = delete;
        RetryTurn& operator=(const RetryTurn&) = delete;

      private:
        friend class DiskFullRetry;
        RetryTurn() = default;
    };
    // Waits until no other copy is writing or retrying, and takes the turn. The wait counts as
    // progress for |watch|: the copy waits for the disk, not for its source.
    std::unique_ptr<RetryTurn> retryTurn(const std::shared_ptr<StallWatch>& watch);

    // Whether |source| could fit in the free space of |folder|'s file system: a regular file by
    // its size; a folder is not measured.
    static bool mayFit(const std::string& source, const std::string& folder);

  private:
    DiskFullRetry() = default;
    // Copies writing whose watch has not given up. Call with mutex_ held.
    int writingCount() const;

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<Writing*> writing_;
    bool retrying_ = false;
};

}  // namespace platform
