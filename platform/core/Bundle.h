#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/core/PropertyValue.h"

namespace platform {

// A bundle directory: <path>/Contents/Info.plist, <path>/Contents/Resources/ with named images
// (<name>.svg or <name>.png, with <name>@2x.png for scale 2) and string tables per language
// (<lang>.lproj/<table>.strings, a property-list dictionary of strings).
class Bundle {
  public:
    // Opens the bundle at |path|; a missing or unreadable Info.plist is logged and reads as empty.
    explicit Bundle(const std::string& path);

    // mainBundle: the bundle the process runs from (see setMainBundle); an empty bundle at ""
    // until one is set.
    static std::shared_ptr<Bundle> mainBundle();
    static void setMainBundle(std::shared_ptr<Bundle> bundle);
    // The bundle that contains |executablePath| (<bundle>/Contents/MacOS/<exe>), if any.
    static std::shared_ptr<Bundle> bundleContainingExecutable(const std::string& executablePath);

    const std::string& bundlePath() const { return path_; }
    // bundleIdentifier: CFBundleIdentifier, empty when absent.
    std::string bundleIdentifier() const;
    // objectForInfoDictionaryKey: a string or an array of strings; nullopt when absent or of
    // another type.
    std::optional<PropertyValue> objectForInfoDictionaryKey(const std::string& key) const;

    // localizedStringForKey:value:table: looks in the user's languages (LANGUAGE, LC_ALL,
    // LC_MESSAGES, LANG), then English; a missing entry gives |value|, or |key| when |value| is
    // empty.
    std::string localizedStringForKey(const std::string& key,
                                      const std::string& value,
                                      const std::string& table) const;

    // Path of the resource file <name>.<extension> in Contents/Resources, if it exists.
    std::optional<std::string> pathForResource(const std::string& name,
                                               const std::string& extension) const;

  private:
    struct Info;
    std::string path_;
    std::shared_ptr<const Info> info_;
};

}  // namespace platform
