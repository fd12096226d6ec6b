#include "tests/platform/core/CoreTestSupport.h"

// An XML property list of string |entries| and an integer.
static std::string plist(const std::vector<std::pair<std::string, std::string>>& entries) {
    std::string raw = "<key>Number</key><integer>7</integer>";
    for (const auto& [key, value] : entries)
        raw += "<key>" + key + "</key><string>" + value + "</string>";
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\"><dict>" + raw +
           "</dict></plist>\n";
}

// A bundle whose table for each language maps "Greeting" to "<language> hello" and
// "Only_<language>" to "Only <language>".
static std::string makeBundle(const TempDir& dir, const std::vector<std::string>& languages) {
    fs::create_directories(dir.file("Ext.appex/Contents/MacOS"));
    dir.writeText("Ext.appex/Contents/Info.plist",
                  plist({{"CFBundleIdentifier", "com.parleyapp.Parley.Share"}}));
    for (const auto& language : languages) {
        const std::string folder = "Ext.appex/Contents/Resources/" + language + ".lproj";
        fs::create_directories(dir.file(folder));
        dir.writeText(
            folder + "/ShareLocalizable.strings",
            plist({{"Greeting", language + " hello"}, {"Only_" + language, "Only " + language}}));
    }
    return dir.file("Ext.appex");
}

TEST(BundleTest, FoundFromItsExecutableWithInfoValuesResourcesAndLocalizedStrings) {
    TempDir dir;
    const std::string path = makeBundle(dir, {"en"});
    auto bundle = Bundle::bundleContainingExecutable(path + "/Contents/MacOS/Ext");
    ASSERT_TRUE(bundle);
    EXPECT_FALSE(Bundle::bundleContainingExecutable("/usr/bin/env"));
    EXPECT_EQ(bundle->bundleIdentifier(), "com.parleyapp.Parley.Share");
    dir.writeText("Ext.appex/Contents/Resources/logo.svg", "<svg/>");
    EXPECT_EQ(bundle->pathForResource("logo", "svg"), path + "/Contents/Resources/logo.svg");
    EXPECT_FALSE(bundle->pathForResource("logo", "png"));
    EXPECT_FALSE(bundle->pathForResource("../Info", "plist"));
    EXPECT_FALSE(bundle->objectForInfoDictionaryKey("Number"));  // not a string type

    // A binary Info.plist with a name that is not UTF-8: kept whole, its stray byte replaced.
    fs::create_directories(dir.file("B.app/Contents"));
    fs::create_directories(dir.file("Bad.app/Contents"));
    PropertyListCodec::Dictionary info;
    info.set("Name", std::string("caf\xe9 name"));
    dir.writeText("B.app/Contents/Info.plist", info.toBinary());
    EXPECT_EQ(Bundle(dir.file("B.app")).objectForInfoDictionaryKey("Name"),
              PropertyValue(std::string("caf\xEF\xBF\xBD name")));
    dir.writeText("Bad.app/Contents/Info.plist", "<plist><dict><key>unclosed");
    for (const char* name : {"Nothing.app", "Bad.app"}) {
        SCOPED_TRACE(name);
        LogCapture log;
        EXPECT_EQ("", Bundle(dir.file(name)).bundleIdentifier());
        EXPECT_FALSE(log.lines().empty());
    }

    // The first table that has the key wins, in the order LANGUAGE (unless the locale is C),
    // LC_ALL, LC_MESSAGES, LANG, each language with and without its region, then English. "" is
    // unset.
    Bundle tables(makeBundle(dir, {"en", "de", "pt_BR"}));
    // clang-format off
    const char* cases[][5] = {  // LANGUAGE, LC_ALL, LANG, key, expected
        {"", "", "de_DE.UTF-8", "Greeting", "de hello"},
        {"", "", "de_DE.UTF-8", "Only_en", "Only en"},
        {"fr:pt_BR", "", "de_DE.UTF-8", "Greeting", "pt_BR hello"},
        {"fr:pt_BR", "", "de_DE.UTF-8", "Only_de", "Only de"},
        {"pt_BR", "", "C", "Greeting", "en hello"},
        {"", "de_AT.UTF-8@euro", "en_US.UTF-8", "Greeting", "de hello"}};
    // clang-format on
    auto optional = [](const char* v) { return *v ? std::optional<std::string>(v) : std::nullopt; };
    ScopedEnv noMessages("LC_MESSAGES", std::nullopt);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c[0]) + " | " + c[1] + " | " + c[2] + " | " + c[3]);
        ScopedEnv language("LANGUAGE", optional(c[0])), all("LC_ALL", optional(c[1])),
            lang("LANG", c[2]);
        EXPECT_EQ(c[4], tables.localizedStringForKey(c[3], "", "ShareLocalizable"));
    }
    EXPECT_EQ(tables.localizedStringForKey("NoSuchKey", "Default", "ShareLocalizable"), "Default");
    EXPECT_EQ(tables.localizedStringForKey("Greeting", "", "NoSuchTable"), "Greeting");
}
