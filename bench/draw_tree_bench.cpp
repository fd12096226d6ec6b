// Offscreen drawing of a sheet-sized tree of view-kit views (Bitmap::renderView) against the same
// picture painted directly with QPainter: median time per frame at scale 1 and 2, and the ratio.
// Usage: draw_tree_bench [frames] [png-dir]   (target: ratio <= 1.5x); with png-dir both
// pictures are saved at scale 2 (tree.png, direct.png) to compare them by eye.
#include <QColor>
#include <QFont>
#include <QImage>
#include <QPainter>
#include <QPainterPath>
#include <QString>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/ui/Bitmap.h"
#include "platform/ui/Color.h"
#include "platform/ui/DisplayEventLoop.h"
#include "platform/ui/Font.h"
#include "platform/ui/Image.h"
#include "platform/ui/ImageView.h"
#include "platform/ui/TextField.h"
#include "platform/ui/View.h"
#include "viewkit/ColorSExt.h"
#include "viewkit/PLSCustomDivider.h"
#include "viewkit/PLSOutlineButton.h"
#include "viewkit/PLSTextView.h"
#include "viewkit/PLSView.h"

using platform::Color;
using platform::NSMakeRect;
using platform::Rect;

namespace {

constexpr double kWidth = 376;
constexpr double kHeight = 370;

// A small rounded picture standing in for an icon, rendered once at scale 2.
std::shared_ptr<platform::Bitmap> iconBitmap(double size, const char* hex) {
    auto tile = std::make_shared<platform::View>(NSMakeRect(0, 0, size, size));
    tile->setWantsLayer(true);
    tile->layer()->setBackgroundColor(SExt::colorWithHex(hex)->CGColor());
    tile->layer()->setCornerRadius(size / 4);
    return platform::Bitmap::renderView(*tile, 2);
}

QImage toQImage(const platform::Bitmap& bitmap) {
    QImage image(bitmap.pixelWidth(), bitmap.pixelHeight(), QImage::Format_ARGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const platform::Rgba p = bitmap.pixelAt(x, y);
            image.setPixel(x, y, qRgba(p.r, p.g, p.b, p.a));
        }
    image = image.convertToFormat(QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(bitmap.scale());
    return image;
}

struct Icons {
    std::shared_ptr<platform::Bitmap> icon, arrow, file, logo;
};

std::shared_ptr<platform::ImageView> imageView(const Rect& frame,
                                               const std::shared_ptr<platform::Bitmap>& bitmap) {
    auto view = std::make_shared<platform::ImageView>(frame);
    view->setImage(platform::Image::imageWithBitmap(bitmap));
    return view;
}

std::shared_ptr<PLSView> row(double y, bool tinted, const std::string& title, const Icons& icons) {
    auto container = std::make_shared<PLSView>(NSMakeRect(0, y, kWidth, 50));
    container->setWantsLayer(true);
    container->layer()->setBackgroundColor(Color::colorWithWhite(0, tinted ? 0.1 : 0.0)->CGColor());
    container->addSubview(imageView(NSMakeRect(30, 13, 23, 23), icons.icon));
    auto text = std::make_shared<PLSTextView>(NSMakeRect(57, 18, 150, 14));
    text->setString(title);
    text->setBackgroundColor(Color::clearColor());
    text->setSelectable(false);
    text->setFont(platform::Font::systemFontOfSize(14));
    container->addSubview(text);
    container->addSubview(imageView(NSMakeRect(316, 9, 32, 32), icons.arrow));
    return container;
}

// 20 views: the sheet's shape.
std::shared_ptr<platform::View> buildTree(const Icons& icons) {
    auto sheet = std::make_shared<platform::View>(NSMakeRect(0, 0, kWidth, kHeight));
    sheet->setWantsLayer(true);
    sheet->layer()->setBackgroundColor(SExt::colorWithHex("#F7F7F7")->CGColor());

    auto cancel = std::make_shared<PLSOutlineButton>(platform::NSZeroRect);
    cancel->setTitle("Cancel");
    cancel->setTitleColor(Color::blackColor());
    cancel->setCornerRaidus(3.0);
    cancel->setBackgrounColor(Color::whiteColor());
    cancel->setBorderColor(SExt::colorWithHex("#b2b2b2"));
    cancel->setBorderWidth(1.0);
    cancel->sizeToFit();
    sheet->addSubview(cancel);
    cancel->setFrame(NSMakeRect(276, 28, 70, 23));

    for (const Rect& frame :
         {NSMakeRect(30, 79, 316, 1), NSMakeRect(30, 129, 316, 1), NSMakeRect(0, 179, 376, 1)}) {
        auto divider = std::make_shared<PLSCustomDivider>(frame);
        divider->setCustomAlpha(0.1);
        divider->setCustomColor(SExt::colorWithHex("#000000"));
        sheet->addSubview(divider);
    }
    sheet->addSubview(row(79, false, "Add to favourites", icons));
    sheet->addSubview(row(129, true, "Send to a friend", icons));

    auto card = std::make_shared<platform::View>(NSMakeRect(0, 179, kWidth, 105));
    auto count = std::make_shared<platform::TextField>(NSMakeRect(0, 24, kWidth, 16));
    count->setStringValue("3 files");
    count->setBordered(false);
    count->setDrawsBackground(false);
    count->setEditable(false);
    count->setAlignment(platform::TextAlignment::Center);
    count->setTextColor(SExt::colorWithHex("#888888"));
    count->setFont(platform::Font::systemFontOfSize(12));
    card->addSubview(count);
    card->addSubview(imageView(NSMakeRect(158, 45, 60, 60), icons.file));
    sheet->addSubview(card);

    auto band = std::make_shared<platform::View>(NSMakeRect(0, 284, kWidth, 81));
    band->addSubview(imageView(NSMakeRect(170, 30, 35, 27), icons.logo));
    sheet->addSubview(band);
    return sheet;
}

// The same picture with QPainter; rectangles converted to y-down here.
class DirectPainter {
  public:
    DirectPainter(const Icons& icons, const std::string& family)
        : icon_(toQImage(*icons.icon)),
          arrow_(toQImage(*icons.arrow)),
          file_(toQImage(*icons.file)),
          logo_(toQImage(*icons.logo)),
          family_(QString::fromStdString(family)) {}

    QImage paint(double scale) const {
        QImage image(int(kWidth * scale), int(kHeight * scale),
                     QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(scale);
        image.fill(Qt::transparent);
        QPainter p(&image);
        p.setRenderHint(QPainter::Antialiasing);
        p.setRenderHint(QPainter::SmoothPixmapTransform);
        p.fillRect(flip(0, 0, kWidth, kHeight), QColor("#F7F7F7"));

        QPainterPath body;
        body.addRoundedRect(flip(277.5, 29.5, 67, 20), 3.5, 3.5);
        p.fillPath(body, Qt::white);
        QPainterPath border;
        border.addRoundedRect(flip(277.5, 29.5, 67, 20), 3, 3);
        p.strokePath(border, QPen(QColor("#b2b2b2"), 1));
        text(p, flip(276, 28, 70, 17), "Cancel", 13, Qt::black, Qt::AlignHCenter);

        for (const QRectF& line :
             {flip(30, 79, 316, 1), flip(30, 129, 316, 1), flip(0, 179, 376, 1)}) {
            p.fillRect(line, QColor("#e2e2e2"));
            p.fillRect(line, QColor(0, 0, 0, 26));
        }
        for (int i = 0; i < 2; ++i) {
            const double y = i ? 129 : 79;
            if (i)
                p.fillRect(flip(0, y, kWidth, 50), QColor(0, 0, 0, 26));
            p.drawImage(flip(30, y + 13, 23, 23), icon_);
            text(p, flip(57 + 5, y + 18, 150 - 10, 14),
                 i ? "Send to a friend" : "Add to favourites", 14, Qt::black, Qt::AlignLeft);
            p.drawImage(flip(316, y + 9, 32, 32), arrow_);
        }
        text(p, flip(0, 179 + 24, kWidth, 16), "3 files", 12, QColor("#888888"), Qt::AlignHCenter);
        p.drawImage(flip(158, 179 + 45, 60, 60), file_);
        p.drawImage(flip(174, 284 + 30, 27, 27), logo_);  // scaled proportionally down
        p.end();
        return image;
    }

  private:
    static QRectF flip(double x, double y, double w, double h) {
        return QRectF(x, kHeight - y - h, w, h);
    }
    void text(QPainter& p,
              const QRectF& rect,
              const char* s,
              int pixels,
              const QColor& color,
              Qt::Alignment alignment) const {
        QFont font(family_);
        font.setPixelSize(pixels);
        p.setFont(font);
        p.setPen(color);
        p.drawText(rect, alignment | Qt::AlignTop, QString::fromUtf8(s));
    }

    QImage icon_, arrow_, file_, logo_;
    QString family_;
};

double medianMicroseconds(std::vector<double> samples) {
    std::sort(samples.begin(), samples.end());
    const size_t n = samples.size();
    return n % 2 ? samples[n / 2] : (samples[n / 2 - 1] + samples[n / 2]) / 2;
}

template <typename F>
double timeOnce(F&& f) {
    const auto start = std::chrono::steady_clock::now();
    f();
    return std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start)
        .count();
}

}  // namespace

int main(int argc, char** argv) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
    const int frames = argc > 1 ? std::max(1, std::atoi(argv[1])) : 300;
    platform::DisplayEventLoop loop(argc, argv);

