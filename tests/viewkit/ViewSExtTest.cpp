#include "viewkit/ViewSExt.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <vector>

using platform::NSMakeRect;
using platform::Rect;
using platform::View;

namespace {

// Sees every frame that reaches the virtual setter.
class FrameRecordingView : public View {
  public:
    using View::View;
    void setFrame(const Rect& frame) override {
        applied.push_back(frame);
        View::setFrame(frame);
    }
    std::vector<Rect> applied;
};

TEST(ViewSExt, GettersReadEdgesAndSize) {
    View view(NSMakeRect(10, 20, 50, 30));
    EXPECT_EQ((std::vector<double>{10, 10, 20, 20, 50, 30, 60, 50}),
              (std::vector<double>{SExt::x(view), SExt::left(view), SExt::y(view),
                                   SExt::bottom(view), SExt::width(view), SExt::height(view),
                                   SExt::right(view), SExt::top(view)}));
}

// Each setter goes once through the virtual frame setter; right and top resize (a negative
// size passes as computed), the others move or size.
TEST(ViewSExt, EverySetterGoesThroughTheVirtualFrameSetterOnce) {
    using Setter = std::function<void(View&)>;
    const struct {
        const char* name;
        Setter set;
        Rect expected;
    } cases[] = {
        {"x", [](View& v) { SExt::setX(v, 1.5); }, NSMakeRect(1.5, 20, 50, 30)},
        {"y", [](View& v) { SExt::setY(v, 2.5); }, NSMakeRect(10, 2.5, 50, 30)},
        {"width", [](View& v) { SExt::setWidth(v, -3); }, NSMakeRect(10, 20, -3, 30)},
        {"height", [](View& v) { SExt::setHeight(v, 0.125); }, NSMakeRect(10, 20, 50, 0.125)},
        {"left", [](View& v) { SExt::setLeft(v, 5); }, NSMakeRect(5, 20, 50, 30)},
        {"bottom", [](View& v) { SExt::setBottom(v, -7.25); }, NSMakeRect(10, -7.25, 50, 30)},
        {"right", [](View& v) { SExt::setRight(v, 100); }, NSMakeRect(10, 20, 90, 30)},
        {"top", [](View& v) { SExt::setTop(v, 40); }, NSMakeRect(10, 20, 50, 20)},
        {"top below", [](View& v) { SExt::setTop(v, 5); }, NSMakeRect(10, 20, 50, -15)},
    };
    for (const auto& c : cases) {
        FrameRecordingView view(NSMakeRect(10, 20, 50, 30));
        c.set(view);
        EXPECT_EQ(std::vector<Rect>{c.expected}, view.applied) << c.name;
    }
}

TEST(ViewSExt, CornerRadiusRoundsThroughTheLayerAndIgnoresNonPositiveValues) {
    View view(NSMakeRect(0, 0, 20, 20));
    EXPECT_EQ(0, SExt::cornerRadius(view));
    for (double refused : {0.0, -2.0, std::numeric_limits<double>::quiet_NaN()})
        SExt::setCornerRadius(view, refused);
    EXPECT_EQ(nullptr, view.layer()) << "a refused radius must not make a layer";

    SExt::setCornerRadius(view, 4);
    ASSERT_NE(nullptr, view.layer());
    EXPECT_TRUE(view.wantsLayer());
    EXPECT_TRUE(view.layer()->masksToBounds());
    SExt::setCornerRadius(view, -1);
    EXPECT_EQ(4, SExt::cornerRadius(view));
    SExt::setCornerRadius(view, 2.5);
    EXPECT_EQ(2.5, SExt::cornerRadius(view));
}

}  // namespace
