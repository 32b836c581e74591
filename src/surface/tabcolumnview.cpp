#include "tabcolumnview.h"

#include "music/notefromfretshelper.h"

#include <algorithm>

TabColumnView::TabColumnView(const TabColumnData &column)
    : tabColData(column), selectedColItems(column.columnItems.size(), false)
{
}

bool TabColumnView::setColumnData(const TabColumnData &column)
{
    const bool changed = !tabColData.isSameColumn(column);
    tabColData.columnItems = column.columnItems;
    tabColData.chordName = column.chordName;
    fitSelection();
    return changed;
}

bool TabColumnView::setItem(int index, const ColumnItemType &item)
{
    if (index < 0 || index >= tabColData.columnItems.size() ||
        tabColData.columnItems[index] == item)
        return false;
    tabColData.setColumnItem(index, item);
    return true;
}

void TabColumnView::fitSelection()
{
    if (selectedColItems.size() != tabColData.columnItems.size())
        selectedColItems = QList<bool>(tabColData.columnItems.size(), false);
}

QRectF TabColumnView::dashRect(const QRectF &cell, double columnWidth)
{
    const double w = columnWidth * 0.75;
    const double h = columnWidth * 0.11;
    return QRectF(cell.center().x() - w * 0.5, cell.center().y() - h * 0.5, w, h);
}

QRectF TabColumnView::barRect(const QRectF &frame)
{
    const double w = frame.width() * 0.11;
    return QRectF(frame.center().x() - w * 0.5, frame.top(), w, frame.height());
}

ColumnDrawOp TabColumnView::textStyle(const QString &text, bool isNote, bool notesOnTab,
                                      double columnWidth)
{
    ColumnDrawOp op;
    op.kind = ColumnDrawOp::Kind::text;
    op.text = text;
    op.isNote = isNote;
    const qsizetype n = text.size();
    const bool asNote = isNote && notesOnTab;
    op.black = asNote || n >= 2;
    const double divisor = asNote ? 1.82 : (n < 2 ? 1.515 : 1.95);
    op.fontSize = columnWidth * 1.32 / divisor;
    return op;
}

double TabColumnView::contentScale(double ownScale, double screenScale, bool ensureMinimum)
{
    const double scale = std::max(ownScale, screenScale);
    return ensureMinimum ? std::max(scale, 3.0) : scale;
}

QList<ColumnDrawOp> TabColumnView::drawOps(const QRectF &frame, const QStringList &tabTuning,
                                           bool notesOnTab) const
{
    QList<ColumnDrawOp> ops;
    const QList<ColumnItemType> &items = tabColData.columnItems;
    if (items.isEmpty() || frame.width() <= 0 || frame.height() <= 0)
        return ops;
    const double w = frame.width();
    const double h = frame.height() / double(items.size());
    const bool barColumn = items.first().isBar();
    const QStringList &names = tuning ? *tuning : tabTuning;
    for (int i = 0; i < items.size(); ++i) {
        const QRectF cell(frame.left(), frame.top() + i * h, w, h);
        if (i < selectedColItems.size() && selectedColItems[i])
            ops.append(ColumnDrawOp::shape(ColumnDrawOp::Kind::selectedBackground, cell));
        if (barColumn)
            continue;
        const ColumnItemType &item = items[i];
        if (item.isBlank()) {
            ops.append(ColumnDrawOp::shape(ColumnDrawOp::Kind::dash, dashRect(cell, w)));
            continue;
        }
        ColumnDrawOp text =
            textStyle(displayText(item, i, &names, notesOnTab), item.isNote(), notesOnTab, w);
        text.rect = cell;
        ops.append(text);
    }
    if (barColumn)
        ops.append(ColumnDrawOp::shape(ColumnDrawOp::Kind::bar, barRect(frame)));
    return ops;
}