    const Icons icons{iconBitmap(23, "#00A2FF"), iconBitmap(32, "#b2b2b2"),
                      iconBitmap(60, "#F5A623"), iconBitmap(35, "#4A90E2")};
    std::shared_ptr<platform::View> sheet = buildTree(icons);
    const DirectPainter direct(icons, platform::Font::systemFontOfSize(14)->familyName());

    if (argc > 2) {
        const std::string dir = argv[2];
        platform::Bitmap::renderView(*sheet, 2)->writePNG(dir + "/tree.png");
        direct.paint(2).save(QString::fromStdString(dir + "/direct.png"), "PNG");
    }
    std::printf("draw tree: %d frames per side at 376 x 370, medians (target ratio <= 1.5x)\n",
                frames);
    int status = 0;
    for (double scale : {1.0, 2.0}) {
        // Warm both sides up (font caches, glyph rasterisation) before measuring.
        for (int i = 0; i < 10; ++i) {
            platform::Bitmap::renderView(*sheet, scale);
            direct.paint(scale);
        }
        std::vector<double> toolkit, baseline;
        for (int i = 0; i < frames; ++i) {  // alternate, so both see the same machine load
            toolkit.push_back(timeOnce([&] { platform::Bitmap::renderView(*sheet, scale); }));
            baseline.push_back(timeOnce([&] { direct.paint(scale); }));
        }
        const double ours = medianMicroseconds(toolkit);
        const double base = medianMicroseconds(baseline);
        std::printf("scale %.0f: view tree %8.1f us   QPainter %8.1f us   ratio %.2fx\n", scale,
                    ours, base, ours / base);
        if (ours / base > 1.5)
            status = 1;
    }
    return status;
}
