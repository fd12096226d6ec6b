#include "platform/core/ExtensionContext.h"

#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"

namespace platform {

namespace {
const Logger kLog("ExtensionContext: ");
}  // namespace

ExtensionContext::ExtensionContext(std::vector<std::shared_ptr<ExtensionItem>> inputItems)
    : inputItems_(std::move(inputItems)) {}

void ExtensionContext::completeRequestReturningItems(
    std::vector<std::shared_ptr<ExtensionItem>> /*items*/,
    std::function<void(bool expired)> handler) {
    {
        std::lock_guard<std::mutex> lock(mutex_);
        ++endings_;
        if (state_ != State::Pending) {
            kLog.write(
                "completeRequestReturningItems after the request ended; "
                "ignored.");
            return;
        }
        state_ = State::Completed;
    }
    if (handler)
        MainQueue::async([handler = std::move(handler)] { handler(false); });
}

void ExtensionContext::cancelRequestWithError(const Error& error) {
    std::lock_guard<std::mutex> lock(mutex_);
    ++endings_;
    if (state_ != State::Pending) {
        kLog.write("cancelRequestWithError after the request ended; ignored.");
        return;
    }
    state_ = State::Cancelled;
    error_ = error;
}

ExtensionContext::State ExtensionContext::state() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return state_;
}

std::optional<Error> ExtensionContext::cancellationError() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return error_;
}

int ExtensionContext::endingCount() const {
    std::lock_guard<std::mutex> lock(mutex_);
    return endings_;
}

}  // namespace platform
