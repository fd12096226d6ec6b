// The built programs together: parley-share hands a share over to parley-host on a real session
// bus, or launches it; bad arguments and a missing bus have their defined outcomes.
#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "platform/core/RunningApplication.h"
#include "platform/ui/Bitmap.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

namespace fs = std::filesystem;
using platform::PropertyValue;

TEST_F(ShareProgramsTest, RunningHostPrintsTheLinkRecordOnItsNotification) {
    startHost("--exit-after 1");
    EXPECT_EQ(share("--action fav --url 'https://example.org/a?b=c&d=%22e%22'"), 0)
        << readAll(shareErrors());
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    const auto lines = readLines(records());
    EXPECT_EQ(lines[0].rfind("{\"event\":\"start\",", 0), 0u) << lines[0];
    EXPECT_EQ(lines[1],
              "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
              "\"url\":\"https://example.org/a?b=c&d=%22e%22\"}");
    // The host exits after its one notification and gives its name up.
    EXPECT_TRUE(waitFor([] {
        return platform::RunningApplication::runningApplicationsWithBundleIdentifier(kHostId)
            .empty();
    }));
    EXPECT_NE(readAll(shareErrors()).find("[ShareViewController]: Parley is online."),
              std::string::npos);
}

TEST_F(ShareProgramsTest, RunningHostPrintsTheFileRecordWithEscapedNames) {
    startHost("--exit-after 2");
    const std::string plain = files_.writeText("plain.txt", "p");
    const std::string odd = files_.writeText("say \"hi\"\tnow\\.txt", "o");
    const std::string big = files_.file("huge.iso");
    std::ofstream(big).close();
    fs::resize_file(big, 157286400);
    EXPECT_EQ(share("--action send " + quoted(plain) + " " + quoted(big)), 0);
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    EXPECT_EQ(share("--action fav " + quoted(odd)), 0);
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 3; }));
    const std::string c = containerPath();
    const auto lines = readLines(records());
    EXPECT_EQ(lines[1],
              "{\"event\":\"notification\",\"type\":\"public.file-url\",\"entry\":\"sendToFriend\","
              "\"paths\":[\"" +
                  c +
                  "/plain.txt\"],\"invalidNames\":[\"huge.iso\"],"
                  "\"invalidSizes\":[\"150.0M\"]}");
    EXPECT_EQ(lines[2],
              "{\"event\":\"notification\",\"type\":\"public.file-url\",\"entry\":\"favToParley\","
              "\"paths\":[\"" +
                  c +
                  "/say \\\"hi\\\"\\tnow\\\\.txt\"],\"invalidNames\":[],"
                  "\"invalidSizes\":[]}");
}

// No host running: the share launches Parley.app from the applications folder, and the launched
// host reads the whole record at its start.
TEST_F(ShareProgramsTest, StoppedHostIsLaunchedAndReadsTheRecordAtStart) {
    const std::string applications = fs::path(PARLEY_APP_DIR).parent_path().string();
    const std::string file = files_.writeText("launch.txt", "l");
    EXPECT_EQ(share("--action fav " + quoted(file),
                    "PARLEY_APPLICATIONS_DIR=" + quoted(applications) +
                        " PARLEY_HOST_ONCE=1 PARLEY_HOST_RECORD_FILE=" + quoted(records())),
              0);
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 1; }));
    EXPECT_EQ(readLines(records())[0],
              "{\"event\":\"start\",\"type\":\"public.file-url\",\"entry\":\"favToParley\","
              "\"paths\":[\"" +
                  containerPath() +
                  "/launch.txt\"],\"invalidNames\":[],"
                  "\"invalidSizes\":[]}");
    EXPECT_NE(readAll(shareErrors()).find("[ShareViewController]: Parley is offline."),
              std::string::npos);
}

TEST_F(ShareProgramsTest, BadArgumentsExitWithUsage) {
    const std::string file = files_.writeText("x.txt", "x");
    for (const std::string& arguments : std::vector<std::string>{
             "--action fav", "--action fav --bogus " + quoted(file),
             "--action fav --url https://example.org/ " + quoted(file),
             "--action maybe " + quoted(file), "--action fav --url not-a-url",
             "--press maybe " + quoted(file), "--action fav --scale 2 " + quoted(file),
             "--snapshot x.png --scale 0 " + quoted(file),
             "--snapshot x.png --scale 2x " + quoted(file), std::string("--action"),
             std::string("")}) {
        EXPECT_EQ(share(arguments), 64) << arguments;
        EXPECT_NE(readAll(shareErrors()).find("Usage: parley-share"), std::string::npos);
    }
    EXPECT_EQ(run(quoted(kShareProgram) + " --help >" + quoted(files_.file("help"))), 0);
    EXPECT_NE(readAll(files_.file("help")).find("--action"), std::string::npos);
    EXPECT_FALSE(stored("ParleyMacShareType").has_value());
}

// Runs that end without a hand-off: offscreen nobody can click, so the sheet is not left
// waiting; a display that cannot be opened is no display (offscreen, no abort); a bundle
// without an identifier is refused; Cancel exits 2. None of them writes an entry.
TEST_F(ShareProgramsTest, RunsWithoutAHandOffExitWithTheirStatus) {
    const std::string stale = "-u QT_QPA_PLATFORM -u WAYLAND_DISPLAY DISPLAY=:9876";
    const struct {
        std::string arguments, environment;
        int status;
        const char* said;
    } cases[] = {
        {quoted(files_.writeText("x.txt", "x")), "", 64, "no display"},
        {"--action cancel --url https://example.org/", stale, 2,
         "cannot be opened; running offscreen"},
        {"--url https://example.org/", stale, 64, "no display"},
        {"--bundle " + quoted(files_.file("no-bundle")) + " --action send --url https://x.org/", "",
         78, ""},
        {"--action cancel --url https://example.org/", "", 2, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.arguments);
        EXPECT_EQ(share(c.arguments, c.environment), c.status) << readAll(shareErrors());
        EXPECT_NE(readAll(shareErrors()).find(c.said), std::string::npos);
        EXPECT_FALSE(stored("ParleyMacShareEntry").has_value());
        EXPECT_FALSE(stored("ParleyMacShareUrl").has_value());
    }
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
}

