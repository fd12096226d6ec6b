#include "platform/ui/Image.h"

#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <QSvgRenderer>
#include <cmath>
#include <mutex>

#include "platform/core/Bundle.h"
#include "platform/core/Log.h"
#include "platform/ui/Bitmap.h"
#include "platform/ui/DesktopThumbnail.h"
#include "platform/ui/GraphicsContext.h"

namespace platform {

// What an image draws from. Exactly one of the members is in use.
struct Image::Source {
    // Vector: parsed once, rendered at draw time at the device's scale; one drawing at a time,
    // as a picture may be drawn off the main thread.
    std::unique_ptr<QSvgRenderer> svg;
    mutable std::mutex svgDrawing;
    QImage raster;           // the 1x pixels of a PNG/JPEG
    QImage raster2x;         // the @2x pixels when a variant exists
    DrawingHandler handler;  // called at every drawing
    std::shared_ptr<const Bitmap> bitmap;
};

namespace {

const Logger kLog("Image: ");

bool looksLikeSvg(const QString& path, const QByteArray& head) {
    QString suffix = QFileInfo(path).suffix().toLower();
    return suffix == "svg" || (suffix.isEmpty() && head.contains("<svg"));
}

// A FIFO or a device would block a read or never end; only regular files are pictures.
bool isRegularFile(const QString& path) {
    QFileInfo info(path);
    return info.exists() && info.isFile();
}

// The pixel size of what |reader| shows, after the file's own orientation is applied.
QSize orientedSize(const QImageReader& reader) {
    QSize size = reader.size();
    if (reader.transformation() & QImageIOHandler::TransformationRotate90)
        size.transpose();
    return size;
}

QSize coveringSize(QSize size, double factor) {
    return QSize(std::max(1, int(std::ceil(size.width() * factor))),
                 std::max(1, int(std::ceil(size.height() * factor))));
}

// Decodes |path|. With a positive |coverPixels|, a picture larger than needed to cover that many
// pixels is decoded scaled down (JPEG decodes at a fraction of its size then, never whole).
// |ownSize| receives the file's own oriented pixel size either way.
QImage readRaster(const QString& path, QSizeF coverPixels = {}, QSize* ownSize = nullptr) {
    if (!isRegularFile(path))
        return {};
    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QSize own = orientedSize(reader);
    if (ownSize)
        *ownSize = own;
    if (own.isValid() && coverPixels.width() > 0 && coverPixels.height() > 0) {
        const double factor =
            std::max(coverPixels.width() / own.width(), coverPixels.height() / own.height());
        // The reader scales before it orients, so the scaled size is in the file's axes.
        if (factor < 1.0)
            reader.setScaledSize(coveringSize(reader.size(), factor));
    }
    QImage image = reader.read();
    if (image.isNull())
        return image;
    if (ownSize && !own.isValid())
        *ownSize = image.size();
    return image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
}

// "dir/name.png" -> "dir/name@2x.png"
QString variantPath(const QString& path) {
    QFileInfo info(path);
    QString suffix = info.suffix();
    QString base = suffix.isEmpty() ? path : path.left(path.size() - suffix.size() - 1);
    return base + "@2x" + (suffix.isEmpty() ? QString() : "." + suffix);
}

}  // namespace

Image::Image() : source_(std::make_shared<Source>()) {}

Image::~Image() = default;

std::shared_ptr<Image> Image::imageNamed(const std::string& name) {
    std::shared_ptr<Bundle> bundle = Bundle::mainBundle();
    return bundle ? imageNamed(name, *bundle) : nullptr;
}

std::shared_ptr<Image> Image::imageNamed(const std::string& name, const Bundle& bundle) {
    // A vector picture is sharp at every scale, so it wins over a raster one.
    for (const char* extension : {"svg", "png"}) {
        if (auto file = bundle.pathForResource(name, extension)) {
            auto image = imageWithContentsOfFile(*file);
            if (!image) {
                kLog.write("named image " + *file + " cannot be read.");
                continue;
            }
            image->setName(name);
            return image;
        }
    }
    return nullptr;
}

std::shared_ptr<Image> Image::imageWithContentsOfFile(const std::string& path) {
    QString qpath = QString::fromStdString(path);
    if (!isRegularFile(qpath)) {
        kLog.write("not a readable file " + path);
        return nullptr;
    }
    std::shared_ptr<Image> image(new Image);
    QFile file(qpath);
    QByteArray head;
    if (file.open(QIODevice::ReadOnly))
        head = file.peek(1024);

    if (looksLikeSvg(qpath, head)) {
        file.seek(0);
        QByteArray data = file.readAll();
        auto renderer = std::make_unique<QSvgRenderer>(data);
        if (!renderer->isValid()) {
            kLog.write("cannot read SVG " + path);
            return nullptr;
        }
        QSizeF size = renderer->defaultSize();
        image->source_->svg = std::move(renderer);
        image->size_ = {size.width(), size.height()};
        return image;
    }

    QString variant = variantPath(qpath);
    image->source_->raster = readRaster(qpath);
    if (QFileInfo(qpath).completeBaseName().endsWith("@2x")) {
        // A 2x file named directly: its points are half its pixels.
        image->source_->raster2x = image->source_->raster;
        image->source_->raster = QImage();
    } else if (QFileInfo::exists(variant)) {
        image->source_->raster2x = readRaster(variant);
    }
    const QImage& any =
        image->source_->raster.isNull() ? image->source_->raster2x : image->source_->raster;
    if (any.isNull()) {
        kLog.write("cannot read " + path);
        return nullptr;
    }
    if (!image->source_->raster.isNull())
        image->size_ = {double(any.width()), double(any.height())};
    else
        image->size_ = {any.width() / 2.0, any.height() / 2.0};
    return image;
}

std::shared_ptr<Image> Image::imageWithContentsOfFile(const std::string& path,
                                                      Size pointsToCover,
                                                      double backingScale) {
    const QString qpath = QString::fromStdString(path);
    QFile file(qpath);
    QByteArray head;
    if (isRegularFile(qpath) && file.open(QIODevice::ReadOnly))
        head = file.peek(1024);
    // Vectors are drawn at any size, and what is no file is refused there.
    if (head.isEmpty() || looksLikeSvg(qpath, head))
        return imageWithContentsOfFile(path);

    const double scale = backingScale > 0 ? backingScale : 1.0;
    QSize own;
    QImage pixels =
        readRaster(qpath, QSizeF(pointsToCover.width * scale, pointsToCover.height * scale), &own);
    if (pixels.isNull()) {
        kLog.write("cannot read " + path);
        return nullptr;
    }
    std::shared_ptr<Image> image(new Image);
    image->source_->raster = std::move(pixels);
    image->size_ = {double(own.width()), double(own.height())};
    return image;
}

Size Image::pixelSizeOfFile(const std::string& path) {
    const QString qpath = QString::fromStdString(path);
    if (!isRegularFile(qpath))
        return {};
    QImageReader reader(qpath);
    reader.setAutoTransform(true);
    const QSize size = orientedSize(reader);
    return size.isValid() ? Size{double(size.width()), double(size.height())} : Size{};
}

std::shared_ptr<Image> Image::imageWithKeptThumbnailOfFile(const std::string& path,
                                                           Size minimumPixels) {
    QImage kept = DesktopThumbnail::find(
        QString::fromStdString(path),
        QSize(int(std::ceil(minimumPixels.width)), int(std::ceil(minimumPixels.height))));
    if (kept.isNull())
        return nullptr;
    std::shared_ptr<Image> image(new Image);
    image->size_ = {double(kept.width()), double(kept.height())};
    image->source_->raster = kept.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    return image;
}

std::shared_ptr<Image> Image::imageWithSize(Size size, bool flipped, DrawingHandler handler) {
    std::shared_ptr<Image> image(new Image);
    image->size_ = size;
    image->flipped_ = flipped;
    image->source_->handler = std::move(handler);
    return image;
}

std::shared_ptr<Image> Image::imageWithBitmap(std::shared_ptr<const Bitmap> bitmap) {
    if (!bitmap)
        return nullptr;
    std::shared_ptr<Image> image(new Image);
    image->size_ = {bitmap->pixelWidth() / bitmap->scale(),
                    bitmap->pixelHeight() / bitmap->scale()};
    image->source_->bitmap = std::move(bitmap);
    return image;
}

void Image::drawInRect(const Rect& rect, double fraction) const {
    drawInRect(rect, NSZeroRect, CompositingOperation::SourceOver, fraction);
}

void Image::drawInRect(const Rect& rect,
                       const Rect& fromRect,
                       CompositingOperation operation,
                       double fraction,
                       bool,
                       const ImageHints& hints) const {
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context || rect.isEmpty() || fraction <= 0)
        return;
    const Rect whole = NSMakeRect(0, 0, size_.width, size_.height);
    const Rect from = fromRect.isEmpty() ? whole : fromRect;
    if (from == whole || whole.isEmpty()) {
        drawWhole(*context, rect, operation, fraction, hints);
        return;
    }
    // The whole image, scaled so that |from| lands on |rect|, seen through |rect|.
    const double sx = rect.size.width / from.size.width;
    const double sy = rect.size.height / from.size.height;
    const Rect enlarged =
        NSMakeRect(rect.origin.x - from.origin.x * sx, rect.origin.y - from.origin.y * sy,
                   size_.width * sx, size_.height * sy);
    context->saveGraphicsState();
    context->clipToRect(rect);
    drawWhole(*context, enlarged, operation, fraction, hints);
    context->restoreGraphicsState();
}

