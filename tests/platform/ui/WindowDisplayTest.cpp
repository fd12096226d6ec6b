// A window shown on a real display paints its content and turns Qt's input into our events. Runs
// only with PARLEY_TEST_DISPLAY set under a display, e.g. under xvfb-run -a.
#include <QGuiApplication>
#include <QMouseEvent>
#include <QWindow>
#include <chrono>
#include <cstdlib>

#include "platform/ui/DisplayEventLoop.h"
#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;

namespace {

class PaintingView : public View {
  public:
    void drawRect(const Rect&) override { ++paints; }
    int paints = 0;
};

}  // namespace

TEST(WindowDisplayTest, QtInputBecomesOurEventsAndTheContentPaints) {
    if (!std::getenv("PARLEY_TEST_DISPLAY") || !DisplayEventLoop::hasDisplay())
        GTEST_SKIP() << "set PARLEY_TEST_DISPLAY and run under a display";
    RecordingWindow window(NSMakeRect(100, 100, 200, 100));
    auto content = std::make_shared<PaintingView>();
    window.setContentView(content);
    window.makeKeyAndOrderFront();
    QWindow* native = nullptr;
    ASSERT_TRUE(EventLoop::runUntil(
        [&] {
            for (QWindow* w : QGuiApplication::topLevelWindows())
                native = w->isVisible() ? w : native;
            return native && native->isExposed() && content->paints > 0;
        },
        std::chrono::milliseconds(5000)));
    EXPECT_TRUE(window.isShownOnDisplay());
    QMouseEvent press(QEvent::MouseButtonPress, {10, 10}, native->mapToGlobal(QPointF(10, 10)),
                      Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
    QGuiApplication::sendEvent(native, &press);
    EXPECT_EQ(1, window.mouseDowns);  // the plain content view hands it on
    EXPECT_EQ(NSMakePoint(10, 90), window.mouseLocationOutsideOfEventStream());  // y flipped
    window.close();
    EXPECT_FALSE(window.isShownOnDisplay());
}
