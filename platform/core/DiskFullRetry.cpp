#include "platform/core/DiskFullRetry.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <chrono>

#include "platform/core/StallWatch.h"

namespace platform {

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

std::unique_ptr<DiskFullRetry::RetryTurn> DiskFullRetry::retryTurn(
    const std::shared_ptr<StallWatch>& watch) {
    std::unique_lock<std::mutex> lock(mutex_);
    // Rechecked now and then: a watch that gives up does not announce it here.
    while (retrying_ || writingCount() > 0) {
        changed_.wait_for(lock, std::chrono::milliseconds(250));
        if (watch)
            watch->progress();
    }
    retrying_ = true;
    return std::unique_ptr<RetryTurn>(new RetryTurn);
}

DiskFullRetry::RetryTurn::~RetryTurn() {
    DiskFullRetry& retry = shared();
    {
        std::lock_guard<std::mutex> lock(retry.mutex_);
        retry.retrying_ = false;
    }
    retry.changed_.notify_all();
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
