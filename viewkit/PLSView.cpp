#include "viewkit/PLSView.h"

using platform::Event;

PLSView::PLSView(const platform::Rect& frame) : View(frame) {}

bool PLSView::isInside(const Event& event) const {
    const platform::Point point = convertPoint(event.locationInWindow(), nullptr);
    return platform::NSPointInRect(point, bounds());
}

void PLSView::mouseDown(const Event& event) {
    if (!mouseDownInsideBlock_) {
        View::mouseDown(event);
        return;
    }
    if (!isInside(event))
        return;
    // A copy: the closure may replace itself (or drop this view) while it runs.
    MouseInsideBlock block = mouseDownInsideBlock_;
    block(event);
}

void PLSView::mouseUp(const Event& event) {
    if (!mouseUpInsideBlock_) {
        View::mouseUp(event);
        return;
    }
    if (!isInside(event) || event.clickCount() == 2)
        return;
    MouseInsideBlock block = mouseUpInsideBlock_;
    block(event);
}
