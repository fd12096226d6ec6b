// The two actions and the hand-off of a link: entry, URL, read-backs and the wake-up.
#include "platform/core/RunningApplication.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::ExtensionContext;
using platform::PropertyValue;

// The whole sequence of one link share to a running host, with the load held back until the
// request has been completed, so that the order of the lines is fixed.
TEST_F(ShareTest, LinkAddedToFavouritesWakesARunningHostOnceAfterTheUrlIsFlushed) {
    ASSERT_TRUE(platform::RunningApplication::registerAsRunning(kHostId));
    NotificationCounter notifications;
    // Keys of an earlier file share stay; an earlier URL is overwritten.
    storeEarlierShare({{"ParleyMacSharePathArray", StringArray{"/earlier/file"}},
                       {"ParleyMacShareUrl", std::string("https://old.example/")}});
    const std::string url = "https://example.org/a%20b?q=1&r=2#frag";
    GatedLoad load(platform::Url::URLWithString(url), platform::kUTTypeURL);

    auto controller = startShare({load.provider()});
    controller->onClickFavToParley();
    EXPECT_EQ(controller->shareEntry(), ShareEntryFavToParley);
    EXPECT_EQ(context_->state(), ExtensionContext::State::Completed);
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("favToParley"));
    EXPECT_EQ(controller->wakeupCount(), 0);

    load.release();
    runUntilIdle();
    ASSERT_TRUE(waitFor([&] { return notifications.count() >= 1; }));

    EXPECT_EQ(shareLines(), (std::vector<std::string>{
                                line("bundleId[" + kHostId + "]"),
                                line("teamIdentifier[" + kTeamId + "]"),
                                readBackLine("public.url", "ParleyMacShareType"),
                                line("layoutContent invoked."),
                                line("onClickFavToParley invoked."),
                                readBackLine("favToParley", "ParleyMacShareEntry"),
                                readBackLine(url, "ParleyMacShareUrl"),
                                line("Parley is online."),
                            }));
    ASSERT_EQ(controller->wakeupCount(), 1);
    const auto wakeup = controller->wakeups().front();
    EXPECT_FALSE(wakeup.onMainThread);
    EXPECT_EQ(wakeup.storedUrl, PropertyValue(url));
    EXPECT_EQ(stored("ParleyMacSharePathArray"), PropertyValue(StringArray{"/earlier/file"}));
    EXPECT_EQ(context_->endingCount(), 1);
    // Nothing more arrives later.
    waitFor([] { return false; }, std::chrono::milliseconds(300));
    EXPECT_EQ(notifications.count(), 1);
}

// Sent to a friend, a link is handed over exactly like a favourite: no delay, on the load's
// thread.
TEST_F(ShareTest, LinkSentToAFriendWakesAtOnceOnTheLoadThread) {
    auto controller = startShare({linkProvider("https://example.org/")});
    controller->onClickSendToFriend();
    runUntilIdle();
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("sendToFriend"));
    EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue("https://example.org/"));
    ASSERT_EQ(controller->wakeupCount(), 1);
    EXPECT_FALSE(controller->wakeups().front().onMainThread);
    EXPECT_EQ(countLine(line("onClickSendToFriend invoked.")), 1u);
    EXPECT_EQ(countLine(readBackLine("sendToFriend", "ParleyMacShareEntry")), 1u);
    EXPECT_EQ(countLine(line("Parley is offline.")), 1u);
}

// A load that delivers nothing removes the key, reads back nothing and still wakes the host.
TEST_F(ShareTest, LinkLoadWithoutUrlRemovesTheKeyAndStillWakes) {
    storeEarlierShare({{"ParleyMacShareUrl", std::string("https://old.example/")}});
    auto provider = platform::ItemProvider::withTypes({platform::kUTTypeURL});
    provider->registerItemForTypeIdentifier(platform::kUTTypeURL,
                                            [] { return std::optional<platform::Url>(); });
    auto controller = startShare({provider});
    ASSERT_EQ(controller->shareType(), ShareTypeUrl);
    controller->onClickFavToParley();
    runUntilIdle();
    EXPECT_FALSE(stored("ParleyMacShareUrl").has_value());
    EXPECT_EQ(countLine(readBackLine("(null)", "ParleyMacShareUrl")), 1u);
    EXPECT_EQ(controller->wakeupCount(), 1);
}

// A file share after a link share leaves the link's URL in the store.
TEST_F(ShareTest, FileShareAfterLinkShareLeavesTheUrl) {
    {
        auto controller = startShare({linkProvider("https://example.org/first")});
        controller->onClickFavToParley();
        runUntilIdle();
    }
    const std::string file = files_.writeText("a.txt", "a");
    auto controller = startShare({fileProvider(file)});
    controller->onClickFavToParley();
    runUntilIdle();
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.file-url"));
    EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue("https://example.org/first"));
    EXPECT_EQ(stored("ParleyMacSharePathArray"),
              PropertyValue(StringArray{containerPath() + "/a.txt"}));
}

// The controller lives until its last completion has run, even when nobody else holds it.
TEST_F(ShareTest, PendingLoadsKeepTheControllerAlive) {
    GatedLoad load(platform::Url::URLWithString("https://example.org/late"), platform::kUTTypeURL);
    std::weak_ptr<RecordingController> weak;
    {
        auto controller = startShare({load.provider()});
        controller->onClickSendToFriend();
        weak = controller;
    }
    EXPECT_FALSE(weak.expired());
    load.release();
    runUntilIdle();
    EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue("https://example.org/late"));
    EXPECT_EQ(countLine(line("Parley is offline.")), 1u);
    EXPECT_TRUE(waitFor([&] { return weak.expired(); }, std::chrono::seconds(5)));
}

}  // namespace
}  // namespace share_test
