#include "viewkit/PLSTextView.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ui/Bitmap.h"
#include "platform/ui/Window.h"
#include "tests/viewkit/RecordingResponders.h"
#include "viewkit/ColorSExt.h"
#include "viewkit/ViewSExt.h"

using platform::Color;
using platform::EventType;
using platform::NSMakeRect;
using viewkit_test::key;
using viewkit_test::mouse;
using viewkit_test::RecordingView;

namespace {

// A title-like text view at (57, 18, 150, 14) in a recording parent inside a real window.
class PLSTextViewEvents : public ::testing::Test {
  protected:
    void SetUp() override {
        window = std::make_unique<platform::Window>(NSMakeRect(0, 0, 376, 50));
        parent = std::make_shared<RecordingView>(NSMakeRect(0, 0, 376, 50));
        text = std::make_shared<PLSTextView>(NSMakeRect(57, 18, 150, 14));
        text->setString("Send to a friend");
        text->setEditable(false);
        parent->addSubview(text);
        window->setContentView(parent);
        window->makeFirstResponder(text.get());
    }

    void press(uint16_t keyCode) { window->sendEvent(*key(keyCode)); }

    std::unique_ptr<platform::Window> window;
    std::shared_ptr<RecordingView> parent;
    std::shared_ptr<PLSTextView> text;
    std::vector<std::string> calls;
};

// Esc and Return go to their closures; true consumes the key, false or no closure hands it
// to the base (which passes it up to the parent). Keypad Enter and Tab are not Return.
TEST_F(PLSTextViewEvents, KeyClosuresConsumeOnTrueAndPassOnFalse) {
    enum Closure { None, Consumes, Passes };
    const struct {
        Closure esc, enter;
        uint16_t key;
        bool reachesBase;
        const char* call;
    } cases[] = {
        {None, None, platform::kVK_Escape, true, ""},
        {None, None, platform::kVK_Return, true, ""},
        {Consumes, None, platform::kVK_Escape, false, "esc"},
        {Passes, None, platform::kVK_Escape, true, "esc"},
        {Consumes, None, platform::kVK_Return, true, ""},
        {None, Consumes, platform::kVK_Return, false, "enter"},
        {None, Passes, platform::kVK_Return, true, "enter"},
        {Consumes, Consumes, platform::kVK_ANSI_KeypadEnter, true, ""},
        {Consumes, Consumes, platform::kVK_Tab, true, ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.key);
        auto closure = [this](Closure kind, const char* name) -> std::function<bool()> {
            if (kind == None)
                return nullptr;
            return [this, kind, name] {
                calls.push_back(name);
                return kind == Consumes;
            };
        };
        text->setDidPressEscKeyBlock(closure(c.esc, "esc"));
        text->setDidPressEnterKeyBlock(closure(c.enter, "enter"));
        calls.clear();
        parent->received.keys.clear();
        press(c.key);
        EXPECT_EQ(c.reachesBase, parent->received.keys == std::vector<uint16_t>{c.key});
        EXPECT_EQ(*c.call ? std::vector<std::string>{c.call} : std::vector<std::string>{}, calls);
    }
}

TEST_F(PLSTextViewEvents, IgnoredMouseEventsGoToTheNextResponderAndSkipTheClosures) {
    text->setMouseDownBlock([&] { calls.push_back("down"); });
    text->setMouseUpBlock([&] { calls.push_back("up"); });
    text->setIgnoreMouseEvent(true);
    window->sendEvent(*mouse(EventType::LeftMouseDown, 60, 20));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 60, 20, 2));
    EXPECT_TRUE(calls.empty());
    EXPECT_EQ((std::vector<EventType>{EventType::LeftMouseDown, EventType::LeftMouseUp}),
              parent->received.mouse);
    EXPECT_EQ((std::vector<int>{1, 2}), parent->received.clickCounts);
}

