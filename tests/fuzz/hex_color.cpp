// Hex colour strings of any bytes: nil or a colour whose components lie in 0...1.
#include "tests/fuzz/FuzzSupport.h"
#include "viewkit/ColorSExt.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (const platform::ColorPtr color = SExt::colorWithHex(fuzz_support::text(data, size))) {
        double c[4] = {-1, -1, -1, -1};
        color->getRed(&c[0], &c[1], &c[2], &c[3]);
        for (double component : c)
            fuzz_support::require(component >= 0.0 && component <= 1.0);
    }
    return 0;
}
