#pragma once

#include <QAccessibleObject>
#include <QPointer>
#include <QWindow>
#include <memory>
#include <vector>

namespace platform {

class View;

// What assistive technology reads of a window on the display: titled, active while shown, its
// accessibility elements as children in reading order. Qt's cache owns it.
class AccessibleWindowElement : public QAccessibleObject {
  public:
    explicit AccessibleWindowElement(QWindow* native);

    QWindow* window() const override;
    QAccessibleInterface* parent() const override;
    int childCount() const override;
    QAccessibleInterface* child(int index) const override;
    int indexOfChild(const QAccessibleInterface* child) const override;
    QAccessibleInterface* childAt(int x, int y) const override;
    QAccessibleInterface* focusChild() const override;
    QString text(QAccessible::Text type) const override;
    QRect rect() const override;
    QAccessible::Role role() const override;
    QAccessible::State state() const override;

  private:
    std::vector<std::shared_ptr<View>> elements() const;

    QPointer<QWindow> native_;
};

}  // namespace platform
