#include "surfacepainter.h"

#include "surfacefonts.h"
#include "surfacepalette.h"

#include <QFontMetricsF>
#include <QPainter>

#include <cmath>

namespace SurfacePainter {

Colors colors(bool forceBlack)
{
    const SurfacePalette *palette = SurfacePalette::instance();
    if (forceBlack)
        return {Qt::black, palette->colorEditSelectBg(), Qt::black};
    return {palette->colorLabel(), palette->colorEditSelectBg(),
            palette->colorEditColItemIndicator()};
}

void paintFittedText(QPainter &painter, const QRectF &box, const QString &text, QFont font)
{
    QFontMetricsF metrics(font);
    const double width = metrics.horizontalAdvance(text);
    if (width > box.width() && width > 0) {
        // Shrink to fit, as far down as a hundredth of the size.
        const double scale = std::max(box.width() / width, 0.01);
        font.setPixelSize(std::max(1, int(std::floor(font.pixelSize() * scale))));
    }
    painter.setFont(font);
    painter.drawText(box, Qt::AlignCenter, text);
}

void paintColumns(QPainter &painter, const QList<TabColumnView> &columns, const QRectF &rowRect,
                  const QStringList &tuning, bool notesOnTab, const Colors &colors,
                  const QRectF &clip)
{
    if (columns.isEmpty())
        return;
    const double cw = rowRect.width() / columns.size();
    painter.setRenderHint(QPainter::Antialiasing, true);
    painter.setRenderHint(QPainter::TextAntialiasing, true);
    for (int j = 0; j < columns.size(); ++j) {
        const QRectF frame(rowRect.left() + j * cw, rowRect.top(), cw, rowRect.height());
        if (!frame.intersects(clip))
            continue;
        const TabColumnView &column = columns[j];
        for (const ColumnDrawOp &op : column.drawOps(frame, tuning, notesOnTab)) {
            switch (op.kind) {
            case ColumnDrawOp::Kind::selectedBackground:
                painter.fillRect(op.rect, colors.selectBg);
                break;
            case ColumnDrawOp::Kind::dash:
            case ColumnDrawOp::Kind::bar:
                painter.fillRect(op.rect, column.forceBlack ? QColor(Qt::black) : colors.label);
                break;
            case ColumnDrawOp::Kind::text: {
                painter.setPen(column.forceBlack ? QColor(Qt::black) : colors.label);
                const QFont font =
                    op.black ? SurfaceFonts::black(op.fontSize) : SurfaceFonts::heavy(op.fontSize);
                // A little wider than the cell, as a label sized to fit may be.
                paintFittedText(painter, op.rect.adjusted(-cw * 0.2, 0, cw * 0.2, 0), op.text,
                                font);
                break;
            }
            }
        }
    }
}

void paintChordNames(QPainter &painter, const ChordNamesDisplay &display, const QPointF &origin,
                     const Colors &colors)
{
    painter.setRenderHint(QPainter::Antialiasing, true);
    for (const ChordNameLabel &label : display.labels) {
        if (!label.shown)
            continue;
        const QRectF box(origin.x() + label.cell.left() + label.x, origin.y() + label.cell.top(),
                         label.width, label.height);
        painter.save();
        painter.setPen(label.highlighted ? colors.indicator : colors.label);
        if (label.rotation != 0.0) {
            painter.translate(box.center());
            painter.rotate(label.rotation * 180.0 / M_PI);
            painter.translate(-box.center());
        }
        paintFittedText(painter, box, label.text, SurfaceFonts::black(ChordNamesDisplay::fontSize));
        painter.restore();
    }
}

} // namespace SurfacePainter
