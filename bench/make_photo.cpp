// Writes a photo-like JPEG of the given size (smooth light, shapes and sensor-like grain, so
// that it compresses about as a camera picture does). With --camera the file also carries an
// EXIF block with a 160-pixel-wide thumbnail, as cameras and phones write it; with --shown a
// 256-pixel thumbnail is also kept under $XDG_CACHE_HOME/thumbnails/large, as a file manager
// leaves it after showing the file.
// Usage: make_photo [--camera] [--shown] OUT.jpg [WIDTH HEIGHT]
#include <QBuffer>
#include <QByteArray>
#include <QColor>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QUrl>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

QByteArray jpegBytes(const QImage& image, int quality) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", quality);
    return bytes;
}

void appendLittleEndian(QByteArray& out, quint32 value, int width) {
    for (int i = 0; i < width; ++i)
        out.append(char((value >> (8 * i)) & 0xFF));
}

// An APP1 segment: a little-endian TIFF whose first directory holds the orientation (upright)
// and whose second holds the JPEG thumbnail, as a camera lays it out.
QByteArray exifSegment(const QByteArray& thumbnail) {
    const quint32 photoDirectory = 8, thumbnailDirectory = photoDirectory + 2 + 12 + 4;
    const quint32 thumbnailData = thumbnailDirectory + 2 + 3 * 12 + 4;
    QByteArray tiff("II*\0", 4);
    appendLittleEndian(tiff, photoDirectory, 4);
    auto entry = [&tiff](quint32 tag, quint32 type, quint32 value) {
        appendLittleEndian(tiff, tag, 2);
        appendLittleEndian(tiff, type, 2);
        appendLittleEndian(tiff, 1, 4);
        appendLittleEndian(tiff, value, 4);
    };
    appendLittleEndian(tiff, 1, 2);
    entry(0x0112, 3, 1);  // orientation: upright
    appendLittleEndian(tiff, thumbnailDirectory, 4);
    appendLittleEndian(tiff, 3, 2);
    entry(0x0103, 3, 6);  // compression: JPEG
    entry(0x0201, 4, thumbnailData);
    entry(0x0202, 4, quint32(thumbnail.size()));
    appendLittleEndian(tiff, 0, 4);
    tiff += thumbnail;
    const QByteArray body = QByteArray("Exif\0\0", 6) + tiff;
    QByteArray segment("\xFF\xE1", 2);
    segment.append(char((body.size() + 2) >> 8)).append(char((body.size() + 2) & 0xFF));
    return segment + body;
}

// The thumbnail a file manager keeps for |path| once it has shown it.
bool keepDesktopThumbnail(const QString& path, const QImage& photo) {
    const QFileInfo file(path);
    const QByteArray uri = QUrl::fromLocalFile(file.absoluteFilePath()).toEncoded();
    QImage thumbnail = photo.scaled(256, 256, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    thumbnail.setText("Thumb::URI", uri);
    thumbnail.setText("Thumb::MTime", QString::number(file.lastModified().toSecsSinceEpoch()));
    const QByteArray cache = qgetenv("XDG_CACHE_HOME");
    const QString folder =
        (cache.isEmpty() ? QDir::homePath() + "/.cache" : QString::fromLocal8Bit(cache)) +
        "/thumbnails/large/";
    return QDir().mkpath(folder) &&
           thumbnail.save(folder + QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex() +
                          ".png");
}

}  // namespace

int main(int argc, char** argv) {
    bool camera = false, shown = false;
    for (; argc > 1 && argv[1][0] == '-'; --argc, ++argv) {
        camera = camera || std::strcmp(argv[1], "--camera") == 0;
        shown = shown || std::strcmp(argv[1], "--shown") == 0;
    }
    if (argc != 2 && argc != 4) {
        std::fprintf(stderr, "usage: make_photo [--camera] [--shown] OUT.jpg [WIDTH HEIGHT]\n");
        return 64;
    }
    const int width = argc == 4 ? std::atoi(argv[2]) : 8000;
    const int height = argc == 4 ? std::atoi(argv[3]) : 6000;
    if (width <= 0 || height <= 0)
        return 64;
    QImage photo(width, height, QImage::Format_RGB888);
    {
        QPainter painter(&photo);
        QLinearGradient sky(0, 0, 0, height);
        sky.setColorAt(0, QColor(70, 130, 200));
        sky.setColorAt(0.6, QColor(230, 200, 150));
        sky.setColorAt(1, QColor(60, 90, 40));
        painter.fillRect(photo.rect(), sky);
        painter.setRenderHint(QPainter::Antialiasing);
        QRandomGenerator random(48);
        for (int i = 0; i < 60; ++i) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(
                QColor(random.bounded(256), random.bounded(256), random.bounded(256), 120));
            const int r = 20 + random.bounded(width / 12);
            painter.drawEllipse(QPoint(random.bounded(width), random.bounded(height)), r, r);
        }
    }
    // Grain: a little noise on every pixel, as a sensor gives.
    QRandomGenerator grain(7);
    for (int y = 0; y < height; ++y) {
        uchar* line = photo.scanLine(y);
        for (int x = 0; x < width * 3; ++x) {
            const int value = line[x] + int(grain.bounded(9)) - 4;
            line[x] = static_cast<uchar>(value < 0 ? 0 : value > 255 ? 255 : value);
        }
    }
    QByteArray file = jpegBytes(photo, 90);
    if (camera) {
        const QImage thumbnail = photo.scaled(160, 160 * height / width, Qt::IgnoreAspectRatio,
                                              Qt::SmoothTransformation);
        file.insert(2, exifSegment(jpegBytes(thumbnail, 85)));  // right after start-of-image
    }
    QFile out(QString::fromLocal8Bit(argv[1]));
    if (!out.open(QIODevice::WriteOnly) || out.write(file) != file.size())
        return 73;
    out.close();
    return !shown || keepDesktopThumbnail(out.fileName(), photo) ? 0 : 73;
}
