#include "share/ShareViewController.h"

#include <cfloat>

#include "platform/core/Log.h"
#include "platform/ui/Font.h"
#include "platform/ui/Image.h"
#include "platform/ui/StringDrawing.h"
#include "share/ControllerSupport.h"
#include "viewkit/ColorSExt.h"

// The sheet: Cancel, the dividers, the logo band and the two action rows.

namespace {
using controller_support::blackWithAlpha;
using controller_support::localized;

// Cancel's 70 points less its 1-point outline and 2 clear points on each side.
constexpr double kCancelTitleRoom = 70 - 2 * (1 + 2);
constexpr double kSmallestCancelTitleSize = 9;

// |font| while |title| fits Cancel in it; otherwise the largest smaller size of the same face, in
// half points down to kSmallestCancelTitleSize, that fits; |font| again when none does (the title
// is cut at any size).
platform::FontPtr fittingCancelTitleFont(const std::string& title, const platform::FontPtr& font) {
    for (double size = font->pointSize(); size >= kSmallestCancelTitleSize; size -= 0.5) {
        auto sized = size == font->pointSize()
                         ? font
                         : std::make_shared<platform::Font>(font->familyName(), size);
        const platform::Rect measured = platform::boundingRectWithSize(
            title, platform::NSMakeSize(DBL_MAX, DBL_MAX),
            platform::NSStringDrawingUsesLineFragmentOrigin, {sized, nullptr});
        if (measured.size.width <= kCancelTitleRoom)
            return sized;
    }
    return font;
}

}  // namespace

void ShareViewController::layoutCancelBtn() {
    setCancelBtn(std::make_shared<PLSOutlineButton>(platform::NSZeroRect));
    PLSOutlineButton& button = *cancelBtn();
    button.setTitle(localized("ShareExtension.Cancel"));
    button.setTitleColor(platform::Color::blackColor());
    button.setCornerRaidus(3.0);
    button.setBackgrounColor(platform::Color::whiteColor());
    button.setBorderColor(SExt::colorWithHex("#b2b2b2"));
    button.setBorderWidth(1.0);
    // The button stays 70 points wide: a title too wide for it in the desktop's font ("Abbrechen"
    // in DejaVu Sans) takes a smaller size of that font; the default stays wherever it fits.
    const platform::FontPtr& defaultFont = button.titleLabel()->font();
    const platform::FontPtr font = fittingCancelTitleFont(button.title(), defaultFont);
    if (font != defaultFont)
        button.setFont(font);
    // A title a little too wide even so closes its letters up rather than lose its end.
    button.titleLabel()->setAllowsDefaultTighteningForTruncation(true);
    button.sizeToFit();
    view()->addSubview(cancelBtn());
    // The button is always 70 x 23, whatever the title measured.
    button.setFrame(platform::NSMakeRect(276, 28, 70, 23));
    // A screen reader reads it by its title; Escape presses it.
    button.setAccessibilityRole(platform::AccessibilityRole::Button);
    button.setAccessibilityLabel(button.title());
    button.setKeyEquivalent("\x1b");

    auto weak = weakSelf();
    button.setDidLeftMouseDownBlock([weak] {
        if (auto self = weak.lock())
            self->cancelBtn()->setBackgrounColor(blackWithAlpha(0.1));
    });
    button.setDidLeftMouseUpBlock([weak] {
        if (auto self = weak.lock()) {
            self->cancelBtn()->setBackgrounColor(platform::Color::whiteColor());
            self->cancel();
        }
    });
}

void ShareViewController::layoutDividers() {
    auto makeDivider = [this](const platform::Rect& frame) {
        auto divider = std::make_shared<PLSCustomDivider>(frame);
        divider->setCustomAlpha(0.1);
        divider->setCustomColor(SExt::colorWithHex("#000000"));
        view()->addSubview(divider);
        return divider;
    };
    setBottomDivider(makeDivider(platform::NSMakeRect(30, 79, 316, 1)));
    setMidDivider(makeDivider(platform::NSMakeRect(30, 129, 316, 1)));
    setTopDivider(makeDivider(platform::NSMakeRect(0, 179, 376, 1)));
}

void ShareViewController::layoutTop() {
    if (m_shareType != ShareTypeUrl && m_shareType != ShareTypeFile) {
        controller_support::kErrorLog.write("ShareType is unknown.");
        return;
    }
    setParleyLogoContainer(std::make_shared<platform::View>(platform::NSMakeRect(0, 284, 376, 81)));
    setParleyLogo(std::make_shared<platform::ImageView>(platform::NSMakeRect(170, 30, 35, 27)));
    parleyLogo()->setImage(platform::Image::imageNamed("ParleyLogo"));
    parleyLogo()->setAccessibilityRole(platform::AccessibilityRole::Image);
    parleyLogo()->setAccessibilityLabel(localized("ShareExtension.ParleyLogo"));
    parleyLogoContainer()->addSubview(parleyLogo());
    view()->addSubview(parleyLogoContainer());
}

