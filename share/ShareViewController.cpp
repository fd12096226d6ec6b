#include "share/ShareViewController.h"

#include <cstdio>
#include <utility>
#include <variant>

#include "platform/Bundle.h"
#include "platform/Color.h"
#include "platform/DistributedNotificationCenter.h"
#include "platform/Error.h"
#include "platform/FileManager.h"
#include "platform/FileStatus.h"
#include "platform/Font.h"
#include "platform/Image.h"
#include "platform/ItemProvider.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "platform/RunningApplication.h"
#include "platform/WorkerPool.h"
#include "platform/Workspace.h"
#include "share/FileExport.h"
#include "share/HandoffKeys.h"
#include "viewkit/ColorSExt.h"

#ifndef PARLEY_HOST_BUNDLE_ID
#error "PARLEY_HOST_BUNDLE_ID must name the host's bundle identifier"
#endif

namespace {

const char* const kLogPrefix = "[ShareViewController]: ";
const char* const kErrorPrefix = "[ShareViewController][error]: ";

void log(const std::string& text) {
    platform::Log::write(kLogPrefix + text);
}
void logError(const std::string& text) {
    platform::Log::write(kErrorPrefix + text);
}

// The identifier with its last dot-separated component removed, as a path extension is dropped
// from a file name; an identifier without a dot stays as it is.
std::string deletingLastComponent(const std::string& identifier) {
    const size_t dot = identifier.rfind('.');
    return dot == std::string::npos ? identifier : identifier.substr(0, dot);
}

// The container's path as a directory name, so that "/" + name gives one separator.
std::string withoutTrailingSlash(std::string path) {
    while (path.size() > 1 && path.back() == '/')
        path.pop_back();
    return path;
}

}  // namespace

ShareViewController::ShareViewController() = default;
ShareViewController::~ShareViewController() = default;

std::shared_ptr<ShareViewController> ShareViewController::strongSelf() {
    return std::static_pointer_cast<ShareViewController>(shared_from_this());
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
    log("bundleId[" + m_bundleId + "]");

    const std::optional<platform::PropertyValue> team =
        bundle->objectForInfoDictionaryKey(handoff::kTeamIdentifierKey);
    log("teamIdentifier[" + platform::describe(team) + "]");
    std::string teamIdentifier;
    if (team && std::holds_alternative<std::string>(*team)) {
        teamIdentifier = std::get<std::string>(*team);
    } else {
        // Without it the group would have no defined name; the host identifier alone is one.
        logError("TeamIdentifier is missing or not a string; the group is [" +
                 std::string(PARLEY_HOST_BUNDLE_ID) + "].");
    }

    m_shareFolderName = teamIdentifier + PARLEY_HOST_BUNDLE_ID;
    m_shareDefaults = std::make_shared<platform::DefaultsSuite>(m_shareFolderName);

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
        m_shareDefaults->setObject(std::string(platform::kUTTypeURL), handoff::kShareTypeKey);
    } else if (attachment &&
               attachment->hasItemConformingToTypeIdentifier(platform::kUTTypeFileURL)) {
        m_shareType = ShareTypeFile;
        view()->setFrame(platform::NSMakeRect(0, 0, 376, 370));
        m_shareDefaults->setObject(std::string(platform::kUTTypeFileURL), handoff::kShareTypeKey);
    } else {
        logError("ShareType is unknown.");
        didFinishShare();
    }

    m_shareDefaults->synchronize();
    logStoredValue(handoff::kShareTypeKey);
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

void ShareViewController::onClickSendToFriend() {
    log("onClickSendToFriend invoked.");
    takeAction(ShareEntrySendToFriend, handoff::kEntrySendToFriend);
}

void ShareViewController::onClickFavToParley() {
    log("onClickFavToParley invoked.");
    takeAction(ShareEntryFavToParley, handoff::kEntryFavToParley);
}

void ShareViewController::takeAction(ShareEntry entry, const char* entryText) {
    platform::MainQueue::assertMainThread("ShareViewController action");
    view();  // the store and the item come from the view loading
    m_shareDefaults->setObject(std::string(entryText), handoff::kShareEntryKey);
    m_shareDefaults->synchronize();
    // Before the hand-off starts: the export's last completion reads it.
    m_shareEntry = entry;
    writeDataToSharedFolder();
    logStoredValue(handoff::kShareEntryKey);
    // The hand-off goes on in the loads' completions, which hold this controller.
    didFinishShare();
}

