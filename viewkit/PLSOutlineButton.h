#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/ui/Color.h"
#include "platform/ui/Font.h"
#include "platform/ui/Responder.h"
#include "platform/ui/TextField.h"
#include "platform/ui/View.h"

// A small push button on a plain view: a filled, optionally rounded body, an optional border, and
// a one-line centred title in a text field it owns (its only subview). A press calls
// didLeftMouseDownBlock; every release calls didLeftMouseUpBlock and, when the pointer is still
// over the button, sends action to target. It has no pressed look of its own: owners restyle it
// from the closures. enabled and didTriggeredActionBlock are stored for the owner only.
// Main thread only.
class PLSOutlineButton : public platform::View {
  public:
    using Block = std::function<void()>;

    // The title label spans the bounds; nothing else is styled.
    explicit PLSOutlineButton(const platform::Rect& frame = platform::NSZeroRect);
    std::string className() const override { return "PLSOutlineButton"; }
    std::optional<std::string> titleIfResponds() const override { return title(); }

    bool enabled() const { return enabled_; }
    void setEnabled(bool enabled) { enabled_ = enabled; }
    bool highlighted() const { return highlighted_; }
    // Stores the flag and asks for a redraw.
    void setHighlighted(bool highlighted);

    // The setters of font, titleColor and titleAlpha apply the value to the title label.
    const platform::FontPtr& font() const { return font_; }
    void setFont(platform::FontPtr font);
    const platform::ColorPtr& titleColor() const { return titleColor_; }
    // nullptr stores (and shows) black.
    void setTitleColor(platform::ColorPtr color);
    double titleAlpha() const { return titleAlpha_; }
    void setTitleAlpha(double alpha);

    // Plain properties read at the next drawing; their setters ask for no redraw.
    const platform::ColorPtr& backgrounColor() const { return backgrounColor_; }
    void setBackgrounColor(platform::ColorPtr color) { backgrounColor_ = std::move(color); }
    double cornerRaidus() const { return cornerRaidus_; }
    void setCornerRaidus(double radius) { cornerRaidus_ = radius; }
    double borderWidth() const { return borderWidth_; }
    void setBorderWidth(double width) { borderWidth_ = width; }
    const platform::ColorPtr& borderColor() const { return borderColor_; }
    void setBorderColor(platform::ColorPtr color) { borderColor_ = std::move(color); }

    // The target is not owned.
    std::weak_ptr<platform::Responder> target() const { return target_; }
    void setTarget(std::weak_ptr<platform::Responder> target) { target_ = std::move(target); }
    const platform::Selector& action() const { return action_; }
    void setAction(const platform::Selector& action) { action_ = action; }

    const Block& didTriggeredActionBlock() const { return didTriggeredActionBlock_; }
    void setDidTriggeredActionBlock(Block block) { didTriggeredActionBlock_ = std::move(block); }
    const Block& didLeftMouseDownBlock() const { return didLeftMouseDownBlock_; }
    void setDidLeftMouseDownBlock(Block block) { didLeftMouseDownBlock_ = std::move(block); }
    const Block& didLeftMouseUpBlock() const { return didLeftMouseUpBlock_; }
    void setDidLeftMouseUpBlock(Block block) { didLeftMouseUpBlock_ = std::move(block); }

    const std::shared_ptr<platform::TextField>& titleLabel() const { return titleLabel_; }
    void setTitleLabel(std::shared_ptr<platform::TextField> label) {
        titleLabel_ = std::move(label);
    }

    // The label's text; an empty title is stored as "". Neither resizes nor lays out.
    std::string title() const;
    void setTitle(const std::string& title);

    // Body then border, always whole, on (b + 0.5, b + 0.5, W - 2b - 1, H - 2b - 1) for border
    // width b: the body with radius cornerRaidus + 0.5, the border with cornerRaidus.
    void drawRect(const platform::Rect& dirtyRect) override;
    // Also places the title: vertically centred and rounded up to whole points, full width
    // rounded up; the label keeps its height (only sizeToFit changes it).
    void setFrame(const platform::Rect& frame) override;
    // Makes the button (and its label) exactly as large as the measured title; keeps the origin.
    void sizeToFit();

    // The events are taken over: they never go up the responder chain.
    void mouseDown(const platform::Event& event) override;
    void mouseUp(const platform::Event& event) override;

  private:
    bool enabled_ = false;
    bool highlighted_ = false;
    platform::FontPtr font_;
    platform::ColorPtr titleColor_;
    double titleAlpha_ = 0;
    platform::ColorPtr backgrounColor_;
    double cornerRaidus_ = 0;
    double borderWidth_ = 0;
    platform::ColorPtr borderColor_;
    std::weak_ptr<platform::Responder> target_;
    platform::Selector action_;
    Block didTriggeredActionBlock_;
    std::shared_ptr<platform::TextField> titleLabel_;
    Block didLeftMouseDownBlock_;
    Block didLeftMouseUpBlock_;
};
