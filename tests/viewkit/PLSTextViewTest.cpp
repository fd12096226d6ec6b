#include "tests/viewkit/ViewKitTestSupport.h"
#include "viewkit/PLSTextView.h"
#include "viewkit/ViewSExt.h"

// A title-like text view at (57, 18, 150, 14) in a recording parent inside a real window.
class PLSTextViewTest : public ::testing::Test {
  protected:
    void SetUp() override {
        text->setString("Send to a friend");
        text->setEditable(false);
        parent->addSubview(text);
        window.setContentView(parent);
        window.makeFirstResponder(text.get());
    }
    std::function<void()> note(const char* name) {
        return [this, name] { calls.push_back(name); };
    }

    platform::Window window{NSMakeRect(0, 0, 376, 50)};
    std::shared_ptr<RecordingView> parent = std::make_shared<RecordingView>();
    std::shared_ptr<PLSTextView> text = std::make_shared<PLSTextView>(NSMakeRect(57, 18, 150, 14));
    std::vector<std::string> calls;
};

// Escape (53) and Return (36) go to their closures; true consumes the key, false hands it to the
// base (which passes it up to the parent). Keypad Enter (76) never reaches the Return closure.
TEST_F(PLSTextViewTest, KeyClosuresConsumeOnTrueAndPassOnFalse) {
    const struct {
        bool escTakes, enterTakes;
        uint16_t code;
        std::vector<uint16_t> reachingParent;
        std::vector<std::string> closures;
    } cases[] = {
        {true, false, 53, {}, {"esc"}},    {false, true, 36, {}, {"enter"}},
        {false, false, 53, {53}, {"esc"}}, {false, false, 36, {36}, {"enter"}},
        {true, true, 76, {76}, {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.code);
        text->setDidPressEscKeyBlock([&, t = c.escTakes] { return calls.push_back("esc"), t; });
        text->setDidPressEnterKeyBlock(
            [&, t = c.enterTakes] { return calls.push_back("enter"), t; });
        calls.clear();
        parent->keys.clear();
        window.sendEvent(*key(c.code));
        EXPECT_EQ(c.reachingParent, parent->keys);
        EXPECT_EQ(c.closures, calls);
    }
}

// Mouse events go where their press went: all of them up the chain while ignoring mouse events (the
// closures skipped), the press to its closure (no caret, no drag selection) or else to the base,
// which selects on a drag. Only tracked enter and exit reach their closures.
TEST_F(PLSTextViewTest, MouseEventsGoWhereThePressWentAndTheFrameVeto) {
    text->setMouseUpBlock(note("up"));
    text->setMouseDidEnteredBlock(note("entered"));
    text->setMouseDidExitBlock(note("exited"));
    for (const auto& [block, ignore, selects] :
         {std::tuple{true, true, false}, {true, false, false}, {false, false, true}}) {
        text->setSelectedRange({0, 0});
        text->setMouseDownBlock(block ? note("down") : nullptr);
        text->setIgnoreMouseEvent(ignore);
        text->mouseDown(*mouse(EventType::LeftMouseDown, 60, 25));
        text->mouseDragged(*mouse(EventType::LeftMouseDragged, 150, 25));
        text->mouseUp(*mouse(EventType::LeftMouseUp, 370, 45, 2));  // far off the view
        EXPECT_EQ(selects, text->selectedRange().length > 0) << block << ignore;
    }
    for (bool tracking : {false, true}) {
        text->setPlShouldTrackMouseEnterExitEvents(tracking);
        text->mouseEntered(*mouse(EventType::MouseEntered, 60, 20, 0));
        text->mouseExited(*mouse(EventType::MouseExited, 60, 20, 0));
    }
    EXPECT_EQ((std::vector<std::string>{"down", "up", "up", "entered", "exited"}), calls);
    EXPECT_EQ((std::vector<int>{1, 2, 0, 0}), parent->clicks);
    EXPECT_EQ(1, parent->drags);

    std::vector<platform::Point> asked;
    bool refuse = true;
    text->setShouldDisableSetFrameOrigin([&](double x, double y) {
        return asked.push_back({x, y}), refuse;
    });
    text->setFrameOrigin({5, 6});
    SExt::setWidth(*text, 500);
    EXPECT_EQ(NSMakeRect(57, 18, 150, 14), text->frame());
    refuse = false;
    text->setFrame(NSMakeRect(1, 2, 3, 4));
    EXPECT_EQ(NSMakeRect(1, 2, 3, 4), text->frame());
    EXPECT_EQ((std::vector<platform::Point>{{5, 6}, {57, 18}, {1, 2}}), asked);
}

class TextViewWithoutLayout : public PLSTextView {
  public:
    platform::LayoutManager* layoutManager() override { return nullptr; }
};

// Typing notifies the change closure after the base; selection picks the text colour; the focus
// ring covers the bounds only when asked for and editable.
TEST_F(PLSTextViewTest, TypingSelectionStyleAndFocusRing) {
    text->setEditable(true);
    text->setString("");
    text->setDidChangeTextBlock([&] { calls.push_back("changed to " + text->string()); });
    window.sendEvent(*key(0, "a"));
    EXPECT_EQ(std::vector<std::string>{"changed to a"}, calls);
    const auto normal = SExt::colorWithHex("#888888"), chosen = SExt::colorWithHex("#00A2FF");
    text->setNormalTextColor(normal);
    text->setSelectedTextColor(chosen);
    EXPECT_EQ(normal, text->textColor());
    text->setSelected(true);
    text->setNormalTextColor(Color::blackColor());  // selected: the selected colour stays
    EXPECT_EQ(chosen, text->textColor());
    text->setSelected(false);
    EXPECT_TRUE(*Color::blackColor() == *text->textColor());
    const struct {
        bool ask, editable, ring;
    } rings[] = {{false, true, false}, {true, true, true}, {true, false, false}};
    for (const auto& r : rings) {
        SCOPED_TRACE(std::to_string(r.ask) + " " + std::to_string(r.editable));
        text->setPlShowFocusRingIfEditable(r.ask);
        text->setEditable(r.editable);
        EXPECT_EQ(r.ring ? text->bounds() : platform::NSZeroRect, text->focusRingMaskBounds());
        const auto fill = [&](auto&) { Color::blackColor()->set(), text->drawFocusRingMask(); };
        EXPECT_EQ(r.ring ? 255 : 0,
                  platform::Bitmap::drawn({150, 14}, 1, fill)->pixelAtPoint(149.5, 0.5).a);
    }
    // Links show in blue; a text view whose layout manager has gone measures nothing.
    EXPECT_TRUE(*SExt::colorWithHex("#00A2FF") == *text->linkTextAttributes().foregroundColor);
    EXPECT_EQ(platform::NSMakeSize(0, 0), TextViewWithoutLayout().intrinsicContentSize());
}
