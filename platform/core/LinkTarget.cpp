#include "platform/core/LinkTarget.h"

#include "platform/core/CopyEnds.h"
#include "platform/core/PathText.h"

namespace platform {

namespace {

// Whether |target|, walked from a folder |levels| below the top of a tree, stays in the tree.
bool staysInside(const std::string& target, int levels) {
    if (levels < 0)
        return false;
    size_t start = 0;
    while (start <= target.size()) {
        size_t end = target.find('/', start);
        if (end == std::string::npos)
            end = target.size();
        const std::string component = target.substr(start, end - start);
        if (component == "..") {
            if (--levels < 0)
                return false;
        } else if (!component.empty() && component != ".") {
            ++levels;
        }
        start = end + 1;
    }
    return true;
}

}  // namespace

std::string LinkTarget::relocated(const std::string& target,
                                  const std::string& physicalFolder,
                                  int levelsInsideCopy) {
    if (target.empty() || target[0] == '/' || staysInside(target, levelsInsideCopy))
        return target;
    std::string folder = physicalFolder;
    size_t at = 0;
    while (at < target.size()) {
        size_t end = target.find('/', at);
        if (end == std::string::npos)
            end = target.size();
        const std::string component = target.substr(at, end - at);
        if (component == "..")
            folder = PathText::folderOf(folder);
        else if (!component.empty() && component != ".")
            break;
        at = end + 1;
    }
    if (at >= target.size())
        return folder;
    return (folder == "/" ? "" : folder) + "/" + target.substr(at);
}

}  // namespace platform
