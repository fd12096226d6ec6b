// Start-up: identity, the group, the store and the classification of the shared item.
#include <filesystem>
#include <fstream>

#include "platform/core/Error.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::ExtensionContext;
using platform::NSMakeRect;
using platform::PropertyValue;

TEST_F(ShareTest, LinkIsClassifiedAndItsTypeStoredAndReadBack) {
    auto controller = startShare({linkProvider("https://example.org/article")});

    EXPECT_EQ(controller->nibName(), "ShareViewController");
    EXPECT_EQ(controller->shareType(), ShareTypeUrl);
    EXPECT_EQ(controller->shareEntry(), ShareEntryNone);
    EXPECT_EQ(controller->bundleId(), kHostId);
    EXPECT_EQ(controller->shareFolderName(), kGroup);
    EXPECT_EQ(controller->view()->frame(), NSMakeRect(0, 0, 376, 370));
    EXPECT_EQ(controller->extensionItem(), context_->inputItems().front());
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
    EXPECT_EQ(context_->state(), ExtensionContext::State::Pending);
    EXPECT_EQ(shareLines(), (std::vector<std::string>{
                                line("bundleId[" + kHostId + "]"),
                                line("teamIdentifier[" + kTeamId + "]"),
                                readBackLine("public.url", "ParleyMacShareType"),
                                line("layoutContent invoked."),
                            }));
}

TEST_F(ShareTest, FileUrlIsAFileShareAndOnlyTheFirstAttachmentDecides) {
    const std::string file = files_.writeText("note.txt", "hello");
    {
        auto controller = startShare({fileProvider(file), linkProvider("https://example.org/")});
        EXPECT_EQ(controller->shareType(), ShareTypeFile);
        EXPECT_EQ(controller->view()->frame(), NSMakeRect(0, 0, 376, 370));
        EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.file-url"));
    }
    {
        auto controller = startShare({linkProvider("https://example.org/"), fileProvider(file)});
        EXPECT_EQ(controller->shareType(), ShareTypeUrl);
        EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
    }
}

// Plain text, an item without attachments and a request without items are all unknown: the
// request completes at once, nothing is written, the earlier share's type is read back.
TEST_F(ShareTest, UnknownTypesCompleteAtOnceAndWriteNothing) {
    auto first = startShare({platform::ItemProvider::withTypes({"public.image"})});
    EXPECT_EQ(shareLines()[2], "[ShareViewController][error]: ShareType is unknown.");
    EXPECT_EQ(shareLines()[3], readBackLine("(null)", "ParleyMacShareType"));
    EXPECT_FALSE(stored("ParleyMacShareType").has_value());
    storeEarlierShare({{"ParleyMacShareType", std::string("public.url")}});
    std::vector<std::vector<std::shared_ptr<platform::ExtensionItem>>> requests = {
        {std::make_shared<platform::ExtensionItem>(
            std::vector<std::shared_ptr<platform::ItemProvider>>{
                platform::ItemProvider::withTypes({"public.plain-text"})})},
        {std::make_shared<platform::ExtensionItem>()},
        {},
    };
    for (auto& items : requests) {
        log_ = std::make_unique<platform::LogCapture>();
        auto controller = startShareWithItems(items);
        EXPECT_EQ(controller->shareType(), ShareTypeUnknown);
        EXPECT_EQ(context_->state(), ExtensionContext::State::Completed);
        EXPECT_EQ(context_->endingCount(), 1);
        EXPECT_EQ(controller->view()->frame(), platform::NSZeroRect);
        EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
        EXPECT_EQ(shareLines(), (std::vector<std::string>{
                                    line("bundleId[" + kHostId + "]"),
                                    line("teamIdentifier[" + kTeamId + "]"),
                                    "[ShareViewController][error]: ShareType is unknown.",
                                    readBackLine("public.url", "ParleyMacShareType"),
                                    line("layoutContent invoked."),
                                    // The sheet has no logo band for an unknown type.
                                    "[ShareViewController][error]: ShareType is unknown.",
                                }));
    }
}

