#include "apps/parley-share/SheetPointer.h"

#include "platform/ui/Event.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"
#include "share/ShareViewController.h"

SheetPointer::SheetPointer(ShareViewController& controller, platform::Window& window)
    : controller_(controller), window_(window) {}

platform::View* SheetPointer::viewOf(ShareCommandLine::Action target) const {
    switch (target) {
        case ShareCommandLine::Action::SendToFriend:
            return controller_.sendToFriendText().get();
        case ShareCommandLine::Action::FavToParley:
            return controller_.favToParleyText().get();
        case ShareCommandLine::Action::Cancel:
            return controller_.cancelBtn().get();
        case ShareCommandLine::Action::None:
            break;
    }
    return nullptr;
}

std::optional<platform::Point> SheetPointer::locationOf(ShareCommandLine::Action target) const {
    const platform::View* view = viewOf(target);
    if (!view || view->window() != &window_)
        return std::nullopt;
    const platform::Rect bounds = view->bounds();
    return view->convertPointToView(platform::NSMakePoint(bounds.midX(), bounds.midY()), nullptr);
}

bool SheetPointer::press(ShareCommandLine::Action target) {
    return send(target, false);
}

bool SheetPointer::click(ShareCommandLine::Action target) {
    return send(target, true);
}

bool SheetPointer::focus(ShareCommandLine::Action target) {
    const platform::View* view = viewOf(target);
    if (!view || view->window() != &window_)
        return false;
    const size_t stops = window_.accessibilityElements().size();
    for (size_t tab = 0; tab < stops; ++tab) {
        window_.sendEvent(
            *platform::Event::keyEvent(platform::EventType::KeyDown, platform::kVK_Tab, "\t"));
        const std::shared_ptr<platform::View> focused = window_.keyboardFocusView();
        if (focused && (focused.get() == view || view->isDescendantOf(focused.get())))
            return true;
    }
    return false;
}

bool SheetPointer::send(ShareCommandLine::Action target, bool release) {
    const std::optional<platform::Point> location = locationOf(target);
    if (!location)
        return false;
    if (release) {
        window_.performClick(*location);
        return true;
    }
    // A button follows the pointer through its mouse-up; it must be where the events say.
    window_.setMouseLocationOutsideOfEventStream(*location);
    window_.sendEvent(*platform::Event::mouseEvent(platform::EventType::LeftMouseDown, *location, 1,
                                                   0, 0, window_.windowNumber()));
    return true;
}