TEST_F(PLSTextViewEvents, MouseClosuresReplaceTheBaseWithoutAHitTest) {
    text->setMouseDownBlock([&] { calls.push_back("down"); });
    text->setMouseUpBlock([&] { calls.push_back("up"); });
    text->setSelectedRange({0, 0});
    window->sendEvent(*mouse(EventType::LeftMouseDown, 200, 25));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 370, 45, 2));  // far off the view
    EXPECT_EQ((std::vector<std::string>{"down", "up"}), calls);
    EXPECT_EQ(0u, text->selectedRange().location) << "the caret must not move";
    EXPECT_EQ(0u, text->selectedRange().length);
    EXPECT_TRUE(parent->received.mouse.empty());
}

TEST_F(PLSTextViewEvents, WithoutClosuresTheBasePlacesTheCaret) {
    text->setSelectedRange({0, 0});
    window->sendEvent(*mouse(EventType::LeftMouseDown, 205, 25));
    window->sendEvent(*mouse(EventType::LeftMouseUp, 205, 25));
    EXPECT_EQ(text->string().size(), text->selectedRange().location);
}

TEST_F(PLSTextViewEvents, EnterAndExitGoToClosuresOnlyWhileTracking) {
    text->mouseEntered(*mouse(EventType::MouseEntered, 60, 20, 0));
    text->mouseExited(*mouse(EventType::MouseExited, 60, 20, 0));
    EXPECT_EQ(2u, parent->received.mouse.size());

    text->setPlShouldTrackMouseEnterExitEvents(true);
    text->mouseEntered(*mouse(EventType::MouseEntered, 60, 20, 0));  // no closure: dropped
    text->setMouseDidEnteredBlock([&] { calls.push_back("entered"); });
    text->setMouseDidExitBlock([&] { calls.push_back("exited"); });
    text->mouseEntered(*mouse(EventType::MouseEntered, 60, 20, 0));
    text->mouseExited(*mouse(EventType::MouseExited, 60, 20, 0));
    EXPECT_EQ(2u, parent->received.mouse.size());
    EXPECT_EQ((std::vector<std::string>{"entered", "exited"}), calls);
}

TEST_F(PLSTextViewEvents, TypingNotifiesTheChangeClosureAfterTheBase) {
    text->setEditable(true);
    text->setString("");
    text->setDidChangeTextBlock([&] { calls.push_back("changed to " + text->string()); });
    window->sendEvent(*key(0, "a"));
    EXPECT_EQ(std::vector<std::string>{"changed to a"}, calls);
}

TEST(PLSTextView, FrameVetoRefusesOriginAndSizeAlike) {
    PLSTextView text(NSMakeRect(57, 18, 150, 14));
    std::vector<platform::Point> asked;
    bool refuse = true;
    text.setShouldDisableSetFrameOrigin([&](double x, double y) {
        asked.push_back({x, y});
        return refuse;
    });
    text.setFrame(NSMakeRect(1, 2, 3, 4));
    text.setFrameOrigin({5, 6});
    SExt::setWidth(text, 500);
    SExt::setTop(text, 100);
    EXPECT_EQ(NSMakeRect(57, 18, 150, 14), text.frame());
    ASSERT_GE(asked.size(), 4u);
    EXPECT_EQ(platform::NSMakePoint(1, 2), asked[0]);
    EXPECT_EQ(platform::NSMakePoint(5, 6), asked[1]);
    EXPECT_EQ(platform::NSMakePoint(57, 18), asked[2]);

    refuse = false;
    text.setFrame(NSMakeRect(1, 2, 3, 4));
    EXPECT_EQ(NSMakeRect(1, 2, 3, 4), text.frame());
    text.setFrameOrigin({5, 6});
    EXPECT_EQ(NSMakeRect(5, 6, 3, 4), text.frame());
    SExt::setRight(text, 25);
    EXPECT_EQ(NSMakeRect(5, 6, 20, 4), text.frame());
}

// A text view whose layout manager has gone.
class TextViewWithoutLayout : public PLSTextView {
  public:
    using PLSTextView::PLSTextView;
    platform::LayoutManager* layoutManager() override { return nullptr; }
};

