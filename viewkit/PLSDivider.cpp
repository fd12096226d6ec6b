#include "viewkit/PLSDivider.h"

#include "viewkit/ColorSExt.h"

PLSDivider::PLSDivider(const platform::Rect& frame) : PLSView(frame) {
    setWantsLayer(true);
    // The layer retains the colour handle, so the temporary colour may go.
    if (platform::ColorPtr grey = SExt::colorWithHex("#e2e2e2"))
        layer()->setBackgroundColor(grey->CGColor());
}
