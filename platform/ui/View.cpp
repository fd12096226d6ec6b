#include "platform/ui/View.h"

#include <algorithm>

#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/Window.h"

namespace platform {

namespace {

const Logger kLog("View: ");

}  // namespace

View::View(const Rect& frame) : frame_(frame) {
    MainQueue::assertMainThread("View");
}

View::~View() {
    // Subviews that outlive their parent (held elsewhere) must not point back at it.
    for (const auto& subview : subviews_) {
        subview->superview_ = nullptr;
        subview->setWindow(nullptr);
    }
    if (window_)
        window_->viewWillLeave(this);
}

// --- Geometry ---------------------------------------------------------------------------------

void View::setFrame(const Rect& frame) {
    frame_ = frame;
    frameDidChange();
    setNeedsDisplay(true);
}

// Neither setter goes through setFrame: a subclass may veto the origin and the frame separately.
void View::setFrameOrigin(Point origin) {
    frame_.origin = origin;
    frameDidChange();
    setNeedsDisplay(true);
}

void View::setFrameSize(Size size) {
    frame_.size = size;
    frameDidChange();
    setNeedsDisplay(true);
}

Point View::offsetToBase() const {
    Point offset;
    for (const View* view = this; view; view = view->superview_) {
        offset.x += view->frame_.origin.x;
        offset.y += view->frame_.origin.y;
    }
    return offset;
}

Point View::convertPoint(Point point, const View* fromView) const {
    Point base = point;
    if (fromView) {
        const Point from = fromView->offsetToBase();
        base = {point.x + from.x, point.y + from.y};
    }
    const Point to = offsetToBase();
    return {base.x - to.x, base.y - to.y};
}

Point View::convertPointToView(Point point, const View* toView) const {
    const Point from = offsetToBase();
    const Point base{point.x + from.x, point.y + from.y};
    if (!toView)
        return base;
    const Point to = toView->offsetToBase();
    return {base.x - to.x, base.y - to.y};
}

Rect View::convertRect(const Rect& rect, const View* fromView) const {
    return {convertPoint(rect.origin, fromView), rect.size};
}

Rect View::convertRectToView(const Rect& rect, const View* toView) const {
    return {convertPointToView(rect.origin, toView), rect.size};
}

// --- Tree -------------------------------------------------------------------------------------

void View::addSubview(std::shared_ptr<View> view) {
    MainQueue::assertMainThread("View::addSubview");
    if (!view || isDescendantOf(view.get())) {
        kLog.write("addSubview ignored (no view, or it would make a cycle)");
        return;
    }
    // |view| holds the subview alive while it moves from its old parent.
    if (view->superview_)
        view->removeFromSuperview();
    subviews_.push_back(view);
    view->superview_ = this;
    view->setWindow(window_);
    view->setNeedsDisplay(true);
}

void View::removeFromSuperview() {
    MainQueue::assertMainThread("View::removeFromSuperview");
    View* parent = superview_;
    if (!parent)
        return;
    auto& siblings = parent->subviews_;
    auto found = std::find_if(siblings.begin(), siblings.end(),
                              [this](const std::shared_ptr<View>& v) { return v.get() == this; });
    // Erasing may drop the last strong reference: keep this view alive until we are done.
    std::shared_ptr<View> keepAlive;
    if (found != siblings.end()) {
        keepAlive = *found;
        siblings.erase(found);
    }
    superview_ = nullptr;
    setWindow(nullptr);
    parent->setNeedsDisplay(true);
}

bool View::isDescendantOf(const View* view) const {
    for (const View* v = this; v; v = v->superview_)
        if (v == view)
            return true;
    return false;
}

void View::setWindow(Window* window) {
    Window* old = window_;
    if (old && old != window)
        old->viewWillLeave(this);
    window_ = window;
    for (const auto& subview : subviews_)
        subview->setWindow(window);
    if (old != window)
        viewDidMoveToWindow();
}

View* View::hitTest(Point point) {
    if (hidden_ || !NSPointInRect(point, frame_))
        return nullptr;
    const Point local{point.x - frame_.origin.x, point.y - frame_.origin.y};
    for (auto it = subviews_.rbegin(); it != subviews_.rend(); ++it)
        if (View* hit = (*it)->hitTest(local))
            return hit;
    return this;
}

Responder* View::nextResponder() const {
    if (superview_)
        return superview_;
    return window_;
}

// --- Display ----------------------------------------------------------------------------------

void View::setHidden(bool hidden) {
    if (hidden_ == hidden)
        return;
    hidden_ = hidden;
    setNeedsDisplay(true);
}

bool View::isHiddenOrHasHiddenAncestor() const {
    for (const View* view = this; view; view = view->superview_) {
        if (view->hidden_)
            return true;
    }
    return false;
}

// --- Accessibility ----------------------------------------------------------------------------

bool View::accessibilityPerformPress() {
    MainQueue::assertMainThread("View::accessibilityPerformPress");
    if (!window_ || isHiddenOrHasHiddenAncestor())
        return false;
    const Rect box = bounds();
    window_->performClick(convertPointToView(NSMakePoint(box.midX(), box.midY()), nullptr));
    return true;
}

void View::setAlphaValue(double alpha) {
    alpha_ = alpha;
    setNeedsDisplay(true);
}

// Every setter that changes what a view shows comes through here: the one check for them all.
void View::setNeedsDisplay(bool needsDisplay) {
    MainQueue::assertMainThread("View::setNeedsDisplay");
    needsDisplay_ = needsDisplay;
    if (needsDisplay && window_)
        window_->viewNeedsDisplay();
}

void View::setClipsToBounds(bool clips) {
    clipsToBounds_ = clips;
    setNeedsDisplay(true);
}

void View::setWantsLayer(bool wantsLayer) {
    wantsLayer_ = wantsLayer;
    if (wantsLayer_ && !layer_)
        layer_ = std::make_shared<Layer>();
    setNeedsDisplay(true);
}

void View::setLayer(std::shared_ptr<Layer> layer) {
    layer_ = std::move(layer);
    setNeedsDisplay(true);
}

void View::drawRect(const Rect&) {}

void View::drawFocusRing(GraphicsContext&) {}

void View::displayInContext(GraphicsContext& context) {
    MainQueue::assertMainThread("View::displayInContext");
    if (hidden_)
        return;
    const Rect ownBounds = bounds();

    context.saveGraphicsState();
    context.translateBy(frame_.origin.x, frame_.origin.y);
    // Opacity multiplies down the tree (applied to each drawing operation, not to the group).
    context.setAlpha(context.alpha() * std::clamp(alpha_, 0.0, 1.0));

    context.saveGraphicsState();
    if (clipsToBounds_)
        context.clipToRect(ownBounds);
    if (wantsLayer_ && layer_) {
        layer_->drawInContext(context, ownBounds);
        if (layer_->masksToBounds())
            layer_->clipToShape(context, ownBounds);
    }
    {
        GraphicsContext::Current current(&context);
        drawRect(ownBounds);
    }
    needsDisplay_ = false;
    // A copy: drawing code may change the tree.
    const std::vector<std::shared_ptr<View>> children = subviews_;
    for (const auto& child : children)
        child->displayInContext(context);
    context.restoreGraphicsState();

    {
        GraphicsContext::Current current(&context);
        drawFocusRing(context);
    }
    context.restoreGraphicsState();
}

}  // namespace platform
