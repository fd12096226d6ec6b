#pragma once

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "platform/core/Error.h"
#include "platform/core/ExtensionItem.h"

namespace platform {

// The request the Share menu hands to the extension: its input items, and how it ended.
// Thread-safe.
class ExtensionContext {
  public:
    enum class State { Pending, Completed, Cancelled };

    explicit ExtensionContext(std::vector<std::shared_ptr<ExtensionItem>> inputItems);

    const std::vector<std::shared_ptr<ExtensionItem>>& inputItems() const { return inputItems_; }

    // completeRequestReturningItems:completionHandler: |handler| (may be empty) runs on the
    // main queue. Only the first ending of a request counts; later ones are logged and ignored.
    void completeRequestReturningItems(std::vector<std::shared_ptr<ExtensionItem>> items,
                                       std::function<void(bool expired)> handler);
    // cancelRequestWithError:
    void cancelRequestWithError(const Error& error);

    State state() const;
    // The error given to cancelRequestWithError, once cancelled.
    std::optional<Error> cancellationError() const;
    // Number of times the request was completed or cancelled (1 for a well-behaved extension).
    int endingCount() const;

  private:
    std::vector<std::shared_ptr<ExtensionItem>> inputItems_;
    mutable std::mutex mutex_;
    State state_ = State::Pending;
    std::optional<Error> error_;
    int endings_ = 0;
};

}  // namespace platform
