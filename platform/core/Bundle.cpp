#include "platform/core/Bundle.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <map>
#include <mutex>
#include <vector>

#include "platform/core/Log.h"
#include "platform/core/PropertyListCodec.h"

namespace platform {

struct Bundle::Info {
    std::map<std::string, PropertyValue> values;
    // String tables by "<language>/<table>", loaded on first use; nullptr for a missing one.
    mutable std::mutex tablesMutex;
    mutable std::map<std::string, std::shared_ptr<const std::map<std::string, std::string>>> tables;
};

namespace {

const Logger kLog("Bundle: ");

std::mutex& mainBundleMutex() {
    static std::mutex mutex;
    return mutex;
}

std::shared_ptr<Bundle>& mainBundleStorage() {
    static std::shared_ptr<Bundle> bundle;
    return bundle;
}

bool isRegularFile(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

// "de_DE.UTF-8@euro" -> {"de_DE", "de"}; "C" and "POSIX" name no language.
void addLocaleCandidates(std::string locale, std::vector<std::string>& out) {
    size_t cut = locale.find_first_of(".@");
    if (cut != std::string::npos)
        locale.erase(cut);
    if (locale.empty() || locale == "C" || locale == "POSIX")
        return;
    auto add = [&out](const std::string& language) {
        for (const auto& known : out)
            if (known == language)
                return;
        out.push_back(language);
    };
    add(locale);
    size_t underscore = locale.find_first_of("_-");
    if (underscore != std::string::npos)
        add(locale.substr(0, underscore));
}

// The user's languages in preference order, English last.
std::vector<std::string> preferredLanguages() {
    std::vector<std::string> languages;
    std::string locale;
    for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
        const char* value = std::getenv(name);
        if (value && *value) {
            locale = value;
            break;
        }
    }
    // LANGUAGE is ignored for the "C" locale, as gettext does.
    const char* list = std::getenv("LANGUAGE");
    bool cLocale = locale == "C" || locale == "POSIX";
    if (list && *list && !cLocale) {
        std::string text = list;
        size_t start = 0;
        while (start <= text.size()) {
            size_t end = text.find(':', start);
            if (end == std::string::npos)
                end = text.size();
            addLocaleCandidates(text.substr(start, end - start), languages);
            start = end + 1;
        }
    }
    addLocaleCandidates(locale, languages);
    addLocaleCandidates("en", languages);
    return languages;
}

}  // namespace

Bundle::Bundle(const std::string& path) : path_(path) {
    auto info = std::make_shared<Info>();
    if (!path.empty()) {
        std::string plistPath = path + "/Contents/Info.plist";
        std::string bytes, reason;
        switch (PropertyListCodec::readFile(plistPath, bytes, reason)) {
            case PropertyListCodec::ReadStatus::Ok:
                if (auto dict = PropertyListCodec::parseDictionary(bytes))
                    info->values = dict->values();
                else
                    kLog.write("" + plistPath + " is not a property-list dictionary.");
                break;
            case PropertyListCodec::ReadStatus::Missing:
                kLog.write("" + plistPath + " is missing.");
                break;
            default:
                kLog.write("cannot read " + plistPath + " (" + reason + ").");
                break;
        }
    }
    info_ = std::move(info);
}

std::shared_ptr<Bundle> Bundle::mainBundle() {
    std::lock_guard<std::mutex> lock(mainBundleMutex());
    auto& bundle = mainBundleStorage();
    if (!bundle)
        bundle = std::make_shared<Bundle>("");
    return bundle;
}

void Bundle::setMainBundle(std::shared_ptr<Bundle> bundle) {
    std::lock_guard<std::mutex> lock(mainBundleMutex());
    mainBundleStorage() = std::move(bundle);
}

std::shared_ptr<Bundle> Bundle::bundleContainingExecutable(const std::string& executablePath) {
    std::string path = executablePath;
    if (path.empty())
        return nullptr;
    if (path[0] != '/') {
        char buffer[4096];
        if (!getcwd(buffer, sizeof buffer))
            return nullptr;
        path = std::string(buffer) + "/" + path;
    }
    size_t exe = path.rfind('/');
    if (exe == std::string::npos || exe == 0)
        return nullptr;
    std::string macos = path.substr(0, exe);
    const std::string suffix = "/Contents/MacOS";
    if (macos.size() <= suffix.size() ||
        macos.compare(macos.size() - suffix.size(), suffix.size(), suffix) != 0)
        return nullptr;
    return std::make_shared<Bundle>(macos.substr(0, macos.size() - suffix.size()));
}

std::string Bundle::bundleIdentifier() const {
    auto value = objectForInfoDictionaryKey("CFBundleIdentifier");
    if (value)
        if (const auto* text = std::get_if<std::string>(&*value))
            return *text;
    return "";
}

std::optional<PropertyValue> Bundle::objectForInfoDictionaryKey(const std::string& key) const {
    auto found = info_->values.find(key);
    if (found == info_->values.end())
        return std::nullopt;
    return found->second;
}

std::string Bundle::localizedStringForKey(const std::string& key,
                                          const std::string& value,
                                          const std::string& table) const {
    std::string tableName = table.empty() ? "Localizable" : table;
    for (const auto& language : preferredLanguages()) {
        std::shared_ptr<const std::map<std::string, std::string>> strings;
        std::string cacheKey = language + "/" + tableName;
        {
            std::lock_guard<std::mutex> lock(info_->tablesMutex);
            auto cached = info_->tables.find(cacheKey);
            if (cached != info_->tables.end()) {
                strings = cached->second;
            } else {
                std::string file =
                    path_ + "/Contents/Resources/" + language + ".lproj/" + tableName + ".strings";
                std::string bytes, reason;
                auto status = PropertyListCodec::readFile(file, bytes, reason);
                if (status == PropertyListCodec::ReadStatus::Ok) {
                    auto dict = PropertyListCodec::parseDictionary(bytes);
                    if (dict) {
                        auto map = std::make_shared<std::map<std::string, std::string>>();
                        for (auto& [k, v] : dict->values())
                            if (auto* text = std::get_if<std::string>(&v))
                                (*map)[k] = *text;
                        strings = map;
                    } else {
                        kLog.write("string table " + file + " is not a dictionary.");
                    }
                } else if (status != PropertyListCodec::ReadStatus::Missing) {
                    kLog.write("cannot read string table " + file + " (" + reason + ").");
                }
                info_->tables[cacheKey] = strings;
            }
        }
        if (strings) {
            auto found = strings->find(key);
            if (found != strings->end())
                return found->second;
        }
    }
    return value.empty() ? key : value;
}

std::optional<std::string> Bundle::pathForResource(const std::string& name,
                                                   const std::string& extension) const {
    if (path_.empty() || name.empty() || name.find('/') != std::string::npos)
        return std::nullopt;
    std::string file = path_ + "/Contents/Resources/" + name;
    if (!extension.empty())
        file += "." + extension;
    if (!isRegularFile(file))
        return std::nullopt;
    return file;
}

}  // namespace platform
