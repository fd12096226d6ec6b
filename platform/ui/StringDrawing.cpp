#include "platform/ui/StringDrawing.h"

#include <QCoreApplication>
#include <QFontMetricsF>
#include <QPainter>
#include <QTextLayout>
#include <QThread>
#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>
#include <vector>

#include "platform/ui/GraphicsContext.h"

namespace platform {

namespace {

// Qt keeps text positions in 26.6 fixed point: larger widths overflow, so "unlimited" (or a
// width of 0, meaning no limit) becomes this.
constexpr double kUnlimitedWidth = 1.0e7;

enum class Wrap { None, Words, Anywhere };

double clampWidth(double width) {
    if (!(width > 0) || width > kUnlimitedWidth)
        return kUnlimitedWidth;
    return width;
}

FontPtr fontOf(const TextAttributes& attributes) {
    return attributes.font ? attributes.font : Font::systemFontOfSize(Font::systemFontSize());
}

QColor colorOf(const TextAttributes& attributes) {
    double r = 0, g = 0, b = 0, a = 1;
    if (attributes.foregroundColor)
        attributes.foregroundColor->getRed(&r, &g, &b, &a);
    auto unit = [](double v) { return static_cast<float>(std::clamp(v, 0.0, 1.0)); };
    return QColor::fromRgbF(unit(r), unit(g), unit(b), unit(a));
}

// Newlines become Qt's line separator, one UTF-16 unit for one, so indexes stay aligned.
QString layoutText(const QString& text) {
    QString result = text;
    result.replace(QChar('\n'), QChar::LineSeparator);
    return result;
}

double lineHeightOf(const QFontMetricsF& metrics, bool withLeading) {
    return metrics.ascent() + metrics.descent() + (withLeading ? metrics.leading() : 0.0);
}

// Text laid out in lines of one height, each line's top at its index times that height, placed
// horizontally in |boxWidth| by |alignment|.
struct LaidOutText {
    std::unique_ptr<QTextLayout> layout;
    double lineHeight = 0;
    double widest = 0;

    int lineCount() const { return layout->lineCount(); }
    double height() const { return lineCount() * lineHeight; }
};

LaidOutText layOutAfresh(const QString& text,
                         const QFont& qfont,
                         double width,
                         Wrap wrap,
                         bool withLeading,
                         TextAlignment alignment,
                         double boxWidth) {
    LaidOutText result;
    result.lineHeight = lineHeightOf(QFontMetricsF(qfont, Font::layoutDevice()), withLeading);
    result.layout = std::make_unique<QTextLayout>(text, qfont, Font::layoutDevice());
    QTextOption option;
    option.setUseDesignMetrics(true);
    option.setWrapMode(wrap == Wrap::None       ? QTextOption::NoWrap
                       : wrap == Wrap::Anywhere ? QTextOption::WrapAnywhere
                                                : QTextOption::WrapAtWordBoundaryOrAnywhere);
    result.layout->setTextOption(option);
    result.layout->setCacheEnabled(true);
    result.layout->beginLayout();
    double top = 0;
    for (QTextLine line = result.layout->createLine(); line.isValid();
         line = result.layout->createLine()) {
        line.setLineWidth(clampWidth(width));
        double natural = line.naturalTextWidth();
        result.widest = std::max(result.widest, natural);
        double x = 0;
        if (alignment == TextAlignment::Right)
            x = boxWidth - natural;
        else if (alignment == TextAlignment::Center)
            x = (boxWidth - natural) / 2;
        line.setPosition(QPointF(x, top));
        top += result.lineHeight;
    }
    result.layout->endLayout();
    return result;
}

// Views draw the same text again at every repaint; shaping it is the costly part, so recent
// layouts are kept. Main thread only (where views draw): other threads lay out afresh.
struct LayoutKey {
    QString text;
    QString font;
    double width;
    Wrap wrap;
    bool withLeading;
    TextAlignment alignment;
    double boxWidth;

    bool operator==(const LayoutKey& o) const {
        return width == o.width && wrap == o.wrap && withLeading == o.withLeading &&
               alignment == o.alignment && boxWidth == o.boxWidth && text == o.text &&
               font == o.font;
    }
};

class LayoutCache {
  public:
    static constexpr size_t kCapacity = 64;

    std::shared_ptr<const LaidOutText> find(const LayoutKey& key) {
        for (auto it = entries_.begin(); it != entries_.end(); ++it) {
            if (it->first == key) {
                // Most recently used first.
                std::rotate(entries_.begin(), it, it + 1);
                return entries_.front().second;
            }
        }
        return nullptr;
    }
    void insert(LayoutKey key, std::shared_ptr<const LaidOutText> layout) {
        if (entries_.size() == kCapacity)
            entries_.pop_back();
        entries_.insert(entries_.begin(), {std::move(key), std::move(layout)});
    }
    // Layouts hold font engines: they must go before the application and its fonts do.
    void clear() { entries_.clear(); }

