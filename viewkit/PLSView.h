#pragma once

#include <functional>

#include "platform/ui/Event.h"
#include "platform/ui/View.h"

// A plain container that reports a press and a release inside its own bounds through two
// closures. With a closure set the matching event is taken over (used or dropped); without one
// it goes to the base view, which passes it up the responder chain. Main thread only.
class PLSView : public platform::View {
  public:
    using MouseInsideBlock = std::function<void(const platform::Event& event)>;

    explicit PLSView(const platform::Rect& frame = platform::NSZeroRect);
    std::string className() const override { return "PLSView"; }

    const MouseInsideBlock& mouseDownInsideBlock() const { return mouseDownInsideBlock_; }
    void setMouseDownInsideBlock(MouseInsideBlock block) {
        mouseDownInsideBlock_ = std::move(block);
    }
    const MouseInsideBlock& mouseUpInsideBlock() const { return mouseUpInsideBlock_; }
    void setMouseUpInsideBlock(MouseInsideBlock block) { mouseUpInsideBlock_ = std::move(block); }

    // The closure runs for a location inside the bounds (left and bottom edges inside, right and
    // top edges outside).
    void mouseDown(const platform::Event& event) override;
    // As mouseDown, except that the release ending a double click (click count 2) runs nothing.
    void mouseUp(const platform::Event& event) override;

  private:
    bool isInside(const platform::Event& event) const;

    MouseInsideBlock mouseDownInsideBlock_;
    MouseInsideBlock mouseUpInsideBlock_;
};
