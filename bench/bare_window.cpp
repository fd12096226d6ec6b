// The floor for the first-paint benchmark: the least a Qt program does to show a window the size
// of the sheet on the display, painting the sheet's background and a white Cancel-sized box, placed
// where parley-share places the sheet (the middle of the screen). With --text it also draws the
// sheet's three titles in the default font, so that it pays for the font system as the sheet does.
// It runs until it is killed.
#include <QGuiApplication>
#include <QPainter>
#include <QRasterWindow>
#include <QScreen>

namespace {

class BareWindow : public QRasterWindow {
  public:
    explicit BareWindow(bool withText) : withText_(withText) {}

  protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(QRect(0, 0, width(), height()), QColor(0xF7, 0xF7, 0xF7));
        painter.fillRect(QRect(276, 319, 70, 23), Qt::white);
        if (!withText_)
            return;
        painter.drawText(QPointF(57, 125), QStringLiteral("Send to a Friend"));
        painter.drawText(QPointF(57, 175), QStringLiteral("Add to Favorites"));
        painter.drawText(QPointF(290, 336), QStringLiteral("Cancel"));
    }

  private:
    const bool withText_;
};

}  // namespace

int main(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    BareWindow window(argc > 1 && QByteArray(argv[1]) == "--text");
    const QSize size(376, 370);
    window.resize(size);
    const QRect screen = window.screen()->geometry();
    // The sheet's bottom-left corner lands on whole points from the bottom of the screen.
    const int left = (screen.width() - size.width()) / 2;
    const int bottom = (screen.height() - size.height()) / 2;
    window.setPosition(left, screen.height() - bottom - size.height());
    window.show();
    return app.exec();
}
