// A share is never lost or corrupted: a share killed mid-copy, no space, a read-only store, a host
// killed while it reads. The store stays readable and whole, and the container holds nothing
// partial under a final name.
#include <gmock/gmock.h>
#include <unistd.h>

#include <algorithm>
#include <set>

#include "tests/share/ShareTestSupport.h"

using namespace share_test;

// Copies in progress are built in the work folder beside the containers.
static long copiesInProgressBeside(const std::string& container) {
    const fs::path work = fs::path(container).parent_path() / ".copies-in-progress";
    return fs::exists(work) ? std::distance(fs::directory_iterator(work), {}) : 0;
}

// Whether this process may give a child a private mount table with its own mounts.
static bool canMount() {
    return geteuid() == 0 && run("unshare -m true 2>/dev/null") == 0;
}

using ShareFaultTest = ShareProgramsTest;

// A share killed mid-copy leaves its folder under no final name; the next share of it lands whole
// and clears the interrupted copy away.
TEST_F(ShareFaultTest, KilledShareLeavesNothingPartialUnderTheFinalName) {
    const std::string many = files_.file("many");
    fs::create_directories(many);
    for (int i = 0; i < 1500; ++i)
        files_.writeFile("many/" + std::to_string(i), 4096);
    const std::string c = containerPath();
    ASSERT_EQ(run(shareCommand("--action fav " + quoted(many)) + " & echo $! >" +
                  quoted(files_.file("pid"))),
              0);
    ASSERT_TRUE(waitFor([&] { return copiesInProgressBeside(c) > 0; }, std::chrono::seconds(20)));
    run("kill -9 $(cat " + quoted(files_.file("pid")) + ")");
    auto countIn = [](const std::string& folder) {
        return fs::exists(folder) ? std::distance(fs::directory_iterator(folder), {}) : 0;
    };
    EXPECT_THAT(countIn(c + "/many"), testing::AnyOf(0, 1500));  // absent or whole
    fs::remove_all(c + "/many");
    EXPECT_EQ(share("--action fav " + quoted(many)), 0);
    EXPECT_EQ(countIn(c + "/many"), 1500);
    EXPECT_EQ(copiesInProgressBeside(c), 0);
}

// No space while copying (a 1 MiB file system for the container, or a file-size limit where nothing
// may be mounted): the big file is not there, nothing partial is, the record is whole.
TEST_F(ShareFaultTest, NoSpaceLeavesNoPartialFileAndAWholeRecord) {
    const std::string big = files_.writeFile("big.bin", 3 << 20);
    const std::string small = files_.writeText("small.txt", "s");
    const std::string c = containerPath();
    fs::create_directories(c);
    const std::string inside = shareCommand("--action fav " + quoted(big) + " " + quoted(small)) +
                               " && ls -A " + quoted(c) + " >" + quoted(files_.file("listing"));
    EXPECT_EQ(canMount() ? run("unshare -m sh -c " + quoted("mount -t tmpfs -o size=1m tmpfs " +
                                                            quoted(c) + " && " + inside))
                         : run("trap '' XFSZ; ulimit -f 1024; " + inside),
              0)
        << shareErrors();
    EXPECT_EQ(readAll(files_.file("listing")), "small.txt\n");
    const auto listed = std::get<StringArray>(stored("ParleyMacSharePathArray").value());
    EXPECT_EQ(std::set<std::string>(listed.begin(), listed.end()),
              (std::set<std::string>{c + "/big.bin", c + "/small.txt"}));
}

// A store folder that cannot be written: the share exits 1 with one error line and never wakes
// the running host (the next share's record is its next line); the earlier record stays whole.
TEST_F(ShareFaultTest, ReadOnlyStoreFolderFailsTheShareWithoutWakingTheHost) {
    storeEarlierShare({{"ParleyMacShareType", std::string("public.url")},
                       {"ParleyMacShareUrl", std::string("https://earlier/")}});
    startHost("");
    const std::string folder = std::string(std::getenv("XDG_CONFIG_HOME")) + "/group-containers";
    std::ofstream(folder + "/" + kGroup + ".lock");  // the share lock, left by earlier shares
    const std::string command = shareCommand("--action fav --url https://later/");
    EXPECT_EQ(canMount()
                  ? run("unshare -m sh -c " +
                        quoted("mount --bind " + quoted(folder) + " " + quoted(folder) +
                               " && mount -o remount,bind,ro " + quoted(folder) + " && " + command))
                  : run("chmod 500 " + quoted(folder) + "; " + command + "; s=$?; chmod 700 " +
                        quoted(folder) + "; exit $s"),
              1);
    const std::string errors = shareErrors(), error = "[ShareViewController][error]: ";
    EXPECT_EQ(errors.find(error), errors.rfind(error));
    EXPECT_NE(errors.find(error + "the hand-off record could not be written (ParleyMacShareEntry); "
                                  "Parley is not woken."),
              std::string::npos);
    EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue("https://earlier/"));
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue("public.url"));
    EXPECT_EQ(share("--action fav --url https://next/"), 0);
    ASSERT_TRUE(waitFor([&] { return readLines(records()).size() >= 2; }));
    EXPECT_EQ(
        "{\"event\":\"notification\",\"type\":\"public.url\",\"entry\":\"favToParley\","
        "\"url\":\"https://next/\"}",
        readLines(records())[1]);
}

// Hosts killed while they read the record at a notification leave it readable and whole. Each
// host has written its start line (it is on the bus) before the share runs.
TEST_F(ShareFaultTest, HostKilledWhileReadingLeavesTheStoreReadable) {
    const std::string lines = quoted(files_.file("host-lines"));
    for (const std::string url : {"https://example.org/1", "https://example.org/2"}) {
        EXPECT_EQ(
            0, run("rm -f " + lines + "; " + quoted(PARLEY_APP_DIR "/Contents/MacOS/parley-host") +
                   " --record-file " + lines + " >/dev/null 2>&1 & for i in $(seq 1000); do [ -s " +
                   lines + " ] && break; sleep 0.01; done; [ -s " + lines + " ] && " +
                   shareCommand("--action fav --url " + url) + "; s=$?; kill -9 $!; exit $s"));
        EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue(url));
    }
}
