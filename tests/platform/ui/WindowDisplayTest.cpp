// A window shown on a real display: Qt's input becomes our events, and the content view paints.
// Runs only with PARLEY_TEST_DISPLAY set and a display present, for instance:
//   PARLEY_TEST_DISPLAY=1 xvfb-run -a platform_tests
//   --gtest_filter='WindowDisplayTest.*'
#include "tests/platform/ui/PixelTestSupport.h"

#include <QGuiApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPixmap>
#include <QScreen>
#include <QWindow>
#include <chrono>
#include <cstdlib>
#include <iostream>

#include "platform/ui/DisplayEventLoop.h"

using namespace platform;
using namespace std::chrono_literals;

namespace {

// Paints its top half red and records the mouse events it takes.
class PaintingView : public View {
  public:
    using View::View;
    void drawRect(const Rect&) override {
        ++paints;
        Color::colorWithDeviceRed(1, 0, 0, 1)->setFill();
        NSRectFill(
            NSMakeRect(0, bounds().size.height / 2, bounds().size.width, bounds().size.height / 2));
    }
    void mouseDown(const Event& e) override { downs.push_back(e.clickCount()); }
    void mouseUp(const Event& e) override { ups.push_back(e.clickCount()); }
    int paints = 0;
    std::vector<int> downs, ups;
};

class KeyRecordingWindow : public Window {
  public:
    using Window::Window;
    void keyDown(const Event& e) override { keys.push_back(e.keyCode()); }
    std::vector<uint16_t> keys;
};

QWindow* shownQtWindow() {
    for (QWindow* window : QGuiApplication::topLevelWindows())
        if (window->isVisible())
            return window;
    return nullptr;
}

void sendMouse(QWindow* window, QEvent::Type type, QPointF position, ulong timestamp) {
    const Qt::MouseButtons held =
        type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
    QMouseEvent event(type, position, window->mapToGlobal(position), Qt::LeftButton, held,
                      Qt::NoModifier);
    event.setTimestamp(timestamp);
    QGuiApplication::sendEvent(window, &event);
}

}  // namespace

TEST(WindowDisplayTest, QtInputBecomesOurEventsAndTheContentPaints) {
    if (!std::getenv("PARLEY_TEST_DISPLAY") || !DisplayEventLoop::hasDisplay())
        GTEST_SKIP() << "no display requested (set PARLEY_TEST_DISPLAY and run "
                        "under a display)";

    KeyRecordingWindow window(NSMakeRect(100, 100, 200, 100), "display test");
    auto content = std::make_shared<PaintingView>();
    window.setContentView(content);
    window.makeKeyAndOrderFront();
    QWindow* native = nullptr;
    ASSERT_TRUE(EventLoop::runUntil(
        [&] { return (native = shownQtWindow()) && native->isExposed() && content->paints > 0; },
        5000ms));
    EXPECT_TRUE(window.isShownOnDisplay());
    EXPECT_EQ(native->devicePixelRatio(), window.backingScaleFactor());

    // Qt's top-left position becomes our bottom-left one; the third quick click counts 3.
    const ulong start = 100000;
    sendMouse(native, QEvent::MouseButtonPress, {10, 10}, start);
    sendMouse(native, QEvent::MouseButtonRelease, {10, 10}, start + 10);
    sendMouse(native, QEvent::MouseButtonPress, {10, 10}, start + 100);
    sendMouse(native, QEvent::MouseButtonDblClick, {10, 10},
              start + 100);  // as Qt adds one
    sendMouse(native, QEvent::MouseButtonRelease, {10, 10}, start + 110);
    sendMouse(native, QEvent::MouseButtonPress, {11, 10}, start + 200);
    sendMouse(native, QEvent::MouseButtonRelease, {11, 10}, start + 210);
    sendMouse(native, QEvent::MouseButtonPress, {11, 10},
              start + 10000);  // much later
    EXPECT_EQ((std::vector<int>{1, 2, 3, 1}), content->downs);
    EXPECT_EQ((std::vector<int>{1, 2, 3}), content->ups);
    EXPECT_EQ(NSMakePoint(11, 90), window.mouseLocationOutsideOfEventStream());

    QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, "\x1b");
    QGuiApplication::sendEvent(native, &escape);
    QKeyEvent letter(QEvent::KeyPress, Qt::Key_S, Qt::NoModifier, "s");
    QGuiApplication::sendEvent(native, &letter);
    EXPECT_EQ((std::vector<uint16_t>{kVK_Escape, 1}), window.keys);

    // A redisplay request paints again; the top half is red on screen.
    const int before = content->paints;
    content->setNeedsDisplay(true);
    ASSERT_TRUE(EventLoop::runUntil([&] { return content->paints > before; }, 5000ms));
    const QImage shot = native->screen()->grabWindow(native->winId()).toImage();
    // Some display servers refuse grabs; Xvfb allows them.
    if (shot.isNull() || shot.width() == 0) {
        std::cerr << "screen grab unavailable; pixels not checked\n";
    } else {
        const int x = shot.width() / 2;
        EXPECT_EQ(QColor(Qt::red), shot.pixelColor(x, shot.height() / 4));
        EXPECT_NE(QColor(Qt::red), shot.pixelColor(x, shot.height() * 3 / 4));
    }

    window.close();
    EXPECT_FALSE(window.isVisible());
    EXPECT_FALSE(window.isShownOnDisplay());
}
