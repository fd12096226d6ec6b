#pragma once

#include <cstdint>

// What a share carries, decided by the first attachment of the request's first item. The
// hand-off store holds it as text ("public.url", "public.file-url"); the numbers live only here.
enum ShareType : uint64_t {
    ShareTypeUnknown = 0,
    ShareTypeUrl = 1,
    ShareTypeFile = 2,
};
