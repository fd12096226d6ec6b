// A share is never lost or corrupted: odd names and arguments, a share killed mid-copy, no space,
// a read-only store, a host killed while it reads. The store stays readable and whole, and the
// container holds nothing partial under a final name.
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

namespace fs = std::filesystem;
using platform::PropertyValue;

std::set<std::string> listedPaths() {
    const auto paths = ShareTest::stored("ParleyMacSharePathArray");
    const StringArray list = paths ? std::get<StringArray>(*paths) : StringArray{};
    return {list.begin(), list.end()};
}

size_t partialCopiesIn(const std::string& folder) {
    size_t count = 0;
    for (const auto& entry : fs::directory_iterator(folder))
        count += entry.path().filename().string().rfind(".parley-partial-", 0) == 0;
    return count;
}

// Whether this process may give a child a private mount table with its own mounts.
bool canMount() {
    return geteuid() == 0 && run("unshare -m true 2>/dev/null") == 0;
}

class ShareFaultTest : public ShareTest {
  protected:
    std::string share(const std::string& arguments) const {
        return quoted(kShareProgram) + " " + arguments + " >/dev/null 2>>" + quoted(files_.file("err"));
    }
};

}  // namespace

// Names that are not UTF-8 are copied under the name the store lists, one file each, even where
// an older file bears the name a lossy conversion would give.
TEST_F(ShareFaultTest, NamesThatAreNotUtf8AreListedAsCopied) {
    const std::string c = containerPath();
    std::ofstream(c + "/caf\xef\xbf\xbd.txt") << "older";
    auto controller = startShare({fileProvider(files_.writeText("caf\xe9.txt", "e9")),
                                  fileProvider(files_.writeText("caf\xe8.txt", "e8"))});
    controller->onClickFavToParley();
    runUntilIdle();
    EXPECT_EQ(listedPaths(), (std::set<std::string>{c + "/caf%E9.txt", c + "/caf%E8.txt"}));
    EXPECT_EQ(readAll(c + "/caf%E9.txt"), "e9");
    EXPECT_EQ(readAll(c + "/caf%E8.txt"), "e8");
}

// "." and ".." share the folders they stand for; "/" is refused; a file URL with no path or an
// encoded NUL is refused as an argument, before anything is shared.
TEST_F(ShareFaultTest, DotsNameTheirFoldersAndBadFileUrlsAreRefused) {
    fs::create_directories(files_.file("work/shared"));
    files_.writeText("work/shared/x.txt", "x");
    files_.writeText("secret.txt", "s");
    EXPECT_EQ(run("cd " + quoted(files_.file("work/shared")) + " && " + share("--action fav . ..")),
              0);
    const std::string c = containerPath();
    EXPECT_EQ(listedPaths(), (std::set<std::string>{c + "/shared", c + "/work"}));
    EXPECT_EQ(readAll(c + "/work/shared/x.txt"), "x");
    EXPECT_EQ(run(share("--action fav /")), 0);  // the root has no name: refused, never copied
    EXPECT_EQ(stored("ParleyMacShareInvalidFileNames"), PropertyValue(StringArray{"/"}));
    for (const std::string& url :
         {std::string("file:"), "file://" + files_.file("secret.txt") + "%00junk"})
        EXPECT_EQ(run(share("--action fav --url " + quoted(url))), 64) << url;
}

// A share killed mid-copy leaves its folder under no final name; the next share of it lands
// whole and clears the interrupted copy away.
TEST_F(ShareFaultTest, KilledShareLeavesNothingPartialUnderTheFinalName) {
    const std::string many = files_.file("many");
    fs::create_directories(many);
    for (int i = 0; i < 1500; ++i)
        files_.writeFile("many/" + std::to_string(i), 4096);
    const std::string c = containerPath();
    ASSERT_EQ(
        run(share("--action fav " + quoted(many)) + " & echo $! >" + quoted(files_.file("pid"))),
        0);
    waitFor([&] { return partialCopiesIn(c) > 0; }, std::chrono::seconds(20));
    run("kill -9 $(cat " + quoted(files_.file("pid")) + ")");
    auto countIn = [](const std::string& folder) {
        return fs::exists(folder) ? std::distance(fs::directory_iterator(folder), {}) : 0;
    };
    EXPECT_TRUE(!fs::exists(c + "/many") || countIn(c + "/many") == 1500);
    fs::remove_all(c + "/many");
    EXPECT_EQ(run(share("--action fav " + quoted(many))), 0);
    EXPECT_EQ(countIn(c + "/many"), 1500);
    EXPECT_EQ(partialCopiesIn(c), 0u);
}

// No space while copying (a 1 MiB file system for the container, or a file-size limit where
// nothing may be mounted): the big file is not there, nothing partial is, the record is whole.
TEST_F(ShareFaultTest, NoSpaceLeavesNoPartialFileAndAWholeRecord) {
    const std::string big = files_.writeFile("big.bin", 3 << 20);
    const std::string small = files_.writeText("small.txt", "s");
    const std::string c = containerPath();
    fs::create_directories(c);
    const std::string listing = files_.file("listing");
    const std::string inside = share("--action fav " + quoted(big) + " " + quoted(small)) +
                               " && ls -A " + quoted(c) + " >" + quoted(listing);
    const int status =
        canMount() ? run("unshare -m sh -c " +
                         quoted("mount -t tmpfs -o size=1m tmpfs " + quoted(c) + " && " + inside))
                   : run("trap '' XFSZ; ulimit -f 1024; " + inside);
    EXPECT_EQ(status, 0) << readAll(files_.file("err"));
    EXPECT_EQ(readAll(listing), "small.txt\n");
    EXPECT_EQ(listedPaths(), (std::set<std::string>{c + "/big.bin", c + "/small.txt"}));
}

// A store folder that cannot be written: the share ends, the earlier record stays whole.
TEST_F(ShareFaultTest, ReadOnlyStoreFolderKeepsTheEarlierRecordWhole) {
    storeEarlierShare({{"ParleyMacShareType", PropertyValue(std::string("public.url"))},
                       {"ParleyMacShareUrl", PropertyValue(std::string("https://earlier/"))}});
    const std::string folder = std::string(std::getenv("XDG_CONFIG_HOME")) + "/group-containers";
    const std::string command = share("--action fav --url https://later/");
    EXPECT_EQ(
        canMount()
            ? run("unshare -m sh -c " +
                  quoted("mount --bind " + quoted(folder) + " " + quoted(folder) +
                         " && mount -o remount,bind,ro " + quoted(folder) + " && " + command))
            : run("chmod 500 " + quoted(folder) + "; " + command + "; chmod 700 " + quoted(folder)),
        0);
    EXPECT_NE(readAll(files_.file("err")).find("cannot"), std::string::npos);
    EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue(std::string("https://earlier/")));
    EXPECT_EQ(stored("ParleyMacShareType"), PropertyValue(std::string("public.url")));
}

// Hosts killed while they read the record at a notification do not damage it.
TEST_F(ShareFaultTest, HostKilledWhileReadingLeavesTheStoreReadable) {
    for (int i = 0; i < 4; ++i) {
        const std::string url = "https://example.org/" + std::to_string(i);
        run(quoted(kHostProgram) + " >/dev/null 2>&1 & echo $! >" + quoted(files_.file("host")) +
            "; sleep 0.3; " + share("--action fav --url " + url) + "; kill -9 $(cat " +
            quoted(files_.file("host")) + ")");
        EXPECT_EQ(stored("ParleyMacShareUrl"), PropertyValue(url));
    }
}

}  // namespace share_test