void Image::drawWhole(GraphicsContext& context,
                      const Rect& rect,
                      CompositingOperation operation,
                      double fraction,
                      const ImageHints& hints) const {
    const Source& source = *source_;

    if (source.handler) {
        // The handler draws in the image's own coordinates, mapped onto |rect|.
        context.saveGraphicsState();
        context.setAlpha(context.alpha() * std::min(fraction, 1.0));
        context.translateBy(rect.origin.x, rect.origin.y);
        Rect own = NSMakeRect(0, 0, size_.width, size_.height);
        if (size_.width > 0 && size_.height > 0)
            context.painter().scale(rect.size.width / size_.width, rect.size.height / size_.height);
        else
            own = NSMakeRect(0, 0, rect.size.width, rect.size.height);
        if (flipped_) {
            context.translateBy(0, own.size.height);
            context.painter().scale(1, -1);
        }
        source.handler(own);
        context.restoreGraphicsState();
        return;
    }

    const Rect device = context.toDeviceSpace(rect);
    const double pixelsPerPoint = device.size.width / rect.size.width;
    const QImage* pixels = nullptr;
    if (source.bitmap)
        pixels = &source.bitmap->qimage();
    else if (!source.raster2x.isNull() && (pixelsPerPoint > 1.0 || source.raster.isNull()))
        pixels = &source.raster2x;
    else if (!source.raster.isNull())
        pixels = &source.raster;

    // An area-filtered copy at the device's size: bilinear sampling alone would skip most of
    // the pixels of a picture shrunk several times.
    QImage resampled;
    if (pixels && hints.interpolation == ImageInterpolation::High) {
        const QSize target(std::max(1, int(std::lround(device.size.width))),
                           std::max(1, int(std::lround(device.size.height))));
        if (target.width() < pixels->width() || target.height() < pixels->height()) {
            resampled = pixels->scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
            pixels = &resampled;
        }
    }

    context.paint([&](QPainter& painter) {
        painter.save();
        GraphicsContext::applyTopDownTransform(painter, rect);
        painter.setOpacity(painter.opacity() * std::min(fraction, 1.0));
        if (operation == CompositingOperation::Copy)
            painter.setCompositionMode(QPainter::CompositionMode_Source);
        QRectF target(0, 0, rect.size.width, rect.size.height);
        if (source.svg) {
            // Rendered as vectors through the painter's transform: sharp at any scale.
            const std::lock_guard<std::mutex> drawing(source.svgDrawing);
            source.svg->render(&painter, target);
        } else if (pixels) {
            painter.drawImage(target, *pixels);
        }
        painter.restore();
    });
}

Size Image::rasterPixelSize() const {
    const QImage& pixels = source_->raster.isNull() ? source_->raster2x : source_->raster;
    return {double(pixels.width()), double(pixels.height())};
}

std::shared_ptr<Bitmap> Image::bitmapAtScale(double scale) const {
    return Bitmap::drawn(size_, scale, [this](GraphicsContext&) {
        drawInRect(NSMakeRect(0, 0, size_.width, size_.height), 1.0);
    });
}

std::shared_ptr<const Bitmap> Image::bitmapRepresentation() const {
    return source_->bitmap;
}

}  // namespace platform
