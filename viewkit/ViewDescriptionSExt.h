#pragma once

#include <cstdint>
#include <string>

#include "platform/ui/View.h"

// View trees as text, for debugging. Each view is one line that starts with a newline:
//
//   "\n" indent "<" class ": " address "> " label "(" n " subviews) wantsLayer " 0|1
//   " isOpaque " 0|1 " isHidden " 0|1 " bounds {{x, y}, {w, h}} frame {{x, y}, {w, h}}"
//
// The indent is level + 1 tabs (none at a negative level); the address is printf's %p. The
// label is a titled view's title in double quotes and one space, a text view's string, a text
// field's string value or an image view's image name, bare; otherwise empty. A missing image or
// image name prints as (null). Main thread only, like the views themselves.
namespace SExt {

// |view| at |level| and, unless the level is negative, its subviews in order at level + 1,
// depth first.
std::string recursiveDescriptionOfView(const platform::View& view, int64_t level);

// The view alone: one line, no indent, no subview lines.
std::string selfDesc(const platform::View& view);
// The view and its subtree, the view's line with one tab.
std::string debugDescription(const platform::View& view);
// The tree of the view's topmost ancestor.
std::string rootDescWithLevel(const platform::View& view);
// The tree of the ancestor |levels| up, or of the topmost one when the tree is less deep; the
// view's own tree for |levels| of 0 or less.
std::string rootDescWithLevel(const platform::View& view, int64_t levels);
std::string rootDescWithLevel1(const platform::View& view);
std::string rootDescWithLevel2(const platform::View& view);
std::string rootDescWithLevel3(const platform::View& view);
std::string rootDescWithLevel4(const platform::View& view);
std::string rootDescWithLevel5(const platform::View& view);
std::string rootDescWithLevel6(const platform::View& view);

// Every window of the application, in the application's order: a line
//   "<NSWindow: %p> controller (null) title T frame {{x, y}, {w, h}} firstRespondser <C: %p>\n"
// then the debugDescription of its content view (nothing without one), then "\n\n". Empty
// with no windows.
std::string rootDesc();

}  // namespace SExt

// For the debugger's view printer, which calls it inside the stopped process: the view's
// debugDescription, in a buffer that stays valid until the next call. "" for no view.
extern "C" const char* parleyViewDebugDescription(const platform::View* view);
