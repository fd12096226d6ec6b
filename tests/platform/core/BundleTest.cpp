#include <gtest/gtest.h>

#include <filesystem>

#include "platform/core/Bundle.h"
#include "platform/core/Log.h"
#include "platform/core/PropertyListCodec.h"
#include "tests/support/ScopedEnv.h"
#include "tests/support/TempDir.h"

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

// A bundle with string tables for the given languages; each table maps "Greeting" to
// "<language> hello" and "Only_<language>" to itself.
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
}

TEST(BundleTest, ReadsABinaryInfoPlist) {
    TempDir dir;
    fs::create_directories(dir.file("B.app/Contents"));
    platform::PropertyListCodec::Dictionary info;
    info.set("CFBundleIdentifier", std::string("com.example.binary"));
    dir.writeText("B.app/Contents/Info.plist", info.toBinary());
    EXPECT_EQ(Bundle(dir.file("B.app")).bundleIdentifier(), "com.example.binary");
}

TEST(BundleTest, MissingOrCorruptInfoPlistIsLoggedAndEmpty) {
    TempDir dir;
    {
        platform::LogCapture log;
        Bundle missing(dir.file("Nothing.app"));
        EXPECT_EQ(missing.bundleIdentifier(), "");
        EXPECT_FALSE(log.lines().empty());
    }
    fs::create_directories(dir.file("Bad.app/Contents"));
    dir.writeText("Bad.app/Contents/Info.plist", "<plist><dict><key>unclosed");
    platform::LogCapture log;
    Bundle corrupt(dir.file("Bad.app"));
    EXPECT_EQ(corrupt.bundleIdentifier(), "");
    EXPECT_FALSE(corrupt.objectForInfoDictionaryKey("TeamIdentifier"));
    EXPECT_FALSE(log.lines().empty());
}

TEST(BundleTest, LocalizedStringsFollowTheUserLanguagesThenEnglish) {
    TempDir dir;
    Bundle bundle(makeBundle(dir, {"en", "de", "pt_BR"}));
    ScopedEnv noAll("LC_ALL", std::nullopt), noMessages("LC_MESSAGES", std::nullopt);
    {
        ScopedEnv language("LANGUAGE", std::nullopt), lang("LANG", "de_DE.UTF-8");
        EXPECT_EQ(bundle.localizedStringForKey("Greeting", "", "ShareLocalizable"), "de hello");
        // Missing in German: English is the fallback.
        EXPECT_EQ(bundle.localizedStringForKey("Only_en", "", "ShareLocalizable"), "Only en");
    }
    {
        ScopedEnv language("LANGUAGE", "fr:pt_BR"), lang("LANG", "de_DE.UTF-8");
        EXPECT_EQ(bundle.localizedStringForKey("Greeting", "", "ShareLocalizable"), "pt_BR hello");
        EXPECT_EQ(bundle.localizedStringForKey("Only_de", "", "ShareLocalizable"), "Only de");
    }
    {
        ScopedEnv language("LANGUAGE", std::nullopt), lang("LANG", "ja_JP.UTF-8");
        EXPECT_EQ(bundle.localizedStringForKey("Greeting", "", "ShareLocalizable"), "en hello");
    }
    {
        ScopedEnv all("LC_ALL", "de_AT.UTF-8@euro"), lang("LANG", "en_US.UTF-8");
        EXPECT_EQ(bundle.localizedStringForKey("Greeting", "", "ShareLocalizable"), "de hello");
    }
}

TEST(BundleTest, MissingEntriesGiveTheValueOrTheKey) {
    TempDir dir;
    Bundle bundle(makeBundle(dir, {"en"}));
    EXPECT_EQ(bundle.localizedStringForKey("NoSuchKey", "", "ShareLocalizable"), "NoSuchKey");
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
    EXPECT_EQ(found->bundlePath(), path);
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
