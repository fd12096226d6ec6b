// The file export: size limit and size texts, the lists and their order, copies into the shared
// container, the one completion that finishes the export, and the wake-up's timing.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <set>

#include "platform/core/MainQueue.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

namespace fs = std::filesystem;
using platform::PropertyValue;
using platform::Url;

constexpr uint64_t kMiB = 1048576;

// A sparse file: sizes of hundreds of megabytes cost nothing.
std::string sparseFile(const testing_support::TempDir& dir,
                       const std::string& name,
                       uintmax_t size) {
    const std::string path = dir.file(name);
    std::ofstream(path).close();
    fs::resize_file(path, size);
    return path;
}

StringArray sorted(StringArray values) {
    std::sort(values.begin(), values.end());
    return values;
}

StringArray storedArray(const std::string& key) {
    const auto value = platform::DefaultsSuite(kGroup).objectForKey(key);
    if (!value || !std::holds_alternative<StringArray>(*value))
        return {"<not an array>"};
    return std::get<StringArray>(*value);
}

TEST(ShareFileSize, SizeTextsAreSinglePrecisionPowersOfTwo) {
    testing_support::TempDir dir;
    const std::vector<std::pair<uintmax_t, std::string>> table = {
        {104857601, "100.0M"},   {157286400, "150.0M"}, {1073741823, "1024.0M"},
        {1073741824, "1.0G"},    {1610612736, "1.5G"},  {5 * kMiB + kMiB / 2, "5.5M"},
        {3221225472ull, "3.0G"}, {105958604, "101.1M"},  // "101.0M" in double precision
    };
    for (const auto& [size, text] : table) {
        const std::string path = sparseFile(dir, "f" + std::to_string(size), size);
        EXPECT_EQ(ShareViewController::GetFileSize(path), static_cast<int64_t>(size));
        EXPECT_EQ(ShareViewController::invalidFileSizeString(path), text) << size;
    }
    EXPECT_FALSE(ShareViewController::isInvalidFile(sparseFile(dir, "limit", 104857600)));
    EXPECT_TRUE(ShareViewController::isInvalidFile(sparseFile(dir, "above", 104857601)));
    EXPECT_EQ(ShareViewController::GetFileSize(dir.file("missing")), -1);
    EXPECT_FALSE(ShareViewController::isInvalidFile(dir.file("missing")));
    EXPECT_EQ(ShareViewController::invalidFileSizeString(dir.file("missing")), "?");
}

TEST(ShareFileSize, LinksAndFoldersAreMeasuredByTheirOwnEntry) {
    testing_support::TempDir dir;
    sparseFile(dir, "huge", 200 * kMiB);
    fs::create_symlink("huge", dir.file("link"));
    EXPECT_EQ(ShareViewController::GetFileSize(dir.file("link")), 4);  // "huge"
    EXPECT_FALSE(ShareViewController::isInvalidFile(dir.file("link")));
    fs::create_directory(dir.file("folder"));
    sparseFile(dir, "folder/inner", 200 * kMiB);
    EXPECT_GT(ShareViewController::GetFileSize(dir.file("folder")), 0);
    EXPECT_FALSE(ShareViewController::isInvalidFile(dir.file("folder")));
}