TEST(PLSTextView, IntrinsicSizeIsTheLaidOutText) {
    PLSTextView text(NSMakeRect(0, 0, 150, 14));
    text.setFont(platform::Font::systemFontOfSize(14));
    text.setString("Send to a friend");
    const platform::Size size = text.intrinsicContentSize();
    EXPECT_GT(size.width, 10);
    EXPECT_GT(size.height, 10);
    const platform::Rect used =
        text.layoutManager()->usedRectForTextContainer(text.textContainer());
    EXPECT_EQ(used.size, size);

    text.setString("Send to a friend, and then to another");
    EXPECT_GT(text.intrinsicContentSize().width + text.intrinsicContentSize().height,
              size.width + size.height);

    TextViewWithoutLayout bare(NSMakeRect(0, 0, 150, 14));
    bare.setString("Send to a friend");
    EXPECT_EQ(platform::NSMakeSize(0, 0), bare.intrinsicContentSize());
}

TEST(PLSTextView, SelectionStyleAppliesTheStoredColourOfTheCurrentState) {
    PLSTextView text(NSMakeRect(0, 0, 150, 14));
    const auto normal = SExt::colorWithHex("#888888");
    const auto chosen = SExt::colorWithHex("#00A2FF");
    text.setNormalTextColor(normal);
    EXPECT_EQ(normal, text.textColor());
    text.setSelectedTextColor(chosen);
    EXPECT_EQ(normal, text.textColor());
    text.setSelected(true);
    EXPECT_EQ(chosen, text.textColor());
    text.setNormalTextColor(Color::blackColor());  // selected: the selected colour stays
    EXPECT_EQ(chosen, text.textColor());
    text.setSelected(false);
    EXPECT_TRUE(*Color::blackColor() == *text.textColor());

    text.setSelectedTextColor(nullptr);
    text.setSelected(true);
    EXPECT_EQ(nullptr, text.textColor()) << "an unset colour shows the default";
}

TEST(PLSTextView, LinksShowInBlue) {
    PLSTextView text;
    ASSERT_NE(nullptr, text.linkTextAttributes().foregroundColor);
    EXPECT_TRUE(*SExt::colorWithHex("#00A2FF") == *text.linkTextAttributes().foregroundColor);
    EXPECT_EQ(nullptr, text.linkTextAttributes().font);
}

// Paints its focus-ring mask in red where the text would go, to see what the mask covers.
class FocusMaskProbe : public PLSTextView {
  public:
    using PLSTextView::PLSTextView;
    void drawRect(const platform::Rect&) override {
        Color::colorWithDeviceRed(1, 0, 0, 1)->set();
        drawFocusRingMask();
    }
};

TEST(PLSTextView, FocusRingCoversTheBoundsOnlyWhenAskedAndEditable) {
    auto text = std::make_shared<FocusMaskProbe>(NSMakeRect(0, 0, 40, 20));
    EXPECT_EQ(platform::NSZeroRect, text->focusRingMaskBounds());
    EXPECT_EQ(0, platform::Bitmap::renderView(*text, 1)->pixelAtPoint(39.5, 0.5).a);

    text->setPlShowFocusRingIfEditable(true);
    EXPECT_EQ(text->bounds(), text->focusRingMaskBounds());
    const auto shown = platform::Bitmap::renderView(*text, 2);
    EXPECT_EQ((platform::Rgba{255, 0, 0, 255}), shown->pixelAtPoint(39.75, 0.25));
    EXPECT_EQ((platform::Rgba{255, 0, 0, 255}), shown->pixelAtPoint(0.25, 19.75));

    text->setEditable(false);
    EXPECT_EQ(platform::NSZeroRect, text->focusRingMaskBounds());
    EXPECT_EQ(0, platform::Bitmap::renderView(*text, 1)->pixelAtPoint(39.5, 0.5).a);
}

}  // namespace
