// Shares that meet something else: another share within the send delay, a store whose lock
// another writer holds, a bus that stalls, many shares at once. The host reads each record whole
// and is never woken for a record that was not written.
#include <signal.h>

#include <thread>

#include "platform/core/FileLock.h"
#include "platform/core/RunningApplication.h"
#include "tests/share/ShareTestSupport.h"
#include "tests/support/ScopedEnv.h"

using namespace share_test;

// A running host in this process that takes 200 ms to read the record at each notification
// (a share keeps the record its own for longer than that).
struct HostHere {
    HostHere() { EXPECT_TRUE(platform::RunningApplication::registerAsRunning(kHostId)); }
    std::vector<std::optional<PropertyValue>> read;  // type, entry, paths at the last one
    Clock::time_point readAt;
    int count = 0;
    std::unique_ptr<platform::DistributedNotificationCenter::Observer> observer =
        platform::DistributedNotificationCenter::defaultCenter().addObserverForName(
            "ParleyMacShare_Notification",
            [this] {
                platform::MainQueue::after(200000000, [this] {
                    read = {ShareTest::stored("ParleyMacShareType"),
                            ShareTest::stored("ParleyMacShareEntry"),
                            ShareTest::stored("ParleyMacSharePathArray")};
                    readAt = Clock::now();
                    ++count;
                });
            });
};

// A photo sent to a friend and, within the second before its host is woken, another sheet
// opened and cancelled: the host reads the photo's record; the second sheet shows after that.
TEST_F(ShareTest, ASheetOpenedWithinTheSendDelayWaitsForTheHostsRead) {
    HostHere host;
    auto photo = startShare({fileProvider(files_.writeText("photo.jpg", "jpeg"))});
    photo->onClickSendToFriend();
    ASSERT_TRUE(waitFor([&] { return countLine(line("fileUrlArr count[1].")) == 1; }));
    auto other = startShare({linkProvider("https://example.org/other")});
    const Clock::time_point shown = Clock::now();
    other->cancel();
    runUntilIdle();
    EXPECT_EQ(1, host.count);
    EXPECT_EQ(host.read, (std::vector<std::optional<PropertyValue>>{
                             PropertyValue("public.file-url"), PropertyValue("sendToFriend"),
                             PropertyValue(StringArray{containerPath() + "/photo.jpg"})}));
    EXPECT_GT(shown, host.readAt);
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
}

// Another writer holds the store's lock: the sheet is built at once and shows after the bounded
// wait; held again when the link or the file arrives, it fails that write after its own wait,
// with one error line, and the host is not woken.
TEST_F(ShareTest, AStoreLockHeldElsewhereNeverFreezesTheSheetNorWakesTheHost) {
    const std::string lockPath = platform::DefaultsSuite::pathForSuite(kGroup) + ".lock";
    std::string error;
    auto held = platform::FileLock::acquire(lockPath, std::chrono::seconds(0), error);
    const struct {
        std::optional<platform::Url> item;
        const char* type;
        std::string failed;
    } kCases[] = {{platform::Url::URLWithString("https://example.org/"), platform::kUTTypeURL,
                   "ParleyMacShareUrl"},
                  {platform::Url::fileURLWithPath(files_.writeText("photo.jpg", "j")),
                   platform::kUTTypeFileURL, "the file lists"}};
    for (const auto& c : kCases) {
        SCOPED_TRACE(c.failed);
        ASSERT_TRUE(held) << error;
        GatedLoad load(c.item, c.type);
        context_ = std::make_shared<platform::ExtensionContext>(
            Items{std::make_shared<ExtensionItem>(Providers{load.provider()})});
        auto controller = ShareViewController::create<RecordingController>();
        controller->setExtensionContext(context_);
        const Clock::time_point start = Clock::now();
        controller->view();
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
        EXPECT_FALSE(controller->readyToShow());
        ASSERT_TRUE(waitFor([&] { return controller->readyToShow(); }));
        held.reset();
        resetLog();
        controller->onClickFavToParley();
        ASSERT_TRUE(
            waitFor([&] { return countLine(readBackLine("favToParley", "ParleyMacShareEntry")); }));
        held = platform::FileLock::acquire(lockPath, std::chrono::seconds(0), error);
        load.release();
        runUntilIdle();
        EXPECT_LT(Clock::now() - start, std::chrono::seconds(15));
        EXPECT_TRUE(controller->handoffFailed());
        EXPECT_EQ(0, controller->wakeupCount());
        EXPECT_EQ(1u, countLine("[ShareViewController][error]: the hand-off record could not be "
                                "written (" +
                                c.failed + "); Parley is not woken."));
    }
}

