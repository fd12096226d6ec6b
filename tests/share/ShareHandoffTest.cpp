// Start-up (identity, group, classification), the link hand-off, waking the host, Cancel.
#include <gmock/gmock.h>

#include "platform/core/RunningApplication.h"
#include "tests/share/ShareTestSupport.h"

using namespace share_test;

// The whole sequence of one link share to a running host, with the load held back until the request
// has been completed, so that the order of the lines is fixed.
TEST_F(ShareTest, LinkAddedToFavouritesWakesARunningHostOnceAfterTheUrlIsFlushed) {
    ASSERT_TRUE(platform::RunningApplication::registerAsRunning(kHostId));
    int notifications = 0;
    const auto observer =
        platform::DistributedNotificationCenter::defaultCenter().addObserverForName(
            "ParleyMacShare_Notification", [&] { ++notifications; });
    ASSERT_NE(observer, nullptr);
    // Keys of an earlier file share stay; the file lists keys by their last write.
    storeEarlierShare({{"ParleyMacShareUrl", std::string("https://earlier/")},
                       {"ParleyMacShareEntry", std::string("sendToFriend")},
                       {"ParleyMacSharePathArray", StringArray{"/earlier/file"}}});
    const std::string url = "https://example.org/a%20b?q=1&r=2#frag";
    GatedLoad load(platform::Url::URLWithString(url), platform::kUTTypeURL);
    auto controller = startShare({load.provider()});
    controller->onClickFavToParley();
    EXPECT_EQ(context_->state(), State::Completed);
    ASSERT_TRUE(
        waitFor([&] { return countLine(readBackLine("favToParley", "ParleyMacShareEntry")); }));
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("favToParley"));
    EXPECT_EQ(controller->wakeupCount(), 0);
    load.release();
    runUntilIdle();
    ASSERT_TRUE(waitFor([&] { return notifications >= 1; }));

    EXPECT_EQ(shareLines(), (std::vector<std::string>{
                                line("bundleId[" + kHostId + "]"),
                                line("teamIdentifier[" + kTeamId + "]"),
                                line("layoutContent invoked."),
                                readBackLine("public.url", "ParleyMacShareType"),
                                line("onClickFavToParley invoked."),
                                readBackLine("favToParley", "ParleyMacShareEntry"),
                                readBackLine(url, "ParleyMacShareUrl"),
                                line("Parley is online."),
                            }));
    ASSERT_EQ(controller->wakeupCount(), 1);
    EXPECT_FALSE(controller->wakeups()[0].onMainThread);
    EXPECT_EQ(controller->wakeups()[0].storedUrl, PropertyValue(url));
    EXPECT_EQ(stored("ParleyMacSharePathArray"), PropertyValue(StringArray{"/earlier/file"}));
    EXPECT_EQ((std::vector<std::string>{"ParleyMacSharePathArray", "ParleyMacShareType",
                                        "ParleyMacShareEntry", "ParleyMacShareUrl"}),
              keysOnDisk());
    // Nothing more arrives: a notification posted now is the next one heard.
    ASSERT_TRUE(platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
        "ParleyMacShare_Notification", nullptr, nullptr, true));
    ASSERT_TRUE(waitFor([&] { return notifications >= 2; }));
    EXPECT_EQ(2, notifications);
    EXPECT_EQ(1, context_->endingCount());
}

// Sent to a friend, a link is handed over at once on the load's thread; a load that delivers
// nothing removes the key, reads back nothing and still wakes the host.
TEST_F(ShareTest, LinkSentToAFriendWakesAtOnceEvenWithoutAUrl) {
    storeEarlierShare({{"ParleyMacShareUrl", std::string("https://old.example/")}});
    auto empty = platform::ItemProvider::withTypes({platform::kUTTypeURL});
    empty->registerItemForTypeIdentifier(platform::kUTTypeURL,
                                         [] { return std::optional<platform::Url>(); });
    auto controller = startShare({empty});
    controller->onClickSendToFriend();
    runUntilIdle();
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("sendToFriend"));
    EXPECT_FALSE(stored("ParleyMacShareUrl").has_value());
    ASSERT_EQ(controller->wakeupCount(), 1);
    EXPECT_FALSE(controller->wakeups()[0].onMainThread);
    // The entry's read-back follows the start of the load, whose thread may log first.
    const auto lines = shareLines();
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines[lines.size() - 4], line("onClickSendToFriend invoked."));
    EXPECT_THAT(std::vector<std::string>(lines.end() - 3, lines.end() - 1),
                testing::UnorderedElementsAre(readBackLine("sendToFriend", "ParleyMacShareEntry"),
                                              readBackLine("(null)", "ParleyMacShareUrl")));
    EXPECT_EQ(lines.back(), line("Parley is offline."));
}

