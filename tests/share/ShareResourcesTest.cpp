// The extension's own resources, as built into its bundle: every text of the sheet in every
// language it ships, the count format safe to fill, and the sheet's pictures drawn at 1x and 2x.
#include <set>

#include "platform/ui/Bitmap.h"
#include "platform/ui/Image.h"
#include "tests/share/ShareTestSupport.h"
#include "tests/support/ScopedEnv.h"

namespace share_test {
namespace {

const char* const kSheetKeys[] = {"ShareExtension.Cancel", "ShareExtension.SendToFriend",
                                  "ShareExtension.FavToParley", "ShareExtension.FileCount"};

// The conversions in a printf format, "%%" aside.
int conversionCount(const std::string& format) {
    int count = 0;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%')
            continue;
        if (i + 1 < format.size() && format[i + 1] == '%')
            ++i;
        else
            ++count;
    }
    return count;
}

class ShareResourcesTest : public ShareTest {
  protected:
    void SetUp() override {
        ShareTest::SetUp();
        platform::Bundle::setMainBundle(std::make_shared<platform::Bundle>(PARLEY_APPEX_DIR));
    }
};

TEST_F(ShareResourcesTest, EveryLanguageTranslatesEveryTextOfTheSheet) {
    ScopedEnv noAll("LC_ALL", std::nullopt), noMessages("LC_MESSAGES", std::nullopt);
    std::set<std::string> cancelTitles;
    for (const char* language : {"en", "de", "fr", "es"}) {
        ScopedEnv chosen("LANGUAGE", std::string(language));
        const auto bundle = platform::Bundle::mainBundle();
        for (const char* key : kSheetKeys) {
            const std::string text = bundle->localizedStringForKey(key, "", "ShareLocalizable");
            EXPECT_FALSE(text.empty()) << language << " " << key;
            EXPECT_NE(text, key) << language << " lacks " << key;
        }
        const std::string count =
            bundle->localizedStringForKey("ShareExtension.FileCount", "", "ShareLocalizable");
        EXPECT_EQ(conversionCount(count), 1) << language << ": " << count;
        cancelTitles.insert(
            bundle->localizedStringForKey("ShareExtension.Cancel", "", "ShareLocalizable"));
    }
    EXPECT_EQ(cancelTitles.size(), 4u);
}

TEST_F(ShareResourcesTest, SheetPicturesDrawSharplyAtBothScales) {
    for (const char* name :
         {"ParleyLogo", "Send-To-Friend", "Fav-To-Parley", "Preview_Next_Disable"}) {
        const auto image = platform::Image::imageNamed(name);
        ASSERT_TRUE(image) << name;
        for (double scale : {1.0, 2.0}) {
            const auto bitmap = image->bitmapAtScale(scale);
            ASSERT_TRUE(bitmap) << name;
            EXPECT_EQ(bitmap->pixelWidth(), static_cast<int>(image->size().width * scale)) << name;
            int opaque = 0;
            for (int y = 0; y < bitmap->pixelHeight(); ++y)
                for (int x = 0; x < bitmap->pixelWidth(); ++x)
                    opaque += bitmap->pixelAt(x, y).a == 255;
            EXPECT_GT(opaque, 0) << name << " at " << scale << "x draws nothing solid";
        }
    }
}

// A longer title does not stretch the button; the rows show the chosen language.
TEST_F(ShareResourcesTest, GermanSheetKeepsItsFramesAndShowsGermanTitles) {
    ScopedEnv noAll("LC_ALL", std::nullopt), language("LANGUAGE", std::string("de"));
    auto controller = startShare({linkProvider("https://example.org/")});
    EXPECT_EQ(controller->cancelBtn()->frame(), platform::NSMakeRect(276, 28, 70, 23));
    EXPECT_EQ(controller->sendToFriendText()->string(), "An Freund senden");
    EXPECT_EQ(controller->favToParleyText()->string(), "Favorisieren");
    ASSERT_TRUE(controller->parleyLogo()->image());
}

}  // namespace
}  // namespace share_test
