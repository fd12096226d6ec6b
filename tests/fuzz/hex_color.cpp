// Hex colour strings of any bytes: nil or a colour whose components lie in 0...1.
#include "tests/fuzz/FuzzSupport.h"
#include "viewkit/ColorSExt.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const platform::ColorPtr color = SExt::colorWithHex(fuzz_support::text(data, size));
    if (color) {
        double red = -1, green = -1, blue = -1, alpha = -1;
        color->getRed(&red, &green, &blue, &alpha);
        for (double component : {red, green, blue, alpha})
            fuzz_support::require(component >= 0.0 && component <= 1.0);
    }
    return 0;
}
