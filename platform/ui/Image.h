#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/ui/Geometry.h"

namespace platform {

class Bitmap;
class Bundle;
class GraphicsContext;

// NSImageCacheMode: images here cache nothing (a drawing handler runs at every drawing), so
// never is the one mode there is to ask for.
enum class ImageCacheMode { Never = 3 };

// NSCompositingOperation: copy replaces the destination, source-over blends onto it.
enum class CompositingOperation { Copy = 1, SourceOver = 2 };

// NSImageInterpolation
enum class ImageInterpolation { Default = 0, None = 1, Low = 2, High = 3, Medium = 4 };

// The hints of a drawing (NSImageHintInterpolation).
struct ImageHints {
    ImageInterpolation interpolation = ImageInterpolation::Default;
};

// An image of a size in points, drawn sharply at any backing scale: from an SVG (vector), a
// raster file (PNG/JPEG, with an optional @2x variant), pixels, or a drawing handler that is
// called at each drawing (leave room: the aspect-fill rendition needs it).
class Image : public std::enable_shared_from_this<Image> {
  public:
    using DrawingHandler = std::function<bool(const Rect& destination)>;

    // imageNamed: looks in the main bundle (Bundle::mainBundle()); nullptr when missing.
    static std::shared_ptr<Image> imageNamed(const std::string& name);
    // The named image among |bundle|'s resources; a vector picture wins over a raster one.
    static std::shared_ptr<Image> imageNamed(const std::string& name, const Bundle& bundle);
    // initWithContentsOfFile / initWithContentsOfURL: nullptr when unreadable (also for what
    // is not a regular file, which could block a read forever).
    static std::shared_ptr<Image> imageWithContentsOfFile(const std::string& path);
    // The same picture for a view that covers |pointsToCover| with it at up to |backingScale|
    // pixels per point: a raster file is decoded only as large as that needs (a photo of tens
    // of megapixels costs a few hundred kilobytes), while size() stays the file's own, so crops
    // are still computed in the photo's points.
    static std::shared_ptr<Image> imageWithContentsOfFile(const std::string& path,
                                                          Size pointsToCover,
                                                          double backingScale);
    // The pixel size of the raster picture in the file at |path| as it is shown (after the
    // file's own orientation), read from its header without decoding; zero when it has none.
    static Size pixelSizeOfFile(const std::string& path);
    // The smallest thumbnail the desktop keeps of the file at |path| (see DesktopThumbnail) with
    // at least |minimumPixels| on each axis, made from the file as it is now; nullptr when there
    // is none. Its size is its pixel size.
    static std::shared_ptr<Image> imageWithKeptThumbnailOfFile(const std::string& path,
                                                               Size minimumPixels);
    // imageWithSize:flipped:drawingHandler:
    static std::shared_ptr<Image> imageWithSize(Size size, bool flipped, DrawingHandler handler);
    // An image wrapping rendered pixels (the bitmap's point size is its pixel size / scale).
    static std::shared_ptr<Image> imageWithBitmap(std::shared_ptr<const Bitmap> bitmap);

    Size size() const { return size_; }
    void setSize(Size size) { size_ = size; }
    const std::string& name() const { return name_; }
    void setName(const std::string& name) { name_ = name; }
    bool isFlipped() const { return flipped_; }
    // Nothing to keep: every image already draws as never-cached asks.
    void setCacheMode(ImageCacheMode) {}

    // Draws the whole image into |rect| of the current graphics context at |fraction| opacity.
    void drawInRect(const Rect& rect, double fraction = 1.0) const;
    // drawInRect:fromRect:operation:fraction:respectFlipped:hints: draws |fromRect| of the
    // image (in its own points, origin bottom-left; the zero rect means the whole image) into
    // |rect|. High interpolation resamples the pixels with an area filter, as a photo shrunk to
    // an icon needs. Views are never flipped, so |respectFlipped| changes nothing here.
    void drawInRect(const Rect& rect,
                    const Rect& fromRect,
                    CompositingOperation operation,
                    double fraction,
                    bool respectFlipped = true,
                    const ImageHints& hints = {}) const;
    // The pixels a raster image holds (smaller than size() after a covering decode); zero for
    // other images.
    Size rasterPixelSize() const;
    // Rasterises the image at |scale| pixels per point.
    std::shared_ptr<Bitmap> bitmapAtScale(double scale) const;
    // The pixels of an image made by imageWithBitmap, its only representation; nullptr for
    // every other image.
    std::shared_ptr<const Bitmap> bitmapRepresentation() const;

    ~Image();

  private:
    Image();
    void drawWhole(GraphicsContext& context,
                   const Rect& rect,
                   CompositingOperation operation,
                   double fraction,
                   const ImageHints& hints) const;
    struct Source;
    std::shared_ptr<Source> source_;
    Size size_;
    std::string name_;
    bool flipped_ = false;
};

using ImagePtr = std::shared_ptr<Image>;

}  // namespace platform
