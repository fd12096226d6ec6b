// The built programs together: parley-share hands a share over to a running parley-host on a real
// session bus; bad arguments and a missing bus have their defined outcomes.
#include "platform/core/RunningApplication.h"
#include "tests/share/ShareTestSupport.h"

using namespace share_test;

// Files sent to a friend: the record lists the copies (names escaped) and the refused file with its
// size text; the host takes the copies and exits after its one notification.
TEST_F(ShareProgramsTest, RunningHostPrintsTheFileRecordWithEscapedNames) {
    // A record naming a file outside the container: the host leaves it where it is.
    const std::string outside = files_.writeText("private.txt", "p");
    storeEarlierShare({{"ParleyMacShareType", std::string("public.file-url")},
                       {"ParleyMacSharePathArray", StringArray{outside}}});
    startHost("--exit-after 1");
    EXPECT_TRUE(fs::exists(outside));
    const std::string odd = files_.writeText("say \"hi\"\tnow\\.txt", "o");
    const std::string big = files_.writeText("huge.iso", "");
    fs::resize_file(big, 157286400);
    EXPECT_EQ(share("--action send " + quoted(odd) + " " + quoted(big)), 0);
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    const std::string name = "say \\\"hi\\\"\\tnow\\\\.txt", line = readLines(records())[1];
    const std::string head =
        "{\"event\":\"notification\",\"type\":\"public.file-url\",\"entry\":\"sendToFriend\","
        "\"paths\":[\"" +
        containerPath() + "/" + name +
        "\"],\"invalidNames\":[\"huge.iso\"],\"invalidSizes\":[\"150.0M\"],\"received\":[\"" +
        std::getenv("XDG_DATA_HOME") + "/parley-host/received/";
    EXPECT_EQ(head, line.substr(0, head.size()));
    // The host took the copy out of the container into a folder of its own.
    EXPECT_EQ("/" + name + "\"]}", line.substr(line.rfind('/')));
    EXPECT_EQ(fs::directory_iterator(containerPath()), fs::directory_iterator());
    EXPECT_EQ((std::vector<std::string>{"ParleyMacShareType", "ParleyMacShareEntry",
                                        "ParleyMacSharePathArray", "ParleyMacShareInvalidFileNames",
                                        "ParleyMacShareInvalidFileSizes"}),
              keysOnDisk());
    // The host exits after its one notification and gives its name up.
    EXPECT_TRUE(waitFor([] {
        return platform::RunningApplication::runningApplicationsWithBundleIdentifier(kHostId)
            .empty();
    }));
}

// Bad arguments exit 64 with the usage. Runs that end without a hand-off: offscreen nobody can
// click, so the sheet is not left waiting; a display that cannot be opened is no display; a bundle
// without an identifier is refused; Cancel exits 2. None of them writes an entry.
TEST_F(ShareProgramsTest, RunsWithoutAHandOffAndSnapshotsExitWithTheirStatus) {
    const std::string file = quoted(files_.writeText("x.txt", "x"));
    const std::string stale = "-u QT_QPA_PLATFORM -u WAYLAND_DISPLAY DISPLAY=:9876";
    const struct {
        std::string arguments, environment;
        int status;
        const char* said;
    } cases[] = {
        {"--action fav", "", 64, "Usage: parley-share"},
        {file, "", 64, "no display"},
        {"--action cancel --url https://example.org/", stale, 2,
         "cannot be opened; running offscreen"},
        {"--bundle " + quoted(files_.file("no-bundle")) + " --action send --url https://x.org/", "",
         78, ""},
        {"--action cancel --url https://example.org/", "", 2, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        EXPECT_EQ(share(c.arguments, c.environment), c.status) << shareErrors();
        EXPECT_NE(shareErrors().find(c.said), std::string::npos);
        EXPECT_FALSE(stored("ParleyMacShareEntry"));
        EXPECT_FALSE(stored("ParleyMacShareUrl"));
    }
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));

    // The picture is the sheet as shown after the press, at the asked scale; nothing is handed
    // over.
    const std::string picture = files_.file("sheet.png");
    auto snapshot = [&](const std::string& before) {
        EXPECT_EQ(share(before + " --snapshot " + quoted(picture) +
                        " --scale 2 --url https://example.org/"),
                  0);
        return platform::Bitmap::readPNG(picture);
    };
    auto row = snapshot("--press fav");
    ASSERT_TRUE(row);
    // Between title and arrow: the favourites row tinted, the send-to-friend row not.
    EXPECT_EQ(row->pixelAt(501, 539), (platform::Rgba{222, 222, 222, 255}));
    EXPECT_EQ(row->pixelAt(501, 439), (platform::Rgba{0xF7, 0xF7, 0xF7, 255}));
    EXPECT_FALSE(stored("ParleyMacShareEntry").has_value());
    // No keyboard focus ring before the first Tab: the send-to-friend row's top edge is bare; once
    // Tab has reached the favourites row, its ring runs along that row's top edge.
    EXPECT_EQ(row->pixelAt(400, 378), (platform::Rgba{0xF7, 0xF7, 0xF7, 255}));
    auto ringed = snapshot("--focus fav");
    ASSERT_TRUE(ringed);
    EXPECT_EQ(ringed->pixelAt(400, 477), (platform::Rgba{153, 200, 249, 255}));
    // A disk that fills up while the picture is written.
    EXPECT_EQ(share("--snapshot /dev/full --url https://example.org/"), 73);
    EXPECT_NE(shareErrors().find("cannot write the snapshot"), std::string::npos);
}

// On a display the sheet waits for the person. Real clicks through an X server: on the
// favourites title the link goes to the running host; on Cancel nothing is handed over.
TEST_F(ShareProgramsTest, OnADisplayAPersonsClickOnTheSheetEndsTheRequest) {
    if (run("command -v Xvfb && command -v xdotool >/dev/null") != 0)
        GTEST_SKIP() << "needs Xvfb and xdotool";
    // |x| and |y| from the window's top-left corner, as X counts; a click that misses leaves the
    // sheet waiting, bounded here.
    auto clickSheet = [&](const std::string& shareArguments, int x, int y) {
        return shareOnDisplay(shareArguments, "xdotool mousemove --window \"$w\" " +
                                                  std::to_string(x) + " " + std::to_string(y) +
                                                  " click 1");
    };
    startHost("--exit-after 1");
    EXPECT_EQ(clickSheet("--url https://example.org/clicked", 57 + 75, 370 - (79 + 18 + 7)), 0)
        << shareErrors();
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    EXPECT_EQ(readLines(records())[1],
              "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
              "\"url\":\"https://example.org/clicked\"}");
    EXPECT_EQ(clickSheet(quoted(files_.writeText("kept.txt", "k")), 276 + 35, 370 - (28 + 11)), 2)
        << shareErrors();
    EXPECT_FALSE(std::filesystem::exists(containerPath() + "/kept.txt"));
}
