#pragma once

#include <string_view>

namespace platform {

// The small JPEG a camera embeds in a photo's EXIF block (the second image file directory), found
// by walking the file's first segments. A card that shows a photo a few dozen points wide can
// draw it instead of decoding tens of megapixels.
class ExifThumbnail {
  public:
    // The thumbnail's bytes inside |jpegStart| (the first bytes of a JPEG file), or an empty view
    // when there is none or an offset or length does not hold up. What the bytes hold
    // is for the decoder to judge.
    static std::string_view locate(std::string_view jpegStart);

  private:
    static std::string_view locateInTiff(std::string_view tiff);
};

}  // namespace platform
