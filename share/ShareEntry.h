#pragma once

#include <cstdint>

// The action the user picked on the sheet. The hand-off store holds it as text ("sendToFriend",
// "favToParley"); the numbers live only here.
enum ShareEntry : uint64_t {
    ShareEntryNone = 0,
    ShareEntrySendToFriend = 1,
    ShareEntryFavToParley = 2,
};
