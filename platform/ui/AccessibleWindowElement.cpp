#include "platform/ui/AccessibleWindowElement.h"

#include <QGuiApplication>

#include "platform/ui/View.h"
#include "platform/ui/Window.h"
#include "platform/ui/WindowAccessibility.h"

namespace platform {

AccessibleWindowElement::AccessibleWindowElement(QWindow* native)
    : QAccessibleObject(native), native_(native) {}

QWindow* AccessibleWindowElement::window() const {
    return native_;
}

QAccessibleInterface* AccessibleWindowElement::parent() const {
    return QAccessible::queryAccessibleInterface(qApp);
}

int AccessibleWindowElement::childCount() const {
    const WindowAccessibility* accessibility = WindowAccessibility::of(native_);
    return accessibility ? static_cast<int>(elements().size()) : 0;
}

QAccessibleInterface* AccessibleWindowElement::child(int index) const {
    WindowAccessibility* accessibility = WindowAccessibility::of(native_);
    if (!accessibility || index < 0)
        return nullptr;
    const std::vector<std::shared_ptr<View>> all = elements();
    if (index >= static_cast<int>(all.size()))
        return nullptr;
    return accessibility->interfaceFor(*all[index]);
}

int AccessibleWindowElement::indexOfChild(const QAccessibleInterface* child) const {
    for (int i = 0; i < childCount(); ++i) {
        if (this->child(i) == child)
            return i;
    }
    return -1;
}

QAccessibleInterface* AccessibleWindowElement::childAt(int x, int y) const {
    for (int i = childCount() - 1; i >= 0; --i) {
        QAccessibleInterface* element = child(i);
        if (element && element->rect().contains(x, y))
            return element;
    }
    return nullptr;
}

QAccessibleInterface* AccessibleWindowElement::focusChild() const {
    WindowAccessibility* accessibility = WindowAccessibility::of(native_);
    if (!accessibility)
        return nullptr;
    std::shared_ptr<View> focused = accessibility->window_.keyboardFocusView();
    return focused ? accessibility->interfaceFor(*focused) : nullptr;
}

QString AccessibleWindowElement::text(QAccessible::Text type) const {
    const WindowAccessibility* accessibility = WindowAccessibility::of(native_);
    if (type != QAccessible::Name || !accessibility)
        return {};
    return QString::fromStdString(accessibility->window_.title());
}

QRect AccessibleWindowElement::rect() const {
    if (!native_)
        return {};
    return QRect(native_->mapToGlobal(QPoint(0, 0)), native_->size());
}

QAccessible::Role AccessibleWindowElement::role() const {
    return QAccessible::Window;
}

QAccessible::State AccessibleWindowElement::state() const {
    QAccessible::State state;
    const bool shown = native_ && native_->isVisible();
    // A sheet is the key window from the moment it shows.
    state.active = shown;
    state.invisible = !shown;
    return state;
}

std::vector<std::shared_ptr<View>> AccessibleWindowElement::elements() const {
    const WindowAccessibility* accessibility = WindowAccessibility::of(native_);
    return accessibility ? accessibility->window_.accessibilityElements()
                         : std::vector<std::shared_ptr<View>>{};
}

}  // namespace platform
