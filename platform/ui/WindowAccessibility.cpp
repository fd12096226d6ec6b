#include "platform/ui/WindowAccessibility.h"

#include <QAccessible>
#include <QGuiApplication>
#include <QWindow>

#include "platform/ui/AccessibleViewElement.h"
#include "platform/ui/AccessibleWindowElement.h"
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

QAccessibleInterface* windowElementFactory(const QString&, QObject* object) {
    auto* native = qobject_cast<QWindow*>(object);
    if (!native || !registry().count(native))
        return nullptr;
    return new AccessibleWindowElement(native);
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
    activation_ = QObject::connect(&native_, &QWindow::activeChanged, [this] {
        if (native_.isActive())
            announceActive();
    });
}

WindowAccessibility::~WindowAccessibility() {
    QObject::disconnect(activation_);
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
    auto* element = new AccessibleViewElement(&native_, view.shared_from_this());
    elementIds_[&view] = QAccessible::registerAccessibleInterface(element);
    return element;
}

void WindowAccessibility::announceShown() {
    if (!QAccessible::isActive())
        return;
    QAccessibleEvent shown(&native_, QAccessible::ObjectShow);
    QAccessible::updateAccessibility(&shown);
    announceActive();
}

void WindowAccessibility::announceActive() {
    if (!QAccessible::isActive())
        return;
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
