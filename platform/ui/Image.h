#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/ui/Geometry.h"

namespace platform {

class Bitmap;
class Bundle;

enum class ImageCacheMode { Default, Always, BySize, Never };

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
    // initWithContentsOfFile / initWithContentsOfURL: nullptr when unreadable.
    static std::shared_ptr<Image> imageWithContentsOfFile(const std::string& path);
    // imageWithSize:flipped:drawingHandler:
    static std::shared_ptr<Image> imageWithSize(Size size, bool flipped, DrawingHandler handler);
    // An image wrapping rendered pixels (the bitmap's point size is its pixel size / scale).
    static std::shared_ptr<Image> imageWithBitmap(std::shared_ptr<const Bitmap> bitmap);

    Size size() const { return size_; }
    void setSize(Size size) { size_ = size; }
    const std::string& name() const { return name_; }
    void setName(const std::string& name) { name_ = name; }
    bool isFlipped() const { return flipped_; }
    ImageCacheMode cacheMode() const { return cacheMode_; }
    void setCacheMode(ImageCacheMode mode) { cacheMode_ = mode; }

    // Draws the whole image into |rect| of the current graphics context at |fraction| opacity.
    void drawInRect(const Rect& rect, double fraction = 1.0) const;
    // Rasterises the image at |scale| pixels per point.
    std::shared_ptr<Bitmap> bitmapAtScale(double scale) const;
    // The pixels of an image made by imageWithBitmap, its only representation; nullptr for
    // every other image.
    std::shared_ptr<const Bitmap> bitmapRepresentation() const;

    ~Image();

  private:
    Image();
    struct Source;
    std::shared_ptr<Source> source_;
    Size size_;
    std::string name_;
    bool flipped_ = false;
    ImageCacheMode cacheMode_ = ImageCacheMode::Default;
};

using ImagePtr = std::shared_ptr<Image>;

}  // namespace platform
