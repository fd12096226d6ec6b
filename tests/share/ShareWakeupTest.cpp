// Waking the host: a running one gets exactly one notification, a stopped one exactly one launch.
#include "platform/core/RunningApplication.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::PropertyValue;

// A running host gets exactly one notification and no launch; a stopped one exactly one launch.
TEST_F(ShareTest, RunningHostIsNotifiedOnceAndAStoppedOneLaunchedOnce) {
    installFakeHost();
    for (bool running : {false, true}) {
        SCOPED_TRACE(running ? "running" : "stopped");
        if (running) {
            ASSERT_TRUE(platform::RunningApplication::registerAsRunning(kHostId));
        }
        log_ = std::make_unique<platform::LogCapture>();
        NotificationCounter notifications;
        auto controller = startShare({fileProvider(files_.writeText("a.txt", "a"))});
        controller->onClickFavToParley();
        runUntilIdle();
        ASSERT_TRUE(waitFor([&] { return notifications.count() + launchCount() >= 1; }));
        waitFor([] { return false; }, std::chrono::milliseconds(300));
        EXPECT_EQ(notifications.count(), running ? 1 : 0);
        EXPECT_EQ(launchCount(), 1);  // the stopped round's launch, and none after
        EXPECT_EQ(countLine(line(running ? "Parley is online." : "Parley is offline.")), 1u);
    }
}

// Files sent to a friend notify a running host a second after the action, not before.
TEST_F(ShareTest, RunningHostHearsOfFilesSentToAFriendAfterTheDelay) {
    ASSERT_TRUE(platform::RunningApplication::registerAsRunning(kHostId));
    NotificationCounter notifications;
    const std::string file = files_.writeText("a.txt", "a");
    auto controller = startShare({fileProvider(file)});
    const Clock::time_point clicked = Clock::now();
    controller->onClickSendToFriend();
    ASSERT_TRUE(waitFor([&] { return notifications.count() == 1; }));
    EXPECT_GE(notifications.lastTime() - clicked, std::chrono::seconds(1));
    runUntilIdle();
}

}  // namespace
}  // namespace share_test
