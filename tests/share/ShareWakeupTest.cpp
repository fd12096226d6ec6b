// Waking the host: a running one gets exactly one notification, a stopped one exactly one launch.
#include "platform/core/RunningApplication.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::PropertyValue;

TEST_F(ShareTest, RunningHostGetsOneNotificationAndNoLaunch) {
    installFakeHost();
    ASSERT_TRUE(platform::RunningApplication::registerAsRunning(kHostId));
    NotificationCounter notifications;
    const std::string file = files_.writeText("a.txt", "a");
    auto controller = startShare({fileProvider(file)});
    controller->onClickFavToParley();
    runUntilIdle();
    ASSERT_TRUE(waitFor([&] { return notifications.count() == 1; }));
    waitFor([] { return false; }, std::chrono::milliseconds(300));
    EXPECT_EQ(notifications.count(), 1);
    EXPECT_EQ(launchCount(), 0);
    EXPECT_EQ(countLine(line("Parley is online.")), 1u);
}

TEST_F(ShareTest, StoppedHostIsLaunchedOnceAndNotNotified) {
    installFakeHost();
    NotificationCounter notifications;
    auto controller = startShare({linkProvider("https://example.org/")});
    controller->onClickSendToFriend();
    runUntilIdle();
    ASSERT_TRUE(waitFor([&] { return launchCount() >= 1; }));
    waitFor([] { return false; }, std::chrono::milliseconds(300));
    EXPECT_EQ(launchCount(), 1);
    EXPECT_EQ(notifications.count(), 0);
    EXPECT_EQ(countLine(line("Parley is offline.")), 1u);
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

// No application at the launch path: the launch fails quietly, the record is complete.
TEST_F(ShareTest, NoHostApplicationLeavesTheRecordInTheStore) {
    auto controller = startShare({linkProvider("https://example.org/kept")});
    controller->onClickFavToParley();
    runUntilIdle();
    EXPECT_EQ(countLine(line("Parley is offline.")), 1u);
    EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue("https://example.org/kept"));
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("favToParley"));
}

}  // namespace
}  // namespace share_test
