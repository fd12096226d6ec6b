#pragma once

#include <QImage>
#include <QSize>
#include <QString>

namespace platform {

// The thumbnails file managers keep for the files they have shown, under
// ${XDG_CACHE_HOME:-$HOME/.cache}/thumbnails/<size>/<MD5 of the file's URI>.png. Internal to
// platform/: Image::imageWithKeptThumbnailOfFile is its way out.
class DesktopThumbnail {
  public:
    // The smallest kept thumbnail of the file at |path| with at least |minimum| pixels on each
    // axis that was made from the file as it is now (same URI and modification time); null when
    // there is none.
    static QImage find(const QString& path, QSize minimum);
};

}  // namespace platform
