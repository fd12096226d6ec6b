// The text view: typing, caret and selection, mouse handling, drawing.
#include "platform/ui/TextView.h"

#include "tests/platform/ui/PixelTestSupport.h"

using namespace platform;
using Selection = std::vector<size_t>;

class CountingTextView : public TextView {
  public:
    using TextView::TextView;
    void didChangeText() override {
        TextView::didChangeText();
        ++changes;
    }
    int changes = 0;
};

class TextViewTest : public ::testing::Test {
  protected:
    void SetUp() override {
        window.setContentView(content);
        content->addSubview(text);
        ASSERT_TRUE(window.makeFirstResponder(text.get()));
    }
    void key(uint16_t code, const std::string& characters = {}, uint64_t flags = 0) {
        window.sendEvent(*Event::keyEvent(EventType::KeyDown, code, characters, flags));
    }
    void type(const std::string& characters) {
        for (char c : characters)
            key(0, std::string(1, c));
    }
    // A mouse event on the text view's first line, |x| points from the view's left.
    void click(EventType type, double x, int clicks = 1) {
        window.sendEvent(*Event::mouseEvent(type, {20 + x, 20 + 100 - 7}, clicks));
    }
    Selection selection() const {
        return {text->selectedRange().location, text->selectedRange().length};
    }

    RecordingWindow window{NSMakeRect(0, 0, 300, 200)};
    std::shared_ptr<View> content = std::make_shared<View>();
    std::shared_ptr<CountingTextView> text =
        std::make_shared<CountingTextView>(NSMakeRect(20, 20, 200, 100));
};

// Typing, deleting and moving the caret edit whole characters (malformed input is made
// well-formed); keys the view does not use go up the chain, all of them once it is not editable.
TEST_F(TextViewTest, TypingDeletingAndMovingTheCaret) {
    type("abc");
    key(kVK_Delete);
    key(kVK_LeftArrow);
    type("X");
    key(kVK_Return, "\r");
    EXPECT_EQ("aX\nb", text->string());
    EXPECT_EQ(6, text->changes);
    EXPECT_EQ((Selection{3, 0}), selection());
    text->setSelectedRange({0, 0});
    key(kVK_Delete);  // at the start: no change, none reported
    key(kVK_DownArrow);
    EXPECT_EQ((Selection{3, 0}), selection());
    key(kVK_UpArrow);
    EXPECT_EQ((Selection{0, 0}), selection());
    EXPECT_EQ(6, text->changes);

    text->setString("a");
    text->setSelectedRange({1, 0});
    key(0, "\xC3\xA9");          // é, two bytes
    key(0, "\xF0\x9F\x98\x80");  // an emoji, four
    key(kVK_LeftArrow);
    EXPECT_EQ((Selection{3, 0}), selection());
    key(kVK_Delete);
    EXPECT_EQ("a\xF0\x9F\x98\x80", text->string());
    text->setString("x\xFFy");
    EXPECT_EQ("x\xEF\xBF\xBDy", text->string());
    text->setSelectedRange({2, 1});  // inside the replacement character
    EXPECT_EQ(1u, text->selectedRange().location);

    key(kVK_Escape, "\x1b");
    text->setEditable(false);
    type("a");
    EXPECT_EQ(2u, window.keys.size());
}

// Clicks place the caret, drags select, double clicks a word, triple clicks the line; a view that
// is not selectable passes the mouse on.
TEST_F(TextViewTest, ClicksAndShiftSelectAndTypingReplaces) {
    text->setString("hello world\nbye");  // clicks on the first line
    click(EventType::LeftMouseDown, 0);
    click(EventType::LeftMouseDragged, 190);
    click(EventType::LeftMouseUp, 190);
    EXPECT_EQ((Selection{0, 11}), selection());
    click(EventType::LeftMouseDown, 190);  // past the end of the line
    EXPECT_EQ((Selection{11, 0}), selection());
    click(EventType::LeftMouseDown, 8, 2);  // inside "hello"
    EXPECT_EQ((Selection{0, 5}), selection());
    click(EventType::LeftMouseDown, 8, 3);
    EXPECT_EQ((Selection{0, 12}), selection());
    text->setSelectable(false);  // and so not editable
    EXPECT_FALSE(text->isEditable());
    click(EventType::LeftMouseDown, 0);
    EXPECT_EQ((Selection{0, 12}), selection());
    EXPECT_EQ(1, window.mouseDowns);

    // A selection is replaced by typing, extended with shift, collapsed by an arrow.
    text->setEditable(true);  // and so selectable again
    EXPECT_TRUE(text->isSelectable());
    ASSERT_TRUE(window.makeFirstResponder(text.get()));
    text->setSelectedRange({0, 5});
    type("J");
    EXPECT_EQ("J world\nbye", text->string());
    key(kVK_RightArrow, {}, NSEventModifierFlagShift);
    key(kVK_RightArrow, {}, NSEventModifierFlagShift);
    EXPECT_EQ((Selection{1, 2}), selection());
    key(kVK_LeftArrow);  // collapses to the selection's start
    EXPECT_EQ((Selection{1, 0}), selection());
    text->setSelectedRange({0, 99});
    key(kVK_Delete);
    EXPECT_EQ("", text->string());
}

// The background, then the text from the top after the padding; the selection shows only while the
// view is first responder.
TEST_F(TextViewTest, DrawsBackgroundTextAndSelection) {
    text->setString("Hello");
    auto render = [&] { return Bitmap::renderView(*text, 1); };
    const auto ink = pixel_test::inkOf(*render(), [](const Rgba& p) { return p.r < 128; });
    EXPECT_LT(ink.top, 8);
    EXPECT_GE(ink.left, 5);
    EXPECT_EQ(pixel_test::kWhite, render()->pixelAtPoint(150, 10));
    text->setDrawsBackground(false);
    EXPECT_EQ(0, render()->pixelAtPoint(150, 10).a);

    text->setSelectedRange({0, 5});
    auto selected = [&] {
        return pixel_test::inkOf(*render(), [](const Rgba& p) {
            return p == Rgba{0xB3, 0xD7, 0xFF, 0xFF};
        });
    };
    EXPECT_GT(selected().right, 20);
    window.makeFirstResponder(nullptr);
    EXPECT_TRUE(selected().empty());
}

// While the view is first responder and editable, its ring hugs the used text from outside: above
// the first line at the top of the view, below and right of it inside the view, and nowhere near
// the view's bottom.
TEST_F(TextViewTest, FocusRingHugsTheUsedTextAtTheTop) {
    text->setString("Hello");
    const Rect used = text->focusRingMaskBounds();
    ASSERT_EQ(100, used.maxY());
    const double x = 20 + used.midX(), top = 20 + used.maxY(), bottom = 20 + used.minY(),
                 right = 20 + used.maxX(), middle = 20 + used.midY();
    const Rgba ring{0x3B, 0x99, 0xFC, 128}, ringOverWhite{157, 204, 254, 255};
    for (double scale : {1.0, 2.0}) {
        SCOPED_TRACE(scale);
        pixel_test::expectPixels(*window.snapshot(scale), {{x, top + 1.5, ring},
                                                           {x, top + 4, pixel_test::kClear},
                                                           {x, bottom - 1.5, ringOverWhite},
                                                           {right + 1.5, middle, ringOverWhite},
                                                           {right + 4, middle, pixel_test::kWhite},
                                                           {x, 21.5, pixel_test::kWhite},
                                                           {x, 18.5, pixel_test::kClear}});
    }
}
