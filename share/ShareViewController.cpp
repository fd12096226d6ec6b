#include "share/ShareViewController.h"

#include <variant>

#include "platform/core/Bundle.h"
#include "platform/core/Error.h"
#include "platform/core/ItemProvider.h"
#include "platform/core/MainQueue.h"
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
    buildSheet();
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

    handoffRecord_->writeShareType(m_shareType);
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
