// A photo file holding any bytes, read for a 60-point card at twice the scale: no image, or one
// whose pixels are never more than the photo's own.
#include <QLoggingCategory>
#include <fstream>

#include "platform/ui/Image.h"
#include "tests/fuzz/FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    // The decoders' complaints about broken files would flood the run.
    static const bool quiet = (QLoggingCategory::setFilterRules("qt.gui.imageio*=false"), true);
    (void)quiet;
    const std::string path = fuzz_support::scratch() + "/photo.jpg";
    std::ofstream(path, std::ios::binary | std::ios::trunc) << fuzz_support::text(data, size);
    if (const auto image = platform::Image::imageWithContentsOfFile(path, {60, 60}, 2)) {
        const platform::Size pixels = image->rasterPixelSize(), own = image->size();
        fuzz_support::require(pixels.width >= 1 && pixels.width <= own.width);
        fuzz_support::require(pixels.height >= 1 && pixels.height <= own.height);
    }
    return 0;
}
