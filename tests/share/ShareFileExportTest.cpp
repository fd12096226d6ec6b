// The file export: size limit and size texts, the lists and their order, copies into the shared
// container, the one completion that finishes the export, and the wake-up's timing.
#include <gmock/gmock.h>

#include "tests/share/ShareTestSupport.h"

using namespace share_test;

using platform::Url;

// A sparse file: sizes of gigabytes cost nothing.
static std::string sparseFile(const testing_support::TempDir& dir,
                              const std::string& name,
                              uintmax_t size) {
    const std::string path = dir.writeText(name, "");
    fs::resize_file(path, size);
    return path;
}

static StringArray storedArray(const std::string& key, const std::string& group = kGroup) {
    return std::get<StringArray>(ShareTest::stored(key, group).value_or(StringArray{"<none>"}));
}

TEST(ShareFileSize, SizeTextsAreSinglePrecisionPowersOfTwo) {
    testing_support::TempDir dir;
    const std::pair<uintmax_t, std::string> table[] = {
        {104857601, "100.0M"}, {1073741823, "1024.0M"}, {1073741824, "1.0G"}, {1610612736, "1.5G"},
        {5767168, "5.5M"},     {105958604, "101.1M"},  // "101.0M" in double
    };
    for (const auto& [size, text] : table)
        EXPECT_EQ(ShareViewController::invalidFileSizeString(sparseFile(dir, text, size)), text);
    EXPECT_FALSE(ShareViewController::isInvalidFile(sparseFile(dir, "limit", 104857600)));
    EXPECT_TRUE(ShareViewController::isInvalidFile(sparseFile(dir, "above", 104857601)));
    EXPECT_EQ(ShareViewController::invalidFileSizeString(dir.file("missing")), "?");
    // A link is measured by its own entry, not by what it points at.
    fs::create_symlink("above", dir.file("link"));
    EXPECT_EQ(ShareViewController::GetFileSize(dir.file("link")), 5);
}

// Three files completing in a chosen order: the lists follow completion order, the file at the
// limit is copied, the one above it is listed by name and size, and the last completion writes the
// keys, flushes and wakes the host at once on its own thread.
TEST_F(ShareTest, FilesAddedToFavouritesAreCopiedListedInCompletionOrderAndWakeOnce) {
    const std::string small = files_.writeText("small.txt", "hello");
    const std::string exact = sparseFile(files_, "exact.bin", 104857600);
    const std::string big = sparseFile(files_, "big.bin", 104857601);
    GatedLoad smallLoad(Url::fileURLWithPath(small), platform::kUTTypeFileURL);
    GatedLoad exactLoad(Url::fileURLWithPath(exact), platform::kUTTypeFileURL);
    GatedLoad bigLoad(Url::fileURLWithPath(big), platform::kUTTypeFileURL);

    auto controller = startShare({exactLoad.provider(), smallLoad.provider(), bigLoad.provider()});
    controller->onClickFavToParley();
    ASSERT_TRUE(
        waitFor([&] { return countLine(readBackLine("favToParley", "ParleyMacShareEntry")); }));
    const std::string c = containerPath();
    // Each completion ends with the count line: 1, 1 again (the refused file), then 2.
    for (const auto& [load, count, times] :
         {std::tuple{&smallLoad, 1, 1u}, {&bigLoad, 1, 2u}, {&exactLoad, 2, 1u}}) {
        load->release();
        const std::string counted = line("fileUrlArr count[" + std::to_string(count) + "].");
        ASSERT_TRUE(waitFor([&, &times = times] { return countLine(counted) == times; }));
    }
    runUntilIdle();

    EXPECT_EQ(shareLines(), (std::vector<std::string>{
                                line("bundleId[" + kHostId + "]"),
                                line("teamIdentifier[" + kTeamId + "]"),
                                line("layoutContent invoked."),
                                readBackLine("public.file-url", "ParleyMacShareType"),
                                line("onClickFavToParley invoked."),
                                line("item.attachments count[3]."),
                                readBackLine("favToParley", "ParleyMacShareEntry"),
                                line("sharedFolder path[" + c + "]."),
                                line("fileUrlArr addObject [" + small + "]."),
                                line("fileUrlArr count[1]."),
                                line("sharedFolder path[" + c + "]."),
                                line("fileUrlArr count[1]."),
                                line("sharedFolder path[" + c + "]."),
                                line("fileUrlArr addObject [" + exact + "]."),
                                line("fileUrlArr count[2]."),
                                line("Parley is offline."),
                            }));
    const StringArray paths{c + "/small.txt", c + "/exact.bin"};
    EXPECT_EQ(storedArray("ParleyMacSharePathArray"), paths);
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileNames"), (StringArray{"big.bin"}));
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes"), (StringArray{"100.0M"}));
    EXPECT_FALSE(stored("ParleyMacShareUrl").has_value());
    EXPECT_EQ(readAll(c + "/small.txt"), "hello");
    EXPECT_EQ(fs::file_size(c + "/exact.bin"), 104857600u);
    EXPECT_FALSE(fs::exists(c + "/big.bin"));
    ASSERT_EQ(controller->wakeupCount(), 1);
    EXPECT_FALSE(controller->wakeups()[0].onMainThread);
    EXPECT_EQ(controller->wakeups()[0].storedPaths, PropertyValue(paths));
}

