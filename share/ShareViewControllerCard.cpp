#include <string>
#include <vector>

#include "platform/core/ItemProvider.h"
#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/ui/Font.h"
#include "share/CardPicture.h"
#include "share/ControllerSupport.h"
#include "share/ShareViewController.h"
#include "viewkit/ColorSExt.h"

// The preview card above the rows: a picture and, for files, the count line.

namespace {

using controller_support::localized;

// A "{one|other}" or "{zero|one|other}" group of the count format: the word form that agrees
// with |count|. |group| is the text between the braces.
std::string pluralForm(const std::string& group, size_t count) {
    std::vector<std::string> forms(1);
    for (char c : group) {
        if (c == '|')
            forms.emplace_back();
        else
            forms.back() += c;
    }
    if (forms.size() == 2)
        return count == 1 ? forms[0] : forms[1];
    if (forms.size() == 3)
        return forms[count == 0 ? 0 : count == 1 ? 1 : 2];
    return "{" + group + "}";
}

// Fills the count format's one unsigned placeholder ("%lu", "%llu", "%u", "%d"); a table entry
// with any other conversion is shown as written rather than trusted as a printf format. Brace
// groups give the plural forms, as in "%lu {file|files}".
std::string formatCount(const std::string& format, size_t count) {
    std::string out;
    bool filled = false;
    for (size_t i = 0; i < format.size(); ++i) {
        if (format[i] == '{') {
            const size_t close = format.find('}', i);
            if (close != std::string::npos) {
                out += pluralForm(format.substr(i + 1, close - i - 1), count);
                i = close;
                continue;
            }
        }
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

// What a screen reader says of the card: the count line for several files, the file's name for
// one, the link's host for a link.
std::string cardDescription(ShareType type,
                            const std::shared_ptr<platform::ExtensionItem>& item,
                            const std::string& countLine) {
    const size_t attachments = item ? item->attachments().size() : 0;
    const std::string name = attachments > 0 ? item->attachments().front()->suggestedName() : "";
    if (type == ShareTypeUrl) {
        std::string text = localized("ShareExtension.LinkPreview");
        const size_t placeholder = text.find("%@");
        if (placeholder != std::string::npos)
            text.replace(placeholder, 2, name);
        return text;
    }
    return attachments == 1 && !name.empty() ? name : countLine;
}

}  // namespace

void ShareViewController::layoutContent() {
    controller_support::kLog.write("layoutContent invoked.");
    layoutFileContent();
}

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
    const size_t attachments = m_extensionItem ? m_extensionItem->attachments().size() : 0;
    count->setStringValue(formatCount(localized("ShareExtension.FileCount"), attachments));
    count->setAlignment(platform::TextAlignment::Center);
    contentContainer()->addSubview(count);

    setFileImg(std::make_shared<PLSImageView>(
        platform::NSMakeRect(158, 45, CardPicture::kSide, CardPicture::kSide)));
    count->setHidden(m_shareType == ShareTypeUrl);
    fileImg()->setImage(CardPicture::forShare(m_shareType, attachments).image());
    fileImg()->setAccessibilityRole(platform::AccessibilityRole::Image);
    fileImg()->setAccessibilityHelp(
        cardDescription(m_shareType, m_extensionItem, count->stringValue()));
    if (m_shareType != ShareTypeUrl && attachments == 1) {
        auto self = strongSelf();
        m_extensionItem->attachments().front()->loadItemForTypeIdentifier(
            platform::kUTTypeFileURL, nullptr,
            [self](const std::optional<platform::Url>& item,
                   const std::optional<platform::Error>&) { self->showSingleFilePicture(item); });
    }
    contentContainer()->addSubview(fileImg());
    view()->addSubview(contentContainer());
}

// Runs on the load's worker thread: the picture is chosen (a photo read) here, off the main
// thread, and only the finished choice is handed to the main thread.
void ShareViewController::showSingleFilePicture(const std::optional<platform::Url>& item) {
    const CardPicture picture = CardPicture::forFile(item);
    auto self = strongSelf();
    platform::MainQueue::async([self, picture] {
        // The picture first, aspect fill after: the toolkit's version decides how that looks.
        self->fileImg()->setImage(picture.image());
        if (picture.isOwnPicture())
            self->fileImg()->setDrawWithAspectFill(true);
    });
}