// Three files completing in a chosen order: the lists follow completion order, the file at the
// limit is copied, the one above it is listed by name and size, and the last completion writes
// the keys, flushes and wakes the host at once on its own thread.
TEST_F(ShareTest, FilesAddedToFavouritesAreCopiedListedInCompletionOrderAndWakeOnce) {
    const std::string small = files_.writeText("small.txt", "hello");
    const std::string exact = sparseFile(files_, "exact.bin", 104857600);
    const std::string big = sparseFile(files_, "big.bin", 104857601);
    GatedLoad smallLoad(Url::fileURLWithPath(small), platform::kUTTypeFileURL);
    GatedLoad exactLoad(Url::fileURLWithPath(exact), platform::kUTTypeFileURL);
    GatedLoad bigLoad(Url::fileURLWithPath(big), platform::kUTTypeFileURL);

    auto controller = startShare({exactLoad.provider(), smallLoad.provider(), bigLoad.provider()});
    controller->onClickFavToParley();
    const std::string container = containerPath();
    size_t done = 0;
    for (GatedLoad* load : {&smallLoad, &bigLoad, &exactLoad}) {
        load->release();
        ++done;
        ASSERT_TRUE(waitFor(
            [&] { return log_->count(line("sharedFolder path[" + container + "].")) == done; }));
        ASSERT_TRUE(waitFor([&] {
            const auto lines = shareLines();
            return lines.back().rfind(line("fileUrlArr count["), 0) == 0 ||
                   lines.back().rfind(line("Parley is"), 0) == 0;
        }));
    }
    runUntilIdle();

    EXPECT_EQ(shareLines(), (std::vector<std::string>{
                                line("bundleId[" + kHostId + "]"),
                                line("teamIdentifier[" + kTeamId + "]"),
                                readBackLine("public.file-url", "ParleyMacShareType"),
                                line("layoutContent invoked."),
                                line("onClickFavToParley invoked."),
                                line("item.attachments count[3]."),
                                readBackLine("favToParley", "ParleyMacShareEntry"),
                                line("sharedFolder path[" + container + "]."),
                                line("fileUrlArr addObject [" + small + "]."),
                                line("fileUrlArr count[1]."),
                                line("sharedFolder path[" + container + "]."),
                                line("fileUrlArr count[1]."),
                                line("sharedFolder path[" + container + "]."),
                                line("fileUrlArr addObject [" + exact + "]."),
                                line("fileUrlArr count[2]."),
                                line("Parley is offline."),
                            }));
    EXPECT_EQ(storedArray("ParleyMacSharePathArray"),
              (StringArray{container + "/small.txt", container + "/exact.bin"}));
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileNames"), (StringArray{"big.bin"}));
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes"), (StringArray{"100.0M"}));
    EXPECT_FALSE(stored("ParleyMacShareUrl").has_value());
    EXPECT_EQ(readAll(container + "/small.txt"), "hello");
    EXPECT_EQ(fs::file_size(container + "/exact.bin"), 104857600u);
    EXPECT_FALSE(fs::exists(container + "/big.bin"));

    ASSERT_EQ(controller->wakeupCount(), 1);
    const auto wakeup = controller->wakeups().front();
    EXPECT_FALSE(wakeup.onMainThread);
    EXPECT_EQ(wakeup.storedPaths,
              PropertyValue(StringArray{container + "/small.txt", container + "/exact.bin"}));
}

// Sent to a friend, files wake the host a second after the keys were flushed, on the main
// thread; a share with no refused file writes the two invalid lists empty.
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
    const auto wakeup = controller->wakeups().front();
    EXPECT_TRUE(wakeup.onMainThread);
    EXPECT_GE(wakeup.time - released, std::chrono::seconds(1));
    EXPECT_EQ(wakeup.storedPaths, PropertyValue(StringArray{containerPath() + "/photo.jpg"}));
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileNames"), StringArray{});
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes"), StringArray{});
    EXPECT_EQ(stored("ParleyMacShareEntry"), PropertyValue("sendToFriend"));
}

TEST_F(ShareTest, EveryFileRefusedWritesAnEmptyPathListAndStillWakes) {
    const std::string big = sparseFile(files_, "movie.mov", 1610612736);
    auto controller = startShare({fileProvider(big)});
    controller->onClickFavToParley();
    runUntilIdle();
    EXPECT_EQ(storedArray("ParleyMacSharePathArray"), StringArray{});
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileNames"), StringArray{"movie.mov"});
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes"), StringArray{"1.5G"});
    EXPECT_EQ(controller->wakeupCount(), 1);
}

// Two files of one name: the first copy lands, the second fails, the path stands twice. A later
// share of that name does not replace the file either.
TEST_F(ShareTest, SameNameTwiceListsOnePathTwiceAndKeepsTheFirstCopy) {
    fs::create_directories(files_.file("a"));
    fs::create_directories(files_.file("b"));
    const std::string first = files_.writeText("a/report.txt", "first");
    const std::string second = files_.writeText("b/report.txt", "second");
    GatedLoad firstLoad(Url::fileURLWithPath(first), platform::kUTTypeFileURL);
    GatedLoad secondLoad(Url::fileURLWithPath(second), platform::kUTTypeFileURL);
    auto controller = startShare({secondLoad.provider(), firstLoad.provider()});
    controller->onClickFavToParley();
    firstLoad.release();
    ASSERT_TRUE(waitFor([&] { return countLine(line("fileUrlArr count[1].")) == 1; }));
    secondLoad.release();
    runUntilIdle();

    const std::string destination = containerPath() + "/report.txt";
    EXPECT_EQ(storedArray("ParleyMacSharePathArray"), (StringArray{destination, destination}));
    EXPECT_EQ(readAll(destination), "first");

    const std::string third = files_.writeText("report.txt", "third");
    auto later = startShare({fileProvider(third)});
    later->onClickSendToFriend();
    runUntilIdle();
    EXPECT_EQ(storedArray("ParleyMacSharePathArray"), StringArray{destination});
    EXPECT_EQ(readAll(destination), "first");
}

