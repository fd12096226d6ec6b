// The text view: layout, typing, caret and selection, mouse handling, drawing, focus ring.
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "platform/ui/Bitmap.h"
#include "platform/ui/Event.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/TextView.h"
#include "platform/ui/Window.h"
#include "tests/platform/ui/ViewTestSupport.h"

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

// Records what reaches the end of the chain.
class RecordingWindow : public Window {
  public:
    using Window::Window;
    void keyDown(const Event& e) override { keys.push_back(e.keyCode()); }
    void mouseDown(const Event&) override { ++mouseDowns; }
    std::vector<uint16_t> keys;
    int mouseDowns = 0;
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

TEST(TextViewDefaultsTest, DefaultsMatchThePlatformTextView) {
    TextView view(NSMakeRect(0, 0, 100, 20));
    EXPECT_EQ("NSTextView", view.className());
    EXPECT_EQ(12.0, view.font()->pointSize());
    EXPECT_EQ(nullptr, view.textColor());
    EXPECT_TRUE(view.drawsBackground());
    EXPECT_TRUE(view.isEditable());
    EXPECT_TRUE(view.isSelectable());
    EXPECT_EQ(5.0, view.textContainer()->lineFragmentPadding());
    EXPECT_EQ(&view, view.textContainer()->textView());
    ASSERT_NE(nullptr, view.layoutManager());

    // Not selectable means not editable; editable means selectable again.
    view.setSelectable(false);
    EXPECT_FALSE(view.isEditable());
    EXPECT_FALSE(view.acceptsFirstResponder());
    view.setEditable(true);
    EXPECT_TRUE(view.isSelectable());
}

TEST(TextViewDefaultsTest, UsedRectGrowsWithLinesAndIncludesThePadding) {
    TextView view(NSMakeRect(0, 0, 100, 20));
    LayoutManager* manager = view.layoutManager();
    TextContainer* container = view.textContainer();
    const Rect empty = manager->usedRectForTextContainer(container);
    EXPECT_EQ(0, empty.size.width);
    EXPECT_GT(empty.size.height, 12);
    const double lineHeight = empty.size.height;

    view.setString("W");
    const Rect one = manager->usedRectForTextContainer(container);
    EXPECT_DOUBLE_EQ(lineHeight, one.size.height);
    EXPECT_GT(one.size.width, 10);  // the glyph plus 5 points each side
    EXPECT_LT(one.size.width, 30);

    view.setString("W\nWW\nW");
    const Rect three = manager->usedRectForTextContainer(container);
    EXPECT_DOUBLE_EQ(3 * lineHeight, three.size.height);
    EXPECT_GT(three.size.width, one.size.width);

    // Words wrap at the width less the padding.
    view.setString("alpha beta gamma delta epsilon zeta eta theta");
    const Rect wrapped = manager->usedRectForTextContainer(container);
    EXPECT_GE(wrapped.size.height, 3 * lineHeight);
    EXPECT_LE(wrapped.size.width, 100);

    // Narrowing the view lays the text out again.
    view.setFrameSize({60, 20});
    EXPECT_GT(manager->usedRectForTextContainer(container).size.height, wrapped.size.height);

    TextView other;
    EXPECT_EQ(NSZeroRect, manager->usedRectForTextContainer(other.textContainer()));
}

TEST_F(TextViewTest, TypingDeletingAndMovingTheCaret) {
    type("abc");
    EXPECT_EQ("abc", text->string());
    EXPECT_EQ(3, text->changes);
    EXPECT_EQ(3u, text->selectedRange().location);

    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ("ab", text->string());
    EXPECT_EQ(4, text->changes);

    window.sendEvent(*key(kVK_LeftArrow));
    type("X");
    EXPECT_EQ("aXb", text->string());
    window.sendEvent(*key(kVK_Return, "\r"));
    EXPECT_EQ("aX\nb", text->string());
    EXPECT_EQ(6, text->changes);

    // Deleting at the start changes nothing and reports nothing.
    text->setSelectedRange({0, 0});
    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ("aX\nb", text->string());
    EXPECT_EQ(6, text->changes);

    // Down moves to the next line, up comes back.
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
    EXPECT_EQ("a\xC3\xA9\xF0\x9F\x98\x80", text->string());
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
    EXPECT_EQ(7u, text->selectedRange().length);
    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ("", text->string());
}

TEST_F(TextViewTest, KeysTheViewDoesNotUseGoUpTheChain) {
    window.sendEvent(*key(kVK_Escape, "\x1b"));
    window.sendEvent(*key(0, "a", NSEventModifierFlagCommand));
    EXPECT_EQ(2u, window.keys.size());
    EXPECT_EQ("", text->string());

    text->setEditable(false);
    window.sendEvent(*key(kVK_Return, "\r"));
    window.sendEvent(*key(0, "a"));
    window.sendEvent(*key(kVK_Delete));
    EXPECT_EQ(5u, window.keys.size());
    EXPECT_EQ("", text->string());
    EXPECT_EQ(0, text->changes);
}

TEST_F(TextViewTest, ClicksPlaceTheCaretAndDragsSelect) {
    text->setString("hello world");
    auto at = [&](EventType type, double x, int clicks = 1) {
        window.sendEvent(*Event::mouseEvent(type, onFirstLine(x), clicks));
    };
    at(EventType::LeftMouseDown, 0);
    EXPECT_EQ(0u, text->selectedRange().location);
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
    EXPECT_EQ(text.get(), window.firstResponder());
}

TEST_F(TextViewTest, ANonSelectableViewPassesTheMouseOn) {
    text->setString("hello");
    text->setSelectedRange({2, 0});
    text->setSelectable(false);
    window.makeFirstResponder(nullptr);
    window.sendEvent(*Event::mouseEvent(EventType::LeftMouseDown, onFirstLine(0), 1));
    window.sendEvent(*Event::mouseEvent(EventType::LeftMouseUp, onFirstLine(0), 1));
    EXPECT_EQ(2u, text->selectedRange().location);
    EXPECT_EQ(1, window.mouseDowns);
    EXPECT_EQ(&window, window.firstResponder());
}

TEST_F(TextViewTest, DrawsBackgroundTextAndAClearBackground) {
    text->setString("Hello");
    auto shot = Bitmap::renderView(*text, 1);
    EXPECT_EQ((Rgba{255, 255, 255, 255}), shot->pixelAtPoint(150, 10));
    // Ink on the first line, after the padding; nothing in the lower part.
    int inkTop = -1, inkLeft = -1;
    for (int y = 0; y < shot->pixelHeight() && inkTop < 0; ++y)
        for (int x = 0; x < shot->pixelWidth(); ++x)
            if (shot->pixelAt(x, y).r < 128) {
                inkTop = y;
                break;
            }
    for (int x = 0; x < shot->pixelWidth() && inkLeft < 0; ++x)
        for (int y = 0; y < shot->pixelHeight(); ++y)
            if (shot->pixelAt(x, y).r < 128) {
                inkLeft = x;
                break;
            }
    EXPECT_GE(inkTop, 0);
    EXPECT_LT(inkTop, 8);
    EXPECT_GE(inkLeft, 5);

    text->setBackgroundColor(Color::clearColor());
    auto clear = Bitmap::renderView(*text, 1);
    EXPECT_EQ(0, clear->pixelAtPoint(150, 10).a);
    text->setBackgroundColor(Color::whiteColor());
    text->setDrawsBackground(false);
    EXPECT_EQ(0, Bitmap::renderView(*text, 1)->pixelAtPoint(150, 10).a);
}

TEST_F(TextViewTest, TheFocusRingFollowsTheMaskAndOnlyWhileEditableAndFocused) {
    auto ringed = std::make_shared<BoundsRingTextView>(NSMakeRect(20, 130, 200, 40));
    ringed->setBackgroundColor(Color::clearColor());
    content->addSubview(ringed);
    auto ringPixel = [&] { return Bitmap::renderView(*content, 1)->pixelAtPoint(18.5, 150); };

    EXPECT_EQ(0, ringPixel().a);
    ASSERT_TRUE(window.makeFirstResponder(ringed.get()));
    const Rgba ring = ringPixel();
    EXPECT_GT(ring.a, 60);
    EXPECT_GT(ring.b, ring.r);
    // Just past the ring's width, nothing.
    EXPECT_EQ(0, Bitmap::renderView(*content, 1)->pixelAtPoint(15.5, 150).a);

    ringed->setEditable(false);
    EXPECT_EQ(0, ringPixel().a);

    // The base's mask is the used rect of its text: with no text, nothing rings the bounds.
    text->setBackgroundColor(Color::clearColor());
    ASSERT_TRUE(window.makeFirstResponder(text.get()));
    EXPECT_EQ(0, Bitmap::renderView(*content, 1)->pixelAtPoint(18.5, 70).a);
}

TEST_F(TextViewTest, SelectionShowsOnlyWhileFirstResponder) {
    text->setString("hello");
    text->setSelectedRange({0, 5});
    auto selectionPixels = [&] {
        auto shot = Bitmap::renderView(*text, 1);
        int count = 0;
        for (int y = 0; y < shot->pixelHeight(); ++y)
            for (int x = 0; x < shot->pixelWidth(); ++x)
                if (shot->pixelAt(x, y) == (Rgba{0xB3, 0xD7, 0xFF, 0xFF}))
                    ++count;
        return count;
    };
    EXPECT_GT(selectionPixels(), 40);  // light blue behind the selected text
    window.makeFirstResponder(nullptr);
    EXPECT_EQ(0, selectionPixels());
}
