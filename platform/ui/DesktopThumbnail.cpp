#include "platform/ui/DesktopThumbnail.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

#include "platform/core/Paths.h"

namespace platform {

QImage DesktopThumbnail::find(const QString& path, const std::function<bool(QSize)>& usable) {
    const QFileInfo file(path);
    if (!file.isFile())
        return {};
    const QByteArray uri = QUrl::fromLocalFile(file.absoluteFilePath()).toEncoded();
    const QString name =
        QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()) +
        ".png";
    const QString modified = QString::number(file.lastModified().toSecsSinceEpoch());
    const QString folder =
        QString::fromStdString(Paths::xdgDirectory("XDG_CACHE_HOME", ".cache")) + "/thumbnails/";
    for (const char* size : {"normal", "large", "x-large", "xx-large"}) {
        QImageReader reader(folder + size + "/" + name, "png");
        const QSize kept = reader.size();
        if (!kept.isValid() || !usable(kept))
            continue;
        const QImage thumbnail = reader.read();
        // One made before the file last changed shows what the file was.
        if (thumbnail.text("Thumb::URI") == QString::fromLatin1(uri) &&
            thumbnail.text("Thumb::MTime") == modified)
            return thumbnail;
    }
    return {};
}

}  // namespace platform
