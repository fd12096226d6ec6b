// Baseline for the sheet snapshot benchmark: the least a Qt program must do to paint a sheet-like
// picture (a background, a few rounded rectangles, four strings) and save it as PNG.
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QPainterPath>

int main(int argc, char** argv) {
    if (argc < 2)
        return 64;
    QGuiApplication app(argc, argv);
    const qreal scale = argc > 2 ? QString(argv[2]).toDouble() : 1.0;
    QImage image(QSize(376, 370) * scale, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(scale);
    image.fill(QColor("#F7F7F7"));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(QRectF(30, 290, 316, 1), QColor(0, 0, 0, 26));
    painter.fillRect(QRectF(30, 240, 316, 1), QColor(0, 0, 0, 26));
    painter.fillRect(QRectF(0, 190, 376, 1), QColor(0, 0, 0, 26));
    QPainterPath button;
    button.addRoundedRect(QRectF(277.5, 320.5, 67, 20), 3, 3);
    painter.fillPath(button, Qt::white);
    painter.setPen(QPen(QColor("#b2b2b2"), 1));
    painter.drawPath(button);
    painter.drawRoundedRect(QRectF(158, 5, 60, 60), 8, 8);
    QFont font("Liberation Sans");
    font.setPixelSize(14);
    painter.setFont(font);
    painter.setPen(Qt::black);
    painter.drawText(QPointF(57, 207), "Send to a friend");
    painter.drawText(QPointF(57, 257), "Add to favourites");
    painter.drawText(QRectF(276, 319, 70, 23), Qt::AlignCenter, "Cancel");
    font.setPixelSize(12);
    painter.setFont(font);
    painter.setPen(QColor("#888888"));
    painter.drawText(QRectF(0, 330 - 65, 376, 16), Qt::AlignHCenter, "3 files");
    painter.end();
    return image.save(QString::fromLocal8Bit(argv[1]), "PNG") ? 0 : 1;
}