// The bus stops (SIGSTOP) at the click, for a moment and then for good: the host is notified,
// never launched; a stopped bus takes the notification into its queue and delivers it when it
// wakes, and the wake-up gives up within 10 s.
TEST_F(ShareTest, ASlowBusDelaysTheNotificationButNeverLosesIt) {
    const std::string pidFile = files_.file("bus.pid");
    ASSERT_EQ(0, run("dbus-daemon --session --fork --print-pid=1 --address=unix:path=" +
                     files_.file("bus") + " >" + quoted(pidFile)));
    const pid_t bus = std::stoi(readAll(pidFile));
    const std::shared_ptr<void> ending(nullptr, [bus](void*) {
        ::kill(bus, SIGCONT);
        ::kill(bus, SIGTERM);
    });
    ScopedEnv address("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + files_.file("bus"));
    HostHere host;
    for (const bool forGood : {false, true}) {
        SCOPED_TRACE(forGood ? "for good" : "for a moment");
        auto controller = startShare({linkProvider("https://example.org/slow")});
        ASSERT_EQ(0, ::kill(bus, SIGSTOP));
        const Clock::time_point clicked = Clock::now();
        controller->onClickFavToParley();
        if (!forGood) {
            std::this_thread::sleep_for(std::chrono::seconds(1));  // the stall itself
            ::kill(bus, SIGCONT);
        }
        runUntilIdle();
        EXPECT_LT(Clock::now() - clicked, std::chrono::seconds(10));
        ::kill(bus, SIGCONT);
        EXPECT_TRUE(waitFor([&] { return host.count == 1 + forGood; }));
    }
    EXPECT_EQ(1u, countLine(line("Parley is online.")));
    EXPECT_EQ(1u, countLine(line("the session bus does not say whether Parley is online; "
                                 "notifying it rather than starting a second one.")));
    EXPECT_EQ(0u, countLine(line("Parley is offline.")));
    // Exactly one each: a notification posted now is the next one heard.
    platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
        "ParleyMacShare_Notification", nullptr, nullptr, true);
    EXPECT_TRUE(waitFor([&] { return host.count >= 3; }));
    EXPECT_EQ(3, host.count);
}

// Twelve shares at once against the reference host, links and photos all named IMG_0001.jpg:
// each share is read once and whole, and each photo the host takes is that share's own.
TEST_F(ShareProgramsTest, ManySharesAtOnceAreEachReadOnceAndWhole) {
    startHost("");
    std::string script = "s=0; ", waits;
    for (int i = 0; i < 12; ++i) {
        const std::string n = std::to_string(i);
        fs::create_directories(files_.file(n));
        const std::string what = i % 3
                                     ? "--url https://example.org/" + n
                                     : quoted(files_.writeText(n + "/IMG_0001.jpg", "photo " + n));
        script += shareCommand(std::string("--action ") + (i % 2 ? "send " : "fav ") + what) +
                  " & p" + n + "=$!; ";
        waits += "wait $p" + n + " || s=1; ";
    }
    ASSERT_EQ(0, run(script + waits + "exit $s"));
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 13; }));
    const std::vector<std::string> lines = readLines(records());
    for (int i = 0; i < 12; ++i) {
        SCOPED_TRACE(i);
        const std::string n = std::to_string(i);
        const std::string head = "{\"event\":\"notification\",\"type\":\"public." +
                                 std::string(i % 3 ? "url" : "file-url") + "\",\"entry\":\"" +
                                 (i % 2 ? "sendToFriend" : "favToParley") + "\",";
        const std::string photo = head + "\"paths\":[\"" + containerPath() +
                                  "/IMG_0001.jpg\"],\"invalidNames\":[],\"invalidSizes\":[],"
                                  "\"received\":[\"";
        // A photo's record names where the host put it; what lies there is that share's photo.
        EXPECT_EQ(1, std::count_if(lines.begin(), lines.end(), [&](const std::string& l) {
                      return i % 3 ? l == head + "\"url\":\"https://example.org/" + n + "\"}"
                                   : l.rfind(photo, 0) == 0 &&
                                         readAll(l.substr(photo.size(), l.size() - photo.size() -
                                                                            3)) == "photo " + n;
                  }));
    }
}
