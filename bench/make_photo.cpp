// Writes a photo-like JPEG of the given size (smooth light, shapes and sensor-like grain, so
// that it compresses about as a camera picture does). Usage: make_photo OUT.jpg [WIDTH HEIGHT]
#include <QColor>
#include <QImage>
#include <QPainter>
#include <QRandomGenerator>
#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 2 && argc != 4) {
        std::fprintf(stderr, "usage: make_photo OUT.jpg [WIDTH HEIGHT]\n");
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
    return photo.save(QString::fromLocal8Bit(argv[1]), "JPEG", 90) ? 0 : 73;
}
