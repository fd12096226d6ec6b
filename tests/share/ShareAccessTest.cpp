// The sheet without a mouse, on a real X server: a screen reader's client on the accessibility
// bus reads and presses it, and keys typed into its window drive it.
#include "tests/share/ShareTestSupport.h"

using namespace share_test;

namespace {

// Both need a display and its clients; the reader needs the accessibility bus too.
bool canRunOnADisplay() {
    return run("{ command -v Xvfb && command -v xdotool && /usr/bin/python3 -c 'import "
               "pyatspi'; } >/dev/null 2>&1") == 0;
}

}  // namespace

// The reader lists the window and every element, in reading order, in the language of the
// desktop; pressing a row hands the link over, pressing Cancel ends the request with nothing.
TEST_F(ShareProgramsTest, AScreenReaderReadsTheSheetAndPressesItsButtons) {
    if (!canRunOnADisplay())
        GTEST_SKIP() << "needs Xvfb, xdotool and python3-pyatspi";
    const std::string heard = files_.file("heard.txt");
    auto readAndPress = [&](const std::string& environment, const std::string& button) {
        const std::string script = "timeout 60 " +
                                   shareCommand("--url https://example.org/read", environment) +
                                   " & p=$!; /usr/bin/python3 " +
                                   quoted(PARLEY_SOURCE_DIR "/tests/share/sheet_reader.py") + " " +
                                   quoted(button) + " >" + quoted(heard) + "; wait $p";
        return run(
            onPrivateDisplay("env QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QT_ACCESSIBILITY=1 sh -c " +
                             quoted(script)) +
            " >/dev/null 2>&1");
    };
    startHost("--exit-after 1");
    EXPECT_EQ(readAndPress("", "Add to Favorites"), 0) << shareErrors();
    EXPECT_EQ(
        (std::vector<std::string>{"frame|Parley", "image|Parley|", "image||a link: example.org",
                                  "push button|Send to a Friend|", "push button|Add to Favorites|",
                                  "push button|Cancel|"}),
        readLines(heard));
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    EXPECT_EQ(readLines(records())[1],
              "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
              "\"url\":\"https://example.org/read\"}");

    EXPECT_EQ(readAndPress("LC_ALL=de_DE.UTF-8", "Abbrechen"), 2) << shareErrors();
    EXPECT_EQ(
        (std::vector<std::string>{"frame|Parley", "image|Parley|", "image||ein Link: example.org",
                                  "push button|An Freund senden|", "push button|Favorisieren|",
                                  "push button|Abbrechen|"}),
        readLines(heard));
}

// Escape cancels as Cancel does; Tab, Tab and Space press the favourites row.
TEST_F(ShareProgramsTest, KeysTypedIntoTheSheetCancelOrPressTheFocusedRow) {
    if (!canRunOnADisplay())
        GTEST_SKIP() << "needs Xvfb, xdotool and python3-pyatspi";
    auto type = [&](const std::string& keys) {
        return shareOnDisplay("--url https://example.org/typed",
                              "xdotool windowfocus --sync \"$w\" key " + keys);
    };
    EXPECT_EQ(type("Escape"), 2) << shareErrors();
    EXPECT_FALSE(stored("ParleyMacShareEntry").has_value());

    startHost("--exit-after 1");
    EXPECT_EQ(type("Tab Tab space"), 0) << shareErrors();
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    EXPECT_EQ(readLines(records())[1],
              "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
              "\"url\":\"https://example.org/typed\"}");
}