// An action after an unknown type records the entry but hands nothing over and wakes no one.
TEST_F(ShareTest, ActionOnUnknownTypeWritesTheEntryOnly) {
    auto controller = startShare({platform::ItemProvider::withTypes({"public.plain-text"})});
    controller->onClickFavToParley();
    runUntilIdle();
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("favToParley"));
    EXPECT_EQ(controller->wakeupCount(), 0);
    EXPECT_FALSE(stored("ParleyMacSharePathArray").has_value());
    EXPECT_FALSE(stored("ParleyMacShareUrl").has_value());
}

// The group is the TeamIdentifier run together with the host identifier; without a usable
// TeamIdentifier it is the host identifier alone, and that is said once. The bundle identifier
// loses its last component (taken whole without a dot).
TEST_F(ShareTest, GroupAndHostIdentifierComeFromTheBundle) {
    const std::string fallback =
        "[ShareViewController][error]: TeamIdentifier is missing or "
        "not a string; the group is [" +
        kHostId + "].";
    const struct {
        std::string teamXml, bundleId, group, hostId, teamLine, thirdLine;
    } cases[] = {
        {"<string>TEAM</string>", kExtensionId, "TEAM" + kHostId, kHostId, "TEAM", ""},
        {"", kExtensionId, kHostId, kHostId, "(null)", fallback},
        {"<array><string>X</string></array>", kExtensionId, kHostId, kHostId, "", fallback},
        {"<string>T.</string>", "standalone", "T." + kHostId, "standalone", "T.", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.teamXml + " " + c.bundleId);
        useBundle(c.teamXml, c.bundleId);
        log_ = std::make_unique<platform::LogCapture>();
        auto controller = startShare({linkProvider("https://example.org/")});
        EXPECT_EQ(controller->shareFolderName(), c.group);
        EXPECT_EQ(controller->bundleId(), c.hostId);
        EXPECT_EQ(stored("ParleyMacShareType", c.group), PropertyValue("public.url"));
        const auto lines = shareLines();
        ASSERT_GE(lines.size(), 3u);
        EXPECT_EQ(lines[0], line("bundleId[" + c.hostId + "]"));
        if (!c.teamLine.empty()) {
            EXPECT_EQ(lines[1], line("teamIdentifier[" + c.teamLine + "]"));
        }
        if (!c.thirdLine.empty()) {
            EXPECT_EQ(lines[2], c.thirdLine);
        }
    }
}

// Cancel hands the user-cancelled error over and writes nothing: the type of this share and the
// entry of the one before stay.
TEST_F(ShareTest, CancelWritesNothing) {
    storeEarlierShare({{"ParleyMacShareEntry", std::string("sendToFriend")},
                       {"ParleyMacShareType", std::string("public.file-url")}});
    auto controller = startShare({linkProvider("https://example.org/")});
    const size_t linesBefore = shareLines().size();
    controller->cancel();
    runUntilIdle();
    EXPECT_EQ(context_->state(), ExtensionContext::State::Cancelled);
    ASSERT_TRUE(context_->cancellationError().has_value());
    EXPECT_EQ(context_->cancellationError()->domain, "NSCocoaErrorDomain");
    EXPECT_EQ(context_->cancellationError()->code, 3072);
    EXPECT_EQ(shareLines().size(), linesBefore);
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("sendToFriend"));
    EXPECT_EQ(controller->wakeupCount(), 0);
}

// A store file that is not a property list is read as empty and replaced at the next flush.
TEST_F(ShareTest, CorruptStoreIsReplacedAndTheShareCompletes) {
    const std::string storeFile = platform::DefaultsSuite::pathForSuite(kGroup);
    std::filesystem::create_directories(std::filesystem::path(storeFile).parent_path());
    std::ofstream(storeFile) << "bplist00 this is not a property list \x01\x02";
    auto controller = startShare({linkProvider("https://example.org/x")});
    controller->onClickFavToParley();
    runUntilIdle();
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("favToParley"));
    EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue("https://example.org/x"));
    EXPECT_EQ(controller->wakeupCount(), 1);
}

}  // namespace
}  // namespace share_test
