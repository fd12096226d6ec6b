// The sheet in a window, driven by mouse and key events as a person would drive it: which row
// is tinted after each event, and when an action or the cancellation runs.
#include "platform/ui/Bitmap.h"
#include "platform/ui/Event.h"
#include "platform/ui/Window.h"
#include "tests/share/ShareTestSupport.h"

namespace share_test {
namespace {

using platform::Event;
using platform::EventType;
using platform::NSMakePoint;
using platform::NSMakeRect;
using platform::Point;
using State = platform::ExtensionContext::State;

// The sheet's grey, 10 % black over it (a tinted row or pressed Cancel), a line's grey, and 10 %
// black over a line.
constexpr int kSheet = 0xF7;
constexpr int kTinted = 222;
constexpr int kLine = 204;
constexpr int kTintedLine = 184;

// Where a person points: the middle of a title, a row's own background between its title and
// its arrow, a row's arrow, Cancel, the logo band (off both rows and Cancel), the send row's
// left edge.
enum class At { SendTitle, FavTitle, SendGap, FavGap, FavArrow, Cancel, Off, SendEdge };

struct Step {
    EventType type;
    At at;
    int clicks = 1;
};

// The sheet after a sequence of steps.
struct Outcome {
    bool sendTinted, favTinted;
    ShareEntry entry;
    State state;
};

// A probe of the shown sheet: the grey level at a point.
struct Probe {
    double x, y;
    int level;
};

struct Sequence {
    const char* name;
    std::vector<Step> steps;
    Outcome outcome;
    std::vector<Probe> probes;
};

const Point kSendRowGap{250.5, 150.5};
const Point kFavRowGap{250.5, 100.5};

class SheetEventTest : public ShareTest {
  protected:
    Point where(At at) const {
        auto middle = [](const platform::View& view) {
            return view.convertPointToView(NSMakePoint(view.bounds().midX(), view.bounds().midY()),
                                           nullptr);
        };
        switch (at) {
            case At::SendTitle:
                return middle(*controller->sendToFriendText());
            case At::FavTitle:
                return middle(*controller->favToParleyText());
            case At::SendGap:
                return kSendRowGap;
            case At::FavGap:
                return kFavRowGap;
            case At::FavArrow:
                return middle(*controller->favArrow());
            case At::Cancel:
                return middle(*controller->cancelBtn());
            case At::Off:
                return NSMakePoint(40.5, 320.5);
            case At::SendEdge:
                return NSMakePoint(5, 170);
        }
        return {};
    }

    void play(const Sequence& sequence) {
        SCOPED_TRACE(sequence.name);
        log_ = std::make_unique<platform::LogCapture>();
        controller = startShare({linkProvider("https://example.org/")});
        platform::Window window(NSMakeRect(100, 100, 376, 370));
        window.setContentView(controller->view());
        for (const Step& step : sequence.steps) {
            const Point point = where(step.at);
            window.setMouseLocationOutsideOfEventStream(point);
            window.sendEvent(*Event::mouseEvent(step.type, point, step.clicks));
        }
        EXPECT_EQ(controller->sendHighlighted(), sequence.outcome.sendTinted);
        EXPECT_EQ(controller->favHighlighted(), sequence.outcome.favTinted);
        EXPECT_EQ(controller->shareEntry(), sequence.outcome.entry);
        EXPECT_EQ(context_->state(), sequence.outcome.state);
        const auto shown = window.snapshot(1.0);
        for (const Probe& probe : sequence.probes) {
            EXPECT_TRUE(nearRgb(shown->pixelAtPoint(probe.x, probe.y), probe.level, probe.level,
                                probe.level))
                << "at (" << probe.x << ", " << probe.y << ") not " << probe.level;
        }
        runUntilIdle();
    }

