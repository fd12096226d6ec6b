#pragma once

#include <QMetaObject>
#include <map>
#include <memory>

class QAccessibleInterface;
class QWindow;

namespace platform {

class View;
class Window;

// Carries one window on the display to assistive technology through Qt's accessibility, which
// speaks AT-SPI on Linux (what a screen reader such as Orca reads): the window, titled, with its
// accessibility elements (View's role, label and help) as children in reading order, a button's
// press action, and the keyboard focus. Made with the native window and destroyed before it.
// Main thread only, as the views it describes.
class WindowAccessibility {
  public:
    WindowAccessibility(QWindow& native, Window& window);
    ~WindowAccessibility();
    WindowAccessibility(const WindowAccessibility&) = delete;
    WindowAccessibility& operator=(const WindowAccessibility&) = delete;

    // The window has just been shown: it tells that it shows and is active, which a screen
    // reader announces with its title. It tells again whenever the window becomes active (the
    // window manager gives it the keyboard), as Qt's bridge to the accessibility bus may not yet
    // have been listening when it was shown.
    void announceShown();
    // The keyboard focus moved to |view| (an element of the window).
    void keyboardFocusMoved(View& view);

  private:
    void announceActive();

    friend class AccessibleWindowElement;
    friend class AccessibleViewElement;
    // The WindowAccessibility of |native|; nullptr once it is gone.
    static WindowAccessibility* of(const QWindow* native);
    // The interface describing |view|, made on first need and kept until this goes.
    QAccessibleInterface* interfaceFor(View& view);

    QWindow& native_;
    Window& window_;
    // The id Qt's accessibility knows each element's interface by, per view.
    std::map<const View*, unsigned> elementIds_;
    QMetaObject::Connection activation_;
};

}  // namespace platform