void ShareViewController::writeDataToSharedFolder() {
    switch (m_shareType) {
        case ShareTypeFile:
            writeFilesToSharedFolder();
            break;
        case ShareTypeUrl:
            writeUrlToSharedFolder();
            break;
        default:
            break;
    }
}

void ShareViewController::writeUrlToSharedFolder() {
    const std::shared_ptr<platform::ItemProvider> attachment =
        m_extensionItem->attachments().front();
    auto self = strongSelf();
    attachment->loadItemForTypeIdentifier(
        platform::kUTTypeURL, nullptr,
        [self](const std::optional<platform::Url>& item, const std::optional<platform::Error>&) {
            // No URL stores no value, which removes the key; the host is woken all the same.
            std::optional<platform::PropertyValue> value;
            if (item)
                value = item->absoluteString();
            self->m_shareDefaults->setObject(value, handoff::kShareUrlKey);
            self->m_shareDefaults->synchronize();
            self->logStoredValue(handoff::kShareUrlKey);
            self->wakeupParley();
        });
}

void ShareViewController::writeFilesToSharedFolder() {
    const auto& attachments = m_extensionItem->attachments();
    auto fileExport = std::make_shared<FileExport>(attachments.size());
    log("item.attachments count[" + std::to_string(attachments.size()) + "].");
    auto self = strongSelf();
    for (const auto& attachment : attachments) {
        if (!attachment) {
            // A missing provider delivers nothing, like a failed load, off the main thread.
            platform::WorkerPool::shared().async(
                [self, fileExport] { self->exportFile(fileExport, std::nullopt); });
            continue;
        }
        // Every attachment is treated as a file, whatever its own types.
        attachment->loadItemForTypeIdentifier(
            platform::kUTTypeFileURL, nullptr,
            [self, fileExport](const std::optional<platform::Url>& item,
                               const std::optional<platform::Error>&) {
                self->exportFile(fileExport, item);
            });
    }
}

// One attachment of a file export, on a worker thread. Measuring and copying happen outside the
// export's lock so that copies run in parallel; the appends, their log lines and the
// completeness test happen under it, so exactly one completion finishes the export.
//
// Two outcomes are ours to define, and both account for the attachment so that the export
// completes and the host is woken:
// - a load that delivers no file URL is listed as a refused file with an empty name and an empty
//   size text (the host learns that an attachment did not arrive);
// - a group with no shared container refuses every file: its name and size text are listed with
//   the refused files, nothing is copied.
void ShareViewController::exportFile(const std::shared_ptr<FileExport>& fileExport,
                                     const std::optional<platform::Url>& item) {
    std::optional<std::string> container =
        platform::FileManager::defaultManager().containerURLForSecurityApplicationGroupIdentifier(
            m_shareFolderName);
    if (container)
        container = withoutTrailingSlash(*container);
    log("sharedFolder path[" + (container ? *container : std::string("(null)")) + "].");

    const std::string source = item && item->isFileURL() ? item->path() : std::string();
    bool accepted = false;
    std::string name;
    std::string sizeText;
    std::string destination;
    if (source.empty()) {
        log("attachment delivered no file URL; listed as refused.");
    } else if (isInvalidFile(source)) {
        name = item->lastPathComponent();
        sizeText = invalidFileSizeString(source);
    } else if (!container) {
        name = item->lastPathComponent();
        sizeText = invalidFileSizeString(source);
        log("no shared folder; not copied [" + source + "].");
    } else {
        accepted = true;
        destination = *container + "/" + item->lastPathComponent();
        // A failed copy (the name already taken, no space, a FIFO) is not examined: the
        // destination is listed all the same and the host finds whatever lies there.
        platform::FileManager::defaultManager().copyItemAtPath(source, destination);
    }

    platform::StringArray fileUrlArr;
    platform::StringArray invalidFileNameArr;
    platform::StringArray invalidFileSizeArr;
    {
        std::lock_guard<std::mutex> lock(fileExport->mutex);
        if (accepted) {
            fileExport->fileUrlArr.push_back(destination);
            log("fileUrlArr addObject [" + source + "].");
        } else {
            fileExport->invalidFileNameArr.push_back(name);
            fileExport->invalidFileSizeArr.push_back(sizeText);
        }
        log("fileUrlArr count[" + std::to_string(fileExport->fileUrlArr.size()) + "].");
        if (!fileExport->isComplete())
            return;
        fileUrlArr = fileExport->fileUrlArr;
        invalidFileNameArr = fileExport->invalidFileNameArr;
        invalidFileSizeArr = fileExport->invalidFileSizeArr;
    }
    finishFileExport(fileUrlArr, invalidFileNameArr, invalidFileSizeArr);
}

