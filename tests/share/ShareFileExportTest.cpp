// The file export: size limit and size texts, the lists and their order, copies into the shared
// container, the one completion that finishes the export, and the wake-up's timing.
#include <gmock/gmock.h>
#include <unistd.h>

#include <csignal>
#include <set>

#include "tests/share/ShareTestSupport.h"
#include "tests/support/ScopedEnv.h"

using namespace share_test;

using platform::Url;
using testing::HasSubstr;

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
        {0, "0.0M"},
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

// A home-like folder that holds the container is copied whole without the container (nor the
// copy in progress); the container itself and a folder in it are refused without writing.
TEST_F(ShareTest, AFolderHoldingTheContainerIsCopiedWithoutIt) {
    const std::string home = files_.file("home");
    fs::create_directories(home + "/Documents");
    files_.writeText("home/Documents/plan.txt", "plan");
    ScopedEnv dataHome("XDG_DATA_HOME", home + "/.local/share");
    const std::string c = containerPath();
    fs::create_directories(c + "/earlier");
    auto controller =
        startShare({fileProvider(home), fileProvider(c), fileProvider(c + "/earlier")});
    controller->onClickFavToParley();
    runUntilIdle();

    EXPECT_EQ(storedArray("ParleyMacSharePathArray"), StringArray{c + "/home"});
    EXPECT_THAT(storedArray("ParleyMacShareInvalidFileNames"),
                testing::UnorderedElementsAre(kGroup, "earlier"));
    EXPECT_EQ(readAll(c + "/home/Documents/plan.txt"), "plan");
    EXPECT_TRUE(fs::is_directory(c + "/home/.local/share/group-containers"));
    EXPECT_FALSE(fs::exists(c + "/home/.local/share/group-containers/" + kGroup));
    EXPECT_FALSE(fs::exists(c + "/home/.local/share/group-containers/.copies-in-progress"));
    EXPECT_FALSE(fs::exists(c + "/" + kGroup));
    EXPECT_EQ(countLine(line("the shared container or a folder in it; not copied [" + c + "].")),
              1u);
}

// Programs of ours run as a desktop starts them: with the default actions for SIGPIPE and SIGXFSZ
// (the test's own are ignored, and children would inherit that), through this Python launcher.
static std::string launched(const std::string& setup, const std::string& command) {
    return "python3 -c " +
           quoted("import os, resource, subprocess, sys\n" + setup +
                  "\nsys.exit(subprocess.call(sys.argv[1], shell=True, **spawn))") +
           " " + quoted(command);
}

// Standard error on a pipe that nobody reads, and a file-size limit below one shared file: the
// share runs to its end, the file that does not fit is a failed copy (listed, absent) and the
// other is copied.
TEST_F(ShareProgramsTest, AClosedPipeAndAFileSizeLimitDoNotEndTheShare) {
    const std::string big = files_.writeFile("big.bin", 3 << 20);
    const std::string small = files_.writeText("small.txt", "s");
    const std::string c = containerPath();
    const std::string errors = files_.file("share.err");
    const struct {
        const char* name;
        std::string setup;
        std::set<std::string> copied;
    } kCases[] = {
        {"closed pipe",
         "r, w = os.pipe(); os.close(r); spawn = dict(stderr=w)",
         {"big.bin", "small.txt"}},
        {"file-size limit",
         "limit = lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (1 << 20, 1 << 20))\n"
         "spawn = dict(preexec_fn=limit, stderr=open(" +
             quoted(errors) + ", 'w'))",
         {"small.txt"}},
    };
    for (const auto& [name, setup, copied] : kCases) {
        SCOPED_TRACE(name);
        for (const auto& entry : fs::directory_iterator(c))
            fs::remove_all(entry);
        EXPECT_EQ(run(launched(setup, quoted(PARLEY_APPEX_DIR "/Contents/MacOS/parley-share") +
                                          " --action fav " + quoted(big) + " " + quoted(small))),
                  0);
        std::set<std::string> inContainer;
        for (const auto& entry : fs::directory_iterator(c))
            inContainer.insert(entry.path().filename());
        EXPECT_EQ(inContainer, copied);
        const auto listed = std::get<StringArray>(stored("ParleyMacSharePathArray").value());
        EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()),
                  (std::set<std::string>{c + "/big.bin", c + "/small.txt"}));
    }
    EXPECT_THAT(readAll(errors), HasSubstr("FileManager: copy of [" + big + "] to [" + c +
                                           "/big.bin] failed: " + c + "/big.bin: File too large"));
}

