// The text view: layout, typing, caret and selection, mouse handling, drawing, focus ring.
#include "tests/platform/ui/PixelTestSupport.h"

#include "platform/ui/TextView.h"

using namespace platform;

namespace {

class CountingTextView : public TextView {
  public:
    using TextView::TextView;
    void didChangeText() override {
        TextView::didChangeText();
        ++changes;
    }
    int changes = 0;
};

// A text view whose focus ring covers its whole bounds.
class BoundsRingTextView : public TextView {
  public:
    using TextView::TextView;
    void drawFocusRingMask() override { NSRectFill(bounds()); }
    Rect focusRingMaskBounds() const override { return bounds(); }
};

EventPtr key(uint16_t code, const std::string& characters = {}, uint64_t flags = 0) {
    return Event::keyEvent(EventType::KeyDown, code, characters, flags);
}

class TextViewTest : public ::testing::Test {
  protected:
    void SetUp() override {
        window.setContentView(content);
        content->addSubview(text);
        ASSERT_TRUE(window.makeFirstResponder(text.get()));
    }
    void type(const std::string& characters) {
        for (char c : characters)
            window.sendEvent(*key(0, std::string(1, c)));
    }
    // A point in the window on the text view's first line, |x| points from the view's left.
    Point onFirstLine(double x) const { return {20 + x, 20 + 100 - 7}; }

    RecordingWindow window{NSMakeRect(0, 0, 300, 200)};
    std::shared_ptr<View> content = std::make_shared<View>();
    std::shared_ptr<CountingTextView> text =
        std::make_shared<CountingTextView>(NSMakeRect(20, 20, 200, 100));
};

}  // namespace

// Not selectable means not editable; editable means selectable again.
TEST(TextViewDefaultsTest, DefaultsMatchThePlatformTextView) {
    TextView view(NSMakeRect(0, 0, 100, 20));
    EXPECT_EQ(12.0, view.font()->pointSize());
    EXPECT_EQ(&view, view.textContainer()->textView());
    view.setSelectable(false);
    EXPECT_FALSE(view.isEditable());
    EXPECT_FALSE(view.acceptsFirstResponder());
    view.setEditable(true);
    EXPECT_TRUE(view.isSelectable());
}

// One line high when empty; a line per line, words wrapped at the width less the padding, and laid
// out again when the view narrows.
TEST(TextViewDefaultsTest, UsedRectGrowsWithLinesAndIncludesThePadding) {
    TextView view(NSMakeRect(0, 0, 100, 20));
    auto used = [&] {
        return view.layoutManager()->usedRectForTextContainer(view.textContainer());
    };
    const Rect empty = used();
    EXPECT_EQ(0, empty.size.width);
    const double lineHeight = empty.size.height;
    EXPECT_GT(lineHeight, 12);

    view.setString("W");
    const Rect one = used();
    EXPECT_DOUBLE_EQ(lineHeight, one.size.height);
    EXPECT_GT(one.size.width, 10);  // the glyph plus 5 points each side
    EXPECT_LT(one.size.width, 30);
    view.setString("W\nWW\nW");
    EXPECT_DOUBLE_EQ(3 * lineHeight, used().size.height);

    view.setString("alpha beta gamma delta epsilon zeta eta theta");
    const Rect wrapped = used();
    EXPECT_GE(wrapped.size.height, 3 * lineHeight);
    EXPECT_LE(wrapped.size.width, 100);
    view.setFrameSize({60, 20});
    EXPECT_GT(used().size.height, wrapped.size.height);

    TextView other;
    EXPECT_EQ(NSZeroRect, view.layoutManager()->usedRectForTextContainer(other.textContainer()));
}

TEST_F(TextViewTest, TypingDeletingAndMovingTheCaret) {
    type("abc");
    window.sendEvent(*key(kVK_Delete));
    window.sendEvent(*key(kVK_LeftArrow));
    type("X");
    window.sendEvent(*key(kVK_Return, "\r"));
    EXPECT_EQ("aX\nb", text->string());
    EXPECT_EQ(6, text->changes);
    EXPECT_EQ(3u, text->selectedRange().location);

    // Deleting at the start changes nothing and reports nothing.
    text->setSelectedRange({0, 0});
    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ("aX\nb", text->string());
    EXPECT_EQ(6, text->changes);

    window.sendEvent(*key(kVK_DownArrow));
    EXPECT_EQ(3u, text->selectedRange().location);
    window.sendEvent(*key(kVK_UpArrow));
    EXPECT_EQ(0u, text->selectedRange().location);
    EXPECT_TRUE(window.keys.empty());
}

TEST_F(TextViewTest, MultibyteCharactersAreEditedWhole) {
    type("a");
    window.sendEvent(*key(0, "\xC3\xA9"));          // é
    window.sendEvent(*key(0, "\xF0\x9F\x98\x80"));  // an emoji, four bytes
    window.sendEvent(*key(kVK_LeftArrow));
    EXPECT_EQ(3u, text->selectedRange().location);
    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ("a\xF0\x9F\x98\x80", text->string());
    // Malformed input is made well-formed, not kept.
    text->setString("x\xFFy");
    EXPECT_EQ("x\xEF\xBF\xBDy", text->string());
    text->setSelectedRange({2, 1});  // inside the replacement character
    EXPECT_EQ(1u, text->selectedRange().location);
}

