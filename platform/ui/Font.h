#pragma once

#include <memory>
#include <string>

class QFont;
class QPaintDevice;

namespace platform {

// A font. A size in points is that many pixels at backing scale 1.
class Font {
  public:
    // systemFontOfSize: the system font family at |pointSize|.
    static std::shared_ptr<Font> systemFontOfSize(double pointSize);
    // The family "the system font" resolves to, fixed at first use after the last pin: the one
    // pinned by pinSystemFontFamily, else on a display the desktop's UI font as Qt's platform theme
    // reports it (so the sheet looks native), else (offscreen) kPinnedSystemFamily, so that
    // pictures come out the same on every machine. A family that is not installed is logged once
    // and replaced by the face the font system picks for it.
    static std::string systemFontFamily();
    // Makes |family| the system font whatever the desktop says, so pixels stay exact (tests).
    // Fonts made before keep their family: pin before the views that should use it are made.
    static void pinSystemFontFamily(const std::string& family);
    // The free face with Helvetica's metrics (Debian package fonts-liberation2).
    static constexpr const char* kPinnedSystemFamily = "Liberation Sans";
    // The system font size a control uses when none is set.
    static double systemFontSize() { return 13.0; }

    double pointSize() const { return pointSize_; }
    const std::string& familyName() const { return family_; }
    // Line metrics in points.
    double ascender() const;
    double descender() const;  // negative, as on the platform
    double leading() const;

    // Platform internals: the Qt font, sized so that one point is one unit of the paint device
    // below; layout and metrics use that device so that text measures the same at any scale.
    QFont qfont() const;
    static QPaintDevice* layoutDevice();

    Font(std::string family, double pointSize)
        : family_(std::move(family)), pointSize_(pointSize) {}

  private:
    std::string family_;
    double pointSize_;
};

using FontPtr = std::shared_ptr<Font>;

}  // namespace platform
