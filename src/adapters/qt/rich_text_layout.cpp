#include "adapters/qt/rich_text_layout.h"

#include <QPainter>
#include <QTextBoundaryFinder>
#include <algorithm>
#include <cmath>

#include "base/color.h"

namespace tembrix {
namespace {

const QString ellipsis = QStringLiteral("\u2026");

QColor colorOf(const Color& color) {
    const auto part = [](double value) { return static_cast<float>(std::clamp(value, 0.0, 1.0)); };
    return QColor::fromRgbF(part(color.red), part(color.green), part(color.blue),
                            part(color.alpha));
}

}  // namespace

RichTextLayout::RichTextLayout(const RichText& text, double width, const QStringList& families) {
    const int pixels = std::max(1, static_cast<int>(std::lround(text.fontSize)));
    scale_ = std::max(text.fontSize, 1.0) / pixels;
    width_ = std::max(width / scale_, 1.0);

    QFont font;
    font.setFamilies(families);
    font.setPixelSize(pixels);
    QString all;
    for (const auto& run : text.runs) {
        auto part = QString::fromStdString(run.text);
        part.replace('\n', QChar::LineSeparator);
        QTextLayout::FormatRange range;
        range.start = static_cast<int>(all.size());
        range.length = static_cast<int>(part.size());
        font.setWeight(run.weight == FontWeight::semibold ? QFont::DemiBold : QFont::Normal);
        range.format.setFont(font);
        range.format.setForeground(colorOf(run.color));
        formats_.append(range);
        all += part;
    }
    layout_ = std::make_unique<QTextLayout>(QString(), font);
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout_->setTextOption(option);
    layOut(all);
}

void RichTextLayout::layOut(const QString& text) {
    layout_->setText(text);
    layout_->setFormats(formats_);
    double y = 0;
    layout_->beginLayout();
    if (!text.isEmpty())
        for (auto line = layout_->createLine(); line.isValid(); line = layout_->createLine()) {
            line.setLineWidth(width_);
            line.setPosition({0, y});
            y += line.height();
        }
    layout_->endLayout();
}

double RichTextLayout::heightOf(int lines) const {
    if (lines == 0)
        return 0;
    const auto last = layout_->lineAt(lines - 1);
    return last.y() + last.height();
}

Size RichTextLayout::size() const {
    double widest = 0;
    for (int i = 0; i < layout_->lineCount(); ++i)
        widest = std::max(widest, layout_->lineAt(i).naturalTextWidth());
    return {widest * scale_, heightOf(layout_->lineCount()) * scale_};
}

void RichTextLayout::paint(QPainter& painter, const Rect& rect) {
    const double room = rect.height / scale_ + 0.01;
    int lines = layout_->lineCount();
    while (lines > 1 && heightOf(lines) > room)
        --lines;
    if (lines < layout_->lineCount())
        truncate(lines);
    painter.save();
    painter.setClipRect(QRectF(rect.x, rect.y, rect.width, rect.height));
    painter.translate(rect.x, rect.y);
    painter.scale(scale_, scale_);
    layout_->draw(&painter, {0, 0});
    painter.restore();
}

void RichTextLayout::truncate(int lines) {
    const auto last = layout_->lineAt(lines - 1);
    const QString whole = layout_->text().left(last.textStart() + last.textLength());
    QTextBoundaryFinder characters(QTextBoundaryFinder::Grapheme, whole);
    characters.toEnd();
    // The ellipsis has the format of the character before it, which may be the last one of a run.
    const auto formats = formats_;
    for (qsizetype end = whole.size(); end > 0; end = characters.toPreviousBoundary()) {
        QString kept = whole.left(end);
        while (!kept.isEmpty() && (kept.back().isSpace() || kept.back() == QChar::LineSeparator))
            kept.chop(1);
        formats_ = formats;
        for (auto& range : formats_)
            if (range.start < kept.size() && kept.size() <= range.start + range.length)
                range.length = static_cast<int>(kept.size()) - range.start + 1;
            else if (range.start >= kept.size())
                range.length = 0;
        layOut(kept + ellipsis);
        if (layout_->lineCount() <= lines)
            return;
    }
}

}  // namespace tembrix
