#include "platform/ui/WindowAccessibility.h"

#include <QAccessible>
#include <QAccessibleObject>
#include <QGuiApplication>
#include <QPointer>
#include <QWindow>
#include <algorithm>
#include <vector>

#include "platform/core/MainQueue.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"

namespace platform {

namespace {

// The windows on the display that describe themselves, by their native window: Qt asks the
// factory by object alone.
std::map<const QWindow*, WindowAccessibility*>& registry() {
    static std::map<const QWindow*, WindowAccessibility*> windows;
    return windows;
}

QAccessible::Role qtRoleOf(AccessibilityRole role) {
    switch (role) {
        case AccessibilityRole::Button:
            return QAccessible::Button;
        case AccessibilityRole::StaticText:
            return QAccessible::StaticText;
        case AccessibilityRole::Image:
            return QAccessible::Graphic;
        case AccessibilityRole::Group:
            return QAccessible::Grouping;
        case AccessibilityRole::None:
            break;
    }
    return QAccessible::NoRole;
}

}  // namespace

// The window itself: titled, active while shown, its elements as children.
class WindowElement : public QAccessibleObject {
  public:
    explicit WindowElement(QWindow* native) : QAccessibleObject(native), native_(native) {}

    QWindow* window() const override { return native_; }
    QAccessibleInterface* parent() const override {
        return QAccessible::queryAccessibleInterface(qApp);
    }
    int childCount() const override {
        const WindowAccessibility* accessibility = WindowAccessibility::of(native_);
        return accessibility ? static_cast<int>(elements().size()) : 0;
    }
    QAccessibleInterface* child(int index) const override {
        WindowAccessibility* accessibility = WindowAccessibility::of(native_);
        if (!accessibility || index < 0)
            return nullptr;
        const std::vector<std::shared_ptr<View>> all = elements();
        if (index >= static_cast<int>(all.size()))
            return nullptr;
        return accessibility->interfaceFor(*all[index]);
    }
    int indexOfChild(const QAccessibleInterface* child) const override {
        for (int i = 0; i < childCount(); ++i) {
            if (this->child(i) == child)
                return i;
        }
        return -1;
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        for (int i = childCount() - 1; i >= 0; --i) {
            QAccessibleInterface* element = child(i);
            if (element && element->rect().contains(x, y))
                return element;
        }
        return nullptr;
    }
    QAccessibleInterface* focusChild() const override {
        WindowAccessibility* accessibility = WindowAccessibility::of(native_);
        if (!accessibility)
            return nullptr;
        std::shared_ptr<View> focused = accessibility->window_.keyboardFocusView();
        return focused ? accessibility->interfaceFor(*focused) : nullptr;
    }
    QString text(QAccessible::Text type) const override {
        const WindowAccessibility* accessibility = WindowAccessibility::of(native_);
        if (type != QAccessible::Name || !accessibility)
            return {};
        return QString::fromStdString(accessibility->window_.title());
    }
    QRect rect() const override {
        if (!native_)
            return {};
        return QRect(native_->mapToGlobal(QPoint(0, 0)), native_->size());
    }
    QAccessible::Role role() const override { return QAccessible::Window; }
    QAccessible::State state() const override {
        QAccessible::State state;
        const bool shown = native_ && native_->isVisible();
        // A sheet is the key window from the moment it shows.
        state.active = shown;
        state.invisible = !shown;
        return state;
    }

  private:
    std::vector<std::shared_ptr<View>> elements() const {
        const WindowAccessibility* accessibility = WindowAccessibility::of(native_);
        return accessibility ? accessibility->window_.accessibilityElements()
                             : std::vector<std::shared_ptr<View>>{};
    }

    QPointer<QWindow> native_;
};

// One accessibility element of a window. Qt's cache owns it; it holds its view weakly and stops
// being valid once the view has gone or left the window.
class ViewElement : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    ViewElement(QWindow* native, const std::shared_ptr<View>& view)
        : native_(native), view_(view) {}

