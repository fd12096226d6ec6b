#include "platform/ui/Font.h"

#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QFontMetricsF>
#include <QGuiApplication>
#include <QImage>
#include <mutex>
#include <optional>

#include "platform/core/Log.h"
#include "platform/ui/DisplayEventLoop.h"

namespace platform {

namespace {

const Logger kLog("Font: ");

// The pinned family and the resolved one; a new pin clears the resolution.
struct SystemFamily {
    std::mutex lock;
    std::optional<std::string> pinned;
    std::optional<std::string> resolved;
};

SystemFamily& systemFamily() {
    static SystemFamily family;
    return family;
}

// The installed family that |family| resolves to; |family| itself without a GUI application.
std::string installedFamily(const std::string& family, bool logSubstitute) {
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance()))
        return family;
    const std::string resolved =
        QFontInfo(QFont(QString::fromStdString(family))).family().toStdString();
    if (resolved.empty())
        return family;
    if (logSubstitute && QString::fromStdString(resolved).compare(QString::fromStdString(family),
                                                                  Qt::CaseInsensitive) != 0)
        kLog.write("the system font \"" + family + "\" is not installed; text uses \"" + resolved +
                   "\" instead.");
    return resolved;
}

std::string resolveSystemFamily(const std::optional<std::string>& pinned) {
    if (pinned)
        return installedFamily(*pinned, true);
    if (DisplayEventLoop::hasDisplay()) {
        // A theme may name an alias ("Sans Serif"): the face it stands for is the family.
        const QString theme = QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
        if (!theme.isEmpty())
            return installedFamily(theme.toStdString(), false);
    }
    return installedFamily(Font::kPinnedSystemFamily, true);
}

}  // namespace

std::string Font::systemFontFamily() {
    SystemFamily& family = systemFamily();
    const std::lock_guard<std::mutex> hold(family.lock);
    if (!family.resolved)
        family.resolved = resolveSystemFamily(family.pinned);
    return *family.resolved;
}

void Font::pinSystemFontFamily(const std::string& family) {
    SystemFamily& system = systemFamily();
    const std::lock_guard<std::mutex> hold(system.lock);
    system.pinned = family;
    system.resolved.reset();
}

std::shared_ptr<Font> Font::systemFontOfSize(double pointSize) {
    return std::make_shared<Font>(systemFontFamily(), pointSize > 0 ? pointSize : systemFontSize());
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
