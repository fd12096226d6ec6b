#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace platform {

// The thumbnails file managers keep for the files they have shown, under
// ${XDG_CACHE_HOME:-$HOME/.cache}/thumbnails/<size>/<MD5 of the file's URI>.png. A card can show a
// large picture from one without decoding the picture. Internal to platform/.
class DesktopThumbnail {
  public:
    // The smallest kept thumbnail of the file at |path| that shows all of |upright| (the picture's
    // own upright size, to a pixel of rounding) with at least |needed| pixels, and that was made
    // from the file as it is now (same URI and modification time); null when there is none.
    static QImage find(const QString& path, QSize upright, QSize needed);
};

}  // namespace platform
