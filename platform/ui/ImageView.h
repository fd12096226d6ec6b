#pragma once

#include <memory>

#include "platform/ui/Image.h"
#include "platform/ui/View.h"

namespace platform {

// NSImageScaling
enum class ImageScaling {
    ProportionallyDown = 0,
    AxesIndependently = 1,
    None = 2,
    ProportionallyUpOrDown = 3,
};

// An image view as a control: shows its image centred in its bounds by imageScaling (default
// proportionally down: shrunk to fit keeping its aspect, never enlarged); a highlighted state
// (stored; the base draws no overlay); target/action sent by subclasses that want clicks. Mouse
// events are not taken: they go up the responder chain, so a press on an icon reaches the view
// that holds it. Main thread only.
class ImageView : public View {
  public:
    explicit ImageView(const Rect& frame = NSZeroRect);
    std::string className() const override { return "NSImageView"; }

    const ImagePtr& image() const { return image_; }
    virtual void setImage(ImagePtr image);
    ImageScaling imageScaling() const { return scaling_; }
    void setImageScaling(ImageScaling scaling);

    bool isHighlighted() const { return highlighted_; }
    virtual void setHighlighted(bool highlighted);

    // Control target/action (the target is weak).
    void setTarget(std::weak_ptr<Responder> target) { target_ = std::move(target); }
    std::shared_ptr<Responder> target() const { return target_.lock(); }
    void setAction(const Selector& action) { action_ = action; }
    const Selector& action() const { return action_; }
    // sendAction:to: with this view as the object; false when nothing was sent.
    bool sendAction();

    // Where the image lands in the bounds for the current scaling (view coordinates); the zero
    // rect without an image.
    Rect imageRect() const;

    void drawRect(const Rect& dirtyRect) override;

  private:
    ImagePtr image_;
    ImageScaling scaling_ = ImageScaling::ProportionallyDown;
    bool highlighted_ = false;
    std::weak_ptr<Responder> target_;
    Selector action_;
};

}  // namespace platform