TEST_F(TextViewTest, SelectionIsReplacedAndExtendedWithShift) {
    text->setString("hello world");
    text->setSelectedRange({0, 5});
    type("J");
    EXPECT_EQ("J world", text->string());
    window.sendEvent(*key(kVK_RightArrow, {}, NSEventModifierFlagShift));
    window.sendEvent(*key(kVK_RightArrow, {}, NSEventModifierFlagShift));
    EXPECT_EQ(1u, text->selectedRange().location);
    EXPECT_EQ(2u, text->selectedRange().length);
    window.sendEvent(*key(kVK_LeftArrow));  // collapses to the selection's start
    EXPECT_EQ(1u, text->selectedRange().location);
    EXPECT_EQ(0u, text->selectedRange().length);
    text->setSelectedRange({0, 99});
    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ("", text->string());
}

// Keys the view does not use go up the chain, all of them once it is not editable.
TEST_F(TextViewTest, KeysTheViewDoesNotUseGoUpTheChain) {
    window.sendEvent(*key(kVK_Escape, "\x1b"));
    window.sendEvent(*key(0, "a", NSEventModifierFlagCommand));
    EXPECT_EQ(2u, window.keys.size());
    text->setEditable(false);
    window.sendEvent(*key(kVK_Return, "\r"));
    window.sendEvent(*key(0, "a"));
    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ(5u, window.keys.size());
    EXPECT_EQ(0, text->changes);
}

// Clicks place the caret, drags select, double clicks a word, triple clicks the line; a view that
// is not selectable passes the mouse on.
TEST_F(TextViewTest, ClicksPlaceTheCaretAndDragsSelect) {
    text->setString("hello world");
    auto at = [&](EventType type, double x, int clicks = 1) {
        window.sendEvent(*Event::mouseEvent(type, onFirstLine(x), clicks));
    };
    at(EventType::LeftMouseDown, 0);
    at(EventType::LeftMouseDragged, 190);
    at(EventType::LeftMouseUp, 190);
    EXPECT_EQ(0u, text->selectedRange().location);
    EXPECT_EQ(11u, text->selectedRange().length);
    at(EventType::LeftMouseDown, 190);  // past the end of the line
    EXPECT_EQ(11u, text->selectedRange().location);
    EXPECT_EQ(0u, text->selectedRange().length);
    at(EventType::LeftMouseDown, 8, 2);  // inside "hello"
    EXPECT_EQ(0u, text->selectedRange().location);
    EXPECT_EQ(5u, text->selectedRange().length);
    at(EventType::LeftMouseDown, 8, 3);
    EXPECT_EQ(11u, text->selectedRange().length);

    text->setSelectable(false);
    window.makeFirstResponder(nullptr);
    at(EventType::LeftMouseDown, 0);
    EXPECT_EQ(11u, text->selectedRange().length);
    EXPECT_EQ(1, window.mouseDowns);
    EXPECT_EQ(&window, window.firstResponder());
}

// The background, then the text from the top after the padding; the selection shows only while the
// view is first responder.
TEST_F(TextViewTest, DrawsBackgroundTextAndAClearBackground) {
    text->setString("Hello");
    const auto ink =
        pixel_test::inkOf(*Bitmap::renderView(*text, 1), [](const Rgba& p) { return p.r < 128; });
    ASSERT_FALSE(ink.empty());
    EXPECT_LT(ink.top, 8);
    EXPECT_GE(ink.left, 5);
    EXPECT_EQ(pixel_test::kWhite, Bitmap::renderView(*text, 1)->pixelAtPoint(150, 10));

    text->setBackgroundColor(Color::clearColor());
    EXPECT_EQ(0, Bitmap::renderView(*text, 1)->pixelAtPoint(150, 10).a);
    text->setBackgroundColor(Color::whiteColor());
    text->setDrawsBackground(false);
    EXPECT_EQ(0, Bitmap::renderView(*text, 1)->pixelAtPoint(150, 10).a);

    text->setSelectedRange({0, 5});
    auto selection = [&] {
        return pixel_test::inkOf(*Bitmap::renderView(*text, 1), [](const Rgba& p) {
            return p == Rgba{0xB3, 0xD7, 0xFF, 0xFF};
        });
    };
    EXPECT_GT(selection().right, 20);  // light blue behind the selected text
    window.makeFirstResponder(nullptr);
    EXPECT_TRUE(selection().empty());
}

// The ring follows the mask, only while the view is editable and first responder.
TEST_F(TextViewTest, TheFocusRingFollowsTheMaskAndOnlyWhileEditableAndFocused) {
    auto ringed = std::make_shared<BoundsRingTextView>(NSMakeRect(20, 130, 200, 40));
    ringed->setBackgroundColor(Color::clearColor());
    content->addSubview(ringed);
    auto pixel = [&](double x, double y) {
        return Bitmap::renderView(*content, 1)->pixelAtPoint(x, y);
    };
    EXPECT_EQ(0, pixel(18.5, 150).a);
    ASSERT_TRUE(window.makeFirstResponder(ringed.get()));
    const Rgba ring = pixel(18.5, 150);
    EXPECT_GT(ring.a, 60);
    EXPECT_GT(ring.b, ring.r);
    EXPECT_EQ(0, pixel(15.5, 150).a);  // just past the ring's width
    ringed->setEditable(false);
    EXPECT_EQ(0, pixel(18.5, 150).a);

    // The base's mask is the used rect of its text: with no text, nothing rings the bounds.
    text->setBackgroundColor(Color::clearColor());
    ASSERT_TRUE(window.makeFirstResponder(text.get()));
    EXPECT_EQ(0, pixel(18.5, 70).a);
}
