#pragma once

#include <memory>
#include <vector>

#include "platform/core/ItemProvider.h"

namespace platform {

// One shared item: its attachments, in order.
class ExtensionItem {
  public:
    ExtensionItem() = default;
    explicit ExtensionItem(std::vector<std::shared_ptr<ItemProvider>> attachments)
        : attachments_(std::move(attachments)) {}

    const std::vector<std::shared_ptr<ItemProvider>>& attachments() const { return attachments_; }
    void setAttachments(std::vector<std::shared_ptr<ItemProvider>> a) {
        attachments_ = std::move(a);
    }

  private:
    std::vector<std::shared_ptr<ItemProvider>> attachments_;
};

}  // namespace platform
