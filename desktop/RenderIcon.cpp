// render-icon: draws an SVG picture as a PNG of a given size in pixels, so that the fixed-size
// icons are made from the same drawing as the scalable one.
//   render-icon PICTURE.svg SIZE OUT.png
#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/ui/Bitmap.h"
#include "platform/ui/DisplayEventLoop.h"
#include "platform/ui/Image.h"

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("Usage: render-icon PICTURE.svg SIZE OUT.png\n", stderr);
        return 64;
    }
    const int size = std::atoi(argv[2]);
    platform::DisplayEventLoop loop(argc, argv);
    const auto picture = platform::Image::imageWithContentsOfFile(argv[1]);
    if (!picture || size <= 0 || picture->size().width <= 0) {
        std::fprintf(stderr, "render-icon: cannot draw %s at %s pixels\n", argv[1], argv[2]);
        return 65;
    }
    const auto bitmap = picture->bitmapAtScale(size / picture->size().width);
    if (!bitmap || !bitmap->writePNG(argv[3])) {
        std::fprintf(stderr, "render-icon: cannot write %s\n", argv[3]);
        return 73;
    }
    return 0;
}
