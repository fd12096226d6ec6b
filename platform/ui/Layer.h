#pragma once

#include <memory>

#include "platform/ui/Color.h"
#include "platform/ui/Geometry.h"

namespace platform {

class GraphicsContext;
class Image;

// A view's backing layer. Drawn beneath the view's own drawing: the background colour filled on
// the bounds (rounded by cornerRadius), with the view's drawing and subviews clipped to the
// rounded bounds when masksToBounds is set. Contents and gravity are for the image view.
class Layer {
  public:
    Layer() = default;
    ~Layer();
    Layer(const Layer&) = delete;
    Layer& operator=(const Layer&) = delete;

    // The layer retains |color|; nullptr clears the background.
    void setBackgroundColor(CGColorRef color);
    CGColorRef backgroundColor() const { return background_; }
    void setCornerRadius(double radius) { cornerRadius_ = radius; }
    double cornerRadius() const { return cornerRadius_; }
    void setMasksToBounds(bool masks) { masksToBounds_ = masks; }
    bool masksToBounds() const { return masksToBounds_; }

    // Contents: an image shown over the background, placed by contentsGravity.
    enum class Gravity { Resize, ResizeAspect, ResizeAspectFill, Center };
    void setContents(std::shared_ptr<Image> image) { contents_ = std::move(image); }
    const std::shared_ptr<Image>& contents() const { return contents_; }
    void setContentsGravity(Gravity gravity) { gravity_ = gravity; }
    Gravity contentsGravity() const { return gravity_; }

    // Paints the layer into |ctx| under the view's own drawing: the background colour filled on
    // |bounds| (rounded by cornerRadius), then the contents placed by contentsGravity. |bounds|
    // is in the current (y-up, points) coordinates of |ctx|. Leaves the clip unchanged.
    void drawInContext(GraphicsContext& ctx, const Rect& bounds) const;
    // Intersects the clip of |ctx| with |bounds| rounded by cornerRadius. The caller decides
    // when (masksToBounds) and brackets it with save/restoreGraphicsState.
    void clipToShape(GraphicsContext& ctx, const Rect& bounds) const;

  private:
    CGColorRef background_ = nullptr;
    double cornerRadius_ = 0;
    bool masksToBounds_ = false;
    std::shared_ptr<Image> contents_;
    Gravity gravity_ = Gravity::Resize;
};

}  // namespace platform
