#include "platform/ui/Window.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QNativeGestureEvent>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QRasterWindow>
#include <QScreen>
#include <QStyleHints>
#include <QTouchEvent>
#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/core/Log.h"
#include "platform/core/MainQueue.h"
#include "platform/ui/Application.h"
#include "platform/ui/Bitmap.h"
#include "platform/ui/DisplayEventLoop.h"
#include "platform/ui/FocusRingStyle.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/View.h"
#include "platform/ui/WindowAccessibility.h"

namespace platform {

namespace {

const Logger kLog("Window: ");

int nextWindowNumber = 1;

// The desktop's window background, under a content view that leaves pixels transparent.
const QColor kWindowBackground(0xEC, 0xEC, 0xEC);

uint64_t modifierFlagsOf(Qt::KeyboardModifiers modifiers) {
    uint64_t flags = 0;
    if (modifiers & Qt::ShiftModifier)
        flags |= NSEventModifierFlagShift;
    if (modifiers & Qt::ControlModifier)
        flags |= NSEventModifierFlagControl;
    if (modifiers & Qt::AltModifier)
        flags |= NSEventModifierFlagOption;
    if (modifiers & Qt::MetaModifier)
        flags |= NSEventModifierFlagCommand;
    return flags;
}

// Qt's key to the platform's virtual key code (ANSI layout); 0 for keys we do not name, whose
// meaning then travels in the event's characters.
uint16_t virtualKeyCodeOf(int key) {
    switch (key) {
        case Qt::Key_Escape:
            return kVK_Escape;
        case Qt::Key_Return:
            return kVK_Return;
        case Qt::Key_Enter:
            return kVK_ANSI_KeypadEnter;
        case Qt::Key_Left:
            return kVK_LeftArrow;
        case Qt::Key_Right:
            return kVK_RightArrow;
        case Qt::Key_Down:
            return kVK_DownArrow;
        case Qt::Key_Up:
            return kVK_UpArrow;
        case Qt::Key_Backspace:
            return kVK_Delete;
        case Qt::Key_Tab:
        case Qt::Key_Backtab:  // Shift+Tab; the modifier flags keep the Shift
            return kVK_Tab;
        case Qt::Key_Space:
            return kVK_Space;
        case Qt::Key_Delete:
            return kVK_ForwardDelete;
        case Qt::Key_Home:
            return kVK_Home;
        case Qt::Key_End:
            return kVK_End;
        case Qt::Key_PageUp:
            return kVK_PageUp;
        case Qt::Key_PageDown:
            return kVK_PageDown;
        default:
            break;
    }
    if (key >= Qt::Key_A && key <= Qt::Key_Z) {
        static const uint16_t letters[26] = {
            kVK_ANSI_A, kVK_ANSI_B, kVK_ANSI_C, kVK_ANSI_D, kVK_ANSI_E, kVK_ANSI_F, kVK_ANSI_G,
            kVK_ANSI_H, kVK_ANSI_I, kVK_ANSI_J, kVK_ANSI_K, kVK_ANSI_L, kVK_ANSI_M, kVK_ANSI_N,
            kVK_ANSI_O, kVK_ANSI_P, kVK_ANSI_Q, kVK_ANSI_R, kVK_ANSI_S, kVK_ANSI_T, kVK_ANSI_U,
            kVK_ANSI_V, kVK_ANSI_W, kVK_ANSI_X, kVK_ANSI_Y, kVK_ANSI_Z};
        return letters[key - Qt::Key_A];
    }
    if (key >= Qt::Key_0 && key <= Qt::Key_9) {
        static const uint16_t digits[10] = {kVK_ANSI_0, kVK_ANSI_1, kVK_ANSI_2, kVK_ANSI_3,
                                            kVK_ANSI_4, kVK_ANSI_5, kVK_ANSI_6, kVK_ANSI_7,
                                            kVK_ANSI_8, kVK_ANSI_9};
        return digits[key - Qt::Key_0];
    }
    return 0;
}

// The keyboard focus ring around |focused| (window coordinates), above everything the views
// drew, on |image| of a window |height| points high at |scale|. It lies just outside the view,
// kept inside the window where the view reaches its edges.
void paintKeyboardFocusRing(QImage& image, const Rect& focused, double height, double scale) {
    const double half = focus_ring_style::kWidth / 2;
    const Rect fromTop = flippedRect(focused, height);
    QRectF ring(fromTop.origin.x - half, fromTop.origin.y - half, fromTop.size.width + 2 * half,
                fromTop.size.height + 2 * half);
    ring = ring.intersected(
        QRectF(half, half, image.width() / scale - 2 * half, image.height() / scale - 2 * half));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.scale(scale, scale);
    painter.setPen(QPen(focus_ring_style::kColor, focus_ring_style::kWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(ring, 4, 4);
}

// The window's pixels, |width| x |height| points at |scale|: the window background, the content
// view, then the keyboard focus ring if any. Drawn at device pixels so the toolkit sees the true
// backing scale.
QImage backingImage(const std::shared_ptr<View>& content,
                    double width,
                    double height,
                    double scale,
                    const std::optional<Rect>& focusRing) {
    QImage image(static_cast<int>(std::ceil(width * scale)),
                 static_cast<int>(std::ceil(height * scale)), QImage::Format_ARGB32_Premultiplied);
    image.fill(kWindowBackground);
    if (content) {
        QPainter painter(&image);
        GraphicsContext context(&painter, height, scale);
        content->displayInContext(context);
    }
    if (focusRing)
        paintKeyboardFocusRing(image, *focusRing, height, scale);
    return image;
}

// Where the keyboard focus ring goes in |window|: around the focused view, in window
// coordinates; nothing before the first Tab.
std::optional<Rect> keyboardFocusRingOf(const platform::Window& window) {
    const std::shared_ptr<View> focused = window.keyboardFocusView();
    if (!focused)
        return std::nullopt;
    return focused->convertRectToView(focused->bounds(), nullptr);
}

}  // namespace

// The window on a display: paints the content view and turns Qt's input into our events.
class NativeWindow : public QRasterWindow {
  public:
    explicit NativeWindow(platform::Window* owner) : owner_(owner) {}

    // Qt lists an application's windows to assistive technology by their root interface.
    QAccessibleInterface* accessibleRoot() const override {
        return QAccessible::queryAccessibleInterface(const_cast<NativeWindow*>(this));
    }

  protected:
    void paintEvent(QPaintEvent*) override {
        const double scale = devicePixelRatio();
        // The window then shows the image at its device pixel ratio.
        QImage image = backingImage(owner_->contentView(), width(), height(), scale,
                                    keyboardFocusRingOf(*owner_));
        image.setDevicePixelRatio(scale);
        QPainter painter(this);
        painter.drawImage(QPointF(0, 0), image);
    }

    void mousePressEvent(QMouseEvent* event) override {
        lastPressTimestamp_ = event->timestamp();
        const EventType type = pressTypeOf(event->button());
        if (type == EventType::MouseMoved)
            return;
        deliverMouse(type, event, countClick(event));
    }

    // Qt reports the second press of a double click as a double-click event, with or without a
    // press before it. Our click count is our own; this counts as a press only when no press
    // with the same timestamp was just delivered.
    void mouseDoubleClickEvent(QMouseEvent* event) override {
        if (event->timestamp() == lastPressTimestamp_)
            return;
        mousePressEvent(event);
    }

    void mouseReleaseEvent(QMouseEvent* event) override {
        EventType type = EventType::MouseMoved;
        if (event->button() == Qt::LeftButton)
            type = EventType::LeftMouseUp;
        if (event->button() == Qt::RightButton)
            type = EventType::RightMouseUp;
        if (type == EventType::MouseMoved)
            return;
        deliverMouse(type, event, clickCount_);
    }

    void mouseMoveEvent(QMouseEvent* event) override {
        const bool dragging = event->buttons() & Qt::LeftButton;
        deliverMouse(dragging ? EventType::LeftMouseDragged : EventType::MouseMoved, event,
                     dragging ? clickCount_ : 0);
    }

    // Touchpad pinches and two-finger double taps arrive as native gestures, touches as touch
    // events; both become our events at the gesture's position.
    bool event(QEvent* event) override {
        switch (event->type()) {
            case QEvent::NativeGesture: {
                auto* gesture = static_cast<QNativeGestureEvent*>(event);
                if (gesture->gestureType() == Qt::ZoomNativeGesture)
                    deliverGesture(EventType::Magnify, gesture->position(), gesture->value());
                else if (gesture->gestureType() == Qt::SmartZoomNativeGesture)
                    deliverGesture(EventType::SmartMagnify, gesture->position(), 0);
                else
                    return QRasterWindow::event(event);
                event->accept();
                return true;
            }
            case QEvent::TouchBegin:
            case QEvent::TouchUpdate:
            case QEvent::TouchEnd:
            case QEvent::TouchCancel: {
                auto* touch = static_cast<QTouchEvent*>(event);
                const QPointF position =
                    touch->points().isEmpty() ? QPointF() : touch->points().first().position();
                // Touches no view takes are left to Qt, which turns them into mouse events.
                if (event->type() == QEvent::TouchBegin &&
                    !owner_->touchTargetAt(baseLocationOf(position)))
                    return QRasterWindow::event(event);
                const EventType type =
                    event->type() == QEvent::TouchBegin    ? EventType::TouchesBegan
                    : event->type() == QEvent::TouchUpdate ? EventType::TouchesMoved
                    : event->type() == QEvent::TouchEnd    ? EventType::TouchesEnded
                                                           : EventType::TouchesCancelled;
                owner_->sendEvent(*Event::mouseEvent(
                    type, baseLocationOf(position), 0, modifierFlagsOf(touch->modifiers()),
                    touch->timestamp() / 1000.0, owner_->windowNumber()));
                event->accept();
                return true;
            }
            default:
                return QRasterWindow::event(event);
        }
    }

    void keyPressEvent(QKeyEvent* event) override { deliverKey(EventType::KeyDown, event); }
    void keyReleaseEvent(QKeyEvent* event) override { deliverKey(EventType::KeyUp, event); }

    void hideEvent(QHideEvent* event) override {
        QRasterWindow::hideEvent(event);
        owner_->nativeWindowHidden();
    }

  private:
    static EventType pressTypeOf(Qt::MouseButton button) {
        if (button == Qt::LeftButton)
            return EventType::LeftMouseDown;
        if (button == Qt::RightButton)
            return EventType::RightMouseDown;
        return EventType::MouseMoved;
    }

    // |position| is in Qt's window coordinates (top-left origin, y down); the result in the
    // window's base coordinates.
    Point baseLocationOf(const QPointF& position) const {
        return flippedPoint({position.x(), position.y()}, height());
    }

    int countClick(const QMouseEvent* event) {
        const QStyleHints* hints = QGuiApplication::styleHints();
        const QPointF position = event->position();
        const bool quick = clickCount_ > 0 && event->button() == lastButton_ &&
                           event->timestamp() - lastClickTimestamp_ <=
                               static_cast<quint64>(hints->mouseDoubleClickInterval());
        const bool near =
            (position - lastClickPosition_).manhattanLength() <= hints->mouseDoubleClickDistance();
        clickCount_ = quick && near ? clickCount_ + 1 : 1;
        lastButton_ = event->button();
        lastClickTimestamp_ = event->timestamp();
        lastClickPosition_ = position;
        return clickCount_;
    }

    void deliverMouse(EventType type, const QMouseEvent* event, int clickCount) {
        const auto ours = Event::mouseEvent(type, baseLocationOf(event->position()), clickCount,
                                            modifierFlagsOf(event->modifiers()),
                                            event->timestamp() / 1000.0, owner_->windowNumber());
        owner_->sendEvent(*ours);
    }

    void deliverGesture(EventType type, const QPointF& position, double magnification) {
        owner_->sendEvent(*Event::magnifyEvent(type, baseLocationOf(position), magnification));
    }

    void deliverKey(EventType type, const QKeyEvent* event) {
        const auto ours =
            Event::keyEvent(type, virtualKeyCodeOf(event->key()), event->text().toStdString(),
                            modifierFlagsOf(event->modifiers()), event->timestamp() / 1000.0,
                            owner_->windowNumber());
        owner_->sendEvent(*ours);
    }

    // The name Window alone is QSurface's enum value inside a QWindow.
    platform::Window* owner_;
    int clickCount_ = 0;
    Qt::MouseButton lastButton_ = Qt::NoButton;
    quint64 lastClickTimestamp_ = 0;
    quint64 lastPressTimestamp_ = ~quint64(0);
    QPointF lastClickPosition_;
};

struct Window::Native {
    std::unique_ptr<NativeWindow> window;                // made when first shown on a display
    std::unique_ptr<WindowAccessibility> accessibility;  // goes before the window
    double scaleOverride = 0;
};

Window::Window(const Rect& contentRect, const std::string& title)
    : native_(std::make_unique<Native>()),
      firstResponder_(this),
      frame_(contentRect),
      windowNumber_(nextWindowNumber++),
      title_(title) {
    MainQueue::assertMainThread("Window");
    Application::addWindow(this);
}

Window::~Window() {
    Application::removeWindow(this);
    native_->accessibility.reset();
    native_->window.reset();
    if (contentView_)
        contentView_->setWindow(nullptr);
}

void Window::setContentView(std::shared_ptr<View> view) {
    MainQueue::assertMainThread("Window::setContentView");
    if (view == contentView_)
        return;
    if (contentView_)
        contentView_->setWindow(nullptr);
    contentView_ = std::move(view);
    if (contentView_) {
        contentView_->removeFromSuperview();
        contentView_->setFrame({{0, 0}, frame_.size});
        contentView_->setWindow(this);
    }
    viewNeedsDisplay();
}

void Window::sendEvent(const Event& event) {
    MainQueue::assertMainThread("Window::sendEvent");
    dispatchEvent(event);
    // Layer changes (a row's tint, say) mark nothing dirty themselves; like a layer transaction,
    // what an event handler changed shows when the event's turn ends.
    viewNeedsDisplay();
}

void Window::dispatchEvent(const Event& event) {
    const EventType type = event.type();
    if (type != EventType::KeyDown && type != EventType::KeyUp)
        mouseLocation_ = event.locationInWindow();

    // The view under the pointer, held strongly while it handles the event.
    auto hitView = [this, &event]() -> std::shared_ptr<View> {
        if (!contentView_)
            return nullptr;
        View* hit = contentView_->hitTest(event.locationInWindow());
        return hit ? hit->weak_from_this().lock() : nullptr;
    };

    switch (type) {
        case EventType::LeftMouseDown: {
            std::shared_ptr<View> target = hitView();
            mouseDownViewRef_ = target;
            if (!target) {
                mouseDown(event);
                return;
            }
            if (target->acceptsFirstResponder())
                makeFirstResponder(target.get());
            target->mouseDown(event);
            if (target->mouseDownCanMoveWindow())
                startMoveByPointer();
            return;
        }
        case EventType::LeftMouseDragged: {
            if (std::shared_ptr<View> target = mouseDownViewRef_.lock())
                target->mouseDragged(event);
            return;
        }
        case EventType::LeftMouseUp: {
            std::shared_ptr<View> target = mouseDownViewRef_.lock();
            mouseDownViewRef_.reset();
            if (!target)
                target = hitView();
            if (target)
                target->mouseUp(event);
            else
                mouseUp(event);
            return;
        }
        case EventType::TouchesBegan:
        case EventType::TouchesMoved:
        case EventType::TouchesEnded:
        case EventType::TouchesCancelled: {
            std::shared_ptr<View> target = touchTargetAt(event.locationInWindow());
            Responder* responder = target ? static_cast<Responder*>(target.get()) : this;
            if (type == EventType::TouchesBegan)
                responder->touchesBeganWithEvent(event);
            else if (type == EventType::TouchesMoved)
                responder->touchesMovedWithEvent(event);
            else if (type == EventType::TouchesEnded)
                responder->touchesEndedWithEvent(event);
            else
                responder->touchesCancelledWithEvent(event);
            return;
        }
        case EventType::KeyDown:
        case EventType::KeyUp: {
            Responder* target = firstResponder_ ? firstResponder_ : this;
            if (type == EventType::KeyDown)
                target->keyDown(event);
            else
                target->keyUp(event);
            return;
        }
        default:
            break;
    }

    std::shared_ptr<View> target = hitView();
    Responder* responder = target ? static_cast<Responder*>(target.get()) : this;
    switch (type) {
        case EventType::RightMouseDown:
            responder->rightMouseDown(event);
            break;
        case EventType::RightMouseUp:
            responder->rightMouseUp(event);
            break;
        case EventType::MouseMoved:
            responder->mouseMoved(event);
            break;
        case EventType::MouseEntered:
            responder->mouseEntered(event);
            break;
        case EventType::MouseExited:
            responder->mouseExited(event);
            break;
        case EventType::Magnify:
            responder->magnifyWithEvent(event);
            break;
        case EventType::SmartMagnify:
            responder->smartMagnifyWithEvent(event);
            break;
        default:
            break;
    }
}

void Window::performClick(Point locationInWindow) {
    MainQueue::assertMainThread("Window::performClick");
    // A button follows the pointer through its mouse-up; it must be where the events say.
    setMouseLocationOutsideOfEventStream(locationInWindow);
    sendEvent(
        *Event::mouseEvent(EventType::LeftMouseDown, locationInWindow, 1, 0, 0, windowNumber_));
    sendEvent(*Event::mouseEvent(EventType::LeftMouseUp, locationInWindow, 1, 0, 0, windowNumber_));
}

void Window::keyDown(const Event& event) {
    switch (event.keyCode()) {
        case kVK_Tab:
            if (event.modifierFlags() & NSEventModifierFlagShift)
                selectPreviousKeyView();
            else
                selectNextKeyView();
            return;
        case kVK_Space:
        case kVK_Return:
        case kVK_ANSI_KeypadEnter:
            if (std::shared_ptr<View> focused = keyboardFocusView()) {
                focused->accessibilityPerformPress();
                return;
            }
            break;
        default:
            break;
    }
    if (!performKeyEquivalent(event))
        Responder::keyDown(event);
}

bool Window::performKeyEquivalent(const Event& event) {
    if (!contentView_ || event.characters().empty())
        return false;
    std::vector<View*> pending{contentView_.get()};
    while (!pending.empty()) {
        View* view = pending.back();
        pending.pop_back();
        if (view->isHidden())
            continue;
        if (view->keyEquivalent() == event.characters())
            return view->accessibilityPerformPress();
        for (const auto& subview : view->subviews())
            pending.push_back(subview.get());
    }
    return false;
}

std::vector<std::shared_ptr<View>> Window::accessibilityElements() const {
    std::vector<std::shared_ptr<View>> elements;
    if (!contentView_)
        return elements;
    // Depth first in tree order; hidden subtrees are not shown, so not read.
    std::vector<std::shared_ptr<View>> pending{contentView_};
    while (!pending.empty()) {
        std::shared_ptr<View> view = pending.back();
        pending.pop_back();
        if (view->isHidden())
            continue;
        if (view->isAccessibilityElement())
            elements.push_back(view);
        const auto& subviews = view->subviews();
        pending.insert(pending.end(), subviews.rbegin(), subviews.rend());
    }
    std::stable_sort(elements.begin(), elements.end(), [](const auto& a, const auto& b) {
        const Rect first = a->convertRectToView(a->bounds(), nullptr);
        const Rect second = b->convertRectToView(b->bounds(), nullptr);
        if (first.maxY() != second.maxY())
            return first.maxY() > second.maxY();
        return first.minX() < second.minX();
    });
    return elements;
}

std::shared_ptr<View> Window::keyboardFocusView() const {
    std::shared_ptr<View> focused = keyboardFocus_.lock();
    if (!focused || focused->window() != this || focused->isHiddenOrHasHiddenAncestor())
        return nullptr;
    return focused;
}

void Window::selectNextKeyView() {
    moveKeyboardFocus(1);
}

void Window::selectPreviousKeyView() {
    moveKeyboardFocus(-1);
}

void Window::moveKeyboardFocus(int step) {
    MainQueue::assertMainThread("Window::moveKeyboardFocus");
    std::vector<std::shared_ptr<View>> loop;
    for (const auto& element : accessibilityElements()) {
        if (element->accessibilityRole() == AccessibilityRole::Button)
            loop.push_back(element);
    }
    if (loop.empty())
        return;
    const int count = static_cast<int>(loop.size());
    const auto current = std::find(loop.begin(), loop.end(), keyboardFocusView());
    // Before the first Tab, forward starts at the first button and backward at the last.
    int index = step > 0 ? 0 : count - 1;
    if (current != loop.end())
        index = (static_cast<int>(current - loop.begin()) + step + count) % count;
    keyboardFocus_ = loop[index];
    viewNeedsDisplay();
    if (native_->accessibility)
        native_->accessibility->keyboardFocusMoved(*loop[index]);
}

bool Window::makeFirstResponder(Responder* responder) {
    MainQueue::assertMainThread("Window::makeFirstResponder");
    Responder* target = responder ? responder : this;
    if (target == firstResponder_)
        return true;
    auto* targetView = dynamic_cast<View*>(target);
    if (target != this) {
        if (!target->acceptsFirstResponder())
            return false;
        if (targetView && targetView->window() != this)
            return false;
    }
    Responder* old = firstResponder_;
    firstResponder_ = target;
    // Both redraw: focus rings, carets and selection colours depend on it.
    if (auto* oldView = dynamic_cast<View*>(old))
        oldView->setNeedsDisplay(true);
    if (targetView)
        targetView->setNeedsDisplay(true);
    return true;
}

void Window::viewWillLeave(View* view) {
    if (firstResponder_ == view)
        firstResponder_ = this;
}

Rect Window::screenFrame() const {
    if (native_->window) {
        if (QScreen* screen = native_->window->screen()) {
            const QRect geometry = screen->geometry();
            return NSMakeRect(0, 0, geometry.width(), geometry.height());
        }
    }
    if (QGuiApplication::instance() && DisplayEventLoop::hasDisplay()) {
        if (QScreen* screen = QGuiApplication::primaryScreen()) {
            const QRect geometry = screen->geometry();
            return NSMakeRect(0, 0, geometry.width(), geometry.height());
        }
    }
    return NSMakeRect(0, 0, 1920, 1080);
}

void Window::center() {
    const Rect screen = screenFrame();
    frame_.origin = NSMakePoint(std::floor((screen.size.width - frame_.size.width) / 2),
                                std::floor((screen.size.height - frame_.size.height) / 2));
}

double Window::backingScaleFactor() const {
    if (native_->scaleOverride > 0)
        return native_->scaleOverride;
    if (native_->window)
        return native_->window->devicePixelRatio();
    return 1.0;
}

void Window::setBackingScaleFactor(double scale) {
    native_->scaleOverride = scale > 0 ? scale : 0;
}

void Window::makeKeyAndOrderFront() {
    MainQueue::assertMainThread("Window::makeKeyAndOrderFront");
    visible_ = true;
    if (!DisplayEventLoop::hasDisplay())
        return;
    if (!native_->window) {
        native_->window = std::make_unique<NativeWindow>(this);
        native_->window->setTitle(QString::fromStdString(title_));
        // A sheet is a dialog of fixed size: a title and a close button, nothing to maximise
        // or minimise.
        native_->window->setFlags(Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint |
                                  Qt::WindowCloseButtonHint);
    }
    NativeWindow& window = *native_->window;
    const int width = static_cast<int>(std::ceil(frame_.size.width));
    const int height = static_cast<int>(std::ceil(frame_.size.height));
    window.resize(width, height);
    window.setMinimumSize(QSize(width, height));
    window.setMaximumSize(QSize(width, height));
    // Qt places the window by its top-left corner on the screen, y down.
    if (QScreen* screen = window.screen()) {
        const Rect onScreen = flippedRect(frame_, screen->geometry().height());
        window.setPosition(QPointF(onScreen.origin.x, onScreen.origin.y).toPoint());
    }
    window.show();
    window.raise();
    window.requestActivate();
    window.update();
    announceToAssistiveTechnology();
}

void Window::announceToAssistiveTechnology() {
    if (!native_->accessibility)
        native_->accessibility = std::make_unique<WindowAccessibility>(*native_->window, *this);
    native_->accessibility->announceShown();
}

std::shared_ptr<View> Window::touchTargetAt(Point locationInWindow) const {
    View* view = contentView_ ? contentView_->hitTest(locationInWindow) : nullptr;
    while (view && !view->acceptsTouchEvents())
        view = view->superview();
    return view ? view->weak_from_this().lock() : nullptr;
}

void Window::startMoveByPointer() {
    // The window manager moves the window while the button stays down; offscreen nothing moves.
    if (isShownOnDisplay())
        native_->window->startSystemMove();
}

void Window::close() {
    MainQueue::assertMainThread("Window::close");
    visible_ = false;
    if (native_->window)
        native_->window->hide();
}

void Window::nativeWindowHidden() {
    visible_ = false;
}

bool Window::isShownOnDisplay() const {
    return native_->window && native_->window->isVisible();
}

std::shared_ptr<Bitmap> Window::snapshot(double scale) const {
    if (contentView_) {
        std::shared_ptr<Bitmap> picture = Bitmap::renderView(*contentView_, scale);
        if (const std::optional<Rect> ring = keyboardFocusRingOf(*this))
            paintKeyboardFocusRing(picture->qimage(), *ring, frame_.size.height, scale);
        return picture;
    }
    return std::make_shared<Bitmap>(static_cast<int>(std::ceil(frame_.size.width * scale)),
                                    static_cast<int>(std::ceil(frame_.size.height * scale)), scale);
}

std::shared_ptr<Bitmap> Window::imageOfScreenRect(const Rect& rect) const {
    if (rect.isEmpty())
        return nullptr;
    // |rect| is in the server's space; |local| measures from the window's top-left corner, as
    // Qt does within the window.
    const Point windowTopLeft =
        flippedPoint({frame_.minX(), frame_.maxY()}, screenFrame().size.height);
    const QRectF local(rect.origin.x - windowTopLeft.x, rect.origin.y - windowTopLeft.y,
                       rect.size.width, rect.size.height);
    if (isShownOnDisplay()) {
        QScreen* screen = native_->window->screen();
        if (!screen)
            return nullptr;
        const QRect grab = local.toAlignedRect();
        const QPixmap pixmap = screen->grabWindow(native_->window->winId(), grab.x(), grab.y(),
                                                  grab.width(), grab.height());
        if (pixmap.isNull()) {
            kLog.write("the display gave no picture of window " + std::to_string(windowNumber_) +
                       " under " + NSStringFromRect(rect));
            return nullptr;
        }
        return Bitmap::fromQImage(pixmap.toImage(), pixmap.devicePixelRatio());
    }
    const double scale = backingScaleFactor();
    const QImage backing = backingImage(contentView_, frame_.size.width, frame_.size.height, scale,
                                        keyboardFocusRingOf(*this));
    QImage picture(static_cast<int>(std::ceil(local.width() * scale)),
                   static_cast<int>(std::ceil(local.height() * scale)),
                   QImage::Format_ARGB32_Premultiplied);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.drawImage(QPointF(-local.x() * scale, -local.y() * scale), backing);
    painter.end();
    return Bitmap::fromQImage(picture, scale);
}

void Window::viewNeedsDisplay() {
    // update() marks the whole window dirty and asks for a paint at the next frame.
    if (native_->window && native_->window->isVisible())
        native_->window->update();
}

}  // namespace platform
