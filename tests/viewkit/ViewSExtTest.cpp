#include <limits>

#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/ViewSExt.h"

using platform::Rect;
using platform::View;

// Getters read the edges; right and top resize, the other setters move or size.
TEST(ViewSExt, EdgesReadAndSetAndTheCornerRadiusRoundsThroughTheLayer) {
    View view(NSMakeRect(10, 20, 50, 30));
    EXPECT_EQ((std::vector<double>{10, 10, 20, 20, 50, 30, 60, 50}),
              (std::vector<double>{SExt::x(view), SExt::left(view), SExt::y(view),
                                   SExt::bottom(view), SExt::width(view), SExt::height(view),
                                   SExt::right(view), SExt::top(view)}));
    const std::pair<std::function<void(View&)>, Rect> cases[] = {
        {[](View& v) { SExt::setX(v, 1.5); }, NSMakeRect(1.5, 20, 50, 30)},
        {[](View& v) { SExt::setY(v, 2.5); }, NSMakeRect(10, 2.5, 50, 30)},
        {[](View& v) { SExt::setWidth(v, -3); }, NSMakeRect(10, 20, -3, 30)},
        {[](View& v) { SExt::setHeight(v, 0.125); }, NSMakeRect(10, 20, 50, 0.125)},
        {[](View& v) { SExt::setLeft(v, 5); }, NSMakeRect(5, 20, 50, 30)},
        {[](View& v) { SExt::setBottom(v, -7.25); }, NSMakeRect(10, -7.25, 50, 30)},
        {[](View& v) { SExt::setRight(v, 100); }, NSMakeRect(10, 20, 90, 30)},
        {[](View& v) { SExt::setTop(v, 40); }, NSMakeRect(10, 20, 50, 20)},
    };
    for (const auto& [set, expected] : cases) {
        view.setFrame(NSMakeRect(10, 20, 50, 30));
        set(view);
        EXPECT_EQ(expected, view.frame());
    }
    // A refused radius (not positive) makes no layer and leaves a set one.
    for (double refused : {0.0, -2.0, std::numeric_limits<double>::quiet_NaN()})
        SExt::setCornerRadius(view, refused);
    EXPECT_EQ(nullptr, view.layer()) << "a refused radius must not make a layer";
    SExt::setCornerRadius(view, 2.5);
    SExt::setCornerRadius(view, -1);
    EXPECT_TRUE(view.wantsLayer());
    ASSERT_NE(nullptr, view.layer());
    EXPECT_TRUE(view.layer()->masksToBounds());
    EXPECT_EQ(2.5, SExt::cornerRadius(view));
}