// A mount that answers questions about its files but never delivers stuck.bin's data (a network
// mount whose server went away), and where album/locked.txt cannot be opened: the FUSE file
// system of unanswering_mount.py, started here, and unmounted and ended however the test ends.
class UnansweringMount {
  public:
    explicit UnansweringMount(const std::string& at) : at_(at), pid_(at + ".pid") {
        fs::create_directories(at_);
        run("/usr/bin/python3 " + quoted(PARLEY_SOURCE_DIR "/tests/share/unanswering_mount.py") +
            " " + quoted(at_) + " >/dev/null 2>&1 & echo $! >" + quoted(pid_));
    }
    ~UnansweringMount() {
        run("fusermount3 -u -z " + quoted(at_) + " 2>/dev/null; kill -9 $(cat " + quoted(pid_) +
            ")");
    }
    static std::string unavailable() {
        if (::access("/dev/fuse", R_OK | W_OK) != 0)
            return "/dev/fuse cannot be opened";
        if (run("command -v fusermount3 >/dev/null") != 0)
            return "fusermount3 is not installed (Debian: fuse3)";
        if (run("/usr/bin/python3 -c 'import fusepy' 2>/dev/null") != 0)
            return "fusepy is not installed (Debian: python3-fusepy)";
        return "";
    }

  private:
    const std::string at_, pid_;
};

// The dead mount costs only its own file: it is given up after 5 s and listed as a failed copy,
// the folder beside it is copied without its unreadable entry, the host is woken and the program
// ends.
TEST_F(ShareProgramsTest, ADeadMountAndAnUnreadableEntryCostOnlyThemselves) {
    if (const std::string why = UnansweringMount::unavailable(); !why.empty())
        GTEST_SKIP() << "no FUSE mount for this test: " << why;
    const std::string mount = files_.file("mnt");
    UnansweringMount unanswering(mount);
    ASSERT_TRUE(waitFor([&] { return fs::exists(mount + "/album/ok.txt"); }));
    const std::string notes = files_.writeText("notes.txt", "n");
    const std::string c = containerPath();
    const auto started = Clock::now();
    EXPECT_EQ(share("--action fav " + quoted(mount + "/stuck.bin") + " " +
                    quoted(mount + "/album") + " " + quoted(notes)),
              0);
    EXPECT_LT(Clock::now() - started, std::chrono::seconds(30));
    const auto listed = std::get<StringArray>(stored("ParleyMacSharePathArray").value());
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()),
              (std::set<std::string>{c + "/stuck.bin", c + "/album", c + "/notes.txt"}));
    EXPECT_FALSE(fs::exists(c + "/stuck.bin"));
    EXPECT_EQ(readAll(c + "/album/ok.txt"), "readable");
    EXPECT_FALSE(fs::exists(c + "/album/locked.txt"));
    EXPECT_EQ(readAll(c + "/notes.txt"), "n");
    const std::string errors = shareErrors();
    EXPECT_THAT(errors, HasSubstr("[ShareViewController]: copy of [" + mount +
                                  "/stuck.bin] given up: no data for 5 seconds."));
    EXPECT_THAT(errors, HasSubstr("FileManager: " + mount +
                                  "/album/locked.txt cannot be read (Permission denied); left out "
                                  "of the copy."));
    EXPECT_THAT(errors, HasSubstr("[ShareViewController]: Parley is offline."));
}