// Sent to a friend, files wake the host a second after the keys were flushed, on the main thread; a
// share with no refused file writes the two invalid lists empty.
TEST_F(ShareTest, FilesSentToAFriendWakeOneSecondLaterOnTheMainThread) {
    const std::string file = files_.writeText("photo.jpg", "jpeg");
    GatedLoad load(Url::fileURLWithPath(file), platform::kUTTypeFileURL);
    auto controller = startShare({load.provider()});
    controller->onClickSendToFriend();
    const Clock::time_point released = Clock::now();
    load.release();
    ASSERT_TRUE(waitFor([&] { return countLine(line("fileUrlArr count[1].")) == 1; }));
    EXPECT_EQ(controller->wakeupCount(), 0);
    runUntilIdle();

    ASSERT_EQ(controller->wakeupCount(), 1);
    const auto wakeup = controller->wakeups()[0];
    EXPECT_TRUE(wakeup.onMainThread);
    EXPECT_GE(wakeup.time - released, std::chrono::seconds(1));
    EXPECT_LT(wakeup.time - released, std::chrono::seconds(10));
    EXPECT_EQ(wakeup.storedPaths, PropertyValue(StringArray{containerPath() + "/photo.jpg"}));
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileNames"), StringArray{});
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes"), StringArray{});
}

// Odd inputs each reach a defined outcome and the export completes with every attachment
// accounted for: a file gone before its copy is listed at its destination; the root folder is
// refused by name; a load without a file URL and a missing provider are refused by position.
TEST_F(ShareTest, OddAttachmentsAreAccountedForAndNeverHang) {
    const std::string vanished = files_.writeText("vanished.txt", "gone soon");
    auto noUrl =
        platform::ItemProvider::withTypes({platform::kUTTypeFileURL, platform::kUTTypeURL});
    noUrl->registerItemForTypeIdentifier(platform::kUTTypeFileURL,
                                         [] { return std::optional<Url>(); });
    GatedLoad vanishing(Url::fileURLWithPath(vanished), platform::kUTTypeFileURL);
    auto controller = startShare({vanishing.provider(), fileProvider("/"), noUrl, nullptr});
    controller->onClickFavToParley();
    fs::remove(vanished);
    vanishing.release();
    runUntilIdle();

    const std::string c = containerPath();
    EXPECT_EQ(storedArray("ParleyMacSharePathArray"), StringArray{c + "/vanished.txt"});
    EXPECT_THAT(storedArray("ParleyMacShareInvalidFileNames"),
                testing::UnorderedElementsAre("/", "attachment 3", "attachment 4"));
    EXPECT_THAT(storedArray("ParleyMacShareInvalidFileSizes"),
                testing::UnorderedElementsAre("0.0M", "?", "?"));
    EXPECT_EQ(countLine(line("attachment delivered no file URL; listed as refused.")), 2u);
    EXPECT_EQ(countLine(line("the root folder has no name to copy to; not copied [/].")), 1u);
    EXPECT_EQ(controller->wakeupCount(), 1);
    EXPECT_FALSE(fs::exists(fs::symlink_status(c + "/vanished.txt")));
}

// With no shared container every file is refused (name and size text listed), nothing is copied,
// and the host is still woken.
TEST_F(ShareTest, NoSharedContainerRefusesEveryFileAndStillWakes) {
    const std::string blocker = files_.writeText("not-a-folder", "x");
    const std::string savedDataHome = std::getenv("XDG_DATA_HOME");
    setenv("XDG_DATA_HOME", blocker.c_str(), 1);
    useBundle("<string>NOCONTAINER.</string>");
    const std::string file = sparseFile(files_, "doc.pdf", 3 * 1024 * 1024);
    auto controller = startShare({fileProvider(file)});
    controller->onClickFavToParley();
    runUntilIdle();
    setenv("XDG_DATA_HOME", savedDataHome.c_str(), 1);

    const std::string group = "NOCONTAINER." + kHostId;
    EXPECT_EQ(countLine(line("sharedFolder path[(null)].")), 1u);
    EXPECT_EQ(countLine(line("no shared folder; not copied [" + file + "].")), 1u);
    EXPECT_EQ(storedArray("ParleyMacSharePathArray", group), StringArray{});
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileNames", group), StringArray{"doc.pdf"});
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes", group), StringArray{"3.0M"});
    EXPECT_EQ(controller->wakeupCount(), 1);
}