  private:
    std::vector<std::pair<LayoutKey, std::shared_ptr<const LaidOutText>>> entries_;
};

LayoutCache* mainThreadLayoutCache() {
    static LayoutCache* cache = nullptr;
    QCoreApplication* application = QCoreApplication::instance();
    if (!application || QThread::currentThread() != application->thread())
        return nullptr;
    if (!cache) {
        cache = new LayoutCache;
        qAddPostRoutine([] {
            delete cache;
            cache = nullptr;
        });
    }
    return cache;
}

std::shared_ptr<const LaidOutText> layOut(const QString& text,
                                          const Font& font,
                                          double width,
                                          Wrap wrap,
                                          bool withLeading,
                                          TextAlignment alignment = TextAlignment::Left,
                                          double boxWidth = 0) {
    const QFont qfont = font.qfont();
    LayoutCache* cache = mainThreadLayoutCache();
    if (!cache)
        return std::make_shared<const LaidOutText>(
            layOutAfresh(text, qfont, width, wrap, withLeading, alignment, boxWidth));
    LayoutKey key{text, qfont.key(), width, wrap, withLeading, alignment, boxWidth};
    if (auto found = cache->find(key))
        return found;
    auto laid = std::make_shared<const LaidOutText>(
        layOutAfresh(text, qfont, width, wrap, withLeading, alignment, boxWidth));
    cache->insert(std::move(key), laid);
    return laid;
}

int utf16IndexForByte(const std::string& text, size_t byteOffset) {
    size_t bytes = std::min(byteOffset, text.size());
    return static_cast<int>(QString::fromUtf8(text.data(), static_cast<qsizetype>(bytes)).size());
}

size_t byteOffsetForUtf16(const QString& text, int index) {
    return static_cast<size_t>(text.left(index).toUtf8().size());
}

Qt::TextElideMode elideModeFor(LineBreakMode lineBreakMode) {
    switch (lineBreakMode) {
        case LineBreakMode::ByTruncatingHead:
            return Qt::ElideLeft;
        case LineBreakMode::ByTruncatingTail:
            return Qt::ElideRight;
        case LineBreakMode::ByTruncatingMiddle:
            return Qt::ElideMiddle;
        default:
            return Qt::ElideNone;
    }
}

}  // namespace

Rect boundingRectWithSize(const std::string& text,
                          Size size,
                          unsigned options,
                          const TextAttributes& attributes) {
    if (text.empty())
        return NSZeroRect;
    FontPtr font = fontOf(attributes);
    bool withLeading = (options & NSStringDrawingUsesFontLeading) != 0;
    QString qtext = QString::fromStdString(text);
    if (options & NSStringDrawingUsesLineFragmentOrigin) {
        auto laid = layOut(layoutText(qtext), *font, size.width, Wrap::Words, withLeading);
        return NSMakeRect(0, 0, laid->widest, laid->height());
    }
    // Without the line fragment origin the text is one line and the rectangle is measured from
    // its baseline: the part below it has a negative y.
    qtext.replace(QChar('\n'), QChar(' '));
    auto laid = layOut(qtext, *font, kUnlimitedWidth, Wrap::None, withLeading);
    return NSMakeRect(0, font->descender(), laid->widest, laid->lineHeight);
}

void drawStringInRect(const std::string& text,
                      const Rect& rect,
                      const TextAttributes& attributes,
                      TextAlignment alignment,
                      LineBreakMode lineBreakMode,
                      TextClipping clipping,
                      double maxTightening) {
    GraphicsContext* context = GraphicsContext::currentContext();
    if (!context || text.empty() || rect.isEmpty())
        return;
    FontPtr font = fontOf(attributes);
    double width = rect.size.width;
    QString qtext = layoutText(QString::fromStdString(text));

    std::vector<std::shared_ptr<const LaidOutText>>
        blocks;  // one for wrapped text; one per line otherwise
    if (lineBreakMode == LineBreakMode::ByWordWrapping ||
        lineBreakMode == LineBreakMode::ByCharWrapping) {
        Wrap wrap = lineBreakMode == LineBreakMode::ByWordWrapping ? Wrap::Words : Wrap::Anywhere;
        blocks.push_back(layOut(qtext, *font, width, wrap, true, alignment, width));
    } else {
        QFontMetricsF metrics(font->qfont(), Font::layoutDevice());
        for (QString line : qtext.split(QChar::LineSeparator)) {
            Qt::TextElideMode elide = elideModeFor(lineBreakMode);
            const double advance = metrics.horizontalAdvance(line);
            if (elide != Qt::ElideNone && advance > width) {
                if (advance <= width * (1 + maxTightening)) {
                    // Every advance shrinks in proportion, the glyphs keep their shapes.
                    QFont tight = font->qfont();
                    tight.setLetterSpacing(QFont::PercentageSpacing,
                                           std::floor(1000 * width / advance) / 10);
                    blocks.push_back(std::make_shared<const LaidOutText>(layOutAfresh(
                        line, tight, kUnlimitedWidth, Wrap::None, true, alignment, width)));
                    continue;
                }
                line = metrics.elidedText(line, elide, width);
            }
            blocks.push_back(
                layOut(line, *font, kUnlimitedWidth, Wrap::None, true, alignment, width));
        }
    }

    QColor color = colorOf(attributes);
    context->paint([&](QPainter& painter) {
        painter.save();
        GraphicsContext::applyTopDownTransform(painter, rect);
        if (clipping == TextClipping::ToRect)
            painter.setClipRect(QRectF(0, 0, rect.size.width, rect.size.height),
                                painter.hasClipping() ? Qt::IntersectClip : Qt::ReplaceClip);
        painter.setPen(color);
        double top = 0;
        for (const auto& block : blocks) {
            block->layout->draw(&painter, QPointF(0, top));
            top += block->height();
        }
        painter.restore();
    });
}

Size usedSizeForText(const std::string& text, double width, const TextAttributes& attributes) {
    if (text.empty())
        return {0, 0};
    auto laid = layOut(layoutText(QString::fromStdString(text)), *fontOf(attributes), width,
                       Wrap::Words, true);
    return {laid->widest, laid->height()};
}

size_t characterIndexForPointInText(const std::string& text,
                                    double width,
                                    const TextAttributes& attributes,
                                    Point point) {
    if (text.empty())
        return 0;
    QString original = QString::fromStdString(text);
    auto laid = layOut(layoutText(original), *fontOf(attributes), width, Wrap::Words, true);
    int lineIndex = static_cast<int>(std::floor(point.y / laid->lineHeight));
    lineIndex = std::clamp(lineIndex, 0, laid->lineCount() - 1);
    QTextLine line = laid->layout->lineAt(lineIndex);
    int index = line.xToCursor(point.x, QTextLine::CursorBetweenCharacters);
    // A click past the end of a wrapped line stays on that line, before its line separator.
    int lineEnd = line.textStart() + line.textLength();
    if (index == lineEnd && lineIndex < laid->lineCount() - 1 && lineEnd > line.textStart() &&
        original.at(lineEnd - 1) == QChar('\n'))
        --index;
    return byteOffsetForUtf16(original, index);
}

Rect caretRectInText(const std::string& text,
                     double width,
                     const TextAttributes& attributes,
                     size_t index) {
    FontPtr font = fontOf(attributes);
    if (text.empty())
        return NSMakeRect(0, 0, 0,
                          lineHeightOf(QFontMetricsF(font->qfont(), Font::layoutDevice()), true));
    QString original = QString::fromStdString(text);
    auto laid = layOut(layoutText(original), *font, width, Wrap::Words, true);
    int position = utf16IndexForByte(text, index);
    QTextLine line = laid->layout->lineForTextPosition(position);
    if (!line.isValid())
        line = laid->layout->lineAt(laid->lineCount() - 1);
    // After a final newline the caret sits on a line of its own.
    if (position == original.size() && original.endsWith(QChar('\n')))
        return NSMakeRect(0, laid->lineCount() * laid->lineHeight, 0, laid->lineHeight);
    return NSMakeRect(line.cursorToX(position), line.position().y(), 0, laid->lineHeight);
}

std::vector<Rect> selectionRectsInText(const std::string& text,
                                       double width,
                                       const TextAttributes& attributes,
                                       size_t location,
                                       size_t length) {
    std::vector<Rect> rects;
    if (text.empty() || length == 0)
        return rects;
    QString original = QString::fromStdString(text);
    auto laid = layOut(layoutText(original), *fontOf(attributes), width, Wrap::Words, true);
    int start = utf16IndexForByte(text, location);
    int end = utf16IndexForByte(text, location + length);
    for (int i = 0; i < laid->lineCount(); ++i) {
        QTextLine line = laid->layout->lineAt(i);
        int lineStart = line.textStart();
        int lineEnd = lineStart + line.textLength();
        int from = std::max(start, lineStart);
        int to = std::min(end, lineEnd);
        if (from >= to)
            continue;
        double x1 = line.cursorToX(from);
        double x2 = line.cursorToX(to);
        rects.push_back(NSMakeRect(std::min(x1, x2), line.position().y(), std::fabs(x2 - x1),
                                   laid->lineHeight));
    }
    return rects;
}

}  // namespace platform