// The picture is the sheet as shown after the press, at the asked scale; nothing is handed over.
TEST_F(ShareProgramsTest, SnapshotShowsThePressedTargetAndHandsNothingOver) {
    const std::string rowPicture = files_.file("row.png");
    EXPECT_EQ(share("--press fav --snapshot " + quoted(rowPicture) +
                    " --scale 2 --url https://example.org/"),
              0);
    auto row = platform::Bitmap::readPNG(rowPicture);
    ASSERT_TRUE(row);
    EXPECT_EQ(row->pixelWidth(), 752);
    EXPECT_EQ(row->pixelHeight(), 740);
    // Between title and arrow: the favourites row tinted, the send-to-friend row not.
    EXPECT_EQ(row->pixelAt(501, 539), (platform::Rgba{222, 222, 222, 255}));
    EXPECT_EQ(row->pixelAt(501, 439), (platform::Rgba{0xF7, 0xF7, 0xF7, 255}));
    EXPECT_FALSE(stored("ParleyMacShareEntry").has_value());

    const std::string cancelPicture = files_.file("cancel.png");
    EXPECT_EQ(share("--press cancel --snapshot " + quoted(cancelPicture) + " " +
                    quoted(files_.writeText("y.txt", "y"))),
              0);
    auto cancel = platform::Bitmap::readPNG(cancelPicture);
    ASSERT_TRUE(cancel);
    EXPECT_EQ(cancel->pixelWidth(), 376);
    EXPECT_EQ(cancel->pixelAt(280, 329), (platform::Rgba{222, 222, 222, 255}));
    EXPECT_FALSE(fs::exists(containerPath() + "/y.txt"));

    // A missing folder, and a disk that fills up while the picture is written.
    for (const std::string& path :
         {files_.file("no-such-dir/sheet.png"), std::string("/dev/full")}) {
        EXPECT_EQ(share("--snapshot " + quoted(path) + " --url https://example.org/"), 73) << path;
        EXPECT_NE(readAll(shareErrors()).find("cannot write the snapshot"), std::string::npos);
    }
}

// On a display the sheet waits for the person. Real clicks through an X server: on the
// favourites title the link goes to the running host; on Cancel nothing is handed over.
TEST_F(ShareProgramsTest, OnADisplayAPersonsClickOnTheSheetEndsTheRequest) {
    if (run("sh -c 'command -v xvfb-run && command -v xdotool' >/dev/null") != 0)
        GTEST_SKIP() << "needs xvfb-run and xdotool";
    // |x| and |y| from the window's top-left corner, as X counts.
    auto clickSheet = [&](const std::string& shareArguments, int x, int y) {
        // A click that misses leaves the sheet waiting: bounded here.
        const std::string script =
            "timeout 60 " + quoted(kShareProgram) + " " + shareArguments + " 2>" +
            quoted(shareErrors()) +
            " & p=$!; w=$(timeout 30 xdotool search --sync --onlyvisible --name '^Parley$' | "
            "head -n 1); xdotool mousemove --window \"$w\" " +
            std::to_string(x) + " " + std::to_string(y) + " click 1; wait $p";
        return run("env -u QT_QPA_PLATFORM xvfb-run -a sh -c " + quoted(script) + " >/dev/null");
    };

    startHost("--exit-after 1");
    EXPECT_EQ(clickSheet("--url https://example.org/clicked", 57 + 75, 370 - (79 + 18 + 7)), 0)
        << readAll(shareErrors());
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    EXPECT_EQ(readLines(records())[1],
              "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
              "\"url\":\"https://example.org/clicked\"}");

    EXPECT_EQ(clickSheet(quoted(files_.writeText("kept.txt", "k")), 276 + 35, 370 - (28 + 11)), 2)
        << readAll(shareErrors());
    EXPECT_FALSE(fs::exists(containerPath() + "/kept.txt"));
}

// Without a session bus, or with one that is gone, the share still completes in bounded time:
// the host cannot be seen running, so its launch is attempted, and the record is in the store.
TEST_F(ShareProgramsTest, MissingOrDeadSessionBusStillCompletesTheShare) {
    const std::string file = files_.writeText("nobus.txt", "n");
    const std::vector<std::string> environments = {
        "-u DBUS_SESSION_BUS_ADDRESS",
        "DBUS_SESSION_BUS_ADDRESS=unix:path=" + files_.file("no-such-socket"),
    };
    for (const std::string& environment : environments) {
        const auto started = Clock::now();
        EXPECT_EQ(share("--action send " + quoted(file), environment), 0) << environment;
        EXPECT_LT(Clock::now() - started, std::chrono::seconds(30)) << environment;
        EXPECT_NE(readAll(shareErrors()).find("[ShareViewController]: Parley is offline."),
                  std::string::npos)
            << readAll(shareErrors());
        EXPECT_EQ(stored("ParleyMacSharePathArray"),
                  PropertyValue(StringArray{containerPath() + "/nobus.txt"}));
    }
}

}  // namespace
}  // namespace share_test
