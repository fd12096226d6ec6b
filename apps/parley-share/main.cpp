// parley-share: runs the share extension for one request, the way the Share menu would: it
// loads the extension's bundle, hands the controller one item (a link or files), shows the sheet
// in a window (or drives it with --press/--snapshot/--action), and waits until every load,
// store write and wake-up of the hand-off has run.
#include <sysexits.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "apps/parley-share/ShareCommandLine.h"
#include "apps/parley-share/SheetPointer.h"
#include "platform/core/Bundle.h"
#include "platform/core/ExtensionContext.h"
#include "platform/core/ExtensionItem.h"
#include "platform/core/ItemProvider.h"
#include "platform/core/LaunchRendezvous.h"
#include "platform/core/PathText.h"
#include "platform/core/Url.h"
#include "platform/core/WorkerPool.h"
#include "platform/ui/Bitmap.h"
#include "platform/ui/DisplayEventLoop.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"
#include "share/ShareViewController.h"
#include "viewkit/ViewDescriptionSExt.h"

namespace {

// Exit statuses without a name in <sysexits.h>.
constexpr int kExitCompleted = 0;
constexpr int kExitFailed = 1;
constexpr int kExitCancelled = 2;

// The person and the copies may take their time: waits are made in slices of this, without limit.
constexpr std::chrono::hours kWaitSlice{1};
// A picture of the sheet waits this long at most for the card's picture to settle.
constexpr std::chrono::seconds kCardSettleTimeout{30};
// Processes started together for one selection hand their files to the first within this time.
constexpr std::chrono::milliseconds kGatherWindow{400};
// How far a sheet too late to join moves from the one already shown, right and down.
constexpr double kLatecomerOffset = 24;
// Start-up's write of the share type ends within about 8 s (ShareViewController); this only
// guards against a wait that never ends.
constexpr std::chrono::seconds kShowTimeout{30};
// The sheet's window shows the icon of the desktop entries.
constexpr char kWindowIcon[] = "parley-share";

std::string ownExecutablePath() {
    std::error_code error;
    const std::filesystem::path path = std::filesystem::read_symlink("/proc/self/exe", error);
    return error ? std::string() : path.string();
}

// An absolute path without trailing slashes, so that its last component is the file's name.
// Symbolic links are kept: a shared link is copied as a link.
std::string absoluteFilePath(const std::string& file) {
    std::error_code error;
    const std::string path = std::filesystem::absolute(file, error).string();
    return platform::PathText::withoutTrailingSlashes(error ? file : path);
}

std::shared_ptr<platform::ExtensionItem> makeItem(const ShareCommandLine& line,
                                                  const std::vector<std::string>& files) {
    std::vector<std::shared_ptr<platform::ItemProvider>> attachments;
    if (line.url()) {
        attachments.push_back(
            platform::ItemProvider::withURL(*platform::Url::URLWithString(*line.url())));
    } else {
        for (const std::string& file : files)
            attachments.push_back(platform::ItemProvider::withURL(
                platform::Url::fileURLWithPath(absoluteFilePath(file))));
    }
    return std::make_shared<platform::ExtensionItem>(std::move(attachments));
}

// The status a finished request exits with; a failed hand-off has been reported by the
// controller, once.
int exitStatus(const ShareViewController& controller, const platform::ExtensionContext& context) {
    if (controller.handoffFailed())
        return kExitFailed;
    switch (context.state()) {
        case platform::ExtensionContext::State::Completed:
            return kExitCompleted;
        case platform::ExtensionContext::State::Cancelled:
            return kExitCancelled;
        case platform::ExtensionContext::State::Pending:
            break;
    }
    std::fprintf(stderr, "parley-share: the request was neither completed nor cancelled\n");
    return kExitFailed;
}

}  // namespace