void ShareViewController::finishFileExport(const platform::StringArray& fileUrlArr,
                                           const platform::StringArray& invalidFileNameArr,
                                           const platform::StringArray& invalidFileSizeArr) {
    m_shareDefaults->setObject(fileUrlArr, handoff::kSharePathArrayKey);
    m_shareDefaults->setObject(invalidFileNameArr, handoff::kShareInvalidFileNamesKey);
    m_shareDefaults->setObject(invalidFileSizeArr, handoff::kShareInvalidFileSizesKey);
    m_shareDefaults->synchronize();

    switch (m_shareEntry.load()) {
        case ShareEntryFavToParley:
            wakeupParley();
            break;
        case ShareEntrySendToFriend: {
            auto self = strongSelf();
            platform::MainQueue::after(kSendToFriendWakeupDelayNanoseconds,
                                       [self] { self->wakeupParley(); });
            break;
        }
        default:
            break;
    }
}

void ShareViewController::wakeupParley() {
    const auto running =
        platform::RunningApplication::runningApplicationsWithBundleIdentifier(m_bundleId);
    if (!running.empty()) {
        log("Parley is online.");
        platform::DistributedNotificationCenter::defaultCenter().postNotificationName(
            handoff::kNotificationName, nullptr, nullptr, true);
    } else {
        log("Parley is offline.");
        // The outcome of the launch is not examined: the store holds the record either way.
        platform::Workspace::sharedWorkspace().launchApplication(handoff::kHostApplicationPath);
    }
}

void ShareViewController::logStoredValue(const std::string& key) {
    log("NSUserDefaults set value [" + platform::describe(m_shareDefaults->objectForKey(key)) +
        "] for key [" + key + "].");
}

int64_t ShareViewController::GetFileSize(const std::string& path) {
    const std::optional<platform::FileStatus> status = platform::FileStatus::lstat(path);
    return status ? status->size : -1;
}

bool ShareViewController::isInvalidFile(const std::string& path) {
    return GetFileSize(path) > kMaxFileSize;
}

std::string ShareViewController::invalidFileSizeString(const std::string& path) {
    const int64_t n = GetFileSize(path);
    // A file that vanished since it was refused has no size to tell.
    if (n < 0)
        return {};
    // Single precision on purpose: 1,073,741,823 bytes rounds up to 1024.0M.
    const float f = static_cast<float>(n);
    char text[64];
    if (n < 1073741824) {
        const float v = f * 0x1p-20f;
        std::snprintf(text, sizeof text, "%.1fM", static_cast<double>(v));
    } else {
        const float v = f * 0x1p-30f;
        std::snprintf(text, sizeof text, "%.1fG", static_cast<double>(v));
    }
    return text;
}

namespace {
const char* const kStringsTable = "ShareLocalizable";

std::string localized(const std::string& key) {
    return platform::Bundle::mainBundle()->localizedStringForKey(key, "", kStringsTable);
}

// A translucent black: the press tint of the rows and of the Cancel button.
platform::ColorPtr blackWithAlpha(double alpha) {
    return platform::Color::colorWithWhite(0.0, alpha);
}
}  // namespace

