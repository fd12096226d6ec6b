#include "share/ShareViewController.h"

#include "platform/core/Log.h"
#include "platform/ui/Font.h"
#include "share/ControllerSupport.h"
#include "viewkit/ColorSExt.h"

// The preview card above the rows.

namespace {

using controller_support::localized;

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
