#pragma once

#include <QAccessible>
#include <QPointer>
#include <QWindow>
#include <memory>

namespace platform {

class View;

// One accessibility element of a window: a view's role, label, help, state and rectangle on the
// screen, and a button's press action. Qt's cache owns it; it holds its view weakly and stops
// being valid once the view has gone or left the window.
class AccessibleViewElement : public QAccessibleInterface, public QAccessibleActionInterface {
  public:
    AccessibleViewElement(QWindow* native, const std::shared_ptr<View>& view);

    bool isValid() const override;
    QObject* object() const override;
    QWindow* window() const override;
    QList<QPair<QAccessibleInterface*, QAccessible::Relation>> relations(
        QAccessible::Relation) const override;
    QAccessibleInterface* focusChild() const override;
    QAccessibleInterface* childAt(int, int) const override;
    QAccessibleInterface* parent() const override;
    QAccessibleInterface* child(int) const override;
    int childCount() const override;
    int indexOfChild(const QAccessibleInterface*) const override;
    QString text(QAccessible::Text type) const override;
    void setText(QAccessible::Text, const QString&) override;
    // On the screen, in Qt's global coordinates (top-left origin, y down).
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;
    void* interface_cast(QAccessible::InterfaceType type) override;

    QStringList actionNames() const override;
    void doAction(const QString& actionName) override;
    QStringList keyBindingsForAction(const QString&) const override;

  private:
    static bool pressable(const View& view);
    std::shared_ptr<View> liveView() const;

    QPointer<QWindow> native_;
    std::weak_ptr<View> view_;
};

}  // namespace platform
