#pragma once

#include <QImage>
#include <QSize>
#include <QString>
#include <functional>

namespace platform {

// The thumbnails file managers keep for the files they have shown, under
// ${XDG_CACHE_HOME:-$HOME/.cache}/thumbnails/<size>/<MD5 of the file's URI>.png. A card can show a
// large picture from one without decoding the picture. Internal to platform/.
class DesktopThumbnail {
  public:
    // The smallest kept thumbnail of the file at |path| whose pixel size |usable| accepts and
    // that was made from the file as it is now (same URI and modification time); null when there
    // is none.
    static QImage find(const QString& path, const std::function<bool(QSize)>& usable);
};

}  // namespace platform