TEST_F(ShareTest, FoldersAreCopiedWholeAndLinksAsLinks) {
    fs::create_directories(files_.file("album/inner"));
    files_.writeText("album/one.txt", "1");
    files_.writeText("album/inner/two.txt", "2");
    fs::create_symlink("album/one.txt", files_.file("shortcut"));
    auto controller =
        startShare({fileProvider(files_.file("album")), fileProvider(files_.file("shortcut"))});
    controller->onClickFavToParley();
    runUntilIdle();

    const std::string container = containerPath();
    EXPECT_EQ(sorted(storedArray("ParleyMacSharePathArray")),
              (StringArray{container + "/album", container + "/shortcut"}));
    EXPECT_EQ(readAll(container + "/album/one.txt"), "1");
    EXPECT_EQ(readAll(container + "/album/inner/two.txt"), "2");
    ASSERT_TRUE(fs::is_symlink(container + "/shortcut"));
    EXPECT_EQ(fs::read_symlink(container + "/shortcut"), "album/one.txt");
}

// Odd inputs each reach a defined outcome and the export still completes with every attachment
// accounted for: copied-or-not files are listed by destination, a load without a file URL (or
// a missing provider) is a refused file with an empty name and size text.
TEST_F(ShareTest, OddFilesAreAccountedForAndNeverHang) {
    const std::string vanished = files_.writeText("vanished.txt", "gone soon");
    const std::string unreadable = files_.writeText("locked.txt", "secret");
    fs::permissions(unreadable, fs::perms::none);
    const bool canStillRead = std::ifstream(unreadable).good();  // true when run as root
    fs::create_symlink("nowhere", files_.file("dangling"));
    const std::string fifo = files_.file("pipe");
    ASSERT_EQ(std::system(("mkfifo '" + fifo + "'").c_str()), 0);
    const std::string newline = files_.writeText("two\nlines.txt", "nl");
    auto noUrl =
        platform::ItemProvider::withTypes({platform::kUTTypeFileURL, platform::kUTTypeURL});
    noUrl->registerItemForTypeIdentifier(platform::kUTTypeFileURL,
                                         [] { return std::optional<Url>(); });
    GatedLoad vanishing(Url::fileURLWithPath(vanished), platform::kUTTypeFileURL);

    auto controller = startShare({vanishing.provider(), fileProvider(unreadable),
                                  fileProvider(files_.file("dangling")), fileProvider(fifo),
                                  fileProvider(newline), noUrl, nullptr});
    controller->onClickFavToParley();
    fs::remove(vanished);
    vanishing.release();
    runUntilIdle();

    const std::string c = containerPath();
    EXPECT_EQ(sorted(storedArray("ParleyMacSharePathArray")),
              sorted({c + "/vanished.txt", c + "/locked.txt", c + "/dangling", c + "/pipe",
                      c + "/two\nlines.txt"}));
    EXPECT_EQ(sorted(storedArray("ParleyMacShareInvalidFileNames")),
              (StringArray{"attachment 6", "attachment 7"}));
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes"), (StringArray{"?", "?"}));
    EXPECT_EQ(controller->wakeupCount(), 1);
    EXPECT_EQ(countLine(line("attachment delivered no file URL; listed as refused.")), 2u);

    EXPECT_FALSE(fs::exists(fs::symlink_status(c + "/vanished.txt")));
    EXPECT_EQ(fs::exists(c + "/locked.txt"), canStillRead);
    EXPECT_TRUE(fs::is_symlink(c + "/dangling"));
    EXPECT_FALSE(fs::exists(fs::symlink_status(c + "/pipe")));
    EXPECT_EQ(readAll(c + "/two\nlines.txt"), "nl");
}

