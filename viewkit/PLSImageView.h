#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "platform/ui/ImageView.h"

// The view kit's image view. On top of the toolkit's image view it adds:
// - aspect fill: later images are scaled uniformly to cover the view and centred, either as a
//   layer with aspect-fill gravity (toolkit versions above 1672.0) or as a rendition image that
//   crops the picture at every drawing (1672.0 and below);
// - a rounded clip (plCornerRadius above 0: the view draws the image itself, stretched to its
//   frame inside the clip);
// - a darkening overlay while highlighted (highlightMode 1: the bounds, 2: the image's shape);
// - clicks: with a target and an action, a press highlights and a release inside the view
//   queues the action to the main thread (it runs after mouseUp has returned);
// - closures for right mouse up, magnify, smart magnify (which may take the gesture over) and
//   the end of touches; forceWindowDraggable and a choice of vibrancy.
// Main thread only.
class PLSImageView : public platform::ImageView {
  public:
    // Closures are copied when set and held until replaced or until the view goes.
    using EventBlock = std::function<void(const platform::Event& event, PLSImageView& view)>;
    // Returns true when it handled the event: the base then never sees it.
    using HandlingBlock = std::function<bool(const platform::Event& event)>;
    using TouchBlock = std::function<void(const platform::Event& event)>;

    explicit PLSImageView(const platform::Rect& frame = platform::NSZeroRect);
    std::string className() const override { return "PLSImageView"; }

    bool forceWindowDraggable() const { return forceWindowDraggable_; }
    void setForceWindowDraggable(bool draggable) { forceWindowDraggable_ = draggable; }
    // Governs later setImage calls, and the moment it is turned on; turning it off undoes
    // nothing (an installed layer or a stored rendition stays until the next setImage).
    bool drawWithAspectFill() const { return drawWithAspectFill_; }
    void setDrawWithAspectFill(bool drawWithAspectFill);
    // 0: the base decides; 2: vibrancy allowed; any other value: not allowed.
    int32_t vibrancyMode() const { return vibrancyMode_; }
    void setVibrancyMode(int32_t mode);
    // Overlay while highlighted: 0 none, 1 the bounds, 2 through the image's mask.
    int32_t highlightMode() const { return highlightMode_; }
    void setHighlightMode(int32_t mode);
    // Only stored: a new radius shows at the next redraw.
    double plCornerRadius() const { return plCornerRadius_; }
    void setPlCornerRadius(double radius) { plCornerRadius_ = radius; }

    const EventBlock& rightMouseUpEventBlock() const { return rightMouseUpEventBlock_; }
    void setRightMouseUpEventBlock(EventBlock block) { rightMouseUpEventBlock_ = std::move(block); }
    const HandlingBlock& magnifyWithEventBlockIsHandled() const {
        return magnifyWithEventBlockIsHandled_;
    }
    void setMagnifyWithEventBlockIsHandled(HandlingBlock block) {
        magnifyWithEventBlockIsHandled_ = std::move(block);
    }
    const HandlingBlock& smartMagnifyWithEventBlock() const { return smartMagnifyWithEventBlock_; }
    void setSmartMagnifyWithEventBlock(HandlingBlock block) {
        smartMagnifyWithEventBlock_ = std::move(block);
    }
    const TouchBlock& touchesEndWithEventBlock() const { return touchesEndWithEventBlock_; }
    void setTouchesEndWithEventBlock(TouchBlock block) {
        touchesEndWithEventBlock_ = std::move(block);
    }

    // With aspect fill on: a fresh layer showing |image| (layer path) or the rendition of
    // |image| (rendition path). Otherwise the base's.
    void setImage(platform::ImagePtr image) override;
    void setHighlighted(bool highlighted) override;

    // An image the size of the bounds, holding no pixels, that draws the centred crop of
    // |source| covering the view's current proportions each time it is drawn (never cached).
    // It holds |source| and refers to the view weakly.
    platform::ImagePtr _generateAspectFillImage(const platform::ImagePtr& source);
    // The part of an image of |imageSize| that the rendition shows in a view of |viewSize|, in
    // the image's points: full height and trimmed width when the view is relatively taller,
    // else (ties included) full width and trimmed height; centred. Zero with a zero side.
    static platform::Rect aspectFillCrop(platform::Size imageSize, platform::Size viewSize);

    bool mouseDownCanMoveWindow() const override;
    bool allowsVibrancy() const override;
    bool acceptsTouchEvents() const override { return true; }

    void drawRect(const platform::Rect& dirtyRect) override;
    void mouseDown(const platform::Event& event) override;
    void mouseUp(const platform::Event& event) override;
    void rightMouseUp(const platform::Event& event) override;
    void magnifyWithEvent(const platform::Event& event) override;
    void smartMagnifyWithEvent(const platform::Event& event) override;
    void touchesEndedWithEvent(const platform::Event& event) override;

  private:
    // Layer path: the toolkit shows a layer of its own as the picture; rendition path otherwise.
    static bool usesLayerPath();
    bool isClickable() const { return target() && !action().empty(); }
    void drawHighlightOverlay();

    bool forceWindowDraggable_ = false;
    bool drawWithAspectFill_ = false;
    int32_t vibrancyMode_ = 0;
    int32_t highlightMode_ = 0;
    double plCornerRadius_ = 0.0;
    // Set once setImage has installed a layer of its own: the view then shows only that layer,
    // as a view hosting a layer does, and draws nothing itself.
    bool hostsLayer_ = false;
    EventBlock rightMouseUpEventBlock_;
    HandlingBlock magnifyWithEventBlockIsHandled_;
    HandlingBlock smartMagnifyWithEventBlock_;
    TouchBlock touchesEndWithEventBlock_;
};