    std::shared_ptr<RecordingController> controller;
};

constexpr auto Down = EventType::LeftMouseDown;
constexpr auto Up = EventType::LeftMouseUp;
constexpr auto Moved = EventType::MouseMoved;

TEST_F(SheetEventTest, PressesAndReleasesTintAndClickTheRows) {
    const Outcome none{false, false, ShareEntryNone, State::Pending};
    const std::vector<Sequence> sequences = {
        // At rest no row is tinted and all three lines show through the rows.
        {"at rest",
         {},
         none,
         {{250.5, 150.5, kSheet},
          {250.5, 100.5, kSheet},
          {200.5, 79.5, kLine},
          {200.5, 129.5, kLine},
          {200.5, 179.5, kLine}}},
        // A title press tints its row, over the line on the row's bottom edge only.
        {"title press",
         {{Down, At::FavTitle}},
         {false, true, ShareEntryNone, State::Pending},
         {{250.5, 100.5, kTinted}, {200.5, 79.5, kTintedLine}, {200.5, 129.5, kLine}}},
        // A release anywhere after a title press clicks it and clears the tint.
        {"title click",
         {{Down, At::FavTitle}, {Up, At::Off}},
         {false, false, ShareEntryFavToParley, State::Completed},
         {{250.5, 100.5, kSheet}}},
        // A container release outside the row leaves the tint and does nothing...
        {"container release outside",
         {{Down, At::SendGap}, {Up, At::Off}},
         {true, false, ShareEntryNone, State::Pending},
         {{250.5, 150.5, kTinted}}},
        // ...until a press on the other row moves it.
        {"tint moved",
         {{Down, At::SendGap}, {Up, At::Off}, {Down, At::FavGap}},
         {false, true, ShareEntryNone, State::Pending},
         {}},
        {"container click",
         {{Down, At::SendGap}, {Up, At::SendEdge}},
         {false, false, ShareEntrySendToFriend, State::Completed},
         {}},
        // The arrow has no handler of its own: a click on it is a click on the row.
        {"arrow click",
         {{Down, At::FavArrow}, {Up, At::FavArrow}},
         {false, false, ShareEntryFavToParley, State::Completed},
         {}},
        // The release ending a double click counts on a title but not on a container.
        {"container double click",
         {{Down, At::FavGap, 2}, {Up, At::FavGap, 2}},
         {false, true, ShareEntryNone, State::Pending},
         {}},
        {"title double click",
         {{Down, At::SendTitle, 2}, {Up, At::SendTitle, 2}},
         {false, false, ShareEntrySendToFriend, State::Completed},
         {}},
        {"one title then the other",
         {{Down, At::FavTitle}, {Down, At::SendTitle}},
         {true, false, ShareEntryNone, State::Pending},
         {{250.5, 150.5, kTinted}, {250.5, 100.5, kSheet}}},
        {"pointer moves", {{Moved, At::SendGap, 0}, {Moved, At::FavTitle, 0}}, none, {}},
        // Pressed Cancel is tinted inside its border; a release off it cancels.
        {"cancel pressed", {{Down, At::Cancel}}, none, {{280.5, 40.5, kTinted}}},
        {"cancel released off it",
         {{Down, At::Cancel}, {Up, At::Off}},
         {false, false, ShareEntryNone, State::Cancelled},
         {{280.5, 40.5, 255}}},
    };
    for (const Sequence& sequence : sequences)
        play(sequence);
}

TEST_F(SheetEventTest, KeysDoNothingToTheRows) {
    controller = startShare({linkProvider("https://example.org/")});
    platform::Window window(NSMakeRect(100, 100, 376, 370));
    window.setContentView(controller->view());
    for (uint16_t key : {platform::kVK_Escape, platform::kVK_Return, platform::kVK_Tab}) {
        window.sendEvent(*Event::keyEvent(EventType::KeyDown, key, ""));
        window.sendEvent(*Event::keyEvent(EventType::KeyUp, key, ""));
    }
    EXPECT_FALSE(controller->sendHighlighted() || controller->favHighlighted());
    EXPECT_EQ(context_->state(), State::Pending);
}

}  // namespace
}  // namespace share_test