namespace {
// Fills the count format's one unsigned placeholder ("%lu", "%llu", "%u", "%d"); a table entry
// with any other conversion is shown as written rather than trusted as a printf format.
std::string formatCount(const std::string& format, size_t count) {
    std::string out;
    bool filled = false;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') {
            out += format[i];
            continue;
        }
        if (format.compare(i, 2, "%%") == 0) {
            out += '%';
            ++i;
            continue;
        }
        size_t used = 0;
        for (const char* conversion : {"%llu", "%lu", "%zu", "%u", "%d"}) {
            const std::string text(conversion);
            if (format.compare(i, text.size(), text) == 0) {
                used = text.size();
                break;
            }
        }
        if (used > 0 && !filled) {
            out += std::to_string(count);
            i += used - 1;
            filled = true;
        } else {
            out += '%';
        }
    }
    return out;
}
}  // namespace

std::weak_ptr<ShareViewController> ShareViewController::weakSelf() {
    return std::static_pointer_cast<ShareViewController>(shared_from_this());
}

void ShareViewController::layoutCancelBtn() {
    setCancelBtn(std::make_shared<PLSOutlineButton>(platform::NSZeroRect));
    PLSOutlineButton& button = *cancelBtn();
    button.setTitle(localized("ShareExtension.Cancel"));
    button.setTitleColor(platform::Color::blackColor());
    button.setCornerRaidus(3.0);
    button.setBackgrounColor(platform::Color::whiteColor());
    button.setBorderColor(SExt::colorWithHex("#b2b2b2"));
    button.setBorderWidth(1.0);
    button.sizeToFit();
    view()->addSubview(cancelBtn());
    // The button is always 70 x 23, whatever the title measured.
    button.setFrame(platform::NSMakeRect(276, 28, 70, 23));

    auto weak = weakSelf();
    button.setDidLeftMouseDownBlock([weak] {
        if (auto self = weak.lock())
            self->cancelBtn()->setBackgrounColor(blackWithAlpha(0.1));
    });
    button.setDidLeftMouseUpBlock([weak] {
        if (auto self = weak.lock()) {
            self->cancelBtn()->setBackgrounColor(platform::Color::whiteColor());
            self->cancel();
        }
    });
}

void ShareViewController::layoutDividers() {
    auto makeDivider = [this](const platform::Rect& frame) {
        auto divider = std::make_shared<PLSCustomDivider>(frame);
        divider->setCustomAlpha(0.1);
        divider->setCustomColor(SExt::colorWithHex("#000000"));
        view()->addSubview(divider);
        return divider;
    };
    setBottomDivider(makeDivider(platform::NSMakeRect(30, 79, 316, 1)));
    setMidDivider(makeDivider(platform::NSMakeRect(30, 129, 316, 1)));
    setTopDivider(makeDivider(platform::NSMakeRect(0, 179, 376, 1)));
}

void ShareViewController::layoutTop() {
    if (m_shareType != ShareTypeUrl && m_shareType != ShareTypeFile) {
        platform::Log::write("[ShareViewController][error]: ShareType is unknown.");
        return;
    }
    setParleyLogoContainer(std::make_shared<platform::View>(platform::NSMakeRect(0, 284, 376, 81)));
    setParleyLogo(std::make_shared<platform::ImageView>(platform::NSMakeRect(170, 30, 35, 27)));
    parleyLogo()->setImage(platform::Image::imageNamed("ParleyLogo"));
    parleyLogoContainer()->addSubview(parleyLogo());
    view()->addSubview(parleyLogoContainer());
}

// Both rows are built alike; only their frame, images, title and closures differ.
ShareViewController::ActionRow ShareViewController::makeActionRow(const platform::Rect& frame,
                                                                  const std::string& iconName,
                                                                  const std::string& titleKey) {
    ActionRow row;
    row.container = std::make_shared<PLSView>(frame);
    row.icon = std::make_shared<platform::ImageView>(platform::NSMakeRect(30, 13, 23, 23));
    row.icon->setImage(platform::Image::imageNamed(iconName));
    row.title = std::make_shared<PLSTextView>(platform::NSMakeRect(57, 18, 150, 14));
    row.title->setString(localized(titleKey));
    row.title->setBackgroundColor(platform::Color::clearColor());
    row.title->setSelectable(false);
    row.title->setFont(platform::Font::systemFontOfSize(14));
    row.arrow = std::make_shared<platform::ImageView>(platform::NSMakeRect(316, 9, 32, 32));
    row.arrow->setImage(platform::Image::imageNamed("Preview_Next_Disable"));
    return row;
}

