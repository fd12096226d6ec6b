// parley-host: the reference host. It owns its bundle identifier on the session bus (so a share
// finds it running), reads the hand-off record from the store it shares with the extension once
// at start and at each "ParleyMacShare_Notification", takes the files a record lists out of the
// group's container (ReceivedFiles), and prints each record as one JSON line.
#include <sysexits.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <variant>
#include <vector>

#include "apps/parley-host/HostRecordWriter.h"
#include "apps/parley-host/ReceivedFiles.h"
#include "platform/core/Bundle.h"
#include "platform/core/DefaultsSuite.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/EventLoop.h"
#include "platform/core/FileManager.h"
#include "platform/core/RunningApplication.h"
#include "share/HandoffKeys.h"

#ifndef PARLEY_HOST_BUNDLE_ID
#error "PARLEY_HOST_BUNDLE_ID must name the host's bundle identifier"
#endif

namespace {

const char* const kUsage =
    "Usage: parley-host [--once] [--exit-after N] [--record-file PATH] [--bundle PATH]\n"
    "\n"
    "The reference host: prints the hand-off record as one JSON line at start and at each\n"
    "share notification. The files a record lists are moved out of the group's container\n"
    "into a folder of their own under $XDG_DATA_HOME/parley-host/received; the line's\n"
    "\"received\" says where each went.\n"
    "\n"
    "  --once              print the record found at start and exit (a launched host)\n"
    "  --exit-after N      exit after N notifications\n"
    "  --record-file PATH  also append every line to PATH\n"
    "                      (default: $PARLEY_HOST_RECORD_FILE)\n"
    "  --bundle PATH       the Parley.app to read identities from, instead of the one\n"
    "                      holding this executable\n"
    "\n"
    "PARLEY_HOST_ONCE=1 in the environment acts as --once, so that a host launched by a share\n"
    "(which passes no arguments) can be told to report and exit.\n";

struct HostOptions {
    bool once = false;
    long exitAfter = 0;
    std::string recordFile;
    std::string bundlePath;
    std::string error;
    bool help = false;
};

HostOptions parseOptions(int argc, char** argv) {
    HostOptions options;
    if (const char* file = std::getenv("PARLEY_HOST_RECORD_FILE"))
        options.recordFile = file;
    if (const char* once = std::getenv("PARLEY_HOST_ONCE"))
        options.once = std::string(once) == "1";
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        auto value = [&]() -> std::string {
            if (i + 1 < argc)
                return argv[++i];
            options.error = "option " + argument + " needs a value";
            return {};
        };
        if (argument == "--help" || argument == "-h") {
            options.help = true;
        } else if (argument == "--once") {
            options.once = true;
        } else if (argument == "--exit-after") {
            const std::string count = value();
            char* end = nullptr;
            options.exitAfter = std::strtol(count.c_str(), &end, 10);
            if (count.empty() || *end != '\0' || options.exitAfter < 1)
                options.error = "--exit-after needs a positive count";
        } else if (argument == "--record-file") {
            options.recordFile = value();
        } else if (argument == "--bundle") {
            options.bundlePath = value();
        } else {
            options.error = "unknown argument " + argument;
        }
        if (!options.error.empty())
            break;
    }
    return options;
}

// The paths a file record lists; nullopt for any other record.
std::optional<platform::StringArray> listedFiles(const platform::DefaultsSuite& store) {
    const auto type = store.objectForKey(handoff::kShareTypeKey);
    const auto* typeText = type ? std::get_if<std::string>(&*type) : nullptr;
    if (!typeText || *typeText != handoff::kTypeFileUrl)
        return std::nullopt;
    const auto paths = store.objectForKey(handoff::kSharePathArrayKey);
    const auto* array = paths ? std::get_if<platform::StringArray>(&*paths) : nullptr;
    return array ? *array : platform::StringArray{};
}

std::string ownExecutablePath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : path.string();
}

}  // namespace

int main(int argc, char** argv) {
    const HostOptions options = parseOptions(argc, argv);
    if (options.help) {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (!options.error.empty()) {
        std::fprintf(stderr, "parley-host: %s\n\n%s", options.error.c_str(), kUsage);
        return EX_USAGE;
    }

    platform::EventLoop loop(argc, argv);

    std::shared_ptr<platform::Bundle> bundle =
        options.bundlePath.empty()
            ? platform::Bundle::bundleContainingExecutable(ownExecutablePath())
            : std::make_shared<platform::Bundle>(options.bundlePath);
    std::string hostIdentifier = bundle ? bundle->bundleIdentifier() : std::string();
    if (hostIdentifier.empty())
        hostIdentifier = PARLEY_HOST_BUNDLE_ID;

    // The group is named by the extension inside this bundle, exactly as the extension forms it.
    std::string teamIdentifier;
    if (bundle) {
        const platform::Bundle extension(bundle->bundlePath() +
                                         "/Contents/PlugIns/ParleyShare.appex");
        const auto team = extension.objectForInfoDictionaryKey(handoff::kTeamIdentifierKey);
        if (team && std::holds_alternative<std::string>(*team))
            teamIdentifier = std::get<std::string>(*team);
    }
    if (teamIdentifier.empty())
        std::fprintf(stderr, "parley-host: no TeamIdentifier found; the group is [%s]\n",
                     hostIdentifier.c_str());
    const std::string group = teamIdentifier + hostIdentifier;

    const HostRecordWriter writer(options.recordFile);
    const ReceivedFiles files(platform::FileManager::defaultManager()
                                  .containerURLForSecurityApplicationGroupIdentifier(group)
                                  .value_or(std::string()),
                              ReceivedFiles::defaultInbox());
    auto report = [&writer, &files, &group](const char* event) {
        // A fresh suite reads what the extension flushed last.
        const platform::DefaultsSuite store(group);
        std::optional<std::vector<std::optional<std::string>>> received;
        if (const auto listed = listedFiles(store))
            received = files.take(*listed);
        if (!writer.write(
                HostRecordWriter::recordLine(event, store, received ? &*received : nullptr)))
            std::fprintf(stderr, "parley-host: cannot append to the record file\n");
    };

    if (options.once) {
        report("start");
        return 0;
    }

    long notifications = 0;
    bool done = false;
    // Listen before claiming the name: a share that finds us running must not be missed.
    auto observer = platform::DistributedNotificationCenter::defaultCenter().addObserverForName(
        handoff::kNotificationName, [&] {
            report("notification");
            ++notifications;
            if (options.exitAfter > 0 && notifications >= options.exitAfter)
                done = true;
        });
    if (!observer) {
        std::fprintf(stderr, "parley-host: cannot listen on the session bus\n");
        return EX_UNAVAILABLE;
    }
    if (!platform::RunningApplication::registerAsRunning(hostIdentifier)) {
        std::fprintf(stderr, "parley-host: cannot own the bus name %s\n", hostIdentifier.c_str());
        return EX_UNAVAILABLE;
    }
    report("start");

    while (!done)
        platform::EventLoop::runUntil([&done] { return done; }, std::chrono::hours(24));
    return 0;
}
