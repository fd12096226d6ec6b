#pragma once

#include <memory>

#include "platform/Color.h"
#include "platform/Geometry.h"

namespace platform {

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

private:
    CGColorRef background_ = nullptr;
    double cornerRadius_ = 0;
    bool masksToBounds_ = false;
    std::shared_ptr<Image> contents_;
    Gravity gravity_ = Gravity::Resize;
};

}  // namespace platform