// Other types, an item without attachments and a request without items complete at once and write
// nothing: the earlier share's type is read back. An action then records the entry only.
TEST_F(ShareTest, UnknownTypesCompleteAtOnceAndHandNothingOver) {
    storeEarlierShare({{"ParleyMacShareType", std::string("public.url")}});
    const Items cases[] = {Items{std::make_shared<platform::ExtensionItem>(std::vector{
                               platform::ItemProvider::withTypes({"public.plain-text"})})},
                           Items{std::make_shared<platform::ExtensionItem>()}, Items{}};
    for (const Items& items : cases) {
        SCOPED_TRACE(&items - cases);
        resetLog();
        auto controller = startShareWithItems(items);
        EXPECT_EQ(State::Completed, context_->state());
        EXPECT_EQ(1, context_->endingCount());
        EXPECT_EQ(shareLines(), (std::vector<std::string>{
                                    line("bundleId[" + kHostId + "]"),
                                    line("teamIdentifier[" + kTeamId + "]"),
                                    "[ShareViewController][error]: ShareType is unknown.",
                                    line("layoutContent invoked."),
                                    "[ShareViewController][error]: ShareType is unknown.",
                                    readBackLine("public.url", "ParleyMacShareType"),
                                }));
        controller->onClickFavToParley();
        runUntilIdle();
        EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("favToParley"));
        EXPECT_EQ(controller->wakeupCount(), 0);
        EXPECT_FALSE(stored("ParleyMacSharePathArray"));
        EXPECT_FALSE(stored("ParleyMacShareUrl"));
    }
}

// The group is the TeamIdentifier run together with the host identifier; without a usable
// TeamIdentifier it is the host identifier alone, and that is said. The bundle identifier loses its
// last component (taken whole without a dot).
TEST_F(ShareTest, GroupAndHostIdentifierComeFromTheBundle) {
    const std::string fallback =
        "[ShareViewController][error]: TeamIdentifier is missing or not a string; the group is [" +
        kHostId + "].";
    const struct {
        std::string teamXml, bundleId, group, hostId, team;
        size_t fallbacks;
    } cases[] = {
        {"<string>TEAM</string>", "a.b.ext", "TEAM" + kHostId, "a.b", "TEAM", 0},
        {"", "ext", kHostId, "ext", "(null)", 1},
        {"<array><string>X</string></array>", "x.y", kHostId, "x", "", 1},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.teamXml + " " + c.bundleId);
        useBundle(c.teamXml, c.bundleId);
        resetLog();
        startShare({linkProvider("https://example.org/")});
        EXPECT_EQ(stored("ParleyMacShareType", c.group), PropertyValue("public.url"));
        const auto lines = shareLines();
        EXPECT_EQ(lines.at(0), line("bundleId[" + c.hostId + "]"));
        if (!c.team.empty()) {
            EXPECT_EQ(lines.at(1), line("teamIdentifier[" + c.team + "]"));
        }
        EXPECT_EQ(countLine(fallback), c.fallbacks);
    }
}

// Cancel hands the user-cancelled error over and writes nothing: the type of this share and the
// entry of the one before stay.
TEST_F(ShareTest, CancelWritesNothing) {
    storeEarlierShare({{"ParleyMacShareEntry", std::string("sendToFriend")}});
    auto controller = startShare({linkProvider("https://example.org/")});
    const size_t linesBefore = shareLines().size();
    controller->cancel();
    runUntilIdle();
    EXPECT_EQ(context_->state(), State::Cancelled);
    const auto error = context_->cancellationError().value_or(platform::Error{});
    EXPECT_EQ("NSCocoaErrorDomain", error.domain);
    EXPECT_EQ(3072L, error.code);
    EXPECT_EQ(linesBefore, shareLines().size());
    EXPECT_EQ(0, controller->wakeupCount());
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("sendToFriend"));
}
