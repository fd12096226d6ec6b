// Soak: back-to-back shares (links and files, both actions, in turn) through the controller while
// parley-host reads the record at every notification. Every record the host prints must be
// exactly the one its share wrote (nothing torn, nothing of another share mixed in; every file
// share uses the same name, and the host must take each share's own content), no
// notification may be lost, and this process's resident memory and open descriptors must stay
// bounded once warm. Prints the numbers; exit 0 when all holds.
//
//   soak_bench PARLEY_APP_DIR [SHARES]      (on a private bus: bench/run-soak.sh; the suite runs
//                                            50 shares, the long form 500)
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/core/Bundle.h"
#include "platform/core/ExtensionContext.h"
#include "platform/core/FileManager.h"
#include "platform/core/ItemProvider.h"
#include "platform/core/RunningApplication.h"
#include "platform/core/Url.h"
#include "platform/ui/DisplayEventLoop.h"
#include "share/ShareViewController.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::vector<std::string> readLines(const std::string& path) {
    std::ifstream in(path);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);)
        lines.push_back(line);
    return lines;
}

// Resident kilobytes and open descriptors of process |pid| ("self" for this one).
struct Usage {
    long rssKilobytes = 0;
    long descriptors = 0;
};
Usage usageOf(const std::string& pid) {
    Usage usage;
    std::ifstream status("/proc/" + pid + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmRSS:", 0) == 0)
            usage.rssKilobytes = std::atol(line.c_str() + 6);
    std::error_code error;
    for (auto it = fs::directory_iterator("/proc/" + pid + "/fd", error);
         !error && it != fs::directory_iterator(); it.increment(error))
        ++usage.descriptors;
    return usage;
}

// Polls in short slices: the host writes its lines from another process, which nothing here
// is told of.
bool waitUntil(const std::function<bool()>& done, std::chrono::seconds limit) {
    const auto deadline = Clock::now() + limit;
    while (!done() && Clock::now() < deadline)
        platform::EventLoop::runUntil(done, std::chrono::milliseconds(5));
    return done();
}

// Whether |line| is the host's line for share |i|, as parley-host prints it. A file share's
// line ends with where the host put the file, which must hold that share's own content.
bool isRecordOf(int i, const std::string& line, const std::string& container) {
    const std::string entry = i % 2 == 0 ? "favToParley" : "sendToFriend";
    const std::string head = "{\"event\":\"notification\",\"type\":";
    if (i % 4 < 2)
        return line == head + "\"public.url\",\"entry\":\"" + entry +
                           "\",\"url\":\"https://example.org/soak/" + std::to_string(i) + "\"}";
    const std::string file = head + "\"public.file-url\",\"entry\":\"" + entry +
                             "\",\"paths\":[\"" + container + "/soak.txt\"],\"invalidNames\":[]," +
                             "\"invalidSizes\":[],\"received\":[\"";
    const std::string end = "/soak.txt\"]}";
    if (line.rfind(file, 0) != 0 || line.size() < file.size() + end.size() ||
        line.compare(line.size() - end.size(), end.size(), end) != 0)
        return false;
    std::ifstream received(line.substr(file.size(), line.size() - file.size() - 3));
    std::string content;
    std::getline(received, content);
    return content == std::to_string(i);
}

int fail(const std::string& message) {
    std::fprintf(stderr, "soak: %s\n", message.c_str());
    return 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2)
        return fail("usage: soak_bench PARLEY_APP_DIR [SHARES]");
    const std::string app = argv[1];
    const int shares = argc > 2 ? std::atoi(argv[2]) : 500;
    char pattern[] = "/tmp/parley-soak-XXXXXX";
    if (!mkdtemp(pattern))
        return fail("no temporary folder");
    const std::string root = pattern;
    for (const char* name : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME"})
        setenv(name, root.c_str(), 1);
    setenv("PARLEY_APPLICATIONS_DIR", root.c_str(), 1);  // no host is ever launched
    setenv("QT_QPA_PLATFORM", "offscreen", 1);
    platform::DisplayEventLoop loop(argc, argv);
    platform::Bundle::setMainBundle(
        std::make_shared<platform::Bundle>(app + "/Contents/PlugIns/ParleyShare.appex"));

    const std::string records = root + "/records.jsonl";
    const std::string pidFile = root + "/host.pid";
    const std::string start = "'" + app + "/Contents/MacOS/parley-host' --exit-after " +
                              std::to_string(shares + 1) + " --record-file '" + records +
                              "' >/dev/null 2>&1 & echo $! > '" + pidFile + "'";
    if (std::system(start.c_str()) != 0 ||
        !waitUntil([&] { return readLines(records).size() == 1; }, std::chrono::seconds(30)))
        return fail("the host did not start");
    const std::string hostPid = readLines(pidFile).at(0);
    const std::string container =
        *platform::FileManager::defaultManager().containerURLForSecurityApplicationGroupIdentifier(
            "P4RL3YSH4R.com.parleyapp.Parley");

    Usage warm, warmHost;
    const auto began = Clock::now();
    for (int i = 0; i < shares; ++i) {
        std::shared_ptr<platform::ItemProvider> attachment;
        if (i % 4 < 2) {
            attachment = platform::ItemProvider::withURL(
                *platform::Url::URLWithString("https://example.org/soak/" + std::to_string(i)));
        } else {
            // One name for every file share: the host takes each away before the next comes.
            const std::string file = root + "/soak.txt";
            std::ofstream(file) << i;
            attachment = platform::ItemProvider::withURL(platform::Url::fileURLWithPath(file));
        }
        auto context = std::make_shared<platform::ExtensionContext>(
            std::vector<std::shared_ptr<platform::ExtensionItem>>{
                std::make_shared<platform::ExtensionItem>(
                    std::vector<std::shared_ptr<platform::ItemProvider>>{attachment})});
        auto controller = ShareViewController::create();
        controller->setExtensionContext(context);
        controller->view();
        if (i % 2 == 0)
            controller->onClickFavToParley();
        else
            controller->onClickSendToFriend();
        controller.reset();
        platform::EventLoop::runUntilIdle(std::chrono::minutes(5));
        if (!waitUntil([&] { return readLines(records).size() >= static_cast<size_t>(i + 2); },
                       std::chrono::seconds(30)))
            return fail("share " + std::to_string(i) + ": no record: a notification was lost");
        const auto lines = readLines(records);
        if (lines.size() != static_cast<size_t>(i + 2) || !isRecordOf(i, lines.back(), container))
            return fail("share " + std::to_string(i) + ": the host read\n  " + lines.back());
        if (i == shares / 10) {
            warm = usageOf("self");
            warmHost = usageOf(hostPid);
        }
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - began).count();
    const Usage end = usageOf("self");
    const Usage endHost = usageOf(hostPid);
    std::printf("soak: %d shares in %.1f s, every record whole and its own, none lost\n", shares,
                seconds);
    std::printf("soak: share process RSS %ld -> %ld KiB, descriptors %ld -> %ld\n",
                warm.rssKilobytes, end.rssKilobytes, warm.descriptors, end.descriptors);
    std::printf("soak: host RSS %ld -> %ld KiB, descriptors %ld -> %ld\n", warmHost.rssKilobytes,
                endHost.rssKilobytes, warmHost.descriptors, endHost.descriptors);
    // Bounded: a few descriptors and 16 MiB of slack for allocator and cache growth once warm.
    // A sanitizer's allocator holds freed memory back on purpose (and finds leaks itself), so
    // there only the descriptors are bounded.
#ifdef PARLEY_SANITIZED
    const long rssSlack = 1L << 40;
#else
    const long rssSlack = 16384;
#endif
    const bool bounded = end.descriptors <= warm.descriptors + 4 &&
                         end.rssKilobytes <= warm.rssKilobytes + rssSlack &&
                         endHost.descriptors > 0 &&  // the host still runs
                         endHost.descriptors <= warmHost.descriptors + 4 &&
                         endHost.rssKilobytes <= warmHost.rssKilobytes + rssSlack;
    std::system(("kill " + hostPid).c_str());
    std::error_code ignored;
    fs::remove_all(root, ignored);
    return bounded ? 0 : fail("memory or descriptors grew");
}