void ShareViewController::addActionRow(const ActionRow& row) {
    row.container->addSubview(row.icon);
    row.container->addSubview(row.title);
    row.container->addSubview(row.arrow);
    view()->addSubview(row.container);
}

void ShareViewController::layoutFavToParley() {
    ActionRow row = makeActionRow(platform::NSMakeRect(0, 79, 376, 50), "Fav-To-Parley",
                                  "ShareExtension.FavToParley");
    setFavToParleyContainer(row.container);
    setFavHighlighted(false);
    setFavIcon(row.icon);
    setFavToParleyText(row.title);
    setFavArrow(row.arrow);
    addActionRow(row);
    installRowClosures(row, &ShareViewController::setFavHighlighted,
                       &ShareViewController::setSendHighlighted,
                       &ShareViewController::onClickFavToParley);
}

void ShareViewController::layoutSendToFriend() {
    ActionRow row = makeActionRow(platform::NSMakeRect(0, 129, 376, 50), "Send-To-Friend",
                                  "ShareExtension.SendToFriend");
    setSendToFriendContainer(row.container);
    setSendHighlighted(false);
    setSendIcon(row.icon);
    setSendToFriendText(row.title);
    setSendArrow(row.arrow);
    addActionRow(row);
    installRowClosures(row, &ShareViewController::setSendHighlighted,
                       &ShareViewController::setFavHighlighted,
                       &ShareViewController::onClickSendToFriend);
}

// A press tints this row and clears the other; a click clears both, then runs the row's action.
// The closures hold the controller weakly: the views they live on belong to it.
void ShareViewController::installRowClosures(const ActionRow& row,
                                             HighlightSetter own,
                                             HighlightSetter other,
                                             Action action) {
    auto weak = weakSelf();
    auto press = [weak, own, other] {
        if (auto self = weak.lock()) {
            ((*self).*own)(true);
            ((*self).*other)(false);
        }
    };
    auto click = [weak, own, other, action] {
        if (auto self = weak.lock()) {
            ((*self).*own)(false);
            ((*self).*other)(false);
            ((*self).*action)();
        }
    };
    row.title->setMouseDownBlock(press);
    row.title->setMouseUpBlock(click);
    row.container->setMouseDownInsideBlock([press](const platform::Event&) { press(); });
    row.container->setMouseUpInsideBlock([click](const platform::Event&) { click(); });
}

void ShareViewController::setSendHighlighted(bool highlighted) {
    sendHighlighted_ = highlighted;
    applyRowTint(*sendToFriendContainer(), highlighted);
}

void ShareViewController::setFavHighlighted(bool highlighted) {
    favHighlighted_ = highlighted;
    applyRowTint(*favToParleyContainer(), highlighted);
}

void ShareViewController::applyRowTint(platform::View& container, bool highlighted) {
    container.setWantsLayer(true);
    container.layer()->setBackgroundColor(blackWithAlpha(highlighted ? 0.1 : 0.0)->CGColor());
}

void ShareViewController::layoutContent() {
    platform::Log::write("[ShareViewController]: layoutContent invoked.");
    layoutFileContent();
}

// The preview card: the count line now; the picture comes with the image view.
void ShareViewController::layoutFileContent() {
    setContentContainer(std::make_shared<platform::View>(platform::NSMakeRect(0, 179, 376, 105)));
    auto count = std::make_shared<platform::TextField>(platform::NSMakeRect(0, 24, 376, 16));
    setFileCount(count);
    count->setBordered(false);
    count->setTextColor(SExt::colorWithHex("#888888"));
    count->setFont(platform::Font::systemFontOfSize(12));
    count->setSelectable(false);
    count->setEditable(false);
    count->setBackgroundColor(platform::Color::clearColor());
    size_t attachments = m_extensionItem ? m_extensionItem->attachments().size() : 0;
    count->setStringValue(formatCount(localized("ShareExtension.FileCount"), attachments));
    count->setAlignment(platform::TextAlignment::Center);
    contentContainer()->addSubview(count);
    if (m_shareType == ShareTypeUrl)
        count->setHidden(true);
    view()->addSubview(contentContainer());
}