// With no shared container every file is refused (name and size text listed), nothing is
// copied, and the host is still woken.
TEST_F(ShareTest, NoSharedContainerRefusesEveryFileAndStillWakes) {
    const std::string blocker = files_.writeText("not-a-folder", "x");
    const std::string savedDataHome = std::getenv("XDG_DATA_HOME");
    setenv("XDG_DATA_HOME", blocker.c_str(), 1);
    useBundle("<string>NOCONTAINER.</string>");
    const std::string file = files_.writeText("doc.pdf", std::string(3 * 1024 * 1024, 'p'));
    auto controller = startShare({fileProvider(file)});
    controller->onClickFavToParley();
    runUntilIdle();
    setenv("XDG_DATA_HOME", savedDataHome.c_str(), 1);

    const std::string group = "NOCONTAINER." + kHostId;
    EXPECT_EQ(countLine(line("sharedFolder path[(null)].")), 1u);
    EXPECT_EQ(countLine(line("no shared folder; not copied [" + file + "].")), 1u);
    EXPECT_EQ(stored("ParleyMacSharePathArray", group), PropertyValue(StringArray{}));
    EXPECT_EQ(stored("ParleyMacShareInvalidFileNames", group),
              PropertyValue(StringArray{"doc.pdf"}));
    EXPECT_EQ(stored("ParleyMacShareInvalidFileSizes", group), PropertyValue(StringArray{"3.0M"}));
    EXPECT_EQ(controller->wakeupCount(), 1);
}

// Many attachments completing at once on many threads in shuffled order: the lists are whole,
// the counts are logged in order, and exactly one completion finishes the export.
TEST_F(ShareTest, ThousandAttachmentsOnManyThreadsFinishExactlyOnce) {
    constexpr int kFiles = 1000;
    constexpr int kRefused = 8;
    std::vector<std::shared_ptr<platform::ItemProvider>> attachments;
    StringArray expectedNames;
    StringArray expectedRefused;
    std::mt19937 random(20240611);
    for (int i = 0; i < kFiles + kRefused; ++i) {
        const bool refused = i < kRefused;
        const std::string name = (refused ? "big-" : "f-") + std::to_string(i) + ".dat";
        const std::string path = refused ? sparseFile(files_, name, 104857601 + i)
                                         : files_.writeText(name, std::to_string(i));
        (refused ? expectedRefused : expectedNames).push_back(name);
        auto provider =
            platform::ItemProvider::withTypes({platform::kUTTypeFileURL, platform::kUTTypeURL});
        const int micros = static_cast<int>(random() % 300);
        provider->registerItemForTypeIdentifier(platform::kUTTypeFileURL, [path, micros] {
            std::this_thread::sleep_for(std::chrono::microseconds(micros));
            return std::optional<Url>(Url::fileURLWithPath(path));
        });
        attachments.push_back(provider);
    }
    std::shuffle(attachments.begin(), attachments.end(), random);

    auto controller = startShare(attachments);
    controller->onClickFavToParley();
    runUntilIdle(std::chrono::seconds(120));

    ASSERT_EQ(controller->wakeupCount(), 1);
    const std::string c = containerPath();
    StringArray expectedPaths;
    for (const auto& name : expectedNames)
        expectedPaths.push_back(c + "/" + name);
    EXPECT_EQ(sorted(storedArray("ParleyMacSharePathArray")), sorted(expectedPaths));
    EXPECT_EQ(sorted(storedArray("ParleyMacShareInvalidFileNames")), sorted(expectedRefused));
    EXPECT_EQ(storedArray("ParleyMacShareInvalidFileSizes").size(), size_t{kRefused});
    for (const auto& name : expectedNames)
        ASSERT_TRUE(fs::exists(c + "/" + name)) << name;

    // The count lines are written under the export's lock: they never go backwards.
    size_t counted = 0;
    size_t previous = 0;
    const std::string prefix = line("fileUrlArr count[");
    for (const std::string& each : shareLines()) {
        if (each.rfind(prefix, 0) != 0)
            continue;
        const size_t value = std::stoul(each.substr(prefix.size()));
        EXPECT_GE(value, previous);
        previous = value;
        ++counted;
    }
    EXPECT_EQ(counted, size_t{kFiles + kRefused});
    EXPECT_EQ(previous, size_t{kFiles});
    EXPECT_EQ(shareLines().back(), line("Parley is offline."));
}

}  // namespace
}  // namespace share_test
