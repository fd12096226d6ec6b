#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSView.h"

// A row at (10, 20, 100, 50) in a recording parent that fills a real window. Each press inside
// calls its closure with the event; a release inside calls its closure unless it ends a double
// click; a release outside is dropped. Left and bottom edges are inside, right and top edges
// outside. A set closure takes the event over from the responder chain.
TEST(PLSView, ClosuresSeePressesAndReleasesInsideTheBounds) {
    platform::Window window{NSMakeRect(100, 100, 200, 100)};
    auto parent = std::make_shared<RecordingView>(NSMakeRect(0, 0, 200, 100));
    auto row = std::make_shared<PLSView>(NSMakeRect(10, 20, 100, 50));
    parent->addSubview(row);
    window.setContentView(parent);
    std::vector<double> downs, ups;
    const auto click = [&](double downX, double downY, double upX, double upY, int clicks) {
        window.sendEvent(*mouse(EventType::LeftMouseDown, downX, downY, clicks));
        window.sendEvent(*mouse(EventType::LeftMouseUp, upX, upY, clicks));
    };
    // Without closures, and with only the release closure, presses go up the chain.
    click(60, 40, 60, 40, 2);
    row->setMouseUpInsideBlock([&](const platform::Event& e) { ups.push_back(e.clickCount()); });
    click(60, 40, 60, 40, 1);
    EXPECT_EQ(3u, parent->clicks.size());
    row->setMouseDownInsideBlock([&](const auto& e) { downs.push_back(e.locationInWindow().x); });
    const std::tuple<double, double, double, double, int> cases[] = {
        {60, 40, 61, 41, 1},  {60, 40, 150, 90, 1},  {60, 40, 60, 40, 2},     {60, 40, 60, 40, 3},
        {10, 20, 110, 40, 1}, {10, 69.5, 50, 70, 1}, {109.999, 20, 10, 45, 1}};
    for (const auto& [downX, downY, upX, upY, clicks] : cases)
        click(downX, downY, upX, upY, clicks);
    EXPECT_EQ((std::vector<double>{1, 1, 3, 1}), ups);
    EXPECT_EQ((std::vector<double>{60, 60, 60, 60, 10, 10, 109.999}), downs);
    EXPECT_EQ(3u, parent->clicks.size());
    // The press handler applies the same rule to a location the window did not route here.
    for (const platform::Point& p : {platform::Point{110, 40}, {9.999, 40}, {50, 70}})
        row->mouseDown(*mouse(EventType::LeftMouseDown, p.x, p.y));
    EXPECT_EQ(7u, downs.size());
}
