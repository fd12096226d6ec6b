// The sheet in a window, driven by the mouse as a person would drive it: which row is tinted after
// each event, when an action or the cancellation runs, and what the sheet then shows.
#include <cmath>
#include <functional>
#include <tuple>

#include "platform/ui/Event.h"
#include "platform/ui/Window.h"
#include "tests/share/ShareTestSupport.h"

using namespace share_test;

using platform::EventType;

// The sheet's grey, 10 % black over it (a tinted row or pressed Cancel), a line's grey, and 10 %
// black over a line.
constexpr int kSheet = 0xF7, kTinted = 222, kLine = 204, kTintedLine = 184;

// Where a person points (sheet points, y up): the middle of the favourites title, a row's own
// background between its title and its arrow, a row's arrow, Cancel, the logo band (off both rows
// and Cancel), the send row's left edge.
const platform::Point kFavTitle{132, 104}, kSendGap{250.5, 150.5}, kFavGap{250.5, 100.5},
    kCancel{311, 39.5}, kOff{40.5, 320.5}, kSendEdge{5, 170};

// Presses and releases, each where the pointer is.
using Steps = std::vector<std::pair<EventType, platform::Point>>;
// The sheet after a sequence of steps.
using Outcome = std::tuple<bool, bool, ShareEntry, State>;  // send tinted, fav tinted

struct Sequence {
    const char* name;
    Steps steps;
    Outcome outcome;
    std::vector<int> probes;  // x, y (pixel centres, sheet points) and grey level, in threes
};

class ShareSheetTest : public ShareTest {
  protected:
    void play(const Sequence& sequence) {
        SCOPED_TRACE(sequence.name);
        controller = startShare({linkProvider("https://example.org/")});
        platform::Window window(platform::NSMakeRect(100, 100, 376, 370));
        window.setContentView(controller->view());
        for (const auto& [type, at] : sequence.steps) {
            window.setMouseLocationOutsideOfEventStream(at);
            window.sendEvent(*platform::Event::mouseEvent(type, at, 1));
        }
        EXPECT_EQ(std::make_tuple(controller->sendHighlighted(), controller->favHighlighted(),
                                  controller->shareEntry(), context_->state()),
                  sequence.outcome);
        const auto shown = window.snapshot(1.0);
        const auto& p = sequence.probes;
        for (size_t i = 0; i < p.size(); i += 3)
            EXPECT_TRUE(nearRgb(shown->pixelAtPoint(p[i] + 0.5, p[i + 1] + 0.5), p[i + 2], p[i + 2],
                                p[i + 2]))
                << "at (" << p[i] << ", " << p[i + 1] << ") not " << p[i + 2];
        runUntilIdle();
    }

    std::shared_ptr<RecordingController> controller;
};

constexpr auto Down = EventType::LeftMouseDown;
constexpr auto Up = EventType::LeftMouseUp;

TEST_F(ShareSheetTest, PressesAndReleasesTintAndClickTheRows) {
    const Outcome none{false, false, ShareEntryNone, State::Pending};
    const std::vector<Sequence> sequences = {
        // At rest: no tint, the lines show through the rows (the inner two inset by 30 points),
        // Cancel is white inside its border.
        {"at rest", {}, none, {3,  3,  kSheet, 250, 150, kSheet, 250, 100, kSheet, 200, 79, kLine,
                               10, 79, kSheet, 200, 129, kLine,  10,  179, kLine,  280, 40, 255}},
        // A title press tints its row, over the line on the row's bottom edge only.
        {"title press",
         {{Down, kFavTitle}},
         {false, true, ShareEntryNone, State::Pending},
         {250, 100, kTinted, 200, 79, kTintedLine, 200, 129, kLine}},
        // A release anywhere after a title press clicks it and clears the tint.
        {"title click",
         {{Down, kFavTitle}, {Up, kOff}},
         {false, false, ShareEntryFavToParley, State::Completed},
         {250, 100, kSheet}},
        // A container release outside the row leaves its tint until a press on the other row.
        {"tint moved",
         {{Down, kSendGap}, {Up, kOff}, {Down, kFavGap}},
         {false, true, ShareEntryNone, State::Pending},
         {}},
        {"container click",
         {{Down, kSendGap}, {Up, kSendEdge}},
         {false, false, ShareEntrySendToFriend, State::Completed},
         {}},
        // Pressed Cancel is tinted inside its border; a release off it cancels.
        {"cancel pressed", {{Down, kCancel}}, none, {280, 40, kTinted}},
        {"cancel released off it",
         {{Down, kCancel}, {Up, kOff}},
         {false, false, ShareEntryNone, State::Cancelled},
         {280, 40, 255}},
    };
    for (const Sequence& sequence : sequences)
        play(sequence);
    // Cancel's #b2b2b2 border, 28 points up.
    const auto sheet = platform::Bitmap::renderView(*controller->view(), 1.0);
    EXPECT_TRUE(nearRgb(sheet->pixelAtPoint(311, 29.5), 0xb2, 0xb2, 0xb2, 12));
}

// Every view's frame (x y width height, sheet points rounded, a level's indent per superview), in
// drawing order; the card's count line shows for files only.
TEST_F(ShareTest, EveryViewOfTheSheetHasItsPlace) {
    auto layout = [](const platform::View& sheet) {
        std::vector<std::string> lines;
        std::function<void(const platform::View&, int)> walk = [&](const platform::View& view,
                                                                   int level) {
            std::string line(level, ' ');
            const platform::Rect& f = view.frame();
            for (double v : {f.origin.x, f.origin.y, f.size.width, f.size.height})
                line += std::to_string(std::lround(v)) + " ";
            lines.push_back(line + (view.isHidden() ? "hidden" : "shown"));
            for (const auto& subview : view.subviews())
                walk(*subview, level + 1);
        };
        walk(sheet, 0);
        return lines;
    };
    const std::vector<std::string> rows = {" 0 79 376 50 shown",   "  30 13 23 23 shown",
                                           "  57 18 150 14 shown", "  316 9 32 32 shown",
                                           " 0 129 376 50 shown",  "  30 13 23 23 shown",
                                           "  57 18 150 14 shown", "  316 9 32 32 shown"};
    auto expected = [&](const std::string& card, const std::string& count) {
        std::vector<std::string> lines = {"0 0 376 370 shown",   " 276 28 70 23 shown",
                                          "  0 5 70 15 shown",   " 30 79 316 1 shown",
                                          " 30 129 316 1 shown", " 0 179 376 1 shown"};
        lines.insert(lines.end(), rows.begin(), rows.end());
        lines.insert(lines.end(),
                     {" 0 179 376 105 shown", "  0 24 376 16 " + count, "  " + card + " shown",
                      " 0 284 376 81 shown", "  170 30 35 27 shown"});
        return lines;
    };
    EXPECT_EQ(layout(*startShare({linkProvider("https://example.org/")})->view()),
              expected("158 45 60 60", "hidden"));
    Providers files;
    for (const char* name : {"a.txt", "b.txt", "c.txt"})
        files.push_back(fileProvider(files_.writeText(name, "x")));
    EXPECT_EQ(layout(*startShare(files)->view()), expected("158 45 60 60", "shown"));
    runUntilIdle();
}
