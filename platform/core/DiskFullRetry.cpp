#include "platform/core/DiskFullRetry.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <chrono>

#include "platform/core/StallWatch.h"

namespace platform {

namespace {
constexpr std::chrono::milliseconds kRecheckInterval{250};
}  // namespace

DiskFullRetry& DiskFullRetry::shared() {
    // Never destroyed: a copy given up may wake up while the process exits.
    static DiskFullRetry* retry = new DiskFullRetry;
    return *retry;
}

DiskFullRetry::Writing::Writing(std::shared_ptr<StallWatch> watch) : watch_(std::move(watch)) {}

DiskFullRetry::Writing::~Writing() {
    DiskFullRetry& retry = shared();
    {
        std::lock_guard<std::mutex> lock(retry.mutex_);
        auto& writing = retry.writing_;
        writing.erase(std::remove(writing.begin(), writing.end(), this), writing.end());
    }
    retry.changed_.notify_all();
}

std::unique_ptr<DiskFullRetry::Writing> DiskFullRetry::beginWriting(
    std::shared_ptr<StallWatch> watch) {
    std::unique_ptr<Writing> writing(new Writing(std::move(watch)));
    std::lock_guard<std::mutex> lock(mutex_);
    writing_.push_back(writing.get());
    return writing;
}

int DiskFullRetry::writingCount() const {
    return static_cast<int>(std::count_if(writing_.begin(), writing_.end(), [](Writing* each) {
        return !each->watch_ || !each->watch_->hasGivenUp();
    }));
}

std::unique_lock<std::timed_mutex> DiskFullRetry::retryTurn(
    const std::shared_ptr<StallWatch>& watch) {
    auto waited = [&watch] {
        if (watch)
            watch->progress();
    };
    std::unique_lock<std::timed_mutex> turn(retryMutex_, std::defer_lock);
    while (!turn.try_lock_for(kRecheckInterval))
        waited();
    std::unique_lock<std::mutex> lock(mutex_);
    // Rechecked now and then: a watch that gives up does not announce it here.
    while (writingCount() > 0) {
        changed_.wait_for(lock, kRecheckInterval);
        waited();
    }
    return turn;
}

bool DiskFullRetry::mayFit(const std::string& source, const std::string& folder) {
    struct stat st {};
    struct statvfs fs {};
    if (::stat(source.c_str(), &st) != 0 || !S_ISREG(st.st_mode) ||
        ::statvfs(folder.c_str(), &fs) != 0)
        return true;
    return uint64_t(st.st_size) <= uint64_t(fs.f_bavail) * fs.f_frsize;
}

}  // namespace platform
