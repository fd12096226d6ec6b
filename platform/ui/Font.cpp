#include "platform/ui/Font.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>

namespace platform {

namespace {

// Deterministic on every machine that has the DejaVu fonts, whatever the desktop prefers.
constexpr const char* kSystemFamily = "DejaVu Sans";

}  // namespace

std::shared_ptr<Font> Font::systemFontOfSize(double pointSize) {
    return std::make_shared<Font>(kSystemFamily, pointSize > 0 ? pointSize : systemFontSize());
}

QPaintDevice* Font::layoutDevice() {
    // 72 dots per inch: a point size becomes the same number of device units, so Qt's idea of
    // screen resolution never scales our text. One per thread, as paint devices are not shared.
    thread_local QImage device = [] {
        QImage image(1, 1, QImage::Format_ARGB32_Premultiplied);
        int dotsPerMeter = qRound(72.0 / 0.0254);
        image.setDotsPerMeterX(dotsPerMeter);
        image.setDotsPerMeterY(dotsPerMeter);
        return image;
    }();
    return &device;
}

QFont Font::qfont() const {
    QFont font(QString::fromStdString(family_));
    font.setPointSizeF(pointSize_ > 0 ? pointSize_ : systemFontSize());
    // Unhinted outlines keep advances proportional to the size, so 1x and 2x lay out alike.
    font.setHintingPreference(QFont::PreferNoHinting);
    font.setKerning(true);
    return font;
}

double Font::ascender() const {
    return QFontMetricsF(qfont(), layoutDevice()).ascent();
}

double Font::descender() const {
    return -QFontMetricsF(qfont(), layoutDevice()).descent();
}

double Font::leading() const {
    return QFontMetricsF(qfont(), layoutDevice()).leading();
}

}  // namespace platform
