#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/core/Error.h"
#include "platform/core/Url.h"

namespace platform {

inline const char* const kUTTypeURL = "public.url";
inline const char* const kUTTypeFileURL = "public.file-url";

// An attachment of an extension item: it offers its item as one or more type identifiers and
// loads it asynchronously. Completions run on the worker pool, in any order.
struct LoadOptions {};

class ItemProvider {
  public:
    using CompletionHandler =
        std::function<void(const std::optional<Url>& item, const std::optional<Error>& error)>;
    using Loader = std::function<std::optional<Url>()>;

    // A provider for |url|: a file URL conforms to "public.file-url" and "public.url"; any
    // other URL to "public.url" only.
    static std::shared_ptr<ItemProvider> withURL(const Url& url);
    // A provider with no types (plain text, an image without a file: nothing we load).
    static std::shared_ptr<ItemProvider> withTypes(std::vector<std::string> typeIdentifiers);

    // Registers |loader| for |typeIdentifier| (run on a worker thread at each load).
    void registerItemForTypeIdentifier(const std::string& typeIdentifier, Loader loader);

    // A name for the item that a person recognises without loading it: a file's name, a
    // link's host; empty when the provider was not made from a URL.
    const std::string& suggestedName() const { return suggestedName_; }

    bool hasItemConformingToTypeIdentifier(const std::string& typeIdentifier) const;
    // loadItemForTypeIdentifier:options:completionHandler: returns at once; |completion| runs
    // on a worker thread with the item, or with no item and an error for a type not offered.
    // No load options exist yet; callers pass nullptr.
    void loadItemForTypeIdentifier(const std::string& typeIdentifier,
                                   const LoadOptions* options,
                                   CompletionHandler completion);

  private:
    std::vector<std::string> types_;
    std::string suggestedName_;
    std::map<std::string, Loader> loaders_;
};

}  // namespace platform
