// A press the base text view never saw (taken by mouseDownBlock, or passed on by
// ignoreMouseEvent) must not become a selection when the pointer is dragged.
#include <gtest/gtest.h>

#include "tests/viewkit/RecordingResponders.h"
#include "viewkit/PLSTextView.h"

namespace viewkit_test {
namespace {

using platform::EventType;

class DragCountingView : public RecordingView {
  public:
    using RecordingView::RecordingView;
    void mouseDragged(const platform::Event&) override { ++drags; }
    int drags = 0;
};

TEST(PLSTextViewDragTest, ADragGoesWhereItsPressWent) {
    struct {
        const char* name;
        bool block, ignore, selects;
        int parentDrags;
    } cases[] = {
        {"the closure took the press", true, false, false, 0},
        {"the next responder took it", true, true, false, 1},
        {"the base took it", false, false, true, 0},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        auto parent = std::make_shared<DragCountingView>(platform::NSMakeRect(0, 0, 300, 40));
        auto text = std::make_shared<PLSTextView>(platform::NSMakeRect(0, 0, 300, 40));
        parent->addSubview(text);
        text->setString("Send to a Friend");
        if (c.block)
            text->setMouseDownBlock([] {});
        text->setIgnoreMouseEvent(c.ignore);
        text->mouseDown(*mouse(EventType::LeftMouseDown, 10, 30));
        text->mouseDragged(*mouse(EventType::LeftMouseDragged, 90, 30));
        EXPECT_EQ(text->selectedRange().length > 0, c.selects);
        EXPECT_EQ(parent->drags, c.parentDrags);
    }
}

}  // namespace
}  // namespace viewkit_test
