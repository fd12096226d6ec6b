#include "platform/ui/AccessibleViewElement.h"

#include "platform/core/MainQueue.h"
#include "platform/ui/View.h"
#include "platform/ui/Window.h"

namespace platform {

namespace {

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

AccessibleViewElement::AccessibleViewElement(QWindow* native, const std::shared_ptr<View>& view)
    : native_(native), view_(view) {}

bool AccessibleViewElement::isValid() const {
    return liveView() != nullptr;
}

QObject* AccessibleViewElement::object() const {
    return nullptr;
}

QWindow* AccessibleViewElement::window() const {
    return native_;
}

QList<QPair<QAccessibleInterface*, QAccessible::Relation>> AccessibleViewElement::relations(
    QAccessible::Relation) const {
    return {};
}

QAccessibleInterface* AccessibleViewElement::focusChild() const {
    return nullptr;
}

QAccessibleInterface* AccessibleViewElement::childAt(int, int) const {
    return nullptr;
}

QAccessibleInterface* AccessibleViewElement::parent() const {
    return native_ ? QAccessible::queryAccessibleInterface(native_.data()) : nullptr;
}

QAccessibleInterface* AccessibleViewElement::child(int) const {
    return nullptr;
}

int AccessibleViewElement::childCount() const {
    return 0;
}

int AccessibleViewElement::indexOfChild(const QAccessibleInterface*) const {
    return -1;
}

QString AccessibleViewElement::text(QAccessible::Text type) const {
    const std::shared_ptr<View> view = liveView();
    if (!view)
        return {};
    if (type == QAccessible::Name)
        return QString::fromStdString(view->accessibilityLabel());
    if (type == QAccessible::Description)
        return QString::fromStdString(view->accessibilityHelp());
    return {};
}

void AccessibleViewElement::setText(QAccessible::Text, const QString&) {}

QRect AccessibleViewElement::rect() const {
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

QAccessible::Role AccessibleViewElement::role() const {
    const std::shared_ptr<View> view = liveView();
    return view ? qtRoleOf(view->accessibilityRole()) : QAccessible::NoRole;
}

QAccessible::State AccessibleViewElement::state() const {
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

void* AccessibleViewElement::interface_cast(QAccessible::InterfaceType type) {
    const std::shared_ptr<View> view = liveView();
    if (type == QAccessible::ActionInterface && view && pressable(*view))
        return static_cast<QAccessibleActionInterface*>(this);
    return nullptr;
}

QStringList AccessibleViewElement::actionNames() const {
    return {pressAction()};
}

// The click runs after the caller has had its answer: what it starts (a hand-off, the
// window closing) must not hold the bus call open.
void AccessibleViewElement::doAction(const QString& actionName) {
    if (actionName != pressAction())
        return;
    std::weak_ptr<View> weak = view_;
    MainQueue::async([weak] {
        if (std::shared_ptr<View> view = weak.lock())
            view->accessibilityPerformPress();
    });
}

QStringList AccessibleViewElement::keyBindingsForAction(const QString&) const {
    return {};
}

bool AccessibleViewElement::pressable(const View& view) {
    return view.accessibilityRole() == AccessibilityRole::Button;
}

std::shared_ptr<View> AccessibleViewElement::liveView() const {
    std::shared_ptr<View> view = view_.lock();
    if (!view || !view->window() || !native_)
        return nullptr;
    return view;
}

}  // namespace platform