    bool isValid() const override { return liveView() != nullptr; }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return native_; }
    QList<QPair<QAccessibleInterface*, QAccessible::Relation>> relations(
        QAccessible::Relation) const override {
        return {};
    }
    QAccessibleInterface* focusChild() const override { return nullptr; }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* parent() const override {
        return native_ ? QAccessible::queryAccessibleInterface(native_.data()) : nullptr;
    }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(const QAccessibleInterface*) const override { return -1; }
    QString text(QAccessible::Text type) const override {
        const std::shared_ptr<View> view = liveView();
        if (!view)
            return {};
        if (type == QAccessible::Name)
            return QString::fromStdString(view->accessibilityLabel());
        if (type == QAccessible::Description)
            return QString::fromStdString(view->accessibilityHelp());
        return {};
    }
    void setText(QAccessible::Text, const QString&) override {}
    // On the screen, in Qt's global coordinates (top-left origin, y down).
    QRect rect() const override {
        const std::shared_ptr<View> view = liveView();
        if (!view || !native_)
            return {};
        const Rect inWindow = view->convertRectToView(view->bounds(), nullptr);
        const Rect fromTop = flippedRect(inWindow, native_->height());
        const QRect local =
            QRectF(fromTop.origin.x, fromTop.origin.y, fromTop.size.width, fromTop.size.height)
                .toAlignedRect();
        return QRect(native_->mapToGlobal(local.topLeft()), local.size());
    }
    QAccessible::Role role() const override {
        const std::shared_ptr<View> view = liveView();
        return view ? qtRoleOf(view->accessibilityRole()) : QAccessible::NoRole;
    }
    QAccessible::State state() const override {
        QAccessible::State state;
        const std::shared_ptr<View> view = liveView();
        if (!view) {
            state.invalid = true;
            return state;
        }
        state.invisible = view->isHiddenOrHasHiddenAncestor();
        state.focusable = pressable(*view);
        state.focused = view->window()->keyboardFocusView() == view;
        return state;
    }
    void* interface_cast(QAccessible::InterfaceType type) override {
        const std::shared_ptr<View> view = liveView();
        if (type == QAccessible::ActionInterface && view && pressable(*view))
            return static_cast<QAccessibleActionInterface*>(this);
        return nullptr;
    }

    QStringList actionNames() const override { return {pressAction()}; }
    // The click runs after the caller has had its answer: what it starts (a hand-off, the
    // window closing) must not hold the bus call open.
    void doAction(const QString& actionName) override {
        if (actionName != pressAction())
            return;
        std::weak_ptr<View> weak = view_;
        MainQueue::async([weak] {
            if (std::shared_ptr<View> view = weak.lock())
                view->accessibilityPerformPress();
        });
    }
    QStringList keyBindingsForAction(const QString&) const override { return {}; }

  private:
    static bool pressable(const View& view) {
        return view.accessibilityRole() == AccessibilityRole::Button;
    }
    std::shared_ptr<View> liveView() const {
        std::shared_ptr<View> view = view_.lock();
        if (!view || !view->window() || !native_)
            return nullptr;
        return view;
    }

    QPointer<QWindow> native_;
    std::weak_ptr<View> view_;
};

namespace {

QAccessibleInterface* windowElementFactory(const QString&, QObject* object) {
    auto* native = qobject_cast<QWindow*>(object);
    if (!native || !registry().count(native))
        return nullptr;
    return new WindowElement(native);
}

}  // namespace

WindowAccessibility::WindowAccessibility(QWindow& native, Window& window)
    : native_(native), window_(window) {
    static const bool factoryInstalled = [] {
        QAccessible::installFactory(windowElementFactory);
        return true;
    }();
    (void)factoryInstalled;
    registry()[&native_] = this;
}

WindowAccessibility::~WindowAccessibility() {
    registry().erase(&native_);
    for (const auto& [view, id] : elementIds_) {
        (void)view;
        QAccessible::deleteAccessibleInterface(id);
    }
}

WindowAccessibility* WindowAccessibility::of(const QWindow* native) {
    auto found = registry().find(native);
    return found == registry().end() ? nullptr : found->second;
}

QAccessibleInterface* WindowAccessibility::interfaceFor(View& view) {
    auto found = elementIds_.find(&view);
    if (found != elementIds_.end()) {
        QAccessibleInterface* known = QAccessible::accessibleInterface(found->second);
        // A view made where a gone one was gets an interface of its own.
        if (known && known->isValid())
            return known;
        QAccessible::deleteAccessibleInterface(found->second);
        elementIds_.erase(found);
    }
    auto* element = new ViewElement(&native_, view.shared_from_this());
    elementIds_[&view] = QAccessible::registerAccessibleInterface(element);
    return element;
}

void WindowAccessibility::announceShown() {
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent shown(&native_, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
    QAccessible::State changed;
    changed.active = true;
    QAccessibleStateChangeEvent activated(&native_, changed);
    QAccessible::updateAccessibility(&activated);
}

void WindowAccessibility::keyboardFocusMoved(View& view) {
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent focused(interfaceFor(view), QAccessible::Focus);
    QAccessible::updateAccessibility(&focused);
}

}  // namespace platform
