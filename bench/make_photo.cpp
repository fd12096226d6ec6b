// Writes a photo-like JPEG of the given size (smooth light, shapes and sensor-like grain, so
// that it compresses about as a camera picture does). With --shown a 256-pixel thumbnail is also
// kept under $XDG_CACHE_HOME/thumbnails/large, as a file manager leaves it after showing the file.
// Usage: make_photo [--shown] OUT.jpg [WIDTH HEIGHT]
#include <QColor>
#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <QUrl>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

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
    const bool shown = argc > 1 && std::strcmp(argv[1], "--shown") == 0;
    if (shown) {
        --argc;
        ++argv;
    }
    if (argc != 2 && argc != 4) {
        std::fprintf(stderr, "usage: make_photo [--shown] OUT.jpg [WIDTH HEIGHT]\n");
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
    const QString out = QString::fromLocal8Bit(argv[1]);
    if (!photo.save(out, "JPEG", 90))
        return 73;
    return !shown || keepDesktopThumbnail(out, photo) ? 0 : 73;
}
