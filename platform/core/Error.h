#pragma once

#include <string>

namespace platform {

inline const char* const NSCocoaErrorDomain = "NSCocoaErrorDomain";
// The code of a request that the user cancelled.
constexpr long NSUserCancelledError = 3072;

inline const char* const NSItemProviderErrorDomain = "NSItemProviderErrorDomain";
// The code of a load for a type identifier the item provider does not offer.
constexpr long NSItemProviderItemUnavailableError = -1000;

// errorWithDomain:code:userInfo: (no user information is ever carried).
struct Error {
    std::string domain;
    long code = 0;

    static Error errorWithDomain(const std::string& domain, long code) { return {domain, code}; }
};

}  // namespace platform