int main(int argc, char** argv) {
    const ShareCommandLine line =
        ShareCommandLine::parse(std::vector<std::string>(argv + 1, argv + argc));
    if (line.help()) {
        std::fputs(ShareCommandLine::usage().c_str(), stdout);
        return kExitCompleted;
    }
    if (!line.isValid()) {
        std::fprintf(stderr, "parley-share: %s\n\n%s", line.error().c_str(),
                     ShareCommandLine::usage().c_str());
        return EX_USAGE;
    }

    platform::DisplayEventLoop loop(argc, argv);

    std::shared_ptr<platform::Bundle> bundle =
        line.bundlePath() ? std::make_shared<platform::Bundle>(*line.bundlePath())
                          : platform::Bundle::bundleContainingExecutable(ownExecutablePath());
    if (!bundle || bundle->bundleIdentifier().empty()) {
        // Without its identifier the extension cannot tell which host and store are its own.
        if (line.bundlePath())
            std::fprintf(stderr, "parley-share: no extension bundle with an identifier at %s\n",
                         line.bundlePath()->c_str());
        else
            std::fprintf(stderr,
                         "parley-share: not inside an extension bundle (%s); use --bundle PATH\n",
                         ownExecutablePath().c_str());
        return EX_CONFIG;
    }
    platform::Bundle::setMainBundle(bundle);
    // The desktop entry that opens links is named by the extension's identifier; the file
    // managers' entries name the same class and icon.
    loop.setDesktopEntryId(bundle->bundleIdentifier());
    if (const std::optional<std::string> icon = bundle->pathForResource(kWindowIcon, "png"))
        loop.setWindowIconFile(*icon);

    const bool waitsForPerson =
        line.action() == ShareCommandLine::Action::None && !line.snapshotPath() && !line.describe();
    if (waitsForPerson && !platform::DisplayEventLoop::hasDisplay()) {
        std::fprintf(stderr,
                     "parley-share: no display to show the sheet on; give --action or "
                     "--snapshot\n");
        return EX_USAGE;
    }

    // Thunar starts one process per selected folder and one for the files (its entry passes
    // --gather): those started together meet on the session bus, and one sheet shows them all.
    std::vector<std::string> files;
    for (const std::string& file : line.files())
        files.push_back(absoluteFilePath(file));
    std::unique_ptr<platform::LaunchRendezvous> rendezvous;
    if (line.gather() && waitsForPerson && !line.url()) {
        rendezvous = std::make_unique<platform::LaunchRendezvous>(bundle->bundleIdentifier(), files,
                                                                  kGatherWindow);
        if (rendezvous->role() == platform::LaunchRendezvous::Role::HandedOver)
            return kExitCompleted;
        files = rendezvous->operands();
    }

    auto context = std::make_shared<platform::ExtensionContext>(
        std::vector<std::shared_ptr<platform::ExtensionItem>>{makeItem(line, files)});
    // The hand-off's closures hold the controller until the last of them has run.
    auto controller = ShareViewController::create();
    controller->setExtensionContext(context);
    const std::shared_ptr<platform::View> sheet = controller->view();
    // The sheet shows once the share's type is in the store; another share's hand-off or a busy
    // store is waited for on a worker while this loop runs.
    if (!platform::EventLoop::runUntil([&] { return controller->readyToShow(); }, kShowTimeout))
        std::fprintf(stderr, "parley-share: the share type was not written in time\n");
    platform::Window window(
        platform::NSMakeRect(0, 0, sheet->frame().size.width, sheet->frame().size.height),
        "Parley");
    window.center();
    if (rendezvous && rendezvous->role() == platform::LaunchRendezvous::Role::Latecomer)
        window.setFrameOrigin(platform::NSMakePoint(window.frame().origin.x + kLatecomerOffset,
                                                    window.frame().origin.y - kLatecomerOffset));
    window.setContentView(sheet);
    SheetPointer pointer(*controller, window);
    // A single file's picture is chosen once the file's URL has arrived; the picture shows it.
    if (line.snapshotPath() && !platform::EventLoop::runUntilIdle(kCardSettleTimeout))
        std::fprintf(stderr, "parley-share: the card's picture did not settle in time\n");

    if (line.press() != ShareCommandLine::Action::None && !pointer.press(line.press()))
        std::fprintf(stderr, "parley-share: the sheet has nothing to press there\n");
    if (line.focus() != ShareCommandLine::Action::None && !pointer.focus(line.focus()))
        std::fprintf(stderr, "parley-share: the keyboard cannot reach that on the sheet\n");
    if (line.snapshotPath()) {
        const auto picture = window.snapshot(line.scale());
        if (!picture || !picture->writePNG(*line.snapshotPath())) {
            std::fprintf(stderr, "parley-share: cannot write the snapshot to %s\n",
                         line.snapshotPath()->c_str());
            return EX_CANTCREAT;
        }
    }

    if (line.describe()) {
        // The window is never shown: the tree is described as loaded, and nothing is handed over.
        std::fputs(SExt::rootDesc().c_str(), stdout);
        return kExitCompleted;
    }

    if (line.action() != ShareCommandLine::Action::None) {
        if (!pointer.click(line.action()))
            std::fprintf(stderr, "parley-share: the sheet has nothing to click there\n");
    } else if (waitsForPerson) {
        window.makeKeyAndOrderFront();
        auto personDone = [&] {
            return context->state() != platform::ExtensionContext::State::Pending ||
                   !window.isVisible();
        };
        // Each wait gives up after a slice; the person may take longer.
        while (!platform::EventLoop::runUntil(personDone, kWaitSlice))
            continue;
        // Closing the sheet's window is the person's way of saying no.
        if (context->state() == platform::ExtensionContext::State::Pending)
            controller->cancel();
    } else {
        // Only a picture was asked for: the request stays unanswered and nothing is handed over.
        return kExitCompleted;
    }
    // The request has ended: the sheet goes away while the hand-off finishes.
    window.close();

    // Copies run as long as they need: a large file on a slow disk is not cut short. One whose
    // source stopped delivering was given up and no longer counts; every other wait of the
    // hand-off is bounded (ShareViewController).
    while (!platform::EventLoop::runUntilIdle(kWaitSlice))
        continue;
    const int status = exitStatus(*controller, *context);
    if (platform::WorkerPool::shared().hasAbandonedTasks()) {
        // A thread is still blocked in a read that may never return (a dead mount), holding
        // objects that the normal exit would destroy under it; nothing is left to do, so the
        // process ends here, its output flushed.
        std::fflush(nullptr);
        std::_Exit(status);
    }
    return status;
}
