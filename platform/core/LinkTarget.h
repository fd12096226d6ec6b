#pragma once

#include <string>

namespace platform {

// What a symbolic link's copy must hold so that it names, from its new place, what the link
// named where it was: a link is resolved from the folder that holds it, so a relative target
// that leaves the copied tree would name something else once the tree is elsewhere.
class LinkTarget {
  public:
    // The target for the copy of a link whose target is |target|, held at its source by the
    // folder |physicalFolder| (an absolute path without symbolic links), |levelsInsideCopy|
    // folders below the top of the copied tree (-1 when the link itself is the item copied).
    //
    // An absolute target, and a relative one that stays inside the copied tree however its ".."
    // are taken, is kept as it is. Any other relative target is made absolute by prefixing
    // |physicalFolder|, its leading ".." taken against that folder (exact: the folder has no
    // links in it); the rest is left as written, since a component there may be a link.
    static std::string relocated(const std::string& target,
                                 const std::string& physicalFolder,
                                 int levelsInsideCopy);
};

}  // namespace platform
