#include "adapters/qt/qt_pictures.h"

#include <QPainter>
#include <cmath>

#include "adapters/qt/image_conversion.h"
#include "adapters/qt/rich_text_layout.h"

namespace tembrix {
namespace {

class ListPainter {
  public:
    ListPainter(QPainter& painter, const QStringList& families)
        : painter_(painter), families_(families) {}

    void operator()(const FillRect& fill) {
        const auto& c = fill.color;
        const auto color =
            QColor::fromRgbF(static_cast<float>(c.red), static_cast<float>(c.green),
                             static_cast<float>(c.blue), static_cast<float>(c.alpha));
        const auto& r = fill.rect;
        painter_.fillRect(QRectF(r.x, r.y, r.width, r.height), color);
    }
    void operator()(const DrawText& draw) {
        RichTextLayout(draw.text, draw.rect.width, families_).paint(painter_, draw.rect);
    }

  private:
    QPainter& painter_;
    const QStringList& families_;
};

}  // namespace

Size QtTextMeasure::boundingSize(const RichText& text, double width) const {
    return RichTextLayout(text, width, families_).size();
}

ImageBuffer QtPictureRenderer::render(const DisplayList& list) const {
    QImage image(static_cast<int>(std::ceil(list.size.width)),
                 static_cast<int>(std::ceil(list.size.height)),
                 QImage::Format_RGBA8888_Premultiplied);
    if (image.isNull())
        return {};
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing);
        ListPainter each(painter, families_);
        for (const auto& item : list.items)
            std::visit(each, item);
    }
    return toBuffer(image);
}

}  // namespace tembrix
