#include "platform/ui/Bitmap.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QImageWriter>
#include <QPainter>
#include <cmath>

#include "platform/core/Log.h"
#include "platform/ui/GraphicsContext.h"
#include "platform/ui/View.h"

namespace platform {

struct Bitmap::Pixels {
    QImage image;
};

namespace {

const Logger kLog("Bitmap: ");

// Fonts resolve against the device's resolution: 72 dpi keeps one point one device unit.
void useToolkitResolution(QImage& image) {
    int dotsPerMeter = qRound(72.0 / 0.0254);
    image.setDotsPerMeterX(dotsPerMeter);
    image.setDotsPerMeterY(dotsPerMeter);
}

}  // namespace

Bitmap::Bitmap(int pixelWidth, int pixelHeight, double scale)
    : pixels_(std::make_unique<Pixels>()), scale_(scale > 0 ? scale : 1.0) {
    pixels_->image = QImage(std::max(pixelWidth, 0), std::max(pixelHeight, 0),
                            QImage::Format_ARGB32_Premultiplied);
    pixels_->image.fill(Qt::transparent);
    useToolkitResolution(pixels_->image);
}

Bitmap::~Bitmap() = default;

int Bitmap::pixelWidth() const {
    return pixels_->image.width();
}

int Bitmap::pixelHeight() const {
    return pixels_->image.height();
}

QImage& Bitmap::qimage() {
    return pixels_->image;
}

const QImage& Bitmap::qimage() const {
    return pixels_->image;
}

std::shared_ptr<Bitmap> Bitmap::fromQImage(const QImage& image, double scale) {
    auto bitmap = std::make_shared<Bitmap>(0, 0, scale);
    bitmap->pixels_->image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    useToolkitResolution(bitmap->pixels_->image);
    return bitmap;
}

Rgba Bitmap::pixelAt(int px, int py) const {
    const QImage& image = pixels_->image;
    if (px < 0 || py < 0 || px >= image.width() || py >= image.height())
        return {};
    QRgb value = qUnpremultiply(image.pixel(px, py));
    return {static_cast<uint8_t>(qRed(value)), static_cast<uint8_t>(qGreen(value)),
            static_cast<uint8_t>(qBlue(value)), static_cast<uint8_t>(qAlpha(value))};
}

Rgba Bitmap::pixelAtPoint(double x, double y) const {
    // The pixel holding the point, in our space, then among the rows counted from the top.
    const Rect pixel = NSMakeRect(std::floor(x * scale_), std::floor(y * scale_), 1, 1);
    const Rect fromTop = flippedRect(pixel, pixelHeight());
    return pixelAt(static_cast<int>(fromTop.origin.x), static_cast<int>(fromTop.origin.y));
}

bool Bitmap::writePNG(const std::string& path) const {
    // Encoded in memory first: QImageWriter does not report a write that fails when its file is
    // flushed (a full disk), and a file is written only when the whole picture is ready.
    QByteArray encoded;
    QBuffer buffer(&encoded);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "png");
    if (!writer.write(pixels_->image)) {
        kLog.write("cannot encode " + path + ": " + writer.errorString().toStdString());
        return false;
    }
    QFile file(QString::fromStdString(path));
    const bool written = file.open(QIODevice::WriteOnly | QIODevice::Truncate) &&
                         file.write(encoded) == encoded.size() && file.flush();
    if (written)
        file.close();
    if (!written || file.error() != QFileDevice::NoError) {
        kLog.write("cannot write " + path + ": " + file.errorString().toStdString());
        return false;
    }
    return true;
}

std::shared_ptr<Bitmap> Bitmap::readPNG(const std::string& path) {
    QImage image;
    if (!image.load(QString::fromStdString(path), "png")) {
        kLog.write("cannot read " + path);
        return nullptr;
    }
    return fromQImage(image, 1.0);
}

std::shared_ptr<Bitmap> Bitmap::drawn(Size size,
                                      double scale,
                                      const std::function<void(GraphicsContext&)>& draw) {
    if (!(scale > 0))
        scale = 1.0;
    int width = static_cast<int>(std::ceil(std::max(size.width, 0.0) * scale));
    int height = static_cast<int>(std::ceil(std::max(size.height, 0.0) * scale));
    auto bitmap = std::make_shared<Bitmap>(width, height, scale);
    if (width == 0 || height == 0)
        return bitmap;
    QPainter painter(&bitmap->qimage());
    {
        GraphicsContext context(&painter, height / scale, scale);
        GraphicsContext::Current current(&context);
        draw(context);
    }
    painter.end();
    return bitmap;
}

std::shared_ptr<Bitmap> Bitmap::renderView(View& view, double scale) {
    return drawn(view.frame().size, scale, [&view](GraphicsContext& context) {
        // displayInContext expects the superview's coordinates: put the frame's origin at (0, 0).
        context.translateBy(-view.frame().origin.x, -view.frame().origin.y);
        view.displayInContext(context);
    });
}

}  // namespace platform
