#include "platform/core/ItemProvider.h"

#include <algorithm>

#include "platform/core/Log.h"
#include "platform/core/WorkerPool.h"

namespace platform {

namespace {
const Logger kLog("ItemProvider: ");
}  // namespace

std::shared_ptr<ItemProvider> ItemProvider::withURL(const Url& url) {
    auto provider = std::make_shared<ItemProvider>();
    auto loader = [url]() -> std::optional<Url> { return url; };
    if (url.isFileURL())
        provider->registerItemForTypeIdentifier(kUTTypeFileURL, loader);
    provider->registerItemForTypeIdentifier(kUTTypeURL, loader);
    provider->suggestedName_ = url.isFileURL() ? url.lastPathComponent() : url.host();
    return provider;
}

std::shared_ptr<ItemProvider> ItemProvider::withTypes(std::vector<std::string> typeIdentifiers) {
    auto provider = std::make_shared<ItemProvider>();
    provider->types_ = std::move(typeIdentifiers);
    return provider;
}

void ItemProvider::registerItemForTypeIdentifier(const std::string& typeIdentifier, Loader loader) {
    if (std::find(types_.begin(), types_.end(), typeIdentifier) == types_.end())
        types_.push_back(typeIdentifier);
    loaders_[typeIdentifier] = std::move(loader);
}

bool ItemProvider::hasItemConformingToTypeIdentifier(const std::string& typeIdentifier) const {
    auto offers = [this](const std::string& type) {
        return std::find(types_.begin(), types_.end(), type) != types_.end();
    };
    // A file URL is a URL.
    return offers(typeIdentifier) || (typeIdentifier == kUTTypeURL && offers(kUTTypeFileURL));
}

void ItemProvider::loadItemForTypeIdentifier(const std::string& typeIdentifier,
                                             const LoadOptions* /*options*/,
                                             CompletionHandler completion) {
    Loader loader;
    auto found = loaders_.find(typeIdentifier);
    if (found != loaders_.end())
        loader = found->second;
    else if (typeIdentifier == kUTTypeURL && loaders_.count(kUTTypeFileURL))
        loader = loaders_.at(kUTTypeFileURL);

    if (!loader) {
        kLog.write("no item of type [" + typeIdentifier + "] to load.");
        WorkerPool::shared().async([completion = std::move(completion)] {
            if (completion)
                completion(std::nullopt,
                           Error::errorWithDomain(NSItemProviderErrorDomain,
                                                  NSItemProviderItemUnavailableError));
        });
        return;
    }
    WorkerPool::shared().async([loader = std::move(loader), completion = std::move(completion)] {
        std::optional<Url> item = loader();
        if (completion)
            completion(item, std::nullopt);
    });
}

}  // namespace platform
