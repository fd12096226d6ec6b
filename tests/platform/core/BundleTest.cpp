#include "tests/platform/core/CoreTestSupport.h"

#include "platform/core/Bundle.h"
#include "platform/core/PropertyListCodec.h"

using platform::Bundle;
using platform::PropertyValue;
using platform::StringArray;
using testing_support::TempDir;
namespace fs = std::filesystem;

namespace {

std::string xmlDictionary(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
           "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\"><dict>" +
           body + "</dict></plist>\n";
}

std::string stringEntry(const std::string& key, const std::string& value) {
    return "<key>" + key + "</key><string>" + value + "</string>";
}

// A bundle with string tables for the given languages; each table maps "Greeting" to "<language>
// hello" and "Only_<language>" to itself.
std::string makeBundle(const TempDir& dir, const std::vector<std::string>& languages) {
    fs::create_directories(dir.file("Ext.appex/Contents/MacOS"));
    dir.writeText("Ext.appex/Contents/Info.plist",
                  xmlDictionary(stringEntry("CFBundleIdentifier", "com.parleyapp.Parley.Share") +
                                stringEntry("TeamIdentifier", "P4RL3YSH4R.") +
                                "<key>List</key><array><string>a</string><string>b</string>"
                                "</array><key>Number</key><integer>7</integer>"));
    for (const auto& language : languages) {
        fs::create_directories(dir.file("Ext.appex/Contents/Resources/" + language + ".lproj"));
        dir.writeText(
            "Ext.appex/Contents/Resources/" + language + ".lproj/ShareLocalizable.strings",
            xmlDictionary(stringEntry("Greeting", language + " hello") +
                          stringEntry("Only_" + language, "Only " + language)));
    }
    return dir.file("Ext.appex");
}

}  // namespace

TEST(BundleTest, ReadsIdentityAndInfoValues) {
    TempDir dir;
    Bundle bundle(makeBundle(dir, {}));
    EXPECT_EQ(bundle.bundleIdentifier(), "com.parleyapp.Parley.Share");
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("TeamIdentifier"),
              PropertyValue(std::string("P4RL3YSH4R.")));
    EXPECT_EQ(bundle.objectForInfoDictionaryKey("List"), PropertyValue(StringArray{"a", "b"}));
    EXPECT_FALSE(bundle.objectForInfoDictionaryKey("Number"));  // not a string type
    EXPECT_FALSE(bundle.objectForInfoDictionaryKey("Missing"));

    // A binary Info.plist, with a name that is not UTF-8: kept whole, its stray byte replaced.
    fs::create_directories(dir.file("B.app/Contents"));
    platform::PropertyListCodec::Dictionary info;
    info.set("CFBundleIdentifier", std::string("com.example.binary"));
    info.set("Name", std::string("caf\xe9 name"));
    dir.writeText("B.app/Contents/Info.plist", info.toBinary());
    Bundle binary(dir.file("B.app"));
    EXPECT_EQ(binary.bundleIdentifier(), "com.example.binary");
    EXPECT_EQ(binary.objectForInfoDictionaryKey("Name"),
              PropertyValue(std::string("caf\xEF\xBF\xBD name")));
}

TEST(BundleTest, MissingOrCorruptInfoPlistIsLoggedAndEmpty) {
    TempDir dir;
    fs::create_directories(dir.file("Bad.app/Contents"));
    dir.writeText("Bad.app/Contents/Info.plist", "<plist><dict><key>unclosed");
    for (const char* name : {"Nothing.app", "Bad.app"}) {
        platform::LogCapture log;
        Bundle bundle(dir.file(name));
        EXPECT_EQ(bundle.bundleIdentifier(), "") << name;
        EXPECT_FALSE(bundle.objectForInfoDictionaryKey("TeamIdentifier")) << name;
        EXPECT_FALSE(log.lines().empty()) << name;
    }
}

// The first table that has the key wins, in the order LANGUAGE (unless the locale is C), LC_ALL,
// LC_MESSAGES, LANG, each language with and without its region, then English.
TEST(BundleTest, LocalizedStringsFollowTheUserLanguagesThenEnglish) {
    TempDir dir;
    Bundle bundle(makeBundle(dir, {"en", "de", "pt_BR"}));
    struct Case {
        const char *language, *all, *lang, *key, *expected;
    } cases[] = {
        {nullptr, nullptr, "de_DE.UTF-8", "Greeting", "de hello"},
        {nullptr, nullptr, "de_DE.UTF-8", "Only_en", "Only en"},
        {"fr:pt_BR", nullptr, "de_DE.UTF-8", "Greeting", "pt_BR hello"},
        {"fr:pt_BR", nullptr, "de_DE.UTF-8", "Only_de", "Only de"},
        {"pt_BR", nullptr, "C", "Greeting", "en hello"},
        {nullptr, nullptr, "ja_JP.UTF-8", "Greeting", "en hello"},
        {nullptr, "de_AT.UTF-8@euro", "en_US.UTF-8", "Greeting", "de hello"},
        {nullptr, nullptr, "de_DE.UTF-8", "NoSuchKey", "NoSuchKey"},
    };
    ScopedEnv noMessages("LC_MESSAGES", std::nullopt);
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.key) + " with LANG " + c.lang);
        auto optional = [](const char* v) {
            return v ? std::optional<std::string>(v) : std::nullopt;
        };
        ScopedEnv language("LANGUAGE", optional(c.language)), all("LC_ALL", optional(c.all)),
            lang("LANG", c.lang);
        EXPECT_EQ(bundle.localizedStringForKey(c.key, "", "ShareLocalizable"), c.expected);
    }
    EXPECT_EQ(bundle.localizedStringForKey("NoSuchKey", "Default", "ShareLocalizable"), "Default");
    EXPECT_EQ(bundle.localizedStringForKey("Greeting", "", "NoSuchTable"), "Greeting");
    EXPECT_EQ(Bundle(dir.file("none")).localizedStringForKey("Greeting", "", "ShareLocalizable"),
              "Greeting");
}

TEST(BundleTest, MainBundleAndBundleOfAnExecutable) {
    TempDir dir;
    std::string path = makeBundle(dir, {});
    EXPECT_EQ(Bundle::mainBundle()->bundlePath(), "");
    auto found = Bundle::bundleContainingExecutable(path + "/Contents/MacOS/Ext");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->bundleIdentifier(), "com.parleyapp.Parley.Share");
    EXPECT_FALSE(Bundle::bundleContainingExecutable("/usr/bin/env"));

    Bundle::setMainBundle(found);
    EXPECT_EQ(Bundle::mainBundle(), found);
    Bundle::setMainBundle(nullptr);
    EXPECT_EQ(Bundle::mainBundle()->bundlePath(), "");

    fs::create_directories(dir.file("Ext.appex/Contents/Resources"));
    dir.writeText("Ext.appex/Contents/Resources/logo.svg", "<svg/>");
    EXPECT_EQ(found->pathForResource("logo", "svg"), path + "/Contents/Resources/logo.svg");
    EXPECT_FALSE(found->pathForResource("logo", "png"));
    EXPECT_FALSE(found->pathForResource("../Info", "plist"));
}
