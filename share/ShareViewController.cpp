#include "share/ShareViewController.h"

#include <variant>

#include "platform/core/Bundle.h"
#include "platform/core/DistributedNotificationCenter.h"
#include "platform/core/Error.h"
#include "platform/core/ItemProvider.h"
#include "platform/core/MainQueue.h"
#include "platform/core/WorkerPool.h"
#include "share/ControllerSupport.h"
#include "viewkit/ColorSExt.h"

#ifndef PARLEY_HOST_BUNDLE_ID
#error "PARLEY_HOST_BUNDLE_ID must name the host's bundle identifier"
#endif

// Start-up: identity, the store, the item's classification, and the request's two endings.

namespace {

using controller_support::kErrorLog;
using controller_support::kLog;

// The identifier with its last dot-separated component removed, as a path extension is dropped
// from a file name; an identifier without a dot stays as it is.
std::string deletingLastComponent(const std::string& identifier) {
    const size_t dot = identifier.rfind('.');
    return dot == std::string::npos ? identifier : identifier.substr(0, dot);
}

}  // namespace

ShareViewController::ShareViewController(ConstructionKey) {}

ShareViewController::~ShareViewController() = default;

// create() is the only maker, so a shared owner always exists; weak_from_this never throws.
std::shared_ptr<ShareViewController> ShareViewController::strongSelf() {
    return std::static_pointer_cast<ShareViewController>(weak_from_this().lock());
}

std::weak_ptr<ShareViewController> ShareViewController::weakSelf() {
    return strongSelf();
}

std::string ShareViewController::nibName() const {
    return "ShareViewController";
}

void ShareViewController::loadView() {
    platform::MainQueue::assertMainThread("ShareViewController::loadView");
    platform::ViewController::loadView();
    setup();
    // The type's write and flush run while the sheet is built; its read-back line waits for the
    // sheet's lines, so that they come first whatever the worker's pace.
    auto sheetBuilt = std::make_shared<std::promise<void>>();
    writeShareTypeUnderShareLock(sheetBuilt->get_future().share());
    buildSheet();
    sheetBuilt->set_value();
}

bool ShareViewController::readyToShow() const {
    return shareTypeWritten_.valid() &&
           shareTypeWritten_.wait_for(std::chrono::seconds(0)) == std::future_status::ready;
}

// Another share may be handing over: its host must read its type, not ours, so the type waits
// for the share lock, on a worker, and the sheet shows when it is written. A wait that runs out
// leaves the type to the click, which writes it again in any case.
void ShareViewController::writeShareTypeUnderShareLock(std::shared_future<void> sheetBuilt) {
    auto written = std::make_shared<std::promise<void>>();
    shareTypeWritten_ = written->get_future().share();
    auto self = strongSelf();
    platform::WorkerPool::shared().async([self, written, sheetBuilt] {
        {
            std::string error;
            const std::unique_ptr<platform::FileLock> lock =
                platform::FileLock::acquire(self->shareLockPath(), kShareLockWaitAtStartup, error);
            if (lock)
                self->handoffRecord_->writeShareType(self->m_shareType);
            else
                kLog.write("the share lock was not taken (" + error +
                           "); the type is written at the click.");
            sheetBuilt.wait();
            if (lock)
                self->handoffRecord_->logShareType();
        }
        written->set_value();
        // While the person looks at the sheet, and not before: the bus would only slow the
        // start-up down. A bus that stalls at the wake-up then still takes the notification into
        // its queue. A task of its own: the end of this one tells the main thread to show.
        if (self->m_shareType != ShareTypeUnknown)
            platform::WorkerPool::shared().async([] {
                platform::DistributedNotificationCenter::defaultCenter().connect(
                    std::chrono::milliseconds(250));
            });
    });
}

void ShareViewController::buildSheet() {
    // One pass, whatever setup found; the order of the routines is the stacking order.
    platform::View& sheet = *view();
    sheet.setWantsLayer(true);
    sheet.layer()->setBackgroundColor(SExt::colorWithHex("#F7F7F7")->CGColor());
    layoutCancelBtn();
    layoutDividers();
    layoutFavToParley();
    layoutSendToFriend();
    layoutContent();
    layoutTop();
}

void ShareViewController::setup() {
    const std::shared_ptr<platform::Bundle> bundle = platform::Bundle::mainBundle();

    m_bundleId = deletingLastComponent(bundle->bundleIdentifier());
    kLog.write("bundleId[" + m_bundleId + "]");

    const std::optional<platform::PropertyValue> team =
        bundle->objectForInfoDictionaryKey(HandoffRecord::teamIdentifierKey());
    kLog.write("teamIdentifier[" + platform::describe(team) + "]");
    std::string teamIdentifier;
    if (team && std::holds_alternative<std::string>(*team)) {
        teamIdentifier = std::get<std::string>(*team);
    } else {
        // Without it the group would have no defined name; the host identifier alone is one.
        kErrorLog.write("TeamIdentifier is missing or not a string; the group is [" +
                        std::string(PARLEY_HOST_BUNDLE_ID) + "].");
    }

    m_shareFolderName = teamIdentifier + PARLEY_HOST_BUNDLE_ID;
    m_shareDefaults = std::make_shared<platform::DefaultsSuite>(m_shareFolderName);
    handoffRecord_ = std::make_shared<HandoffRecord>(m_shareDefaults);

    const std::shared_ptr<platform::ExtensionContext>& context = extensionContext();
    if (context && !context->inputItems().empty())
        m_extensionItem = context->inputItems().front();

    // An item with no attachments is classified like a request with no item: unknown.
    std::shared_ptr<platform::ItemProvider> attachment;
    if (m_extensionItem && !m_extensionItem->attachments().empty())
        attachment = m_extensionItem->attachments().front();

    // A file URL is also a URL: the order of the tests makes it a file share.
    if (attachment && attachment->hasItemConformingToTypeIdentifier(platform::kUTTypeURL) &&
        !attachment->hasItemConformingToTypeIdentifier(platform::kUTTypeFileURL)) {
        m_shareType = ShareTypeUrl;
        view()->setFrame(platform::NSMakeRect(0, 0, 376, 370));
    } else if (attachment &&
               attachment->hasItemConformingToTypeIdentifier(platform::kUTTypeFileURL)) {
        m_shareType = ShareTypeFile;
        view()->setFrame(platform::NSMakeRect(0, 0, 376, 370));
    } else {
        kErrorLog.write("ShareType is unknown.");
        didFinishShare();
    }
    // The type is written while the sheet is built (writeShareTypeUnderShareLock).
}

void ShareViewController::cancel() {
    platform::MainQueue::assertMainThread("ShareViewController::cancel");
    if (!extensionContext())
        return;
    extensionContext()->cancelRequestWithError(platform::Error::errorWithDomain(
        platform::NSCocoaErrorDomain, platform::NSUserCancelledError));
}

void ShareViewController::didFinishShare() {
    if (!extensionContext())
        return;
    extensionContext()->completeRequestReturningItems({}, nullptr);
}