// Both rows are built alike; only their frame, images, title and closures differ.
ShareViewController::ActionRow ShareViewController::makeActionRow(const platform::Rect& frame,
                                                                  const std::string& iconName,
                                                                  const std::string& titleKey) {
    ActionRow row;
    row.container = std::make_shared<PLSView>(frame);
    // To a screen reader and the keyboard the whole row is one button named by its title.
    row.container->setAccessibilityRole(platform::AccessibilityRole::Button);
    row.container->setAccessibilityLabel(localized(titleKey));
    row.icon = std::make_shared<platform::ImageView>(platform::NSMakeRect(30, 13, 23, 23));
    row.icon->setImage(platform::Image::imageNamed(iconName));
    row.title = std::make_shared<PLSTextView>(platform::NSMakeRect(57, 18, 150, 14));
    row.title->setString(localized(titleKey));
    row.title->setBackgroundColor(platform::Color::clearColor());
    row.title->setSelectable(false);
    row.title->setFont(platform::Font::systemFontOfSize(14));
    row.arrow = std::make_shared<platform::ImageView>(platform::NSMakeRect(316, 9, 32, 32));
    row.arrow->setImage(platform::Image::imageNamed("Preview_Next_Disable"));
    return row;
}

void ShareViewController::addActionRow(const ActionRow& row) {
    row.container->addSubview(row.icon);
    row.container->addSubview(row.title);
    row.container->addSubview(row.arrow);
    view()->addSubview(row.container);
}

void ShareViewController::layoutFavToParley() {
    ActionRow row = makeActionRow(platform::NSMakeRect(0, 79, 376, 50), "Fav-To-Parley",
                                  "ShareExtension.FavToParley");
    setFavToParleyContainer(row.container);
    setFavHighlighted(false);
    setFavIcon(row.icon);
    setFavToParleyText(row.title);
    setFavArrow(row.arrow);
    addActionRow(row);
    installRowClosures(row, &ShareViewController::setFavHighlighted,
                       &ShareViewController::setSendHighlighted,
                       &ShareViewController::onClickFavToParley);
}

void ShareViewController::layoutSendToFriend() {
    ActionRow row = makeActionRow(platform::NSMakeRect(0, 129, 376, 50), "Send-To-Friend",
                                  "ShareExtension.SendToFriend");
    setSendToFriendContainer(row.container);
    setSendHighlighted(false);
    setSendIcon(row.icon);
    setSendToFriendText(row.title);
    setSendArrow(row.arrow);
    addActionRow(row);
    installRowClosures(row, &ShareViewController::setSendHighlighted,
                       &ShareViewController::setFavHighlighted,
                       &ShareViewController::onClickSendToFriend);
}

// A press tints this row and clears the other; a click clears both, then runs the row's action.
// The closures hold the controller weakly: the views they live on belong to it.
void ShareViewController::installRowClosures(const ActionRow& row,
                                             HighlightSetter own,
                                             HighlightSetter other,
                                             Action action) {
    auto weak = weakSelf();
    auto press = [weak, own, other] {
        if (auto self = weak.lock()) {
            ((*self).*own)(true);
            ((*self).*other)(false);
        }
    };
    auto click = [weak, own, other, action] {
        if (auto self = weak.lock()) {
            ((*self).*own)(false);
            ((*self).*other)(false);
            ((*self).*action)();
        }
    };
    row.title->setMouseDownBlock(press);
    row.title->setMouseUpBlock(click);
    row.container->setMouseDownInsideBlock([press](const platform::Event&) { press(); });
    row.container->setMouseUpInsideBlock([click](const platform::Event&) { click(); });
}

void ShareViewController::setSendHighlighted(bool highlighted) {
    sendHighlighted_ = highlighted;
    applyRowTint(*sendToFriendContainer(), highlighted);
}

void ShareViewController::setFavHighlighted(bool highlighted) {
    favHighlighted_ = highlighted;
    applyRowTint(*favToParleyContainer(), highlighted);
}

void ShareViewController::applyRowTint(platform::View& container, bool highlighted) {
    container.setWantsLayer(true);
    container.layer()->setBackgroundColor(blackWithAlpha(highlighted ? 0.1 : 0.0)->CGColor());
}
