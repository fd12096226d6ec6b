#include "platform/ui/DesktopThumbnail.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QFileInfo>
#include <QImageReader>
#include <QUrl>

#include "platform/core/Paths.h"

namespace platform {

QImage DesktopThumbnail::find(const QString& path, QSize minimum) {
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
        const QString kept = folder + size + "/" + name;
        // Anything but a regular file (a FIFO would block the read) is no thumbnail.
        if (!QFileInfo(kept).isFile())
            continue;
        QImageReader reader(kept, "png");
        const QSize pixels = reader.size();
        if (!pixels.isValid() || pixels.width() < minimum.width() ||
            pixels.height() < minimum.height())
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
