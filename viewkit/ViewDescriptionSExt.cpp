#include "viewkit/ViewDescriptionSExt.h"

#include <cstdio>

#include "platform/ui/Application.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/TextField.h"
#include "platform/ui/TextView.h"
#include "platform/ui/Window.h"
// Puts the debugger's view printer into every program that can describe views.
#include "viewkit/ViewPrinterScript.h"

namespace SExt {

using platform::View;

namespace {

// The formatter's text for a missing object.
const char kNil[] = "(null)";

std::string addressText(const void* object) {
    char text[32];
    std::snprintf(text, sizeof text, "%p", object);
    return text;
}

// "<Class: address>", as an object describes itself.
std::string objectText(const platform::Responder* object) {
    return object ? "<" + object->className() + ": " + addressText(object) + ">" : kNil;
}

// Later rules replace earlier ones: a text view, a text field or an image view shows its text
// bare even when it also has a title.
std::string labelText(const View& view) {
    std::string label;
    if (const auto title = view.titleIfResponds())
        label = "\"" + *title + "\" ";
    if (const auto* textView = dynamic_cast<const platform::TextView*>(&view))
        label = textView->string();
    if (const auto* textField = dynamic_cast<const platform::TextField*>(&view))
        label = textField->stringValue();
    if (const auto* imageView = dynamic_cast<const platform::ImageView*>(&view)) {
        const platform::ImagePtr& image = imageView->image();
        label = image && !image->name().empty() ? image->name() : kNil;
    }
    return label;
}

void appendDescription(const View& view, int64_t level, std::string& out) {
    out += '\n';
    if (level >= 0)
        out.append(static_cast<size_t>(level) + 1, '\t');
    out += "<" + view.className() + ": " + addressText(&view) + "> " + labelText(view) + "(" +
           std::to_string(view.subviews().size()) + " subviews)";
    out += " wantsLayer " + std::to_string(view.wantsLayer() ? 1 : 0);
    out += " isOpaque " + std::to_string(view.isOpaque() ? 1 : 0);
    out += " isHidden " + std::to_string(view.isHidden() ? 1 : 0);
    out += " bounds " + platform::NSStringFromRect(view.bounds());
    out += " frame " + platform::NSStringFromRect(view.frame());
    if (level < 0)
        return;
    for (const auto& subview : view.subviews())
        appendDescription(*subview, level + 1, out);
}

}  // namespace

std::string recursiveDescriptionOfView(const View& view, int64_t level) {
    std::string description;
    appendDescription(view, level, description);
    return description;
}

std::string selfDesc(const View& view) {
    return recursiveDescriptionOfView(view, -1);
}

std::string debugDescription(const View& view) {
    return recursiveDescriptionOfView(view, 0);
}

std::string rootDescWithLevel(const View& view) {
    const View* root = &view;
    while (root->superview())
        root = root->superview();
    return recursiveDescriptionOfView(*root, 0);
}

std::string rootDescWithLevel(const View& view, int64_t levels) {
    const View* stop = &view;
    if (levels > 0 && stop->superview()) {
        stop = stop->superview();
        while (levels >= 2 && stop->superview()) {
            --levels;
            stop = stop->superview();
        }
    }
    return recursiveDescriptionOfView(*stop, 0);
}

std::string rootDescWithLevel1(const View& view) {
    return rootDescWithLevel(view, 1);
}
std::string rootDescWithLevel2(const View& view) {
    return rootDescWithLevel(view, 2);
}
std::string rootDescWithLevel3(const View& view) {
    return rootDescWithLevel(view, 3);
}
std::string rootDescWithLevel4(const View& view) {
    return rootDescWithLevel(view, 4);
}
std::string rootDescWithLevel5(const View& view) {
    return rootDescWithLevel(view, 5);
}
std::string rootDescWithLevel6(const View& view) {
    return rootDescWithLevel(view, 6);
}

std::string rootDesc() {
    std::string description;
    for (const platform::Window* window : platform::Application::windows()) {
        // Windows have no controllers here: the controller is always the formatter's nil.
        description += objectText(window) + " controller " + kNil + " title " + window->title() +
                       " frame " + platform::NSStringFromRect(window->frame()) +
                       " firstRespondser " + objectText(window->firstResponder()) + "\n";
        if (const auto& contentView = window->contentView())
            description += debugDescription(*contentView);
        description += "\n\n";
    }
    return description;
}

}  // namespace SExt

extern "C" __attribute__((used)) const char* parleyViewDebugDescription(
    const platform::View* view) {
    static std::string text;
    text = view ? SExt::debugDescription(*view) : std::string();
    return text.c_str();
}
